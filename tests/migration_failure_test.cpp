// Migrations that a failing call interrupts.

#include "support/migration_test.h"
#include "testing/schema_statements.h"

#include <algorithm>
#include <filesystem>
#include <ostream>

#include <gtest/gtest.h>
#include <sqlite3.h>

using namespace support;

namespace
{

constexpr auto NotOpened = "unable to open database file";

struct Start
{
    std::string Name;
    bool Exists;
    EarlierForm File;
    bool HasTheColumns;
};

std::ostream& operator<<(std::ostream& out, const Start& start)
{
    return out << start.Name;
}

// Opens a file with a failing call. After any failure, the next open must migrate the file completely.
class InterruptionTest : public MigrationTest, public testing::WithParamInterface<Start>
{
  protected:
    InterruptionTest()
    {
        if (GetParam().Exists)
            WriteEarlierFile(Original, GetParam().File);
        Restore();
        Migrate();
        After = Content();
    }

    void Restore() const
    {
        std::filesystem::remove(Path);
        if (GetParam().Exists)
            std::filesystem::copy_file(Original, Path);
    }

    // Restores the file and opens it with a failing call. Returns true if the failure did not happen.
    template <typename... Arguments> bool OpenedWithout(Arguments... call)
    {
        Restore();
        Error = "untouched";
        bool happened = false;
        {
            const CallRecorder recorder;
            const CallFailure failure(call...);
            Opened = Database.Open(Path, &Error);
            happened = failure.Happened();
            Run = recorder.Statements();
        }
        if (Opened)
        {
            EXPECT_EQ(Error, "untouched");
            EXPECT_EQ(sqlite3_next_stmt(Database.NativeHandle(), nullptr), nullptr);
            Database.Close();
        }
        ExpectClosed();
        EXPECT_TRUE(happened || Opened);
        return !happened;
    }

    void ExpectFailed(const std::string& reason) const
    {
        EXPECT_FALSE(Opened);
        EXPECT_EQ(Error, reason);
        EXPECT_EQ(Database.LastError(), reason);
    }

    void ExpectThatTheNextOpenMigrates()
    {
        Migrate();
        EXPECT_EQ(Content(), After);
    }

    std::string Original = Scratch.File("original.db");
    const Statements Opening = OpeningStatements(GetParam().File.MissingColumns, GetParam().File.OldEvents);
    std::string After;
    bool Opened = false;
    std::string Error;
    Statements Run;
};

bool IsQuery(const std::string& sql)
{
    return sql.starts_with("PRAGMA table_info") || sql.starts_with("SELECT");
}

TEST_P(InterruptionTest, AFailedStatementEndsTheOpening)
{
    const auto rebuild = std::find(Opening.begin(), Opening.end(), "PRAGMA foreign_keys=OFF;") - Opening.begin();
    const Rows events = GetParam().Exists ? PlainConnection(Original).QueryRows("SELECT * FROM PlantEvents;") : Rows{};
    int number = 0;
    for (std::ptrdiff_t place = 0; place < std::ssize(Opening); ++place)
    {
        const std::string& statement = Opening[static_cast<std::size_t>(place)];
        if (IsQuery(statement))
            continue;
        SCOPED_TRACE(statement);
        EXPECT_FALSE(OpenedWithout(SQLiteCall::Exec, ++number, SQLITE_IOERR));

        Statements expected(Opening.begin(), Opening.begin() + place + 1);
        const std::ptrdiff_t step = place - rebuild;
        const bool rebuilding = step >= 0 && step < std::ssize(RebuildStatements());
        if (rebuilding)
        {
            expected.emplace_back("ROLLBACK;");
            expected.emplace_back("PRAGMA foreign_keys=ON;");
        }
        EXPECT_EQ(Run, expected);
        const bool inTransaction = step >= 2 && step <= 6;
        ExpectFailed(rebuilding && !inTransaction ? NoTransaction : "not an error");
        if (rebuilding && step < 7)
        {
            EXPECT_EQ(QueryRows("SELECT * FROM PlantEvents;"), events);
        }
        if (!GetParam().Exists)
        {
            EXPECT_EQ(QueryRows("SELECT COUNT(*) FROM sqlite_master WHERE sql IS NOT NULL;"),
                      Rows{{std::to_string(std::max(number - 2, 0))}});
        }
        ExpectThatTheNextOpenMigrates();
    }
    EXPECT_TRUE(OpenedWithout(SQLiteCall::Exec, ++number, SQLITE_IOERR));
}

TEST_P(InterruptionTest, AFailedSearchForAColumnCountsItAsMissing)
{
    for (const SQLiteCall call : {SQLiteCall::Prepare, SQLiteCall::Step})
        for (int number = 1; !OpenedWithout(call, number, SQLITE_IOERR, "PRAGMA table_info"); ++number)
        {
            SCOPED_TRACE(number);
            if (GetParam().HasTheColumns)
            {
                ASSERT_FALSE(Run.empty());
                const auto& columns = AddedColumns();
                const auto column = std::find_if(columns.begin(), columns.end(),
                                                 [&](const AddedColumn& c) { return c.Statement == Run.back(); });
                ASSERT_NE(column, columns.end()) << Run.back();
                ExpectFailed("duplicate column name: " + column->Name);
                if (call == SQLiteCall::Prepare)
                {
                    EXPECT_EQ(column - columns.begin(), number - 1);
                }
            }
            else
            {
                EXPECT_TRUE(Opened);
                EXPECT_EQ(Run, Opening);
            }
            ExpectThatTheNextOpenMigrates();
        }
}

TEST_P(InterruptionTest, AnUnpreparedEventTableQueryFailsWithoutAMessage)
{
    for (const std::string before : {"", NotOpened})
    {
        if (!before.empty())
        {
            EXPECT_FALSE(Database.Open(Scratch.File("")));
        }
        EXPECT_FALSE(OpenedWithout(SQLiteCall::Prepare, 1, SQLITE_IOERR, "SELECT sql FROM sqlite_master"));
        ExpectFailed(before);
        EXPECT_TRUE(Run.back().starts_with("SELECT sql"));
        ExpectThatTheNextOpenMigrates();
    }
}

TEST_P(InterruptionTest, AnUnreadEventTableDefinitionPostponesTheRebuild)
{
    EXPECT_FALSE(OpenedWithout(SQLiteCall::Step, 1, SQLITE_IOERR, "SELECT sql FROM sqlite_master"));
    EXPECT_TRUE(Opened);
    EXPECT_EQ(Run, OpeningStatements(GetParam().File.MissingColumns));
    ExpectThatTheNextOpenMigrates();
}

INSTANTIATE_TEST_SUITE_P(OfA, InterruptionTest,
                         testing::Values(Start{"NewFile", false, {}, true}, Start{"CurrentFile", true, {}, true},
                                         Start{"OldFile", true, OldestForm(), false}),
                         [](const auto& test) { return test.param.Name; });

} // namespace
