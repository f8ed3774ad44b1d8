// Opening and closing a journal file, and the messages of failures.

#include "plant_database.h"
#include "support/journal_test.h"
#include "support/repository_operations.h"
#include "support/utf8_path.h"
#include "testing/schema_statements.h"

#include <filesystem>
#include <fstream>
#include <type_traits>

#include <gtest/gtest.h>
#include <sqlite3.h>

using namespace support;

namespace
{

static_assert(std::is_default_constructible_v<PlantDatabase>);
static_assert(!std::is_copy_constructible_v<PlantDatabase> && !std::is_copy_assignable_v<PlantDatabase>);
static_assert(!std::is_move_constructible_v<PlantDatabase> && !std::is_move_assignable_v<PlantDatabase>);
static_assert(!std::is_polymorphic_v<PlantDatabase>);

constexpr auto CannotOpen = "unable to open database file";

void WriteFile(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

// A closed database, and a scratch directory for its files.
class DatabaseTest : public testing::Test
{
  protected:
    DatabaseTest() { std::filesystem::create_directory(Directory); }

    void ExpectClosed() const
    {
        EXPECT_FALSE(Database.IsOpen());
        EXPECT_EQ(Database.NativeHandle(), nullptr);
        EXPECT_EQ(Database.Path(), "");
    }

    void ExpectOpen(const std::string& path) const
    {
        ASSERT_TRUE(Database.IsOpen()) << Database.LastError();
        EXPECT_NE(Database.NativeHandle(), nullptr);
        EXPECT_EQ(Database.Path(), path);
        EXPECT_EQ(QueryRows(Database.NativeHandle(), "SELECT COUNT(*) FROM sqlite_master WHERE sql IS NOT NULL;"),
                  Rows{{"16"}});
    }

    // Expects that opening `path` fails and reports `reason`.
    void ExpectRefused(const std::string& path, const std::string& reason)
    {
        std::string error = "untouched";
        EXPECT_FALSE(Database.Open(path, &error));
        EXPECT_EQ(error, reason);
        EXPECT_EQ(Database.LastError(), reason);
        ExpectClosed();
    }

    // Whether no other connection has `path` locked.
    static bool IsFree(const std::string& path)
    {
        const PlainConnection other(path);
        return sqlite3_exec(other.NativeHandle(), "BEGIN EXCLUSIVE; COMMIT;", nullptr, nullptr, nullptr) == SQLITE_OK;
    }

    void Lock() const { RunSQL(Database.NativeHandle(), "BEGIN EXCLUSIVE;"); }

    ScratchDirectory Scratch;
    std::string Path = Scratch.File("journal.db");
    std::string Directory = Scratch.File("a directory");
    PlantDatabase Database;
};

// ---- Opening

TEST_F(DatabaseTest, ADatabaseStartsClosedAndWithoutAnError)
{
    ExpectClosed();
    EXPECT_EQ(Database.LastError(), "");
}

TEST_F(DatabaseTest, OpenCreatesTheFileAndLeavesTheErrorUnchanged)
{
    std::string error = "untouched";
    EXPECT_TRUE(Database.Open(Path, &error));
    ExpectOpen(Path);
    EXPECT_EQ(error, "untouched");
    EXPECT_EQ(Database.LastError(), "");
    EXPECT_TRUE(std::filesystem::is_regular_file(Path));
}

TEST_F(DatabaseTest, OpenCreatesAllMissingDirectories)
{
    const std::string path = Scratch.File("one/two/three/journal.db");
    EXPECT_TRUE(Database.Open(path));
    ExpectOpen(path);
    EXPECT_TRUE(std::filesystem::is_regular_file(path));
}

TEST_F(DatabaseTest, OpenTakesThePathAsUTF8)
{
    const std::string path = Scratch.File("Mein Gärtchen/Pflänzchen № 1.db");
    EXPECT_TRUE(Database.Open(path));
    ExpectOpen(path);
    EXPECT_TRUE(std::filesystem::is_regular_file(UTF8Path(path)));
}

TEST_F(DatabaseTest, OpenOfAPathThatIsNotUTF8DoesNotThrow)
{
    std::string error;
    bool opened = false;
    EXPECT_NO_THROW(opened = Database.Open(Scratch.File("Pfl\xE4nzchen.db"), &error));
    EXPECT_NE(opened, !error.empty()); // it depends on the file system whether it has such names
}

TEST_F(DatabaseTest, OpenTakesABareFileNameInTheCurrentDirectory)
{
    const std::filesystem::path previous = std::filesystem::current_path();
    std::filesystem::current_path(Directory);
    EXPECT_TRUE(Database.Open("bare.db"));
    std::filesystem::current_path(previous);
    ExpectOpen("bare.db");
    EXPECT_TRUE(std::filesystem::is_regular_file(Directory + "/bare.db"));
}

// Both are private to the connection and deleted when it closes.
TEST_F(DatabaseTest, OpenCreatesAnInMemoryAndATemporaryDatabase)
{
    for (const std::string& path : {std::string(":memory:"), std::string()})
    {
        SCOPED_TRACE(path);
        for (int time = 0; time < 2; ++time)
        {
            EXPECT_TRUE(Database.Open(path));
            ExpectOpen(path);
            EXPECT_STREQ(sqlite3_db_filename(Database.NativeHandle(), "main"), "");
            PlantRepository repository(Database);
            std::vector<Plant> plants;
            EXPECT_TRUE(repository.ListPlants(plants));
            EXPECT_TRUE(plants.empty());
            Plant plant;
            EXPECT_TRUE(repository.CreatePlant(plant));
        }
    }
    EXPECT_FALSE(std::filesystem::exists(":memory:"));
}

TEST_F(DatabaseTest, OpenRunsTheSchemaStatementsInOrder)
{
    const CallRecorder recorder;
    EXPECT_TRUE(Database.Open(Path));
    ASSERT_FALSE(recorder.Calls().empty());
    EXPECT_EQ(recorder.Calls().front().Call, SQLiteCall::Open);
    EXPECT_EQ(recorder.Calls().front().SQL, Path);
    EXPECT_EQ(recorder.CallCount(SQLiteCall::Open), 1);
    EXPECT_EQ(recorder.Statements(), OpeningStatements());
    EXPECT_EQ(recorder.CallCount(SQLiteCall::Finalize), recorder.CallCount(SQLiteCall::Prepare));
}

TEST_F(DatabaseTest, AConnectionWaitsForLocksAndEnforcesForeignKeys)
{
    ASSERT_TRUE(Database.Open(Path));
    EXPECT_EQ(QueryRows(Database.NativeHandle(), "PRAGMA busy_timeout;"), Rows{{"2500"}});
    EXPECT_EQ(QueryRows(Database.NativeHandle(), "PRAGMA foreign_keys;"), Rows{{"1"}});
    EXPECT_EQ(sqlite3_db_readonly(Database.NativeHandle(), "main"), 0);
}

// The program may have configured SQLite to open connections without a mutex by default.
TEST_F(DatabaseTest, AConnectionIsSerialized)
{
    const auto restart = [](int mode)
    {
        EXPECT_EQ(sqlite3_shutdown(), SQLITE_OK);
        EXPECT_EQ(sqlite3_config(mode), SQLITE_OK);
        EXPECT_EQ(sqlite3_initialize(), SQLITE_OK);
    };
    restart(SQLITE_CONFIG_MULTITHREAD);
    EXPECT_TRUE(Database.Open(Path));
    EXPECT_NE(sqlite3_db_mutex(Database.NativeHandle()), nullptr);
    Database.Close();
    restart(SQLITE_CONFIG_SERIALIZED);
}

TEST_F(DatabaseTest, OpenOfAnotherFileClosesTheFirst)
{
    const std::string other = Scratch.File("other.db");
    ASSERT_TRUE(Database.Open(Path));
    Lock();
    EXPECT_TRUE(Database.Open(other));
    ExpectOpen(other);
    EXPECT_TRUE(IsFree(Path));
}

// ---- Closing

TEST_F(DatabaseTest, CloseReleasesTheFile)
{
    ASSERT_TRUE(Database.Open(Path));
    Lock();
    EXPECT_FALSE(IsFree(Path));
    Database.Close();
    ExpectClosed();
    EXPECT_TRUE(IsFree(Path));
    Database.Close();
    ExpectClosed();
}

TEST_F(DatabaseTest, DestructionReleasesTheFile)
{
    {
        PlantDatabase another;
        ASSERT_TRUE(another.Open(Path));
        RunSQL(another.NativeHandle(), "BEGIN EXCLUSIVE;");
        EXPECT_FALSE(IsFree(Path));
    }
    EXPECT_TRUE(IsFree(Path));
}

// SQLite keeps the connection until the statement is finalized.
TEST_F(DatabaseTest, CloseSucceedsWhileAStatementIsOpen)
{
    ASSERT_TRUE(Database.Open(Path));
    Lock();
    sqlite3_stmt* statement = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(Database.NativeHandle(), "SELECT 1;", -1, &statement, nullptr), SQLITE_OK);
    Database.Close();
    ExpectClosed();
    EXPECT_EQ(sqlite3_step(statement), SQLITE_ROW);
    EXPECT_FALSE(IsFree(Path));
    EXPECT_EQ(sqlite3_finalize(statement), SQLITE_OK);
    EXPECT_TRUE(IsFree(Path));
}

// ---- Failures

TEST_F(DatabaseTest, OpenOfADirectoryReportsSQLitesReason)
{
    ExpectRefused(Directory, CannotOpen);
}

TEST_F(DatabaseTest, OpenReportsADirectoryThatCannotBeCreated)
{
    WriteFile(Path, "");
    ExpectRefused(Path + "/journal.db", CannotOpen);
    EXPECT_EQ(FileBytes(Path), "");
}

TEST_F(DatabaseTest, OpenRefusesAFileThatIsNotADatabase)
{
    const std::string content(2'000, '\n');
    WriteFile(Path, content);
    ExpectRefused(Path, "file is not a database");
    EXPECT_EQ(FileBytes(Path), content);
}

TEST_F(DatabaseTest, OpenMakesAnEmptyFileAJournal)
{
    WriteFile(Path, "");
    EXPECT_TRUE(Database.Open(Path));
    ExpectOpen(Path);
}

TEST_F(DatabaseTest, OpenReportsThatSQLiteMadeNoConnection)
{
    const CallFailure failure(SQLiteCall::Open, 1, SQLITE_NOMEM);
    ExpectRefused(Path, "Could not open database");
    EXPECT_TRUE(failure.Happened());
    EXPECT_FALSE(std::filesystem::exists(Path));
}

// SQLite would ignore the rest of the name.
TEST_F(DatabaseTest, OpenRefusesANameWithAZeroByte)
{
    using namespace std::string_literals;
    const std::string directory = Scratch.File("new directory");
    for (const std::string& path : {Path + '\0', Path + "\0.db"s, "\0"s, ":memory:\0"s, directory + "\0/journal.db"s,
                                    directory + "/journal.db\0"s})
    {
        const CallRecorder recorder;
        ExpectRefused(path, "Could not open database");
        EXPECT_TRUE(recorder.Calls().empty());
    }
    EXPECT_FALSE(std::filesystem::exists(Path));
    EXPECT_FALSE(std::filesystem::exists(directory));
}

TEST_F(DatabaseTest, AFailedOpenClosesTheFileThatWasOpen)
{
    using namespace std::string_literals;
    for (const std::string& path : {Directory, Directory + "\0.db"s})
    {
        ASSERT_TRUE(Database.Open(Path));
        Lock();
        EXPECT_FALSE(Database.Open(path));
        ExpectClosed();
        EXPECT_TRUE(IsFree(Path));
    }
}

TEST_F(DatabaseTest, OpenWithANullErrorSetsTheLastError)
{
    WriteFile(Path, std::string(2'000, '\n'));
    EXPECT_FALSE(Database.Open(Directory));
    EXPECT_EQ(Database.LastError(), CannotOpen);
    EXPECT_FALSE(Database.Open(Path, nullptr));
    EXPECT_EQ(Database.LastError(), "file is not a database");
    ExpectClosed();
    EXPECT_TRUE(Database.Open(":memory:", nullptr));
}

TEST_F(DatabaseTest, ALaterSuccessKeepsTheLastError)
{
    ExpectRefused(Directory, CannotOpen);
    std::string error = "untouched";
    EXPECT_TRUE(Database.Open(Path, &error));
    EXPECT_EQ(error, "untouched");
    EXPECT_EQ(Database.LastError(), CannotOpen);
    Database.Close();
    EXPECT_EQ(Database.LastError(), CannotOpen);
}

TEST_F(DatabaseTest, TheLastErrorIsACopy)
{
    const std::string before = Database.LastError();
    ExpectRefused(Directory, CannotOpen);
    EXPECT_EQ(before, "");
    static_assert(std::is_same_v<decltype(Database.LastError()), std::string>);
    static_assert(std::is_same_v<decltype(Database.Path()), const std::string&>);
}

TEST_F(DatabaseTest, AFailedOperationKeepsTheLastError)
{
    ExpectRefused(Directory, CannotOpen);
    ASSERT_TRUE(Database.Open(Path));
    PlantRepository repository(Database);
    const SampleRecords sample = StoreSampleRecords(repository);
    for (const Operation& operation : Operations())
    {
        SampleRecords copy = sample;
        const CallFailure failure(SQLiteCall::Prepare, 1, SQLITE_ERROR);
        EXPECT_FALSE(operation.Call(repository, copy)) << operation;
        EXPECT_EQ(Database.LastError(), CannotOpen) << operation;
    }
}

} // namespace
