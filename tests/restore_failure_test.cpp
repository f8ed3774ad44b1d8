// Whatever fails or dies during a restoration, either the former journal or the restored one is there, and the backup.

#include "plant_file.h"

#include "support/allocation_failure.h"
#include "support/child_process.h"
#include "support/disk_failure.h"
#include "support/file_calls.h"
#include "support/on_windows.h"
#include "support/restore_test.h"

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <list>
#include <new>
#include <random>
#include <thread>

using namespace support;

namespace
{

enum class Former
{
    Readable,
    Damaged,
    Missing
};

class RestoreFailureTest : public RestoreTest
{
  protected:
    RestoreFailureTest()
    {
        Shrink();
        DestinationBytes = FileBytes(Destination);
    }

    // Makes the journal what it is before each restoration.
    void Prepare(Former former) const
    {
        for (const std::string& name : NamesOf(Scratch.Files()))
            if (name != "copy.db")
                std::filesystem::remove(Scratch.File(name));
        if (former == Former::Missing)
            return;
        std::ofstream(Path, std::ios::binary) << LaterBytes;
        if (former == Former::Damaged)
            Overwrite(4096, 8192);
    }

    void ExpectFormerOrRestored(Former former, const std::string& error) const
    {
        const bool wasSynced = error.find("syncing the directory") == std::string::npos;
        if (former == Former::Readable)
        {
            const std::string content = ContentOf(Path); // rolls an interrupted write back
            EXPECT_TRUE(content == (error.empty() ? BackedUp : Later)) << error;
        }
        else if (former == Former::Missing && error.empty())
        {
            EXPECT_EQ(ContentOf(Path), BackedUp);
        }
        else if (former == Former::Missing)
        {
            EXPECT_TRUE(!std::filesystem::exists(Path) || (!wasSynced && ContentOf(Path) == BackedUp)) << error;
        }
        else if (std::string damaged = LaterBytes; FileBytes(Path) != damaged.replace(4096, 8192, 8192, '\0'))
        {
            EXPECT_TRUE(error.empty() || !wasSynced) << error;
            EXPECT_EQ(ContentOf(Path), BackedUp);
            EXPECT_EQ(FileBytes(Kept) == damaged, true);
        }
        else
        {
            EXPECT_FALSE(error.empty());
        }
        EXPECT_EQ(FileBytes(Destination) == DestinationBytes, true);
        Names names = NamesOf(Scratch.Files());
        for (const char* name : {"copy.db", "journal.db", "journal.db.before-restore-2026-05-01"})
            names.erase(name);
        EXPECT_EQ(names, Names()) << error;
    }

    // Restores with each failure in turn.
    template <typename Fail> void ExpectAllOrNothing(const Fail& fail)
    {
        for (const Former former : {Former::Readable, Former::Damaged, Former::Missing})
        {
            bool happened = true;
            for (int number = 1; happened && !HasFailure(); ++number)
            {
                ASSERT_LT(number, 20'000);
                Prepare(former);
                std::string error = "out of memory";
                try
                {
                    const auto failure = fail(number);
                    error = Restore();
                    happened = failure.Happened();
                }
                catch (const std::bad_alloc&)
                {
                }
                EXPECT_TRUE(happened || error.empty()) << error;
                ExpectFormerOrRestored(former, error);
            }
        }
    }

    // Whether another process has the journal locked, or on Windows open.
    static bool IsInUse(const std::string& error)
    {
        return error.ends_with("database is locked") ||
               (OnWindows && error.find("another program may have the file open") != std::string::npos);
    }

    // Kills a process that runs `work` again and again, after a random time.
    void KillDuring(const std::function<void()>& work)
    {
        ChildProcess child(
            [&](const ParentProcess& parent)
            {
                parent.Send("restoring");
                for (;;)
                    work();
            });
        ASSERT_EQ(child.ReadLine(), "restoring");
        std::this_thread::sleep_for(std::chrono::microseconds(Random() % 40'000));
        child.Kill();
        EXPECT_EQ(child.End(), "signal 9");
    }

    std::string DestinationBytes;
    std::mt19937_64 Random{1};
};

TEST_F(RestoreFailureTest, AFullDiskChangesNothing)
{
    const FailingDisk disk;
    ExpectAllOrNothing([](int number) { return DiskFailure({DiskCall::Write, DiskError::Full, true, number}); });
}

TEST_F(RestoreFailureTest, AFailingDiskChangesAllOrNothing)
{
    const FailingDisk disk;
    for (const DiskCall call : {DiskCall::Open, DiskCall::Read, DiskCall::Write, DiskCall::Truncate, DiskCall::Sync,
                                DiskCall::Size, DiskCall::Lock, DiskCall::Access})
        ExpectAllOrNothing([&](int number) { return DiskFailure({call, DiskError::IO, false, number}); });
}

TEST_F(RestoreFailureTest, AFailingSystemCallChangesAllOrNothing)
{
    for (const FileCall call : {FileCall::Link, FileCall::Rename, FileCall::Sync, FileCall::ChangeMode,
                                FileCall::OpenDirectory, FileCall::CreateTemporary, FileCall::Lock})
        ExpectAllOrNothing([&](int number) { return FileCallFailure({call}, number); });
}

TEST_F(RestoreFailureTest, AFailingAllocationChangesAllOrNothing)
{
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        ExpectAllOrNothing([&](int number) { return AllocationFailure(allocator, number + number * number / 20); });
}

TEST_F(RestoreFailureTest, AllIsSyncedBeforeTheDamagedJournalIsReplaced)
{
    // The restored file, the kept copy, its name; then the journal's name.
    for (int number = 1; number <= 4; ++number)
    {
        Prepare(Former::Damaged);
        const std::string damaged = FileBytes(Path);
        const FileCallFailure failure({FileCall::Sync}, number);
        EXPECT_TRUE(Restore().ends_with(": Input/output error"));
        EXPECT_EQ(FileBytes(Path) == damaged, number < 4) << number;
    }
    EXPECT_EQ(ContentOf(Path), BackedUp);
}

TEST_F(RestoreFailureTest, ANameThatIsTakenMeanwhileIsNotReplaced)
{
    const AfterFileCall take( // the directory is opened once for the orphans, and again after a free name was found
        FileCall::OpenDirectory, [&] { std::ofstream(Kept) << "another"; }, 2);
    EXPECT_EQ(Restore(), "");
    EXPECT_TRUE(take.Happened());
    EXPECT_EQ(FileBytes(Kept), "another");
    EXPECT_EQ(Restoration.KeptPath, Kept + "-2");
}

TEST_F(RestoreFailureTest, AKilledRestorationLeavesAWholeJournal)
{
    for (int round = 0; round < 40 && !HasFailure(); ++round)
    {
        const bool damaged = round % 2 == 1;
        Prepare(damaged ? Former::Damaged : Former::Readable);
        const std::string before = FileBytes(Path);
        PlantRestoration restoration;
        KillDuring([&] { static_cast<void>(RestorePlantDatabase(Destination, Path, restoration)); });
        if (!damaged || FileBytes(Path) != before)
        {
            const std::string content = ContentOf(Path);
            EXPECT_TRUE(content == Later || content == BackedUp);
            EXPECT_EQ(support::Damage(PlainConnection(Path).NativeHandle()), "ok");
        }
        EXPECT_EQ(FileBytes(Destination) == DestinationBytes, true);
    }
    EXPECT_EQ(Restore(), "");
    for (const std::string& name : NamesOf(Scratch.Files()))
        EXPECT_EQ(name.find(".part-"), std::string::npos) << name; // a restoration removes what a killed one left
}

TEST_F(RestoreFailureTest, RestorationsAtTheSameTimeDoNoHarm)
{
    for (const Former former : {Former::Readable, Former::Damaged, Former::Missing})
    {
        Prepare(former);
        const std::string damaged = former == Former::Damaged ? FileBytes(Path) : "";
        std::list<ChildProcess> children;
        for (int i = 0; i < 3; ++i)
            children.emplace_back(
                [&](const ParentProcess& parent)
                {
                    PlantRestoration restoration;
                    for (int round = 0; round < 5; ++round)
                        parent.Send(RestorePlantDatabase(Destination, Path, restoration).Error);
                });
        int restored = 0;
        for (ChildProcess& child : children)
        {
            for (const std::string& error : child.ReadLines())
            {
                restored += error.empty() ? 1 : 0;
                EXPECT_TRUE(error.empty() || error.find("meanwhile; try again") != std::string::npos || IsInUse(error))
                    << error;
            }
            EXPECT_EQ(child.End(), "done");
        }
        EXPECT_GE(restored, 1);
        EXPECT_EQ(ContentOf(Path), BackedUp);
        int formerCopies = 0;
        for (const auto& [name, bytes] : Scratch.Files())
            if (name.find(".before-restore-") != std::string::npos)
            {
                const bool isFormer = bytes == (former == Former::Damaged ? damaged : LaterBytes);
                formerCopies += isFormer ? 1 : 0;
                EXPECT_TRUE(isFormer || ContentOf(Scratch.File(name)) == BackedUp) << name;
            }
        if (OnWindows && former == Former::Damaged) // each one that cannot replace the open file has made a copy
            EXPECT_GE(formerCopies, 1);
        else
            EXPECT_EQ(formerCopies, former == Former::Missing ? 0 : 1);
    }
}

TEST_F(RestoreFailureTest, RotationsDuringRestorationsCopyWholeJournals)
{
    for (const Former former : {Former::Readable, Former::Damaged})
    {
        Prepare(former);
        const ScratchDirectory directory;
        const std::string place = directory.File("backups");
        ChildProcess rotating(
            [&](const ParentProcess& parent)
            {
                parent.Send("");
                PlantBackUpRotation rotation;
                for (int round = 0; round < 30; ++round)
                    parent.Send(RotatePlantBackUps(Path, place, {3, 3, 3}, rotation).Error);
            });
        rotating.ReadLine();
        for (int round = 0; round < 15; ++round)
        {
            PlantRestoration restoration;
            const std::string error = RestorePlantDatabase(Destination, Path, restoration).Error;
            EXPECT_TRUE(error.empty() || IsInUse(error)) << error;
        }
        for (const std::string& error : rotating.ReadLines())
            EXPECT_TRUE(error.empty() || error.ends_with("database is locked") ||
                        (former == Former::Damaged && error.find("malformed") != std::string::npos))
                << error;
        EXPECT_EQ(rotating.End(), "done");

        PlantBackUpRotation rotation;
        EXPECT_EQ(RotatePlantBackUps(Path, place, {3, 3, 3}, rotation).Error, "");
        for (const auto& entry : std::filesystem::directory_iterator(place))
        {
            const std::string backUp = entry.path().string();
            const std::string content = ContentOf(backUp);
            EXPECT_TRUE(content == BackedUp || (former == Former::Readable && content == Later)) << backUp;
            EXPECT_EQ(support::Damage(PlainConnection(backUp).NativeHandle()), "ok");
        }
        EXPECT_EQ(ContentOf(rotation.Path), BackedUp);
    }
}

} // namespace
