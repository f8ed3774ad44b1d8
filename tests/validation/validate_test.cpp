// What holds for the validation of every kind of record in a journal.

#include "support/allocation_failure.h"
#include "support/journal_test.h"
#include "support/sample_records.h"
#include "validation/stored_records.h"

#include <map>
#include <new>
#include <string>

#include <sqlite3.h>

using namespace support;

namespace
{

struct Reply
{
    std::string Error;
    std::string Answer; // the problems, in print
};

class EveryValidationTest : public JournalTest, public testing::WithParamInterface<StoredRecord>
{
  protected:
    EveryValidationTest()
    {
        StoreSampleRecords(Repository);
        Whole = Ask().Answer;
    }

    // Calls the function inside `around`, which may do something before and after the call.
    template <typename Around> Reply AskInside(const Around& around)
    {
        std::vector<PlantProblem> problems(3);
        Reply reply;
        around(
            [&]
            {
                try
                {
                    reply.Error = GetParam().Validate(Database, problems).Error;
                }
                catch (const std::bad_alloc&)
                {
                    reply.Error = "no memory";
                }
            });
        for (const PlantProblem& problem : problems)
            reply.Answer += problem.Field + ": " + problem.Description + '\n';
        return reply;
    }
    Reply Ask()
    {
        return AskInside([](const auto& call) { call(); });
    }

    // Expects an error that contains `error`, no problems, and that the next call succeeds.
    void ExpectRefused(const Reply& reply, const std::string& error)
    {
        EXPECT_NE(reply.Error.find(error), std::string::npos) << reply.Error;
        EXPECT_EQ(reply.Answer, "");
        ExpectNothingOpen();
        EXPECT_EQ(Ask().Answer, Whole);
    }

    std::string Whole; // the answer
};

TEST_P(EveryValidationTest, AClosedDatabaseIsAnError)
{
    Database.Close();
    const Reply reply = Ask();
    EXPECT_EQ(reply.Error, "reading the journal: the database is closed");
    EXPECT_EQ(reply.Answer, "");
}

TEST_P(EveryValidationTest, AValidationChangesNothing)
{
    const std::string content = Content();
    const auto files = Scratch.Files();
    const int changes = sqlite3_total_changes(Database.NativeHandle());
    EXPECT_EQ(Ask().Error, "");
    EXPECT_EQ(sqlite3_total_changes(Database.NativeHandle()), changes);
    EXPECT_EQ(Content(), content);
    Database.Close(); // reading the files releases the locks of this process
    EXPECT_EQ(Scratch.Files(), files);
}

TEST_P(EveryValidationTest, AValidationReadsInTheTransactionOfTheCaller)
{
    RunSQL("BEGIN;");
    RunSQL("DELETE FROM Plants; DELETE FROM Strains;");
    const std::string uncommitted = Ask().Answer;
    EXPECT_EQ(sqlite3_get_autocommit(Database.NativeHandle()), 0);
    RunSQL("COMMIT;");
    EXPECT_EQ(Ask().Answer, uncommitted);
}

TEST_P(EveryValidationTest, AFailedCallIsAnErrorAndLeavesNothingOpen)
{
    for (const SQLiteCall call : {SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step})
    {
        int number = 0;
        for (bool happened = true; happened;)
        {
            ++number;
            const Reply reply = AskInside(
                [&](const auto& ask)
                {
                    const CallFailure failure(call, number, SQLITE_IOERR);
                    ask();
                    happened = failure.Happened();
                });
            if (happened)
                ExpectRefused(reply, ": ");
        }
        EXPECT_GT(number, call == SQLiteCall::Bind ? 1 : 2);
    }
}

TEST_P(EveryValidationTest, AnInterruptedReadingIsAnError)
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

TEST_P(EveryValidationTest, AJournalThatAnotherConnectionLocksIsAnError)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE;");
    sqlite3_busy_timeout(Database.NativeHandle(), 1);
    const Reply reply = Ask();
    other.RunSQL("ROLLBACK;");
    ExpectRefused(reply, ": database is locked");
}

TEST_P(EveryValidationTest, AFailedAllocationIsAnErrorAndLeavesNothingOpen)
{
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        for (const bool lasting : {false, true})
        {
            int number = 0;
            for (bool happened = true; happened;)
            {
                ++number;
                const Reply reply = AskInside(
                    [&](const auto& ask)
                    {
                        const AllocationFailure failure(allocator, number, lasting);
                        ask();
                        happened = failure.Happened();
                    });
                if (!reply.Error.empty())
                    ExpectRefused(reply, "memory");
                else // SQLite needs some of its allocations only to be faster
                    EXPECT_EQ(reply.Answer, Whole);
                ExpectNothingOpen();
            }
            EXPECT_GT(number, allocator == Allocator::SQLite ? 2 : 0);
        }
}

TEST_P(EveryValidationTest, AWriterInBetweenDoesNotChangeTheProblems)
{
    RunSQL("PRAGMA journal_mode=WAL;"); // in the other modes, a writer waits until the reading ends
    const PlainConnection other(Path);
    other.RunSQL("PRAGMA foreign_keys=ON;");
    bool written = true;
    for (int step = 1; written; ++step)
    {
        const std::string before = Ask().Answer;
        const auto writeAfterTheStep = [&](const auto& ask)
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

INSTANTIATE_TEST_SUITE_P(OfAccepted, EveryValidationTest, testing::ValuesIn(AcceptedRecords()), NameOfStoredRecord);
INSTANTIATE_TEST_SUITE_P(OfRefused, EveryValidationTest, testing::ValuesIn(RecordsRefusedByTheJournal()),
                         NameOfStoredRecord);

} // namespace
