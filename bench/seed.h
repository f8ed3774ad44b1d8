#pragma once

#include "implementation.h"

#include <string>

// What a journal holds before it is measured. All of it follows from rules, so that every journal of one size is the
// same: plants in ten strains, every second one a clone of the one before it, every third one harvested.
struct Seed
{
    int Plants = 0;
    int EventsOfFirstPlant = 0;
    int CareEntries = 0; // each with its event, for the first plants
    int CareEntriesPerPlant = 500;
    int OtherRecords = 0; // events without an owner, and as many journal entries, health observations and photos
};

// Fills the open, empty journal. Throws std::runtime_error where the implementation fails.
void Fill(Implementation& implementation, const Seed& seed);

// The row ID of the first event of a harvest. Events of care entries are below it, and have their entries' row IDs.
constexpr int FirstHarvestEvent = 10'000'000;

// The UUID of the plant with that row ID.
std::string SeedUUID(int id);

// Statements that insert the plants and care entries from `first` to `last`, and `count` events.
std::string InsertPlants(int first, int last);
std::string InsertCareEntries(int first, int last, int perPlant);
std::string InsertEvents(const std::string& plantUUID, int count);
// Statements that insert `count` records of each other kind, for `plants` plants in turn.
std::string InsertOtherRecords(int count, int plants);
