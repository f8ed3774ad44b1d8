#pragma once

#include "checker.h"

namespace plant_validation
{

// Refuse the texts with more bytes than `most`. Return whether there is one.
bool RefuseLongTexts(Checker& check, const Strain& strain, std::size_t most);
bool RefuseLongTexts(Checker& check, const Plant& plant, std::size_t most);
bool RefuseLongTexts(Checker& check, const PlantEvent& event, std::size_t most);
bool RefuseLongTexts(Checker& check, const PlantCareEntry& entry, std::size_t most);
bool RefuseLongTexts(Checker& check, const HarvestRecord& record, std::size_t most);
bool RefuseLongTexts(Checker& check, const PlantPhoto& photo, std::size_t most);
bool RefuseLongTexts(Checker& check, const PlantHealthObservation& observation, std::size_t most);
bool RefuseLongTexts(Checker& check, const PlantJournalEntry& entry, std::size_t most);

} // namespace plant_validation
