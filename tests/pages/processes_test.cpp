// Tries each row of the tables in docs/processes.md, and runs its code.

#include "plant_file.h"
#include "plant_watcher.h"
#include "support/journal_test.h"
#include "support/page.h"

#include <algorithm>
#include <functional>

#include <sqlite3.h>

using namespace support;

namespace
{

const std::string ProcessesPage = "docs/processes.md";

class ProcessesPageTest : public JournalTest
{
  protected:
    ProcessesPageTest()
    {
        Basil = NewPlant("Basil");
        Feeding.PlantUUID = Basil.UUID;
        SetTimeout(0); // a call that would wait fails
    }

    void SetTimeout(int milliseconds) const { sqlite3_busy_timeout(Database.NativeHandle(), milliseconds); }

    bool Writes() { return Repository.CreatePlantCareEntry(Feeding); }

    // Lists the plants. Returns whether no lock was met.
    bool Reads()
    {
        std::vector<Plant> plants;
        EXPECT_TRUE(Repository.ListPlants(plants));
        const bool whole = sqlite3_errcode(Database.NativeHandle()) == SQLITE_OK;
        EXPECT_EQ(plants.size(), whole ? 1 : 0);
        return whole;
    }

    Plant Basil;
    PlantCareEntry Feeding;
    PlainConnection Other{Path};
};

TEST_F(ProcessesPageTest, ThePageShowsTheCasesOfTheseTests)
{
    Rows cases;
    for (const Row& row : TableRows(ProcessesPage, "## Who waits for whom"))
        cases.push_back({row[0], row[1], row[2].starts_with("no wait") ? "no wait" : "waits"});
    EXPECT_EQ(cases, (Rows{{"has the journal open", "does anything", "no wait"},
                           {"reads", "reads", "no wait"},
                           {"writes", "reads", "no wait"},
                           {"commits", "reads", "waits"},
                           {"writes", "writes", "waits"},
                           {"reads", "commits", "waits"}}));
    EXPECT_EQ(CodeBlocks(ProcessesPage, "cpp"),
              (std::vector{Region(__FILE__, "again"), Region(__FILE__, "timeout"), Region(__FILE__, "watch")}));
}

TEST_F(ProcessesPageTest, AnOpenJournalBlocksNoOtherProcess)
{
    EXPECT_TRUE(Reads() && Writes());
    EXPECT_NO_THROW(Other.RunSQL("BEGIN EXCLUSIVE; DELETE FROM Strains; COMMIT;"));
}

TEST_F(ProcessesPageTest, AReaderDoesNotWaitForAReader)
{
    Other.RunSQL("BEGIN; SELECT * FROM Plants;");
    EXPECT_TRUE(Reads());
}

TEST_F(ProcessesPageTest, AReaderDoesNotWaitForAWriteInProgress)
{
    Other.RunSQL("BEGIN IMMEDIATE; DELETE FROM Plants;");
    EXPECT_TRUE(Reads());
}

TEST_F(ProcessesPageTest, AReaderWaitsForACommit)
{
    Other.RunSQL("BEGIN EXCLUSIVE;"); // the lock of a commit
    EXPECT_FALSE(Reads());
}

TEST_F(ProcessesPageTest, AWriterWaitsForAWriter)
{
    Other.RunSQL("BEGIN IMMEDIATE;");
    EXPECT_FALSE(Writes());
    Other.RunSQL("COMMIT;");
    EXPECT_TRUE(Writes());
}

TEST_F(ProcessesPageTest, ACommitWaitsForAReader)
{
    Other.RunSQL("BEGIN; SELECT * FROM Plants;");
    EXPECT_FALSE(Writes());
    Other.RunSQL("COMMIT;");
    EXPECT_TRUE(Writes());
}

TEST_F(ProcessesPageTest, ASecondCallAfterALockSucceeds)
{
    PlantRepository& repository = Repository;
    PlantDatabase& journal = Database;
    PlantCareEntry feeding = Feeding;
    Other.RunSQL("BEGIN IMMEDIATE;");
    const AfterCall release(SQLiteCall::Exec, 1, [&] { Other.RunSQL("COMMIT;"); }); // just after the first call
    // [again]
    bool saved = repository.CreatePlantCareEntry(feeding);
    if (!saved && sqlite3_errcode(journal.NativeHandle()) == SQLITE_BUSY)
        saved = repository.CreatePlantCareEntry(feeding); // another 2.5 seconds
    // [end]
    EXPECT_TRUE(release.Happened());
    EXPECT_TRUE(saved);
    EXPECT_EQ(RowCount("PlantCareEntries"), 1);
    EXPECT_EQ(RowCount("PlantEvents"), 1);
}

TEST_F(ProcessesPageTest, ATimeoutStaysSetUntilTheNextOpen)
{
    PlantDatabase& journal = Database;
    // [timeout]
    sqlite3_busy_timeout(journal.NativeHandle(), 10'000); // milliseconds
    // [end]
    EXPECT_EQ(QueryRows("PRAGMA busy_timeout;"), Rows{{"10000"}});
    OpenJournal();
    EXPECT_EQ(QueryRows("PRAGMA busy_timeout;"), Rows{{"2500"}});
}

TEST_F(ProcessesPageTest, AWatcherReportsAWriteOfAnother)
{
    PlantWatcher watcher(Database);
    int readings = 0;
    const auto readAgain = [&] { ++readings; };
    const auto poll = [&]
    {
        // [watch]
        PlantChanges changes;
        if (watcher.Poll(changes) && changes.OthersChanged)
            readAgain();
        // [end]
    };
    EXPECT_TRUE(Writes() && Reads());
    poll();
    EXPECT_EQ(readings, 0); // writes of the same connection do not count
    const std::string before = QueryRows("PRAGMA data_version;")[0][0];
    Other.RunSQL("UPDATE Plants SET Tent='by the door';");
    poll();
    EXPECT_EQ(readings, 1);
    EXPECT_NE(QueryRows("PRAGMA data_version;")[0][0], before);
}

TEST_F(ProcessesPageTest, AWriteWaitsForAnInspectionAndACheck)
{
    const auto writesDuring = [&](const std::function<PlantFileResult()>& call)
    {
        bool written = true;
        const AfterCall write(SQLiteCall::Step, 150,
                              [&] { written = Writes(); }); // the first steps do not read the file
        EXPECT_TRUE(call());
        EXPECT_TRUE(write.Happened());
        return written;
    };
    PlantFileInspection file;
    EXPECT_FALSE(writesDuring([&] { return InspectPlantDatabase(Path, file); }));
    std::vector<PlantFileFinding> findings;
    EXPECT_FALSE(writesDuring([&] { return CheckPlantDatabase(Path, findings); }));
    EXPECT_TRUE(Writes());
}

} // namespace
