// Every writing operation and every kind of opening, while another process holds a lock on the journal.

#include "support/child_process.h"
#include "support/figures.h"
#include "support/journal_files.h"
#include "testing/old_files.h"
#include "testing/plain_connection.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using namespace support;

namespace
{

using Clock = std::chrono::steady_clock;

constexpr auto Locked = "database is locked";

// A lock of another process.
struct Lock
{
    std::string Name;
    std::string SQL;           // takes it
    std::string RebuildResult; // of opening a file that only lacks the current event table
};

const std::vector<Lock>& Locks()
{
    static const std::vector<Lock> locks = {
        {"a writer", "BEGIN IMMEDIATE;", "cannot rollback - no transaction is active"},
        {"a writer that commits", "BEGIN EXCLUSIVE;", Locked},
        {"a reader", "BEGIN; SELECT * FROM sqlite_master;", Locked},
    };
    return locks;
}

// Makes a call twice, each time after the parent continues the process. Sends the milliseconds that the call took, and
// its result.
void CallTwice(const ParentProcess& parent, const std::function<std::string()>& call)
{
    parent.Send("ready");
    for (int i = 0; i < 2; ++i)
    {
        parent.Wait();
        const auto start = Clock::now();
        const std::string result = call();
        parent.Send(std::to_string((Clock::now() - start) / std::chrono::milliseconds(1)));
        parent.Send(result);
    }
}

// One call under one lock, in a process and on a file of its own.
struct LockedCall
{
    std::string Name;
    std::string Path;
    std::string LockSQL;
    std::string ResultUnderLock;
    std::string ResultAfterLock;
    std::string Before = {}; // the content of the file
    std::string After = {};
};

// The calls run at the same time, since each of them waits for seconds.
class LockWaitTest : public JournalFileTest
{
  protected:
    LockedCall& NewCall(const std::string& name, const Lock& lock, const std::string& underLock,
                        const std::string& afterLock)
    {
        const std::string path = Scratch.File(std::to_string(Calls.size()) + ".db");
        return Calls.emplace_back(
            LockedCall{name + " under the lock of " + lock.Name, path, lock.SQL, underLock, afterLock});
    }

    void AddOperation(const Operation& operation)
    {
        std::string after;
        {
            PlantDatabase unlocked;
            ASSERT_TRUE(unlocked.Open(""));
            PlantRepository repository(unlocked);
            SampleRecords sample = StoreSampleRecords(repository);
            ASSERT_TRUE(operation.Call(repository, sample));
            after = Content(unlocked.NativeHandle());
        }
        for (const Lock& lock : Locks())
        {
            LockedCall& call = NewCall(operation.Name, lock, "false", "true");
            const SampleRecords sample = CreateSampleJournal(call.Path);
            call.Before = ContentOnceOpen(call.Path);
            call.After = after;
            Children.emplace_back(
                [&operation, &call, sample](const ParentProcess& parent)
                {
                    PlantDatabase database;
                    OpenOrThrow(database, call.Path);
                    PlantRepository repository(database);
                    CallTwice(parent,
                              [&]
                              {
                                  SampleRecords copy = sample;
                                  return operation.Call(repository, copy) ? "true" : "false";
                              });
                });
        }
    }

    void AddOpening(const OldFile& file)
    {
        for (const Lock& lock : Locks())
        {
            const bool hasEveryColumn = file.Name == "08_seed_yield" || file.Name == "10_unchecked";
            LockedCall& call =
                NewCall("opening " + file.Name, lock, hasEveryColumn ? lock.RebuildResult : Locked, "open");
            WriteOldFile(call.Path, file);
            call.After = ContentOnceOpen(call.Path);
            WriteOldFile(call.Path, file);
            call.Before = Content(PlainConnection(call.Path).NativeHandle());
            Children.emplace_back([&call](const ParentProcess& parent)
                                  { CallTwice(parent, [&] { return OpeningResult(call.Path); }); });
        }
    }

    void Continue() const
    {
        for (const ChildProcess& child : Children)
            child.Continue();
    }

    void ExpectFailuresUnderLocks(const std::deque<PlainConnection>& lockHolders)
    {
        for (std::size_t i = 0; i < Calls.size(); ++i)
        {
            SCOPED_TRACE(Calls[i].Name);
            const int milliseconds = std::stoi(Children[i].ReadLine().value_or("0"));
            EXPECT_GE(milliseconds, 2'400);
            EXPECT_LT(milliseconds, 10'000);
            EXPECT_EQ(Children[i].ReadLine(), Calls[i].ResultUnderLock);
            EXPECT_EQ(Content(lockHolders[i].NativeHandle()), Calls[i].Before);
            AddToFigure("calls that failed under a lock");
        }
    }

    void ExpectSuccessAfterLocks()
    {
        for (std::size_t i = 0; i < Calls.size(); ++i)
        {
            SCOPED_TRACE(Calls[i].Name);
            EXPECT_GE(std::stoi(Children[i].ReadLine().value_or("0")), 500);
            EXPECT_EQ(Children[i].ReadLine(), Calls[i].ResultAfterLock);
            EXPECT_EQ(Children[i].End(), "done");
            EXPECT_EQ(ContentOnceOpen(Calls[i].Path), Calls[i].After);
            AddToFigure("calls that waited for a lock");
        }
    }

    std::deque<LockedCall> Calls; // a deque: the processes refer to its elements
    std::deque<ChildProcess> Children;
};

TEST_F(LockWaitTest, ACallWaitsForALockAndChangesNothingIfItFails)
{
    for (const Operation& operation : Operations())
        if (!IsRead(operation))
            AddOperation(operation);
    std::vector<OldFile> files = OldFiles();
    std::erase_if(files, HasCurrentSchema); // these are opened without a lock
    files.push_back({"an empty file", "SELECT 1;"});
    for (const OldFile& file : files)
        AddOpening(file);

    for (ChildProcess& child : Children)
        ASSERT_EQ(child.ReadLine(), "ready");
    std::deque<PlainConnection> lockHolders;
    for (const LockedCall& call : Calls)
        lockHolders.emplace_back(call.Path).RunSQL(call.LockSQL);
    Continue();
    ExpectFailuresUnderLocks(lockHolders);

    Continue();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    for (const PlainConnection& holder : lockHolders)
        holder.RunSQL("ROLLBACK;");
    ExpectSuccessAfterLocks();
}

} // namespace
