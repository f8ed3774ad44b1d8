#include "activities.h"

#include <map>
#include <utility>

namespace plant_query
{

namespace
{

std::vector<PlantCalendarDay> CountedDays(PlantDatabase& database, const PlantActivityFilter& filter)
{
    std::map<std::pair<std::string, std::string>, std::int64_t> numbers;
    for (PlantActivity& activity : SelectedActivities(database, filter, ActivityTexts::LeftEmpty))
        ++numbers[{std::move(activity.Date), std::move(activity.Kind)}];
    std::vector<PlantCalendarDay> days;
    days.reserve(numbers.size());
    for (const auto& [day, number] : numbers)
        days.push_back({day.first, day.second, number});
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
