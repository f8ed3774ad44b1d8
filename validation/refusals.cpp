#include "refusals.h"

#include "mother_links.h"
#include "reading.h"

namespace plant_validation
{

namespace
{

constexpr const char* NoPlant = "the record has no plant; its UUID is empty";
constexpr const char* NoSuchPlant = "no plant has this UUID";

// Whether the query with these values returns a row.
template <typename... Values> bool Finds(sqlite3* journal, const char* step, const char* sql, const Values&... values)
{
    Statement rows(journal, step, sql);
    (rows.Bind(values), ...);
    return rows.Step();
}

bool HasPlant(sqlite3* journal, const std::string& uuid)
{
    return Finds(journal, "reading the plants", "SELECT 1 FROM Plants WHERE UUID=?;", uuid);
}

bool HasEvent(sqlite3* journal, std::int64_t id)
{
    return Finds(journal, "reading the timeline events", "SELECT 1 FROM PlantEvents WHERE ID=?;", id);
}

// A foreign key refuses a new row of an unknown plant.
void RefuseUnknownPlant(Checker& check, sqlite3* journal, const std::string& plantUUID)
{
    if (!plantUUID.empty() && !HasPlant(journal, plantUUID))
        check.Refuse("PlantUUID", NoSuchPlant);
}

// The rules for the event of a care entry or a harvest record. `isStored` is whether the row of the record is written.
template <typename Record>
void RefuseUnknownEvent(Checker& check, sqlite3* journal, const Record& record, bool isStored)
{
    if (record.TimelineEventID != 0 && isStored && !HasEvent(journal, record.TimelineEventID))
        check.Refuse("TimelineEventID", "no timeline event has this row ID");
}

} // namespace

// ---- By itself

void RefuseByItself(Checker& check, const Strain& strain)
{
    check.RefuseEmpty("Name", strain.Name, "the name is empty");
}

void RefuseByItself(Checker& check, const Plant& plant)
{
    if (plant.MotherPlantUUID.empty())
        return;
    if (plant.UUID.empty() && plant.ID != 0)
        check.Refuse("MotherPlantUUID", "a plant without a UUID cannot have a mother", "UUID");
    else if (plant.UUID == plant.MotherPlantUUID)
        check.Refuse("MotherPlantUUID", "a plant cannot be its own mother", "UUID");
}

void RefuseByItself(Checker& check, const PlantEvent& event)
{
    check.RefuseEmpty("PlantUUID", event.PlantUUID, NoPlant);
}

void RefuseByItself(Checker& check, const PlantCareEntry& entry)
{
    check.RefuseEmpty("PlantUUID", entry.PlantUUID, NoPlant);
}

void RefuseByItself(Checker& check, const HarvestRecord& record)
{
    check.RefuseEmpty("PlantUUID", record.PlantUUID, NoPlant);
}

void RefuseByItself(Checker& check, const PlantPhoto& photo)
{
    if (photo.ID != 0)
        check.RefuseEmpty("UUID", photo.UUID, "the UUID of the photo is empty");
    check.RefuseEmpty("PlantUUID", photo.PlantUUID, NoPlant);
    check.RefuseEmpty("FilePath", photo.FilePath, "the file path is empty");
}

void RefuseByItself(Checker& check, const PlantHealthObservation& observation)
{
    check.RefuseEmpty("PlantUUID", observation.PlantUUID, NoPlant);
    check.RefuseEmpty("Issue", observation.Issue, "the issue is empty");
}

void RefuseByItself(Checker& check, const PlantJournalEntry& entry)
{
    check.RefuseEmpty("PlantUUID", entry.PlantUUID, NoPlant);
}

// ---- By the journal

void RefuseByJournal(Checker& check, sqlite3* journal, const Strain& strain)
{
    constexpr const char* step = "reading the strains";
    if (strain.ID != 0 && !HasRow(journal, strain))
        check.Refuse("ID", "no strain has this row ID");
    else if (strain.ID == 0
                 ? Finds(journal, step, "SELECT 1 FROM Strains WHERE Name=?;", strain.Name)
                 : Finds(journal, step, "SELECT 1 FROM Strains WHERE Name=? AND ID<>?;", strain.Name, strain.ID))
        check.Refuse("Name", "another strain has this name");
}

void RefuseByJournal(Checker& check, sqlite3* journal, const Plant& plant)
{
    if (plant.ID == 0 && !plant.UUID.empty() && HasPlant(journal, plant.UUID)) // an empty UUID is replaced
        check.Refuse("UUID", "another plant has this UUID");
    RefuseMother(check, journal, plant);
}

void RefuseByJournal(Checker& check, sqlite3* journal, const PlantEvent& event)
{
    if (event.ID == 0)
        RefuseUnknownPlant(check, journal, event.PlantUUID);
}

void RefuseByJournal(Checker& check, sqlite3* journal, const PlantCareEntry& entry)
{
    if (entry.ID == 0 || entry.TimelineEventID == 0)
        RefuseUnknownPlant(check, journal, entry.PlantUUID);
    // A new entry gets a new event.
    RefuseUnknownEvent(check, journal, entry, entry.ID != 0 && HasRow(journal, entry));
}

void RefuseByJournal(Checker& check, sqlite3* journal, const HarvestRecord& record)
{
    if (record.ID == 0 || record.TimelineEventID == 0)
        RefuseUnknownPlant(check, journal, record.PlantUUID);
    if (record.ID == 0 && !record.PlantUUID.empty() &&
        Finds(journal, "reading the harvest records", "SELECT 1 FROM HarvestRecords WHERE PlantUUID=?;",
              record.PlantUUID))
        check.Refuse("PlantUUID", "the plant already has a harvest record");
    RefuseUnknownEvent(check, journal, record, record.ID == 0 || HasRow(journal, record));
}

void RefuseByJournal(Checker& check, sqlite3* journal, const PlantPhoto& photo)
{
    if (photo.ID != 0)
        return;
    if (!photo.UUID.empty() &&
        Finds(journal, "reading the photos", "SELECT 1 FROM PlantPhotos WHERE UUID=?;", photo.UUID))
        check.Refuse("UUID", "another photo has this UUID");
    RefuseUnknownPlant(check, journal, photo.PlantUUID);
}

void RefuseByJournal(Checker& check, sqlite3* journal, const PlantHealthObservation& observation)
{
    if (observation.ID == 0)
        RefuseUnknownPlant(check, journal, observation.PlantUUID);
}

void RefuseByJournal(Checker& check, sqlite3* journal, const PlantJournalEntry& entry)
{
    if (entry.ID == 0)
        RefuseUnknownPlant(check, journal, entry.PlantUUID);
}

// ---- Rows

bool HasRow(sqlite3* journal, const Strain& strain)
{
    return Finds(journal, "reading the strains", "SELECT 1 FROM Strains WHERE ID=?;", strain.ID);
}

bool HasRow(sqlite3* journal, const Plant& plant)
{
    return HasPlant(journal, plant.UUID);
}

bool HasRow(sqlite3* journal, const PlantEvent& event)
{
    return Finds(journal, "reading the timeline events", "SELECT 1 FROM PlantEvents WHERE ID=? AND PlantUUID=?;",
                 event.ID, event.PlantUUID);
}

bool HasRow(sqlite3* journal, const PlantCareEntry& entry)
{
    return Finds(journal, "reading the care entries", "SELECT 1 FROM PlantCareEntries WHERE ID=? AND PlantUUID=?;",
                 entry.ID, entry.PlantUUID);
}

bool HasRow(sqlite3* journal, const HarvestRecord& record)
{
    return Finds(journal, "reading the harvest records", "SELECT 1 FROM HarvestRecords WHERE ID=? AND PlantUUID=?;",
                 record.ID, record.PlantUUID);
}

bool HasRow(sqlite3* journal, const PlantPhoto& photo)
{
    return Finds(journal, "reading the photos", "SELECT 1 FROM PlantPhotos WHERE UUID=? AND PlantUUID=?;", photo.UUID,
                 photo.PlantUUID);
}

bool HasRow(sqlite3* journal, const PlantHealthObservation& observation)
{
    return Finds(journal, "reading the health observations",
                 "SELECT 1 FROM PlantHealthObservations WHERE ID=? AND PlantUUID=?;", observation.ID,
                 observation.PlantUUID);
}

bool HasRow(sqlite3* journal, const PlantJournalEntry& entry)
{
    return Finds(journal, "reading the journal entries",
                 "SELECT 1 FROM PlantJournalEntries WHERE ID=? AND PlantUUID=?;", entry.ID, entry.PlantUUID);
}

} // namespace plant_validation
