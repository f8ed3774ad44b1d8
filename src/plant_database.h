/// @file plant_database.h
/// The journal file and its operations: `PlantDatabase` opens the file, `PlantRepository` reads and writes the records
/// of plant.h in it.
///
/// @code
/// PlantDatabase journal;
/// std::string error;
/// if (!journal.Open("journal.db", &error)) { std::cerr << error << '\n'; return 1; }
/// PlantRepository repository(journal);
/// Plant basil;
/// basil.Name = "Basil by the window";
/// const bool stored = repository.CreatePlant(basil); // true: the plant is committed to the file
/// @endcode
#pragma once

#include "plant.h"

#include <cstdint>
#include <string>
#include <vector>

struct sqlite3; // SQLite's connection: https://www.sqlite.org/c3ref/sqlite3.html

/// One journal file, opened through SQLite.
///
/// Ownership: the database owns its connection. `Close` and the destructor close it. A database can be neither copied
/// nor moved, so that repositories can refer to it.
///
/// Threads: use a database and its repositories from one thread at a time. Different threads may use different
/// databases, with one exception: all databases of a program share one generator of UUIDs, so only one thread at a time
/// may create plants, duplicate plants or create photos.
///
/// Processes: several processes may open the same file. If another process holds a lock, an operation waits up to 2.5
/// seconds for it and then fails.
class PLANTJOURNAL_API PlantDatabase
{
  public:
    /// Constructs a closed database.
    PlantDatabase() = default;
    /// Closes the connection, as `Close` does.
    ~PlantDatabase();
    PlantDatabase(const PlantDatabase&) = delete;
    PlantDatabase& operator=(const PlantDatabase&) = delete;

    /// Opens the journal file at `path`. Creates the file and its directory if they do not exist. Migrates a file of an
    /// earlier version to the current schema.
    ///
    /// An open database is closed first, even if this call then fails. `path` may be this database's own `Path()`. The
    /// path `:memory:` opens a database in memory, and the empty path opens a private temporary file. Both are deleted
    /// when the database is closed.
    ///
    /// A migration has several steps. If a step fails, the completed steps stay, and the next call runs the remaining
    /// steps.
    ///
    /// @param path  The file name, in UTF-8 on every platform. A name that contains a zero byte is refused, because
    /// SQLite would ignore the rest of it. On Windows, a name that is not UTF-8 is refused, too. If SQLite was built
    /// with URI support, a name that begins with `file:` is a URI: https://www.sqlite.org/uri.html
    /// @param error  If not null, receives `LastError` on failure. Unchanged on success.
    /// @return `false` if the file cannot be opened, is not a database, or cannot be migrated, for example because
    /// another process has locked it. The database is then closed.
    bool Open(const std::string& path, std::string* error = nullptr);

    /// Closes the connection if one is open. Keeps the text of the last error.
    void Close();

    /// Returns whether a connection is open.
    bool IsOpen() const { return Handle != nullptr; }

    /// Returns the path given to the last successful `Open`, or the empty text while closed. The reference is valid for
    /// the lifetime of this database. Its text changes with the next `Open` or `Close`.
    const std::string& Path() const { return DatabasePath; }

    /// Returns the message of the last `Open` that failed: SQLite's message, or "Could not open database" if SQLite
    /// made no connection. If a migration step fails and its rollback fails too, this is the message of the rollback.
    /// If a migration cannot prepare its query for the event table, the message stays as it was. A later success does
    /// not clear it. Repository operations do not change it.
    std::string LastError() const { return ErrorText; }

    /// Returns SQLite's connection, or null while closed. This database owns it: do not close it. After a statement of
    /// an operation fails, `sqlite3_errmsg` returns the reason until the connection is used again. If the operation
    /// rolls back a transaction, the rollback replaces the reason.
    sqlite3* NativeHandle() const { return Handle; }

  private:
    bool Migrate();
    bool Execute(const char* sql);

    sqlite3* Handle = nullptr;
    std::string DatabasePath;
    std::string ErrorText;
};

/// The operations on the records of a journal.
///
/// Lifetime: a repository only refers to its database and must not outlive it. Several repositories may use one
/// database.
///
/// Threads: use a repository and its database from one thread at a time.
///
/// Results: every operation returns `true` on success and `false` if it is refused or fails. After `true`, a write is
/// committed to the file. After `false`, nothing was written, except for the new strain of a refused plant (see
/// `CreatePlant`). On a closed database, every operation that needs the file returns `false`.
///
/// Exceptions: operations throw only exceptions of the standard library, if memory or random numbers are not available.
/// After an exception, no statement or transaction is left open, and no output contains a partly read record. There is
/// one limit: if SQLite has no memory left for a rollback, the transaction stays open until `Close`.
///
/// Transactions: you may begin a transaction on the native handle. Writes are then committed when you commit it. The
/// operations that use a transaction themselves (updates of strains, and writes of care entries and harvest records)
/// return `false` inside your transaction.
///
/// Values: texts are stored whole and read back up to their first zero byte. NaN is refused in every number field.
/// Arguments may alias: a key may be a member of the record or of the vector that the operation fills.
///
/// Lists: a list operation empties `out` first. It returns `false` only if its query cannot be prepared or its key
/// cannot be bound. If reading the rows fails, for example because of another process's lock, the list ends early and
/// the operation returns `true` with the rows read so far. `sqlite3_errcode` of the native handle is then not
/// `SQLITE_OK`. The records of a plant are sorted by date, newest first. Records of the same date are sorted by row ID,
/// highest first. For an unknown plant, the list is empty.
///
/// Creates: a create operation ignores the `ID` in the record and writes back the new one. After `false`, the record is
/// not stored, even if it holds a new `ID`.
///
/// Updates and deletes: an update overwrites every field of the row except its plant, its row ID and its UUID. An
/// update or delete of a row that does not exist returns `true` unless its description says otherwise.
class PLANTJOURNAL_API PlantRepository
{
  public:
    /// Constructs a repository on `database`. The database must be open before the first operation and must outlive the
    /// repository.
    explicit PlantRepository(PlantDatabase& database) : DB(database) {}

    /// @name Plants
    /// @{

    /// Lists all plants, sorted by strain and then by name. Upper and lower case ASCII letters sort as equal.
    bool ListPlants(std::vector<Plant>& out);

    /// Reads the plant with the UUID `uuid`, which must match exactly. Reads all plants to find it.
    /// @return `false` if the plant does not exist or could not be read. `out` is then unchanged.
    bool GetPlant(const std::string& uuid, Plant& out);

    /// Stores a new plant. First registers its strain if the name is new; the strain stays registered even if the plant
    /// is then refused.
    ///
    /// Writes back `ID` on success. If `UUID` is empty, writes back a new one, even if the plant is then refused.
    /// `UUID` stays empty if the strain could not be registered.
    /// @return `false` if a plant with this UUID exists, or if the mother is unknown, is the plant itself, is a
    /// descendant of the plant, or leads into a cycle of mother links.
    bool CreatePlant(Plant& p);

    /// Overwrites the plant with the UUID `p.UUID`. Does not use `p.ID`. Registers a new strain name as `CreatePlant`
    /// does, even if the UUID is unknown or the mother is refused.
    /// @return `false` if `CreatePlant` would refuse the mother, or if `p` has a mother and an empty `UUID`.
    bool UpdatePlant(const Plant& p);

    /// Deletes the plant with the UUID `uuid` and its timeline events, care entries, harvest record, photos, health
    /// observations and journal entries. In the clones of the plant, `MotherPlantUUID` becomes empty. The strain and
    /// the image files stay.
    bool DeletePlant(const std::string& uuid);

    /// Stores a copy of `source` with a new UUID, " copy" appended to its name, and no mother. Events, care entries and
    /// other records of the plant are not copied. `out` receives the copy and may be `source` itself.
    /// @return As `CreatePlant`. After `false`, `out` holds the copy that was not stored, with `ID` 0.
    bool DuplicatePlant(const Plant& source, Plant& out);

    /// @}
    /// @name Strains
    /// @{

    /// Lists all strains, sorted by name. Upper and lower case ASCII letters sort as equal.
    bool ListStrains(std::vector<Strain>& out);

    /// Reads the strain with the row ID `id`.
    /// @return `false` if the strain does not exist or could not be read. `out` is then unchanged.
    bool GetStrain(std::int64_t id, Strain& out);

    /// Stores a new strain and writes back its `ID`.
    /// @return `false` if the name is empty or already in use. `ID` is then unchanged.
    bool CreateStrain(Strain& strain);

    /// Overwrites the strain with the row ID `strain.ID`. If the name changes, changes it in every plant of the strain
    /// too, in the same transaction.
    /// @return `false` if `ID` is 0 or unknown, or if the name is empty or already in use by another strain.
    bool UpdateStrain(const Strain& strain);

    /// Deletes the strain with the row ID `id`.
    /// @return `false` if a plant has this strain, or if the search for such a plant cannot be prepared. If that search
    /// fails later, the strain counts as unused and is deleted.
    bool DeleteStrain(std::int64_t id);

    /// Counts the plants of a strain by stage, and averages the dry weights and quality ratings of their harvest
    /// records. A value of 0 means that it was not entered and is left out of the average.
    /// @return `false` if the strain does not exist or could not be read. `out` is then a default summary.
    bool GetStrainSummary(std::int64_t strainID, StrainSummary& out);

    /// @}
    /// @name Timeline events
    /// @{

    /// Lists the events of the plant `plantUUID`.
    bool ListPlantEvents(const std::string& plantUUID, std::vector<PlantEvent>& out);

    /// Stores a new event and writes back its `ID`. An empty date stays empty.
    /// @return `false` if `PlantUUID` is empty or unknown. The event is then unchanged.
    bool CreatePlantEvent(PlantEvent& event);

    /// Overwrites the event that has both this `ID` and this `PlantUUID`.
    /// @return `false` if `ID` is 0 or `PlantUUID` is empty.
    bool UpdatePlantEvent(const PlantEvent& event);

    /// Deletes the event with the row ID `id`. The care entry or harvest record of the event stays, with a
    /// `TimelineEventID` of 0.
    /// @return `false` if `id` is 0.
    bool DeletePlantEvent(std::int64_t id);

    /// @}
    /// @name Care entries
    /// Each care entry owns a timeline event of type `Feed` or `Water` on the care date. These operations write the
    /// entry and its event in one transaction.
    /// @{

    /// Lists the care entries of the plant `plantUUID`. An entry whose event was deleted has a `TimelineEventID` of 0.
    bool ListPlantCareEntries(const std::string& plantUUID, std::vector<PlantCareEntry>& out);

    /// Stores a new entry and its event. Writes back `TimelineEventID` and `ID`; after `false` they are not valid.
    /// @return `false` if `PlantUUID` is empty or unknown.
    bool CreatePlantCareEntry(PlantCareEntry& entry);

    /// Overwrites the entry that has both this `ID` and this `PlantUUID`, and the event that has this `TimelineEventID`
    /// and this `PlantUUID`. If `TimelineEventID` is 0, stores a new event and writes back its row ID, which is not
    /// valid after `false`.
    ///
    /// Read an entry again before you update it if its event may have been deleted since. SQLite may reuse the row ID
    /// of a deleted event: the update then returns `true` and links the entry to the event that now has that row ID. If
    /// that event belongs to the same plant, it is overwritten.
    ///
    /// If the entry does not exist, the result is `true` too, and the event is still written. A new event then belongs
    /// to no entry.
    /// @return `false` if `ID` is 0 or `PlantUUID` is empty, if a new event would belong to an unknown plant, or if the
    /// entry exists and no event has the row ID `TimelineEventID`.
    bool UpdatePlantCareEntry(PlantCareEntry& entry);

    /// Deletes the entry with the row ID `id` and its event.
    /// @return `false` if the entry does not exist.
    bool DeletePlantCareEntry(std::int64_t id);

    /// Returns the details text of an entry's event, for example `Bloom A | 500 ml | EC 1.80 | pH 6.20`. The text
    /// always contains the amount. It contains EC, pH and runoff if they are above 0, and the product and notes if they
    /// are not empty. Does not use the file.
    std::string CareTimelineDetails(const PlantCareEntry& entry) const;

    /// @}
    /// @name Harvest records
    /// A plant has at most one harvest record. The record owns a timeline event of type `Harvest`.
    /// @{

    /// Reads the harvest record of the plant `plantUUID`.
    /// @return `false` if the record does not exist or could not be read. `out` is then a default record.
    bool GetHarvestRecord(const std::string& plantUUID, HarvestRecord& out);

    /// Stores the harvest record of `plant` and its event, and moves the plant to the stage `Harvested` with the
    /// harvest date, in one transaction. Creates the record if `record.ID` is 0. Otherwise overwrites the record that
    /// has this `ID` and belongs to `plant`. Creates the event if `record.TimelineEventID` is 0. Otherwise overwrites
    /// the event that has this row ID and belongs to `plant`.
    ///
    /// Writes back into `record`: `PlantUUID`, today's date if `HarvestDate` is empty, and the row IDs of a new record
    /// and a new event, which are not valid after `false`. Writes back into `plant`, on success only: `Stage` and
    /// `HarvestDate`.
    ///
    /// Read a record again before you save it if the record or its event may have been deleted since. SQLite may reuse
    /// the row ID of a deleted event: the save then returns `true` and links the record to the event that now has that
    /// row ID. If that event belongs to the same plant, it is overwritten.
    ///
    /// If `record.ID` is not 0 and the plant has no record with this `ID`, the result is `true` too. No record is
    /// stored, but the event is still written and the plant is still moved to `Harvested`. A new event then belongs to
    /// no record.
    /// @return `false` if `plant.UUID` is empty (`record` is then unchanged), if a new record or event would belong to
    /// an unknown plant, if `record.ID` is 0 and the plant already has a record, or if a record would be stored and no
    /// event has the row ID `TimelineEventID`.
    bool SaveHarvestRecord(Plant& plant, HarvestRecord& record);

    /// Deletes the harvest record of the plant `plantUUID` and its event. The plant keeps its stage and its harvest
    /// date.
    /// @return `false` if the record does not exist.
    bool DeleteHarvestRecord(const std::string& plantUUID);

    /// @}
    /// @name Photos
    /// @{

    /// Lists the photos of the plant `plantUUID`.
    bool ListPlantPhotos(const std::string& plantUUID, std::vector<PlantPhoto>& out);

    /// Stores a new photo. Writes back `ID` on success. If `UUID` is empty, writes back a new one, even if the photo is
    /// then refused. `UUID` stays empty if `PlantUUID` or `FilePath` is empty.
    /// @return `false` if `PlantUUID` or `FilePath` is empty, if the plant is unknown, or if a photo with this UUID
    /// exists.
    bool CreatePlantPhoto(PlantPhoto& photo);

    /// Overwrites the photo that has both this `UUID` and this `PlantUUID`.
    /// @return `false` if `ID` is 0, or if `UUID`, `PlantUUID` or `FilePath` is empty.
    bool UpdatePlantPhoto(const PlantPhoto& photo);

    /// Deletes the photo with the UUID `photoUUID`. The image file stays.
    /// @return `false` if `photoUUID` is empty.
    bool DeletePlantPhoto(const std::string& photoUUID);

    /// @}
    /// @name Health observations
    /// A severity below 1 is stored as 1. A severity above 5 is stored as 5.
    /// @{

    /// Lists the health observations of the plant `plantUUID`.
    bool ListPlantHealthObservations(const std::string& plantUUID, std::vector<PlantHealthObservation>& out);

    /// Stores a new observation. Writes back `ID` on success. Writes back the limited `Severity`, even if the
    /// observation is then refused. `Severity` is unchanged if `PlantUUID` or `Issue` is empty.
    /// @return `false` if `PlantUUID` or `Issue` is empty, or if the plant is unknown.
    bool CreatePlantHealthObservation(PlantHealthObservation& o);

    /// Overwrites the observation that has both this `ID` and this `PlantUUID`.
    /// @return `false` if `ID` is 0, or if `PlantUUID` or `Issue` is empty.
    bool UpdatePlantHealthObservation(const PlantHealthObservation& o);

    /// Deletes the observation with the row ID `id`.
    /// @return `false` if `id` is 0.
    bool DeletePlantHealthObservation(std::int64_t id);

    /// @}
    /// @name Journal entries
    /// @{

    /// Lists the journal entries of the plant `plantUUID`.
    bool ListPlantJournalEntries(const std::string& plantUUID, std::vector<PlantJournalEntry>& out);

    /// Stores a new entry and writes back its `ID`.
    /// @return `false` if `PlantUUID` is empty or unknown. The entry is then unchanged.
    bool CreatePlantJournalEntry(PlantJournalEntry& e);

    /// Overwrites the entry that has both this `ID` and this `PlantUUID`.
    /// @return `false` if `ID` is 0 or `PlantUUID` is empty.
    bool UpdatePlantJournalEntry(const PlantJournalEntry& e);

    /// Deletes the entry with the row ID `id`.
    /// @return `false` if `id` is 0.
    bool DeletePlantJournalEntry(std::int64_t id);

    /// @}

  private:
    bool EnsureStrain(const std::string& name);
    bool HasValidMotherLink(const Plant& plant);
    std::string HarvestTimelineDetails(const HarvestRecord& record) const;

    PlantDatabase& DB;
};
