#include "axes.h"
#include "text.h"
#include "usual_days.h"
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
constexpr std::int64_t MostDaysOfDayMarks = 183;
constexpr std::int64_t MostDaysOfWeekMarks = 732;
constexpr std::int64_t MostDays = 3660;

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
    std::int64_t First = 0; // day
    std::int64_t Last = 0;
    std::size_t Observations = 0;
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

int SeverityOf(const PlantHealth& health)
{
    return std::clamp(health.Observation.Severity, 1, 5);
}

void Add(IssueRow& row, std::int64_t period, const PlantHealth& health)
{
    Sighting& sighting = row.Sightings[period];
    sighting.Worst = std::max(sighting.Worst, SeverityOf(health));
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

// Observations by their days, oldest first.
using ObservationDays = std::multimap<std::int64_t, const PlantHealth*>;

ObservationDays DaysOf(const std::vector<PlantHealth>& observations)
{
    ObservationDays days;
    for (const PlantHealth& health : observations)
        if (const auto day = plant_query::DaysSinceEpoch(health.Observation.ObservationDate))
            days.emplace(*day, &health);
    return days;
}

// Removes the observations that are years away from the others. Returns them.
ObservationDays WithoutFar(ObservationDays& days)
{
    std::map<std::int64_t, std::int64_t> records;
    for (const auto& [day, health] : days)
        ++records[day];
    const DayRange usual = UsualDays(records);
    const auto first = days.lower_bound(usual.First);
    const auto last = days.upper_bound(usual.Last);
    ObservationDays far(days.begin(), first);
    far.insert(last, days.end());
    days.erase(days.begin(), first);
    days.erase(last, days.end());
    return far;
}

std::string IssueName(const PlantHealth& health)
{
    return ShownName(health.Observation.Issue, "(no issue named)");
}

HealthData DataOf(const ObservationDays& days)
{
    HealthData data;
    data.First = days.begin()->first;
    data.Last = days.rbegin()->first;
    data.Observations = days.size();
    const std::int64_t length = data.Last - data.First + 1;
    if (length > MostDaysOfDayMarks)
        data.Period = length > MostDaysOfWeekMarks ? PlantPeriod::Month : PlantPeriod::Week;

    std::map<std::string, IssueRow> byIssue;
    for (const auto& [day, health] : days)
    {
        IssueRow& row = byIssue[WithoutCase(health->Observation.Issue)];
        if (row.Observations == 0)
            row.Issue = IssueName(*health);
        Add(row, PeriodOf(day, data.Period), *health);
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

constexpr double IssueRowHeight = 26;

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

// The days of a period that is not a day are a bar.
void DrawSeverityBar(Drawing& drawing, double x, double bottom, double width, int severity, const std::string& title)
{
    const double height = 4.0 * severity;
    drawing.Rect(x, bottom - height, width, height, ColourOfSeverity(severity), title);
}

void DrawSightings(Drawing& drawing, const IssueRow& row, const HealthData& data, const DayScale& scale, double middle)
{
    for (const auto& [period, sighting] : row.Sightings)
    {
        const std::string title = PeriodText(period, data.Period) + ": severity " + std::to_string(sighting.Worst) +
                                  ", " + Counted(sighting.Observations, "observation", "observations") + ", " +
                                  PlantsLabel(sighting);
        const double x = scale(static_cast<double>(period));
        if (data.Period == PlantPeriod::Day)
            DrawSeverity(drawing, x, middle, sighting.Worst, title);
        else
            DrawSeverityBar(drawing, x, middle + IssueRowHeight / 2 - 3,
                            std::max(1.0, 0.9 * (scale(static_cast<double>(NextPeriod(period, data.Period))) - x)),
                            sighting.Worst, title);
    }
}

void DrawIssues(Drawing& drawing, const HealthData& data, const DayScale& scale, double namesEnd, double top)
{
    double middle = top + IssueRowHeight / 2;
    for (const IssueRow& row : data.Issues)
    {
        drawing.Text(namesEnd, middle + 4, row.Issue, Anchor::End, Role::Ink, 12, namesEnd - 0.5);
        const double line = data.Period == PlantPeriod::Day ? middle : middle + IssueRowHeight / 2 - 3;
        drawing.Line(namesEnd + 8, line, drawing.Width(), line, Role::Line);
        DrawSightings(drawing, row, data, scale, middle);
        middle += IssueRowHeight;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Axes and words

constexpr double KeyHeight = 34;

void DrawSeverityKey(Drawing& drawing, PlantPeriod period)
{
    constexpr std::array<const char*, 5> labels = {"1 slight", "2", "3", "4", "5 severe"};
    KeyLines key(1, drawing.Width(), 4);
    drawing.Text(key.Place(TextWidth("Severity", 12)), key.Baseline(), "Severity", Anchor::Start, Role::Faint);
    for (int severity = 1; severity <= 5; ++severity)
    {
        const std::string label = labels.at(static_cast<std::size_t>(severity - 1));
        const double mark = period == PlantPeriod::Day ? 2 * RadiusOf(severity) : 6;
        const double x = key.Place(mark + 4 + TextWidth(label, 12));
        if (period == PlantPeriod::Day)
            DrawSeverity(drawing, x + mark / 2, key.Middle(), severity, {});
        else
            DrawSeverityBar(drawing, x, key.Middle() + 8, mark, severity, {});
        drawing.Text(x + mark + 4, key.Baseline(), label, Anchor::Start, Role::Faint);
    }
}

std::string HealthSentence(const HealthData& data, std::size_t others)
{
    std::string sentence =
        Counted(data.Observations, "observation", "observations") + " " + DaysLabel(data.First, data.Last) + ".";
    if (data.Period != PlantPeriod::Day)
        sentence += std::string(" Each mark is the worst severity of a ") + PeriodName(data.Period) + ".";
    sentence += " The larger a mark, the more severe was the problem.";
    if (others > 0)
        sentence += " " + Counted(others, "observation is", "observations are") +
                    " left out: not of the last ten years, or without a complete date.";
    return sentence;
}

} // namespace

} // namespace plant_report

PlantChart DrawPlantHealth(const std::vector<PlantHealth>& observations, double width)
{
    using namespace plant_report;
    PlantChart chart = EmptyChart("Health problems", "No health observation has a complete date.",
                                  {"Issue", "Date", "Worst severity", "Observations", "Plants"});
    ObservationDays days = DaysOf(observations);
    if (days.empty())
        return chart;
    const ObservationDays far = WithoutFar(days);
    days.erase(days.begin(), days.upper_bound(days.rbegin()->first - MostDays));
    const HealthData data = DataOf(days);

    double names = 0;
    for (const IssueRow& row : data.Issues)
        names = std::max(names, TextWidth(row.Issue, 12));
    const double namesEnd = std::min(names + 1, DrawnWidth(width) * 0.32);
    const bool byDay = data.Period == PlantPeriod::Day;
    const DayScale scale(byDay ? data.First : PeriodOf(data.First, data.Period),
                         byDay ? data.Last : NextPeriod(PeriodOf(data.Last, data.Period), data.Period), namesEnd + 20,
                         DrawnWidth(width) - RadiusOf(5) - 2);
    const double bottom = KeyHeight + static_cast<double>(data.Issues.size()) * IssueRowHeight;

    Drawing drawing(DrawnWidth(width), bottom + AxisHeight);
    DrawAxisBelow(drawing, scale.Ticks(), scale, KeyHeight, bottom, namesEnd, drawing.Width());
    DrawIssues(drawing, data, scale, namesEnd, KeyHeight);

    DrawSeverityKey(drawing, data.Period);
    chart.Sentence = HealthSentence(data, observations.size() - data.Observations - far.size()) +
                     FarSentence(static_cast<std::int64_t>(far.size()), "observation", "observations");
    for (const auto& [day, health] : far)
        AddRow(chart, {IssueName(*health), PeriodText(day, PlantPeriod::Day), std::to_string(SeverityOf(*health)), "1",
                       ShownName(health->PlantName, "")});
    for (const IssueRow& row : data.Issues)
        for (const auto& [period, sighting] : row.Sightings)
            AddRow(chart, {row.Issue, PeriodText(period, data.Period), std::to_string(sighting.Worst),
                           CountLabel(sighting.Observations), PlantsLabel(sighting)});
    chart.SVG = drawing.SVG("plant-health", chart.Heading, chart.Sentence);
    return chart;
}
