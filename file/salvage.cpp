#include "access.h"
#include "back_up.h"
#include "damaged_journal.h"
#include "journal_table.h"
#include "part_file.h"
#include "plant_database.h"
#include "plant_file.h"
#include "salvaged_journal.h"
#include "system.h"

#include <filesystem>
#include <optional>
#include <utility>
#include <vector>

namespace plant_file
{

namespace
{

std::vector<JournalTable> TablesOfANewJournal()
{
    PlantDatabase journal;
    std::string error;
    if (!journal.Open(":memory:", &error))
        Fail("creating a journal in memory", error);
    return ReadTables(journal.NativeHandle());
}

constexpr const char* DestinationExists = "already exists";

bool HasWriteAheadLog(std::filesystem::path file)
{
    file += "-wal";
    return FileSize(file) > 0;
}

void RequireNewDestination(const std::filesystem::path& damaged, const std::filesystem::path& destination)
{
    RequireNoBrokenLink(destination);
    const auto look = [&]
    {
        if (FileSize(destination) == NoFile)
            return;
        if (std::filesystem::equivalent(damaged, destination))
            Fail("", "the source and the destination are the same file");
        Fail("", DestinationExists);
    };
    WithPathErrors(look);
    RequireNoLog(destination);
}

} // namespace

} // namespace plant_file

PlantFileResult SalvagePlantDatabase(const std::string& damaged, const std::string& destination,
                                     PlantSalvageReport& report, const PlantBackUpProgress& progress)
{
    using namespace plant_file;
    constexpr const char* writingStep = "writing the new journal";
    std::filesystem::path from;
    std::vector<JournalTable> tables;
    std::optional<DamagedJournal> journal;
    PlantSalvageReport found;
    const auto openDamaged = [&]
    {
        // SQLite looks for the rollback journal next to the file that a symbolic link leads to.
        WithPathErrors([&] { from = CanonicalPath(AbsolutePath(damaged)); });
        tables = TablesOfANewJournal();
        journal.emplace(from, tables, progress);
        found.MissingPages = journal->CountMissingPages();
    };
    const auto write = [&]
    {
        std::filesystem::path to;
        WithPathErrors([&] { to = CanonicalPath(AbsolutePath(destination)); });
        RequireNewDestination(from, to);
        PartFile part(to);
        {
            SalvagedJournal salvaged(part.CopyPath(), tables);
            journal->CopyTo(salvaged);
            journal->File().ReportProgress(writingStep);
            salvaged.Finish(found);
        }
        journal->File().ReportProgress(writingStep);
        found.FailedReads = journal->File().FailedReads();
        found.RolledBack = journal->File().RollsBack();
        found.HasWriteAheadLog = HasWriteAheadLog(from);
        found.RollbackIsDamaged = journal->File().RollbackIsDamaged();
        RequireSoundCopy(part.CopyPath());
        journal->File().ReportProgress(writingStep);
        part.Finish(PermissionsOf(from));
        RequireNewDestination(from, to); // other processes may have created files meanwhile
        if (!MoveIntoPlace(part.CopyPath(), to, PlantBackUpMode::Keep))
            Fail("", DestinationExists);
    };
    PlantFileResult result = Attempt(damaged, openDamaged);
    if (result)
        result = Attempt(destination, write);
    report = result ? std::move(found) : PlantSalvageReport();
    return result;
}
