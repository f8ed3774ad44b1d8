// Reads activities from all tables, for the answers that list or count them.
#pragma once

#include "reading.h"

#include <vector>

namespace plant_query
{

// The members Text and PlantName.
enum class ActivityTexts
{
    Read,
    LeftEmpty
};

// The activities that `filter` selects, in no order; all of them, whatever AtMost is.
std::vector<PlantActivity> SelectedActivities(PlantDatabase& database, const PlantActivityFilter& filter,
                                              ActivityTexts texts);

// Sorts activities: newest first, those of one date by record and row ID, the highest first.
void SortNewestFirst(std::vector<PlantActivity>& activities);

} // namespace plant_query
