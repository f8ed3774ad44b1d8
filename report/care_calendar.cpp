#include "axes.h"
#include "care_days.h"
#include "text.h"
#include "words.h"

#include "days.h"

#include <algorithm>
#include <array>
#include <string>

namespace plant_report
{

namespace
{

constexpr std::int64_t MostDaysOfDayCells = 732;
constexpr std::int64_t MostDaysOfWeekCells = 3660;
constexpr std::int64_t MostYears = 40;
constexpr double CellLabelSize = 11;
constexpr double LabelHeight = 18;

// ---------------------------------------------------------------------------------------------------------------------
// Data

// The care of a day, a week or a month, by the first day.
struct CareCells
{
    PlantPeriod Period = PlantPeriod::Day;
    std::map<std::int64_t, CareCount> Care;
    std::int64_t First = 0; // day
    std::int64_t Last = 0;
    std::int64_t Most = 0; // feedings and waterings in a cell
    CareCount Sum;
    std::size_t CareDays = 0;
    bool IsCut = false; // earlier years are left out
};

std::int64_t YearOf(std::int64_t day)
{
    return std::stoll(plant_query::DayText(day));
}

std::int64_t CellOf(std::int64_t day, PlantPeriod period)
{
    if (period == PlantPeriod::Month)
        return FirstOfMonth(day);
    return period == PlantPeriod::Week ? plant_query::MondayOf(day) : day;
}

CareCells CellsOf(std::map<std::int64_t, CareCount> days)
{
    CareCells cells;
    cells.Last = days.rbegin()->first;
    while (YearOf(days.begin()->first) <= YearOf(cells.Last) - MostYears)
    {
        days.erase(days.begin());
        cells.IsCut = true;
    }
    cells.First = days.begin()->first;
    cells.CareDays = days.size();
    const std::int64_t length = cells.Last - cells.First + 1;
    if (length > MostDaysOfDayCells)
        cells.Period = length > MostDaysOfWeekCells ? PlantPeriod::Month : PlantPeriod::Week;
    for (const auto& [day, care] : days)
    {
        CareCount& cell = cells.Care[CellOf(day, cells.Period)];
        cell.Feedings += care.Feedings;
        cell.Waterings += care.Waterings;
        cells.Sum.Feedings += care.Feedings;
        cells.Sum.Waterings += care.Waterings;
        cells.Most = std::max(cells.Most, cell.Number());
    }
    return cells;
}

// ---------------------------------------------------------------------------------------------------------------------
// Scales

// A range of numbers that look alike. There are up to four, of equal length.
struct CountStep
{
    std::int64_t Least = 0;
    std::int64_t Most = 0;
    Role Colour = Role::Count1;
    double Side = 0;   // of the square of a day, as a part of the cell: the size says what the colour says
    double Height = 0; // of the bar of a week or month, as a part of the cell
};

std::vector<CountStep> StepsOf(std::int64_t most)
{
    constexpr std::array<Role, 4> colours = {Role::Count1, Role::Count2, Role::Count3, Role::Count4};
    constexpr std::array<double, 4> sides = {0.56, 0.68, 0.8, 0.92};
    constexpr std::array<double, 4> heights = {0.23, 0.46, 0.69, 0.92};
    const std::int64_t length = most / 4 + (most % 4 > 0 ? 1 : 0);
    const std::int64_t number = most / length + (most % length > 0 ? 1 : 0);
    std::vector<CountStep> steps;
    for (std::int64_t i = 0; i < number; ++i)
    {
        const auto look = static_cast<std::size_t>(4 - number + i); // the greatest number has the last look
        CountStep& step = steps.emplace_back();
        step.Least = i * length + 1;
        step.Most = std::min((i + 1) * length, most);
        step.Colour = colours.at(look);
        step.Side = sides.at(look);
        step.Height = heights.at(look);
    }
    return steps;
}

const CountStep& StepOf(const std::vector<CountStep>& steps, std::int64_t number)
{
    return *std::find_if(steps.begin(), steps.end(), [&](const CountStep& step) { return number <= step.Most; });
}

// The places of cells. By day, a column is a week, and as many columns as fit are a strip. Otherwise a row is a year.
struct CalendarGrid
{
    double Left = 0, Width = 0, Height = 0; // of a cell
    std::int64_t First = 0, Last = 0;       // a whole number of weeks by day; otherwise the first and last year
    std::int64_t Columns = 0;

    double StripTop(std::int64_t strip) const
    {
        return LabelHeight + static_cast<double>(strip) * (7 * Height + 10 + LabelHeight);
    }
    double RowTop(std::int64_t year) const { return LabelHeight + static_cast<double>(year - First) * Height; }
    double ColumnLeft(std::int64_t column) const { return Left + static_cast<double>(column) * Width; }
};

CalendarGrid GridOf(const CareCells& cells, double width)
{
    CalendarGrid grid;
    grid.Left = 38;
    const double room = width - grid.Left - 2;
    if (cells.Period == PlantPeriod::Day)
    {
        grid.First = plant_query::MondayOf(cells.First);
        grid.Last = plant_query::MondayOf(cells.Last) + 6;
        const std::int64_t weeks = (grid.Last - grid.First + 1) / 7;
        const auto fitting = static_cast<std::int64_t>(room / 11.5);
        const std::int64_t strips = (weeks + fitting - 1) / fitting;
        grid.Columns = (weeks + strips - 1) / strips;
        grid.Width = grid.Height = std::min(room / static_cast<double>(grid.Columns), 18.0);
        return grid;
    }
    const std::int64_t midWeek =
        cells.Period == PlantPeriod::Week ? 3 : 0; // the year of a week is that of its Thursday
    grid.First = YearOf(cells.Care.begin()->first + midWeek);
    grid.Last = YearOf(cells.Care.rbegin()->first + midWeek);
    grid.Columns = cells.Period == PlantPeriod::Week ? 53 : 12;
    grid.Width = room / static_cast<double>(grid.Columns);
    grid.Height = 22;
    return grid;
}

double BottomOf(const CalendarGrid& grid, PlantPeriod period)
{
    if (period == PlantPeriod::Day)
        return grid.StripTop(((grid.Last - grid.First) / 7) / grid.Columns) + 7 * grid.Height;
    return grid.RowTop(grid.Last + 1);
}

std::pair<double, double> TopLeftOf(const CalendarGrid& grid, PlantPeriod period, std::int64_t day)
{
    if (period == PlantPeriod::Day)
    {
        const std::int64_t week = (day - grid.First) / 7;
        return {grid.ColumnLeft(week % grid.Columns),
                grid.StripTop(week / grid.Columns) + static_cast<double>((day - grid.First) % 7) * grid.Height};
    }
    if (period == PlantPeriod::Month)
        return {grid.ColumnLeft(std::stoll(plant_query::DayText(day).substr(5)) - 1), grid.RowTop(YearOf(day))};
    const std::int64_t thursday = day + 3;
    const std::string january = plant_query::DayText(thursday).substr(0, 4) + "-01-01";
    return {grid.ColumnLeft((thursday - plant_query::DaysSinceEpoch(january).value_or(thursday)) / 7),
            grid.RowTop(YearOf(thursday))};
}

// ---------------------------------------------------------------------------------------------------------------------
// Marks

std::string CellTitle(std::int64_t day, PlantPeriod period)
{
    std::string label = DayLabel(day);
    if (period == PlantPeriod::Day)
        return label;
    return period == PlantPeriod::Week ? "The week of " + label : label.substr(label.find(' ') + 1);
}

void DrawCells(Drawing& drawing, const CareCells& cells, const CalendarGrid& grid, const std::vector<CountStep>& steps)
{
    const bool isSquare = cells.Period == PlantPeriod::Day;
    if (isSquare)
        for (std::int64_t day = cells.First; day <= cells.Last; ++day)
            if (cells.Care.count(day) == 0)
            {
                const auto [x, y] = TopLeftOf(grid, cells.Period, day);
                drawing.Rect(x + grid.Width / 2 - 1, y + grid.Height / 2 - 1, 2, 2, Role::Line);
            }
    for (const auto& [day, care] : cells.Care)
    {
        const auto [x, y] = TopLeftOf(grid, cells.Period, day);
        const CountStep& step = StepOf(steps, care.Number());
        const double height = (isSquare ? step.Side : step.Height) * grid.Height;
        const double width = isSquare ? height : grid.Width - 1;
        // Squares are in the middle of their cells; the bars of weeks and months stand on the line of their year.
        drawing.Rect(x + (grid.Width - width) / 2, y + (isSquare ? (grid.Height - height) / 2 : grid.Height - height),
                     width, height, step.Colour, CellTitle(day, cells.Period) + ": " + CareLabel(care));
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Axes and words

// The days before each strip, and the months above it where they begin.
void DrawMonthsAndDays(Drawing& drawing, const CalendarGrid& grid)
{
    double taken = 0; // by the words of the strip
    for (std::int64_t monday = grid.First; monday <= grid.Last; monday += 7)
    {
        const std::int64_t week = (monday - grid.First) / 7;
        const double top = grid.StripTop(week / grid.Columns);
        const bool beginsStrip = week % grid.Columns == 0;
        if (beginsStrip)
        {
            taken = 0;
            for (const auto& [day, name] : {std::pair{0.5, "Mon"}, {2.5, "Wed"}, {4.5, "Fri"}, {6.5, "Sun"}})
                drawing.Text(grid.Left - 6, top + day * grid.Height + 4, name, Anchor::End, Role::Faint, CellLabelSize);
        }
        const std::int64_t month = FirstOfMonth(monday + 6); // that of the Sunday
        const bool beginsMonth = month >= monday;
        const double x = grid.ColumnLeft(week % grid.Columns);
        std::string label = DayLabel(month).substr(2); // without the "1 "
        const std::string name = label.substr(0, 3);
        const bool isBeforeJanuary = name == "Dec" && grid.Columns > 5 && grid.Last - monday > 35;
        if (name != "Jan" && (!beginsStrip || isBeforeJanuary)) // the year is named once
            label = name;
        if (!(beginsStrip || beginsMonth) || x < taken || x + TextWidth(label, CellLabelSize) > drawing.Width())
            continue;
        drawing.Text(x, top - 6, label, Anchor::Start, Role::Faint, CellLabelSize);
        taken = x + TextWidth(label, CellLabelSize) + 5;
    }
}

// The years before the rows, and the months above them.
void DrawMonthsAndYears(Drawing& drawing, const CalendarGrid& grid)
{
    constexpr std::array<const char*, 12> months = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const double year = grid.Width * static_cast<double>(grid.Columns);
    const std::size_t each = year / 12 > TextWidth("May ", CellLabelSize) ? 1 : 3;
    for (std::size_t month = 0; month < months.size(); month += each)
        drawing.Text(grid.Left + year * static_cast<double>(month) / 12, LabelHeight - 6, months.at(month),
                     Anchor::Start, Role::Faint, CellLabelSize);
    for (std::int64_t row = grid.First; row <= grid.Last; ++row)
    {
        const double bottom = grid.RowTop(row + 1);
        drawing.Line(grid.Left, bottom, grid.Left + year, bottom, Role::Line);
        drawing.Text(grid.Left - 6, bottom - 6, std::to_string(row), Anchor::End, Role::Faint, CellLabelSize);
    }
}

constexpr double KeyCell = 15;

std::string StepLabel(const CountStep& step)
{
    std::string label = CountLabel(step.Least);
    if (step.Most > step.Least)
        label += "–" + CountLabel(step.Most);
    return label;
}

// The words of the key, and the steps after them or, where there is no room, below them.
struct CalendarKey
{
    CalendarKey(const std::vector<CountStep>& steps, PlantPeriod period, double width, double top)
        : Words(std::string("Feedings and waterings a ") + PeriodName(period)), Top(top)
    {
        const double words = TextWidth(Words, CellLabelSize) + 14;
        double room = words;
        for (const CountStep& step : steps)
            room += KeyCell + 18 + TextWidth(StepLabel(step), CellLabelSize);
        StepsLeft = room <= width + 14 ? words : 0;
        StepsTop = room <= width + 14 ? top : top + 20;
    }

    std::string Words;
    double Top, StepsLeft, StepsTop;
    double Bottom() const { return StepsTop + 20; }
};

void DrawKey(Drawing& drawing, const std::vector<CountStep>& steps, const CalendarKey& key)
{
    drawing.Text(0, key.Top + 12, key.Words, Anchor::Start, Role::Faint, CellLabelSize);
    KeyLines line(key.StepsLeft, drawing.Width(), key.StepsTop);
    for (const CountStep& step : steps)
    {
        const std::string label = StepLabel(step);
        const double x = line.Place(KeyCell + 4 + TextWidth(label, CellLabelSize));
        const double side = KeyCell * step.Side;
        drawing.Rect(x + (KeyCell - side) / 2, line.Middle() - side / 2, side, side, step.Colour);
        drawing.Text(x + KeyCell + 4, line.Baseline(), label, Anchor::Start, Role::Faint, CellLabelSize);
    }
}

void AddRows(PlantChart& chart, const std::map<std::int64_t, CareCount>& care, PlantPeriod period)
{
    for (const auto& [day, count] : care)
        AddRow(chart, {PeriodText(day, period), CountLabel(count.Feedings), CountLabel(count.Waterings)});
}

std::string CalendarSentence(const CareCells& cells)
{
    std::string sentence = Counted(cells.CareDays, "day", "days") + " of care " + DaysLabel(cells.First, cells.Last) +
                           ": " + CareLabel(cells.Sum) + ". The larger a cell, the more care there was that " +
                           PeriodName(cells.Period) + ".";
    if (cells.IsCut)
        sentence += " Earlier years are left out.";
    return sentence;
}

} // namespace

} // namespace plant_report

PlantChart DrawPlantCareCalendar(const std::vector<PlantCalendarDay>& days, double width)
{
    using namespace plant_report;
    PlantChart chart = EmptyChart("Calendar of care", "No feeding or watering has a complete date.",
                                  {"Date", "Feedings", "Waterings"});
    const UsualCare care = UsualCareOf(CareByDay(days));
    if (care.Usual.empty())
        return chart;
    const CareCells cells = CellsOf(care.Usual);

    const std::vector<CountStep> steps = StepsOf(cells.Most);
    const CalendarGrid grid = GridOf(cells, DrawnWidth(width));
    const double bottom = BottomOf(grid, cells.Period);

    const CalendarKey key(steps, cells.Period, DrawnWidth(width), bottom + 12);
    Drawing drawing(DrawnWidth(width), key.Bottom());
    DrawCells(drawing, cells, grid, steps);

    if (cells.Period == PlantPeriod::Day)
        DrawMonthsAndDays(drawing, grid);
    else
        DrawMonthsAndYears(drawing, grid);
    DrawKey(drawing, steps, key);
    chart.Sentence = CalendarSentence(cells) + FarCareSentence(care.Far);
    AddRows(chart, care.Far, PlantPeriod::Day);
    AddRows(chart, cells.Care, cells.Period);
    chart.SVG = drawing.SVG("plant-care-calendar", chart.Heading, chart.Sentence);
    return chart;
}
