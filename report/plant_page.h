// The sections that only the page of one plant has.
#pragma once

#include "page_data.h"
#include "page_parts.h"

#include <string>
#include <vector>

namespace plant_report
{

// What the plant's record holds, as a list.
std::string PlantFacts(const PageData& data);

// What happened to the plant, oldest first, by month, with its photos. Feedings and waterings are counted. Empty where
// nothing happened. `timeline` is that of QueryPlantTimeline().
std::string PlantHistory(const PageData& data, const std::vector<PlantActivity>& timeline,
                         const PlantReportOptions& options);

} // namespace plant_report
