#include "activities.h"

#include <algorithm>

namespace plant_query
{

namespace
{

std::vector<PlantActivity> SortedActivities(PlantDatabase& database, const PlantActivityFilter& filter)
{
    std::vector<PlantActivity> activities = SelectedActivities(database, filter, ActivityTexts::Read);
    SortNewestFirst(activities);
    if (filter.Order == PlantActivityOrder::OldestFirst)
        std::reverse(activities.begin(), activities.end());
    if (filter.AtMost > 0 && static_cast<std::uint64_t>(filter.AtMost) < activities.size())
        activities.resize(static_cast<std::size_t>(filter.AtMost));
    return activities;
}

} // namespace

} // namespace plant_query

PlantQueryResult QueryPlantActivity(PlantDatabase& database, const PlantActivityFilter& filter,
                                    std::vector<PlantActivity>& out)
{
    return plant_query::Answer<std::vector<PlantActivity>>(
        database, out, [&](sqlite3* /*connection*/) { return plant_query::SortedActivities(database, filter); });
}
