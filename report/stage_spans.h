// The stages of a plant over time.
#pragma once

#include "plant_report.h"

#include <cstdint>
#include <string>
#include <vector>

namespace plant_report
{

// The kinds of activities that say something about stages.
std::vector<std::string> KindsOfStages();

// The spans of the plant's stages, oldest first: from its own dates, or else its events, as in `PlantStatus`. All of
// its events of the type Stage count. Transplanting begins Veg, unless an event of the type Stage does. A plant in the
// stage Veg without such a date has been in it since it was sown or cut. The present stage lasts until `lastDay`;
// Harvested and Archived have no length, since nothing more happens. Where the beginning of the present stage is
// unknown, the stage before it lasts until `lastCare` or, if the plant is growing, until `lastDay`.
//
// @param activities  The plant's activities of KindsOfStages(), oldest first.
// @param lastCare  The day of the plant's last care, counted from 1970-01-01; any lower number if there is none.
std::vector<PlantStageSpan> StageSpansOf(const Plant& plant, const std::vector<PlantActivity>& activities,
                                         std::int64_t lastCare, std::int64_t lastDay);

} // namespace plant_report
