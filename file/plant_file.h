/// @file plant_file.h
/// Looking after a journal file from outside: telling what a file is, checking a journal, backing it up.
///
/// None of these functions brings a file up to date or changes what it holds. Each opens a connection of its own and
/// closes it before it returns, also by an exception, which can only be `std::bad_alloc` or what a call-back throws.
/// What meets another's lock waits up to 2.5 seconds for it. Threads: any function may run on any thread, and several
/// at once, also while the program has the journal open. Paths are UTF-8 and always name a file: `:memory:` and
/// `file:...` have no other meaning here; an empty path, or one that holds a zero byte, is an error. For POSIX systems.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Marks what a shared library offers to its users; all else in it is hidden.
#define PLANTJOURNAL_FILE_API __attribute__((visibility("default")))

/// How a call went.
struct PlantFileResult
{
    /// Empty when done; otherwise the file, the step and the reason, SQLite's or the system's:
    /// `journal.db: reading the schema: database is locked`.
    std::string Error;

    /// Whether it is done.
    explicit operator bool() const { return Error.empty(); }
};

/// What lies at a path.
enum class PlantFileKind : std::int32_t
{
    Missing,      ///< Nothing lies there. Opening would make a journal.
    Empty,        ///< A file without a byte, or a database without a table. Opening would make a journal of it.
    Current,      ///< A journal of the present form. Opening would change nothing.
    Older,        ///< A journal of an earlier form. Opening would take `Steps`.
    Interrupted,  ///< Its last writer died amid a write, which the next opening takes back. No more can be told before.
    Foreign,      ///< A database that is not ours, or a newer journal than we know: see `Reasons`.
    NotADatabase, ///< Something else than an SQLite database.
    Damaged,      ///< A database that could not be read: see `Reasons`. What need not be read may be damaged unseen.
    Locked        ///< Another process holds it, and held it for longer than 2.5 seconds.
};

/// The enumerator's name; "Missing" for a number outside.
PLANTJOURNAL_FILE_API const char* PlantFileKindName(PlantFileKind kind);

/// How many rows a table holds.
struct PlantFileTable
{
    std::string Name;      ///< The table's name.
    std::int64_t Rows = 0; ///< Its rows.
};

/// What `InspectPlantDatabase` found.
struct PlantFileInspection
{
    PlantFileKind Kind = PlantFileKind::Missing; ///< What it is.
    std::vector<std::string> Steps;              ///< Where older: what opening would do, in its order.
    std::vector<std::string> Reasons;            ///< Where foreign or damaged: why, a line each.
    std::int64_t Bytes = 0;                      ///< Size of the file.
    std::vector<PlantFileTable> Tables;          ///< Where current or older: our tables that it has, in their order.
    std::string FirstDate;                       ///< The first of all dates in those tables; empty for none.
    std::string LastDate;                        ///< The last of them.
    /// Where current or older: whether the schema admits event types that this version does not know. Only the rows
    /// show whether there are any.
    bool EventTypesUnchecked = false;
};

/// Tells what the file at `path` is, without changing a byte of it or leaving anything beside it.
///
/// Foreign is a file with a table, column, index, view or trigger that is not ours, without a column that opening does
/// not add, with an event type that is not ours in an event table that opening would leave as it is, or with a
/// write-ahead log, which no journal of ours has and which could not be read without making files. Reads every row.
/// @return An error when even that cannot be told: no permission, a directory, no memory. `out` is then a default one.
PLANTJOURNAL_FILE_API PlantFileResult InspectPlantDatabase(const std::string& path, PlantFileInspection& out);

/// Describes the file at `path` like InspectPlantDatabase(), but by its schema alone. Reads no row, so the cost does
/// not depend on the number of rows. For a program's start and for a front end's first screen.
///
/// `Tables`, `FirstDate` and `LastDate` stay empty; all else is as InspectPlantDatabase() gives it, except what only
/// rows show: damage to the tables' contents, and rows with unknown event types. Where `EventTypesUnchecked` is true,
/// such rows can have been written in the usual way: call InspectPlantDatabase() to look for them.
/// @return As InspectPlantDatabase().
PLANTJOURNAL_FILE_API PlantFileResult InspectPlantSchema(const std::string& path, PlantFileInspection& out);

/// What may be wrong in a journal.
enum class PlantFindingKind : std::int32_t
{
    Damage,          ///< SQLite's integrity check.
    ForeignKey,      ///< A row refers to one that does not exist: SQLite's foreign-key check.
    UnknownName,     ///< A stored name that no enumeration has; it reads as the default.
    Severity,        ///< A severity outside 1 to 5.
    LineageCycle,    ///< A plant that descends from itself.
    MissingMother,   ///< A mother that does not exist.
    MissingStrain,   ///< A plant's strain has no row among the strains.
    MissingEvent,    ///< A care entry or harvest record without its event.
    EventDiffers,    ///< An event that differs from its owner in plant, date, type or details.
    MissingPhotoFile ///< No file lies where a photo says. A relative path counts from the journal's directory.
};

/// The enumerator's name; "Damage" for a number outside.
PLANTJOURNAL_FILE_API const char* PlantFindingKindName(PlantFindingKind kind);

/// One thing that is wrong.
struct PlantFileFinding
{
    PlantFindingKind Kind = PlantFindingKind::Damage; ///< What is wrong.
    std::string Table;                                ///< Empty where no table can be named.
    std::int64_t RowID = 0;                           ///< The row's `ID`; 0 where no row can be named.
    std::string Description;                          ///< One sentence.
};

/// Looks for everything that is wrong in the journal at `path`, without changing a byte of it or leaving anything
/// beside it. Older journals are checked as far as they have the tables and columns. A file that is foreign for nothing
/// but its event types is checked, too. Nothing is repaired.
///
/// A row is found once for each thing that is wrong with it. While the file is read, others can read it, but a write of
/// theirs waits.
/// @return An error when the file is no journal, is interrupted, cannot be read to its end or is locked; `out` then
/// holds what was found so far.
PLANTJOURNAL_FILE_API PlantFileResult CheckPlantDatabase(const std::string& path, std::vector<PlantFileFinding>& out);

/// What a backup does where its destination exists.
enum class PlantBackUpMode : std::int32_t
{
    Keep,     ///< Refuse.
    Overwrite ///< Replace it, once the new file is whole. Nobody should have it open: what they write would be lost.
};

/// Told again and again how many of `total` pages are done, at the end all of them; both may fall back where another
/// process writes. Returns whether to go on.
using PlantBackUpProgress = std::function<bool(std::int64_t done, std::int64_t total)>;

/// Copies the journal `source` to `destination`, as it is at one moment, also while others use it. An older journal
/// stays an older one; what an interrupted writer left behind in the source is taken back first, as by any opening.
///
/// The copy is made in a file beside the destination, checked, synced to the disk, and only then given its name; it has
/// the source's permissions. Between two calls of `progress` nothing is locked. Where others write so often that the
/// copying has begun anew three times, the rest is copied in one go, in which they wait.
/// @param source  The journal, as InspectPlantDatabase() takes it.
/// @param destination  The copy's file. Its directory must be there; a link there stays, and leads to the copy.
/// @param progress  May be empty. Where it returns `false`, the backup ends: "interrupted".
/// @param mode  What to do where the destination exists.
/// @return An error when the source is no journal, is damaged or cannot be read, the destination exists (unless told to
/// overwrite it), is the source itself or no regular file, or has a `-journal` or `-wal` beside it, which would be
/// taken for the copy's; when the disk is full, or the copy cannot be read. The destination is then as it was, and
/// nothing else is left. One error comes later: where the directory cannot be synced at the very end, the copy is there
/// and whole, but may be gone after a power failure; the step is then `syncing the directory`.
/// A process that is killed leaves its unfinished copy behind, named like the destination with `.part-` and six letters
/// after it.
PLANTJOURNAL_FILE_API PlantFileResult BackUpPlantDatabase(const std::string& source, const std::string& destination,
                                                          const PlantBackUpProgress& progress = {},
                                                          PlantBackUpMode mode = PlantBackUpMode::Keep);
