// Mothers and their clones.
#pragma once

#include "plant_report.h"

#include <vector>

namespace plant_report
{

// The trees of the plants that have a mother or a clone among them: each root followed by its descendants, siblings
// sorted by name and row ID. Of a single plant, its ancestors and descendants are read, too. Plants of a cycle have no
// root and are left out. Throws ReadFailure.
std::vector<PlantRelative> ReadFamilyTrees(PlantDatabase& database, const std::vector<Plant>& plants);

} // namespace plant_report
