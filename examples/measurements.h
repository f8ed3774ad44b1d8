/// @file measurements.h
/// Reads the measurements of six greenhouse compartments (data/tomato-2019, described in its ORIGIN.md) as records that
/// a journal can store.
#pragma once

#include "plant.h"

#include <stdexcept>
#include <string>
#include <vector>

/// One compartment of the greenhouse: its plant with all its records.
struct Compartment
{
    Plant Subject;
    std::vector<PlantEvent> Events;
    std::vector<PlantCareEntry> Care;
    std::vector<PlantJournalEntry> Journal;
    HarvestRecord Harvest;
};

/// An error that ends the program. Its text is a message for the user.
struct Problem : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Throws `Problem` unless `condition` is true.
void Require(bool condition, const std::string& problem);

/// Reads and checks all measurements. The records lack only their UUIDs, which the journal assigns. Measurements that
/// are missing are left out of the texts. Throws `Problem` with file, line and reason if a file is missing or a row is
/// invalid.
std::vector<Compartment> ReadMeasurements(const std::string& dataDirectory);
