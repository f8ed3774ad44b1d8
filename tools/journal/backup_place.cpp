#include "journal/backup_place.h"

#include "journal/undo_record.h"
#include "plant_file.h"
#include "plant_validation.h"
#include "refusal.h"
#include "system.h"
#include "terminal/console.h"
#include "terminal/printable.h"

#include <algorithm>
#include <array>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <vector>

using namespace plant_file;

namespace
{

constexpr std::size_t DateLength = 10; // YYYY-MM-DD

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
    std::filesystem::create_directories(file.parent_path());
    static_cast<void>(OpenedFile(file, Opening::CreateOrTruncate, Access::Owner).Write(day + '\n'));
}

// The day of the newest dated backup; empty where there is none. A killed process can leave an empty file, and a wrong
// clock a date to come.
std::string NewestDay(const std::string& journal, const std::string& today)
{
    std::vector<PlantBackUpFile> files;
    if (!ListPlantBackUps(journal, BackUpDirectory(journal), files))
        return {};
    const auto counts = [&](const PlantBackUpFile& file)
    { return file.Bytes > 0 && file.Time.substr(0, DateLength) <= today; };
    const auto newest = std::find_if(files.begin(), files.end(), counts);
    return newest != files.end() ? newest->Time.substr(0, DateLength) : "";
}

} // namespace

std::string BackUpDirectory(const std::string& journal, const std::string& parent)
{
    const std::filesystem::path place =
        parent.empty() ? StateDirectory() / "plantjournal" / "backups" : PathOfText(parent);
    try
    {
        const std::filesystem::path path = CanonicalPath(std::filesystem::absolute(PathOfText(journal)));
        return TextOfPath(place / PathOfText(TextOfPath(path.filename()) + '-' + StableHash(TextOfPath(path))));
    }
    catch (const std::filesystem::filesystem_error& error)
    {
        throw Refusal(journal + ": " + error.code().message() + "; check the path");
    }
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
    const std::filesystem::path file = DayFile(journal);
    const std::string today = PlantEventCurrentDate();
    const std::string last = std::max(StoredDay(file), NewestDay(journal, today));
    std::int64_t days = 0;
    if (!DaysBetweenPlantDates(last, today, days) || days < 0) // none yet, or the clock was set back
        StoreDay(file, today);
    else if (days > mostDays && StoredDay(NoticeFile(journal)) != today)
    {
        std::cerr << "notice: " << Printable(journal) << ": no backup for " << days
                  << " days; `plantjournal backup` makes one\n";
        StoreDay(NoticeFile(journal), today);
    }
}
