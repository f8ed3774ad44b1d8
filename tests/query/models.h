// Computes the answers plainly from the lists of a journal.
#pragma once

#include "query/listed_plants.h"

namespace support
{

std::vector<PlantStatus> StatusModel(const std::vector<ListedPlant>& plants, const PlantSet& set,
                                     const std::string& today);
std::vector<PlantTotal> TotalModel(const std::vector<ListedPlant>& plants, const PlantTotalFilter& filter);
std::vector<PlantComparison> ComparisonModel(const std::vector<ListedPlant>& plants,
                                             const std::vector<PlantComparedSet>& sets);
PlantLineage LineageModel(const std::vector<ListedPlant>& plants, const std::string& plantUUID);

// Each value counts.
PlantFigures FiguresModel(const std::vector<double>& values);
// The values above 0 that are not infinite.
std::vector<double> Entered(const std::vector<double>& values);

} // namespace support
