// Whatever fails or dies during a rotation, the backups that were there stay, or a new whole one is there.

#include "plant_file.h"

#include "support/allocation_failure.h"
#include "support/child_process.h"
#include "support/disk_failure.h"
#include "support/file_calls.h"
#include "support/rotation_test.h"

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <list>
#include <new>
#include <random>
#include <string>
#include <thread>

using namespace support;

namespace
{

class RotationFailureTest : public RotationTest
{
  protected:
    RotationFailureTest() { EXPECT_EQ(RotateAt(First), ""); }

    // Rotates with each failure in turn. Where that is an error, the first backup stays and no unfinished copy is left.
    template <typename Fail> void ExpectABackupStays(const Fail& fail)
    {
        const Names first = There();
        const std::string bytes = FileBytes(Place + '/' + *first.begin());
        bool happened = true;
        for (int number = 1; happened; ++number)
        {
            ASSERT_LT(number, 20'000);
            std::string error = "out of memory";
            try
            {
                const FixedTime now(LocalTime(Second));
                const auto failure = fail(number);
                happened = true;
                error = Rotate();
                happened = failure.Happened();
            }
            catch (const std::bad_alloc&)
            {
            }
            const Names present = There();
            EXPECT_EQ(GoodBackUps(), static_cast<int>(present.size())) << number << ' ' << error;
            EXPECT_TRUE(present.size() == 1 || !error.empty()) << number;
            if (present == first)
            {
                EXPECT_EQ(FileBytes(Place + '/' + *first.begin()), bytes);
            }
            EXPECT_TRUE(happened || error.empty()) << error;
            std::filesystem::remove_all(Place);
            ASSERT_EQ(RotateAt(First), "");
        }
    }

    static constexpr auto First = "2026-05-01 10:00:00";
    static constexpr auto Second = "2026-05-01 14:03:07"; // replaces the first one
};

TEST_F(RotationFailureTest, AFullDiskRemovesNoBackup)
{
    const FailingDisk disk;
    const Names before = There();
    {
        const DiskFailure failure({DiskCall::Write, DiskError::Full, true, 3});
        EXPECT_EQ(RotateAt(Second), Place + ": copying " + Path + ": database or disk is full");
    }
    EXPECT_EQ(There(), before);
    ExpectABackupStays([](int number) { return DiskFailure({DiskCall::Write, DiskError::Full, true, number}); });
}

TEST_F(RotationFailureTest, AFailingDiskRemovesNoBackup)
{
    const FailingDisk disk;
    for (const DiskCall call :
         {DiskCall::Open, DiskCall::Read, DiskCall::Write, DiskCall::Size, DiskCall::Lock, DiskCall::Access})
        ExpectABackupStays([&](int number) { return DiskFailure({call, DiskError::IO, false, number}); });
}

TEST_F(RotationFailureTest, AFailingSystemCallRemovesNoBackup)
{
    for (const FileCall call :
         {FileCall::Link, FileCall::Rename, FileCall::Sync, FileCall::ChangeMode, FileCall::OpenDirectory,
          FileCall::ReadDirectory, FileCall::CreateTemporary, FileCall::Lock})
        ExpectABackupStays([&](int number) { return FileCallFailure({call}, number); });
}

TEST_F(RotationFailureTest, AFailingAllocationRemovesNoBackup)
{
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        ExpectABackupStays([&](int number) { return AllocationFailure(allocator, number + number * number / 20); });
}

TEST_F(RotationFailureTest, ADirectoryThatCannotBeSyncedRemovesNoBackup)
{
    const Names before = There();
    {
        const FileCallFailure failure({FileCall::Sync}, 2);
        EXPECT_EQ(RotateAt(Second), Place + ": syncing the directory: Input/output error");
    }
    EXPECT_EQ(Rotation.Path, "");
    EXPECT_EQ(There().size(), before.size() + 1);
    EXPECT_EQ(GoodBackUps(), 2);

    const FileCallFailure failure({FileCall::Sync}, 1);
    Place = Scratch.File("stick/backups");
    EXPECT_EQ(RotateAt(Second), Place + ": creating the directory: Input/output error");
    EXPECT_EQ(There(), Names());
}

TEST_F(RotationFailureTest, ABackupThatCannotBeRemovedIsAnError)
{
    ASSERT_EQ(RotateAt("2026-05-02 10:00:00"), "");
    ASSERT_EQ(RotateAt("2026-05-03 10:00:00"), "");
    const FileCallFailure failure({FileCall::Remove}, 1, EACCES);
    EXPECT_EQ(RotateAt("2026-05-04 10:00:00", {1, 0, 0}),
              Place + ": removing 2026-05-03-100000-journal.db: " + AccessDenied);
    EXPECT_EQ(Rotation.Path, Place + "/2026-05-04-100000-journal.db");
    EXPECT_EQ(Rotation.Dropped.size(), 2U); // the others
    EXPECT_EQ(There(), (Names{"2026-05-03-100000-journal.db", "2026-05-04-100000-journal.db"}));
}

TEST_F(RotationFailureTest, OfSeveralFailedRemovalsTheFirstIsReported)
{
    ASSERT_EQ(RotateAt("2026-05-02 10:00:00"), "");
    ASSERT_EQ(RotateAt("2026-05-03 10:00:00"), "");
    const FileCallFailure failure({FileCall::Remove}, FileCallFailure::EveryCall, EACCES);
    EXPECT_EQ(RotateAt("2026-05-04 10:00:00", {1, 0, 0}),
              Place + ": removing 2026-05-03-100000-journal.db: " + AccessDenied);
    EXPECT_TRUE(Rotation.Dropped.empty());
}

TEST_F(RotationFailureTest, ABackupThatAnotherRotationHasRemovedIsNoError)
{
    ASSERT_EQ(RotateAt("2026-05-02 10:00:00"), "");
    const FileCallFailure failure({FileCall::Remove}, 1, ENOENT);
    EXPECT_EQ(RotateAt("2026-05-04 10:00:00", {1, 0, 0}), "");
    EXPECT_EQ(Rotation.Dropped.size(), 1U); // that of 1 May
}

TEST_F(RotationFailureTest, ADirectoryThatCannotBeCreatedIsAnError)
{
    const FileCallFailure failure({FileCall::AddDirectory}, FileCallFailure::EveryCall);
    Place = Scratch.File("stick/backups");
    EXPECT_EQ(RotateAt(Second), Place + ": creating the directory: Input/output error");
    EXPECT_FALSE(std::filesystem::exists(Scratch.File("stick")));
}

TEST_F(RotationFailureTest, ADirectoryIsCreatedOnlyWhereItsNameCanBeSynced)
{
    const std::string above = Scratch.File("stick");
    Place = above + "/backups";
    for (const int number : {1, 2})
    {
        const FileCallFailure failure({FileCall::OpenDirectory}, number, EACCES);
        EXPECT_EQ(RotateAt(Second), Place + ": creating the directory: " + AccessDenied);
        EXPECT_EQ(std::filesystem::exists(above), number == 2);
        EXPECT_FALSE(std::filesystem::exists(Place));
    }
}

TEST_F(RotationFailureTest, ADirectoryThatIsCreatedMeanwhileIsUsed)
{
    Place = Scratch.File("stick/backups");
    bool created = false;
    const AfterFileCall create(FileCall::AddDirectory, [&] { created = std::filesystem::create_directories(Place); });
    EXPECT_EQ(RotateAt(Second), "");
    EXPECT_TRUE(created);
    EXPECT_EQ(There().size(), 1U);
}

TEST_F(RotationFailureTest, ABrokenLinkAsTheDirectoryIsAnError)
{
    const std::string link = Scratch.File("broken");
    std::filesystem::create_symlink(Scratch.File("missing"), link);
    for (const std::string& place : {link, link + "/garden/backups"})
    {
        Place = place;
        EXPECT_EQ(RotateAt(Second), Place + ": creating the directory: " + link +
                                        " is a symbolic link to a directory that does not exist");
    }
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_FALSE(std::filesystem::exists(Scratch.File("missing")));
}

TEST_F(RotationFailureTest, ADirectoryThatCannotBeListedIsAnError)
{
    const Names before = There();
    const FileCallFailure failure({FileCall::OpenDirectory}, 3, EACCES); // after the orphans and the sync
    EXPECT_EQ(RotateAt(Second), Place + ": opening the directory: " + AccessDenied);
    EXPECT_EQ(There().size(), before.size() + 1);
    std::vector<PlantBackUpFile> files;
    const FileCallFailure next({FileCall::OpenDirectory}, 1, EACCES);
    EXPECT_EQ(ListPlantBackUps(Path, Place, files).Error, Place + ": opening the directory: " + AccessDenied);
}

TEST_F(RotationFailureTest, ADirectoryThatCannotBeReadToItsEndIsAnError)
{
    std::vector<PlantBackUpFile> files;
    int names = 0;
    for (bool happened = true; happened; names += happened ? 1 : 0)
    {
        const FileCallFailure failure({FileCall::ReadDirectory}, names + 1);
        const std::string error = ListPlantBackUps(Path, Place, files).Error;
        happened = failure.Happened();
        EXPECT_EQ(error, happened ? Place + ": reading the directory: Input/output error" : "");
        EXPECT_EQ(files.empty(), happened);
    }
    EXPECT_GT(names, 1);
    ASSERT_EQ(RotateAt("2026-05-02 10:00:00"), "");
    const Names before = There();
    {
        const FileCallFailure failure({FileCall::ReadDirectory}, FileCallFailure::EveryCall);
        EXPECT_EQ(RotateAt("2026-05-03 10:00:00", {1, 0, 0}), Place + ": reading the directory: Input/output error");
    }
    EXPECT_EQ(There().size(), before.size() + 1);
    EXPECT_EQ(Rotation.Path, Place + "/2026-05-03-100000-journal.db");
    EXPECT_TRUE(Rotation.Dropped.empty());
}

TEST_F(RotationFailureTest, ABackupWhoseNameIsTakenMeanwhileHasTheNext)
{
    const AfterFileCall take( // the directory is opened once for the orphans, and again after a free name was found
        FileCall::OpenDirectory, [&] { Put("2026-05-01-140307-journal.db"); }, 2);
    EXPECT_EQ(RotateAt(Second, {9, 9, 9}), "");
    EXPECT_TRUE(take.Happened());
    EXPECT_EQ(Rotation.Path, Place + "/2026-05-01-140307_02-journal.db");
}

TEST_F(RotationFailureTest, AKilledRotationLeavesGoodBackupsOnly)
{
    Grow();
    std::mt19937_64 random(1);
    for (int round = 0; round < 25; ++round)
    {
        ChildProcess child(
            [&](const ParentProcess& parent)
            {
                parent.Send("rotating");
                for (;;)
                    static_cast<void>(Rotate());
            });
        ASSERT_EQ(child.ReadLine(), "rotating");
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 60'000));
        child.Kill();
        EXPECT_EQ(child.End(), "signal 9");
        std::vector<PlantBackUpFile> files;
        EXPECT_EQ(ListPlantBackUps(Path, Place, files).Error, "");
        EXPECT_GE(files.size(), 1U);
        EXPECT_EQ(GoodBackUps(), static_cast<int>(files.size()));
    }
    EXPECT_EQ(Rotate(), "");
    EXPECT_EQ(static_cast<int>(There().size()), GoodBackUps()); // no unfinished copy is left
}

TEST_F(RotationFailureTest, RotationsAtTheSameTimeDoNoHarm)
{
    std::list<ChildProcess> children;
    for (int i = 0; i < 3; ++i)
        children.emplace_back(
            [this](const ParentProcess& parent)
            {
                for (int round = 0; round < 15; ++round)
                    if (const std::string error = Rotate(); !error.empty())
                        parent.Send(error);
            });
    for (ChildProcess& child : children)
    {
        EXPECT_EQ(child.ReadLines(), std::vector<std::string>());
        EXPECT_EQ(child.End(), "done");
    }
    EXPECT_GE(GoodBackUps(), 1);
    EXPECT_EQ(static_cast<int>(There().size()), GoodBackUps());
}

} // namespace
