// The conversions are those of Howard Hinnant, https://howardhinnant.github.io/date_algorithms.html (days_from_civil
// and civil_from_days): years begin in March, so that the leap day is the last day of a year.
#include "days.h"

#include <algorithm>
#include <cstdlib>

namespace plant_query
{

namespace
{

constexpr std::int64_t DaysIn400Years = 146'097;
constexpr std::int64_t DaysFromYear0ToEpoch = 719'468; // from 0000-03-01 to 1970-01-01

struct CivilDay
{
    std::int64_t Year;
    std::int64_t Month;
    std::int64_t Day;
};

std::int64_t FromCivil(const CivilDay& civil)
{
    const std::int64_t year = civil.Year - (civil.Month <= 2 ? 1 : 0);
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * (civil.Month + (civil.Month > 2 ? -3 : 9)) + 2) / 5 + civil.Day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * DaysIn400Years + dayOfEra - DaysFromYear0ToEpoch;
}

CivilDay ToCivil(std::int64_t daysSinceEpoch)
{
    const std::int64_t days = daysSinceEpoch + DaysFromYear0ToEpoch;
    const std::int64_t era = (days >= 0 ? days : days - (DaysIn400Years - 1)) / DaysIn400Years;
    const std::int64_t dayOfEra = days - era * DaysIn400Years;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1'460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t shifted = (5 * dayOfYear + 2) / 153; // the month, counted from March
    const std::int64_t month = shifted + (shifted < 10 ? 3 : -9);
    const std::int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    return {year, month, dayOfYear - (153 * shifted + 2) / 5 + 1};
}

std::string Padded(std::int64_t number, std::size_t width)
{
    const std::string digits = std::to_string(number);
    return std::string(width - std::min(width, digits.size()), '0') + digits;
}

} // namespace

std::optional<std::int64_t> DaysSinceEpoch(std::string_view date)
{
    const auto hasForm = [&](std::size_t i)
    { return i == 4 || i == 7 ? date[i] == '-' : date[i] >= '0' && date[i] <= '9'; };
    if (date.size() != 10)
        return std::nullopt;
    for (std::size_t i = 0; i < date.size(); ++i)
        if (!hasForm(i))
            return std::nullopt;
    const auto digit = [&](std::size_t i) { return std::int64_t{date[i]} - '0'; };
    const CivilDay written{digit(0) * 1'000 + digit(1) * 100 + digit(2) * 10 + digit(3), digit(5) * 10 + digit(6),
                           digit(8) * 10 + digit(9)};
    const std::int64_t days = FromCivil(written);
    if (ToCivil(days).Month != written.Month) // for example 2025-02-30
        return std::nullopt;
    return days;
}

std::string DayText(std::int64_t daysSinceEpoch)
{
    const CivilDay day = ToCivil(daysSinceEpoch);
    return (day.Year < 0 ? "-" : "") + Padded(std::abs(day.Year), 4) + '-' + Padded(day.Month, 2) + '-' +
           Padded(day.Day, 2);
}

std::int64_t MondayOf(std::int64_t daysSinceEpoch)
{
    const std::int64_t sinceMonday = (daysSinceEpoch % 7 + 10) % 7; // 1970-01-01 was a Thursday
    return daysSinceEpoch - sinceMonday;
}

std::int64_t FirstOfMonth(std::int64_t daysSinceEpoch)
{
    return daysSinceEpoch - ToCivil(daysSinceEpoch).Day + 1;
}

std::optional<std::string> AfterDate(std::string last)
{
    constexpr char greatest = '\xFF';
    while (!last.empty() && last.back() == greatest)
        last.pop_back();
    if (last.empty())
        return std::nullopt;
    last.back() = static_cast<char>(static_cast<unsigned char>(last.back()) + 1);
    return last;
}

} // namespace plant_query
