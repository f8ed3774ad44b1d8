// Which transactions count, and when.
#include "support/allocation_failure.h"
#include "support/disk_failure.h"
#include "support/on_windows.h"
#include "support/sample_records.h"
#include "watch/watch_test.h"

#include <algorithm>
#include <optional>

using namespace support;

namespace
{

class WatchedTransactionTest : public WatchTest
{
  protected:
    void AddEvent(const std::string& details) const
    {
        RunSQL("INSERT INTO PlantEvents(PlantUUID,Details) VALUES('" + Basil.UUID + "','" + details + "');");
    }

    Plant Basil = NewPlant("Basil");
    Plant Mint = NewPlant("Mint");
    PlantWatcher Watcher{Database};
};

TEST_F(WatchedTransactionTest, SeveralWritesAreOneChange)
{
    RunSQL("BEGIN;");
    AddEvent("one");
    RunSQL("INSERT INTO PlantPhotos(UUID,PlantUUID,FilePath) VALUES('u','" + Mint.UUID + "','x');");
    ExpectNothing(Watcher);
    RunSQL("COMMIT;");
    ExpectOwn(Watcher, {Family::Event, Family::Photo}, {Basil.UUID, Mint.UUID});
    ExpectNothing(Watcher);
}

TEST_F(WatchedTransactionTest, ThePollInATransactionReportsCommittedOnes)
{
    AddEvent("committed");
    RunSQL("BEGIN;");
    ASSERT_TRUE(Repository.UpdatePlant(Mint));
    ExpectOwn(Watcher, {Family::Event}, {Basil.UUID});
    ExpectNothing(Watcher);
    RunSQL("COMMIT;");
    ExpectOwn(Watcher, {Family::Plant}, {Mint.UUID});
}

TEST_F(WatchedTransactionTest, ARollbackIsNoChange)
{
    AddEvent("committed");
    RunSQL("BEGIN;");
    ASSERT_TRUE(Repository.UpdatePlant(Mint));
    RunSQL("ROLLBACK;");
    ExpectOwn(Watcher, {Family::Event}, {Basil.UUID});
    ExpectNothing(Watcher);
}

TEST_F(WatchedTransactionTest, ACommitCountsIfARollbackFollowsAtOnce)
{
    AddEvent("committed");
    RunSQL("BEGIN; ROLLBACK;");
    ExpectOwn(Watcher, {Family::Event}, {Basil.UUID});
    AddEvent("committed");
    EXPECT_FALSE(Repository.CreatePlant(Basil)); // its UUID exists
    ExpectOwn(Watcher, {Family::Event}, {Basil.UUID});
    AddEvent("committed");
    RunSQL("BEGIN IMMEDIATE; COMMIT;");
    ExpectOwn(Watcher, {Family::Event}, {Basil.UUID});
}

TEST_F(WatchedTransactionTest, ACommitBeforeARollbackCountsUnderALock)
{
    AddEvent("committed");
    EXPECT_FALSE(Repository.CreatePlant(Basil)); // its UUID exists
    {
        const PlainConnection locker(Path);
        locker.RunSQL("BEGIN EXCLUSIVE;");
        const PlantChanges changes = Poll(Watcher);
        EXPECT_TRUE(changes.AskAgain) << changes;
        EXPECT_EQ(std::count(changes.Families.begin(), changes.Families.end(), Family::Event), 1) << changes;
        EXPECT_TRUE(changes.AnyPlant || changes.Plants == std::vector{Basil.UUID}) << changes;
    }
    ExpectNothing(Watcher);
}

TEST_F(WatchedTransactionTest, ARefusedOperationIsNoChange)
{
    PlantCareEntry entry;
    entry.PlantUUID = "unknown";
    EXPECT_FALSE(Repository.CreatePlantCareEntry(entry)); // its event was written first, and rolled back
    PlantEvent event;
    event.PlantUUID = "unknown";
    EXPECT_FALSE(Repository.CreatePlantEvent(event)); // the row was written before the foreign key failed
    ExpectNothing(Watcher);
}

TEST_F(WatchedTransactionTest, AStatementThatFailsHalfWayIsNoChange)
{
    EXPECT_THROW(RunSQL("INSERT INTO PlantEvents(PlantUUID,EventType) VALUES('" + Basil.UUID + "','Note'),('" +
                        Basil.UUID + "','no such type');"),
                 std::runtime_error);
    ExpectNothing(Watcher);
}

TEST_F(WatchedTransactionTest, AStatementThatFailsInATransactionMayCount)
{
    RunSQL("BEGIN;");
    EXPECT_THROW(RunSQL("INSERT INTO PlantEvents(PlantUUID,EventType) VALUES('" + Basil.UUID + "','Note'),('" +
                        Basil.UUID + "','no such type');"),
                 std::runtime_error);
    ASSERT_TRUE(Repository.UpdatePlant(Mint));
    RunSQL("COMMIT;");
    ExpectOwn(Watcher, {Family::Plant, Family::Event}, {Basil.UUID, Mint.UUID});
}

TEST_F(WatchedTransactionTest, ARollbackToASavepointMayCount)
{
    RunSQL("SAVEPOINT outer; SAVEPOINT inner;");
    AddEvent("rolled back");
    RunSQL("ROLLBACK TO inner;");
    ASSERT_TRUE(Repository.UpdatePlant(Mint));
    ExpectNothing(Watcher);
    RunSQL("RELEASE outer;");
    ExpectOwn(Watcher, {Family::Plant, Family::Event}, {Basil.UUID, Mint.UUID});
    RunSQL("SAVEPOINT outer;");
    AddEvent("rolled back");
    RunSQL("ROLLBACK TO outer;");
    RunSQL("ROLLBACK;");
    ExpectNothing(Watcher);
}

TEST_F(WatchedTransactionTest, ALockedCommitCountsOnceItSucceeds)
{
    RunSQL("PRAGMA busy_timeout=0;");
    const PlainConnection reader(Path);
    reader.RunSQL("BEGIN; SELECT * FROM Plants;");
    RunSQL("BEGIN;");
    AddEvent("one");
    EXPECT_THROW(RunSQL("COMMIT;"), std::runtime_error);
    ExpectNothing(Watcher);
    ASSERT_TRUE(Repository.UpdatePlant(Mint));
    reader.RunSQL("COMMIT;");
    RunSQL("COMMIT;");
    ExpectOwn(Watcher, {Family::Plant, Family::Event}, {Basil.UUID, Mint.UUID});
}

TEST_F(WatchedTransactionTest, ALockedCommitThatIsRolledBackIsNoChange)
{
    RunSQL("PRAGMA busy_timeout=0;");
    const PlainConnection reader(Path);
    reader.RunSQL("BEGIN; SELECT * FROM Plants;");
    RunSQL("BEGIN;");
    AddEvent("one");
    EXPECT_THROW(RunSQL("COMMIT;"), std::runtime_error);
    RunSQL("ROLLBACK;");
    EXPECT_THROW(AddEvent("two"), std::runtime_error);
    ExpectNothing(Watcher);
}

TEST_F(WatchedTransactionTest, ALockedCommitIsNotPartOfTheNextCommit)
{
    RunSQL("PRAGMA busy_timeout=0;");
    const PlainConnection reader(Path);
    reader.RunSQL("BEGIN; SELECT * FROM Plants;");
    EXPECT_THROW(AddEvent("one"), std::runtime_error);
    RunSQL("BEGIN;");
    AddEvent("two");
    EXPECT_THROW(RunSQL("COMMIT;"), std::runtime_error);
    RunSQL("ROLLBACK;");
    reader.RunSQL("COMMIT;");
    ASSERT_TRUE(Repository.UpdatePlant(Mint));
    ExpectOwn(Watcher, {Family::Plant}, {Mint.UUID});
}

TEST_F(WatchedTransactionTest, ACommitThatFailsForLackOfMemoryIsNoChange)
{
    int failed = 0;
    for (int number = 1, happened = 1; happened != 0; ++number)
    {
        const std::string before = Content();
        {
            const AllocationFailure failure(Allocator::SQLite, number);
            sqlite3_exec(Database.NativeHandle(), "INSERT INTO PlantEvents(PlantUUID) SELECT UUID FROM Plants;",
                         nullptr, nullptr, nullptr);
            happened = failure.Happened() ? 1 : 0;
        }
        const bool written = Content() != before;
        failed += written ? 0 : 1;
        ASSERT_TRUE(Repository.UpdatePlant(Mint));
        const Families families = Poll(Watcher).Families;
        const auto counted = std::count(families.begin(), families.end(), Family::Event);
        // On Windows, SQLite cannot remove its rollback journal without memory, as if the disk had failed.
        EXPECT_TRUE(counted == (written ? 1 : 0) || (OnWindows && counted == 1)) << number;
    }
    EXPECT_GT(failed, 3);
}

TEST_F(WatchedTransactionTest, ATransactionThatWasOpenCountsAsEverything)
{
    const auto everything = [&](const char* end)
    {
        PlantDatabase other;
        EXPECT_TRUE(other.Open(Path));
        support::RunSQL(other.NativeHandle(), "BEGIN; UPDATE Plants SET Notes='changed';");
        PlantWatcher watcher(other);
        ExpectNothing(watcher);
        support::RunSQL(other.NativeHandle(), end);
        return Poll(watcher);
    };
    EXPECT_TRUE(everything("ROLLBACK;").Families.empty());
    const PlantChanges changes = everything("COMMIT;");
    EXPECT_EQ(changes.Families, EveryFamily());
    EXPECT_TRUE(changes.AnyPlant && !changes.OthersChanged) << changes;
}

TEST_F(WatchedTransactionTest, AfterAnOpenReadingTheNextCommitIsEverything)
{
    PlantDatabase other;
    ASSERT_TRUE(other.Open(Path));
    support::RunSQL(other.NativeHandle(), "BEGIN;");
    PlantWatcher watcher(other);
    support::RunSQL(other.NativeHandle(), "COMMIT;");
    ExpectNothing(watcher);
    support::RunSQL(other.NativeHandle(), "UPDATE Plants SET Notes='one';");
    EXPECT_EQ(Poll(watcher).Families, EveryFamily());
    support::RunSQL(other.NativeHandle(), "UPDATE Plants SET Notes='two';");
    ExpectOwn(watcher, {Family::Plant}, {Basil.UUID, Mint.UUID});
}

TEST_F(WatchedTransactionTest, ChangesOfATemporaryTableAreNoCommitOfTheJournal)
{
    RunSQL("CREATE TEMP TABLE Notes(Text);");
    RunSQL("INSERT INTO Notes VALUES('x');");
    ExpectNothing(Watcher);
    EXPECT_FALSE(Repository.CreatePlant(Basil));
    EXPECT_EQ(Poll(Watcher).Plants, std::vector<std::string>{});
    AddEvent("one");
    RunSQL("INSERT INTO Notes VALUES('y');");
    ExpectOwn(Watcher, {Family::Event}, {Basil.UUID});
}

class FailingCommitTest : public testing::Test
{
  protected:
    FailingCommitTest()
    {
        EXPECT_TRUE(Database.Open(Scratch.File("journal.db")));
        EXPECT_TRUE(Repository.CreatePlant(Basil));
        Watcher.emplace(Database);
    }

    bool AddCareEntry()
    {
        PlantCareEntry entry;
        entry.PlantUUID = Basil.UUID;
        return Repository.CreatePlantCareEntry(entry);
    }

    PlantChanges Poll()
    {
        PlantChanges changes;
        EXPECT_EQ(Watcher->Poll(changes).Error, "");
        return changes;
    }

    const FailingDisk Disk;
    const ScratchDirectory Scratch;
    PlantDatabase Database;
    PlantRepository Repository{Database};
    Plant Basil;
    std::optional<PlantWatcher> Watcher;
};

// A commit that fails after SQLite called the commit hook: the disk is full when the file grows.
TEST_F(FailingCommitTest, ACommitThatFailsOnAFullDiskIsNoChange)
{
    int failed = 0;
    for (int number = 1; number < 30; ++number)
    {
        bool stored = false;
        bool happened = false;
        {
            const DiskFailure failure({DiskCall::Write, DiskError::Full, true, number});
            stored = AddCareEntry();
            happened = failure.Happened();
        }
        failed += stored ? 0 : 1;
        EXPECT_EQ(!Poll().Families.empty(), stored) << number;
        EXPECT_EQ(stored, !happened) << number;
        ASSERT_TRUE(Repository.UpdatePlant(Basil)); // without the changes of the failed commit
        const Families next = Poll().Families;
        EXPECT_EQ(std::count(next.begin(), next.end(), Family::Plant), 1) << number;
        EXPECT_EQ(std::count(next.begin(), next.end(), Family::CareEntry), 0) << number;
    }
    EXPECT_GT(failed, 3);
}

TEST_F(FailingCommitTest, ACommitThatFailsDuringAReadingIsNoChange)
{
    int failed = 0;
    for (int number = 1; number < 30; ++number)
    {
        bool stored = false;
        sqlite3_stmt* reading = nullptr;
        ASSERT_EQ(sqlite3_prepare_v2(Database.NativeHandle(), "SELECT * FROM sqlite_master;", -1, &reading, nullptr),
                  SQLITE_OK);
        ASSERT_EQ(sqlite3_step(reading), SQLITE_ROW);
        {
            const DiskFailure failure({DiskCall::Write, DiskError::Full, true, number});
            stored = AddCareEntry();
        }
        failed += stored ? 0 : 1;
        sqlite3_finalize(reading); // the failure may have ended it
        ASSERT_TRUE(Repository.UpdatePlant(Basil));
        const Families next = Poll().Families;
        EXPECT_EQ(std::count(next.begin(), next.end(), Family::CareEntry), stored ? 1 : 0) << number;
    }
    EXPECT_GT(failed, 3);
}

TEST_F(FailingCommitTest, AFailingDiskNeverHidesAChange)
{
    for (const DiskCall call : {DiskCall::Write, DiskCall::Sync, DiskCall::Delete, DiskCall::Truncate, DiskCall::Read})
        for (const bool lasting : {false, true})
            for (int number = 1; number < 20; ++number)
            {
                const std::string before = Content(Database.NativeHandle());
                {
                    const DiskFailure failure({call, DiskError::IO, lasting, number});
                    AddCareEntry();
                    Repository.UpdatePlant(Basil);
                    Repository.CreatePlant(Basil); // refused
                }
                const PlantChanges changes = Poll();
                const bool changed = Content(Database.NativeHandle()) != before;
                EXPECT_TRUE(!changed || !changes.Families.empty() || changes.OthersChanged)
                    << DiskFault{call, DiskError::IO, lasting, number};
            }
}

} // namespace
