#include "scale.h"

#include "days.h"
#include "text.h"

#include <algorithm>
#include <cmath>

namespace plant_report
{

namespace
{

// Amounts beyond these are mistakes. They are drawn at the end of the scale, which has labels of a few digits.
constexpr double Largest = 1e15;
constexpr double Smallest = 1e-6;

double Limited(double value)
{
    if (std::isnan(value) || std::abs(value) < Smallest)
        return 0;
    return std::clamp(value, -Largest, Largest);
}

// The least of 1, 2 and 5 times a power of ten that is not below `step`.
double RoundStep(double step)
{
    const double power = std::pow(10, std::floor(std::log10(step)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (step <= factor * power * (1 + 1e-9))
            return factor * power;
    return 10 * power;
}

// All numbers of a scale have the same number of decimals.
std::string TickLabel(double value, int decimals)
{
    std::string label = NumberLabel(value, decimals);
    const std::size_t point = label.find('.');
    if (decimals == 0)
        return label;
    if (point == std::string::npos)
        return label + "." + std::string(static_cast<std::size_t>(decimals), '0');
    return label + std::string(static_cast<std::size_t>(decimals) - (label.size() - point - 1), '0');
}

double Place(double value, double first, double last, double begin, double end)
{
    return begin + (std::clamp(value, first, last) - first) / (last - first) * (end - begin);
}

// A day of the calendar, by its parts.
struct Day
{
    std::int64_t Year;
    std::int64_t Month; // from 1
    std::int64_t OfMonth;
};

Day DayOf(std::int64_t day)
{
    const std::string text = plant_query::DayText(day);
    const std::size_t month = text.find('-', 1) + 1;
    return {std::stoll(text), std::stoll(text.substr(month)), std::stoll(text.substr(month + 3))};
}

// The first day of the month.
std::int64_t MonthBegin(std::int64_t year, std::int64_t month)
{
    std::string text = std::to_string(year);
    text.insert(0, 4 - std::min<std::size_t>(text.size(), 4), '0');
    return plant_query::DaysSinceEpoch(text + (month < 10 ? "-0" : "-") + std::to_string(month) + "-01").value_or(0);
}

const char* MonthName(const Day& day)
{
    return MonthNames.at(static_cast<std::size_t>(day.Month - 1));
}

// Adds the year to the labels where it changes, or to the first label where it never does.
void NameYears(std::vector<Tick>& ticks)
{
    const auto yearOf = [](const Tick& tick) { return DayOf(static_cast<std::int64_t>(tick.Value)).Year; };
    const bool change = yearOf(ticks.front()) != yearOf(ticks.back());
    std::int64_t previous = change ? yearOf(ticks.front()) : -1;
    for (Tick& tick : ticks)
        if (const std::int64_t year = yearOf(tick); year != previous)
        {
            tick.Label += " " + std::to_string(year);
            previous = year;
        }
}

Tick DayTick(std::int64_t day)
{
    const Day parts = DayOf(day);
    return {static_cast<double>(day), std::to_string(parts.OfMonth) + " " + MonthName(parts)};
}

// Ticks every `step` days. Those of whole weeks are Mondays.
std::vector<Tick> DayTicks(std::int64_t first, std::int64_t last, std::int64_t step)
{
    const std::int64_t monday = plant_query::MondayOf(0);
    std::vector<Tick> ticks;
    for (std::int64_t day = first + ((monday - first) % step + step) % step; day <= last; day += step)
        ticks.push_back(DayTick(day));
    return ticks;
}

// Ticks at the beginnings of every `step` months, counted from January of a year that `step` divides.
std::vector<Tick> MonthTicks(std::int64_t first, std::int64_t last, std::int64_t step)
{
    const Day begin = DayOf(first);
    std::vector<Tick> ticks;
    for (std::int64_t month = (begin.Year * 12 + begin.Month - 1) / step * step;; month += step)
    {
        const std::int64_t day = MonthBegin(month / 12, month % 12 + 1);
        if (day > last || month / 12 > 9999)
            return ticks;
        if (day < first)
            continue;
        const Day parts = DayOf(day);
        ticks.push_back(
            {static_cast<double>(day), step % 12 == 0 ? std::to_string(parts.Year) : std::string(MonthName(parts))});
    }
}

// The ticks whose labels, about 11 letters in the worst case, have room.
std::vector<Tick> RoundDays(std::int64_t first, std::int64_t last, double length)
{
    constexpr double dayRoom = 64;
    constexpr double monthRoom = 52;
    constexpr double daysOfShortMonth = 28;
    const double perDay = length / static_cast<double>(last - first);
    for (const std::int64_t step : {1, 2, 7, 14})
        if (perDay * static_cast<double>(step) >= dayRoom)
            if (std::vector<Tick> ticks = DayTicks(first, last, step); ticks.size() >= 2)
            {
                NameYears(ticks);
                return ticks;
            }
    for (const std::int64_t step : {1, 2, 3, 6, 12, 24, 60, 120, 240, 600, 1200, 2400, 6000, 12000})
        if (perDay * daysOfShortMonth * static_cast<double>(step) >= monthRoom)
            if (std::vector<Tick> ticks = MonthTicks(first, last, step); ticks.size() >= 2)
            {
                if (step % 12 != 0)
                    NameYears(ticks);
                return ticks;
            }
    std::vector<Tick> ends;
    ends.push_back(DayTick(first));
    ends.push_back(DayTick(last));
    return ends;
}

} // namespace

NumberScale::NumberScale(double least, double most, double begin, double end, int ticks) : Begin(begin), End(end)
{
    least = Limited(least);
    most = Limited(most);
    if (most < least)
        std::swap(least, most);
    if (most - least <= std::max(std::abs(least), std::abs(most)) * 1e-9) // or the steps would be too small to add
    {
        const double around = least == 0 ? 0.5 : std::abs(least) / 10;
        least = least == 0 ? 0 : least - around;
        most += around;
    }
    const double step = RoundStep((most - least) / std::max(ticks, 1));
    const double firstStep = std::floor(least / step + 1e-9);
    const double lastStep = std::ceil(most / step - 1e-9);
    First = firstStep * step;
    Last = lastStep * step;
    const int decimals = std::max(0, static_cast<int>(-std::floor(std::log10(step) + 1e-9)));
    const auto steps = static_cast<int>(std::lround(lastStep - firstStep));
    for (int i = 0; i <= steps; ++i)
    {
        const double value = (firstStep + i) * step;
        Round.push_back({value, TickLabel(value, decimals)});
    }
}

double NumberScale::operator()(double value) const
{
    return Place(std::isnan(value) ? 0 : value, First, Last, Begin, End);
}

DayScale::DayScale(std::int64_t first, std::int64_t last, double begin, double end)
    : First(static_cast<double>(first)), Last(static_cast<double>(std::max(last, first + 7))), Begin(begin), End(end),
      Round(RoundDays(first, std::max(last, first + 7), std::abs(end - begin)))
{
}

double DayScale::operator()(double day) const
{
    return Place(day, First, Last, Begin, End);
}

} // namespace plant_report
