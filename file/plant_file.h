/// @file plant_file.h
/// Functions for whole journal files: inspect a file, check a journal, back it up, restore it, salvage a damaged one.
///
/// No function here migrates a file. Only RestorePlantDatabase() changes the contents of a journal. Each function opens
/// its own connection and closes it before it returns. It throws only `std::bad_alloc` and the exceptions of a
/// callback; it closes the connection then, too. Where another process or thread holds a lock, a function waits up
/// to 2.5 seconds. Threads: any function may run on any thread, and several may run at once, even while the program has
/// the journal open. Paths are UTF-8. `:memory:` and `file:...` are ordinary file names here. An empty path, or a path
/// that contains a zero byte, is an error. On Windows, so is a path that is not UTF-8, and one with a name that Windows
/// reserves or changes, such as `NUL` or a name with a blank at its end.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Marks the functions that the shared library exports. All other symbols are hidden.
#if !defined(_WIN32)
#define PLANTJOURNAL_FILE_API __attribute__((visibility("default")))
#elif defined(plantjournal_file_EXPORTS) // CMake defines it while it builds the library
#define PLANTJOURNAL_FILE_API __declspec(dllexport)
#else
#define PLANTJOURNAL_FILE_API
#endif

/// The result of a call.
struct PlantFileResult
{
    /// Empty where the call succeeded. Otherwise the file, the step and the reason:
    /// `journal.db: reading the schema: database is locked`. The step is left out where the path is the reason:
    /// `journal.db: no such file`.
    std::string Error;

    /// Whether the call succeeded.
    explicit operator bool() const { return Error.empty(); }
};

/// The kind of a file.
enum class PlantFileKind : std::int32_t
{
    Missing,      ///< No file exists at the path. Opening creates a journal.
    Empty,        ///< A file of zero bytes, or a database without tables. Opening makes it a journal.
    Current,      ///< A journal with the current schema. Opening changes nothing.
    Older,        ///< A journal with an earlier schema. Opening migrates it; see `Steps`.
    Interrupted,  ///< A write was interrupted; the next open rolls it back. Until then, its kind is unknown.
    Foreign,      ///< A database that is not a plantjournal file, or a journal of a newer version; see `Reasons`.
    NotADatabase, ///< Not an SQLite database.
    Damaged,      ///< A database that could not be read; see `Reasons`. Other kinds can have damage that was not read.
    Locked        ///< Another process locked it for longer than 2.5 seconds.
};

/// The name of the enumerator; "Missing" for any other number.
PLANTJOURNAL_FILE_API const char* PlantFileKindName(PlantFileKind kind);

/// The number of rows of a table.
struct PlantFileTable
{
    std::string Name;      ///< The table's name.
    std::int64_t Rows = 0; ///< The number of its rows.
};

/// The result of an inspection.
struct PlantFileInspection
{
    PlantFileKind Kind = PlantFileKind::Missing; ///< The kind of the file.
    std::vector<std::string> Steps;              ///< Older: the steps of the migration, in order.
    std::vector<std::string> Reasons;            ///< Foreign or damaged: why, one sentence each.
    std::int64_t Bytes = 0;                      ///< The size of the file.
    std::vector<PlantFileTable> Tables;          ///< Current or older: the journal's tables, in the schema's order.
    std::string FirstDate;                       ///< The earliest date in those tables; empty if there is none.
    std::string LastDate;                        ///< The latest date in those tables; empty if there is none.
    /// Current or older: whether the schema admits event types that this version does not know, so that only the rows
    /// show whether the file has any. A current journal made by this library never sets it.
    bool EventTypesUnchecked = false;
};

/// Inspects the file at `path`. Changes no byte of it and creates no file.
///
/// A file is foreign if it has a table, column, index, view or trigger that a journal does not have, if it lacks a
/// column that the migration does not add, or if it uses a write-ahead log: a journal never does, and reading the log
/// would create files. It is also foreign if it has an unknown event type in an event table that the migration would
/// not rebuild. Reads every row; InspectPlantSchema() reads none.
/// @param path  The file. It need not exist.
/// @param out  Written back in every case; default-constructed after an error.
/// @return An error where the kind cannot be determined: no permission, a directory, no memory.
PLANTJOURNAL_FILE_API PlantFileResult InspectPlantDatabase(const std::string& path, PlantFileInspection& out);

/// Inspects the file at `path` by its schema alone. Reads no row, so the cost does not depend on the number of rows.
/// Use it at the start of a program, and for the first screen of a front end.
///
/// `Tables`, `FirstDate` and `LastDate` stay empty. All other members are as InspectPlantDatabase() fills them in, with
/// two exceptions: this function does not find a table with damaged contents, and it does not find a row with an
/// unknown event type. The schema prevents such a row unless `EventTypesUnchecked` is true; call InspectPlantDatabase()
/// then.
/// @param path  As InspectPlantDatabase().
/// @param out  As InspectPlantDatabase().
/// @return As InspectPlantDatabase().
PLANTJOURNAL_FILE_API PlantFileResult InspectPlantSchema(const std::string& path, PlantFileInspection& out);

/// What can be wrong in a journal.
enum class PlantFindingKind : std::int32_t
{
    Damage,          ///< Found by SQLite's integrity check.
    ForeignKey,      ///< A row refers to a row that does not exist. Found by SQLite's foreign-key check.
    UnknownName,     ///< A stored name without an enumerator. It reads as the default.
    Severity,        ///< A severity outside 1 to 5.
    LineageCycle,    ///< A plant that descends from itself.
    MissingMother,   ///< A plant whose mother does not exist.
    MissingStrain,   ///< A plant whose strain has no row in the strains.
    MissingEvent,    ///< A care entry or harvest record without its event.
    EventDiffers,    ///< An event that differs from its care entry or harvest record in plant, date, type or details.
    MissingPhotoFile ///< A photo whose file does not exist. A relative path starts at the journal's directory.
};

/// The name of the enumerator; "Damage" for any other number.
PLANTJOURNAL_FILE_API const char* PlantFindingKindName(PlantFindingKind kind);

/// One thing that is wrong.
struct PlantFileFinding
{
    PlantFindingKind Kind = PlantFindingKind::Damage; ///< What is wrong.
    std::string Table;                                ///< The table; empty where it is unknown.
    std::int64_t RowID = 0;                           ///< The row ID; 0 where it is unknown.
    std::string Description;                          ///< One sentence.
};

/// Checks the journal at `path`. Repairs nothing, changes no byte of it and creates no file.
///
/// In a journal with an earlier schema, the tables and columns that exist are checked. A file that is foreign only
/// because of its event types is checked, too. A row with several defects has one finding for each. While the check
/// runs, other processes can read the file, but a write waits.
/// @param path  The journal.
/// @param out  Written back in every case. After an error, it contains the findings so far.
/// @return An error where the file is not a journal, is interrupted, cannot be read to its end, or is locked.
PLANTJOURNAL_FILE_API PlantFileResult CheckPlantDatabase(const std::string& path, std::vector<PlantFileFinding>& out);

/// What a backup does with an existing destination.
enum class PlantBackUpMode : std::int32_t
{
    Keep,     ///< Return an error.
    Overwrite ///< Replace it once the new file is complete. No other process may have the old file open, because its
              ///< writes would be lost.
};

/// Called repeatedly with the number of copied pages, `done`, and of all pages, `total`. In the last call they are
/// equal. Both numbers can decrease while another process writes.
/// @return Whether to continue.
using PlantBackUpProgress = std::function<bool(std::int64_t done, std::int64_t total)>;

/// Copies the journal `source` to `destination`, as it is at one moment, even while other processes use it. The copy of
/// an older journal has the same earlier schema. An interrupted write in the source is rolled back first, as by any
/// open.
///
/// The function makes the copy in a file next to the destination, checks it, syncs it, and then renames it. The copy
/// has the source's permissions. The source is not locked while `progress` runs. After writes of other processes have
/// restarted the copying three times, the rest is copied in one step, and writers wait.
/// @param source  The journal, as for InspectPlantDatabase().
/// @param destination  The copy's file. Its directory must exist. A symbolic link stays, and its target becomes the
/// copy.
/// @param progress  May be empty. Where it returns `false`, the backup ends with the error "interrupted".
/// @param mode  What to do with an existing destination.
/// @return An error where the source is not a journal, is damaged or cannot be read; where the destination exists (in
/// the mode `Keep`), is the source itself, not a regular file, or a symbolic link to a file that does not exist; where
/// a file exists that SQLite would apply to the copy (the destination's name with `-journal` or `-wal`); where the disk
/// is full, or the copy cannot be read. After an error the destination is unchanged and no other file is left, with one
/// exception: where the step is `syncing the directory`, the copy is complete and in place, but a power loss may remove
/// it.
///
/// A killed process or a power loss leaves the unfinished copy. Its files are named like the destination, with `.part-`
/// and at least six characters after it. The next backup to the same destination removes them. It does not remove the
/// files of a running process. Where the file system has no hard links, an empty file can also be left at the
/// destination (in the mode `Keep`).
PLANTJOURNAL_FILE_API PlantFileResult BackUpPlantDatabase(const std::string& source, const std::string& destination,
                                                          const PlantBackUpProgress& progress = {},
                                                          PlantBackUpMode mode = PlantBackUpMode::Keep);

/// How many backups a rotation keeps.
struct PlantBackUpPolicy
{
    std::int32_t Days = 7;    ///< The newest backup of each of so many days.
    std::int32_t Weeks = 4;   ///< The newest backup of each of so many weeks. A week begins on Monday.
    std::int32_t Months = 12; ///< The newest backup of each of so many months.
};

/// The result of a rotation.
struct PlantBackUpRotation
{
    std::string Path;                 ///< The new backup. Empty after an error, unless the backup is synced in place.
    std::vector<std::string> Dropped; ///< The backups that were removed, the newest first.
};

/// Makes a backup with the date and time as its name, then removes older backups that the policy does not keep.
///
/// A backup of journal.db is named like `2026-05-01-140307-journal.db`: local time, then the name of the journal. A
/// second one in the same second is `2026-05-01-140307_02-journal.db`. The names of the backups sort by time, except
/// in an hour that a clock change repeats. The backup is made, checked and synced as by BackUpPlantDatabase(). Only
/// then are older backups removed.
///
/// The policy counts only the days, weeks and months that have a backup, and begins with the newest. After a long
/// break, the backups from before it are therefore kept. The new backup is always kept. A backup whose name has a later
/// time than the new one stays and does not count: the clock was set back, or had been wrong. Only regular files are
/// removed that have exactly such a name with the name of this journal. Other files and symbolic links stay. An empty
/// file with such a name does not count and is removed: a killed process can leave it where the file system has no hard
/// links. Two rotations at the same time are safe; the later one may remove the earlier one's backup of the same day.
/// @param journal  The journal, as for InspectPlantDatabase(). Where it is a symbolic link, its target gives the name.
/// @param directory  The backups' directory. It is created with the directories above it where it does not exist. Use
/// a directory for each journal: two journals with the same name would remove each other's backups.
/// @param policy  What to keep. A negative number is an error.
/// @param out  Written back in every case.
/// @param progress  As for BackUpPlantDatabase().
/// @return An error as for BackUpPlantDatabase(), after which no backup was made or removed, with three exceptions.
/// Where the step is `syncing the directory`, the new backup is in place, but a power loss may remove it. Where the
/// step is `removing`, followed by a name, `out` has the new backup, and all others that could be removed were removed.
/// Where `out` has the new backup after another step, the directory could not be read, and nothing was removed. A new
/// directory stays after an error. The unfinished copy of a killed process is removed by the next rotation; its name is
/// that of the journal, with `.part-` and more characters after it.
PLANTJOURNAL_FILE_API PlantFileResult RotatePlantBackUps(const std::string& journal, const std::string& directory,
                                                         const PlantBackUpPolicy& policy, PlantBackUpRotation& out,
                                                         const PlantBackUpProgress& progress = {});

/// A backup that a rotation made.
struct PlantBackUpFile
{
    std::string Path;       ///< The file.
    std::string Time;       ///< When it was made, by its name, in local time: `2026-05-01 14:03:07`.
    std::int64_t Bytes = 0; ///< The size of the file.
};

/// Lists the backups that RotatePlantBackUps() made of `journal` in `directory`, the newest first by their names.
/// Does not open them.
/// @param journal  The journal. It need not exist.
/// @param directory  The backups' directory. Where it does not exist, the list is empty.
/// @param out  Written back in every case; empty after an error.
/// @return An error where the directory cannot be read.
PLANTJOURNAL_FILE_API PlantFileResult ListPlantBackUps(const std::string& journal, const std::string& directory,
                                                       std::vector<PlantBackUpFile>& out);

/// The result of a restoration.
struct PlantRestoration
{
    /// The copy of the journal that was there before; empty where no file was there. Also filled in after an error,
    /// where the copy stays.
    std::string KeptPath;
    /// Whether programs that have the journal open must close it and open it again.
    bool MustReopen = false;
};

/// Replaces the content of `journal` with that of `backup`. Keeps a copy of the journal that was there.
///
/// The function first checks the backup as BackUpPlantDatabase() checks a copy. It locks the journal, and copies it
/// byte by byte to a file next to it, even if it is damaged: `journal.db.before-restore-2026-05-01`, with `-2` and so
/// on after it where that name is taken. An interrupted write is rolled back before, as by any open. Then:
/// - A journal that can be read, or an empty file, is overwritten in one transaction. Programs that have it open see
///   the restored journal in their next transaction, and can continue. If the backup has an earlier schema, they must
///   open the journal again, which migrates it; `MustReopen` is then true.
/// - A damaged journal, or a file that is not a database, is replaced by a new file, which is checked and synced first.
///   Programs that have the journal open keep the damaged file, and their writes are lost: close them first, or let
///   them open the journal again at once. The function cannot see them, since an idle connection holds no lock.
///   `MustReopen` is then true.
/// - A missing journal is created, with the directories above it.
///
/// A file that SQLite can read and that is not a journal may belong to another program, so it is refused. A journal is
/// refused in the same way where the damage is in the text of its schema, in the type of an event, or in the two bytes
/// of its header that show a write-ahead log. Move such a journal away and restore the missing one, or salvage it.
///
/// After a killed process or a power loss, either the former journal or the restored one is in place, and the copy of
/// the former one can be there in both cases. The backup is not changed. An unfinished copy can be left, too. Its files
/// are named like the journal, with `.part-` and at least six characters after it. The next restoration of the same
/// journal removes them. It does not remove the files of a running process.
/// @param backup  A journal that can be read: a backup, or any other journal.
/// @param journal  The file to restore. Where it is a symbolic link, its target is restored. A replaced file keeps its
/// permissions. A new one has those of the backup, and its owner may write to it even if the backup is read-only.
/// @param out  Written back in every case.
/// @param progress  As for BackUpPlantDatabase(). It may be called while the journal is locked. For a journal that can
/// be read, it is also called before the first page, with 0 for `done`. In the last call for such a journal, the
/// restored journal is already in place, so the result of `progress` changes nothing.
/// @return An error where the backup is damaged, is not a journal or cannot be read; where the journal is the backup
/// itself, another program's database, a symbolic link to a file that does not exist, or a path that ends with a
/// separator; where another process reads or writes it for longer than 2.5 seconds; where it is damaged or missing and
/// a file exists that SQLite would apply to the restored one (its name with `-journal` or `-wal`); where permission is
/// denied or the disk is full. After an error the journal is unchanged, with one exception: where the step is `syncing
/// the directory`, the restored journal can be in place. A new directory stays after an error, and so does the copy of
/// the journal, which `KeptPath` then names. Where `progress` returned `false`, the copy is removed.
PLANTJOURNAL_FILE_API PlantFileResult RestorePlantDatabase(const std::string& backup, const std::string& journal,
                                                           PlantRestoration& out,
                                                           const PlantBackUpProgress& progress = {});

/// Rows that a salvage could not store, and why.
struct PlantSalvageLoss
{
    std::string Reason;    ///< One sentence.
    std::int64_t Rows = 0; ///< The number of these rows, as far as it is known.
};

/// What a salvage found of a table.
struct PlantSalvageTable
{
    std::string Name;                     ///< The table's name.
    std::int64_t RowsRead = 0;            ///< The rows that are in the new journal.
    std::int64_t RowsMissing = 0;         ///< The rows that are known to be missing: the sum of `Losses`.
    std::vector<PlantSalvageLoss> Losses; ///< Why they are missing.
    /// Whether no damage was found in the table. Otherwise more rows can be missing than are known.
    bool IsWhole = true;
};

/// The result of a salvage. It cannot show values of stored rows that damage has changed.
struct PlantSalvageReport
{
    std::vector<PlantSalvageTable> Tables; ///< The tables of a journal, in the schema's order.
    std::int64_t PlaceholderPlants = 0;    ///< The plants that stand for lost ones.
    std::int64_t ClearedLinks = 0;         ///< The links to mothers and events that are lost.
    std::int64_t FailedReads = 0;          ///< The reads of the damaged file that the disk refused.
    bool RolledBack = false;               ///< Whether an interrupted write was rolled back in what was read.
    bool HasWriteAheadLog = false;         ///< Whether a write-ahead log lies next to the file. It was not read.
    /// The pages of the number in the file's header that the file does not have whole: it was cut short, or the number
    /// is damaged.
    std::int64_t MissingPages = 0;
    /// Whether an interrupted write was not, or not wholly, rolled back: its rollback journal is damaged, or it was the
    /// first write in a new file, whose rollback would leave no row. Rows may then have values from that write, or be
    /// missing.
    bool RollbackIsDamaged = false;
};

/// Reads every row that can still be read from the damaged journal `damaged`, and writes the rows to a new journal,
/// `destination`. If a backup exists, restore it instead: it is complete.
///
/// The function reads the pages of the file itself, so it also works where SQLite cannot open the file: with a damaged
/// header, schema or tree, or with a part of the file only. It does not change the damaged file or its rollback
/// journal. If a write was interrupted, the function reads what the rollback would restore, unless that is an empty
/// file. It does not read a write-ahead log, which a journal never has, but reports it. Other processes cannot write to
/// the file meanwhile.
///
/// The function needs up to 4 MB of memory, mostly for SQLite, 200 bytes for each page of the damaged file, and room
/// for the rows of one page. Where a table may have deleted rows, or an index names more rows than its pages have, it
/// also needs 100 bytes for each row of that table. A file that was written to do harm can make it need more memory, in
/// proportion to the size of the file.
///
/// - A row keeps its row ID and all its values. Nothing can show that a byte inside a value was changed: such a row is
///   stored with the changed value. A damaged link can give a row a part of another row's text. If both rows are
///   stored, the report shows the table as damaged. If the other row was deleted, nothing shows it.
/// - The new journal has the current schema. The rows of a file with an earlier schema are converted as by a migration.
///   If the definition of the event table is lost, events are stored without conversion.
/// - A row is not stored if a value has a type or a name that its column does not allow, if another row has the same
///   UUID, if a UUID has a zero byte, or if its page or a page of its text has damage that can be detected. A page of
///   a text with only zero bytes counts as damaged, although a text can have so many of them. The report counts these
///   rows.
/// - Deleted rows are not restored, with two exceptions. If the list of free pages and a table are damaged, and no
///   whole index shows which rows the table had, a deleted row may come back. It may also come back if a page of the
///   table or of its index was replaced by an older page.
/// - If two rows of a table have the same row ID, the one on the page with the lower number is stored. Pages that may
///   have deleted rows come last. A row whose row ID was changed can take the place of another one in this way.
/// - If a plant is lost, its records are stored under a plant with its UUID and the name "Lost plant" with the
///   prefix of the UUID. It is the only kind of row that the function invents. A link to a lost mother or event becomes
///   NULL. The plants of a lost strain keep its name. Links of mothers that form a cycle are kept;
///   CheckPlantDatabase() reports them.
/// @param damaged  The damaged file.
/// @param destination  The new journal's file, as for BackUpPlantDatabase() in the mode `Keep`.
/// @param report  Written back in every case; default-constructed after an error.
/// @param progress  As for BackUpPlantDatabase(), but the page size may be lost, so a page counts as pages of 512
/// bytes. `done` stays 0 until the tables are found. It is called while other processes cannot write to the damaged
/// file.
/// @return An error where the damaged file cannot be opened or is locked, where no table or row of a journal is found
/// in it, where the destination cannot be written, or where `progress` returns `false`. The destination and other files
/// are then as after an error of BackUpPlantDatabase().
PLANTJOURNAL_FILE_API PlantFileResult SalvagePlantDatabase(const std::string& damaged, const std::string& destination,
                                                           PlantSalvageReport& report,
                                                           const PlantBackUpProgress& progress = {});
