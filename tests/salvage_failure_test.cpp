// Salvages while the disk, the system or the memory fails.

#include "plant_file.h"

#include "support/allocation_failure.h"
#include "support/child_process.h"
#include "support/disk_failure.h"
#include "support/file_calls.h"
#include "support/salvage_test.h"
#include "support/sqlite_calls.h"
#include "support/test_form.h"

#include <chrono>
#include <filesystem>
#include <list>
#include <new>
#include <random>
#include <thread>

using namespace support;

namespace
{

class SalvageFailureTest : public SalvageTest
{
  protected:
    // Salvages with each failure in turn. Either the new journal is there, whole, or the files are as before.
    template <typename Fail> void ExpectAllOrNothing(const Fail& fail) const
    {
        for (int number = 1;; ++number)
        {
            std::filesystem::remove(Destination);
            const auto before = Scratch.Files();
            PlantSalvageReport report;
            PlantFileResult result;
            bool happened = false;
            try
            {
                const auto failure = fail(number);
                result = SalvagePlantDatabase(Path, Destination, report);
                happened = failure.Happened();
            }
            catch (const std::bad_alloc&)
            {
                result = {"out of memory"};
                happened = true;
            }
            if (!result)
            {
                ASSERT_TRUE(Scratch.Files() == before) << number << ' ' << result.Error;
            }
            else if (report.FailedReads == 0)
            {
                ASSERT_EQ(ContentOf(Destination), ContentOf(Path)) << number;
            }
            if (!happened)
            {
                EXPECT_TRUE(result) << result.Error;
                break;
            }
            ASSERT_LT(number, 20'000);
        }
    }
};

TEST_F(SalvageFailureTest, AFailingDiskLeavesNoPartialJournal)
{
    const FailingDisk disk;
    for (const DiskCall call : {DiskCall::Open, DiskCall::Read, DiskCall::Write, DiskCall::Truncate, DiskCall::Size,
                                DiskCall::Lock, DiskCall::Delete, DiskCall::Access})
        ExpectAllOrNothing([&](int number) { return DiskFailure({call, DiskError::IO, false, number}); });
}

TEST_F(SalvageFailureTest, AFullDiskIsAnErrorAndLeavesNoFile)
{
    const FailingDisk disk;
    ExpectAllOrNothing([](int number) { return DiskFailure({DiskCall::Write, DiskError::Full, true, number}); });
}

TEST_F(SalvageFailureTest, APageThatTheDiskCannotReadIsLostAlone)
{
    Grow();
    const FailingDisk disk;
    int lost = 0;
    for (int number = 5; number < 150; number += 20)
    {
        std::filesystem::remove(Destination);
        PlantSalvageReport report;
        const DiskFailure failure({DiskCall::Read, DiskError::IO, false, number});
        const PlantFileResult result = SalvagePlantDatabase(Path, Destination, report);
        if (!result)
            continue;
        EXPECT_EQ(report.FailedReads, 1);
        EXPECT_GT(TableOf(report, "PlantJournalEntries").RowsRead, 150);
        ++lost;
    }
    EXPECT_GT(lost, 3);
}

TEST_F(SalvageFailureTest, AFailingSystemCallIsAnErrorAndLeavesNoFile)
{
    for (const FileCall call : {FileCall::ChangeMode, FileCall::CreateTemporary, FileCall::OpenDirectory})
    {
        const auto before = Scratch.Files();
        {
            const FileCallFailure failure({call}, FileCallFailure::EveryCall);
            PlantSalvageReport report;
            EXPECT_FALSE(SalvagePlantDatabase(Path, Destination, report));
        }
        EXPECT_TRUE(Scratch.Files() == before);
    }
    const auto before = Scratch.Files();
    const FileCallFailure failure({FileCall::Link, FileCall::Rename}, FileCallFailure::EveryCall);
    PlantSalvageReport report;
    EXPECT_EQ(SalvagePlantDatabase(Path, Destination, report).Error,
              Destination + ": renaming the copy: Input/output error");
    EXPECT_TRUE(Scratch.Files() == before);
}

TEST_F(SalvageFailureTest, AFailingSyncIsAnError)
{
    {
        const auto before = Scratch.Files();
        const FileCallFailure failure({FileCall::Sync}, 1);
        PlantSalvageReport report;
        EXPECT_EQ(SalvagePlantDatabase(Path, Destination, report).Error,
                  Destination + ": syncing the copy: Input/output error");
        EXPECT_TRUE(Scratch.Files() == before);
    }
    const FileCallFailure failure({FileCall::Sync}, 2);
    PlantSalvageReport report;
    EXPECT_EQ(SalvagePlantDatabase(Path, Destination, report).Error,
              Destination + ": syncing the directory: Input/output error");
    EXPECT_EQ(ContentOf(Destination), ContentOf(Path));
}

TEST_F(SalvageFailureTest, AFailingCallOfSQLiteLeavesNoFile)
{
    // A damaged page, and a row that the table refuses: these need further statements.
    for (const UsedPage& page : UsedPages(Path))
        if (page.Name == "PlantEvents" && page.Kind == "leaf")
            Zero(Path, page.Offset, page.Size);
    PlainConnection(Path).RunSQL("PRAGMA ignore_check_constraints=ON; UPDATE PlantHealthObservations SET Severity=6;");
    const std::string expected = Printed(Salvage());
    std::filesystem::remove(Destination);
    const auto before = Scratch.Files();
    for (const SQLiteCall call : {SQLiteCall::Exec, SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step})
        for (const char* sql : {"INSERT INTO", "SELECT 1 AND", ""})
        {
            int number = 0;
            for (bool happened = true; happened;)
            {
                const CallFailure failure(call, ++number, SQLITE_NOMEM, sql);
                PlantSalvageReport report;
                const PlantFileResult result = SalvagePlantDatabase(Path, Destination, report);
                happened = failure.Happened();
                ASSERT_TRUE(result || happened) << result.Error;
                ASSERT_FALSE(result && happened && *sql != '\0') << number << ' ' << sql;
                ASSERT_TRUE(result || Scratch.Files() == before) << number << ' ' << sql;
                if (result) // the end of a transaction that only read may fail
                {
                    ASSERT_EQ(Printed(report), expected) << number << ' ' << sql;
                }
                std::filesystem::remove(Destination);
            }
            EXPECT_TRUE(number > 1 || call == SQLiteCall::Exec) << sql;
        }
}

TEST_F(SalvageFailureTest, ADestinationThatIsCreatedMeanwhileIsKept)
{
    const AfterFileCall create( // the directory is opened for old files, and again after all names were found free
        FileCall::OpenDirectory, [&] { WriteBytes(Destination, "another file"); }, 2);
    PlantSalvageReport report;
    EXPECT_EQ(SalvagePlantDatabase(Path, Destination, report).Error, Destination + ": already exists");
    EXPECT_TRUE(create.Happened());
    EXPECT_EQ(FileBytes(Destination), "another file");
    EXPECT_EQ(Scratch.Files().size(), 2);
}

TEST_F(SalvageFailureTest, AFailingAllocationLeavesNoFile)
{
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        ExpectAllOrNothing([&](int number) { return AllocationFailure(allocator, number + number * number / 20); });
}

TEST_F(SalvageFailureTest, AKilledSalvageLeavesNoPartialJournal)
{
    Grow(2000);
    const std::string expected = RowsOf(Path);
    const std::string before = FileBytes(Path);
    std::mt19937_64 random(Seed());
    int written = 0;
    for (int round = 0; round < ShortOrLong(40, 400); ++round)
    {
        std::filesystem::remove(Destination);
        ChildProcess child(
            [&](const ParentProcess& parent)
            {
                parent.Send("ready");
                PlantSalvageReport report;
                static_cast<void>(SalvagePlantDatabase(Path, Destination, report));
            });
        child.ReadLine();
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 60'000));
        child.Kill();
        child.End();
        if (std::filesystem::exists(Destination))
        {
            ASSERT_TRUE(RowsOf(Destination) == expected);
            ++written;
        }
        ASSERT_TRUE(FileBytes(Path) == before);
    }
    EXPECT_LT(written, ShortOrLong(40, 400));
    Salvage();
    EXPECT_EQ(Scratch.Files().size(), 2); // the next salvage removes what a killed one left
}

TEST_F(SalvageFailureTest, SalvagesAtTheSameTimeDoNoHarm)
{
    Grow();
    for (int round = 0; round < 5; ++round)
    {
        std::filesystem::remove(Destination);
        std::list<ChildProcess> children;
        for (int i = 0; i < 3; ++i)
            children.emplace_back(
                [&](const ParentProcess& parent)
                {
                    PlantSalvageReport report;
                    parent.Send(SalvagePlantDatabase(Path, Destination, report) ? "written" : "refused");
                });
        int written = 0;
        for (ChildProcess& child : children)
            for (const std::string& line : child.ReadLines())
                written += line == "written" ? 1 : 0;
        EXPECT_EQ(written, 1);
        EXPECT_TRUE(RowsOf(Destination) == RowsOf(Path));
        EXPECT_EQ(Scratch.Files().size(), 2);
    }
}

} // namespace
