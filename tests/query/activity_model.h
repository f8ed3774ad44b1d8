#pragma once

#include "plant_query.h"

#include <vector>

namespace support
{

// The answers of the queries, computed from the lists of the repository.
std::vector<PlantActivity> ModelActivity(PlantRepository& repository, const PlantActivityFilter& filter);
std::vector<PlantCalendarDay> ModelCalendar(PlantRepository& repository, const PlantActivityFilter& filter);

} // namespace support
