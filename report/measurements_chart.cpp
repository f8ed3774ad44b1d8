#include "axes.h"
#include "text.h"
#include "usual_days.h"
#include "words.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace plant_report
{

namespace
{

constexpr std::size_t MostNames = 12;
constexpr std::size_t FewDots = 12;  // these are large
constexpr std::size_t MostDots = 60; // a series with more is drawn as a line, and its single values as dots

// ---------------------------------------------------------------------------------------------------------------------
// Data

struct MeasuredPeriod
{
    std::int64_t Day; // the first of the period
    PlantFigures Figures;
};

// The EC or the pH of a name.
using Series = std::vector<MeasuredPeriod>;

struct NameMeasured
{
    std::string Name;
    std::int64_t Entries = 0;
    Series EC;
    Series PH;
};

// How many times EC and pH were entered.
std::int64_t ValuesOf(const PlantTotal& total)
{
    return std::max<std::int64_t>(total.EC.Number, 0) + std::max<std::int64_t>(total.PH.Number, 0);
}

// Totals without and with dates that are years away from the others.
struct UsualTotals
{
    std::vector<PlantTotal> Usual;
    std::vector<PlantTotal> Far;
    std::int64_t FarValues = 0;
};

UsualTotals UsualTotalsOf(const std::vector<PlantTotal>& totals)
{
    UsualTotals split;
    std::map<std::int64_t, std::int64_t> values;
    for (const PlantTotal& total : totals)
        if (const auto day = FirstDayOf(total.Period); day && ValuesOf(total) > 0)
            values[*day] += ValuesOf(total);
    if (values.empty())
        return split;
    const DayRange usual = UsualDays(values);
    for (const PlantTotal& total : totals)
    {
        const auto day = FirstDayOf(total.Period);
        const bool isFar = day && !usual.Holds(*day);
        (isFar ? split.Far : split.Usual).push_back(total);
        split.FarValues += isFar ? ValuesOf(total) : 0;
    }
    return split;
}

// The names with most entries first.
std::vector<NameMeasured> NamesOf(const std::vector<PlantTotal>& totals)
{
    std::map<std::pair<std::string, std::string>, NameMeasured> byKey; // two plants may have one name
    for (const PlantTotal& total : totals)
    {
        const auto day = FirstDayOf(total.Period);
        if (!day || ValuesOf(total) == 0)
            continue;
        NameMeasured& measured = byKey[{total.Name, total.Key}];
        measured.Name = total.Name;
        measured.Entries += total.Feedings + total.Waterings;
        if (total.EC.Number > 0)
            measured.EC.push_back({*day, total.EC});
        if (total.PH.Number > 0)
            measured.PH.push_back({*day, total.PH});
    }
    std::vector<NameMeasured> names;
    names.reserve(byKey.size());
    for (auto& [key, measured] : byKey)
        names.push_back(std::move(measured));
    std::stable_sort(names.begin(), names.end(),
                     [](const NameMeasured& a, const NameMeasured& b) { return a.Entries > b.Entries; });
    for (NameMeasured& measured : names)
        for (Series* series : {&measured.EC, &measured.PH})
            std::stable_sort(series->begin(), series->end(),
                             [](const MeasuredPeriod& a, const MeasuredPeriod& b) { return a.Day < b.Day; });
    return names;
}

// EC or pH: a section of the picture with a small chart for each name.
struct Measure
{
    const char* Name;
    Role Colour;
    Series NameMeasured::*Of;
};

constexpr Measure ECMeasure = {"EC", Role::EC, &NameMeasured::EC};
constexpr Measure PHMeasure = {"pH", Role::PH, &NameMeasured::PH};

// ---------------------------------------------------------------------------------------------------------------------
// Scales

// The ranges of one measure over all names.
struct Ranges
{
    std::int64_t First, Last;
    double Least, Most;
};

void Extend(Ranges& ranges, const Series& series)
{
    for (const MeasuredPeriod& period : series)
    {
        ranges.First = std::min(ranges.First, period.Day);
        ranges.Last = std::max(ranges.Last, period.Day);
        ranges.Least = std::min(ranges.Least, period.Figures.Mean);
        ranges.Most = std::max(ranges.Most, period.Figures.Mean);
    }
}

struct Panels
{
    std::size_t Columns;
    double Left, Pitch, Width, Height; // of a panel, and from one to the next
    static constexpr double Title = 22;
    static constexpr double Gap = 12;
    double RowHeight() const { return Title + Height + Gap; }
};

Panels PanelsOf(std::size_t names, double width, double labels)
{
    const std::size_t columns = std::min<std::size_t>(names, width >= 560 ? 3 : 2);
    const double left = labels + 8;
    const double gap = 14;
    const double pitch = (width - left - 4 + gap) / static_cast<double>(columns);
    return {columns, left, pitch, pitch - gap, columns == 1 ? 110.0 : 76.0};
}

// ---------------------------------------------------------------------------------------------------------------------
// Marks

void DrawDot(Drawing& drawing, const Measure& measure, double x, double y, double radius, const std::string& title)
{
    if (measure.Colour == Role::PH)
        drawing.Diamond(x, y, radius * 1.3, measure.Colour, title);
    else
        drawing.Circle(x, y, radius, measure.Colour, title);
}

// Values of periods that follow each other are joined.
void DrawSeries(Drawing& drawing, const Measure& measure, const Series& series, PlantPeriod period,
                const DayScale& days, const NumberScale& values)
{
    const double radius = series.size() <= FewDots ? 3 : 2.2;
    std::vector<std::pair<double, double>> run;
    const auto drawRun = [&]
    {
        if (run.size() > 1)
            drawing.Polyline(run, measure.Colour);
        else if (series.size() > MostDots)
            DrawDot(drawing, measure, run.front().first, run.front().second, 2, {});
        run.clear();
    };
    for (std::size_t i = 0; i < series.size(); ++i)
    {
        if (i > 0 && NextPeriod(series[i - 1].Day, period) != series[i].Day)
            drawRun();
        run.emplace_back(days(static_cast<double>(series[i].Day)), values(series[i].Figures.Mean));
    }
    drawRun();
    if (series.size() > MostDots)
        return;
    for (const MeasuredPeriod& measured : series)
        DrawDot(drawing, measure, days(static_cast<double>(measured.Day)), values(measured.Figures.Mean), radius,
                DayLabel(measured.Day) + ": " + measure.Name + " " + NumberLabel(measured.Figures.Mean) + ", " +
                    Counted(measured.Figures.Number, "entry", "entries"));
}

// ---------------------------------------------------------------------------------------------------------------------
// Sections

struct Section
{
    Measure Of;
    Ranges Range;
    std::vector<const NameMeasured*> Names;
    std::size_t Rows(const Panels& panels) const { return (Names.size() + panels.Columns - 1) / panels.Columns; }
};

// The measures that were entered. The days are those of all.
std::vector<Section> SectionsOf(const std::vector<NameMeasured>& names)
{
    std::vector<Section> sections;
    Ranges both{INT64_MAX, INT64_MIN, HUGE_VAL, -HUGE_VAL};
    for (const Measure& measure : {ECMeasure, PHMeasure})
    {
        Section section{measure, {INT64_MAX, INT64_MIN, HUGE_VAL, -HUGE_VAL}, {}};
        for (const NameMeasured& name : names)
            if (!(name.*measure.Of).empty())
            {
                section.Names.push_back(&name);
                Extend(section.Range, name.*measure.Of);
                Extend(both, name.*measure.Of);
            }
        if (!section.Names.empty())
            sections.push_back(section);
    }
    for (Section& section : sections)
    {
        section.Range.First = both.First;
        section.Range.Last = both.Last;
    }
    return sections;
}

constexpr double SectionHeadingHeight = 26;

double HeightOf(const Section& section, const Panels& panels)
{
    return SectionHeadingHeight + static_cast<double>(section.Rows(panels)) * panels.RowHeight() + AxisHeight;
}

void DrawSection(Drawing& drawing, const Section& section, const Panels& panels, PlantPeriod period, double top)
{
    drawing.Text(0, top + 13, section.Of.Name, Anchor::Start, Role::Ink, 13);
    DrawDot(drawing, section.Of, TextWidth(section.Of.Name, 13) + 8, top + 9, 3, {});
    for (std::size_t i = 0; i < section.Names.size(); ++i)
    {
        const NameMeasured& name = *section.Names[i];
        const std::size_t row = i / panels.Columns;
        const double left = panels.Left + static_cast<double>(i % panels.Columns) * panels.Pitch;
        const double titleTop = top + SectionHeadingHeight + static_cast<double>(row) * panels.RowHeight();
        const double panelTop = titleTop + Panels::Title;
        const double bottom = panelTop + panels.Height;
        const DayScale days(section.Range.First, section.Range.Last, left + 4, left + panels.Width - 4);
        const NumberScale values(section.Range.Least, section.Range.Most, bottom, panelTop, 3);

        DrawAxisBefore(drawing, values, left, left + panels.Width, i % panels.Columns == 0);
        DrawSeries(drawing, section.Of, name.*section.Of.Of, period, days, values);
        drawing.Text(left, titleTop + 13, ShownName(name.Name, "(no name)"), Anchor::Start, Role::Ink, 12,
                     panels.Width);
        if (i + panels.Columns >= section.Names.size()) // nothing is below
            DrawAxisBelow(drawing, days.Ticks(), days, bottom, bottom + 3, left, left + panels.Width);
    }
}

void AddRows(PlantChart& chart, const std::vector<NameMeasured>& names, PlantPeriod period)
{
    for (const NameMeasured& name : names)
        for (const Measure& measure : {ECMeasure, PHMeasure})
            for (const MeasuredPeriod& measured : name.*measure.Of)
            {
                const PlantFigures& figures = measured.Figures;
                AddRow(chart, {ShownName(name.Name, ""), PeriodText(measured.Day, period), measure.Name,
                               CountLabel(figures.Number), NumberLabel(figures.Mean), NumberLabel(figures.Least),
                               NumberLabel(figures.Most)});
            }
}

// "from 1.2 to 2.4", or "1.8" where both numbers have the same label.
std::string RangeLabel(double least, double most)
{
    std::string label = NumberLabel(least);
    const std::string last = NumberLabel(most);
    if (label != last)
        label = "from " + label + " to " + last;
    return label;
}

std::string MeasurementsSentence(const std::vector<Section>& sections, std::size_t names, std::size_t more,
                                 PlantPeriod period)
{
    const Ranges& days = sections.front().Range;
    std::string sentence = std::string("The mean of each ") + PeriodName(period) + ", " +
                           DaysLabel(days.First, NextPeriod(days.Last, period) - 1) + ":";
    for (const Section& section : sections)
        sentence += std::string(&section == &sections.front() ? " " : "; ") + section.Of.Name + " " +
                    RangeLabel(section.Range.Least, section.Range.Most);
    sentence += ". A line is interrupted where nothing was entered.";
    if (more > 0)
        sentence += " The " + std::to_string(names) + " with the most entries are drawn; " +
                    NumberLabel(static_cast<double>(more)) + " more are not.";
    return sentence;
}

} // namespace

} // namespace plant_report

PlantChart DrawPlantMeasurements(const std::vector<PlantTotal>& totals, PlantPeriod period, double width)
{
    using namespace plant_report;
    PlantChart chart = EmptyChart("EC and pH", "No feeding or watering has a complete date and an EC or a pH.",
                                  {"Name", "Date", "Measure", "Entries", "Mean", "Least", "Most"});
    const UsualTotals split = UsualTotalsOf(totals);
    std::vector<NameMeasured> names = NamesOf(split.Usual);
    if (names.empty())
        return chart;
    const std::size_t more = names.size() - std::min(names.size(), MostNames);
    names.resize(names.size() - more);
    const std::vector<Section> sections = SectionsOf(names);

    double labels = 0;
    for (const Section& section : sections)
        labels = std::max(labels, LabelsWidth(NumberScale(section.Range.Least, section.Range.Most, 0, 1, 3)));
    const Panels panels = PanelsOf(names.size(), DrawnWidth(width), labels);

    double height = 0;
    for (const Section& section : sections)
        height += HeightOf(section, panels);
    Drawing drawing(DrawnWidth(width), height);
    double top = 0;
    for (const Section& section : sections)
    {
        DrawSection(drawing, section, panels, period, top);
        top += HeightOf(section, panels);
    }

    chart.Sentence =
        MeasurementsSentence(sections, names.size(), more, period) + FarSentence(split.FarValues, "value", "values");
    AddRows(chart, NamesOf(split.Far), period);
    AddRows(chart, names, period);
    chart.SVG = drawing.SVG("plant-measurements", chart.Heading, chart.Sentence);
    return chart;
}
