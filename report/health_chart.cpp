#include "axes.h"
#include "text.h"
#include "words.h"

#include "days.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>

namespace plant_report
{

namespace
{

constexpr std::size_t MostIssues = 12;
constexpr std::int64_t MostDaysByDay = 183;
constexpr std::int64_t MostDaysByWeek = 2 * 366;

// ---------------------------------------------------------------------------------------------------------------------
// Data

// What was seen of an issue in a period.
struct Sighting
{
    int Worst = 0;
    std::int64_t Observations = 0;
    std::set<std::string> Plants;
};

struct IssueRow
{
    std::string Issue;
    std::int64_t Observations = 0;
    std::map<std::int64_t, Sighting> Sightings; // by the first day of the period
};

struct HealthData
{
    PlantPeriod Period = PlantPeriod::Day;
    std::int64_t First = INT64_MAX; // day
    std::int64_t Last = INT64_MIN;
    std::int64_t Observations = 0;
    std::vector<IssueRow> Issues; // those with most observations first; the last may hold the others
};

std::string WithoutCase(std::string text)
{
    for (char& letter : text)
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    return text;
}

std::int64_t PeriodOf(std::int64_t day, PlantPeriod period)
{
    if (period == PlantPeriod::Month)
        return FirstOfMonth(day);
    return period == PlantPeriod::Week ? plant_query::MondayOf(day) : day;
}

void Add(IssueRow& row, std::int64_t period, const PlantHealth& health)
{
    Sighting& sighting = row.Sightings[period];
    sighting.Worst = std::max(sighting.Worst, std::clamp(health.Observation.Severity, 1, 5));
    ++sighting.Observations;
    sighting.Plants.insert(health.PlantName);
    ++row.Observations;
}

// The issues after the first ones become one.
void JoinOthers(std::vector<IssueRow>& issues)
{
    if (issues.size() <= MostIssues)
        return;
    IssueRow others{std::to_string(issues.size() - MostIssues + 1) + " other issues", 0, {}};
    for (std::size_t i = MostIssues - 1; i < issues.size(); ++i)
    {
        others.Observations += issues[i].Observations;
        for (const auto& [period, sighting] : issues[i].Sightings)
        {
            Sighting& sum = others.Sightings[period];
            sum.Worst = std::max(sum.Worst, sighting.Worst);
            sum.Observations += sighting.Observations;
            sum.Plants.insert(sighting.Plants.begin(), sighting.Plants.end());
        }
    }
    issues.resize(MostIssues - 1);
    issues.push_back(std::move(others));
}

HealthData DataOf(const std::vector<PlantHealth>& observations)
{
    HealthData data;
    for (const PlantHealth& health : observations)
        if (const auto day = plant_query::DaysSinceEpoch(health.Observation.ObservationDate))
        {
            data.First = std::min(data.First, *day);
            data.Last = std::max(data.Last, *day);
            ++data.Observations;
        }
    if (data.Observations == 0)
        return data;
    const std::int64_t length = data.Last - data.First + 1;
    if (length > MostDaysByDay)
        data.Period = length > MostDaysByWeek ? PlantPeriod::Month : PlantPeriod::Week;

    std::map<std::string, IssueRow> byIssue;
    for (const PlantHealth& health : observations)
        if (const auto day = plant_query::DaysSinceEpoch(health.Observation.ObservationDate))
        {
            IssueRow& row = byIssue[WithoutCase(health.Observation.Issue)];
            if (row.Observations == 0)
                row.Issue = ShownName(health.Observation.Issue, "(no issue named)");
            Add(row, PeriodOf(*day, data.Period), health);
        }
    for (auto& [key, row] : byIssue)
        data.Issues.push_back(std::move(row));
    std::stable_sort(data.Issues.begin(), data.Issues.end(),
                     [](const IssueRow& a, const IssueRow& b) { return a.Observations > b.Observations; });
    JoinOthers(data.Issues);
    return data;
}

// ---------------------------------------------------------------------------------------------------------------------
// Scales

constexpr double RowHeight = 26;

// The size of a mark says the severity, as its colour does.
double RadiusOf(int severity)
{
    return 2 + 1.6 * severity;
}

Role ColourOfSeverity(int severity)
{
    constexpr std::array<Role, 5> colours = {Role::Severity1, Role::Severity2, Role::Severity3, Role::Severity4,
                                             Role::Severity5};
    return colours.at(static_cast<std::size_t>(severity - 1));
}

// ---------------------------------------------------------------------------------------------------------------------
// Marks

std::string PlantsLabel(const Sighting& sighting)
{
    if (sighting.Plants.size() == 1)
        return ShownName(*sighting.Plants.begin(), "(no name)");
    return Counted(sighting.Plants.size(), "plant", "plants");
}

void DrawSeverity(Drawing& drawing, double x, double y, int severity, const std::string& title)
{
    drawing.Circle(x, y, RadiusOf(severity) + 1, Role::Ground); // separates marks that touch
    drawing.Circle(x, y, RadiusOf(severity), ColourOfSeverity(severity), title);
}

void DrawIssues(Drawing& drawing, const HealthData& data, const DayScale& scale, double namesEnd, double top)
{
    double middle = top + RowHeight / 2;
    for (const IssueRow& row : data.Issues)
    {
        drawing.Text(namesEnd, middle + 4, row.Issue, Anchor::End, Role::Ink, 12, namesEnd);
        drawing.Line(namesEnd + 8, middle, drawing.Width(), middle, Role::Line);
        for (const auto& [period, sighting] : row.Sightings)
            DrawSeverity(drawing, scale(static_cast<double>(std::max(period, data.First))), middle, sighting.Worst,
                         row.Issue + ", " + PeriodText(period, data.Period) + ": severity " +
                             std::to_string(sighting.Worst) + ", " +
                             Counted(sighting.Observations, "observation", "observations") + ", " +
                             PlantsLabel(sighting));
        middle += RowHeight;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Axes and words

constexpr double KeyHeight = 30;

void DrawSeverityKey(Drawing& drawing)
{
    KeyLines key(0, drawing.Width(), 2);
    drawing.Text(key.Place(TextWidth("Severity", 12)), key.Baseline(), "Severity", Anchor::Start, Role::Faint);
    for (int severity = 1; severity <= 5; ++severity)
    {
        const std::string label = severity == 1 ? "1 slight" : severity == 5 ? "5 severe" : std::to_string(severity);
        const double radius = RadiusOf(severity);
        const double x = key.Place(2 * radius + 4 + TextWidth(label, 12));
        DrawSeverity(drawing, x + radius, key.Middle(), severity, {});
        drawing.Text(x + 2 * radius + 4, key.Baseline(), label, Anchor::Start, Role::Faint);
    }
}

std::string HealthSentence(const HealthData& data)
{
    std::string sentence =
        Counted(data.Observations, "observation", "observations") + " " + DaysLabel(data.First, data.Last) + ".";
    if (data.Period != PlantPeriod::Day)
        sentence += std::string(" Each mark is the worst severity of a ") + PeriodName(data.Period) + ".";
    return sentence + " The larger and darker a mark, the more severe was the problem.";
}

} // namespace

} // namespace plant_report

PlantChart DrawPlantHealth(const std::vector<PlantHealth>& observations, double width)
{
    using namespace plant_report;
    PlantChart chart{"Health problems",
                     "No health observation has a day of the calendar.",
                     {},
                     {"Issue", "Date", "Worst severity", "Observations", "Plants"},
                     {}};
    const HealthData data = DataOf(observations);
    if (data.Observations == 0)
        return chart;

    double names = 0;
    for (const IssueRow& row : data.Issues)
        names = std::max(names, TextWidth(row.Issue, 12));
    const double namesEnd = std::min(names, DrawnWidth(width) * 0.32);
    const DayScale scale(data.First, data.Last, namesEnd + 20, DrawnWidth(width) - RadiusOf(5) - 2);
    const double bottom = KeyHeight + static_cast<double>(data.Issues.size()) * RowHeight;

    Drawing drawing(DrawnWidth(width), bottom + AxisHeight);
    DrawAxisBelow(drawing, scale, KeyHeight, bottom, namesEnd, drawing.Width());
    DrawIssues(drawing, data, scale, namesEnd, KeyHeight);

    DrawSeverityKey(drawing);
    chart.Sentence = HealthSentence(data);
    for (const IssueRow& row : data.Issues)
        for (const auto& [period, sighting] : row.Sightings)
            chart.Rows.push_back({row.Issue, PeriodText(period, data.Period), std::to_string(sighting.Worst),
                                  NumberLabel(static_cast<double>(sighting.Observations)), PlantsLabel(sighting)});
    chart.SVG = drawing.SVG("plant-health", chart.Heading, chart.Sentence);
    return chart;
}
