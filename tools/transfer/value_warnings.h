#pragma once

#include "transfer/known_plants.h"

// Warns of the impossible and the unlikely values of the imported rows. They are imported all the same, so that every
// export can be imported again.
void WarnOfValues(const ImportedTables& tables, const KnownPlants& plants, ImportWarnings& warnings);
