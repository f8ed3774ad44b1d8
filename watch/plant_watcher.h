/// @file plant_watcher.h
/// What changed in an open journal: which families of records and which plants.
///
/// A front end constructs one `PlantWatcher` for its database, and calls `Poll` from a timer and after its own writes.
/// It then reads again what changed.
///
/// @code
/// PlantWatcher watcher(journal); // before the first read, so that no change is missed
/// // ... later, from a timer:
/// PlantChanges changes;
/// if (const PlantWatchResult result = watcher.Poll(changes); !result)
///     std::cerr << result.Error << '\n';
/// if (changes.OthersChanged || !changes.Families.empty())
///     ReadAgain();
/// @endcode
#pragma once

#include "plant_database.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// Marks the functions that the shared library exports. All other symbols are hidden.
#if !defined(_WIN32)
#define PLANTJOURNAL_WATCH_API __attribute__((visibility("default")))
#elif defined(plantjournal_watch_EXPORTS) // CMake defines it while it builds the library
#define PLANTJOURNAL_WATCH_API __declspec(dllexport)
#else
#define PLANTJOURNAL_WATCH_API
#endif

namespace plant_watch
{
class Watch; // the hooks on one connection
}

/// The result of a poll.
struct PlantWatchResult
{
    /// Empty where the poll succeeded. Otherwise the step and the reason: `watching the journal: disk I/O error`.
    std::string Error;

    /// Whether the poll succeeded.
    explicit operator bool() const { return Error.empty(); }
};

/// A family of records: those that one table of the journal holds.
enum class PlantRecordFamily : std::int32_t
{
    Plant,             ///< `Plant`
    Strain,            ///< `Strain`
    Event,             ///< `PlantEvent`
    CareEntry,         ///< `PlantCareEntry`
    HarvestRecord,     ///< `HarvestRecord`
    Photo,             ///< `PlantPhoto`
    HealthObservation, ///< `PlantHealthObservation`
    JournalEntry       ///< `PlantJournalEntry`
};

/// The name of the enumerator; "Plant" for any other number.
PLANTJOURNAL_WATCH_API const char* PlantRecordFamilyName(PlantRecordFamily family);

/// What changed since the previous poll.
struct PlantChanges
{
    /// The families in which this connection committed a change, in the order of the enumerators, each once.
    std::vector<PlantRecordFamily> Families;
    /// The UUIDs of the plants that the changes of `Families` concern, sorted by their bytes, each once. Empty if
    /// `AnyPlant` is true.
    std::vector<std::string> Plants;
    /// Whether the changes of `Families` may concern any plant, because the plants are not known.
    bool AnyPlant = false;
    /// Whether other connections, of this process or of another, committed a change. SQLite does not report which:
    /// read everything again.
    bool OthersChanged = false;
    /// Whether another connection held a lock, so that `OthersChanged` is not known yet. The next poll without a lock
    /// reports it. The other members are complete, unless the watcher could not begin to watch yet.
    bool AskAgain = false;
};

/// Watches the connection of one database.
///
/// Which changes count: every row that an INSERT, UPDATE, REPLACE or DELETE statement wrote or removed on the
/// connection, by an operation of `PlantRepository` or by a statement of the program's own on
/// PlantDatabase::NativeHandle(). Rows that a foreign key changes count, too: a deleted plant names each family that
/// lost a row, and each clone whose mother link was cleared. A row that was overwritten with equal values counts.
/// Changes of the schema do not count, except where SQLite deletes the rows of a table before it drops the table,
/// because foreign keys refer to it. Restoring a backup into the connection does not count.
///
/// Which plants: a row of a plant's record concerns that plant alone, so a new mother link concerns the daughter. A row
/// of another family concerns its plant; a row that moves to another plant concerns both. A strain concerns no plant,
/// but renaming it changes the records of its plants.
///
/// Transactions: several writes of one transaction are one change, which counts once it is committed. Nothing that was
/// rolled back counts, with two exceptions, for which SQLite gives no notice: after `ROLLBACK TO`, and after a
/// statement that failed within a transaction, the rows that it wrote count if the transaction is then committed. If a
/// commit fails because of the disk, or on Windows for lack of memory, its changes may count although they were rolled
/// back: where another commit of this connection succeeded since the last poll without `AskAgain`, and where the poll
/// sets `AskAgain`. A transaction that is open when the watcher is constructed counts as a change of everything once it
/// is committed; if it wrote nothing, the next commit of this connection counts so.
///
/// Other connections: `OthersChanged` is SQLite's `PRAGMA data_version`. Commits of this connection do not set it. It
/// may also be set after a failed commit of this connection, and after SQLite rolled back an interrupted write of a
/// killed process or rebuilt the index of a write-ahead log.
///
/// The preupdate hook: where the library was built with an SQLite that has it, `Families` and `Plants` are exact but
/// for the exceptions above. `AnyPlant` is then set only where the changes concern more than `MostPlants` plants, where
/// memory ran out, where a row does not have the column of its plant, or where everything counts as changed. Without
/// the hook, no family is missed, but there may be more: `AnyPlant` is set with every family but `Strain`. Each commit
/// names `Strain`, because SQLite does not report the rows that `DELETE FROM Strains` drops. While foreign keys are
/// switched off, each commit names every family. A write with `sqlite3_blob_write` counts only with the hook.
///
/// Hooks: the watcher owns the commit hook and the rollback hook of the connection, and its preupdate hook or else its
/// update hook. It replaces hooks that were set before; SQLite has no way to restore them. Set none while it exists.
/// The destructor removes the hooks. A connection has at most one watcher: a second one is refused, and its polls
/// return an error until the first one is destroyed.
///
/// Lifetime: the watcher refers to its database. Destroy it before the database is closed or destroyed. Otherwise the
/// connection stays open, with its locks, until the next poll or the destruction of the watcher. A poll on a closed
/// database returns an error. If the database was opened again, the watcher watches the new connection from the next
/// poll on, and this poll reports everything as changed. A poll after the database was destroyed is undefined;
/// destroying the watcher is not.
///
/// Threads: as for `PlantRepository`; use the database and the watcher from one thread at a time. Different threads may
/// use different databases.
class PLANTJOURNAL_WATCH_API PlantWatcher
{
  public:
    /// The most plants that a poll names. If the changes concern more, it sets `AnyPlant`.
    static constexpr std::size_t MostPlants = 1000;

    /// Returns whether the library was built with an SQLite that has the preupdate hook, so that polls name plants.
    static bool NamesPlants();

    /// Begins to watch. If that is not possible, for example because the database is closed or the file is locked, the
    /// first poll that succeeds begins to watch, and reports everything as changed.
    ///
    /// Never waits, like Poll(). Throws only `std::bad_alloc`.
    explicit PlantWatcher(PlantDatabase& database);
    /// Removes the hooks.
    ~PlantWatcher();
    PlantWatcher(const PlantWatcher&) = delete;
    PlantWatcher& operator=(const PlantWatcher&) = delete;

    /// Reports what was committed since the previous poll, or since the construction. Within a transaction of this
    /// connection, it reports only what was committed before.
    ///
    /// Never waits: the busy timeout is 0 during the poll, and has its former value afterwards. If the program set a
    /// busy handler with `sqlite3_busy_handler`, the handler stays, and SQLite calls it. A poll costs two statements,
    /// which read at most the first page of the file.
    ///
    /// Throws only `std::bad_alloc`.
    /// @param out  Written back in every case. After an error or an exception it is default-constructed, and the next
    /// poll that succeeds reports the changes.
    /// @return An error where the database is closed, another watcher watches the connection, or the file cannot be
    /// read.
    PlantWatchResult Poll(PlantChanges& out);

  private:
    PlantDatabase& Database;
    std::unique_ptr<plant_watch::Watch> Attached;
};
