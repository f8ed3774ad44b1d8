#include "plant_view.h"

#include <utility>

#include <sqlite3.h>

namespace
{

// A list that ended early also returns true.
PlantQueryResult ResultOf(const PlantDatabase& database, bool done, const std::string& step)
{
    const int code = sqlite3_errcode(database.NativeHandle());
    if (done && code == SQLITE_OK)
        return {};
    return {step + ": " + (code == SQLITE_OK ? "not found" : sqlite3_errmsg(database.NativeHandle()))};
}

PlantTotalFilter EachWeek(const PlantSet& plant, std::vector<PlantCareAction> actions)
{
    PlantTotalFilter filter;
    filter.Plants = plant;
    filter.Actions = std::move(actions);
    filter.Group = PlantTotalGroup::Plant;
    filter.Period = PlantPeriod::Week;
    return filter;
}

PlantQueryResult DrawCare(PlantDatabase& database, const PlantSet& plant, double width, std::vector<PlantChart>& charts)
{
    PlantActivityFilter care;
    care.Plants = plant;
    care.Kinds = {PlantCareActionName(PlantCareAction::Feed), PlantCareActionName(PlantCareAction::Water)};
    std::vector<PlantCalendarDay> days;
    std::vector<PlantTotal> waterings;
    std::vector<PlantTotal> feedings;
    std::vector<PlantTotal> measurements;
    PlantQueryResult read = QueryPlantCalendar(database, care, days);
    if (read)
        read = QueryPlantTotals(database, EachWeek(plant, {PlantCareAction::Water}), waterings);
    if (read)
        read = QueryPlantTotals(database, EachWeek(plant, {PlantCareAction::Feed}), feedings);
    if (read)
        read = QueryPlantTotals(database, EachWeek(plant, {}), measurements);
    if (read)
    {
        charts.push_back(DrawPlantMeasurements(measurements, PlantPeriod::Week, width));
        charts.push_back(DrawPlantCareAmounts(waterings, feedings, PlantPeriod::Week, width));
        charts.push_back(DrawPlantCareCalendar(days, width));
    }
    return read;
}

PlantQueryResult DrawHealth(PlantDatabase& database, const Plant& plant, double width, std::vector<PlantChart>& charts)
{
    std::vector<PlantHealthObservation> observations;
    PlantRepository repository(database);
    const bool listed = repository.ListPlantHealthObservations(plant.UUID, observations);
    std::vector<PlantHealth> health;
    for (auto oldest = observations.rbegin(); oldest != observations.rend(); ++oldest)
        health.push_back({plant.Name, *oldest});
    charts.push_back(DrawPlantHealth(health, width));
    return ResultOf(database, listed, "reading the health observations");
}

// A plant without a harvest record also returns false, without an error of SQLite.
PlantQueryResult ReadHarvest(PlantDatabase& database, const std::string& uuid, std::optional<HarvestRecord>& harvest)
{
    HarvestRecord record;
    const bool found = PlantRepository(database).GetHarvestRecord(uuid, record);
    const int code = sqlite3_errcode(database.NativeHandle());
    if (found)
        harvest = record;
    return ResultOf(database, found || code == SQLITE_OK, "reading the harvest record");
}

} // namespace

PlantQueryResult ReadPlantView(PlantDatabase& database, const std::string& uuid, double chartWidth, PlantView& view)
{
    PlantRepository repository(database);
    PlantSet plant;
    plant.UUIDs = {uuid};
    PlantQueryResult read = ResultOf(database, repository.GetPlant(uuid, view.Record), "reading the plant");
    if (read)
        read = QueryPlantTimeline(database, uuid, view.Timeline);
    if (read)
        read = ResultOf(database, repository.ListPlantPhotos(uuid, view.Photos), "reading the photos");
    if (read)
        read = ReadHarvest(database, uuid, view.Harvest);
    std::vector<PlantChart> charts;
    if (read)
        read = DrawCare(database, plant, chartWidth, charts);
    if (read)
        read = DrawHealth(database, view.Record, chartWidth, charts);
    for (PlantChart& chart : charts)
        if (!chart.SVG.empty())
            view.Charts.push_back(std::move(chart));
    return read;
}
