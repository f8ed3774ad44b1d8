#include "access.h"
#include "back_up.h"
#include "back_up_name.h"
#include "damage.h"
#include "inspect.h"
#include "part_file.h"
#include "plant_file.h"
#include "raw_file.h"
#include "schema.h"
#include "system.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sqlite3.h>

namespace plant_file
{

namespace
{

constexpr const char* CopyingTheBackUp = "copying the backup";

// The backup, which no process can write to while this object lives.
class SoundBackUp
{
  public:
    explicit SoundBackUp(const std::string& path)
        : File(AbsolutePath(path)), BackUp(File, SQLITE_OPEN_READONLY), Reading(BackUp.Handle(), ReadingSchema)
    {
        PlantFileInspection found = InspectConnection(BackUp.Handle(), InspectionExtent::Rows);
        RequireJournal(found.Kind, found.Reasons);
        Kind = found.Kind;
        std::vector<PlantFileFinding> damages;
        FindDamage(BackUp.Handle(), damages);
        if (!damages.empty())
            Fail("checking the backup", "the backup is damaged: " + damages.front().Description);
    }

    const std::filesystem::path& Path() const { return File; }
    sqlite3* Handle() const { return BackUp.Handle(); }
    bool IsOlder() const { return Kind == PlantFileKind::Older; }

  private:
    std::filesystem::path File;
    Connection BackUp;
    ReadTransaction Reading;
    PlantFileKind Kind = PlantFileKind::Missing;
};

// Whether the file has to be replaced. Fails where it is another program's, or cannot be examined.
bool IsDamaged(sqlite3* journal)
{
    try
    {
        const ReadTransaction reading(journal, ReadingSchema);
        const PlantFileInspection found = InspectConnection(journal, InspectionExtent::Rows);
        if (found.Kind != PlantFileKind::Empty)
            RequireJournal(found.Kind, found.Reasons);
        std::vector<PlantFileFinding> damages;
        FindDamage(journal, damages);
        return !damages.empty();
    }
    catch (const Failure& failure)
    {
        const std::optional<PlantFileKind> kind = KindOfUnreadableFile(failure.Code);
        if (kind != PlantFileKind::Damaged && kind != PlantFileKind::NotADatabase)
            throw;
        return true;
    }
}

// Copies the bytes of the journal to a file with the date in its name, and returns its path.
std::filesystem::path KeepAside(const RawFile& bytes, const std::filesystem::path& journal)
{
    PartFile part(journal);
    bytes.CopyTo(part.CopyPath());
    part.Finish(PermissionsOf(journal));
    for (;;)
    {
        std::filesystem::path kept = FreePathBeforeRestore(journal);
        if (MoveIntoPlace(part.CopyPath(), kept, PlantBackUpMode::Keep))
            return kept;
    }
}

// SQLite counts the changes of a file in its header. A number that the file never had shows every program that has seen
// the former file under the same name, such as an undo, that this is another one.
void ChangeCounter(const std::filesystem::path& file)
{
    const Connection connection(file, SQLITE_OPEN_READWRITE);
    const RawFile header(connection.Handle());
    std::array<char, 4> counter{};
    sqlite3_randomness(counter.size(), counter.data());
    for (const std::int64_t offset : {24, 92}) // https://www.sqlite.org/fileformat2.html section 1.3
        header.Write(counter.data(), counter.size(), offset, CopyingTheBackUp);
}

// Makes the unfinished file a whole copy of the backup.
void CopyTo(PartFile& part, const SoundBackUp& backUp, std::filesystem::perms permissions,
            const PlantBackUpProgress& progress)
{
    CopyToNewFile(backUp.Handle(), part.CopyPath(), CopyingTheBackUp, progress);
    ChangeCounter(part.CopyPath());
    RequireSoundCopy(part.CopyPath());
    part.Finish(permissions);
}

void RestoreMissing(const SoundBackUp& backUp, const std::filesystem::path& journal,
                    const PlantBackUpProgress& progress)
{
    constexpr const char* created = "another process has created the file meanwhile; try again";
    if (!journal.has_filename())
        Fail("", "the path ends with a separator");
    CreateSyncedDirectory(journal.parent_path());
    PartFile part(journal);
    CopyTo(part, backUp, PermissionsOf(backUp.Path()) | std::filesystem::perms::owner_write, progress);
    try
    {
        RequireNoLog(journal);
    }
    catch (const Failure&)
    {
        if (FileSize(journal) == NoFile)
            throw;
        Fail("", created); // and its program has the log
    }
    if (!MoveIntoPlace(part.CopyPath(), journal, PlantBackUpMode::Keep))
        Fail("", created);
}

// Other connections to the file see the restored journal in their next transaction.
void RestoreReadable(const SoundBackUp& backUp, const Connection& connection, const std::filesystem::path& journal,
                     const PlantBackUpProgress& progress, PlantRestoration& out)
{
    std::optional<PageCopy> copy(std::in_place, backUp.Handle(), connection.Handle(), CopyingTheBackUp);
    copy->LockDestination();
    const RawFile bytes(connection.Handle());
    bytes.RequireItsName();
    const std::filesystem::path kept = KeepAside(bytes, journal);
    out.KeptPath = TextOfPath(kept);
    bool isInterrupted = false;
    // With the last page, SQLite has committed.
    const auto untilCommitted = [&](std::int64_t done, std::int64_t total)
    {
        isInterrupted = progress && !progress(done, total) && done != total;
        return !isInterrupted;
    };
    try
    {
        if (!untilCommitted(0, copy->PageCount())) // the next call for a small journal is the last one
            Fail(CopyingTheBackUp, "interrupted");
        copy->Run(untilCommitted);
    }
    catch (...)
    {
        copy.reset();      // rolls back
        if (isInterrupted) // after another failure, the journal can have changed
        {
            RemoveFile(kept);
            out.KeptPath.clear();
        }
        throw;
    }
    out.MustReopen = backUp.IsOlder();
}

// Other connections keep the damaged file, which no longer has a name. Closes this one.
void ReplaceDamaged(const SoundBackUp& backUp, std::optional<Connection>& connection,
                    const std::filesystem::path& journal, const PlantBackUpProgress& progress, PlantRestoration& out)
{
    PartFile part(journal);
    CopyTo(part, backUp, PermissionsOf(journal), progress);
    const RawFile bytes(connection->Handle());
    std::optional<RawLock> lock(bytes);
    bytes.RequireItsName();
    RequireNoLog(journal);
    out.KeptPath = TextOfPath(KeepAside(bytes, journal));
    out.MustReopen = true;
    const OpenedDirectory directory(journal.parent_path());
    RequireSystemCall(directory.IsOpen(), "opening the directory");
    const auto close = [&]
    {
        lock.reset();
        connection.reset();
    };
    RequireSystemCall(RenameReplacingOpen(part.CopyPath(), journal, close), "renaming the copy");
    RequireSystemCall(directory.Sync(), "syncing the directory");
}

void Restore(const SoundBackUp& backUp, const std::filesystem::path& journal, const PlantBackUpProgress& progress,
             PlantRestoration& out)
{
    RequireNoBrokenLink(journal);
    if (FileSize(journal) == NoFile)
        return RestoreMissing(backUp, journal, progress);
    bool isSame = false;
    WithPathErrors([&] { isSame = std::filesystem::equivalent(backUp.Path(), journal); });
    if (isSame)
        Fail("", "the backup and the journal are the same file");
    std::optional<Connection> connection(std::in_place, journal, SQLITE_OPEN_READWRITE);
    if (sqlite3_db_readonly(connection->Handle(), "main") == 1)
        Fail("", "no permission to write");
    if (IsDamaged(connection->Handle()))
        ReplaceDamaged(backUp, connection, journal, progress, out);
    else
        RestoreReadable(backUp, *connection, journal, progress, out);
}

} // namespace

} // namespace plant_file

PlantFileResult RestorePlantDatabase(const std::string& backup, const std::string& journal, PlantRestoration& out,
                                     const PlantBackUpProgress& progress)
{
    using namespace plant_file;
    PlantRestoration restoration;
    std::optional<SoundBackUp> source;
    const auto restore = [&]
    {
        std::filesystem::path to;
        WithPathErrors([&] { to = CanonicalPath(AbsolutePath(journal)); });
        Restore(*source, to, progress, restoration);
    };
    PlantFileResult result = Attempt(backup, [&] { source.emplace(backup); });
    if (result)
        result = Attempt(journal, restore);
    out = std::move(restoration);
    return result;
}
