#include "journal/backup_place.h"

#include "journal/next_command.h"
#include "journal/own_directory.h"
#include "journal/undo_record.h"
#include "plant_file.h"
#include "plant_validation.h"
#include "refusal.h"
#include "system.h"
#include "terminal/console.h"
#include "terminal/printable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <iostream>
#include <limits>
#include <optional>
#include <system_error>
#include <vector>

using namespace plant_file;

namespace
{

constexpr std::size_t DateLength = 10; // YYYY-MM-DD

// How many days ago a date was; nothing where the text is not a date, or a date of the future. The local date is a day
// back after a change of the time zone.
std::optional<std::int64_t> DaysSince(const std::string& date)
{
    std::int64_t days = 0;
    if (!DaysBetweenPlantDates(date, PlantEventCurrentDate(), days) || days < -1)
        return std::nullopt;
    return std::max<std::int64_t>(days, 0);
}

// The file with the day from which the age of the last backup counts.
std::filesystem::path DayFile(const std::string& journal)
{
    return PathOfText(BackUpDirectory(journal)) / "last-backup";
}

// The file with the day of the last notice.
std::filesystem::path NoticeFile(const std::string& journal)
{
    return PathOfText(BackUpDirectory(journal)) / "last-notice";
}

std::string StoredDay(const std::filesystem::path& file)
{
    const OpenedFile opened(file, Opening::Read, Access::Owner);
    std::array<char, DateLength> day = {};
    const std::optional<std::size_t> count = opened.Read(day.data(), day.size());
    return {day.data(), count.value_or(0)};
}

void StoreDay(const std::filesystem::path& file, const std::string& day)
{
    CreateOwnDirectory(file.parent_path());
    static_cast<void>(OpenedFile(file, Opening::CreateOrTruncate, Access::Owner).Write(day + '\n'));
}

// How many days ago the newest dated backup was made; nothing where there is none. A killed process can leave an empty
// file.
std::optional<std::int64_t> DaysSinceNewest(const std::string& journal)
{
    std::vector<PlantBackUpFile> files;
    static_cast<void>(ListPlantBackUps(journal, BackUpDirectory(journal), files));
    for (const PlantBackUpFile& file : files)
        if (const std::optional<std::int64_t> days = DaysSince(file.Time.substr(0, DateLength)); days && file.Bytes > 0)
            return days;
    return std::nullopt;
}

// The user's directory of dated backups.
std::filesystem::path OwnPlace()
{
    try
    {
        return StateDirectory() / "plantjournal" / "backups";
    }
    catch (const Refusal& refusal)
    {
        throw Refusal(std::string(refusal.what()) + ", or name the backup or its directory");
    }
}

} // namespace

std::string BackUpDirectory(const std::string& journal, const std::string& parent)
{
    const std::filesystem::path place = parent.empty() ? OwnPlace() : PathOfText(parent);
    try
    {
        const std::filesystem::path path = CanonicalPath(std::filesystem::absolute(PathOfText(journal)));
        if (std::filesystem::is_symlink(path))
            throw Refusal(journal + ": a symbolic link to a file that does not exist; " + AdviceForBrokenLink);
        return TextOfPath(place / PathOfText(TextOfPath(path.filename()) + '-' + StableHash(TextOfPath(path))));
    }
    catch (const std::filesystem::filesystem_error& error)
    {
        throw Refusal(journal + ": " + error.code().message() + "; check the path");
    }
}

std::string BackUpsToRead(const std::string& journal, const std::string& parent)
{
    std::error_code ignored;
    std::vector<PlantBackUpFile> files;
    std::string directory = BackUpDirectory(journal, parent);
    if (parent.empty())
        return directory;
    if (std::filesystem::status(PathOfText(parent), ignored).type() == std::filesystem::file_type::not_found)
        throw Refusal(parent + ": no such directory; check the path");
    const bool isItself = !std::filesystem::exists(PathOfText(directory), ignored) &&
                          ListPlantBackUps(journal, parent, files) && !files.empty();
    return isItself ? parent : directory;
}

std::string OthersOfThisName(const std::string& directory)
{
    std::string found;
    std::error_code ignored;
    const std::filesystem::path path = PathOfText(directory);
    const std::string own = TextOfPath(path.filename());
    const std::string name = own.substr(0, own.rfind('-') + 1);
    for (const auto& entry : std::filesystem::directory_iterator(path.parent_path(), ignored))
    {
        const std::string other = TextOfPath(entry.path().filename());
        if (other.size() == own.size() && other.starts_with(name) && other != own)
            found += (found.empty() ? "backups of a journal with its name are in " : ", ") + TextOfPath(entry.path());
    }
    return found;
}

void RememberBackUp(const std::string& journal)
{
    try
    {
        StoreDay(DayFile(journal), PlantEventCurrentDate());
    }
    catch (const std::exception&)
    {
        // A notice may come too early.
    }
}

void OfferBackUp(const std::string& journal)
{
    constexpr std::int64_t mostDays = 7;
    const std::string today = PlantEventCurrentDate();
    const std::optional<std::int64_t> stored = DaysSince(StoredDay(DayFile(journal)));
    const std::optional<std::int64_t> newest = DaysSinceNewest(journal);
    constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();
    const std::int64_t days = std::min(stored.value_or(never), newest.value_or(never));
    if (days == never)
        StoreDay(DayFile(journal), today);
    else if (days > mostDays && StoredDay(NoticeFile(journal)) != today)
    {
        std::cerr << "notice: " << Printable(journal) << ": no backup for " << days << " days; "
                  << Printable(NextCommand("backup", journal)) << " makes one\n";
        StoreDay(NoticeFile(journal), today);
    }
}
