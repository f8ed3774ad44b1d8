// Files with every earlier schema. Opening migrates them with all their rows, also after an interrupted migration.

#include "support/copy_over.h"
#include "support/figures.h"
#include "support/journal_test.h"
#include "support/test_form.h"
#include "testing/old_files.h"
#include "testing/schema_statements.h"

#include <algorithm>
#include <cctype>
#include <csignal>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <utility>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace support;

namespace
{

// ---- Schemas

// The parts of a CREATE TABLE statement: the text around the parentheses, then each column and constraint.
Statements PartsOf(const std::string& definition)
{
    Statements parts = {{}, {}};
    int depth = 0;
    bool quoted = false;
    for (const char c : definition)
    {
        if (c == '\'')
            quoted = !quoted;
        if (!quoted && c == ')')
            --depth;
        if (depth == 0)
            parts.front() += c;
        else if (depth == 1 && !quoted && c == ',')
            parts.emplace_back();
        else if (!parts.back().empty() || c != ' ')
            parts.back() += c;
        if (!quoted && c == '(')
            ++depth;
    }
    return parts;
}

bool Has(const Statements& parts, const std::string& part)
{
    return std::find(parts.begin(), parts.end(), part) != parts.end();
}

// The tables and indexes of a file, by type, name and table.
std::map<Row, Statements> SchemaOf(const PlainConnection& file)
{
    std::map<Row, Statements> schema;
    for (const Row& object : file.QueryRows("SELECT type,name,tbl_name,sql FROM sqlite_master;"))
    {
        Statements& parts = schema[{object[0], object[1], object[2]}];
        parts = object[0] == "table" ? PartsOf(object[3]) : Statements{object[3]};
        std::sort(parts.begin(), parts.end());
    }
    return schema;
}

const Row PlantTable = {"table", "Plants", "Plants"};
const Row EventTable = {"table", "PlantEvents", "PlantEvents"};

// The permitted differences between a migrated file and a new one. Added columns are also at the end of their table.
struct Difference
{
    Row Table;
    std::string New;
    Statements Old;
    std::string Reason;
};

const Difference NoCheckOfSex = {PlantTable,
                                 "CHECK(Sex IN ('Unknown','Female','Male','Hermaphrodite'))",
                                 {},
                                 "a column that is added to a table brings no constraint of the table"};
const Difference QuotedEvents = {EventTable,
                                 "CREATE TABLE PlantEvents ()",
                                 {"CREATE TABLE \"PlantEvents\" ()"},
                                 "SQLite quotes the name of a table that was renamed"};

void Apply(const Difference& difference, std::map<Row, Statements>& schema)
{
    Statements& parts = schema.at(difference.Table);
    ASSERT_TRUE(Has(parts, difference.New)) << difference.Reason;
    std::erase(parts, difference.New);
    parts.insert(parts.end(), difference.Old.begin(), difference.Old.end());
    std::sort(parts.begin(), parts.end());
}

Statements Names(const PlainConnection& file, const std::string& query)
{
    Statements names;
    for (const Row& row : file.QueryRows(query))
        names.push_back(row.at(0));
    return names;
}

Statements TablesOf(const PlainConnection& file)
{
    return Names(file, "SELECT name FROM sqlite_master WHERE type='table' ORDER BY name;");
}

Statements ColumnsOf(const PlainConnection& file, const std::string& table)
{
    return Names(file, "SELECT name FROM pragma_table_info('" + table + "');");
}

// The rows with the values of these columns as SQL literals, which show the types.
Rows RowsOf(const PlainConnection& file, const std::string& table, const Statements& columns)
{
    std::string values = "rowid";
    for (const std::string& column : columns)
        values += ",quote(" + column + ')';
    return file.QueryRows("SELECT " + values + " FROM " + table + " ORDER BY rowid;");
}

// The values of the added columns in earlier rows.
const std::map<std::string, std::string> Defaults = {
    {"SeedDate", "''"}, {"FlipHeightCm", "0.0"}, {"FinalHeightCm", "0.0"}, {"Sex", "'Unknown'"}, {"SeedYield", "0"}};

// The expected events of the files with an earlier event table.
constexpr auto Mother = "0f0f0f0f-0000-4000-8000-000000000005";
constexpr auto Clone = "0f0f0f0f-0000-4000-8000-000000000008";

const Rows ConvertedEvents = {
    {"11", Mother, "2019-05-01", "Topped", ""},
    {"12", Mother, "2019-05-02", "Water", "500 ml"},
    {"13", Mother, "2019-05-02", "LST Trained", ""},
    {"14", Mother, "2019-05-04", "Feed", ""},
    {"15", Mother, "2019-04-20", "Flip", ""},
    {"16", Mother, "2019-05-06", "Note", "the grower's \"own\" note: Süßkirsche, ½ l"},
    {"17", Clone, "2019-05-03", "Harvest", ""},
    {"18", Clone, "2019-04-01", "Clone", ""},
    {"19", Clone, "", "Feed", "Fed 2 ml"},
    {"71", Mother, "2019-05-07", "Defoliated", ""},
    {"72", Mother, "2019-03-12", "Transplant", ""},
    {"73", Mother, "2019-05-08", "Water", ""},
    {"74", Mother, "2019-05-08", "Stage", ""},
    {"75", Mother, "2019-05-09", "Note", "topped"},
};

// The events that only a table without a CHECK accepted.
const Rows ConvertedUncheckedEvents = {
    {"76", Mother, "2019-05-10", "Note", "tied down"},
    {"77", Mother, "2019-05-10", "Note", ""},
};

// ---- Each schema

// A file with an earlier schema.
class OldFileTest : public testing::TestWithParam<OldFile>
{
  protected:
    OldFileTest() { WriteOldFile(Original, GetParam()); }

    // Copies the original file to Path.
    void Restore() const
    {
        std::filesystem::remove(Path + "-journal");
        CopyOver(Original, Path);
    }

    // Opens and closes the file.
    void Open() const
    {
        PlantDatabase database;
        std::string error;
        EXPECT_TRUE(database.Open(Path, &error)) << error;
        if (database.IsOpen())
        {
            EXPECT_EQ(sqlite3_next_stmt(database.NativeHandle(), nullptr), nullptr);
            EXPECT_NE(sqlite3_get_autocommit(database.NativeHandle()), 0);
        }
        database.Close();
        EXPECT_FALSE(std::filesystem::exists(Path + "-journal"));
    }

    std::string Content() const { return ::Content(PlainConnection(Path).NativeHandle()); }

    // The content after an uninterrupted migration.
    std::string Migrated() const
    {
        Restore();
        Open();
        return Content();
    }

    void ExpectNextOpenFinishes(const std::string& finished) const
    {
        Open();
        const PlainConnection file(Path);
        EXPECT_EQ(::Content(file.NativeHandle()), finished);
        EXPECT_EQ(Damage(file.NativeHandle()), "ok");
    }

    // Opens the file in a process that is killed after the `number`-th call of this kind. Returns false if the opening
    // makes fewer calls.
    bool OpenAndCrash(SQLiteCall call, int number) const
    {
        const pid_t child = fork();
        if (child == 0)
        {
            const AfterCall crash(call, number, [] { static_cast<void>(std::raise(SIGKILL)); });
            PlantDatabase database;
            _exit(database.Open(Path) ? 0 : 1);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        const bool crashed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
        EXPECT_TRUE(crashed || (WIFEXITED(status) && WEXITSTATUS(status) == 0)) << status;
        AddToFigure("crashes", crashed ? 1 : 0);
        return crashed;
    }

    // Whether the file has an earlier event table.
    static bool HasOldEvents(const PlainConnection& file)
    {
        return file.Value("SELECT sql FROM sqlite_master WHERE name='PlantEvents';").find("'LST Trained'") ==
               std::string::npos;
    }

    ScratchDirectory Scratch;
    std::string Original = Scratch.File("original.db");
    std::string Path = Scratch.File("journal.db");
};

TEST_P(OldFileTest, AMigratedFileHasTheSchemaOfANewOne)
{
    Restore();
    Open();
    PlantDatabase made;
    ASSERT_TRUE(made.Open(Scratch.File("new.db")));
    const PlainConnection fresh(Scratch.File("new.db"));
    const PlainConnection before(Original);
    const PlainConnection after(Path);

    std::map<Row, Statements> expected = SchemaOf(fresh);
    if (!Has(SchemaOf(before)[PlantTable], NoCheckOfSex.New))
        Apply(NoCheckOfSex, expected);
    if (HasOldEvents(before) || Has(SchemaOf(before)[EventTable], QuotedEvents.Old.front()))
        Apply(QuotedEvents, expected);
    EXPECT_EQ(SchemaOf(after), expected);

    for (const std::string& table : TablesOf(before))
    {
        Statements columns = ColumnsOf(before, table);
        for (const AddedColumn& column : AddedColumns())
            if (column.Table == table && !Has(columns, column.Name))
                columns.push_back(column.Name);
        EXPECT_EQ(ColumnsOf(after, table), columns);
    }
    EXPECT_EQ(Damage(after.NativeHandle()), "ok");
}

TEST_P(OldFileTest, TheMigrationKeepsEveryRow)
{
    Restore();
    Open();
    const PlainConnection before(Original);
    const PlainConnection after(Path);
    const Statements tables = TablesOf(before);
    for (const std::string& table : TablesOf(after))
    {
        SCOPED_TRACE(table);
        if (!Has(tables, table))
        {
            EXPECT_EQ(RowsOf(after, table, {}), Rows{});
            continue;
        }
        const Statements columns = ColumnsOf(before, table);
        const Rows rows = RowsOf(before, table, columns);
        EXPECT_FALSE(rows.empty());
        AddToFigure("rows compared", rows.size());
        if (table != "PlantEvents" || !HasOldEvents(before))
        {
            EXPECT_EQ(RowsOf(after, table, columns), rows);
        }
        for (const std::string& column : ColumnsOf(after, table))
        {
            if (!Has(columns, column))
            {
                for (const Row& row : RowsOf(after, table, {column}))
                    EXPECT_EQ(row[1], Defaults.at(column));
            }
        }
    }
    if (HasOldEvents(before))
    {
        Rows events = ConvertedEvents;
        if (SchemaOf(before)[EventTable].size() == 6) // its name and its five columns
            events.insert(events.end(), ConvertedUncheckedEvents.begin(), ConvertedUncheckedEvents.end());
        EXPECT_EQ(after.QueryRows("SELECT ID,PlantUUID,EventDate,EventType,Details FROM PlantEvents ORDER BY ID;"),
                  events);
    }
}

TEST_P(OldFileTest, OpeningACurrentFileChangesNoByte)
{
    Restore();
    const std::string contentBefore = Content();
    Open();
    EXPECT_EQ(FileBytes(Path) == FileBytes(Original), Content() == contentBefore);
    const std::string bytes = FileBytes(Path);
    Open();
    EXPECT_EQ(FileBytes(Path), bytes);
}

TEST_P(OldFileTest, TheNextOpenFinishesAfterAnErrorAtAnyCall)
{
    const std::string finished = Migrated();
    int faults = 0;
    for (const SQLiteCall call : {SQLiteCall::Open, SQLiteCall::Exec, SQLiteCall::Prepare, SQLiteCall::Step})
        for (int number = 1;; ++number)
        {
            SCOPED_TRACE("call " + std::to_string(number) + " of kind " + std::to_string(static_cast<int>(call)));
            Restore();
            {
                PlantDatabase database;
                const CallFailure failure(call, number, SQLITE_IOERR);
                database.Open(Path);
                if (!failure.Happened())
                    break;
            }
            AddToFigure("faults");
            ++faults;
            ExpectNextOpenFinishes(finished);
        }
    EXPECT_GE(faults, 75);
}

TEST_P(OldFileTest, TheNextOpenFinishesAfterAKillAtAnyStatement)
{
    const std::string finished = Migrated();
    int crashes = 0;
    for (const SQLiteCall call : {SQLiteCall::Exec, SQLiteCall::Prepare})
        for (int number = 1;; ++number)
        {
            SCOPED_TRACE("call " + std::to_string(number) + " of kind " + std::to_string(static_cast<int>(call)));
            Restore();
            if (!OpenAndCrash(call, number))
                break;
            ++crashes;
            ExpectNextOpenFinishes(finished);
        }
    EXPECT_GE(crashes, 23);
}

TEST_P(OldFileTest, TheNextOpenFinishesAfterSeveralKills)
{
    const std::string finished = Migrated();
    std::mt19937_64 random(Seed());
    const TimeLimit time;
    for (int round = 0; IsLongForm() ? !time.IsOver() : round < 5; ++round)
    {
        SCOPED_TRACE(round);
        Restore();
        for (std::uint64_t crashes = 2 + random() % 4; crashes > 0; --crashes)
            OpenAndCrash(SQLiteCall::Exec, static_cast<int>(1 + random() % 30));
        ExpectNextOpenFinishes(finished);
    }
}

// SQLite writes a transaction that is larger than its cache to the file before the commit. After a kill the file has a
// part of it, and a rollback journal with which the next opening rolls it back:
// https://www.sqlite.org/atomiccommit.html#_hot_rollback_journals
TEST_P(OldFileTest, AHalfWrittenRebuildIsRolledBackAndRepeated)
{
    if (!HasOldEvents(PlainConnection(Original)))
        return;
    PlainConnection(Original).RunSQL("WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i+1 FROM n WHERE i<800) "
                                     "INSERT INTO PlantEvents(PlantUUID,EventType,Details) SELECT '" +
                                     std::string(Mother) + "','Note',printf('%.3000c','x') FROM n;");
    int rebuild = 0;
    Restore();
    {
        const CallRecorder recorder;
        Open();
        for (const RecordedCall& call : recorder.Calls())
        {
            rebuild += call.Call == SQLiteCall::Exec ? 1 : 0;
            if (call.SQL == RebuildStatements().front())
                break;
        }
    }
    const std::string finished = Content();
    const std::string original = FileBytes(Original);
    for (const int number : {rebuild + 3, rebuild + 4, rebuild + 5}) // behind the copying, the dropping, the renaming
    {
        SCOPED_TRACE(number);
        Restore();
        ASSERT_TRUE(OpenAndCrash(SQLiteCall::Exec, number));
        EXPECT_NE(FileBytes(Path), original);
        // SQLite marks a journal as one to go back by, by its first byte, before it writes into the file.
        EXPECT_TRUE(FileBytes(Path + "-journal").starts_with('\xd9'));
        AddToFigure("half-written rebuilds");
        ExpectNextOpenFinishes(finished);
    }
}

INSTANTIATE_TEST_SUITE_P(Form, OldFileTest, testing::ValuesIn(OldFiles()),
                         [](const auto& test) { return test.param.Name; });

// ---- All schemas

// The tests above need files with and without each column and index.
TEST(OldFilesTest, SomeFilesLackEachAddedColumnAndIndexAndOthersHaveIt)
{
    Statements later;
    for (const AddedColumn& column : AddedColumns())
        later.push_back(column.Name);
    for (const std::string& index : CreateIndexStatements())
        later.push_back(index.substr(27, index.find(" ON ") - 27));
    std::map<std::string, std::set<bool>> found;
    const ScratchDirectory scratch;
    for (const OldFile& file : OldFiles())
    {
        const std::string path = scratch.File(file.Name);
        WriteOldFile(path, file);
        const Statements names = Names(PlainConnection(path), "SELECT name FROM sqlite_master UNION SELECT name FROM "
                                                              "pragma_table_info('Plants') UNION SELECT name FROM "
                                                              "pragma_table_info('HarvestRecords');");
        for (const std::string& name : later)
            found[name].insert(Has(names, name));
        AddToFigure("schemas");
    }
    EXPECT_EQ(found.size(), AddedColumns().size() + CreateIndexStatements().size());
    for (const auto& [name, states] : found)
        EXPECT_EQ(states.size(), 2) << name;
    EXPECT_GE(AddToFigure("schemas", 0), 13);
}

} // namespace
