#include "support/file_calls.h"
#include "testing/scratch_directory.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace support;

namespace
{

class FileCallsTest : public testing::Test
{
  protected:
    FileCallsTest() { std::ofstream(File) << "text"; }
    ~FileCallsTest() override
    {
        close(Descriptor);
        closedir(Directory);
    }

    // Makes one call of each kind. True where it succeeds.
    bool Make(FileCall call)
    {
        errno = 0;
        switch (call)
        {
        case FileCall::Link:
            return link(File.c_str(), Scratch.File("linked").c_str()) == 0;
        case FileCall::Rename:
            return rename(File.c_str(), File.c_str()) == 0;
        case FileCall::Sync:
            return fsync(Descriptor) == 0;
        case FileCall::ChangeMode:
            return fchmod(Descriptor, 0600) == 0;
        case FileCall::Lock:
            return flock(Descriptor, LOCK_EX | LOCK_NB) == 0;
        case FileCall::CreateTemporary:
        {
            std::string name = Scratch.File("XXXXXX");
            const int created = mkostemp(name.data(), O_CLOEXEC);
            return created != -1 && close(created) == 0;
        }
        case FileCall::AddDirectory:
            return mkdir(Scratch.File("added").c_str(), 0700) == 0 && rmdir(Scratch.File("added").c_str()) == 0;
        case FileCall::Remove:
            std::ofstream(Scratch.File("removed")) << "text";
            return remove(Scratch.File("removed").c_str()) == 0;
        case FileCall::OpenDirectory:
        {
            DIR* const directory = opendir(std::filesystem::path(File).parent_path().c_str());
            return directory != nullptr && closedir(directory) == 0;
        }
        case FileCall::ReadDirectory:
            rewinddir(Directory);
            // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread has this directory stream
            return readdir(Directory) != nullptr;
        }
        return false;
    }

    ScratchDirectory Scratch;
    std::string File = Scratch.File("file");
    DIR* const Directory = opendir(std::filesystem::path(File).parent_path().c_str());
    int Descriptor = open(File.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
};

const std::set<FileCall> AllFileCalls = {
    FileCall::Link,          FileCall::Rename,          FileCall::Sync, FileCall::ChangeMode,   FileCall::OpenDirectory,
    FileCall::ReadDirectory, FileCall::CreateTemporary, FileCall::Lock, FileCall::AddDirectory, FileCall::Remove};

TEST_F(FileCallsTest, CallsReachTheSystemWhereNoFailureIsInScope)
{
    for (const FileCall call : AllFileCalls)
        EXPECT_TRUE(Make(call)) << static_cast<int>(call) << ' ' << errno;
    EXPECT_EQ(FileBytes(Scratch.File("linked")), "text");
}

TEST_F(FileCallsTest, ACallOfAFailingKindFailsWithTheGivenError)
{
    for (const FileCall call : AllFileCalls)
    {
        const FileCallFailure failure({call}, FileCallFailure::EveryCall, ENOSPC);
        EXPECT_FALSE(failure.Happened());
        EXPECT_FALSE(Make(call)) << static_cast<int>(call);
        EXPECT_EQ(errno, ENOSPC);
        EXPECT_TRUE(failure.Happened());
    }
    EXPECT_FALSE(std::filesystem::exists(Scratch.File("linked")));
}

TEST_F(FileCallsTest, AllButTheFailingKindsReachTheSystem)
{
    for (const FileCall failing : AllFileCalls)
    {
        const FileCallFailure failure({failing}, FileCallFailure::EveryCall);
        for (const FileCall call : AllFileCalls)
            EXPECT_EQ(Make(call), call != failing) << static_cast<int>(call);
        unlink(Scratch.File("linked").c_str());
    }
}

TEST_F(FileCallsTest, OnlyTheCallOfTheGivenNumberFails)
{
    const FileCallFailure failure({FileCall::Sync, FileCall::ChangeMode}, 3);
    EXPECT_TRUE(Make(FileCall::Sync));
    EXPECT_TRUE(Make(FileCall::ChangeMode));
    EXPECT_FALSE(failure.Happened());
    EXPECT_FALSE(Make(FileCall::Sync));
    EXPECT_EQ(errno, EIO);
    EXPECT_TRUE(failure.Happened());
    EXPECT_TRUE(Make(FileCall::Sync));
}

TEST_F(FileCallsTest, AnActionRunsOnceAfterTheFirstCallOfItsKind)
{
    int runs = 0;
    const AfterFileCall after(FileCall::Rename,
                              [&]
                              {
                                  ++runs;
                                  errno = EIO;
                              });
    EXPECT_TRUE(Make(FileCall::Sync));
    EXPECT_FALSE(after.Happened());
    EXPECT_EQ(rename(Scratch.File("missing").c_str(), File.c_str()), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_TRUE(Make(FileCall::Rename));
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(after.Happened());
}

TEST_F(FileCallsTest, AnActionCanRunAfterALaterCall)
{
    int runs = 0;
    const AfterFileCall after(
        FileCall::Sync, [&] { ++runs; }, 2);
    EXPECT_TRUE(Make(FileCall::Sync));
    EXPECT_FALSE(after.Happened());
    EXPECT_TRUE(Make(FileCall::Sync));
    EXPECT_TRUE(Make(FileCall::Sync));
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(after.Happened());
}

TEST_F(FileCallsTest, AFailureEndsWithItsScopeAndHoldsForItsThreadOnly)
{
    {
        const FileCallFailure failure({FileCall::Sync}, FileCallFailure::EveryCall);
        bool elsewhere = false;
        std::thread([&] { elsewhere = Make(FileCall::Sync); }).join();
        EXPECT_TRUE(elsewhere);
        EXPECT_FALSE(failure.Happened());
    }
    EXPECT_TRUE(Make(FileCall::Sync));
}

} // namespace
