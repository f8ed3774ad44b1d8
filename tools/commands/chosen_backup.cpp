#include "commands/chosen_backup.h"

#include "command_line/parser.h"
#include "commands/backup_comparison.h"
#include "commands/inspected_file.h"
#include "journal/backup_place.h"
#include "journal/next_command.h"
#include "plant_database.h"
#include "plant_file.h"
#include "plant_validation.h"
#include "record/dates.h"
#include "record/text.h"
#include "refusal.h"
#include "system.h"
#include "terminal/printable.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <system_error>
#include <vector>

using plant_file::PathOfText;
using plant_file::TextOfPath;

namespace
{

std::string NameAnother(const std::string& journal)
{
    return "; " + NextCommand("backup --list", journal) + " lists the backups; name one by its file or by its time";
}

// The present time in the form of PlantBackUpFile::Time.
std::string PresentTime()
{
    std::tm local{};
    plant_file::ToLocalTime(std::time(nullptr), local);
    std::array<char, 32> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local)};
}

// Whether the text is a date with a time, as `backup --list` shows it. The seconds may be left out.
bool IsTime(std::string_view text)
{
    constexpr std::string_view pattern = "0000-00-00 00:00:00"; // 0: any digit
    constexpr std::size_t date = 10;
    constexpr std::size_t minutes = 16;
    const auto fits = [](char c, char expected)
    { return expected == '0' ? std::isdigit(static_cast<unsigned char>(c)) != 0 : c == expected; };
    PlantDate ignored;
    return (text.size() == minutes || text.size() == pattern.size()) &&
           std::equal(text.begin(), text.end(), pattern.begin(), fits) &&
           ReadPlantDate(std::string(text.substr(0, date)), ignored) && text.substr(11, 2) < "24" &&
           text.substr(14, 2) < "60";
}

bool IsUpTo(const PlantBackUpFile& file, const std::string& until)
{
    return file.Time.substr(0, until.size()) <= until; // a month or a year stands for its last day
}

std::string DayAfterToday()
{
    return PlantDatePlusDays(PlantEventCurrentDate(), 1);
}

void NameThoseOfTheFuture(const std::vector<PlantBackUpFile>& files)
{
    for (const PlantBackUpFile& file : files)
        if (!IsUpTo(file, DayAfterToday()))
            std::cerr << "notice: " << Printable(file.Path)
                      << ": its date is after tomorrow, so it is not used; name it to restore it\n";
}

// A backup can be named after the present time where the time zone has changed, or where the clock was wrong.
void NameTheOneBeforeNow(const std::vector<PlantBackUpFile>& files, const PlantBackUpFile& chosen)
{
    const std::string now = PresentTime();
    if (IsUpTo(chosen, now))
        return;
    const auto before =
        std::find_if(files.begin(), files.end(),
                     [&](const PlantBackUpFile& file) { return IsUpTo(file, now) && WhyNotGood(file.Path).empty(); });
    if (before != files.end())
        std::cerr << "notice: " << Printable(chosen.Path)
                  << ": the time in its name is after the present time; the backup before it is "
                  << Printable(before->Path) << '\n';
}

[[noreturn]] void RefuseWithoutBackUp(const std::string& directory, bool isFromGiven)
{
    const std::string others = OthersOfThisName(directory);
    std::string advice = "name a backup";
    if (!others.empty())
        advice += ", or with --from that directory if the journal was moved";
    if (!isFromGiven)
        advice += ", or with --from the directory of `plantjournal backup --to`";
    advice += ", or read what is left of a damaged journal with `plantjournal salvage`";
    throw Refusal(Joined({directory + ": no backup of this journal", others, advice}, "; "));
}

// The newest good backup of a time or before. Where `wanted` is empty, none after tomorrow: a wrong clock can have made
// it. Tomorrow's can be of another time zone.
std::string NewestGoodBackUp(const std::string& journal, const std::string& directory, const std::string& wanted,
                             bool isFromGiven)
{
    std::vector<PlantBackUpFile> files;
    if (const PlantFileResult result = ListPlantBackUps(journal, directory, files); !result)
        throw Refusal(result.Error + "; name a backup");
    if (files.empty())
        RefuseWithoutBackUp(directory, isFromGiven);
    if (wanted.empty())
        NameThoseOfTheFuture(files);
    const std::string until = wanted.empty() ? DayAfterToday() : wanted;
    for (const PlantBackUpFile& file : files)
    {
        if (!IsUpTo(file, until))
            continue;
        const std::string reason = WhyNotGood(file.Path);
        if (!reason.empty())
        {
            std::cerr << "notice: " << Printable(WithoutStop(reason)) << "; it is not used\n";
            continue;
        }
        if (wanted.empty())
            NameTheOneBeforeNow(files, file);
        return file.Path;
    }
    throw Refusal(directory + ": no good backup of " + until + " or before" + NameAnother(journal));
}

// The backup of that name; empty where the directory has none.
std::string BackUpIn(const std::string& directory, const std::filesystem::path& name)
{
    std::error_code ignored;
    const std::filesystem::path file = std::filesystem::absolute(PathOfText(directory), ignored) / name;
    const bool isFound = !name.has_parent_path() && std::filesystem::is_regular_file(file, ignored);
    return isFound ? TextOfPath(file) : "";
}

} // namespace

std::string WhyNotGood(const std::string& path)
{
    PlantFileInspection file;
    if (const PlantFileResult result = InspectPlantDatabase(path, file); !result)
        return result.Error;
    if (file.Kind == PlantFileKind::Interrupted)
        return path + ": " + KindInWords(file.Kind) + ", which " + NextCommand("plant list", path) + " rolls back";
    if (!IsJournal(file))
        return path + ": " + KindInWords(file.Kind);
    return DamageIn(path);
}

std::string ChosenBackUp(const std::string& journal, const BackUpChoice& choice)
{
    std::error_code ignored;
    const std::filesystem::path file = PathOfText(choice.Wanted);
    if (!choice.Wanted.empty() && std::filesystem::is_regular_file(file, ignored))
    {
        if (choice.From)
            RefuseUsage(InQuotes(choice.Wanted) + " is a file, and does not go with --from");
        return choice.Wanted;
    }
    const auto directory = [&] { return BackUpsToRead(journal, choice.From.value_or("")); };
    std::string until = choice.Wanted;
    try
    {
        if (!IsTime(until))
            until = DateFrom(until);
    }
    catch (const BadValue&)
    {
        if (std::filesystem::exists(file, ignored))
            return choice.Wanted;
        if (std::string found = BackUpIn(directory(), file); !found.empty())
            return found;
        throw Refusal(choice.Wanted + ": no such backup, and not a date" + NameAnother(journal));
    }
    return NewestGoodBackUp(journal, directory(), until, choice.From.has_value());
}
