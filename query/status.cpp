#include "days.h"
#include "letters.h"
#include "plants.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace plant_query
{

namespace
{

constexpr std::size_t DaysOfRhythm = 6;
constexpr std::int64_t DaysOfHealth = 30;

std::string OwnStageDate(const SetPlant& plant)
{
    switch (plant.Stage)
    {
    case PlantStage::Seed:
        return plant.SeedDate;
    case PlantStage::Clone:
        return plant.CloneDate;
    case PlantStage::Flower:
        return plant.FlipDate;
    case PlantStage::Dry:
    case PlantStage::Harvested:
        return plant.HarvestDate;
    default:
        return {};
    }
}

bool BeginsStage(PlantStage stage, PlantEventType type, const std::string& details)
{
    switch (type)
    {
    case PlantEventType::Stage:
        return details == PlantStageName(stage);
    case PlantEventType::Flip:
        return stage == PlantStage::Flower;
    case PlantEventType::Clone:
        return stage == PlantStage::Clone;
    default: // a harvest
        return stage == PlantStage::Dry || stage == PlantStage::Harvested;
    }
}

// The median of the gaps between days that are sorted from the newest to the oldest.
std::optional<double> MedianGap(const std::vector<std::int64_t>& days)
{
    if (days.size() < 2)
        return std::nullopt;
    std::vector<std::int64_t> gaps;
    for (std::size_t i = 1; i < days.size(); ++i)
        gaps.push_back(days[i - 1] - days[i]);
    std::sort(gaps.begin(), gaps.end());
    const std::size_t half = gaps.size() / 2;
    return static_cast<double>(gaps[half] + gaps[(gaps.size() - 1) / 2]) / 2;
}

std::optional<std::int64_t> DaysBetween(const std::string& first, std::optional<std::int64_t> last)
{
    const std::optional<std::int64_t> begin = DaysSinceEpoch(first);
    if (!begin || !last || *last < *begin)
        return std::nullopt;
    return *last - *begin;
}

class StatusReader
{
  public:
    StatusReader(sqlite3* connection, const std::string& today, std::int64_t day);

    PlantStatus Of(const SetPlant& plant);

  private:
    // The day up to which the plant ages.
    std::optional<std::int64_t> LastDay(const SetPlant& plant) const;
    void ReadDates(const SetPlant& plant, PlantStatus& status);
    void ReadCare(const SetPlant& plant, PlantStatus& status);
    void ReadHealth(const SetPlant& plant, PlantStatus& status);

    std::int64_t Today;
    std::string AfterToday;
    std::string FirstHealthDate;
    Statement Events;
    Statement Care;
    Statement Observations;
};

StatusReader::StatusReader(sqlite3* connection, const std::string& today, std::int64_t day)
    : Today(day), AfterToday(AfterDate(today).value_or("")), FirstHealthDate(DayText(day - DaysOfHealth + 1)),
      Events(connection, "reading the events",
             "SELECT EventDate,EventType,Details FROM PlantEvents WHERE PlantUUID=? AND EventDate<? AND "
             "EventType IN ('Clone','Flip','Harvest','Stage') ORDER BY EventDate DESC,ID DESC;"),
      Care(connection, "reading the care entries",
           "SELECT CareDate,Action FROM PlantCareEntries WHERE PlantUUID=? AND CareDate<? "
           "ORDER BY CareDate DESC,ID DESC;"),
      Observations(connection, "reading the health observations",
                   "SELECT ID,ObservationDate,Issue,Severity,Treatment,Notes FROM PlantHealthObservations "
                   "WHERE PlantUUID=? AND ObservationDate<? AND ObservationDate>=? "
                   "ORDER BY ObservationDate DESC,ID DESC;")
{
}

std::optional<std::int64_t> StatusReader::LastDay(const SetPlant& plant) const
{
    if (plant.HarvestDate.empty())
        return Today;
    const std::optional<std::int64_t> harvest = DaysSinceEpoch(plant.HarvestDate);
    return harvest ? std::min(*harvest, Today) : harvest;
}

void StatusReader::ReadDates(const SetPlant& plant, PlantStatus& status)
{
    status.StageDate = OwnStageDate(plant);
    std::string flipDate = plant.FlipDate;
    Events.Reset();
    Events.Bind(1, plant.UUID);
    Events.Bind(2, AfterToday);
    while ((status.StageDate.empty() || flipDate.empty()) && Events.Step())
    {
        const PlantEventType type = PlantEventTypeFromName(Events.Text(1));
        const std::string details = Events.Text(2);
        if (status.StageDate.empty() && BeginsStage(plant.Stage, type, details))
            status.StageDate = Events.Text(0);
        if (flipDate.empty() && type == PlantEventType::Flip)
            flipDate = Events.Text(0);
    }
    status.StageDays = DaysBetween(status.StageDate, Today);
    status.FlipDays = DaysBetween(flipDate, LastDay(plant));
    status.AgeDays = DaysBetween(plant.SeedDate.empty() ? plant.CloneDate : plant.SeedDate, LastDay(plant));
}

void StatusReader::ReadCare(const SetPlant& plant, PlantStatus& status)
{
    std::vector<std::int64_t> days; // newest first
    Care.Reset();
    Care.Bind(1, plant.UUID);
    Care.Bind(2, AfterToday);
    while ((days.size() < DaysOfRhythm || status.LastFeedDate.empty() || status.LastWaterDate.empty()) && Care.Step())
    {
        const std::string date = Care.Text(0);
        const bool feeding = PlantCareActionFromName(Care.Text(1)) == PlantCareAction::Feed;
        std::string& last = feeding ? status.LastFeedDate : status.LastWaterDate;
        if (last.empty())
            last = date;
        const std::optional<std::int64_t> day = DaysSinceEpoch(date);
        if (day && days.size() < DaysOfRhythm && (days.empty() || days.back() != *day))
            days.push_back(*day);
    }
    status.CareGapDays = MedianGap(days);
    if (status.CareGapDays && plant.Stage <= PlantStage::Flower)
        status.DueDate = DayText(days.front() + static_cast<std::int64_t>(std::ceil(*status.CareGapDays)));
}

void StatusReader::ReadHealth(const SetPlant& plant, PlantStatus& status)
{
    std::set<std::string> issues;
    Observations.Reset();
    Observations.Bind(1, plant.UUID);
    Observations.Bind(2, AfterToday);
    Observations.Bind(3, FirstHealthDate);
    while (Observations.Step())
    {
        PlantHealthObservation observation;
        observation.ID = Observations.Integer(0);
        observation.PlantUUID = plant.UUID;
        observation.ObservationDate = Observations.Text(1);
        observation.Issue = Observations.Text(2);
        observation.Severity = static_cast<int>(Observations.Integer(3));
        observation.Treatment = Observations.Text(4);
        observation.Notes = Observations.Text(5);
        if (issues.insert(WithoutCase(observation.Issue)).second)
            status.Health.push_back(std::move(observation));
    }
}

PlantStatus StatusReader::Of(const SetPlant& plant)
{
    PlantStatus status;
    status.PlantUUID = plant.UUID;
    status.Name = plant.Name;
    status.Strain = plant.Strain;
    status.Tent = plant.Tent;
    status.Stage = plant.Stage;
    ReadDates(plant, status);
    ReadCare(plant, status);
    ReadHealth(plant, status);
    return status;
}

std::vector<PlantStatus> StatusOf(sqlite3* connection, const PlantSet& plants, const std::string& today)
{
    const std::optional<std::int64_t> day = DaysSinceEpoch(today);
    if (!day)
        throw Failure{"computing the status", "'" + today + "' is not a day of the form YYYY-MM-DD"};
    StatusReader reader(connection, today, *day);
    std::vector<PlantStatus> statuses;
    for (const SetPlant& plant : PlantsOf(connection, plants))
        statuses.push_back(reader.Of(plant));
    return statuses;
}

} // namespace

} // namespace plant_query

PlantQueryResult QueryPlantStatus(PlantDatabase& database, const PlantSet& plants, const std::string& today,
                                  std::vector<PlantStatus>& out)
{
    return plant_query::Answer<std::vector<PlantStatus>>(
        database, out, [&](sqlite3* connection) { return plant_query::StatusOf(connection, plants, today); });
}
