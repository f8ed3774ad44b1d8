#include "activities.h"

#include <algorithm>

namespace plant_query
{

namespace
{

bool IsOlder(const PlantActivity* left, const PlantActivity* right)
{
    const int order = left->Date.compare(right->Date);
    return order != 0 ? order < 0 : left->Kind < right->Kind;
}

std::vector<PlantCalendarDay> CountedDays(PlantDatabase& database, const PlantActivityFilter& filter)
{
    const std::vector<PlantActivity> activities = SelectedActivities(database, filter, ActivityTexts::LeftEmpty);
    std::vector<const PlantActivity*> order;
    order.reserve(activities.size());
    for (const PlantActivity& activity : activities)
        order.push_back(&activity);
    std::sort(order.begin(), order.end(), IsOlder);
    std::vector<PlantCalendarDay> days;
    for (const PlantActivity* const activity : order)
    {
        if (days.empty() || days.back().Date != activity->Date || days.back().Kind != activity->Kind)
            days.push_back({activity->Date, activity->Kind, 0});
        ++days.back().Number;
    }
    return days;
}

} // namespace

} // namespace plant_query

PlantQueryResult QueryPlantCalendar(PlantDatabase& database, const PlantActivityFilter& filter,
                                    std::vector<PlantCalendarDay>& out)
{
    return plant_query::Answer<std::vector<PlantCalendarDay>>(
        database, out, [&](sqlite3* /*connection*/) { return plant_query::CountedDays(database, filter); });
}
