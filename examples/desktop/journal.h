// What the window reads from a journal and stores in it. Knows no Qt.
#pragma once

#include "plant_query.h"
#include "plant_report.h"
#include "plant_validation.h"

#include <string>
#include <variant>
#include <vector>

// A function for each type of a variant.
template <typename... Functions> struct Overloaded : Functions...
{
    using Functions::operator()...;
};
template <typename... Functions> Overloaded(Functions...) -> Overloaded<Functions...>;

// What the window shows.
struct JournalView
{
    std::string Error;                   // why the journal could not be read; the other members are then empty
    std::vector<PlantStatus> Plants;     // all plants
    Plant Selected;                      // its UUID is empty where no plant of the journal is selected
    std::vector<PlantActivity> Timeline; // of the selected plant, newest first, as the photos
    std::vector<PlantPhoto> Photos;
    std::vector<PlantChart> Charts; // those that have something to draw
};

// Reads the journal and the plant with the UUID `selected`.
JournalView ReadJournal(PlantDatabase& database, const std::string& selected);

// The record of a form.
using FormRecord = std::variant<PlantCareEntry, PlantJournalEntry, PlantHealthObservation, HarvestRecord>;

struct StoreResult
{
    bool Stored = false;
    std::vector<PlantProblem> Problems; // for the fields of the form
    std::string Reason;                 // for the whole form
};

StoreResult StoreRecord(PlantDatabase& database, const FormRecord& record);

// Whether a problem prevents storing. Otherwise, all of them are notices.
bool PreventStoring(const std::vector<PlantProblem>& problems);
