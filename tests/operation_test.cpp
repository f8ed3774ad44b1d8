// The rules that every operation follows.

#include "support/journal_test.h"
#include "support/repository_operations.h"
#include "testing/operation_statements.h"

#include <algorithm>
#include <cstddef>
#include <regex>

#include <sqlite3.h>

using namespace support;

namespace
{

class OperationTest : public JournalTest, public testing::WithParamInterface<Operation>
{
  protected:
    OperationTest() : Planted(StoreSampleRecords(Repository)), Before(Content()) {}

    // Runs the operation and records its calls.
    bool Run()
    {
        const CallRecorder recorder;
        const bool done = GetParam().Call(Repository, Planted);
        Calls = recorder.Calls();
        Ran = recorder.Statements();
        return done;
    }

    bool RanATransaction() const { return Ran.end() != std::find(Ran.begin(), Ran.end(), SQL::Begin); }
    bool RanReadsOnly() const
    {
        return std::all_of(Ran.begin(), Ran.end(), [](const std::string& sql) { return sql.starts_with("SELECT"); });
    }

    SampleRecords Planted;
    std::string Before;
    std::vector<RecordedCall> Calls;
    Statements Ran;
};

TEST_P(OperationTest, EachStatementIsFinalizedBeforeTheNextIsPrepared)
{
    ASSERT_TRUE(Run());
    std::string shape;
    std::ptrdiff_t values = 0;
    for (const RecordedCall& call : Calls)
    {
        switch (call.Call)
        {
        case SQLiteCall::Prepare:
            shape += call.SQL.starts_with("SELECT") ? 'R' : 'W';
            values += std::count(call.SQL.begin(), call.SQL.end(), '?');
            break;
        case SQLiteCall::Bind:
            shape += 'B';
            --values;
            break;
        case SQLiteCall::Step:
            shape += 'S';
            break;
        case SQLiteCall::Finalize:
            shape += 'F';
            EXPECT_EQ(values, 0) << call.SQL;
            break;
        default:
            shape += call.SQL == SQL::Begin ? '(' : call.SQL == SQL::Commit ? ')' : '?';
        }
    }
    const std::string statements = "(RB*S+F|WB*SF)+";
    EXPECT_TRUE(std::regex_match(shape, std::regex("(" + statements + ")?(\\(" + statements + "\\))?"))) << shape;
    ExpectNothingOpen();
}

TEST_P(OperationTest, ARowFromAWriteIsAFailure)
{
    for (const char* write : {"INSERT", "UPDATE", "DELETE"})
    {
        const CallFailure row(SQLiteCall::Step, 1, SQLITE_ROW, write);
        const bool done = Run();
        EXPECT_FALSE(done && row.Happened()) << write;
    }
}

TEST_P(OperationTest, AnOperationKeepsTheLastError)
{
    Database.Close();
    ASSERT_FALSE(Database.Open(Path + "/in a file"));
    const std::string older = Database.LastError();
    ASSERT_NE(older, "");
    OpenJournal();

    EXPECT_TRUE(Run());
    EXPECT_EQ(Database.LastError(), older);
    {
        const CallFailure failure(SQLiteCall::Prepare, 1, SQLITE_IOERR);
        EXPECT_FALSE(Run());
    }
    EXPECT_EQ(Database.LastError(), older);
    Database.Close();
    EXPECT_FALSE(Run());
    EXPECT_EQ(Database.LastError(), older);
}

TEST_P(OperationTest, AnOperationOnAClosedDatabaseIsRefusedAtOnce)
{
    Database.Close();
    EXPECT_FALSE(Run());
    EXPECT_TRUE(Calls.empty());

    PlantDatabase neverOpened;
    PlantRepository repository(neverOpened);
    EXPECT_FALSE(GetParam().Call(repository, Planted));
}

TEST_P(OperationTest, OnlyReadsSucceedWhileAnotherConnectionWrites)
{
    sqlite3_busy_timeout(Database.NativeHandle(), 0);
    bool done = false;
    {
        const PlainConnection other(Path);
        other.RunSQL(SQL::Begin);
        done = Run();
    }
    EXPECT_EQ(done, RanReadsOnly());
    EXPECT_EQ(std::count(Ran.begin(), Ran.end(), SQL::Rollback), 0);
    if (RanATransaction())
    {
        EXPECT_EQ(Ran.back(), SQL::Begin);
    }
    EXPECT_EQ(Content(), Before);
}

TEST_P(OperationTest, ACommitBlockedByAReaderIsRolledBack)
{
    sqlite3_busy_timeout(Database.NativeHandle(), 0);
    bool done = false;
    {
        const PlainConnection other(Path);
        other.RunSQL("BEGIN;");
        other.QueryRows("SELECT * FROM Strains;");
        done = Run();
    }
    EXPECT_EQ(done, RanReadsOnly());
    if (RanATransaction())
    {
        ASSERT_GE(Ran.size(), 2U);
        EXPECT_EQ(Ran[Ran.size() - 2], SQL::Commit);
        EXPECT_EQ(Ran.back(), SQL::Rollback);
    }
    ExpectNothingOpen();
    EXPECT_EQ(Content(), Before);
}

TEST_P(OperationTest, ACommitRefusedByAHookIsRolledBack)
{
    sqlite3_commit_hook(
        Database.NativeHandle(), [](void*) { return 1; }, nullptr);
    const bool done = Run();
    sqlite3_commit_hook(Database.NativeHandle(), nullptr, nullptr);
    EXPECT_EQ(done, RanReadsOnly());
    if (RanATransaction())
    {
        EXPECT_EQ(Ran.back(), SQL::Rollback);
    }
    ExpectNothingOpen();
    EXPECT_EQ(Content(), Before);
}

INSTANTIATE_TEST_SUITE_P(EveryOperation, OperationTest, testing::ValuesIn(Operations()),
                         [](const auto& test) { return test.param.Name; });

} // namespace
