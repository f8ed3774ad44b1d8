// The helpers themselves: a test that leans on one which never fails would prove nothing.

#include "support/allocation_failure.h"
#include "support/journal_test.h"

#include <array>
#include <filesystem>
#include <memory>
#include <new>
#include <stdexcept>

#include <sqlite3.h>

namespace
{

TEST(ScratchDirectoryTest, IsThereInItsScopeAndGoneAfterwards)
{
    std::string file;
    {
        const ScratchDirectory scratch;
        file = scratch.File("journal.db");
        EXPECT_TRUE(std::filesystem::is_directory(std::filesystem::path(file).parent_path()));
        PlainConnection(file).Execute("CREATE TABLE T(X);");
        EXPECT_EQ(FileBytes(file).substr(0, 15), "SQLite format 3");
    }
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(file).parent_path()));
    EXPECT_THROW(FileBytes(file), std::runtime_error);
}

TEST(PlainConnectionTest, ReadsBackWhatItWritesAndReportsFailure)
{
    const PlainConnection connection(":memory:");
    connection.Execute("CREATE TABLE T(X,Y); INSERT INTO T VALUES(1,NULL),('a',0.5);");
    EXPECT_EQ(connection.Query("SELECT X,Y FROM T ORDER BY rowid;"), (Rows{{"1", "NULL"}, {"a", "0.5"}}));
    EXPECT_EQ(connection.Value("SELECT COUNT(*) FROM T;"), "2");
    EXPECT_THROW(connection.Execute("INSERT INTO U VALUES(1);"), std::runtime_error);
    EXPECT_THROW(connection.Query("SELECT abs(-9223372036854775808);"), std::runtime_error);
    EXPECT_THROW(PlainConnection("/nowhere/at/all.db"), std::runtime_error);
}

TEST(PlainConnectionTest, TellsContentsApartByTypeAndByTheLastDigit)
{
    const auto contentOf = [](const std::string& value)
    {
        const PlainConnection connection(":memory:");
        connection.Execute("CREATE TABLE T(X); INSERT INTO T VALUES(" + value + ");");
        return Content(connection.NativeHandle());
    };
    EXPECT_EQ(contentOf("1"), contentOf("1"));
    EXPECT_NE(contentOf("1"), contentOf("'1'"));
    EXPECT_NE(contentOf("NULL"), contentOf("''"));
    EXPECT_NE(contentOf("0.1"), contentOf("0.10000000000000002"));
}

TEST(PlainConnectionTest, FindsDamageAndLinksThatLeadNowhere)
{
    const PlainConnection connection(":memory:");
    connection.Execute("CREATE TABLE A(X PRIMARY KEY); CREATE TABLE B(Y REFERENCES A(X)); INSERT INTO A VALUES('a');");
    connection.Execute("INSERT INTO B VALUES('a');");
    EXPECT_EQ(Damage(connection.NativeHandle()), "ok");
    connection.Execute("INSERT INTO B VALUES('b');");
    EXPECT_EQ(Damage(connection.NativeHandle()), "ok\nrow 2 of B has lost its A");
    connection.Execute("DELETE FROM B; CREATE TABLE C(Z CHECK(Z>0)); PRAGMA ignore_check_constraints=ON; "
                       "INSERT INTO C VALUES(0); PRAGMA ignore_check_constraints=OFF;");
    EXPECT_EQ(Damage(connection.NativeHandle()), "CHECK constraint failed in C");
}

TEST(RecordsTest, DifferInEveryFieldThatDiffers)
{
    PlantEvent event;
    PlantEvent other;
    EXPECT_EQ(event, other);
    other.Type = PlantEventType::Flip;
    EXPECT_FALSE(event == other);
    PlantCareEntry care;
    PlantCareEntry otherCare;
    otherCare.EC = 5e-324;
    EXPECT_FALSE(care == otherCare);
}

class SupportTest : public JournalTest
{
};

TEST_F(SupportTest, ARecorderSeesTheCallsOfTheLibraryInTheirOrder)
{
    const CallRecorder recorder;
    EXPECT_TRUE(Repository.DeletePlantEvent(7));
    std::vector<SQLiteCall> calls;
    for (const RecordedCall& recorded : recorder.Calls())
    {
        calls.push_back(recorded.Call);
        EXPECT_EQ(recorded.SQL, "DELETE FROM PlantEvents WHERE ID=?;");
    }
    EXPECT_EQ(calls, (std::vector{SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step, SQLiteCall::Finalize}));
    EXPECT_EQ(recorder.Statements(), (Statements{"DELETE FROM PlantEvents WHERE ID=?;"}));
    EXPECT_EQ(recorder.Count(SQLiteCall::Bind), 1);
}

TEST_F(SupportTest, AFailureMeetsTheOneCallThatItIsMeantFor)
{
    const CallFailure failure(SQLiteCall::Step, 2, SQLITE_FULL, "DELETE FROM PlantEvents");
    EXPECT_TRUE(Repository.DeletePlantJournalEntry(7));
    EXPECT_TRUE(Repository.DeletePlantEvent(7));
    EXPECT_FALSE(failure.Happened());
    EXPECT_FALSE(Repository.DeletePlantEvent(7));
    EXPECT_TRUE(failure.Happened());
    EXPECT_TRUE(Repository.DeletePlantEvent(7));
}

TEST_F(SupportTest, AnAllocationFailureMeetsTheOneAllocationThatItIsMeantFor)
{
    const auto fails = []
    {
        try
        {
            operator delete(operator new(1));
            return false;
        }
        catch (const std::bad_alloc&)
        {
            return true;
        }
    };
    std::array<bool, 3> failed{};
    {
        const AllocationFailure failure(Allocator::New, 2);
        for (bool& each : failed)
            each = fails();
    }
    EXPECT_EQ(failed, (std::array{false, true, false}));
    {
        const AllocationFailure failure(Allocator::SQLite, 1);
        EXPECT_EQ(sqlite3_malloc(100'000), nullptr);
        EXPECT_TRUE(failure.Happened());
    }
    const std::unique_ptr<void, decltype(&sqlite3_free)> memory(sqlite3_malloc(100'000), sqlite3_free);
    EXPECT_NE(memory, nullptr);
}

} // namespace
