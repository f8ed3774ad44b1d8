// Explain after every failure of the disk, of memory and of SQLite's calls: never a wrong cause.

#include "support/allocation_failure.h"
#include "support/disk_failure.h"
#include "support/journal_test.h"
#include "support/sample_records.h"
#include "validation/stored_records.h"

#include <filesystem>
#include <map>
#include <new>
#include <set>
#include <string>

#include <sqlite3.h>

using namespace support;

namespace
{

using Sentences = std::set<std::string>;

// Up to the first colon.
std::string BeginningOf(const std::string& sentence)
{
    return sentence.substr(0, sentence.find(':'));
}

class ExplainFaultTest : public JournalTest, public testing::WithParamInterface<StoredRecord>
{
  protected:
    ExplainFaultTest() { StoreSampleRecords(Repository); }

    // Stores the record inside `around`, and returns the beginning of the explanation; empty if it was stored.
    template <typename Around> std::string ExplainedInside(const Around& around)
    {
        bool done = false;
        around(
            [&]
            {
                try
                {
                    done = GetParam().Store(Repository);
                }
                catch (const std::bad_alloc&)
                {
                    done = true; // it threw instead of returning false
                }
            });
        if (done)
        {
            Restore();
            return {};
        }
        std::string sentence = BeginningOf(GetParam().Explain(Database));
        ExpectNothingOpen();
        return sentence;
    }

    void Restore()
    {
        Database.Close();
        std::filesystem::remove(Path);
        OpenJournal();
        StoreSampleRecords(Repository);
    }
};

TEST_P(ExplainFaultTest, AFailureOfTheDiskIsExplainedOrNotRecorded)
{
    Database.Close();
    const FailingDisk disk;
    OpenJournal();
    const std::string notRecorded = "rolled back; the cause was not recorded";
    const std::map<DiskError, Sentences> possible = {
        {DiskError::IO, {"disk error", "failed", notRecorded}},
        {DiskError::Full, {"disk full", "disk error", "failed", notRecorded}}};
    std::map<std::string, int> found;
    for (const DiskCall call : {DiskCall::Open, DiskCall::Read, DiskCall::Write, DiskCall::Truncate, DiskCall::Sync,
                                DiskCall::Size, DiskCall::Lock, DiskCall::Delete, DiskCall::Access})
        for (const DiskFault& kind : {DiskFault{call, DiskError::IO, false, 0},
                                      {call, DiskError::IO, true, 0},
                                      {call, DiskError::Full, false, 0},
                                      {call, DiskError::Full, true, 0}})
        {
            bool happened = true;
            for (int number = 1; happened; ++number)
            {
                const DiskFault fault{call, kind.Error, kind.Lasting, number};
                const std::string sentence = ExplainedInside(
                    [&](const auto& store)
                    {
                        const DiskFailure failure(fault);
                        store();
                        happened = failure.Happened();
                    });
                EXPECT_TRUE(sentence.empty() || possible.at(fault.Error).contains(sentence))
                    << sentence << ": " << testing::PrintToString(fault.Call) << ' ' << number;
                EXPECT_TRUE(sentence.empty() || happened);
                ++found[sentence];
            }
        }
    if (GetParam().UsesTransaction)
    {
        EXPECT_GT(found[notRecorded], 3);
    }
    else
    {
        EXPECT_EQ(found[notRecorded], 0);
        EXPECT_GT(found["disk error"], 3);
        EXPECT_GT(found["disk full"], 3);
    }
    Database.Close();
}

TEST_P(ExplainFaultTest, ALackOfMemoryIsExplainedOrNotRecorded)
{
    int failures = 0;
    bool happened = true;
    for (int number = 1; happened; ++number)
    {
        const std::string sentence = ExplainedInside(
            [&](const auto& store)
            {
                const AllocationFailure failure(Allocator::SQLite, number);
                store();
                happened = failure.Happened();
            });
        EXPECT_TRUE(sentence.empty() || sentence == "out of memory" ||
                    (GetParam().UsesTransaction && sentence == "rolled back; the cause was not recorded"))
            << sentence;
        failures += sentence.empty() ? 0 : 1;
    }
    EXPECT_GT(failures, 3);
}

TEST_P(ExplainFaultTest, AFailedCallThatLeavesNoCodeIsNotRecorded)
{
    for (const SQLiteCall call : {SQLiteCall::Exec, SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step})
    {
        bool happened = true;
        for (int number = 1; happened; ++number)
        {
            const std::string sentence = ExplainedInside(
                [&](const auto& store)
                {
                    const CallFailure failure(call, number, SQLITE_IOERR);
                    store();
                    happened = failure.Happened();
                });
            EXPECT_TRUE(sentence.empty() ||
                        sentence == (GetParam().UsesTransaction ? "rolled back; the cause was not recorded" : "failed"))
                << sentence;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Of, ExplainFaultTest, testing::ValuesIn(AcceptedRecords()), NameOfStoredRecord);

} // namespace
