// What holds for every function that reads a journal.

#include "support/allocation_failure.h"
#include "support/connection_interruption.h"
#include "support/reading_call.h"
#include "support/sample_records.h"

#include <ostream>

using namespace support;

namespace support
{

std::ostream& operator<<(std::ostream& out, const ReadingCall& call)
{
    return out << call.Name;
}

ReadingCallTest::ReadingCallTest()
{
    StoreSampleRecords(Repository);
    Whole = Ask().Answer;
}

Reply ReadingCallTest::Ask()
{
    return AskInside([](const Work& ask) { ask(); });
}

Reply ReadingCallTest::AskInside(const std::function<void(const Work& ask)>& around)
{
    return GetParam().AskInside(Database, around);
}

void ReadingCallTest::ExpectRefused(const Reply& reply, const std::string& error)
{
    EXPECT_NE(reply.Error.find(error), std::string::npos) << reply.Error;
    EXPECT_EQ(reply.Answer, GetParam().EmptyAnswer);
    ExpectNothingOpen();
    EXPECT_EQ(Ask().Answer, Whole);
}

} // namespace support

namespace
{

TEST_P(ReadingCallTest, AClosedDatabaseIsAnError)
{
    Database.Close();
    const Reply reply = Ask();
    EXPECT_EQ(reply.Error, "reading the journal: the database is closed");
    EXPECT_EQ(reply.Answer, GetParam().EmptyAnswer);
}

TEST_P(ReadingCallTest, ACallChangesNothing)
{
    const std::string content = Content();
    const auto files = Scratch.Files();
    const int changes = sqlite3_total_changes(Database.NativeHandle());
    const Reply reply = Ask();
    EXPECT_EQ(reply.Error, "");
    EXPECT_EQ(reply.Answer, Whole);
    EXPECT_EQ(sqlite3_total_changes(Database.NativeHandle()), changes);
    EXPECT_EQ(Content(), content);
    Database.Close(); // reading the files releases the locks of this process
    EXPECT_EQ(Scratch.Files(), files);
}

TEST_P(ReadingCallTest, AFailedCallIsAnErrorAndLeavesNothingOpen)
{
    for (const SQLiteCall call : {SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step})
    {
        int calls = 0;
        AskInside(
            [&](const Work& ask)
            {
                const CallRecorder recorder;
                ask();
                calls = recorder.CallCount(call);
            });
        EXPECT_GT(calls, call == SQLiteCall::Bind ? -1 : 1);
        for (int number = 1; number <= calls; ++number)
            ExpectRefused(AskInside(
                              [&](const Work& ask)
                              {
                                  const CallFailure failure(call, number, SQLITE_IOERR);
                                  ask();
                                  EXPECT_TRUE(failure.Happened());
                              }),
                          ": ");
    }
}

TEST_P(ReadingCallTest, AnInterruptedReadingIsAnError)
{
    int interruptions = 0;
    for (int instructions = 1;; instructions += 1 + instructions / 8)
    {
        bool happened = false;
        const Reply reply = AskInside(
            [&](const Work& ask)
            {
                const ConnectionInterruption interruption(Database.NativeHandle(), instructions);
                ask();
                happened = interruption.Happened();
            });
        if (!happened)
            break;
        ExpectRefused(reply, ": interrupted");
        ++interruptions;
    }
    EXPECT_GT(interruptions, 5);
}

TEST_P(ReadingCallTest, AJournalThatAnotherConnectionLocksIsAnError)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE;");
    sqlite3_busy_timeout(Database.NativeHandle(), 1);
    const Reply reply = Ask();
    other.RunSQL("ROLLBACK;");
    ExpectRefused(reply, ": database is locked");
}

TEST_P(ReadingCallTest, AFailedAllocationIsAnErrorAndLeavesNothingOpen)
{
    int failures = 0;
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        for (const bool lasting : {false, true})
        {
            bool happened = true;
            for (int number = 1; happened; ++number)
            {
                const Reply reply = AskInside(
                    [&](const Work& ask)
                    {
                        const AllocationFailure failure(allocator, number, lasting);
                        ask();
                        happened = failure.Happened();
                    });
                failures += happened ? 1 : 0;
                if (!reply.Error.empty())
                    ExpectRefused(reply, "memory");
                else // SQLite needs some of its allocations only to be faster
                    EXPECT_EQ(reply.Answer, Whole);
                ExpectNothingOpen();
            }
        }
    EXPECT_GT(failures, 5);
}

TEST_P(ReadingCallTest, AWriterInBetweenDoesNotChangeTheAnswer)
{
    RunSQL("PRAGMA journal_mode=WAL;"); // in the other modes, a writer waits until the reading ends
    const PlainConnection other(Path);
    other.RunSQL("PRAGMA foreign_keys=ON;");
    bool written = true;
    for (int step = 1; written; ++step)
    {
        const std::string before = Ask().Answer;
        const auto writeAfterTheStep = [&](const Work& ask)
        {
            const AfterCall writer(SQLiteCall::Step, step,
                                   [&] { other.RunSQL("BEGIN; DELETE FROM Plants; DELETE FROM Strains; COMMIT;"); });
            ask();
            written = writer.Happened();
        };
        EXPECT_EQ(AskInside(writeAfterTheStep).Answer, before) << "written after step " << step;
        if (written)
            StoreSampleRecords(Repository);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, ReadingCallTest, testing::ValuesIn(ReadingCalls()), NameOfReadingCall);

} // namespace
