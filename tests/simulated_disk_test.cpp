// The tests of power loss rely on the simulated disk, which must lose all that a real disk can lose.

#include "support/simulated_disk.h"
#include "support/test_form.h"
#include "testing/scratch_directory.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <string>
#include <utility>

#include <gtest/gtest.h>

using namespace support;

namespace
{

class SimulatedDiskTest : public testing::Test
{
  protected:
    // The values that `look` returns after a power loss, over many outcomes for the changes that were not synced.
    template <typename Look> auto Outcomes(const Look& look)
    {
        std::set<decltype(look())> outcomes;
        const SimulatedDisk before = Disk;
        for (int i = 0; i < 500; ++i)
        {
            Disk = before;
            Disk.Reboot(Random);
            outcomes.insert(look());
        }
        Disk = before;
        return outcomes;
    }

    std::string Bytes(const std::string& name) { return std::string(Disk.Bytes(Disk.Open(name))); }

    SimulatedDisk Disk;
    std::mt19937_64 Random{Seed()};
};

TEST_F(SimulatedDiskTest, AnUnsyncedWriteIsKeptDroppedOrTorn)
{
    const int file = Disk.Open("file");
    EXPECT_TRUE(Disk.Write(file, 0, std::string(1024, 'a')));
    Disk.SyncAll();
    EXPECT_EQ(Outcomes([&] { return Bytes("file"); }), (std::set{std::string(1024, 'a')}));

    EXPECT_TRUE(Disk.Write(file, 100, std::string(800, 'b')));
    const std::string a(512, 'a');
    const std::string left = std::string(100, 'a') + std::string(412, 'b');
    const std::string right = std::string(388, 'b') + std::string(124, 'a');
    EXPECT_EQ(Bytes("file"), left + right);
    EXPECT_EQ(Outcomes([&] { return Bytes("file"); }), (std::set{a + a, left + a, a + right, left + right}));

    EXPECT_TRUE(Disk.Sync(file));
    EXPECT_EQ(Outcomes([&] { return Bytes("file"); }), (std::set{left + right}));
}

TEST_F(SimulatedDiskTest, ALaterWriteCanBeKeptAndAnEarlierOneDropped)
{
    const int file = Disk.Open("file");
    EXPECT_TRUE(Disk.Write(file, 0, std::string(1024, '-')));
    Disk.SyncAll();
    EXPECT_TRUE(Disk.Write(file, 0, "1"));
    EXPECT_TRUE(Disk.Write(file, 512, "2"));
    EXPECT_EQ(Outcomes([&] { return Bytes("file").substr(0, 1) + Bytes("file").substr(512, 1); }),
              (std::set<std::string>{"--", "1-", "-2", "12"}));
}

TEST_F(SimulatedDiskTest, AnUnsyncedFileCanGrowWithRandomBytes)
{
    const int file = Disk.Open("file");
    EXPECT_TRUE(Disk.Write(file, 0, "a"));
    Disk.SyncAll();
    EXPECT_TRUE(Disk.Write(file, 1, "b"));
    const std::set<std::string> outcomes = Outcomes([&] { return Bytes("file"); });
    EXPECT_EQ(outcomes.count("a"), 1U);
    EXPECT_EQ(outcomes.count("ab"), 1U);
    EXPECT_GT(outcomes.size(), 10U);
}

TEST_F(SimulatedDiskTest, AnUnsyncedTruncationCanBeDropped)
{
    const int file = Disk.Open("file");
    EXPECT_TRUE(Disk.Write(file, 0, "abc"));
    Disk.SyncAll();
    EXPECT_TRUE(Disk.Truncate(file, 1));
    EXPECT_EQ(Outcomes([&] { return Bytes("file"); }), (std::set<std::string>{"a", "abc"}));
    EXPECT_TRUE(Disk.Sync(file));
    EXPECT_EQ(Outcomes([&] { return Bytes("file"); }), (std::set<std::string>{"a"}));
}

TEST_F(SimulatedDiskTest, ANewFileCanBeLostUntilItsDirectoryIsSynced)
{
    const int file = Disk.Open("file");
    EXPECT_TRUE(Disk.Write(file, 0, "a"));
    EXPECT_TRUE(Disk.Sync(file));
    EXPECT_EQ(Outcomes([&] { return Disk.Exists("file"); }), (std::set{false, true}));
    EXPECT_TRUE(Disk.SyncDirectory());
    EXPECT_EQ(Outcomes([&] { return Disk.Exists("file"); }), (std::set{true}));
}

TEST_F(SimulatedDiskTest, AnUnlinkIsUndoneOnlyIfUnlinksDoNotPersist)
{
    Disk.Open("file");
    Disk.SyncAll();
    const SimulatedDisk settled = Disk;
    EXPECT_TRUE(Disk.Unlink("file"));
    EXPECT_EQ(Outcomes([&] { return Disk.Exists("file"); }), (std::set{false}));

    Disk = settled;
    Disk.UnlinksPersist = false;
    EXPECT_TRUE(Disk.Unlink("file"));
    EXPECT_FALSE(Disk.Exists("file"));
    EXPECT_EQ(Outcomes([&] { return Disk.Exists("file"); }), (std::set{false, true}));
    EXPECT_TRUE(Disk.SyncDirectory());
    EXPECT_EQ(Outcomes([&] { return Disk.Exists("file"); }), (std::set{false}));
}

TEST_F(SimulatedDiskTest, ARenamedFileHasEitherContentUntilTheSync)
{
    EXPECT_TRUE(Disk.Write(Disk.Open("file"), 0, "old"));
    EXPECT_TRUE(Disk.Write(Disk.Open("copy"), 0, "new"));
    Disk.SyncAll();
    EXPECT_TRUE(Disk.Rename("copy", "file"));
    EXPECT_FALSE(Disk.Exists("copy"));
    EXPECT_EQ(Outcomes([&] { return Bytes("file"); }), (std::set<std::string>{"old", "new"}));
    EXPECT_EQ(Outcomes([&] { return Disk.Exists("copy"); }), (std::set{false, true}));
    EXPECT_TRUE(Disk.SyncDirectory());
    EXPECT_EQ(Outcomes([&] { return Bytes("file"); }), (std::set<std::string>{"new"}));
    EXPECT_EQ(Outcomes([&] { return Disk.Exists("copy"); }), (std::set{false}));
}

TEST_F(SimulatedDiskTest, ALinkIsLostUntilTheSyncAndItsFileStays)
{
    EXPECT_TRUE(Disk.Write(Disk.Open("file"), 0, "text"));
    Disk.SyncAll();
    EXPECT_TRUE(Disk.Link("file", "second"));
    EXPECT_TRUE(Disk.Unlink("file"));
    EXPECT_EQ(Bytes("second"), "text");
    EXPECT_EQ(Outcomes([&] { return Disk.Exists("second"); }), (std::set{false, true}));
    EXPECT_TRUE(Disk.SyncDirectory());
    EXPECT_EQ(Outcomes([&] { return Bytes("second"); }), (std::set<std::string>{"text"}));
}

TEST_F(SimulatedDiskTest, ANewDirectoryCanBeLostWithAllThatIsInIt)
{
    EXPECT_TRUE(Disk.AddDirectory("backups"));
    EXPECT_TRUE(Disk.Sync(Disk.Open("backups/copy")));
    EXPECT_TRUE(Disk.SyncDirectory("backups"));
    const auto names = [&] { return std::pair(Disk.Exists("backups"), Disk.Exists("backups/copy")); };
    EXPECT_EQ(Outcomes(names), (std::set{std::pair(false, false), std::pair(true, true)}));
    EXPECT_TRUE(Disk.SyncDirectory());
    EXPECT_EQ(Outcomes(names), (std::set{std::pair(true, true)}));

    EXPECT_TRUE(Disk.Unlink("backups/copy"));
    EXPECT_TRUE(Disk.SyncDirectory());
    Disk.UnlinksPersist = false;
    Disk.Open("backups/next");
    EXPECT_TRUE(Disk.SyncDirectory()); // not of the directory with the name
    EXPECT_EQ(Outcomes([&] { return Disk.Exists("backups/next"); }), (std::set{false, true}));
}

TEST_F(SimulatedDiskTest, ARealDirectoryIsLoadedAndStored)
{
    const ScratchDirectory directory;
    std::filesystem::create_directory(directory.File("backups"));
    std::ofstream(directory.File("backups/copy")) << "text";
    Disk.Load(directory.File(""));
    EXPECT_EQ(Outcomes([&] { return Bytes("backups/copy"); }), (std::set<std::string>{"text"}));
    std::ofstream(directory.File("other")) << "text";
    Disk.Store(directory.File("root"));
    EXPECT_EQ(FileBytes(directory.File("root/backups/copy")), "text");
    EXPECT_FALSE(std::filesystem::exists(directory.File("root/other")));
}

TEST_F(SimulatedDiskTest, OnlyTheCallAtThePowerLossMayReachTheDisk)
{
    const int file = Disk.Open("file");
    EXPECT_TRUE(Disk.Write(file, 0, "-"));
    Disk.SyncAll();
    const SimulatedDisk settled = Disk;

    Disk.CutPowerAt(2);
    EXPECT_TRUE(Disk.Write(file, 0, "1"));
    EXPECT_FALSE(Disk.Sync(file));
    EXPECT_TRUE(Disk.IsOff());
    EXPECT_FALSE(Disk.Write(file, 0, "2"));
    EXPECT_FALSE(Disk.Truncate(file, 0));
    EXPECT_FALSE(Disk.Sync(file));
    EXPECT_FALSE(Disk.SyncDirectory());
    EXPECT_FALSE(Disk.Unlink("file"));
    EXPECT_FALSE(Disk.Rename("file", "other"));
    EXPECT_FALSE(Disk.Link("file", "other"));
    EXPECT_FALSE(Disk.AddDirectory("other"));
    EXPECT_FALSE(Disk.Exists("file"));
    EXPECT_EQ(Disk.Calls(), 2);
    EXPECT_EQ(Outcomes([&] { return Bytes("file"); }), (std::set<std::string>{"-", "1"}));

    Disk = settled;
    Disk.CutPowerAt(1);
    EXPECT_FALSE(Disk.Unlink("file"));
    EXPECT_EQ(Outcomes([&] { return Disk.Exists("file"); }), (std::set{false, true}));
}

} // namespace
