// Which transactions count, and when.
#include "support/disk_failure.h"
#include "support/sample_records.h"
#include "watch/watch_test.h"

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

} // namespace

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

TEST_F(WatchedTransactionTest, ChangesOfATemporaryTableAreNoCommitOfTheJournal)
{
    RunSQL("CREATE TEMP TABLE Notes(Text);");
    RunSQL("INSERT INTO Notes VALUES('x');");
    EXPECT_FALSE(Repository.CreatePlant(Basil));
    EXPECT_EQ(Poll(Watcher).Plants, std::vector<std::string>{});
    AddEvent("one");
    RunSQL("INSERT INTO Notes VALUES('y');");
    ExpectOwn(Watcher, {Family::Event}, {Basil.UUID});
}

// A commit that fails after SQLite called the commit hook: the disk is full when the file grows.
TEST(FullDiskWatchTest, ACommitThatFailsOnAFullDiskIsNoChange)
{
    const FailingDisk disk;
    const ScratchDirectory scratch;
    PlantDatabase database;
    ASSERT_TRUE(database.Open(scratch.File("journal.db")));
    PlantRepository repository(database);
    Plant basil;
    ASSERT_TRUE(repository.CreatePlant(basil));
    PlantWatcher watcher(database);
    int failed = 0;
    for (int number = 1; number < 30; ++number)
    {
        PlantCareEntry entry;
        entry.PlantUUID = basil.UUID;
        bool stored = false;
        bool happened = false;
        {
            const DiskFailure failure({DiskCall::Write, DiskError::Full, true, number});
            stored = repository.CreatePlantCareEntry(entry);
            happened = failure.Happened();
        }
        failed += stored ? 0 : 1;
        PlantChanges changes;
        ASSERT_TRUE(watcher.Poll(changes)) << number;
        EXPECT_EQ(!changes.Families.empty(), stored) << number;
        EXPECT_EQ(stored, !happened) << number;
    }
    EXPECT_GT(failed, 3);
}

TEST(FullDiskWatchTest, AFullDiskNeverHidesAChange)
{
    const FailingDisk disk;
    const ScratchDirectory scratch;
    PlantDatabase database;
    ASSERT_TRUE(database.Open(scratch.File("journal.db")));
    PlantRepository repository(database);
    Plant basil;
    ASSERT_TRUE(repository.CreatePlant(basil));
    PlantWatcher watcher(database);
    for (const DiskCall call : {DiskCall::Write, DiskCall::Sync, DiskCall::Delete, DiskCall::Truncate, DiskCall::Read})
        for (const bool lasting : {false, true})
            for (int number = 1; number < 20; ++number)
            {
                const std::string before = Content(database.NativeHandle());
                {
                    const DiskFailure failure({call, DiskError::IO, lasting, number});
                    PlantCareEntry entry;
                    entry.PlantUUID = basil.UUID;
                    repository.CreatePlantCareEntry(entry);
                    repository.UpdatePlant(basil);
                    repository.CreatePlant(basil); // refused
                }
                PlantChanges changes;
                ASSERT_TRUE(watcher.Poll(changes)) << number;
                const bool changed = Content(database.NativeHandle()) != before;
                EXPECT_TRUE(!changed || !changes.Families.empty() || changes.OthersChanged)
                    << DiskFault{call, DiskError::IO, lasting, number};
            }
}
