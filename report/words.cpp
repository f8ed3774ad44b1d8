#include "words.h"

#include "days.h"
#include "text.h"

#include <array>
#include <cmath>

namespace plant_report
{

namespace
{

constexpr std::size_t MostLettersOfName = 200;

int DayOfMonth(std::int64_t day)
{
    const std::string text = plant_query::DayText(day);
    return std::stoi(text.substr(text.size() - 2));
}

} // namespace

PlantChart EmptyChart(const char* heading, const char* missing, std::initializer_list<const char*> columns)
{
    PlantChart chart;
    chart.Heading = heading;
    chart.Sentence = missing;
    chart.Columns.assign(columns.begin(), columns.end());
    return chart;
}

void AddRow(PlantChart& chart, std::initializer_list<std::string_view> cells)
{
    chart.Rows.emplace_back(cells.begin(), cells.end());
}

std::string EnteredLabel(double number)
{
    std::string label;
    if (IsEntered(number))
        label = NumberLabel(number);
    return label;
}

std::string CountLabel(std::int64_t count)
{
    return NumberLabel(static_cast<double>(count), 0);
}

std::string Counted(std::int64_t number, const char* one, const char* many)
{
    return CountLabel(number) + " " + (number == 1 ? one : many);
}

std::string Counted(std::size_t number, const char* one, const char* many)
{
    return Counted(static_cast<std::int64_t>(number), one, many);
}

std::string DayLabel(std::int64_t day)
{
    constexpr std::array<const char*, 12> months = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::string text = plant_query::DayText(day); // the year may have more than four digits
    const std::size_t year = text.size() - 6;
    const auto month = static_cast<std::size_t>(std::stoi(text.substr(year + 1, 2)) - 1);
    return std::to_string(DayOfMonth(day)) + " " + months.at(month) + " " + text.substr(0, year);
}

std::string DaysLabel(std::int64_t first, std::int64_t last)
{
    if (first == last)
        return "on " + DayLabel(first);
    return "from " + DayLabel(first) + " to " + DayLabel(last);
}

std::string ShownName(const std::string& name, const char* unnamed)
{
    if (name.empty())
        return unnamed;
    return Shortened(name, MostLettersOfName);
}

std::optional<std::int64_t> FirstDayOf(const std::string& period)
{
    return plant_query::DaysSinceEpoch(period.size() == 7 ? period + "-01" : period);
}

std::int64_t NextPeriod(std::int64_t first, PlantPeriod period)
{
    if (period == PlantPeriod::Month)
        return FirstOfMonth(first + 31);
    return first + (period == PlantPeriod::Week ? 7 : 1);
}

std::string PeriodText(std::int64_t first, PlantPeriod period)
{
    return plant_query::DayText(first).substr(0, period == PlantPeriod::Month ? 7 : 10);
}

std::int64_t FirstOfMonth(std::int64_t day)
{
    return day - DayOfMonth(day) + 1;
}

const char* PeriodName(PlantPeriod period)
{
    if (period == PlantPeriod::Month)
        return "month";
    return period == PlantPeriod::Week ? "week" : "day";
}

bool IsEntered(double number)
{
    return std::isfinite(number) && number > 0;
}

} // namespace plant_report
