// Stores what a form holds.
#pragma once

#include "plant_database.h"
#include "plant_validation.h"

#include <string>
#include <variant>
#include <vector>

// The record of a form. Its `PlantUUID` says which plant it belongs to.
using FormRecord = std::variant<PlantCareEntry, PlantJournalEntry, PlantHealthObservation, HarvestRecord>;

struct StoreResult
{
    bool Stored = false;
    std::vector<PlantProblem> Problems; // why it was not stored, where the reason is in the fields
    std::string Reason;                 // otherwise the reason, in one sentence
};

// Creates the record. A harvest record with an `ID` is updated instead.
StoreResult StoreRecord(PlantDatabase& database, const FormRecord& record);
