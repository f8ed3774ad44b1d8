#include "plant_file.h"

#include "support/allocation_failure.h"
#include "support/backup_test.h"
#include "support/disk_failure.h"
#include "support/file_calls.h"
#include "support/on_windows.h"

#include <filesystem>
#include <fstream>
#include <new>

#include <sqlite3.h>

using namespace support;

namespace
{

using BackUpFailureTest = BackUpTest;

// Backs up with each failure in turn, in both modes. Either the copy is complete, or the files are as before and the
// result is an error.
template <typename Fail>
void ExpectAllOrNothing(const ScratchDirectory& scratch, const std::string& path, const std::string& destination,
                        const Fail& fail)
{
    for (const PlantBackUpMode mode : {PlantBackUpMode::Keep, PlantBackUpMode::Overwrite})
        for (int number = 1;; ++number)
        {
            std::filesystem::remove(destination);
            if (mode == PlantBackUpMode::Overwrite)
                std::ofstream(destination) << "an older copy";
            const auto before = scratch.Files();
            PlantFileResult result;
            bool happened = false;
            try
            {
                const auto failure = fail(number);
                result = BackUpPlantDatabase(path, destination, {}, mode);
                happened = failure.Happened();
            }
            catch (const std::bad_alloc&)
            {
                result = {"out of memory"};
                happened = true;
            }
            if (result)
            {
                EXPECT_EQ(NamesOf(scratch.Files()), (Names{"copy.db", "journal.db"}));
                const PlainConnection copy(destination);
                EXPECT_EQ(support::Content(copy.NativeHandle()), support::Content(PlainConnection(path).NativeHandle()))
                    << number;
            }
            else
                EXPECT_TRUE(scratch.Files() == before) << number << ' ' << result.Error;
            if (!happened)
            {
                EXPECT_TRUE(result) << result.Error;
                break;
            }
            ASSERT_LT(number, 20'000);
        }
}

TEST_F(BackUpFailureTest, ADestinationThatIsCreatedAtTheEndIsKept)
{
    const AfterFileCall create( // the directory is opened for old files, and again after the name was found free
        FileCall::OpenDirectory, [&] { std::ofstream(Destination) << "another program's"; }, 2);
    EXPECT_EQ(BackUp(), Destination + ": already exists");
    EXPECT_TRUE(create.Happened());
    EXPECT_EQ(FileBytes(Destination), "another program's");
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
}

TEST_F(BackUpFailureTest, AFullDiskIsAnErrorAndLeavesNoFile)
{
    const FailingDisk disk;
    const auto before = Scratch.Files();
    for (const bool lasting : {false, true})
    {
        const DiskFailure failure({DiskCall::Write, DiskError::Full, lasting, 3});
        EXPECT_EQ(BackUp(), Destination + ": copying " + Path + ": database or disk is full");
        EXPECT_TRUE(failure.Happened());
        EXPECT_TRUE(Scratch.Files() == before);
    }
    ExpectAllOrNothing(Scratch, Path, Destination,
                       [](int number) {
                           return DiskFailure({DiskCall::Write, DiskError::Full, true, number});
                       });
}

TEST_F(BackUpFailureTest, AFailingDiskLeavesNoPartialCopy)
{
    const FailingDisk disk;
    for (const DiskCall call : {DiskCall::Open, DiskCall::Read, DiskCall::Write, DiskCall::Truncate, DiskCall::Size,
                                DiskCall::Lock, DiskCall::Delete, DiskCall::Access})
        ExpectAllOrNothing(Scratch, Path, Destination,
                           [&](int number) {
                               return DiskFailure({call, DiskError::IO, false, number});
                           });
}

TEST_F(BackUpFailureTest, AFailingSystemCallIsAnErrorAndLeavesNoFile)
{
    for (const FileCall call : {FileCall::ChangeMode, FileCall::Sync})
    {
        const auto before = Scratch.Files();
        const FileCallFailure failure({call}, 1);
        EXPECT_EQ(BackUp(), Destination + ": syncing the copy: Input/output error");
        EXPECT_TRUE(Scratch.Files() == before);
    }
    std::ofstream(Destination) << "an older copy";
    const auto before = Scratch.Files();
    const FileCallFailure failure({FileCall::Rename}, 1);
    EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), Destination + ": renaming the copy: Input/output error");
    EXPECT_TRUE(Scratch.Files() == before);
}

TEST_F(BackUpFailureTest, ACopyThatCannotBeRenamedIsRemoved)
{
    const auto before = Scratch.Files();
    const FileCallFailure failure({FileCall::Link, FileCall::Rename}, FileCallFailure::EveryCall);
    EXPECT_EQ(BackUp(), Destination + ": renaming the copy: Input/output error");
    EXPECT_TRUE(Scratch.Files() == before);
}

TEST_F(BackUpFailureTest, AFailingSyncOfTheDirectoryLeavesTheCopyInPlace)
{
    {
        const FileCallFailure failure({FileCall::Sync}, 2);
        EXPECT_EQ(BackUp(), Destination + ": syncing the directory: Input/output error");
    }
    ExpectWhole();
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
}

TEST_F(BackUpFailureTest, ADirectoryThatCannotBeOpenedIsAnErrorAndLeavesNoFile)
{
    const auto before = Scratch.Files();
    for (const PlantBackUpMode mode : {PlantBackUpMode::Keep, PlantBackUpMode::Overwrite})
    {
        const FileCallFailure failure({FileCall::OpenDirectory}, FileCallFailure::EveryCall, EACCES);
        EXPECT_EQ(BackUp({}, mode), Destination + ": opening the directory: " + AccessDenied);
    }
    EXPECT_TRUE(Scratch.Files() == before);
}

TEST_F(BackUpFailureTest, ACopyThatCannotStartLeavesNoFile)
{
    const auto before = Scratch.Files();
    const CallFailure failure(SQLiteCall::BackUp, 1, SQLITE_ERROR);
    EXPECT_TRUE(BackUp().starts_with(Destination + ": copying " + Path + ": "));
    EXPECT_TRUE(Scratch.Files() == before);
}

TEST_F(BackUpFailureTest, AFailingAllocationLeavesNoFile)
{
    const auto ofNew = [](int number) { return AllocationFailure(Allocator::New, number); };
    const auto ofSQLite = [](int number)
    { return AllocationFailure(Allocator::SQLite, number + number * number / 20); };
    ExpectAllOrNothing(Scratch, Path, Destination, ofNew);
    ExpectAllOrNothing(Scratch, Path, Destination, ofSQLite);
}

} // namespace
