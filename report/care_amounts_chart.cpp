#include "axes.h"
#include "text.h"
#include "usual_days.h"
#include "words.h"

#include <algorithm>
#include <map>

namespace plant_report
{

namespace
{

// ---------------------------------------------------------------------------------------------------------------------
// Data

// The millilitres of each period, by its first day.
using Amounts = std::map<std::int64_t, double>;

Amounts AmountsOf(const std::vector<PlantTotal>& totals)
{
    Amounts amounts;
    for (const PlantTotal& total : totals)
        if (const auto day = FirstDayOf(total.Period); day && IsEntered(total.AmountMl))
            amounts[*day] += total.AmountMl;
    return amounts;
}

// Adds the number of feedings and waterings of each period.
void CountCare(const std::vector<PlantTotal>& totals, std::map<std::int64_t, std::int64_t>& numbers)
{
    for (const PlantTotal& total : totals)
        if (const auto day = FirstDayOf(total.Period); day && IsEntered(total.AmountMl))
            numbers[*day] += total.Feedings + total.Waterings;
}

std::int64_t FarCare(const std::map<std::int64_t, std::int64_t>& numbers, const DayRange& usual)
{
    std::int64_t far = 0;
    for (const auto& [day, number] : numbers)
        far += usual.Holds(day) ? 0 : number;
    return far;
}

// Removes the amounts of days that are years away from the others. Returns them.
Amounts WithoutFar(Amounts& amounts, const DayRange& usual)
{
    Amounts far;
    for (auto amount = amounts.begin(); amount != amounts.end();)
        if (usual.Holds(amount->first))
            ++amount;
        else
            far.insert(amounts.extract(amount++));
    return far;
}

// Water or feed: a small chart of its own, on the scale of both.
struct Given
{
    const char* Title;
    const char* Name;
    Role Colour;
    Amounts Of;
};

// The amounts are shown in millilitres or, where they are large, in litres.
struct Unit
{
    const char* Name;
    const char* Sign;
    double Ml;
};

constexpr Unit Millilitres = {"millilitres", "ml", 1};
constexpr Unit Litres = {"litres", "l", 1000};

double SumOf(const Amounts& amounts)
{
    double sum = 0;
    for (const auto& [day, ml] : amounts)
        sum += ml;
    return sum;
}

std::string AmountLabel(double ml)
{
    const Unit& unit = ml >= Litres.Ml ? Litres : Millilitres;
    return NumberLabel(ml / unit.Ml, ml >= 100 * Litres.Ml ? 0 : 1) + " " + unit.Sign;
}

// The days and amounts of all small charts.
struct AmountRange
{
    std::int64_t First = INT64_MAX;
    std::int64_t Last = INT64_MIN; // the first day after the last period
    double Most = 0;
};

AmountRange RangeOf(const std::vector<Given>& givens, PlantPeriod period)
{
    AmountRange range;
    for (const Given& given : givens)
        for (const auto& [day, ml] : given.Of)
        {
            range.First = std::min(range.First, day);
            range.Last = std::max(range.Last, NextPeriod(day, period));
            range.Most = std::max(range.Most, ml);
        }
    return range;
}

// ---------------------------------------------------------------------------------------------------------------------
// Marks, axes and words

void DrawBars(Drawing& drawing, const Given& given, PlantPeriod period, const DayScale& days,
              const NumberScale& amounts, const Unit& unit)
{
    const double bottom = amounts(0);
    for (const auto& [day, ml] : given.Of)
    {
        const double left = days(static_cast<double>(day));
        const double pitch = days(static_cast<double>(NextPeriod(day, period))) - left;
        const double width = std::min(std::max(1.0, pitch * 0.8), 28.0);
        const double top = std::min(amounts(ml / unit.Ml), bottom - 0.5); // the least amount is seen, too
        drawing.Rect(left + (pitch - width) / 2, top, width, bottom - top, given.Colour,
                     PeriodText(day, period) + ": " + AmountLabel(ml) + " of " + given.Name);
    }
}

std::string AmountsSentence(const std::vector<Given>& givens, const AmountRange& range, PlantPeriod period)
{
    std::string sentence;
    for (const Given& given : givens)
        sentence += (sentence.empty() ? "" : " and ") + AmountLabel(SumOf(given.Of)) + " of " + given.Name;
    return sentence + ", " + DaysLabel(range.First, range.Last - 1) + ", by " + PeriodName(period) + ".";
}

void AddRows(PlantChart& chart, const Amounts& water, const Amounts& feed, PlantPeriod period)
{
    std::map<std::int64_t, std::pair<double, double>> byPeriod;
    for (const auto& [day, ml] : water)
        byPeriod[day].first = ml;
    for (const auto& [day, ml] : feed)
        byPeriod[day].second = ml;
    for (const auto& [day, ml] : byPeriod)
        AddRow(chart, {PeriodText(day, period), EnteredLabel(ml.first), EnteredLabel(ml.second)});
}

} // namespace

} // namespace plant_report

PlantChart DrawPlantCareAmounts(const std::vector<PlantTotal>& waterings, const std::vector<PlantTotal>& feedings,
                                PlantPeriod period, double width)
{
    using namespace plant_report;
    constexpr double titleHeight = 26;
    constexpr double panelHeight = 100;
    PlantChart chart = EmptyChart("Water and feed", "No feeding or watering has an amount and a complete date.",
                                  {"Date", "Water, ml", "Feed, ml"});
    std::map<std::int64_t, std::int64_t> numbers;
    CountCare(waterings, numbers);
    CountCare(feedings, numbers);
    if (numbers.empty())
        return chart;
    const DayRange usual = UsualDays(numbers);
    Amounts water = AmountsOf(waterings);
    Amounts feed = AmountsOf(feedings);
    const Amounts farWater = WithoutFar(water, usual);
    const Amounts farFeed = WithoutFar(feed, usual);
    std::vector<Given> givens;
    if (!water.empty())
        givens.push_back({"Water", "water", Role::Water, water});
    if (!feed.empty())
        givens.push_back({"Feed", "feed", Role::Feed, feed});
    const AmountRange range = RangeOf(givens, period);
    const Unit& unit = range.Most >= 2 * Litres.Ml ? Litres : Millilitres;

    const double left = LabelsWidth(NumberScale(0, range.Most / unit.Ml, 0, 1, 3)) + 8;
    const double right = DrawnWidth(width) - 4;
    const DayScale days(range.First, range.Last, left, right);

    Drawing drawing(DrawnWidth(width),
                    static_cast<double>(givens.size()) * (titleHeight + panelHeight + 10) + AxisHeight);
    double top = 0;
    for (const Given& given : givens)
    {
        const double bottom = top + titleHeight + panelHeight;
        const NumberScale amounts(0, range.Most / unit.Ml, bottom, top + titleHeight, 3);
        DrawAxisBefore(drawing, amounts, left, right, true);
        DrawBars(drawing, given, period, days, amounts, unit);
        drawing.Text(0, top + 12, std::string(given.Title) + ", " + unit.Name + " a " + PeriodName(period));
        if (&given == &givens.back())
            DrawAxisBelow(drawing, days.Ticks(), days, bottom, bottom + 4, 0, drawing.Width());
        top = bottom + 10;
    }

    chart.Sentence = AmountsSentence(givens, range, period) +
                     FarSentence(FarCare(numbers, usual), "feeding or watering", "feedings and waterings");
    AddRows(chart, farWater, farFeed, period);
    AddRows(chart, water, feed, period);
    chart.SVG = drawing.SVG("plant-care-amounts", chart.Heading, chart.Sentence);
    return chart;
}
