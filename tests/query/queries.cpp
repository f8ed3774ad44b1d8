#include "query/queries.h"

#include <ostream>

namespace support
{

std::ostream& operator<<(std::ostream& out, const Query& query)
{
    return out << query.Name;
}

namespace
{

// The arguments are made before the calls, since the tests make allocations fail only in the library.
std::vector<Query> ActivityQueries()
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

} // namespace

const std::vector<Query>& Queries()
{
    static const std::vector<Query> queries = ActivityQueries();
    return queries;
}

} // namespace support
