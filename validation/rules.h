// The rules for the values of the records.
#pragma once

#include "checker.h"

namespace plant_validation
{

// Add the impossible and the unlikely values, and NaN. `plant` is the plant of the record.
void CheckValues(Checker& check, const Strain& strain);
void CheckValues(Checker& check, const Plant& plant);
void CheckValues(Checker& check, const PlantEvent& event, const Plant& plant);
void CheckValues(Checker& check, const PlantCareEntry& entry, const Plant& plant);
void CheckValues(Checker& check, const HarvestRecord& record, const Plant& plant);
void CheckValues(Checker& check, const PlantPhoto& photo, const Plant& plant);
void CheckValues(Checker& check, const PlantHealthObservation& observation, const Plant& plant);
void CheckValues(Checker& check, const PlantJournalEntry& entry, const Plant& plant);

} // namespace plant_validation
