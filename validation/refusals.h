// The reasons for which PlantRepository refuses a record: they follow its create and update operations step by step.
#pragma once

#include "checker.h"

#include <sqlite3.h>

namespace plant_validation
{

// Add what an operation refuses by the record alone, apart from NaN.
void RefuseByItself(Checker& check, const Strain& strain);
void RefuseByItself(Checker& check, const Plant& plant);
void RefuseByItself(Checker& check, const PlantEvent& event);
void RefuseByItself(Checker& check, const PlantCareEntry& entry);
void RefuseByItself(Checker& check, const HarvestRecord& record);
void RefuseByItself(Checker& check, const PlantPhoto& photo);
void RefuseByItself(Checker& check, const PlantHealthObservation& observation);
void RefuseByItself(Checker& check, const PlantJournalEntry& entry);

// Add what an operation refuses because of the journal's content. An event that does not exist comes last.
void RefuseByJournal(Checker& check, sqlite3* journal, const Strain& strain);
void RefuseByJournal(Checker& check, sqlite3* journal, const Plant& plant);
void RefuseByJournal(Checker& check, sqlite3* journal, const PlantEvent& event);
void RefuseByJournal(Checker& check, sqlite3* journal, const PlantCareEntry& entry);
void RefuseByJournal(Checker& check, sqlite3* journal, const HarvestRecord& record);
void RefuseByJournal(Checker& check, sqlite3* journal, const PlantPhoto& photo);
void RefuseByJournal(Checker& check, sqlite3* journal, const PlantHealthObservation& observation);
void RefuseByJournal(Checker& check, sqlite3* journal, const PlantJournalEntry& entry);

// Whether the journal has the row that an update of the record changes.
bool HasRow(sqlite3* journal, const Strain& strain);
bool HasRow(sqlite3* journal, const Plant& plant);
bool HasRow(sqlite3* journal, const PlantEvent& event);
bool HasRow(sqlite3* journal, const PlantCareEntry& entry);
bool HasRow(sqlite3* journal, const HarvestRecord& record);
bool HasRow(sqlite3* journal, const PlantPhoto& photo);
bool HasRow(sqlite3* journal, const PlantHealthObservation& observation);
bool HasRow(sqlite3* journal, const PlantJournalEntry& entry);

} // namespace plant_validation
