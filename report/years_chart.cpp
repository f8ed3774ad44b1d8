#include "axes.h"
#include "care_days.h"
#include "scale.h"
#include "text.h"
#include "words.h"

#include "days.h"

#include <algorithm>

namespace plant_report
{

namespace
{

constexpr std::size_t MostYearLines = 10;
constexpr std::int64_t DaysOfYear = 366; // 29 February has a place in each year

// ---------------------------------------------------------------------------------------------------------------------
// Data

// The care of a calendar year: how much there was from its beginning to each day of care. Days are counted from 0.
struct CareYear
{
    std::string Year;
    std::map<std::int64_t, std::int64_t> UpTo;

    std::int64_t Until(std::int64_t day) const
    {
        const auto after = UpTo.upper_bound(day);
        return after == UpTo.begin() ? 0 : std::prev(after)->second;
    }
    std::int64_t Sum() const { return UpTo.rbegin()->second; }
    std::int64_t LastDay() const { return UpTo.rbegin()->first; }
};

// The place of a day, `-MM-DD`, in a year of 366 days.
std::int64_t DayInYear(const std::string& monthAndDay)
{
    return *plant_query::DaysSinceEpoch("2000" + monthAndDay) - *plant_query::DaysSinceEpoch("2000-01-01");
}

// Oldest first.
std::vector<CareYear> YearsOf(const std::map<std::int64_t, CareCount>& days)
{
    std::vector<CareYear> years;
    for (const auto& [day, care] : days)
    {
        const std::string date = plant_query::DayText(day);
        const std::string number = date.substr(0, 4);
        if (years.empty() || years.back().Year != number)
            years.push_back({number, {}});
        CareYear& year = years.back();
        const std::int64_t before = year.UpTo.empty() ? 0 : year.Sum();
        year.UpTo[DayInYear(date.substr(4))] = before + care.Number();
    }
    return years;
}

std::int64_t LastDayOfMonth(std::size_t month)
{
    if (month + 1 == MonthNames.size())
        return DaysOfYear - 1;
    const std::string next = std::to_string(month + 2);
    return DayInYear((next.size() < 2 ? "-0" : "-") + next + "-01") - 1;
}

// ---------------------------------------------------------------------------------------------------------------------
// Scales

struct YearScale
{
    double Left, Right;
    double operator()(std::int64_t day) const
    {
        return Left + static_cast<double>(day) / static_cast<double>(DaysOfYear) * (Right - Left);
    }
};

// ---------------------------------------------------------------------------------------------------------------------
// Marks

// The line of a year. That of an earlier one goes on to the end of the year.
void DrawYear(Drawing& drawing, const CareYear& year, bool isLatest, const YearScale& days, const NumberScale& numbers)
{
    std::vector<std::pair<double, double>> line = {{days(0), numbers(0)}};
    double y = numbers(0);
    for (const auto& [day, sum] : year.UpTo)
    {
        line.emplace_back(days(day), y);
        y = numbers(static_cast<double>(sum));
        line.emplace_back(days(day), y);
    }
    if (isLatest)
    {
        drawing.Polyline(line, Role::Mark, 3);
        drawing.Circle(line.back().first, y, 4.5, Role::Mark,
                       year.Year + ": " + Counted(year.Sum(), "feeding or watering", "feedings and waterings"));
        return;
    }
    line.emplace_back(days.Right, y);
    drawing.Polyline(line, Role::Faint, 1);
}

// ---------------------------------------------------------------------------------------------------------------------
// Axes and words

constexpr double NamesGap = 18; // from the ends of the lines

// The names of the earlier years after their lines, at distances at which they can be read. A thin line leads to each.
void DrawEarlierNames(Drawing& drawing, const std::vector<CareYear>& years, double right, const NumberScale& numbers)
{
    constexpr double distance = 14;
    struct Name
    {
        double End; // of the line
        double Y;
        const std::string* Year;
    };
    std::vector<Name> names; // from the bottom up
    for (std::size_t i = 0; i + 1 < years.size(); ++i)
    {
        const double end = numbers(static_cast<double>(years[i].Sum()));
        names.push_back({end, end, &years[i].Year});
    }
    std::stable_sort(names.begin(), names.end(), [](const Name& a, const Name& b) { return a.End > b.End; });
    double before = numbers(0) + distance;
    for (Name& name : names)
        before = name.Y = std::min(name.Y, before - distance);
    // Names that were pushed over the top move down again.
    before = numbers(numbers.Ticks().back().Value) - distance;
    for (auto name = names.rbegin(); name != names.rend(); ++name)
        before = name->Y = std::max(name->Y, before + distance);
    for (const Name& name : names)
    {
        drawing.Line(right + 1, name.End, right + NamesGap - 3, name.Y, Role::Line);
        drawing.Text(right + NamesGap, name.Y + 4, *name.Year, Anchor::Start, Role::Faint);
    }
}

void DrawLatestName(Drawing& drawing, const CareYear& year, const YearScale& days, const NumberScale& numbers)
{
    const double x = days(year.LastDay());
    const double y = numbers(static_cast<double>(year.Sum()));
    const double width = TextWidth(year.Year, 13);
    const double left = x + 10 + width < days.Right ? x + 10 : x - 10 - width;
    drawing.Rect(left - 2, y - 8, width + 4, 16, Role::Ground);
    drawing.Text(left, y + 4, year.Year, Anchor::Start, Role::Ink, 13);
}

// A line where each month begins, and the name below its middle; each third where all have no room.
void DrawMonths(Drawing& drawing, const YearScale& days, double top, double bottom)
{
    const double month = days(31) - days(0);
    const std::size_t named = month < TextWidth("Mar", 12) + 6 ? 3 : 1;
    for (std::size_t i = 0; i < MonthNames.size(); ++i)
    {
        const double x = days(i == 0 ? 0 : LastDayOfMonth(i - 1) + 1);
        drawing.Line(x, top, x, bottom, Role::Line);
        if (i % named == 0)
            drawing.Text(x + month / 2, bottom + 15, MonthNames.at(i), Anchor::Middle, Role::Faint);
    }
}

std::string YearsSentence(const std::vector<CareYear>& years, std::size_t more)
{
    const CareYear& latest = years.back();
    const CareYear& before = years[years.size() - 2];
    const std::string day = DayLabel(*plant_query::DaysSinceEpoch("2000-01-01") + latest.LastDay());
    std::string sentence = "By " + day.substr(0, day.rfind(' ')) + ", " + latest.Year + " had " +
                           Counted(latest.Sum(), "feeding or watering", "feedings and waterings") + "; " + before.Year +
                           " had " + NumberLabel(static_cast<double>(before.Until(latest.LastDay()))) +
                           " by the same day.";
    if (more > 0)
        sentence += " " + Counted(more, "earlier year is", "earlier years are") + " not drawn.";
    return sentence;
}

// `far` are the years that are not drawn because they are far from the others.
void AddMonths(PlantChart& chart, const std::vector<CareYear>& years, const std::vector<CareYear>& far)
{
    for (const auto* list : {&years, &far})
        for (const CareYear& year : *list)
            chart.Columns.push_back(year.Year);
    for (std::size_t month = 0; month < MonthNames.size(); ++month)
    {
        AddRow(chart, {MonthNames.at(month)});
        const std::int64_t before = month == 0 ? -1 : LastDayOfMonth(month - 1);
        for (const CareYear& year : years)
        {
            const bool isOver = &year != &years.back() || year.LastDay() > before;
            chart.Rows.back().emplace_back();
            if (isOver) // at least in part
                chart.Rows.back().back() = CountLabel(year.Until(LastDayOfMonth(month)));
        }
        for (const CareYear& year : far)
            chart.Rows.back().push_back(CountLabel(year.Until(LastDayOfMonth(month))));
    }
}

} // namespace

} // namespace plant_report

PlantChart DrawPlantYears(const std::vector<PlantCalendarDay>& days, double width)
{
    using namespace plant_report;
    PlantChart chart = EmptyChart("Care by calendar year", "No second calendar year has care.", {"By the end of"});
    const UsualCare care = UsualCareOf(CareByDay(days));
    std::vector<CareYear> years = YearsOf(care.Usual);
    if (years.size() < 2)
        return chart;
    const std::size_t more = years.size() - std::min(years.size(), MostYearLines);
    years.erase(years.begin(), years.begin() + static_cast<std::ptrdiff_t>(more));

    constexpr double top = 24;
    constexpr double bottom = 224;
    std::int64_t most = 0;
    for (const CareYear& year : years)
        most = std::max(most, year.Sum());
    const NumberScale numbers(0, static_cast<double>(most), bottom, top, 4);
    const double left = LabelsWidth(numbers) + 8;
    const YearScale scale{left, DrawnWidth(width) - TextWidth("2000", 12) - NamesGap - 2};

    Drawing drawing(DrawnWidth(width), bottom + AxisHeight);
    DrawAxisBefore(drawing, numbers, left, scale.Right, true);
    DrawMonths(drawing, scale, top, bottom);
    for (const CareYear& year : years)
        DrawYear(drawing, year, &year == &years.back(), scale, numbers);

    DrawEarlierNames(drawing, years, scale.Right, numbers);
    DrawLatestName(drawing, years.back(), scale, numbers);
    drawing.Text(0, 12, "Feedings and waterings since 1 January", Anchor::Start, Role::Faint);
    chart.Sentence = YearsSentence(years, more) + FarCareSentence(care.Far);
    AddMonths(chart, years, YearsOf(care.Far));
    chart.SVG = drawing.SVG("plant-years", chart.Heading, chart.Sentence);
    return chart;
}
