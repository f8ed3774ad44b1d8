#include "plant_validation.h"

#include <algorithm>
#include <array>

namespace
{

bool IsLeapYear(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int DaysInMonth(int year, int month)
{
    constexpr std::array<int, 12> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : days.at(static_cast<std::size_t>(month) - 1);
}

// Reads `count` digits that begin at `begin`. Returns -1 where another letter is among them.
int ReadDigits(const std::string& text, std::size_t begin, std::size_t count)
{
    int number = 0;
    for (std::size_t i = begin; i < begin + count; ++i)
    {
        if (text[i] < '0' || text[i] > '9')
            return -1;
        number = number * 10 + (text[i] - '0');
    }
    return number;
}

bool ReadDay(const std::string& text, PlantDate& out)
{
    return text.size() == 10 && ReadPlantDate(text, out);
}

// The number of days from 0000-01-01 to the beginning of the year.
std::int64_t DaysBeforeYear(std::int64_t year)
{
    const std::int64_t last = year - 1;
    return year == 0 ? 0 : year * 365 + last / 4 - last / 100 + last / 400 + 1; // the year 0 is a leap year
}

std::int64_t DayNumber(const PlantDate& date)
{
    std::int64_t number = DaysBeforeYear(date.Year) + date.Day - 1;
    for (int month = 1; month < date.Month; ++month)
        number += DaysInMonth(date.Year, month);
    return number;
}

std::string DateText(const PlantDate& date)
{
    std::string text = "0000-00-00";
    const auto write = [&](int number, std::size_t last, int digits)
    {
        for (; digits > 0; --digits, number /= 10)
            text[last--] = static_cast<char>('0' + number % 10);
    };
    write(date.Year, 3, 4);
    write(date.Month, 6, 2);
    write(date.Day, 9, 2);
    return text;
}

} // namespace

bool ReadPlantDate(const std::string& text, PlantDate& out)
{
    const std::size_t size = text.size();
    if ((size != 4 && size != 7 && size != 10) || (size >= 7 && text[4] != '-') || (size == 10 && text[7] != '-'))
        return false;
    const int year = ReadDigits(text, 0, 4);
    const int month = size >= 7 ? ReadDigits(text, 5, 2) : 0;
    const int day = size == 10 ? ReadDigits(text, 8, 2) : 0;
    if (year < 0 || month < (size >= 7 ? 1 : 0) || month > 12 || day < (size == 10 ? 1 : 0) ||
        (size == 10 && day > DaysInMonth(year, month)))
        return false;
    out = {year, month, day};
    return true;
}

bool PlantDateIsBefore(const std::string& first, const std::string& second)
{
    PlantDate left;
    PlantDate right;
    if (!ReadPlantDate(first, left) || !ReadPlantDate(second, right))
        return false;
    if (left.Year != right.Year || left.Month == 0 || right.Month == 0)
        return left.Year < right.Year;
    if (left.Month != right.Month || left.Day == 0 || right.Day == 0)
        return left.Month < right.Month;
    return left.Day < right.Day;
}

bool DaysBetweenPlantDates(const std::string& first, const std::string& second, std::int64_t& out)
{
    PlantDate left;
    PlantDate right;
    if (!ReadDay(first, left) || !ReadDay(second, right))
        return false;
    out = DayNumber(right) - DayNumber(left);
    return true;
}

std::string PlantDatePlusDays(const std::string& day, std::int64_t days)
{
    PlantDate date;
    constexpr std::int64_t mostDays = 10000 * 366LL; // more than the calendar has; the sum cannot overflow
    if (!ReadDay(day, date) || days > mostDays || days < -mostDays)
        return {};
    std::int64_t rest = DayNumber(date) + days;
    if (rest < 0 || rest >= DaysBeforeYear(10000))
        return {};
    date.Year = static_cast<int>(rest / 366); // this year, or an earlier one
    while (DaysBeforeYear(date.Year + 1) <= rest)
        ++date.Year;
    rest -= DaysBeforeYear(date.Year);
    for (date.Month = 1; rest >= DaysInMonth(date.Year, date.Month); ++date.Month)
        rest -= DaysInMonth(date.Year, date.Month);
    date.Day = static_cast<int>(rest) + 1;
    return DateText(date);
}

std::string PlantDatePlusMonths(const std::string& day, std::int64_t months)
{
    PlantDate date;
    constexpr std::int64_t mostMonths = 10000 * 12LL;
    if (!ReadDay(day, date) || months > mostMonths || months < -mostMonths)
        return {};
    const std::int64_t month = date.Year * 12LL + date.Month - 1 + months;
    if (month < 0 || month >= mostMonths)
        return {};
    date.Year = static_cast<int>(month / 12);
    date.Month = static_cast<int>(month % 12) + 1;
    date.Day = std::min(date.Day, DaysInMonth(date.Year, date.Month));
    return DateText(date);
}
