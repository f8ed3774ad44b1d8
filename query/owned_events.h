// Leaves out the events that are listed as the records that own them.
#pragma once

#include "record_selection.h"

#include <vector>

namespace plant_query
{

// Removes the events that a care entry or a harvest record of their plant owns. `events` are those of the selection.
void RemoveOwnedEvents(sqlite3* connection, const RecordSelection& selection, std::vector<PlantActivity>& events);

} // namespace plant_query
