// Every operation with each of its SQLite calls failing in turn, and reads without memory.

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
        // Another journal shows the calls and the result of the operation without a failure.
        PlantDatabase other;
        EXPECT_TRUE(other.Open(Scratch.File("other.db")));
        PlantRepository repository(other);
        SampleRecords sample = StoreSampleRecords(repository);
        const CallRecorder recorder;
        EXPECT_TRUE(GetParam().Call(repository, sample));
        Calls = recorder.Calls();
        After = ::Content(other.NativeHandle());
    }

    // The content without the new strain that a failed operation may leave.
    std::string ContentWithoutTheNewStrain() const
    {
        if (Calls.front().SQL != "INSERT INTO Strains(Name) VALUES(?) ON CONFLICT(Name) DO NOTHING;")
            return Content();
        RunSQL("SAVEPOINT trial; DELETE FROM Strains WHERE Name='a new strain';");
        const std::string content = Content();
        RunSQL("ROLLBACK TO trial; RELEASE trial;");
        return content;
    }

    // Expects the content after the operation if `done`, and the content before it otherwise.
    void ExpectContent(bool done)
    {
        ExpectNothingOpen();
        EXPECT_EQ(Database.LastError(), "");
        if (done)
            EXPECT_EQ(Content(), After);
        else
            EXPECT_EQ(ContentWithoutTheNewStrain(), Before);
    }

    // Restores the first content of the file if it has changed.
    void Restore()
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

TEST_P(FailureTest, AFailedSQLiteCallLeavesNoPartialChange)
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
        ExpectContent(done);

        // A list that ends early returns true. Every other failure must be reported.
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
        Restore();
        begun = begun || call.SQL == "BEGIN IMMEDIATE;";
    }

    SampleRecords sample = Planted;
    EXPECT_TRUE(GetParam().Call(Repository, sample));
    EXPECT_EQ(Content(), After);
}

class RefusalTest : public JournalTest, public testing::WithParamInterface<Operation>
{
};

// All later writes would belong to a transaction that stayed open.
TEST_P(RefusalTest, ARefusalIsRolledBackEvenIfTheFirstRollbackFails)
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

TEST(ListFailureTest, AListEndedByAnExceptionHoldsWholeRecords)
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

// Runs `read` with the first allocation failing, then with the second, until none fails. `read` fills a record and
// returns its result; after a failure, the record must equal `untouched`.
template <typename Record, typename Read>
void ExpectNoPartialRecord(const Record& before, const Record& untouched, const Read& read)
{
    Record whole = before;
    ASSERT_TRUE(read(whole));
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
    {
        bool happened = true;
        for (int number = 1; happened; ++number)
        {
            Record record = before;
            bool done = false;
            {
                const AllocationFailure failure(allocator, number);
                try
                {
                    done = read(record);
                }
                catch (const std::bad_alloc&)
                {
                }
                happened = failure.Happened();
            }
            EXPECT_EQ(record, done ? whole : untouched) << "allocation " << number;
        }
    }
}

// SQLite allocates the texts that it returns from a file in UTF-16.
TEST(ReadFailureTest, AReadWithoutMemoryLeavesNoPartialRecord)
{
    const ScratchDirectory scratch;
    PlainConnection(scratch.File("journal.db"))
        .RunSQL("PRAGMA encoding='UTF-16'; CREATE TABLE SchemaMeta(Key, Value);");
    PlantDatabase database;
    ASSERT_TRUE(database.Open(scratch.File("journal.db")));
    PlantRepository repository(database);
    const SampleRecords sample = StoreSampleRecords(repository);
    Strain strain = sample.Kind;
    strain.Breeder = strain.Notes = "a text that is too long to be kept without an allocation";
    ASSERT_TRUE(repository.UpdateStrain(strain));
    StrainSummary summary;
    summary.StrainName = "another strain";

    ExpectNoPartialRecord(sample.Clone, sample.Clone,
                          [&](Plant& plant) { return repository.GetPlant(sample.Mother.UUID, plant); });
    ExpectNoPartialRecord(sample.Unused, sample.Unused,
                          [&](Strain& record) { return repository.GetStrain(strain.ID, record); });
    ExpectNoPartialRecord(summary, StrainSummary(),
                          [&](StrainSummary& record) { return repository.GetStrainSummary(strain.ID, record); });
    ExpectNoPartialRecord(HarvestRecord(), HarvestRecord(),
                          [&](HarvestRecord& record)
                          { return repository.GetHarvestRecord(sample.Mother.UUID, record); });
}

// SQLite takes the length of a text as an int. Converted to int, this length would be negative, and SQLite would store
// the text only up to its first zero byte.
TEST(TextFailureTest, ATextTooLongForSQLiteIsRefused)
{
    if (sizeof(std::size_t) == 4)
        GTEST_SKIP() << "a program with 32-bit addresses has no text of 2 GB";
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

// SQLite allocates the texts that it returns from a file in UTF-16. If the old name of a strain were read as empty,
// every plant without a strain would be moved to that strain.
TEST(TextFailureTest, ATextLostToLackOfMemoryIsNotReadAsEmpty)
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
