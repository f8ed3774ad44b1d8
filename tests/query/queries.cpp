// Every function of the library.

#include "plant_query.h"
#include "query/print.h"
#include "support/reading_call.h"

namespace support
{

namespace
{

template <typename Out, typename Function> ReadingCall QueryOf(std::string name, const Out& old, const Function& ask)
{
    // The namespace is named, because print.cpp can be compiled in the same unit and has more overloads.
    return ReadingCallOf(std::move(name), old, ask, [](const Out& out) { return support::Printed(out); });
}

// The arguments are made before the calls, since the tests make allocations fail only in the library.
std::vector<ReadingCall> ActivityQueries()
{
    using Activities = std::vector<PlantActivity>;
    const std::string mother = "11111111-1111-4111-8111-111111111111";
    PlantActivityFilter selected;
    selected.Plants.Stages = {PlantStage::Veg, PlantStage::Harvested};
    selected.To = "9999";
    selected.Text = "a";
    return {
        QueryOf("Timeline", Activities(2),
                [=](PlantDatabase& database, Activities& out) { return QueryPlantTimeline(database, mother, out); }),
        QueryOf("Activity", Activities(2),
                [](PlantDatabase& database, Activities& out) { return QueryPlantActivity(database, {}, out); }),
        QueryOf("ActivityOfPlants", Activities(2),
                [=](PlantDatabase& database, Activities& out) { return QueryPlantActivity(database, selected, out); }),
        QueryOf("Calendar", std::vector<PlantCalendarDay>(2),
                [](PlantDatabase& database, std::vector<PlantCalendarDay>& out)
                { return QueryPlantCalendar(database, {}, out); })};
}

std::vector<ReadingCall> StatusQueries()
{
    using Statuses = std::vector<PlantStatus>;
    PlantSet mother;
    mother.UUIDs = {"11111111-1111-4111-8111-111111111111"};
    const std::string today = "2025-06-30";
    return {QueryOf("Status", Statuses(2),
                    [=](PlantDatabase& database, Statuses& out) { return QueryPlantStatus(database, {}, today, out); }),
            QueryOf("StatusOfNamedPlants", Statuses(2),
                    [=](PlantDatabase& database, Statuses& out)
                    { return QueryPlantStatus(database, mother, today, out); })};
}

std::vector<ReadingCall> TotalQueries()
{
    using Totals = std::vector<PlantTotal>;
    PlantTotalFilter selected;
    selected.Plants.Stages = {PlantStage::Veg, PlantStage::Harvested};
    selected.To = "9999";
    selected.Group = PlantTotalGroup::Plant;
    selected.Period = PlantPeriod::Month;
    return {QueryOf("Totals", Totals(2),
                    [](PlantDatabase& database, Totals& out) { return QueryPlantTotals(database, {}, out); }),
            QueryOf("TotalsOfPlants", Totals(2),
                    [=](PlantDatabase& database, Totals& out) { return QueryPlantTotals(database, selected, out); })};
}

std::vector<ReadingCall> HarvestQueries()
{
    using Comparisons = std::vector<PlantComparison>;
    const std::string clone = "22222222-2222-4222-8222-222222222222";
    const std::vector<PlantComparedSet> sets = {{"all", {}}, {"harvested", {{}, {}, {}, {PlantStage::Harvested}}}};
    PlantLineage old;
    old.Ancestors.resize(2);
    old.Descendants.resize(2);
    return {
        QueryOf("Comparison", Comparisons(2),
                [=](PlantDatabase& database, Comparisons& out) { return QueryPlantComparison(database, sets, out); }),
        QueryOf("Lineage", old,
                [=](PlantDatabase& database, PlantLineage& out) { return QueryPlantLineage(database, clone, out); })};
}

} // namespace

const std::vector<ReadingCall>& ReadingCalls()
{
    static const std::vector<ReadingCall> queries = []
    {
        std::vector<ReadingCall> all = ActivityQueries();
        for (const auto& some : {StatusQueries(), TotalQueries(), HarvestQueries()})
            all.insert(all.end(), some.begin(), some.end());
        return all;
    }();
    return queries;
}

} // namespace support
