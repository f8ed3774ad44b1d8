// SQLite's own check of a file, which a backup needs, too.
#pragma once

#include "plant_file.h"

#include <vector>

#include <sqlite3.h>

namespace plant_file
{

// Appends what SQLite's integrity check finds.
void FindDamage(sqlite3* db, std::vector<PlantFileFinding>& findings);

} // namespace plant_file
