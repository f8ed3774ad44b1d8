#pragma once

#include "checker.h"

#include <sqlite3.h>

namespace plant_validation
{

// Adds why the repository refuses the plant's mother, if it does because of the journal: as it does, follows the stored
// links from the mother upward.
void RefuseMother(Checker& check, sqlite3* journal, const Plant& plant);

} // namespace plant_validation
