// A process that locks bytes of the journal's files itself, and one that is killed, as on POSIX systems.

#include "support/child_process.h"
#include "watch/watch_test.h"

#include <array>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

using namespace support;

namespace
{

// Another process rebuilds the index of a write-ahead log: https://www.sqlite.org/walformat.html. SQLite reports it by
// an extended code, if the program enabled these codes.
TEST(PlantWatcherProcessTest, ARecoveryByAnotherProcessIsALock)
{
    const ScratchDirectory scratch;
    const std::string path = scratch.File("journal.db");
    ChildProcess child(
        [&](const ParentProcess& parent)
        {
            parent.Wait();
            const int file = open((path + "-shm").c_str(), O_RDWR);
            struct flock lock = {};
            lock.l_type = F_WRLCK;
            lock.l_whence = SEEK_SET;
            lock.l_start = 120; // the locks of the writer, of a checkpoint and of a recovery
            lock.l_len = 3;
            const std::array<char, 96> noHeader{};
            if (fcntl(file, F_SETLK, &lock) != 0 || pwrite(file, noHeader.data(), noHeader.size(), 0) < 0)
                throw std::runtime_error("the index is not locked");
            parent.Send("locked");
            parent.Wait();
        });
    PlantDatabase database;
    PlantDatabase other;
    ASSERT_TRUE(database.Open(path));
    RunSQL(database.NativeHandle(), "PRAGMA journal_mode=WAL;");
    ASSERT_TRUE(other.Open(path));
    sqlite3_extended_result_codes(database.NativeHandle(), 1);
    sqlite3_extended_result_codes(other.NativeHandle(), 1);
    PlantWatcher watcher(database);
    Plant basil;
    ASSERT_TRUE(PlantRepository(database).CreatePlant(basil));
    child.Continue();
    ASSERT_EQ(child.ReadLine(), "locked");
    PlantWatcher late(other); // does not begin to watch
    PlantChanges changes;
    for (PlantWatcher* waiting : {&watcher, &late})
    {
        ASSERT_EQ(waiting->Poll(changes).Error, "");
        EXPECT_TRUE(changes.AskAgain) << changes;
        EXPECT_EQ(changes.Families.empty(), waiting == &late) << changes;
    }
    child.Continue();
    EXPECT_EQ(child.End(), "done");
    for (PlantWatcher* waiting : {&watcher, &late})
    {
        ASSERT_EQ(waiting->Poll(changes).Error, "");
        EXPECT_EQ(changes.AskAgain, false);
    }
    EXPECT_EQ(changes.Families.size(), 8U) << changes;
}

TEST(PlantWatcherProcessTest, TheWriteOfAKilledProcessIsRolledBack)
{
    const ScratchDirectory scratch;
    const std::string path = scratch.File("journal.db");
    {
        PlantDatabase database;
        ASSERT_TRUE(database.Open(path));
        Plant basil;
        ASSERT_TRUE(PlantRepository(database).CreatePlant(basil));
    }
    ChildProcess child(
        [&](const ParentProcess& parent)
        {
            const PlainConnection writer(path);
            parent.Wait();
            writer.RunSQL("PRAGMA cache_size=1; BEGIN; UPDATE Plants SET Notes=hex(zeroblob(100000));");
            parent.Send("written");
            parent.Wait();
        });
    PlantDatabase database;
    ASSERT_TRUE(database.Open(path));
    PlantWatcher watcher(database);
    child.Continue();
    ASSERT_EQ(child.ReadLine(), "written");
    child.Kill();
    EXPECT_EQ(child.End(), "signal 9");
    PlantChanges changes;
    ASSERT_TRUE(watcher.Poll(changes)); // rolls the write back
    EXPECT_TRUE(changes.Families.empty() && !changes.AskAgain) << changes;
    Plant basil;
    std::vector<Plant> plants;
    EXPECT_TRUE(PlantRepository(database).ListPlants(plants));
    EXPECT_EQ(plants.size(), 1U);
    ASSERT_TRUE(watcher.Poll(changes));
    EXPECT_FALSE(changes.OthersChanged);
}

} // namespace
