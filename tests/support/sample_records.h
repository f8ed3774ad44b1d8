#pragma once

#include "plant_database.h"

namespace support
{

// The records of a small journal with at least one row in every table.
struct SampleRecords
{
    Plant Mother; // harvested, of the strain Kind
    Plant Clone;  // its mother is Mother
    Strain Kind;
    Strain Unused;
    PlantEvent Event;
    PlantCareEntry Care;
    PlantCareEntry Unlinked; // its event was deleted
    HarvestRecord Harvest;   // Mother's
    PlantPhoto Photo;
    PlantHealthObservation Observation;
    PlantJournalEntry Entry;
};

// Stores the records and returns them as stored. The UUIDs are fixed, so that two journals filled this way have the
// same content.
SampleRecords StoreSampleRecords(PlantRepository& repository);

} // namespace support
