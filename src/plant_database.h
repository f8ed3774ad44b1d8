/// @file plant_database.h
/// The journal file and the operations on it: `PlantDatabase` owns the file, `PlantRepository` reads and writes the
/// records of plant.h in it.
///
/// @code
/// PlantDatabase journal;
/// std::string error;
/// if (!journal.Open("journal.db", &error)) { std::cerr << error << '\n'; return 1; }
/// PlantRepository repository(journal);
/// Plant basil;
/// basil.Name = "Basil by the window";
/// const bool kept = repository.CreatePlant(basil); // true: it is in the file for good
/// @endcode
#pragma once

#include "plant.h"

#include <cstdint>
#include <string>
#include <vector>

struct sqlite3; // SQLite's connection: https://www.sqlite.org/c3ref/sqlite3.html

/// One journal file, opened through SQLite.
///
/// Ownership: owns its connection and closes it in `Close` and on destruction; it can be neither copied nor moved, so
/// that repositories may refer to it. Threads: use a database and the repositories on it from one thread at a time.
/// Different databases may be used by different threads, but for one thing: new identifiers come from one generator for
/// the whole program, so that only one thread at a time may create or duplicate plants or create photos. Processes:
/// several may have one file open; what meets another's lock waits up to 2.5 seconds for it before it fails.
class PLANTJOURNAL_API PlantDatabase
{
  public:
    /// A closed database.
    PlantDatabase() = default;
    /// Closes the connection, as `Close` does.
    ~PlantDatabase();
    PlantDatabase(const PlantDatabase&) = delete;
    PlantDatabase& operator=(const PlantDatabase&) = delete;

    /// Opens the journal file at `path` (UTF-8 on every platform), makes it and its directory where they are missing,
    /// and brings a file of any earlier version up to date.
    ///
    /// An open database is closed first, also when this call then fails; `path` may be this database's own `Path()`.
    /// `:memory:` names a database in memory and the empty path a private temporary one, both gone when closed.
    /// Bringing an old file up to date takes several steps, each whole by itself; those that were done before a failure
    /// stay, and the next open does the rest.
    ///
    /// @param path  The file. A name that holds a zero byte is refused, since it would open another file. Where SQLite
    /// was built to take URIs, a name that begins with `file:` is one: https://www.sqlite.org/uri.html
    /// @param error  Where not null: receives `LastError` on failure, and is left alone on success.
    /// @return `false` when the file cannot be opened, is no database, or cannot be brought up to date, for instance
    /// because another process holds its lock. The database is then closed.
    bool Open(const std::string& path, std::string* error = nullptr);

    /// Closes the connection; does nothing when none is open. The last error's text is kept.
    void Close();

    /// Whether a connection is open.
    bool IsOpen() const { return Handle != nullptr; }

    /// The path given to the last successful `Open`; empty while closed. The reference lives as long as this database,
    /// and its text changes with the next `Open` or `Close`.
    const std::string& Path() const { return DatabasePath; }

    /// SQLite's message for the last statement, or opening, that failed in an `Open` ("Could not open database" where
    /// it came to no message); where the statement that undoes a failed step fails in its turn, that one's. Nothing
    /// clears it: after a later success it still tells the older failure. Repository operations never write it.
    std::string LastError() const { return ErrorText; }

    /// SQLite's connection, null while closed. It stays owned by this database: never close it. After an operation of a
    /// single statement failed, and before anything else runs, `sqlite3_errmsg` tells SQLite's reason through it; an
    /// operation that had to roll back has lost it by then.
    sqlite3* NativeHandle() const { return Handle; }

  private:
    bool Migrate();
    bool Execute(const char* sql);

    sqlite3* Handle = nullptr;
    std::string DatabasePath;
    std::string ErrorText;
};

/// The operations on a journal's records.
///
/// Lifetime: holds nothing but a reference to its database and must not outlive it. Every operation finishes its
/// statements before it returns, so that any number of repositories may be made on one database. Threads: as the
/// database.
///
/// Results: `true` means done, and for a write that it is in the file for good. `false` means refused or failed, with
/// nothing written (the one exception is a plant's new strain, see `CreatePlant`). No operation throws on its own
/// account; an exception of the standard library, for lack of memory or of random numbers, leaves no statement and no
/// transaction open. On a closed database every operation that would use the file returns `false`. Inside a transaction
/// that you began yourself through the native handle, a write is for good when yours is, and the operations that need
/// one of their own (strain updates, care entries, harvest records) return `false`.
///
/// Texts are stored whole and read back up to their first zero byte. Numbers must be numbers: a not-a-number is
/// refused. Arguments may alias: a key may be a member of the very record or vector that is being filled.
///
/// Lists empty `out` first and return `false` only when the query cannot be prepared; a failure on the way, another
/// process's lock included, ends the list early, with the rows read so far and `true`; `sqlite3_errcode` of the native
/// handle is then not `SQLITE_OK`. Lists of a plant's records come newest date first, and newest row first within a
/// date; for a plant without records, or an unknown one, they are empty.
///
/// Creates write the new `ID` back into the record and ignore the one that it holds. A record whose create returned
/// `false` is not stored, whatever numbers it carries. Updates overwrite every field of the row, but neither its plant
/// nor its identifier. Updates and deletes of a row that does not exist return `true`, unless told otherwise.
class PLANTJOURNAL_API PlantRepository
{
  public:
    /// Works on `database`, which must be open before the first operation and must outlive this repository.
    explicit PlantRepository(PlantDatabase& database) : DB(database) {}

    /// @name Plants
    /// @{

    /// Lists all plants by strain, then by name, ASCII letters without regard to case.
    bool ListPlants(std::vector<Plant>& out);

    /// Reads the plant `uuid`, compared exactly. Reads all plants to find it.
    /// @return `false` when there is none or the list fails; `out` is then untouched.
    bool GetPlant(const std::string& uuid, Plant& out);

    /// Stores a new plant. A strain name that is new is registered as a strain first and stays registered even when the
    /// plant is then refused.
    /// Writes back `UUID` where it was empty (also when refused, unless its strain could not be registered) and, on
    /// success, `ID`.
    /// @return `false` when the UUID exists, or when the mother is unknown, the plant itself, or one of its descendants
    /// (or the file has a circle of mothers above it already).
    bool CreatePlant(Plant& p);

    /// Overwrites the plant with the UUID `p.UUID`; `p.ID` is not used. Registers a new strain name as `CreatePlant`
    /// does, for an unknown UUID too, which otherwise changes nothing.
    /// @return `false` when the mother is refused as in `CreatePlant`, or the UUID is empty and there is a mother.
    bool UpdatePlant(const Plant& p);

    /// Deletes the plant `uuid` with its events, care entries, harvest record, photos, health observations and journal
    /// entries. Its clones lose their mother; its strain and the image files stay.
    bool DeletePlant(const std::string& uuid);

    /// Stores a copy of `source` under a new UUID, named with " copy" at the end and without a mother; nothing that
    /// hangs off the source is copied. `out` receives the copy and may be `source` itself.
    /// @return As `CreatePlant`; after `false`, `out` holds the copy that was not stored, its `ID` 0.
    bool DuplicatePlant(const Plant& source, Plant& out);

    /// @}
    /// @name Strains
    /// @{

    /// Lists all strains by name, ASCII letters without regard to case.
    bool ListStrains(std::vector<Strain>& out);

    /// Reads the strain with the row number `id`.
    /// @return `false` when there is none; `out` is then untouched.
    bool GetStrain(std::int64_t id, Strain& out);

    /// Stores a new strain and writes back its `ID`.
    /// @return `false` when the name is empty or exists; `ID` is then unchanged.
    bool CreateStrain(Strain& strain);

    /// Overwrites a strain. A new name is carried into every plant of the strain, all in one transaction.
    /// @return `false` when `ID` is 0 or unknown, or the name is empty or another strain's.
    bool UpdateStrain(const Strain& strain);

    /// Deletes a strain.
    /// @return `false` while a plant has it. Where the plants cannot be looked through, it counts as unused.
    bool DeleteStrain(std::int64_t id);

    /// Counts a strain's plants by stage and averages their harvests. Dry weights and ratings of 0 count as not entered
    /// and stay out of the averages.
    /// @return `false` when the strain is unknown; `out` is then all zero and empty.
    bool GetStrainSummary(std::int64_t strainID, StrainSummary& out);

    /// @}
    /// @name Timeline events
    /// @{

    /// Lists the events of the plant `plantUUID`.
    bool ListPlantEvents(const std::string& plantUUID, std::vector<PlantEvent>& out);

    /// Stores a new event and writes back its `ID`. An empty date stays empty.
    /// @return `false` when `PlantUUID` is empty or names no plant; the event is then unchanged.
    bool CreatePlantEvent(PlantEvent& event);

    /// Overwrites the event that has both this `ID` and this `PlantUUID`.
    /// @return `false` when `ID` is 0 or `PlantUUID` is empty.
    bool UpdatePlantEvent(const PlantEvent& event);

    /// Deletes an event. A care entry or harvest record that it mirrors stays, with a `TimelineEventID` of 0.
    /// @return `false` when `id` is 0.
    bool DeletePlantEvent(std::int64_t id);

    /// @}
    /// @name Care entries
    /// Each owns an event on its plant's timeline, of type `Feed` or `Water` on the care date, which these operations
    /// write together with the entry in one transaction.
    /// @{

    /// Lists the care entries of the plant `plantUUID`. An entry that has lost its event has a `TimelineEventID` of 0.
    bool ListPlantCareEntries(const std::string& plantUUID, std::vector<PlantCareEntry>& out);

    /// Stores a new entry and its event.
    /// Writes back `TimelineEventID` and `ID`, which do not count when the result is `false`.
    /// @return `false` when `PlantUUID` is empty or names no plant.
    bool CreatePlantCareEntry(PlantCareEntry& entry);

    /// Overwrites the entry that has both this `ID` and this `PlantUUID`, and its event. Where `TimelineEventID` is 0,
    /// a new event is made and its number written back, which does not count when the result is `false`.
    /// @return `false` when `ID` is 0 or `PlantUUID` is empty, or when the event of the stored entry was deleted since
    /// the record was read.
    bool UpdatePlantCareEntry(PlantCareEntry& entry);

    /// Deletes an entry and its event.
    /// @return `false` when there is no such entry.
    bool DeletePlantCareEntry(std::int64_t id);

    /// The one-line summary of an entry that its event carries: `Bloom A | 500 ml | EC 1.80 | pH 6.20`. The amount is
    /// always given; EC, pH and run-off where they are above 0; product and notes where they are not empty.
    std::string CareTimelineDetails(const PlantCareEntry& entry) const;

    /// @}
    /// @name Harvest records
    /// At most one per plant. It owns an event of type `Harvest` on the plant's timeline.
    /// @{

    /// Reads the harvest record of a plant.
    /// @return `false` when there is none; `out` is then a default record.
    bool GetHarvestRecord(const std::string& plantUUID, HarvestRecord& out);

    /// Stores the harvest record of `plant`, new where `record.ID` is 0, with its event, and moves the plant to the
    /// stage `Harvested` with the harvest's date, all in one transaction.
    /// Writes back into `record`: `PlantUUID`; today as `HarvestDate` where it was empty; `TimelineEventID` and `ID`
    /// where they were 0, which do not count when the result is `false`. Into `plant`, on success only: `Stage` and
    /// `HarvestDate`.
    /// @return `false` when `plant.UUID` is empty (`record` is then unchanged), when a new record or event names no
    /// plant, when `record.ID` is 0 and the plant has a record already, or when the event of the stored record was
    /// deleted since it was read. A record that was deleted since changes no row and returns `true`.
    bool SaveHarvestRecord(Plant& plant, HarvestRecord& record);

    /// Deletes the harvest record of a plant and its event. The plant keeps its stage and its harvest date.
    /// @return `false` when there is none.
    bool DeleteHarvestRecord(const std::string& plantUUID);

    /// @}
    /// @name Photos
    /// @{

    /// Lists the photos of the plant `plantUUID`.
    bool ListPlantPhotos(const std::string& plantUUID, std::vector<PlantPhoto>& out);

    /// Stores a new photo.
    /// Writes back `UUID` where it was empty (unless refused for an empty text) and, on success, `ID`.
    /// @return `false` when `PlantUUID` or `FilePath` is empty, the UUID exists, or there is no such plant.
    bool CreatePlantPhoto(PlantPhoto& photo);

    /// Overwrites the photo that has both this `UUID` and this `PlantUUID`.
    /// @return `false` when `ID` is 0, or `UUID`, `PlantUUID` or `FilePath` is empty.
    bool UpdatePlantPhoto(const PlantPhoto& photo);

    /// Deletes the photo `photoUUID`, not its image file.
    /// @return `false` when `photoUUID` is empty.
    bool DeletePlantPhoto(const std::string& photoUUID);

    /// @}
    /// @name Health observations
    /// A severity outside 1 to 5 is stored as the nearer end.
    /// @{

    /// Lists the health observations of the plant `plantUUID`.
    bool ListPlantHealthObservations(const std::string& plantUUID, std::vector<PlantHealthObservation>& out);

    /// Stores a new observation. Writes back the limited `Severity` (unless refused for an empty text) and, on success,
    /// `ID`.
    /// @return `false` when `PlantUUID` or `Issue` is empty, or there is no such plant.
    bool CreatePlantHealthObservation(PlantHealthObservation& o);

    /// Overwrites the observation that has both this `ID` and this `PlantUUID`.
    /// @return `false` when `ID` is 0, or `PlantUUID` or `Issue` is empty.
    bool UpdatePlantHealthObservation(const PlantHealthObservation& o);

    /// Deletes an observation.
    /// @return `false` when `id` is 0.
    bool DeletePlantHealthObservation(std::int64_t id);

    /// @}
    /// @name Journal entries
    /// @{

    /// Lists the journal entries of the plant `plantUUID`.
    bool ListPlantJournalEntries(const std::string& plantUUID, std::vector<PlantJournalEntry>& out);

    /// Stores a new entry and writes back its `ID`.
    /// @return `false` when `PlantUUID` is empty or names no plant; the entry is then unchanged.
    bool CreatePlantJournalEntry(PlantJournalEntry& e);

    /// Overwrites the entry that has both this `ID` and this `PlantUUID`.
    /// @return `false` when `ID` is 0 or `PlantUUID` is empty.
    bool UpdatePlantJournalEntry(const PlantJournalEntry& e);

    /// Deletes an entry.
    /// @return `false` when `id` is 0.
    bool DeletePlantJournalEntry(std::int64_t id);

    /// @}

  private:
    bool EnsureStrain(const std::string& name);
    bool HasValidMotherLink(const Plant& plant);
    std::string HarvestTimelineDetails(const HarvestRecord& record) const;

    PlantDatabase& DB;
};
