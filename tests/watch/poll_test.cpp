// What a poll reports of other connections, that it never waits, and its errors.
#include "support/allocation_failure.h"
#include "support/child_process.h"
#include "support/disk_failure.h"
#include "watch/watch_test.h"

#include <chrono>
#include <new>
#include <stdexcept>

using namespace support;

namespace
{

class PollTest : public WatchTest
{
  protected:
    std::string BusyTimeout() const { return QueryRows("PRAGMA busy_timeout;")[0][0]; }

    Plant Basil = NewPlant("Basil");
    PlantWatcher Watcher{Database};
};

TEST_F(PollTest, AChangeOfAnotherConnectionIsReportedOnce)
{
    RunElsewhere("UPDATE Plants SET Notes='changed';");
    const PlantChanges changes = Poll(Watcher);
    EXPECT_TRUE(changes.OthersChanged);
    EXPECT_TRUE(changes.Families.empty() && changes.Plants.empty() && !changes.AnyPlant && !changes.AskAgain)
        << changes;
    ExpectNothing(Watcher);
}

TEST_F(PollTest, AnOwnCommitDoesNotCountAsAnothers)
{
    for (int i = 0; i < 3; ++i)
    {
        ASSERT_TRUE(Repository.UpdatePlant(Basil));
        ExpectOwn(Watcher, {Family::Plant}, {Basil.UUID});
    }
}

TEST_F(PollTest, OwnChangesAndThoseOfOthersAreBothReported)
{
    RunElsewhere("UPDATE Plants SET Notes='changed';");
    ASSERT_TRUE(Repository.UpdatePlant(Basil));
    const PlantChanges changes = Poll(Watcher);
    EXPECT_TRUE(changes.OthersChanged);
    EXPECT_FALSE(changes.Families.empty());
    ExpectNothing(Watcher);
}

TEST_F(PollTest, AWriteAheadLogIsWatchedToo)
{
    RunSQL("PRAGMA journal_mode=WAL;");
    Poll(Watcher);
    RunElsewhere("UPDATE Plants SET Notes='changed';");
    EXPECT_TRUE(Poll(Watcher).OthersChanged);
    ASSERT_TRUE(Repository.UpdatePlant(Basil));
    ExpectOwn(Watcher, {Family::Plant}, {Basil.UUID});
    const PlainConnection writer(Path);
    writer.RunSQL("BEGIN IMMEDIATE; UPDATE Plants SET Notes='again';");
    ExpectNothing(Watcher);
    writer.RunSQL("COMMIT;");
    EXPECT_TRUE(Poll(Watcher).OthersChanged);
}

TEST_F(PollTest, AJournalInMemoryIsWatchedToo)
{
    PlantDatabase memory;
    ASSERT_TRUE(memory.Open(":memory:"));
    PlantWatcher watcher(memory);
    PlantRepository repository(memory);
    ASSERT_TRUE(repository.CreatePlant(Basil));
    ExpectOwn(watcher, {Family::Plant}, {Basil.UUID});
}

TEST_F(PollTest, ALockedFileIsAskedAgainAndLosesNothing)
{
    RunElsewhere("UPDATE Plants SET Notes='changed';");
    ASSERT_TRUE(Repository.UpdatePlant(Basil));
    RunElsewhere("UPDATE Plants SET Notes='again';");
    {
        const PlainConnection locker(Path);
        locker.RunSQL("BEGIN EXCLUSIVE;");
        const auto begin = std::chrono::steady_clock::now();
        const PlantChanges own = Poll(Watcher);
        EXPECT_TRUE(own.AskAgain && !own.OthersChanged && !own.Families.empty()) << own;
        const PlantChanges none = Poll(Watcher);
        EXPECT_TRUE(none.AskAgain && !none.OthersChanged && none.Families.empty()) << none;
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(500)); // the timeout is 2.5 s
    }
    const PlantChanges others = Poll(Watcher);
    EXPECT_TRUE(others.OthersChanged && !others.AskAgain && others.Families.empty()) << others;
    ExpectNothing(Watcher);
}

TEST_F(PollTest, TheBusyTimeoutHasItsFormerValueAfterwards)
{
    EXPECT_EQ(BusyTimeout(), "2500");
    Poll(Watcher);
    EXPECT_EQ(BusyTimeout(), "2500");
    const PlainConnection locker(Path);
    locker.RunSQL("BEGIN EXCLUSIVE;");
    EXPECT_TRUE(Poll(Watcher).AskAgain);
    EXPECT_EQ(BusyTimeout(), "2500");
    const PlantWatcher second(Database); // does not begin to watch
    EXPECT_EQ(BusyTimeout(), "2500");
    for (const int milliseconds : {0, 70})
    {
        sqlite3_busy_timeout(Database.NativeHandle(), milliseconds);
        EXPECT_TRUE(Poll(Watcher).AskAgain);
        EXPECT_EQ(BusyTimeout(), std::to_string(milliseconds));
    }
}

TEST_F(PollTest, ABusyHandlerOfTheProgramStaysAndIsCalled)
{
    int calls = 0;
    const auto count = [](void* number, int) { return ++*static_cast<int*>(number) > 1 ? 0 : 1; };
    sqlite3_busy_handler(Database.NativeHandle(), count, &calls);
    const PlainConnection locker(Path);
    locker.RunSQL("BEGIN EXCLUSIVE;");
    EXPECT_TRUE(Poll(Watcher).AskAgain);
    EXPECT_EQ(calls, 2);
    EXPECT_TRUE(Poll(Watcher).AskAgain);
    EXPECT_EQ(calls, 3);
}

TEST_F(PollTest, APollInATransactionDoesNotCloseIt)
{
    RunSQL("BEGIN;");
    Poll(Watcher);
    EXPECT_EQ(sqlite3_get_autocommit(Database.NativeHandle()), 0);
    RunSQL("COMMIT;");
}

TEST_F(PollTest, AReadOnlyConnectionIsWatched)
{
    PlantDatabase reader;
    ASSERT_TRUE(reader.Open(Path));
    RunSQL("PRAGMA user_version=0;");
    support::RunSQL(reader.NativeHandle(), "PRAGMA query_only=ON;");
    PlantWatcher watcher(reader);
    ExpectNothing(watcher);
    ASSERT_TRUE(Repository.UpdatePlant(Basil));
    EXPECT_TRUE(Poll(watcher).OthersChanged);
    PlantRepository refused(reader);
    EXPECT_FALSE(refused.UpdatePlant(Basil));
    ExpectNothing(watcher);
}

TEST_F(PollTest, AnErrorLosesNothing)
{
    ASSERT_TRUE(Repository.UpdatePlant(Basil));
    RunElsewhere("UPDATE Plants SET Notes='changed';");
    {
        const CallFailure failure(SQLiteCall::Prepare, 1, SQLITE_ERROR, "PRAGMA busy_timeout");
        PlantChanges changes;
        changes.Plants = {"old"};
        changes.AskAgain = true;
        EXPECT_EQ(Watcher.Poll(changes).Error.rfind("watching the journal: ", 0), 0U);
        EXPECT_TRUE(changes.Plants.empty() && changes.Families.empty() && !changes.AskAgain) << changes;
    }
    const PlantChanges changes = Poll(Watcher);
    EXPECT_TRUE(changes.OthersChanged && !changes.Families.empty()) << changes;
}

TEST(FailingDiskWatchTest, AnUnreadableFileIsAnErrorThatLosesNothing)
{
    const FailingDisk disk;
    const ScratchDirectory scratch;
    PlantDatabase database;
    PlantDatabase other;
    ASSERT_TRUE(database.Open(scratch.File("journal.db")) && other.Open(scratch.File("journal.db")));
    PlantWatcher watcher(database);
    Plant basil;
    ASSERT_TRUE(PlantRepository(database).CreatePlant(basil));
    ASSERT_TRUE(PlantRepository(other).UpdatePlant(basil));
    PlantChanges changes;
    {
        const DiskFailure failure({DiskCall::Lock, DiskError::IO, true, 1});
        EXPECT_EQ(watcher.Poll(changes).Error, "watching the journal: disk I/O error");
        EXPECT_TRUE(changes.Families.empty());
    }
    EXPECT_TRUE(watcher.Poll(changes));
    EXPECT_TRUE(changes.OthersChanged && !changes.Families.empty()) << changes;
}

TEST_F(PollTest, ALackOfMemoryInAPollLosesNothing)
{
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        for (int number = 1, failures = 1; failures != 0; ++number)
        {
            failures = 0;
            ASSERT_TRUE(Repository.UpdatePlant(Basil));
            RunElsewhere("UPDATE Plants SET Notes='changed';");
            PlantChanges changes;
            try
            {
                const AllocationFailure failure(allocator, number);
                EXPECT_TRUE(Watcher.Poll(changes));
                failures = failure.Happened() ? 1 : 0; // SQLite can do without some
            }
            catch (const std::bad_alloc&)
            {
                failures = 1;
                EXPECT_TRUE(changes.Families.empty() && !changes.OthersChanged) << changes;
                changes = Poll(Watcher);
            }
            EXPECT_TRUE(changes.OthersChanged && !changes.Families.empty()) << changes;
            EXPECT_EQ(BusyTimeout(), "2500");
        }
}

TEST_F(PollTest, ALackOfMemoryInAHookLosesNoFamily)
{
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        for (int number = 1, happened = 1; happened != 0; ++number)
        {
            const std::string before = Content();
            {
                const AllocationFailure failure(allocator, number);
                sqlite3_exec(Database.NativeHandle(), "INSERT INTO PlantEvents(PlantUUID) SELECT UUID FROM Plants;",
                             nullptr, nullptr, nullptr);
                happened = failure.Happened() ? 1 : 0;
            }
            const PlantChanges changes = Poll(Watcher);
            const bool written = Content() != before;
            EXPECT_EQ(written, !changes.Families.empty()) << changes;
            EXPECT_EQ(written, changes.AnyPlant || changes.Plants == std::vector{Basil.UUID}) << changes;
        }
}

TEST(PlantWatcherProcessTest, AChangeOfAnotherProcessIsReported)
{
    const ScratchDirectory scratch;
    const std::string path = scratch.File("journal.db");
    {
        PlantDatabase database;
        ASSERT_TRUE(database.Open(path));
    }
    ChildProcess child(
        [&](const ParentProcess& parent)
        {
            PlantDatabase database;
            PlantRepository repository(database);
            Plant basil;
            if (!database.Open(path))
                throw std::runtime_error("not opened");
            parent.Wait();
            if (!repository.CreatePlant(basil))
                throw std::runtime_error("not stored");
            parent.Send("stored");
            RunSQL(database.NativeHandle(), "BEGIN EXCLUSIVE;");
            parent.Send("locked");
            parent.Wait();
            RunSQL(database.NativeHandle(), "ROLLBACK;");
        });
    PlantDatabase database;
    ASSERT_TRUE(database.Open(path));
    PlantWatcher watcher(database);
    PlantChanges changes;
    ASSERT_TRUE(watcher.Poll(changes));
    EXPECT_FALSE(changes.OthersChanged);
    child.Continue();
    EXPECT_EQ(child.ReadLine(), "stored");
    EXPECT_EQ(child.ReadLine(), "locked");
    ASSERT_TRUE(watcher.Poll(changes));
    EXPECT_TRUE(changes.AskAgain && !changes.OthersChanged) << changes;
    child.Continue();
    EXPECT_EQ(child.End(), "done");
    ASSERT_TRUE(watcher.Poll(changes));
    EXPECT_TRUE(changes.OthersChanged && !changes.AskAgain) << changes;
}

} // namespace
