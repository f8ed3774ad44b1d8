#include "access.h"
#include "damage.h"
#include "inspect.h"
#include "part_file.h"
#include "plant_file.h"
#include "schema.h"
#include "system.h"

#include <filesystem>
#include <memory>
#include <optional>

#include <sqlite3.h>

namespace plant_file
{

namespace
{

void RequireJournalIn(sqlite3* db)
{
    const ReadTransaction reading(db, ReadingSchema);
    const PlantFileInspection found = InspectConnection(db, InspectionExtent::Rows);
    RequireJournal(found.Kind, found.Reasons);
}

void RequireFreeDestination(const std::filesystem::path& source, const std::filesystem::path& destination,
                            PlantBackUpMode mode)
{
    const auto look = [&]
    {
        const bool exists = FileSize(destination) != NoFile;
        if (exists && std::filesystem::equivalent(source, destination))
            Fail("", "the source and the destination are the same file");
        if (exists && mode == PlantBackUpMode::Keep)
            Fail("", "already exists");
        for (const char* suffix : {"-journal", "-wal"})
        {
            std::filesystem::path log = destination;
            log += suffix;
            if (std::filesystem::exists(log))
                Fail("",
                     TextOfPath(log.filename()) + " exists, and SQLite would apply it to the copy; remove it first");
        }
    };
    WithPathErrors(look);
}

void CopyPages(sqlite3* source, const std::filesystem::path& destination, const std::string& step,
               const PlantBackUpProgress& progress)
{
    constexpr int pagesAtOnce = 256;
    constexpr int mostRestarts = 3;
    const Connection copy(destination, SQLITE_OPEN_READWRITE);
    // An unfinished copy is removed, and a finished one synced: neither needs SQLite's journal or syncs.
    RunSQL(copy.Handle(), step, "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF;");
    const std::unique_ptr<sqlite3_backup, int (*)(sqlite3_backup*)> backup(
        sqlite3_backup_init(copy.Handle(), "main", source, "main"), sqlite3_backup_finish);
    if (backup == nullptr)
        FailWithErrorOf(copy.Handle(), step);
    int result = SQLITE_OK;
    int restarts = 0;
    for (std::int64_t before = 0; result != SQLITE_DONE;)
    {
        result = sqlite3_backup_step(backup.get(), restarts < mostRestarts ? pagesAtOnce : -1);
        if (result != SQLITE_OK && result != SQLITE_DONE)
            Fail(step, sqlite3_errstr(result));
        const std::int64_t total = sqlite3_backup_pagecount(backup.get());
        const std::int64_t done = total - sqlite3_backup_remaining(backup.get());
        if (done <= before) // another process wrote, and SQLite restarted
            ++restarts;
        before = done;
        if (progress && !progress(done, total))
            Fail(step, "interrupted");
    }
}

// A damaged copy must not replace a good one. A copy with unusual rows is good: SQLite checks no CHECK on reading.
void RequireSoundCopy(const std::filesystem::path& file)
{
    const Connection copy(file, SQLITE_OPEN_READONLY);
    RequireJournalIn(copy.Handle());
    std::vector<PlantFileFinding> damages;
    FindDamage(copy.Handle(), damages);
    if (!damages.empty())
        Fail("checking the copy", "the journal is damaged: " + damages.front().Description);
}

void MoveIntoPlace(const std::filesystem::path& copy, const std::filesystem::path& destination, PlantBackUpMode mode)
{
    const OpenedDirectory directory(destination.parent_path());
    RequireSystemCall(directory.IsOpen(), "opening the directory");
    RequireSystemCall(mode == PlantBackUpMode::Overwrite ? RenameReplacing(copy, destination)
                                                         : RenameWithoutReplacing(copy, destination),
                      "renaming the copy");
    RequireSystemCall(directory.Sync(), "syncing the directory");
}

} // namespace

} // namespace plant_file

PlantFileResult BackUpPlantDatabase(const std::string& source, const std::string& destination,
                                    const PlantBackUpProgress& progress, PlantBackUpMode mode)
{
    using namespace plant_file;
    std::filesystem::path from;
    std::filesystem::perms permissions = std::filesystem::perms::none;
    std::optional<Connection> journal;
    const auto openSource = [&]
    {
        from = AbsolutePath(source);
        journal.emplace(from, SQLITE_OPEN_READWRITE);
        WithPathErrors([&] { permissions = std::filesystem::status(from).permissions(); });
        RequireJournalIn(journal->Handle());
    };
    const auto makeCopy = [&]
    {
        std::filesystem::path to;
        WithPathErrors([&] { to = std::filesystem::weakly_canonical(AbsolutePath(destination)); });
        RequireFreeDestination(from, to, mode);
        PartFile part(to);
        CopyPages(journal->Handle(), part.CopyPath(), "copying " + source, progress);
        RequireSoundCopy(part.CopyPath());
        part.Finish(permissions);
        RequireFreeDestination(from, to, mode); // other processes may have created files meanwhile
        MoveIntoPlace(part.CopyPath(), to, mode);
    };
    PlantFileResult result = Attempt(source, openSource);
    if (result)
        result = Attempt(destination, makeCopy);
    return result;
}
