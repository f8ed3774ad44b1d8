#include "plant_file.h"

#include "support/backup_test.h"
#include "support/child_process.h"
#include "support/file_calls.h"
#include "support/journal_files.h"
#include "testing/old_files.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include <sqlite3.h>

using namespace support;

namespace
{

TEST_F(BackUpTest, ACopyHasTheJournalsContentAndNoOtherFileIsLeft)
{
    const std::string before = FileBytes(Path);
    EXPECT_EQ(BackUp(), "");
    EXPECT_EQ(FileBytes(Path), before);
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
    ExpectWhole();
    ASSERT_TRUE(Database.Open(Destination));
    Database.Close();
}

TEST_F(BackUpTest, TheCopyOfAnOlderJournalHasTheSameEarlierSchema)
{
    for (const OldFile& old : OldFiles())
    {
        WriteOldFile(Path, old);
        EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "") << old;
        ExpectWhole();
        PlantFileInspection source;
        PlantFileInspection copy;
        EXPECT_TRUE(InspectPlantDatabase(Path, source) && InspectPlantDatabase(Destination, copy));
        EXPECT_EQ(copy.Steps, source.Steps);
    }
}

TEST_F(BackUpTest, AnInterruptedWriteIsRolledBackFirst)
{
    const std::string torn = Scratch.File("torn.db");
    {
        const PlainConnection writer(Path);
        writer.RunSQL("PRAGMA cache_size=1; BEGIN; UPDATE Plants SET Notes=printf('%.9000c','x');");
        std::filesystem::copy_file(Path, torn);
        std::filesystem::copy_file(Path + "-journal", torn + "-journal");
    }
    EXPECT_EQ(BackUpPlantDatabase(torn, Destination).Error, "");
    ExpectWhole();
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db", "torn.db"}));
}

TEST_F(BackUpTest, ProgressIsReportedUpToTheLastPage)
{
    Grow();
    std::vector<std::pair<std::int64_t, std::int64_t>> reported;
    EXPECT_EQ(BackUp(
                  [&](std::int64_t done, std::int64_t total)
                  {
                      reported.emplace_back(done, total);
                      return true;
                  }),
              "");
    const auto pages = static_cast<std::int64_t>(std::filesystem::file_size(Path) / 4096);
    ASSERT_GT(reported.size(), 3U);
    for (std::size_t i = 0; i < reported.size(); ++i)
    {
        EXPECT_EQ(reported[i].second, pages);
        EXPECT_GT(reported[i].first, i == 0 ? 0 : reported[i - 1].first);
    }
    EXPECT_EQ(reported.back().first, pages);
    ExpectWhole();
}

TEST_F(BackUpTest, AnInterruptionIsAnErrorAndLeavesNoFile)
{
    Grow();
    const auto before = Scratch.Files();
    for (const std::int64_t last : {0, 500, 1'000'000}) // at the first report, at one in the middle, at the last one
    {
        const auto untilThere = [&](std::int64_t done, std::int64_t total) { return done <= last && done < total; };
        EXPECT_EQ(BackUp(untilThere), Destination + ": copying " + Path + ": interrupted");
        EXPECT_TRUE(Scratch.Files() == before);
    }
}

TEST_F(BackUpTest, AnExceptionOfTheCallbackPassesAndLeavesNoFile)
{
    const auto before = Scratch.Files();
    const auto fail = [](std::int64_t, std::int64_t) -> bool { throw std::runtime_error("tired"); };
    EXPECT_THROW(BackUp(fail), std::runtime_error);
    const auto failToLook = [](std::int64_t, std::int64_t) { return std::filesystem::file_size("/no/such/file") > 0; };
    EXPECT_THROW(BackUp(failToLook), std::filesystem::filesystem_error);
    EXPECT_TRUE(Scratch.Files() == before);
}

// ---- Other connections at the same time

TEST_F(BackUpTest, ACopyIsOfOneMomentWhileOthersWrite)
{
    Grow();
    const PlainConnection other(Path);
    int reports = 0;
    const auto write = [&](std::int64_t, std::int64_t)
    {
        // A write at each end of the file: a copy of two moments would have one without the other.
        other.RunSQL("BEGIN; UPDATE Plants SET Notes='" + std::to_string(reports) +
                     "'; UPDATE PlantJournalEntries SET Details='" + std::to_string(reports) +
                     "' WHERE ID=(SELECT MAX(ID) FROM PlantJournalEntries); COMMIT;");
        return ++reports < 1000;
    };
    EXPECT_EQ(BackUp(write), "");
    EXPECT_LT(reports, 10); // it ends
    const PlainConnection copy(Destination);
    EXPECT_EQ(Damage(copy.NativeHandle()), "ok");
    const std::string moment = copy.Value("SELECT Notes FROM Plants WHERE ID=1;");
    EXPECT_EQ(moment, std::to_string(reports - 2)); // the last report came after the copy
    EXPECT_EQ(copy.Value("SELECT Details FROM PlantJournalEntries ORDER BY ID DESC LIMIT 1;"), moment);
}

TEST_F(BackUpTest, ABackupAndABusyWriterDoNotStopEachOther)
{
    Grow();
    ChildProcess writer(
        [&](const ParentProcess& parent)
        {
            PlantDatabase database;
            PlantRepository repository(database);
            Plant plant;
            plant.Name = "Busy";
            if (!database.Open(Path) || !repository.CreatePlant(plant))
                throw std::runtime_error("no plant");
            parent.Send("writing");
            for (int i = 0; i < 300; ++i)
            {
                PlantCareEntry entry;
                entry.PlantUUID = plant.UUID;
                entry.AmountMl = i;
                if (!repository.CreatePlantCareEntry(entry))
                    throw std::runtime_error("a write was refused");
            }
        });
    ASSERT_EQ(writer.ReadLine(), "writing");
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "");
        std::vector<PlantFileFinding> findings;
        EXPECT_EQ(CheckPlantDatabase(Destination, findings).Error, "");
        for (const PlantFileFinding& finding : findings) // the sample records have these
            EXPECT_TRUE(finding.Kind == PlantFindingKind::MissingEvent ||
                        finding.Kind == PlantFindingKind::MissingPhotoFile)
                << finding.Description;
    }
    EXPECT_EQ(writer.End(), "done");
}

TEST_F(BackUpTest, ALockHeldForTooLongIsAnError)
{
    {
        const PlainConnection other(Path);
        other.RunSQL("BEGIN EXCLUSIVE;");
        EXPECT_EQ(BackUp(), Path + ": reading the schema: database is locked");
    }
    EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});

    Grow();
    const PlainConnection other(Path);
    const auto lock = [&](std::int64_t, std::int64_t)
    {
        if (sqlite3_get_autocommit(other.NativeHandle()) != 0)
            other.RunSQL("BEGIN EXCLUSIVE;");
        return true;
    };
    EXPECT_EQ(BackUp(lock), Destination + ": copying " + Path + ": database is locked");
    other.RunSQL("ROLLBACK;");
    EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});
}

TEST_F(BackUpTest, TheProgramKeepsItsLocksOnTheJournalAndTheCopy)
{
    ChildProcess other( // started while no file is open
        [&](const ParentProcess& parent)
        {
            for (const std::string& path : {Path, Destination})
            {
                parent.Wait();
                sqlite3* db = nullptr;
                sqlite3_open(path.c_str(), &db);
                parent.Send(std::to_string(sqlite3_exec(db, "BEGIN IMMEDIATE;", nullptr, nullptr, nullptr)));
                sqlite3_close(db);
            }
        });
    const std::string refused = std::to_string(SQLITE_BUSY);
    const PlainConnection own(Path);
    own.RunSQL("BEGIN IMMEDIATE;");
    PlantFileInspection found;
    std::vector<PlantFileFinding> findings;
    EXPECT_TRUE(InspectPlantDatabase(Path, found));
    EXPECT_TRUE(CheckPlantDatabase(Path, findings));
    std::optional<PlainConnection> ownCopy;
    const AfterFileCall open( // as soon as the copy has its name
        FileCall::Link,
        [&]
        {
            ownCopy.emplace(Destination);
            ownCopy->RunSQL("BEGIN IMMEDIATE;");
        });
    EXPECT_EQ(BackUp(), "");
    ASSERT_TRUE(ownCopy);
    other.Continue();
    EXPECT_EQ(other.ReadLine(), refused);
    other.Continue();
    EXPECT_EQ(other.ReadLine(), refused);
}

// ---- The source

TEST_F(BackUpTest, AFileThatIsNotAJournalIsAnErrorAndLeavesNoFile)
{
    std::filesystem::remove(Path);
    const auto expectError = [&](const std::string& error)
    {
        const auto before = Scratch.Files();
        EXPECT_EQ(BackUp(), Path + ": " + error);
        EXPECT_TRUE(Scratch.Files() == before);
    };
    expectError("no such file");
    std::ofstream(Path) << "";
    expectError("reading the schema: not a plantjournal file: it has no tables");
    std::ofstream(Path) << "some other text";
    expectError("reading the schema: file is not a database");
    std::filesystem::remove(Path);
    PlainConnection(Path).RunSQL("CREATE TABLE Bees(X);");
    expectError("reading the schema: not a plantjournal file: The table \"Bees\" is not part of a journal.");
    PlainConnection(Path).RunSQL("PRAGMA journal_mode=WAL;");
    expectError("reading the schema: not a plantjournal file: The file uses a write-ahead log; a journal never does.");
    EXPECT_EQ(BackUpPlantDatabase("", Destination).Error, ": the path is empty or contains a zero byte");
}

TEST_F(BackUpTest, ADamagedJournalIsAnErrorAndNeverReplacesACopy)
{
    ASSERT_EQ(BackUp(), "");
    const std::string kept = FileBytes(Destination);
    const int page =
        std::stoi(PlainConnection(Path).Value("SELECT rootpage FROM sqlite_master WHERE name='PlantsByStrain';"));
    {
        std::fstream file(Path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp((page - 1) * 4096L + 3).put('\0').put('\0'); // the index has no entries
    }
    const auto before = Scratch.Files();
    const std::string error = BackUp({}, PlantBackUpMode::Overwrite);
    const std::string damaged = Destination + ": checking the copy of " + Path + ": the journal is damaged: ";
    EXPECT_TRUE(error.starts_with(damaged)) << error;
    EXPECT_TRUE(Scratch.Files() == before);
    EXPECT_EQ(FileBytes(Destination), kept);

    OverwritePage(Path, "PlantsByStrain");
    EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), damaged + "database disk image is malformed");
    EXPECT_EQ(FileBytes(Destination), kept);

    std::filesystem::resize_file(Path, 4096);
    EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), Path + ": reading the schema: database disk image is malformed");
    EXPECT_EQ(FileBytes(Destination), kept);
}

TEST_F(BackUpTest, AJournalWithUnusualRowsIsCopied)
{
    PlainConnection(Path).RunSQL("PRAGMA ignore_check_constraints=ON; UPDATE Plants SET Stage='Bloom'; UPDATE "
                                 "PlantHealthObservations SET Severity=9; PRAGMA foreign_keys=OFF; UPDATE PlantPhotos "
                                 "SET PlantUUID='nobody';");
    EXPECT_EQ(BackUp(), "");
    EXPECT_EQ(support::Content(PlainConnection(Destination).NativeHandle()),
              support::Content(PlainConnection(Path).NativeHandle()));
}

} // namespace
