// A backup removes the files of unfinished copies that killed processes left. It leaves those of living processes.

#include "plant_file.h"

#include "support/backup_test.h"
#include "support/child_process.h"
#include "support/file_calls.h"

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace support;

namespace
{

class BackUpOrphanTest : public BackUpTest
{
  protected:
    BackUpOrphanTest() { Grow(); }

    // Backs up in a process that reports its first step and then waits.
    std::function<void(const ParentProcess&)> PausedBackUp() const
    {
        return [this](const ParentProcess& parent)
        {
            bool paused = false;
            const auto pauseOnce = [&](std::int64_t, std::int64_t)
            {
                if (!std::exchange(paused, true))
                {
                    parent.Send("copying");
                    parent.Wait();
                }
                return true;
            };
            parent.Send(BackUp(pauseOnce, PlantBackUpMode::Overwrite));
        };
    }

    // The names that an unfinished copy of the destination can have.
    Names PartNames() const
    {
        Names names;
        for (const std::string& name : NamesOf(Scratch.Files()))
            if (name.starts_with("copy.db.part-"))
                names.insert(name);
        return names;
    }

    void Write(const std::string& name, const std::string& text = {}) const
    {
        std::ofstream(Scratch.File(name)) << text;
    }
};

TEST_F(BackUpOrphanTest, TheNextBackupRemovesTheFilesOfAKilledProcess)
{
    for (int i = 0; i < 3; ++i)
    {
        ChildProcess child(PausedBackUp());
        ASSERT_EQ(child.ReadLine(), "copying");
        child.Kill();
        EXPECT_EQ(child.End(), "signal 9");
        EXPECT_EQ(PartNames().size(), 2U); // each backup removes the files of the previous one
    }
    EXPECT_FALSE(std::filesystem::exists(Destination));
    EXPECT_EQ(BackUp(), "");
    ExpectWhole();
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
}

TEST_F(BackUpOrphanTest, TheFilesOfALivingProcessStay)
{
    ChildProcess killed(PausedBackUp());
    ASSERT_EQ(killed.ReadLine(), "copying");
    ChildProcess living(PausedBackUp());
    ASSERT_EQ(living.ReadLine(), "copying");
    const Names both = PartNames();
    EXPECT_EQ(both.size(), 4U);
    killed.Kill();
    EXPECT_EQ(killed.End(), "signal 9");

    EXPECT_EQ(BackUp(), "");
    EXPECT_EQ(PartNames().size(), 2U);
    living.Continue();
    EXPECT_EQ(living.ReadLine(), ""); // no error
    EXPECT_EQ(living.End(), "done");
    ExpectWhole();
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
}

TEST_F(BackUpOrphanTest, TheFilesOfAnotherThreadStay)
{
    std::string inner;
    Names during;
    const auto backUpMeanwhile = [&](std::int64_t done, std::int64_t total)
    {
        if (done == total)
        {
            inner = BackUp({}, PlantBackUpMode::Overwrite); // its locks are its own, as in another thread
            during = PartNames();
        }
        return true;
    };
    EXPECT_EQ(BackUp(backUpMeanwhile, PlantBackUpMode::Overwrite), "");
    EXPECT_EQ(inner, "");
    EXPECT_EQ(during.size(), 2U);
    EXPECT_EQ(PartNames(), Names());
    ExpectWhole();
}

TEST_F(BackUpOrphanTest, TheFilesForAnotherDestinationStay)
{
    Write("other.db.part-abcdef");
    Write("other.db.part-abcdef-copy", "text");
    Write("tidy.db.part-abcdef"); // as long as the name for this destination
    EXPECT_EQ(BackUp(), "");
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db", "other.db.part-abcdef",
                                               "other.db.part-abcdef-copy", "tidy.db.part-abcdef"}));
}

TEST_F(BackUpOrphanTest, FilesThatNoBackupMadeStay)
{
    for (const char* name :
         {"copy.db.part-1", "copy.db.part-abcdefg", "copy.db.part-abc.ef", "copy.db.part-abcde-",
          "copy.db.part-vwxyz-copy", "copy.db.part-uvwxyz-cop", "copy.db.partabcdef", "copy.db-abcdef"})
        Write(name);
    Write("copy.db.part-backup", "a file with contents");
    Write("target");
    std::filesystem::create_symlink("target", Scratch.File("copy.db.part-linked"));
    std::filesystem::create_symlink("target", Scratch.File("copy.db.part-linked-copy"));
    std::filesystem::create_symlink("nowhere", Scratch.File("copy.db.part-broken"));
    std::filesystem::create_directory(Scratch.File("copy.db.part-direct"));
    ASSERT_EQ(mkfifo(Scratch.File("copy.db.part-pipe00").c_str(), 0600), 0);
    const auto count = [&]
    {
        const std::filesystem::directory_iterator directory(std::filesystem::path(Path).parent_path());
        return std::distance(begin(directory), end(directory));
    };
    const auto before = count();
    EXPECT_EQ(BackUp(), "");
    EXPECT_EQ(count(), before + 1); // the copy
}

TEST_F(BackUpOrphanTest, AnEmptyFileOfAPartsNameIsRemovedWithItsCopy)
{
    Write("copy.db.part-Abc123");
    Write("copy.db.part-Abc123-copy", "half a copy");
    EXPECT_EQ(BackUp(), "");
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
}

// After a power loss, the name of the lock file can be lost.
TEST_F(BackUpOrphanTest, ACopyWithoutALockFileIsRemoved)
{
    Write("copy.db.part-Abc123-copy", "half a copy");
    EXPECT_EQ(BackUp(), "");
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));

    Write("copy.db.part-Abc123-copy", "half a copy");
    const FileCallFailure failure({FileCall::Lock}, FileCallFailure::EveryCall, ENOTSUP);
    EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "");
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
}

TEST_F(BackUpOrphanTest, ACopyWhoseNamesAnotherTakesMeanwhileStays)
{
    for (const char* lock : {"copy.db.part-Abc123", "copy.db.part-Abc124"})
    {
        const std::string copy = std::string(lock) + "-copy";
        Write(copy, "half a copy");
        // The new lock file is locked by another backup, or removed by one.
        const AfterFileCall take(FileCall::Lock,
                                 [&]
                                 {
                                     std::filesystem::remove(Scratch.File(lock));
                                     if (copy.ends_with("4-copy"))
                                         Write(lock);
                                 });
        EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "");
        EXPECT_TRUE(take.Happened());
        EXPECT_EQ(FileBytes(Scratch.File(copy)), "half a copy");
        std::filesystem::remove(Scratch.File(copy));
        std::filesystem::remove(Scratch.File(lock));
    }
}

// ---- Two backups at the same instant

TEST_F(BackUpOrphanTest, ALockFileThatAnotherRemovesIsCreatedAgain)
{
    std::string inner = "not run";
    const AfterFileCall removed(FileCall::CreateTemporary, [&] { inner = BackUp(); });
    const auto look = [&](std::int64_t, std::int64_t)
    {
        EXPECT_EQ(PartNames().size(), 2U); // the copy has a lock file all the same
        return true;
    };
    EXPECT_EQ(BackUp(look, PlantBackUpMode::Overwrite), "");
    EXPECT_EQ(inner, "");
    ExpectWhole();
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
}

TEST_F(BackUpOrphanTest, AFileThatAnotherLocksFirstIsLeftToIt)
{
    int other = -1;
    std::string name;
    const AfterFileCall locked(FileCall::CreateTemporary,
                               [&]
                               {
                                   name = Scratch.File(*PartNames().begin());
                                   other = open(name.c_str(), O_RDONLY | O_CLOEXEC);
                                   EXPECT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
                               });
    EXPECT_EQ(BackUp(), "");
    EXPECT_TRUE(std::filesystem::exists(name)); // the other removes it
    EXPECT_EQ(close(other), 0);
    EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "");
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
}

TEST_F(BackUpOrphanTest, ABackupThatFinishesMeanwhileLosesNoFileOfItsName)
{
    const std::string name = "copy.db.part-Abc123";
    Write(name);
    const AfterFileCall finished( // the owner finishes right before the lock, and another file gets the name
        FileCall::Lock,
        [&]
        {
            std::filesystem::remove(Scratch.File(name));
            Write(name);
            Write(name + "-copy", "another copy");
        });
    EXPECT_EQ(BackUp(), "");
    EXPECT_TRUE(finished.Happened());
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", name, name + "-copy", "journal.db"}));
}

// ---- Failures

TEST_F(BackUpOrphanTest, AFileSystemWithoutLocksTakesTheCopyAndKeepsOrphans)
{
    Write("copy.db.part-Abc123");
    const FileCallFailure failure({FileCall::Lock}, FileCallFailure::EveryCall, ENOTSUP);
    EXPECT_EQ(BackUp(), "");
    EXPECT_TRUE(failure.Happened());
    ExpectWhole();
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "copy.db.part-Abc123", "journal.db"}));
}

TEST_F(BackUpOrphanTest, ATemporaryFileThatCannotBeCreatedIsAnError)
{
    const auto before = Scratch.Files();
    {
        const FileCallFailure failure({FileCall::CreateTemporary}, 1, ENOSPC);
        EXPECT_EQ(BackUp(), Destination + ": creating a temporary file: No space left on device");
    }
    Destination = Scratch.File(std::string(240, 'x')); // with the longest suffix, the name has more than 255 bytes
    EXPECT_EQ(BackUp(), Destination + ": creating a temporary file: File name too long");
    EXPECT_TRUE(Scratch.Files() == before);
}

} // namespace
