/// @file measurements.h
/// What was measured in six greenhouse compartments (data/tomato-2019, explained in its ORIGIN.md), as records of
/// plant.h that are ready to be kept in a journal.
#pragma once

#include "plant.h"

#include <stdexcept>
#include <string>
#include <vector>

/// One compartment of the greenhouse: its plant and all that hangs off it, as measured or as kept in a journal.
struct Compartment
{
    Plant Subject;
    std::vector<PlantEvent> Events;
    std::vector<PlantCareEntry> Care;
    std::vector<PlantJournalEntry> Journal;
    HarvestRecord Harvest;
};

/// Why the program cannot go on.
struct Problem : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Throws `Problem` unless `answer` is true.
void Require(bool answer, const std::string& problem);

/// Reads and checks all of the measurements. The records are complete but for the UUIDs, which the journal gives.
/// Throws `Problem`, with file, line and reason, when a file is missing or a row makes no sense.
std::vector<Compartment> ReadMeasurements(const std::string& dataDirectory);
