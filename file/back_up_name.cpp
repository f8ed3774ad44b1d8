#include "back_up_name.h"

#include "access.h"
#include "system.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <ctime>
#include <string_view>
#include <system_error>
#include <utility>

namespace plant_file
{

namespace
{

constexpr std::string_view Pattern = "0000-00-00-000000"; // 0: any digit
constexpr int MostInASecond = 99;

bool Fits(std::string_view text, std::string_view pattern)
{
    const auto fits = [](char c, char expected)
    { return expected == '0' ? std::isdigit(static_cast<unsigned char>(c)) != 0 : c == expected; };
    return std::equal(text.begin(), text.end(), pattern.begin(), pattern.end(), fits);
}

int NumberAt(std::string_view text, std::size_t begin, std::size_t length)
{
    int number = 0;
    for (const char digit : text.substr(begin, length))
        number = number * 10 + (digit - '0');
    return number;
}

int DaysOfMonth(int year, int month)
{
    constexpr std::array<int, 12> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool isLeapYear = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return days.at(static_cast<std::size_t>(month) - 1) + (month == 2 && isLeapYear ? 1 : 0);
}

bool IsOfTheCalendar(const BackUpMoment& moment)
{
    return moment.Year >= 1 && moment.Month >= 1 && moment.Month <= 12 && moment.Day >= 1 &&
           moment.Day <= DaysOfMonth(moment.Year, moment.Month) && moment.Hour < 24 && moment.Minute < 60 &&
           moment.Second <= 60; // a leap second
}

std::string Digits(int number, std::size_t length)
{
    const std::string digits = std::to_string(number);
    return std::string(length - std::min(length, digits.size()), '0') + digits;
}

std::string Date(const BackUpMoment& moment)
{
    return Digits(moment.Year, 4) + '-' + Digits(moment.Month, 2) + '-' + Digits(moment.Day, 2);
}

// The parts of a time of the day, with `separator` between them.
std::string TimeOfDay(const BackUpMoment& moment, const std::string& separator)
{
    return Digits(moment.Hour, 2) + separator + Digits(moment.Minute, 2) + separator + Digits(moment.Second, 2);
}

std::string NameOf(const BackUpMoment& moment, const std::string& journal)
{
    std::string name = Date(moment) + '-' + TimeOfDay(moment, "");
    if (moment.Number > 1)
        name += '_' + Digits(moment.Number, 2);
    return name + '-' + journal;
}

// SQLite would apply a file with one of these endings to the backup.
bool IsTaken(const std::filesystem::path& path)
{
    constexpr std::array<const char*, 3> endings = {"", "-journal", "-wal"};
    const auto exists = [&](const char* ending)
    {
        std::filesystem::path file = path;
        file += ending;
        return std::filesystem::exists(std::filesystem::symlink_status(file));
    };
    return std::any_of(endings.begin(), endings.end(), exists);
}

} // namespace

int BackUpMoment::DayNumber() const
{
    const int years = Year - 1;
    int days = years * 365 + years / 4 - years / 100 + years / 400;
    for (int month = 1; month < Month; ++month)
        days += DaysOfMonth(Year, month);
    return days + Day - 1;
}

std::string BackUpMoment::Text() const
{
    return Date(*this) + ' ' + TimeOfDay(*this, ":");
}

BackUpMoment PresentMoment()
{
    std::tm local = {};
    ToLocalTime(std::time(nullptr), local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

std::filesystem::path FreeBackUpPath(const std::filesystem::path& directory, const std::string& journal)
{
    std::filesystem::path path;
    const auto look = [&]
    {
        // One number more than the highest, even if a lower one is free: the names sort by time.
        BackUpMoment moment = PresentMoment();
        for (moment.Number = MostInASecond; moment.Number > 0; --moment.Number)
        {
            std::filesystem::path next = directory / PathOfText(NameOf(moment, journal));
            if (IsTaken(next))
                break;
            path = std::move(next);
        }
        if (path.empty())
            Fail("", "a directory has at most 99 backups of one second; try again");
    };
    WithPathErrors(look);
    return path;
}

std::filesystem::path FreePathBeforeRestore(const std::filesystem::path& journal)
{
    std::filesystem::path first = journal;
    first += ".before-restore-" + Date(PresentMoment());
    std::filesystem::path path = first;
    const auto look = [&]
    {
        for (int number = 2; IsTaken(path); ++number)
        {
            path = first;
            path += '-' + std::to_string(number);
        }
    };
    WithPathErrors(look);
    return path;
}

std::optional<BackUpMoment> MomentOfName(const std::string& name, const std::string& journal)
{
    const std::string_view text = name;
    if (!Fits(text.substr(0, Pattern.size()), Pattern))
        return std::nullopt;
    BackUpMoment moment = {NumberAt(text, 0, 4),  NumberAt(text, 5, 2),  NumberAt(text, 8, 2),
                           NumberAt(text, 11, 2), NumberAt(text, 13, 2), NumberAt(text, 15, 2)};
    constexpr std::string_view numberPattern = "_00";
    if (Fits(text.substr(Pattern.size(), numberPattern.size()), numberPattern))
        moment.Number = NumberAt(text, Pattern.size() + 1, 2);
    if (!IsOfTheCalendar(moment))
        return std::nullopt;
    const std::string expected = NameOf(moment, journal);
    return name == expected ? std::optional(moment) : std::nullopt;
}

std::vector<DatedBackUp> DatedBackUps(const std::filesystem::path& directory, const std::string& journal)
{
    std::vector<DatedBackUp> found;
    const OpenedDirectory opened(directory);
    if (!opened.IsOpen() && LastSystemError() == std::errc::no_such_file_or_directory)
        return found;
    RequireSystemCall(opened.IsOpen(), "opening the directory");
    const auto look = [&]
    {
        std::optional<std::filesystem::path> entry = opened.NextName();
        for (; entry && !entry->empty(); entry = opened.NextName())
        {
            const std::string name = TextOfPath(*entry);
            const std::optional<BackUpMoment> moment = MomentOfName(name, journal);
            if (!moment)
                continue;
            // Another rotation may have removed the file meanwhile.
            if (const std::optional<std::int64_t> bytes = SizeOfRegularFile(directory / *entry))
            {
                DatedBackUp& backUp = found.emplace_back();
                backUp.Path = directory / *entry;
                backUp.Name = name;
                backUp.Moment = *moment;
                backUp.Bytes = *bytes;
            }
        }
        RequireSystemCall(entry.has_value(), "reading the directory");
    };
    WithPathErrors(look);
    std::sort(found.begin(), found.end(),
              [](const DatedBackUp& one, const DatedBackUp& other) { return one.Name > other.Name; });
    return found;
}

std::string JournalNameOf(const std::string& journal)
{
    std::string name;
    WithPathErrors([&] { name = TextOfPath(CanonicalPath(AbsolutePath(journal)).filename()); });
    return name;
}

} // namespace plant_file
