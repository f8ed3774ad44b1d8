// The hooks and the lifetime of a watcher.
#include "support/allocation_failure.h"
#include "watch/watch_test.h"

#include <chrono>
#include <memory>
#include <new>
#include <thread>
#include <type_traits>

using namespace support;

static_assert(!std::is_copy_constructible_v<PlantWatcher> && !std::is_move_constructible_v<PlantWatcher>);
static_assert(!std::is_copy_assignable_v<PlantWatcher> && !std::is_move_assignable_v<PlantWatcher>);

namespace
{

class WatcherLifetimeTest : public WatchTest
{
  protected:
    static std::string Error(PlantWatcher& watcher)
    {
        PlantChanges changes;
        changes.AnyPlant = true;
        const PlantWatchResult result = watcher.Poll(changes);
        EXPECT_EQ(changes.AnyPlant, false);
        return result.Error;
    }
};

int CountCommit(void* count)
{
    ++*static_cast<int*>(count);
    return 0;
}

TEST_F(WatcherLifetimeTest, TheDestructorRemovesTheHooks)
{
    {
        const PlantWatcher watcher(Database);
    }
    sqlite3* connection = Database.NativeHandle();
    EXPECT_EQ(sqlite3_commit_hook(connection, nullptr, nullptr), nullptr);
    EXPECT_EQ(sqlite3_rollback_hook(connection, nullptr, nullptr), nullptr);
    EXPECT_EQ(sqlite3_update_hook(connection, nullptr, nullptr), nullptr);
    EXPECT_EQ(sqlite3_next_stmt(connection, nullptr), nullptr);
}

TEST_F(WatcherLifetimeTest, AConstructorWithoutMemoryLeavesNoHook)
{
    sqlite3* connection = Database.NativeHandle();
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        for (int number = 1, thrown = 1; thrown != 0; ++number)
        {
            thrown = 0;
            try
            {
                const AllocationFailure failure(allocator, number);
                const PlantWatcher watcher(Database);
            }
            catch (const std::bad_alloc&)
            {
                thrown = 1;
            }
            EXPECT_EQ(sqlite3_commit_hook(connection, nullptr, nullptr), nullptr);
            EXPECT_EQ(sqlite3_update_hook(connection, nullptr, nullptr), nullptr);
            EXPECT_EQ(sqlite3_next_stmt(connection, nullptr), nullptr);
            EXPECT_EQ(QueryRows("PRAGMA busy_timeout;"), (Rows{{"2500"}}));
            PlantWatcher watcher(Database); // the connection is not registered
            ExpectNothing(watcher);
        }
}

TEST_F(WatcherLifetimeTest, AnEarlierHookIsReplacedAndNotRestored)
{
    int commits = 0;
    sqlite3_commit_hook(Database.NativeHandle(), CountCommit, &commits);
    NewPlant("Basil");
    EXPECT_EQ(commits, 1);
    {
        PlantWatcher watcher(Database);
        const Plant mint = NewPlant("Mint");
        ExpectOwn(watcher, {Family::Plant}, {mint.UUID});
    }
    NewPlant("Sage");
    EXPECT_EQ(commits, 1);
}

TEST_F(WatcherLifetimeTest, ASecondWatcherOfAConnectionIsRefused)
{
    auto first = std::make_unique<PlantWatcher>(Database);
    PlantWatcher second(Database);
    const Plant basil = NewPlant("Basil");
    EXPECT_EQ(Error(second), "watching the journal: another watcher watches this connection");
    ExpectOwn(*first, {Family::Plant}, {basil.UUID});
    first.reset();
    ExpectEverything(Poll(second));
    const Plant mint = NewPlant("Mint");
    ExpectOwn(second, {Family::Plant}, {mint.UUID});
    PlantWatcher third(Database);
    EXPECT_NE(Error(third), "");
}

TEST_F(WatcherLifetimeTest, EachConnectionHasItsOwnWatcher)
{
    PlantDatabase other;
    PlantDatabase last;
    ASSERT_TRUE(other.Open(Path) && last.Open(Path));
    auto watcher = std::make_unique<PlantWatcher>(Database);
    auto otherWatcher = std::make_unique<PlantWatcher>(other);
    PlantWatcher lastWatcher(last);
    PlantWatcher refused(Database);
    EXPECT_NE(Error(refused), "");
    NewPlant("Basil");
    EXPECT_FALSE(Poll(*watcher).OthersChanged);
    EXPECT_TRUE(Poll(*otherWatcher).OthersChanged);
    watcher.reset(); // in another order than they were constructed
    EXPECT_TRUE(Poll(lastWatcher).OthersChanged);
    otherWatcher.reset();
    otherWatcher = std::make_unique<PlantWatcher>(other);
    ExpectNothing(*otherWatcher);
}

TEST_F(WatcherLifetimeTest, APollOnAClosedDatabaseIsAnError)
{
    PlantDatabase closed;
    PlantWatcher watcher(closed);
    EXPECT_EQ(Error(watcher), "watching the journal: the database is closed");
    ASSERT_TRUE(closed.Open(Path));
    ExpectEverything(Poll(watcher));
    ExpectNothing(watcher);
    closed.Close();
    EXPECT_EQ(Error(watcher), "watching the journal: the database is closed");
    EXPECT_EQ(Error(watcher), "watching the journal: the database is closed");
}

TEST_F(WatcherLifetimeTest, AReopenedDatabaseReportsEverythingOnce)
{
    PlantWatcher watcher(Database);
    ASSERT_TRUE(Database.Open(Path));
    ExpectEverything(Poll(watcher));
    ExpectNothing(watcher);
    const Plant basil = NewPlant("Basil");
    ExpectOwn(watcher, {Family::Plant}, {basil.UUID});
}

TEST_F(WatcherLifetimeTest, TheDatabaseMayBeDestroyedFirst)
{
    auto database = std::make_unique<PlantDatabase>();
    ASSERT_TRUE(database->Open(Path));
    {
        const PlantWatcher watcher(*database);
        support::RunSQL(database->NativeHandle(), "BEGIN IMMEDIATE; UPDATE Plants SET Notes='x';");
        database.reset();
        const PlainConnection other(Path); // the connection still has its lock
        EXPECT_THROW(other.RunSQL("BEGIN IMMEDIATE;"), std::runtime_error);
    }
    RunElsewhere("BEGIN IMMEDIATE; COMMIT;");
}

TEST_F(WatcherLifetimeTest, AClosedConnectionEndsWithTheNextPoll)
{
    PlantDatabase database;
    ASSERT_TRUE(database.Open(Path));
    PlantWatcher watcher(database);
    support::RunSQL(database.NativeHandle(), "BEGIN IMMEDIATE; UPDATE Plants SET Notes='x';");
    database.Close();
    const PlainConnection other(Path);
    EXPECT_THROW(other.RunSQL("BEGIN IMMEDIATE;"), std::runtime_error);
    EXPECT_NE(Error(watcher), "");
    other.RunSQL("BEGIN IMMEDIATE;");
}

TEST_F(WatcherLifetimeTest, AWatcherOfALockedFileBeginsLater)
{
    const PlainConnection locker(Path);
    locker.RunSQL("BEGIN EXCLUSIVE;");
    const auto begin = std::chrono::steady_clock::now();
    PlantWatcher watcher(Database);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2)); // the timeout is 2.5 s
    PlantChanges changes;
    ASSERT_TRUE(watcher.Poll(changes));
    EXPECT_TRUE(changes.AskAgain && changes.Families.empty()) << changes;
    locker.RunSQL("COMMIT;");
    ExpectEverything(Poll(watcher));
    ExpectNothing(watcher);
}

// A journal whose tables have their columns in another order, and the names in other letters.
TEST_F(WatcherLifetimeTest, TheColumnsOfATableMayHaveAnyOrder)
{
    RunSQL("DROP TABLE PlantPhotos; CREATE TABLE PLANTPHOTOS (ID INTEGER PRIMARY KEY, FilePath TEXT NOT NULL, Caption "
           "TEXT NOT NULL DEFAULT '', PLANTUUID TEXT NOT NULL, PhotoDate TEXT NOT NULL DEFAULT '', UUID TEXT NOT "
           "NULL);");
    PlantWatcher watcher(Database);
    PlantPhoto photo;
    photo.PlantUUID = "the plant";
    photo.FilePath = "x.jpg";
    ASSERT_TRUE(Repository.CreatePlantPhoto(photo));
    ExpectOwn(watcher, {Family::Photo}, {"the plant"});
}

TEST_F(WatcherLifetimeTest, ATableWithoutItsColumnNamesAnyPlant)
{
    RunSQL("DROP TABLE PlantPhotos; CREATE TABLE PlantPhotos (ID INTEGER PRIMARY KEY);");
    PlantWatcher watcher(Database);
    RunSQL("INSERT INTO PlantPhotos VALUES(1);");
    EXPECT_TRUE(Poll(watcher).AnyPlant);
}

TEST_F(WatcherLifetimeTest, ThreadsMayWatchDifferentDatabases)
{
    const auto work = [&](const std::string& path)
    {
        for (int i = 0; i < 30; ++i)
        {
            PlantDatabase database;
            ASSERT_TRUE(database.Open(path));
            PlantWatcher watcher(database);
            PlantRepository repository(database);
            Plant plant;
            plant.UUID = std::to_string(i); // the generator of UUIDs belongs to one thread
            ASSERT_TRUE(repository.CreatePlant(plant));
            ExpectOwn(watcher, {Family::Plant}, {plant.UUID});
        }
    };
    std::thread first(work, Scratch.File("first.db"));
    std::thread second(work, Scratch.File("second.db"));
    first.join();
    second.join();
}

TEST_F(WatcherLifetimeTest, ThreadsMayBeginAndEndToWatchAtTheSameTime)
{
    const auto work = [&](const std::string& path)
    {
        PlantDatabase database;
        ASSERT_TRUE(database.Open(path));
        for (int i = 0; i < 500; ++i)
        {
            PlantWatcher watcher(database);
            const PlantWatcher second(database);
            ASSERT_EQ(Error(watcher), "");
        }
    };
    std::thread first(work, Scratch.File("first.db"));
    std::thread second(work, Scratch.File("second.db"));
    first.join();
    second.join();
}

} // namespace
