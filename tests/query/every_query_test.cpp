// What holds for every function of the library.

#include "query/queries.h"
#include "support/allocation_failure.h"
#include "support/journal_test.h"
#include "support/sample_records.h"

#include <map>
#include <string>

#include <sqlite3.h>

using namespace support;

namespace
{

class EveryQueryTest : public JournalTest, public testing::WithParamInterface<Query>
{
  protected:
    EveryQueryTest()
    {
        StoreSampleRecords(Repository);
        Whole = Ask().Answer;
    }

    Reply Ask() { return GetParam().Ask(Database); }

    // Expects an error that contains `error`, an empty answer, and that the next call succeeds.
    void ExpectRefused(const Reply& reply, const std::string& error)
    {
        EXPECT_NE(reply.Error.find(error), std::string::npos) << reply.Error;
        EXPECT_EQ(reply.Answer, GetParam().EmptyAnswer);
        ExpectNothingOpen();
        EXPECT_EQ(Ask().Answer, Whole);
    }

    void ExpectWholeOrRefused(const Reply& reply)
    {
        if (!reply.Error.empty())
            return ExpectRefused(reply, "memory");
        EXPECT_EQ(reply.Answer, Whole);
        ExpectNothingOpen();
    }

    std::string Whole; // the answer
    std::map<SQLiteCall, int> Failures;
};

TEST_P(EveryQueryTest, TheSampleHasAnAnswer)
{
    const Reply reply = Ask();
    EXPECT_EQ(reply.Error, "");
    EXPECT_NE(reply.Answer, GetParam().EmptyAnswer);
}

TEST_P(EveryQueryTest, AClosedDatabaseIsAnError)
{
    Database.Close();
    const Reply reply = Ask();
    EXPECT_EQ(reply.Error, "reading the journal: the database is closed");
    EXPECT_EQ(reply.Answer, GetParam().EmptyAnswer);
}

TEST_P(EveryQueryTest, AnAnswerChangesNothing)
{
    const std::string content = Content();
    const auto files = Scratch.Files();
    const int changes = sqlite3_total_changes(Database.NativeHandle());
    EXPECT_EQ(Ask().Answer, Whole);
    EXPECT_EQ(sqlite3_total_changes(Database.NativeHandle()), changes);
    EXPECT_EQ(Content(), content);
    Database.Close(); // reading the files releases the locks of this process
    EXPECT_EQ(Scratch.Files(), files);
}

TEST_P(EveryQueryTest, AnAnswerReadsInTheTransactionOfTheCaller)
{
    RunSQL("BEGIN;");
    RunSQL("DELETE FROM Plants;");
    EXPECT_NE(Ask().Answer, Whole) << "rows that are not committed yet";
    EXPECT_EQ(sqlite3_get_autocommit(Database.NativeHandle()), 0);
    RunSQL("ROLLBACK;");
    EXPECT_EQ(Ask().Answer, Whole);
}

TEST_P(EveryQueryTest, AFailedCallIsAnErrorAndLeavesNothingOpen)
{
    for (const SQLiteCall call : {SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step})
        for (bool happened = true; happened;)
        {
            const int number = ++Failures[call];
            const Reply reply = GetParam().AskInside(Database,
                                                     [&](const Work& ask)
                                                     {
                                                         const CallFailure failure(call, number, SQLITE_IOERR);
                                                         ask();
                                                         happened = failure.Happened();
                                                     });
            if (happened)
                ExpectRefused(reply, ": ");
        }
    EXPECT_GT(Failures[SQLiteCall::Prepare], 2);
    EXPECT_GT(Failures[SQLiteCall::Step], 3);
}

TEST_P(EveryQueryTest, AnInterruptedReadingIsAnError)
{
    struct Countdown
    {
        int Left;
        static int Next(void* countdown) { return --static_cast<Countdown*>(countdown)->Left == 0 ? 1 : 0; }
    };
    int interruptions = 0;
    for (int instructions = 1;; instructions += 1 + instructions / 8)
    {
        Countdown countdown{instructions};
        sqlite3_progress_handler(Database.NativeHandle(), 1, &Countdown::Next, &countdown);
        const Reply reply = Ask();
        sqlite3_progress_handler(Database.NativeHandle(), 0, nullptr, nullptr);
        if (countdown.Left > 0)
            break;
        ExpectRefused(reply, ": interrupted");
        ++interruptions;
    }
    EXPECT_GT(interruptions, 5);
}

TEST_P(EveryQueryTest, AJournalThatAnotherConnectionLocksIsAnError)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE;");
    sqlite3_busy_timeout(Database.NativeHandle(), 1);
    const Reply reply = Ask();
    other.RunSQL("ROLLBACK;");
    ExpectRefused(reply, ": database is locked");
}

TEST_P(EveryQueryTest, AFailedAllocationIsAnErrorAndLeavesNothingOpen)
{
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        for (const bool lasting : {false, true})
        {
            int number = 0;
            for (bool happened = true; happened;)
            {
                ++number;
                const Reply reply =
                    GetParam().AskInside(Database,
                                         [&](const Work& ask)
                                         {
                                             const AllocationFailure failure(allocator, number, lasting);
                                             ask();
                                             happened = failure.Happened();
                                         });
                ExpectWholeOrRefused(reply); // SQLite needs some of its allocations only to be faster
            }
            EXPECT_GT(number, 5);
        }
}

TEST_P(EveryQueryTest, AWriterInBetweenDoesNotChangeTheAnswer)
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
        EXPECT_EQ(GetParam().AskInside(Database, writeAfterTheStep).Answer, before) << "written after step " << step;
        if (!written)
            continue;
        EXPECT_NE(Ask().Answer, before);
        StoreSampleRecords(Repository);
    }
}

std::string NameOfQuery(const testing::TestParamInfo<Query>& test)
{
    return test.param.Name;
}

INSTANTIATE_TEST_SUITE_P(Of, EveryQueryTest, testing::ValuesIn(Queries()), NameOfQuery);

} // namespace
