#pragma once

#include "plant_database.h"

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace support
{

// A small journal with something in every table.
struct Garden
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

// Stores a garden. Its identifiers are fixed, so that two journals planted alike have the same content.
Garden PlantGarden(PlantRepository& repository);

// One operation of the repository with arguments that let it succeed in a garden, of which it may change its copy.
struct Operation
{
    std::string Name;
    std::function<bool(PlantRepository&, Garden&)> Call;
};

std::ostream& operator<<(std::ostream& out, const Operation& operation);

// Every operation of the repository, in the header's order, those with several ways through more than once.
const std::vector<Operation>& Operations();

// Operations that the file refuses, after they have written something that must be taken back.
const std::vector<Operation>& RefusedOperations();

} // namespace support
