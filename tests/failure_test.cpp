// Every operation, with every single one of its calls of SQLite failing in turn.

#include "support/allocation_failure.h"
#include "support/journal_test.h"
#include "support/repository_operations.h"
#include "testing/operation_statements.h"

#include <algorithm>
#include <climits>
#include <filesystem>
#include <new>
#include <optional>

#include <sqlite3.h>

using namespace support;

namespace
{

class FailureTest : public JournalTest, public testing::WithParamInterface<Operation>
{
  protected:
    FailureTest() : Planted(StoreSampleRecords(Repository)), Before(Content())
    {
        // What the operation does when nothing fails is seen in a journal of its own.
        PlantDatabase other;
        EXPECT_TRUE(other.Open(Scratch.File("other.db")));
        PlantRepository repository(other);
        SampleRecords sample = StoreSampleRecords(repository);
        const CallRecorder recorder;
        EXPECT_TRUE(GetParam().Call(repository, sample));
        Calls = recorder.Calls();
        After = ::Content(other.NativeHandle());
    }

    // The content but for the one trace that a failed operation may leave: a plant's strain is registered first.
    std::string ContentButForTheStrain() const
    {
        if (Calls.front().SQL != "INSERT INTO Strains(Name) VALUES(?) ON CONFLICT(Name) DO NOTHING;")
            return Content();
        RunSQL("SAVEPOINT trial; DELETE FROM Strains WHERE Name='a new strain';");
        const std::string content = Content();
        RunSQL("ROLLBACK TO trial; RELEASE trial;");
        return content;
    }

    // The result tells the truth: the file is as after the operation, or as before.
    void ExpectHonest(bool done)
    {
        ExpectNothingOpen();
        EXPECT_EQ(Database.LastError(), "");
        if (done)
            EXPECT_EQ(Content(), After);
        else
            EXPECT_EQ(ContentButForTheStrain(), Before);
    }

    // Brings the file back to its first state where it has left it.
    void Replant()
    {
        if (Content() == Before)
            return;
        Database.Close();
        std::filesystem::remove(Path);
        OpenJournal();
        Planted = StoreSampleRecords(Repository);
    }

    SampleRecords Planted;
    std::string Before;
    std::string After;
    std::vector<RecordedCall> Calls;
};

TEST_P(FailureTest, OfAnyCallOfSQLiteIsReportedAndLeavesNothingHalfDone)
{
    int number[] = {0, 0, 0, 0, 0, 0};
    bool begun = false;
    for (const RecordedCall& call : Calls)
    {
        const int nth = ++number[static_cast<int>(call.Call)];
        if (call.Call == SQLiteCall::Finalize)
            continue;
        SCOPED_TRACE(call.SQL + ", call " + std::to_string(nth) + " of its kind");

        SampleRecords sample = Planted;
        bool done = false;
        std::vector<RecordedCall> made;
        {
            const CallRecorder recorder;
            const CallFailure failure(call.Call, nth, SQLITE_IOERR);
            done = GetParam().Call(Repository, sample);
            EXPECT_TRUE(failure.Happened());
            made = recorder.Calls();
        }
        ExpectHonest(done);

        // Reading on after a row that could not be read is for the caller of a list; anything else is refused.
        const bool reading = call.SQL.starts_with("SELECT");
        if (!reading || call.Call == SQLiteCall::Prepare)
        {
            EXPECT_FALSE(done);
        }
        if (begun)
        {
            ASSERT_FALSE(made.empty());
            EXPECT_EQ(made.back().Call, SQLiteCall::Exec);
            EXPECT_EQ(made.back().SQL, "ROLLBACK;");
        }
        else
        {
            for (const RecordedCall& later : made)
                EXPECT_NE(later.SQL, "ROLLBACK;");
        }
        Replant();
        begun = begun || call.SQL == "BEGIN IMMEDIATE;";
    }

    SampleRecords sample = Planted;
    EXPECT_TRUE(GetParam().Call(Repository, sample));
    EXPECT_EQ(Content(), After);
}

class RefusalTest : public JournalTest, public testing::WithParamInterface<Operation>
{
};

// An open transaction would swallow all that is written afterwards.
TEST_P(RefusalTest, IsTakenBackAlsoWhereTheFirstAttemptFails)
{
    const SampleRecords planted = StoreSampleRecords(Repository);
    const std::string before = Content();
    for (const bool fails : {false, true})
    {
        SampleRecords sample = planted;
        std::optional<CallFailure> failure;
        if (fails)
            failure.emplace(SQLiteCall::Exec, 1, SQLITE_NOMEM, SQL::Rollback);
        const Statements ran = StatementsOf([&] { EXPECT_FALSE(GetParam().Call(Repository, sample)); });
        EXPECT_EQ(std::count(ran.begin(), ran.end(), SQL::Rollback), fails ? 2 : 1);
        ExpectNothingOpen();
        EXPECT_EQ(Content(), before);
    }
}

INSTANTIATE_TEST_SUITE_P(Every, RefusalTest, testing::ValuesIn(RefusedOperations()),
                         [](const auto& test) { return test.param.Name; });

TEST(ListFailureTest, AListThatAnExceptionEndsHoldsWholeRecordsOnly)
{
    PlantDatabase database;
    ASSERT_TRUE(database.Open(":memory:"));
    PlantRepository repository(database);
    const SampleRecords sample = StoreSampleRecords(repository);
    std::vector<PlantEvent> whole;
    ASSERT_TRUE(repository.ListPlantEvents(sample.Mother.UUID, whole));

    std::size_t most = 0;
    bool happened = true;
    for (int number = 1; happened; ++number)
    {
        std::vector<PlantEvent> events;
        {
            const AllocationFailure failure(Allocator::New, number);
            try
            {
                repository.ListPlantEvents(sample.Mother.UUID, events);
            }
            catch (const std::bad_alloc&)
            {
                most = std::max(most, events.size());
            }
            happened = failure.Happened();
        }
        for (std::size_t i = 0; i < events.size(); ++i)
            EXPECT_EQ(events[i], whole[i]) << "allocation " << number;
    }
    EXPECT_EQ(most, whole.size() - 1);
}

// SQLite takes a text's length as an int; cut down to one, this length would mean a text that ends at its first zero
// byte, which here is the first of all.
TEST(TextFailureTest, ATextLongerThanSQLiteCanTakeIsRefusedAndNotCut)
{
    PlantDatabase database;
    ASSERT_TRUE(database.Open(":memory:"));
    PlantRepository repository(database);
    PlantJournalEntry entry = StoreSampleRecords(repository).Entry;
    const std::string before = Content(database.NativeHandle());
    entry.Details.assign(std::size_t{INT_MAX} + 1, '\0');
    EXPECT_FALSE(repository.CreatePlantJournalEntry(entry));
    EXPECT_FALSE(repository.UpdatePlantJournalEntry(entry));
    EXPECT_EQ(Content(database.NativeHandle()), before);
}

// In a file that another tool has made in UTF-16, SQLite needs memory to hand a text out. A strain whose old name came
// back empty would be given to every plant without a strain.
TEST(TextFailureTest, ATextThatSQLiteFindsNoMemoryForIsNotTakenForAnEmptyOne)
{
    const ScratchDirectory scratch;
    PlainConnection(scratch.File("journal.db"))
        .RunSQL("PRAGMA encoding='UTF-16'; CREATE TABLE SchemaMeta(Key, Value);");
    PlantDatabase database;
    ASSERT_TRUE(database.Open(scratch.File("journal.db")));
    PlantRepository repository(database);
    const SampleRecords sample = StoreSampleRecords(repository);

    bool happened = true;
    for (int number = 1; happened; ++number)
    {
        Strain renamed = sample.Kind;
        renamed.Name = "name " + std::to_string(number);
        {
            const AllocationFailure failure(Allocator::SQLite, number);
            try
            {
                repository.UpdateStrain(renamed);
            }
            catch (const std::bad_alloc&)
            {
            }
            happened = failure.Happened();
        }
        EXPECT_EQ(QueryRows(database.NativeHandle(), "SELECT Strain FROM Plants WHERE Name='Clone';"), Rows{{""}});
    }
}

INSTANTIATE_TEST_SUITE_P(EveryOperation, FailureTest, testing::ValuesIn(Operations()),
                         [](const auto& test) { return test.param.Name; });

} // namespace
