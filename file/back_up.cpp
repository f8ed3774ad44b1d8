#include "back_up.h"

#include "damage.h"
#include "inspect.h"
#include "schema.h"
#include "system.h"

#include <optional>
#include <system_error>
#include <utility>
#include <vector>

namespace plant_file
{

namespace
{

constexpr const char* AlreadyExists = "already exists";
constexpr const char* RenamingStep = "renaming the copy";

void RequireFreeDestination(const std::filesystem::path& source, const std::filesystem::path& destination,
                            PlantBackUpMode mode)
{
    RequireNoBrokenLink(destination);
    const auto look = [&]
    {
        const bool exists = FileSize(destination) != NoFile;
        if (exists && std::filesystem::equivalent(source, destination))
            Fail("", "the source and the destination are the same file");
        if (exists && mode == PlantBackUpMode::Keep)
            Fail("", AlreadyExists);
    };
    WithPathErrors(look);
    RequireNoLog(destination);
}

} // namespace

void RequireJournalIn(sqlite3* db)
{
    const ReadTransaction reading(db, ReadingSchema);
    const PlantFileInspection found = InspectConnection(db, InspectionExtent::Rows);
    RequireJournal(found.Kind, found.Reasons);
}

PageCopy::PageCopy(sqlite3* source, sqlite3* destination, std::string step)
    : Step(std::move(step)), BackUp(sqlite3_backup_init(destination, "main", source, "main"), sqlite3_backup_finish)
{
    if (BackUp == nullptr)
        FailWithErrorOf(destination, Step);
}

void PageCopy::LockDestination() const
{
    if (const int result = sqlite3_backup_step(BackUp.get(), 0); result != SQLITE_OK)
        Fail("locking", sqlite3_errstr(result));
}

void PageCopy::Run(const PlantBackUpProgress& progress) const
{
    constexpr int pagesAtOnce = 256;
    constexpr int mostRestarts = 3;
    int result = SQLITE_OK;
    int restarts = 0;
    for (std::int64_t before = 0; result != SQLITE_DONE;)
    {
        result = sqlite3_backup_step(BackUp.get(), restarts < mostRestarts ? pagesAtOnce : -1);
        if (result != SQLITE_OK && result != SQLITE_DONE)
            Fail(Step, sqlite3_errstr(result));
        const std::int64_t total = sqlite3_backup_pagecount(BackUp.get());
        const std::int64_t done = total - sqlite3_backup_remaining(BackUp.get());
        if (done <= before) // another process wrote, and SQLite restarted
            ++restarts;
        before = done;
        if (progress && !progress(done, total))
            Fail(Step, "interrupted");
    }
}

void CopyToNewFile(sqlite3* source, const std::filesystem::path& file, const std::string& step,
                   const PlantBackUpProgress& progress)
{
    const Connection copy(file, SQLITE_OPEN_READWRITE);
    // An unfinished copy is removed, and a finished one synced: neither needs SQLite's journal or syncs.
    RunSQL(copy.Handle(), step, "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF;");
    PageCopy(source, copy.Handle(), step).Run(progress);
}

void RequireSoundCopy(const std::filesystem::path& file)
{
    const Connection copy(file, SQLITE_OPEN_READONLY);
    RequireJournalIn(copy.Handle());
    std::vector<PlantFileFinding> damages;
    FindDamage(copy.Handle(), damages);
    if (!damages.empty())
        Fail("checking the copy", "the journal is damaged: " + damages.front().Description);
}

void RequireNoLog(const std::filesystem::path& file)
{
    const auto look = [&]
    {
        for (const char* suffix : {"-journal", "-wal"})
        {
            std::filesystem::path log = file;
            log += suffix;
            if (std::filesystem::exists(log))
                Fail("",
                     TextOfPath(log.filename()) + " exists, and SQLite would apply it to the copy; move it away first");
        }
    };
    WithPathErrors(look);
}

void RequireNoBrokenLink(const std::filesystem::path& file)
{
    bool isLink = false;
    WithPathErrors([&] { isLink = std::filesystem::is_symlink(std::filesystem::symlink_status(file)); });
    if (isLink)
        Fail("", "a symbolic link to a file that does not exist");
}

std::filesystem::perms PermissionsOf(const std::filesystem::path& file)
{
    std::filesystem::perms permissions = std::filesystem::perms::none;
    WithPathErrors([&] { permissions = std::filesystem::status(file).permissions(); });
    return permissions;
}

CopySource::CopySource(const std::string& path)
    : GivenPath(path), File(AbsolutePath(path)), Journal(File, SQLITE_OPEN_READWRITE), Permissions(PermissionsOf(File))
{
    RequireJournalIn(Journal.Handle());
}

void CopySource::CopyTo(PartFile& part, const PlantBackUpProgress& progress) const
{
    CopyToNewFile(Journal.Handle(), part.CopyPath(), "copying " + GivenPath, progress);
    const std::string step = "checking the copy of " + GivenPath;
    try
    {
        RequireSoundCopy(part.CopyPath());
    }
    catch (Failure& failure)
    {
        failure.Step = step;
        if (failure.Code == SQLITE_CORRUPT) // the copy has the damage of the journal
            failure.Reason = "the journal is damaged: " + failure.Reason;
        throw;
    }
    part.Finish(Permissions);
}

void CreateSyncedDirectory(const std::filesystem::path& directory)
{
    constexpr const char* step = "creating the directory";
    std::vector<std::filesystem::path> missing;
    const auto look = [&]
    {
        for (std::filesystem::path path = directory; !std::filesystem::exists(path); path = path.parent_path())
        {
            if (std::filesystem::is_symlink(path))
                Fail(step, TextOfPath(path) + " is a symbolic link to a directory that does not exist");
            missing.push_back(path);
        }
    };
    WithPathErrors(look);
    for (auto path = missing.rbegin(); path != missing.rend(); ++path)
    {
        // Opened first, so that no new directory is left in one that cannot be listed and synced.
        const OpenedDirectory parent(path->parent_path());
        RequireSystemCall(parent.IsOpen(), step);
        RequireSystemCall(AddDirectory(*path, Access::Everyone) || LastSystemError() == std::errc::file_exists, step);
        RequireSystemCall(parent.Sync(), step);
    }
}

bool MoveIntoPlace(const std::filesystem::path& copy, const std::filesystem::path& destination, PlantBackUpMode mode)
{
    const OpenedDirectory directory(destination.parent_path());
    RequireSystemCall(directory.IsOpen(), "opening the directory");
    if (mode == PlantBackUpMode::Overwrite)
        RequireSystemCall(RenameReplacing(copy, destination), RenamingStep);
    else if (!RenameWithoutReplacing(copy, destination))
    {
        RequireSystemCall(LastSystemError() == std::errc::file_exists, RenamingStep);
        return false;
    }
    RequireSystemCall(directory.Sync(), "syncing the directory");
    return true;
}

} // namespace plant_file

PlantFileResult BackUpPlantDatabase(const std::string& source, const std::string& destination,
                                    const PlantBackUpProgress& progress, PlantBackUpMode mode)
{
    using namespace plant_file;
    std::optional<CopySource> journal;
    const auto makeCopy = [&]
    {
        std::filesystem::path to;
        WithPathErrors([&] { to = CanonicalPath(AbsolutePath(destination)); });
        RequireFreeDestination(journal->Path(), to, mode);
        PartFile part(to);
        journal->CopyTo(part, progress);
        RequireFreeDestination(journal->Path(), to, mode); // other processes may have created files meanwhile
        if (!MoveIntoPlace(part.CopyPath(), to, mode))
            Fail("", AlreadyExists);
    };
    PlantFileResult result = Attempt(source, [&] { journal.emplace(source); });
    if (result)
        result = Attempt(destination, makeCopy);
    return result;
}
