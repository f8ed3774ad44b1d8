// Files of earlier versions, brought up to date when they are opened.

#include "support/journal_test.h"
#include "testing/schema_statements.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <filesystem>
#include <ostream>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>
#include <sqlite3.h>

using namespace support;

namespace
{

constexpr auto NoTransaction = "cannot rollback - no transaction is active";
constexpr auto CannotOpen = "unable to open database file";

// ---- Files of earlier versions

// What a file of an earlier version does not have yet. A file that lacks nothing is a current one.
struct Form
{
    Statements MissingColumns;
    bool OldEvents = false;
    bool NoIndexes = false;
};

const Form Current;

Form Oldest()
{
    Form form{{}, true, true};
    for (const AddedColumn& column : AddedColumns())
        form.MissingColumns.push_back(column.Name);
    return form;
}

bool Lacks(const Form& form, const std::string& column)
{
    return std::find(form.MissingColumns.begin(), form.MissingColumns.end(), column) != form.MissingColumns.end();
}

Statements TablesOf(const Form& form)
{
    Statements tables = CreateTableStatements();
    std::string& plants = tables[2];
    std::string& events = tables[3];
    for (const AddedColumn& column : AddedColumns())
    {
        if (!Lacks(form, column.Name))
            continue;
        std::string& table = column.Table == "Plants" ? plants : tables[5];
        const std::string definition = column.Statement.substr(column.Statement.find("COLUMN ") + 7);
        table = Replaced(table, definition.substr(0, definition.size() - 1) + ", ", "");
        if (column.Name == "Sex")
            plants = Replaced(plants, ", CHECK(Sex IN ('Unknown','Female','Male','Hermaphrodite'))", "");
    }
    if (form.OldEvents)
        events = Replaced(events, "'Topped','LST Trained','Defoliated',", "");
    return tables;
}

// Something in every table, and in every column that came later where the file has it.
constexpr auto Records =
    "INSERT INTO SchemaMeta VALUES('a key','a value');"
    "INSERT INTO Strains VALUES(3,'Roma','a breeder',9,'keeps well');"
    "INSERT INTO Plants(ID,UUID,Name,Strain,MotherPlantID,Stage,Tent,PotSize,Medium,CloneDate,TransplantDate,FlipDate,"
    "HarvestDate,Notes) VALUES(5,'m','Mother','Roma',NULL,'Flower','Tent','5 l','soil','1','2','3','4','notes'),"
    "(8,'c','Clone','',5,'Veg','','','','','','','','');"
    "INSERT INTO PlantEvents VALUES(11,'m','2019-05-01','Note','Topped'),(12,'m','2019-05-02','Water','Watered'),"
    "(17,'c','2019-05-03','Harvest','Harvested'),(19,'c','','Feed','Fed 2 ml');"
    "INSERT INTO PlantCareEntries VALUES(21,12,'m','2019-05-02','Water','water',500,1.25,6.5,20,'notes'),"
    "(23,NULL,'m','2019-05-04','Feed','',0,0,0,0,'');"
    "INSERT INTO HarvestRecords(ID,TimelineEventID,PlantUUID,HarvestDate,WetWeightG,DryWeightG,QualityRating,"
    "CureOutcome,Notes) VALUES(31,17,'c','2019-05-03',100.5,20.25,8.5,'good','notes');"
    "INSERT INTO PlantPhotos VALUES(41,'f','m','2019-05-05','a/b.jpg','caption');"
    "INSERT INTO PlantHealthObservations VALUES(51,'m','2019-05-06','thrips',3,'soap','notes');"
    "INSERT INTO PlantJournalEntries VALUES(61,'c','2019-05-07','Topping','above the fifth node');";

constexpr std::pair<const char*, const char*> AddedValues[] = {{"SeedDate", "'2019-02-03'"},
                                                               {"FlipHeightCm", "40.5"},
                                                               {"FinalHeightCm", "120.25"},
                                                               {"Sex", "'Female'"},
                                                               {"SeedYield", "12"}};

// Writes a file of an earlier version with records in it.
void WriteFile(const std::string& path, const Form& form)
{
    std::filesystem::remove(path);
    const PlainConnection file(path);
    file.RunSQL("BEGIN;");
    for (const std::string& table : TablesOf(form))
        file.RunSQL(table);
    if (!form.NoIndexes)
        for (const std::string& index : CreateIndexStatements())
            file.RunSQL(index);
    file.RunSQL(Records);
    for (const auto& [column, value] : AddedValues)
        if (!Lacks(form, column))
            file.RunSQL(std::string("UPDATE ") + (column == std::string("SeedYield") ? "HarvestRecords" : "Plants") +
                        " SET " + column + '=' + value + ';');
    file.RunSQL("COMMIT;");
}

// A current file without records.
struct FreshFile : PlainConnection
{
    FreshFile() : PlainConnection(":memory:")
    {
        for (const std::string& table : CreateTableStatements())
            RunSQL(table);
    }
};

// A closed database and the path of a file.
class MigrationTest : public testing::Test
{
  protected:
    // Opens the file and closes it again.
    void Migrate()
    {
        std::string error;
        EXPECT_TRUE(Database.Open(Path, &error)) << error;
        Database.Close();
    }

    void ExpectClosed() const
    {
        EXPECT_FALSE(Database.IsOpen());
        EXPECT_EQ(Database.NativeHandle(), nullptr);
        EXPECT_EQ(Database.Path(), "");
    }

    void ExpectFailure(const std::string& reason)
    {
        std::string error = "untouched";
        EXPECT_FALSE(Database.Open(Path, &error));
        EXPECT_EQ(error, reason);
        EXPECT_EQ(Database.LastError(), reason);
        ExpectClosed();
    }

    // Writes a file whose event table has this definition and these rows.
    void WriteFileWithEvents(const std::string& definition, const std::string& rows = {}) const
    {
        WriteFile(Path, Current);
        RunSQL("DROP TABLE PlantEvents;" + definition + ';' + rows);
    }

    void RunSQL(const std::string& sql) const { PlainConnection(Path).RunSQL(sql); }
    Rows QueryRows(const std::string& sql) const { return PlainConnection(Path).QueryRows(sql); }
    std::string Content() const { return ::Content(PlainConnection(Path).NativeHandle()); }

    ScratchDirectory Scratch;
    std::string Path = Scratch.File("journal.db");
    PlantDatabase Database;
};

// ---- Every form

Form FormOf(const std::tuple<unsigned, bool, bool>& parameter)
{
    const auto& [columns, oldEvents, noIndexes] = parameter;
    Form form{{}, oldEvents, noIndexes};
    for (std::size_t i = 0; i < AddedColumns().size(); ++i)
        if ((columns >> i & 1U) != 0)
            form.MissingColumns.push_back(AddedColumns()[i].Name);
    return form;
}

class EarlierFormTest : public MigrationTest, public testing::WithParamInterface<std::tuple<unsigned, bool, bool>>
{
  protected:
    EarlierFormTest() { WriteFile(Path, File); }

    Statements StatementsOfMigration()
    {
        const CallRecorder recorder;
        Migrate();
        EXPECT_EQ(recorder.CallCount(SQLiteCall::Finalize), recorder.CallCount(SQLiteCall::Prepare));
        return recorder.Statements();
    }

    void ExpectCurrentTablesAndIndexes() const;
    void ExpectEveryRecord() const;

    // What `column` holds after the migration.
    std::string Value(const std::string& column, const std::string& kept, const std::string& initial) const
    {
        return Lacks(File, column) ? initial : kept;
    }

    const Form File = FormOf(GetParam());
};

void EarlierFormTest::ExpectCurrentTablesAndIndexes() const
{
    const FreshFile fresh;
    for (const std::string table : {"Plants", "HarvestRecords"})
    {
        const std::string query = "SELECT name,type,\"notnull\",dflt_value,pk FROM pragma_table_info('" + table + "');";
        Rows columns = fresh.QueryRows(query);
        for (const AddedColumn& added : AddedColumns()) // those that were missing stand at the end
            if (added.Table == table && Lacks(File, added.Name))
            {
                const auto isThis = [&](const Row& column) { return column[0] == added.Name; };
                const auto place = std::find_if(columns.begin(), columns.end(), isThis);
                std::rotate(place, place + 1, columns.end());
            }
        EXPECT_EQ(QueryRows(query), columns);
    }

    const Statements before = TablesOf(File);
    Rows tables;
    for (std::size_t i = 0; i < before.size(); ++i)
        if (i == 3 && File.OldEvents)
            tables.push_back({Replaced(StoredStatement(CreateTableStatements()[3]), "PlantEvents", "\"PlantEvents\"")});
        else if (i != 2 && i != 5) // what SQLite makes of these two when it adds a column is its own affair
            tables.push_back({StoredStatement(before[i])});
    std::sort(tables.begin(), tables.end());
    EXPECT_EQ(QueryRows("SELECT sql FROM sqlite_master WHERE type='table' AND name NOT IN ('Plants','HarvestRecords') "
                        "ORDER BY sql;"),
              tables);
    Rows indexes;
    for (const std::string& index : CreateIndexStatements())
        indexes.push_back({StoredStatement(index)});
    std::sort(indexes.begin(), indexes.end());
    EXPECT_EQ(QueryRows("SELECT sql FROM sqlite_master WHERE type='index' AND sql IS NOT NULL ORDER BY sql;"), indexes);
    EXPECT_EQ(QueryRows("SELECT type FROM sqlite_master WHERE type NOT IN ('table','index');"), Rows{});
}

void EarlierFormTest::ExpectEveryRecord() const
{
    const PlainConnection file(Path);
    const std::string seedDate = Value("SeedDate", "2019-02-03", "");
    const std::string flipHeight = Value("FlipHeightCm", "40.5", "0.0");
    const std::string finalHeight = Value("FinalHeightCm", "120.25", "0.0");
    const std::string sex = Value("Sex", "Female", "Unknown");
    EXPECT_EQ(file.QueryRows("SELECT * FROM SchemaMeta;"), (Rows{{"a key", "a value"}}));
    EXPECT_EQ(file.QueryRows("SELECT * FROM Strains;"), (Rows{{"3", "Roma", "a breeder", "9", "keeps well"}}));
    EXPECT_EQ(
        file.QueryRows("SELECT ID,UUID,Name,Strain,MotherPlantID,Stage,Sex,Tent,PotSize,Medium,SeedDate,FlipHeightCm,"
                       "FinalHeightCm,CloneDate,TransplantDate,FlipDate,HarvestDate,Notes FROM Plants;"),
        (Rows{{"5", "m", "Mother", "Roma", "NULL", "Flower", sex, "Tent", "5 l", "soil", seedDate, flipHeight,
               finalHeight, "1", "2", "3", "4", "notes"},
              {"8", "c", "Clone", "", "5", "Veg", sex, "", "", "", seedDate, flipHeight, finalHeight, "", "", "", "",
               ""}}));
    if (File.OldEvents)
        EXPECT_EQ(file.QueryRows("SELECT * FROM PlantEvents;"), (Rows{{"11", "m", "2019-05-01", "Topped", ""},
                                                                      {"12", "m", "2019-05-02", "Water", ""},
                                                                      {"17", "c", "2019-05-03", "Harvest", ""},
                                                                      {"19", "c", "", "Feed", "Fed 2 ml"}}));
    else
        EXPECT_EQ(file.QueryRows("SELECT * FROM PlantEvents;"), (Rows{{"11", "m", "2019-05-01", "Note", "Topped"},
                                                                      {"12", "m", "2019-05-02", "Water", "Watered"},
                                                                      {"17", "c", "2019-05-03", "Harvest", "Harvested"},
                                                                      {"19", "c", "", "Feed", "Fed 2 ml"}}));
    EXPECT_EQ(file.QueryRows("SELECT * FROM PlantCareEntries;"),
              (Rows{{"21", "12", "m", "2019-05-02", "Water", "water", "500.0", "1.25", "6.5", "20.0", "notes"},
                    {"23", "NULL", "m", "2019-05-04", "Feed", "", "0.0", "0.0", "0.0", "0.0", ""}}));
    EXPECT_EQ(
        file.QueryRows("SELECT ID,TimelineEventID,PlantUUID,HarvestDate,WetWeightG,DryWeightG,QualityRating,SeedYield,"
                       "CureOutcome,Notes FROM HarvestRecords;"),
        (Rows{
            {"31", "17", "c", "2019-05-03", "100.5", "20.25", "8.5", Value("SeedYield", "12", "0"), "good", "notes"}}));
    EXPECT_EQ(file.QueryRows("SELECT * FROM PlantPhotos;"),
              (Rows{{"41", "f", "m", "2019-05-05", "a/b.jpg", "caption"}}));
    EXPECT_EQ(file.QueryRows("SELECT * FROM PlantHealthObservations;"),
              (Rows{{"51", "m", "2019-05-06", "thrips", "3", "soap", "notes"}}));
    EXPECT_EQ(file.QueryRows("SELECT * FROM PlantJournalEntries;"),
              (Rows{{"61", "c", "2019-05-07", "Topping", "above the fifth node"}}));
    EXPECT_EQ(file.QueryRows("PRAGMA foreign_key_check;"), Rows{});
    EXPECT_EQ(file.QueryRows("PRAGMA integrity_check;"), Rows{{"ok"}});
}

TEST_P(EarlierFormTest, IsBroughtUpToDateOnceAndKeepsEveryRecord)
{
    EXPECT_EQ(StatementsOfMigration(), OpeningStatements(File.MissingColumns, File.OldEvents));
    ExpectCurrentTablesAndIndexes();
    ExpectEveryRecord();

    const std::string bytes = FileBytes(Path);
    EXPECT_EQ(StatementsOfMigration(), OpeningStatements());
    EXPECT_EQ(FileBytes(Path), bytes);
}

std::string NameOf(const testing::TestParamInfo<std::tuple<unsigned, bool, bool>>& test)
{
    const Form form = FormOf(test.param);
    std::string name = "FileWithout";
    for (const std::string& column : form.MissingColumns)
        name += column;
    return name + (form.OldEvents ? "NewEvents" : "") + (form.NoIndexes ? "Indexes" : "");
}

INSTANTIATE_TEST_SUITE_P(A, EarlierFormTest,
                         testing::Combine(testing::Range(0U, 32U), testing::Bool(), testing::Bool()), NameOf);

// ---- Tables

TEST_F(MigrationTest, AMissingTableIsMadeAndTheOthersKeepTheirRecords)
{
    Statements tables = {"SchemaMeta",         "Strains",        "Plants",      "PlantEvents",
                         "PlantCareEntries",   "HarvestRecords", "PlantPhotos", "PlantHealthObservations",
                         "PlantJournalEntries"};
    std::vector<Statements> missing = {tables};
    for (const std::string& table : tables)
        missing.push_back({table});
    for (const Statements& some : missing)
    {
        SCOPED_TRACE(some.front());
        std::string expected;
        for (const std::string work : {"DELETE FROM ", "DROP TABLE "})
        {
            WriteFile(Path, Current);
            for (const std::string& table : some)
                RunSQL(work + table + ';');
            if (expected.empty())
                expected = Content();
        }
        EXPECT_NE(Content(), expected);
        Migrate();
        EXPECT_EQ(Content(), expected);
    }
}

TEST_F(MigrationTest, AColumnSpelledInOtherLettersIsNotTheColumn)
{
    for (const AddedColumn& column : AddedColumns())
        for (const bool upper : {false, true})
        {
            std::string spelling = column.Name;
            std::transform(spelling.begin(), spelling.end(), spelling.begin(),
                           [&](char c) { return static_cast<char>(upper ? std::toupper(c) : std::tolower(c)); });
            WriteFile(Path, {{column.Name}});
            RunSQL(Replaced(column.Statement, column.Name, spelling));
            const std::string bytes = FileBytes(Path);
            ExpectFailure("duplicate column name: " + column.Name);
            EXPECT_EQ(FileBytes(Path), bytes);
        }
}

TEST_F(MigrationTest, ColumnsAreLookedForOneByOneUpToTheFirstThatFits)
{
    const CallRecorder recorder;
    Migrate();
    std::vector<std::string> steps;
    for (const RecordedCall& call : recorder.Calls())
        if (call.Call == SQLiteCall::Step)
            steps.push_back(call.SQL);
    std::vector<std::string> expected(11 + 12 + 13 + 7, "PRAGMA table_info(Plants);");
    expected.insert(expected.end(), 8, "PRAGMA table_info(HarvestRecords);");
    expected.emplace_back("SELECT sql FROM sqlite_master WHERE type='table' AND name='PlantEvents';");
    EXPECT_EQ(steps, expected);
}

// ---- The event table

constexpr auto UncheckedEvents =
    "CREATE TABLE PlantEvents (ID INTEGER PRIMARY KEY, PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE "
    "CASCADE, EventDate TEXT NOT NULL DEFAULT '', EventType TEXT NOT NULL DEFAULT 'Note', Details TEXT NOT NULL "
    "DEFAULT '')";

TEST_F(MigrationTest, NotesThatWereTrainingBecomeItAndStockPhrasesGo)
{
    WriteFileWithEvents(UncheckedEvents, "INSERT INTO PlantEvents VALUES(-4,'m','2019','Note','Topped'),"
                                         "(2,'m','2019-05-02','Water','Watered'),(3,'m','','Feed','Fed 2 ml'),"
                                         "(9223372036854775807,'nobody','later','Training','tied down'),"
                                         "(7,'c','x','Note','Defoliated'),(8,'c','x','Harvest','Harvested');");
    Migrate();
    EXPECT_EQ(QueryRows("SELECT * FROM PlantEvents;"),
              (Rows{{"-4", "m", "2019", "Topped", ""},
                    {"2", "m", "2019-05-02", "Water", ""},
                    {"3", "m", "", "Feed", "Fed 2 ml"},
                    {"7", "c", "x", "Defoliated", ""},
                    {"8", "c", "x", "Harvest", ""},
                    {"9223372036854775807", "nobody", "later", "Note", "tied down"}}));
}

TEST_F(MigrationTest, EveryTypeIsConvertedWithEveryText)
{
    const Statements types = {"Clone", "Transplant", "Flip",        "Harvest",    "Feed", "Water",
                              "Stage", "Topped",     "LST Trained", "Defoliated", "Note"};
    const Statements phrases = {"Watered",      "Fed",    "Topped",         "LST Trained", "Defoliated",
                                "Transplanted", "Cloned", "Flip to Flower", "Harvested"};
    const Statements noteTypes = {"Topped", "LST Trained", "Defoliated"};
    const auto isOneOf = [](const Statements& words, const std::string& word)
    { return std::find(words.begin(), words.end(), word) != words.end(); };
    const auto with = [](Statements words, const Statements& more)
    {
        words.insert(words.end(), more.begin(), more.end());
        return words;
    };

    std::string insert;
    Rows expected;
    for (const std::string& type : with(types, {"Training", "Pruning", "note", "NOTE", "Note ", " Note", "",
                                                "LSTTrained", "lst trained", "topped"}))
        for (const std::string& text :
             with(phrases, {"", "topped", "TOPPED", " Topped", "Topped ", "LST  Trained", "LSTTrained", "lst trained",
                            "Fed 2 ml", "Watered.", "Flip To Flower", "Note", "Ärmel | ½ l"}))
        {
            insert += Replaced(
                Replaced("INSERT INTO PlantEvents(PlantUUID,EventType,Details) VALUES('m','?','!');", "!", text), "?",
                type);
            const std::string unlessNote = isOneOf(types, type) ? type : "Note";
            expected.push_back(
                {type == "Note" && isOneOf(noteTypes, text) ? text : unlessNote, isOneOf(phrases, text) ? "" : text});
        }
    WriteFileWithEvents(UncheckedEvents, "BEGIN;" + insert + "COMMIT;");
    Migrate();
    EXPECT_EQ(QueryRows("SELECT EventType,Details FROM PlantEvents ORDER BY ID;"), expected);
}

TEST_F(MigrationTest, ARebuiltEventTableIsLinkedAndCheckedLikeANewOne)
{
    WriteFile(Path, Oldest());
    ASSERT_TRUE(Database.Open(Path));
    const auto execute = [&](const std::string& sql)
    { return sqlite3_exec(Database.NativeHandle(), sql.c_str(), nullptr, nullptr, nullptr); };
    EXPECT_EQ(execute("INSERT INTO PlantEvents(PlantUUID,EventType) VALUES('m','LST Trained');"), SQLITE_OK);
    EXPECT_EQ(execute("INSERT INTO PlantEvents(PlantUUID,EventType) VALUES('m','Training');"), SQLITE_CONSTRAINT);
    EXPECT_EQ(execute("INSERT INTO PlantEvents(PlantUUID) VALUES('nobody');"), SQLITE_CONSTRAINT);
    EXPECT_EQ(execute("DELETE FROM PlantEvents WHERE ID IN (12,17);"), SQLITE_OK);
    EXPECT_EQ(
        QueryRows("SELECT TimelineEventID FROM PlantCareEntries UNION ALL SELECT TimelineEventID FROM HarvestRecords;"),
        (Rows{{"NULL"}, {"NULL"}, {"NULL"}}));
    EXPECT_EQ(execute("DELETE FROM Plants;"), SQLITE_OK);
    EXPECT_EQ(QueryRows("SELECT COUNT(*) FROM PlantEvents;"), Rows{{"0"}});
}

TEST_F(MigrationTest, TheEventTableIsOldIfItsDefinitionDoesNotNameTheNewestType)
{
    const std::pair<std::string, bool> remarks[] = {
        {"", true},
        {", CHECK(EventType IN ('Note','Training'))", true},
        {", CHECK(EventType IN ('Note','lst trained','LST TRAINED'))", true},
        {", CHECK(EventType IN ('Note','LSTTrained','LST  Trained',' LST Trained ')) /* LST Trained */", true},
        {" /* \"LST Trained\" */", true},
        {", CHECK(EventType IN ('Note','LST Trained'))", false},
        {" /* 'LST Trained' */", false},
    };
    for (const auto& [remark, old] : remarks)
    {
        std::string definition = UncheckedEvents;
        definition.insert(definition.size() - 1, remark);
        WriteFileWithEvents(definition);
        Migrate();
        EXPECT_EQ(QueryRows("SELECT sql FROM sqlite_master WHERE name='PlantEvents';") == Rows{{definition}}, !old)
            << remark;
    }
}

TEST_F(MigrationTest, AnEventTableUnderAnotherSpellingIsLeftAsItIs)
{
    const std::string definition = Replaced(UncheckedEvents, "PlantEvents", "plantevents");
    WriteFileWithEvents(definition);
    Migrate();
    EXPECT_EQ(QueryRows("SELECT sql FROM sqlite_master WHERE name='plantevents';"), Rows{{definition}});
}

TEST_F(MigrationTest, AViewInTheEventTablesPlaceIsRefusedAndLeftAsItIs)
{
    const std::string definition = "CREATE VIEW PlantEvents AS SELECT 1 AS PlantUUID";
    WriteFileWithEvents(definition);
    ExpectFailure("views may not be indexed");
    EXPECT_EQ(QueryRows("SELECT sql FROM sqlite_master WHERE name LIKE 'PlantEvents%';"), Rows{{definition}});
}

TEST_F(MigrationTest, AFailedRebuildTellsSQLitesReasonAndChangesNothing)
{
    const std::pair<std::string, std::string> obstacles[] = {
        {"CREATE TABLE PlantEvents_Migrated (ID);", "table PlantEvents_Migrated already exists"},
        {"ALTER TABLE PlantEvents RENAME COLUMN Details TO Remarks;", "no such column: Details"},
        {"CREATE VIEW Broken AS SELECT x FROM nowhere;", "error in view Broken: no such table: main.nowhere"},
    };
    for (const auto& [obstacle, reason] : obstacles)
    {
        WriteFile(Path, {{}, true, false});
        RunSQL(obstacle);
        const std::string before = Content();
        ExpectFailure(reason);
        EXPECT_EQ(Content(), before);
    }
}

TEST_F(MigrationTest, AFailedRebuildThatCannotBeTakenBackIsTakenBackByClosing)
{
    const std::string leftover = "table PlantEvents_Migrated already exists";
    const std::tuple<std::string, int, std::string> recoveries[] = {{"ROLLBACK;", 1, leftover},
                                                                    {"PRAGMA foreign_keys=ON;", 2, "not an error"}};
    for (const auto& [statement, number, reason] : recoveries)
    {
        WriteFile(Path, {{}, true, false});
        RunSQL("CREATE TABLE PlantEvents_Migrated (ID);");
        const std::string before = Content();
        {
            const CallRecorder recorder;
            const CallFailure failure(SQLiteCall::Exec, number, SQLITE_IOERR, statement);
            ExpectFailure(reason);
            EXPECT_TRUE(failure.Happened());
            EXPECT_EQ(recorder.Statements().back(), "PRAGMA foreign_keys=ON;");
        }
        EXPECT_EQ(Content(), before);
        RunSQL("DROP TABLE PlantEvents_Migrated;");
        Migrate();
    }
}

TEST_F(MigrationTest, ARebuildWaitsForTheFileAndGivesUp)
{
    WriteFile(Path, {{}, true, false});
    const std::string before = Content();
    {
        const PlainConnection other(Path);
        other.RunSQL("BEGIN IMMEDIATE;");
        const auto start = std::chrono::steady_clock::now();
        ExpectFailure(NoTransaction);
        const auto waited = std::chrono::steady_clock::now() - start;
        EXPECT_GE(waited, std::chrono::milliseconds(2'400));
    }
    EXPECT_EQ(Content(), before);
    Migrate();
    EXPECT_NE(Content(), before);
}

TEST_F(MigrationTest, ACurrentFileOpensWhileItIsBeingWritten)
{
    WriteFile(Path, Current);
    const PlainConnection other(Path);
    other.RunSQL("BEGIN IMMEDIATE;");
    const auto start = std::chrono::steady_clock::now();
    Migrate();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2'400));
}

// ---- Interruptions

struct Start
{
    std::string Name;
    bool Exists;
    Form File;
    bool HasTheColumns;
};

std::ostream& operator<<(std::ostream& out, const Start& start)
{
    return out << start.Name;
}

// Opens a file with a failure on the way, again and again. Whatever happened, the next opening brings the file to where
// an undisturbed one would have brought it.
class InterruptionTest : public MigrationTest, public testing::WithParamInterface<Start>
{
  protected:
    InterruptionTest()
    {
        if (GetParam().Exists)
            WriteFile(Original, GetParam().File);
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

    // Opens the file, as it was at first, with a failing call. True once that has not happened any more.
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

    void ExpectThatNothingIsLost()
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

bool IsLookUp(const std::string& sql)
{
    return sql.starts_with("PRAGMA table_info") || sql.starts_with("SELECT");
}

TEST_P(InterruptionTest, OfAStatementEndsTheOpening)
{
    const auto rebuild = std::find(Opening.begin(), Opening.end(), "PRAGMA foreign_keys=OFF;") - Opening.begin();
    const Rows events = GetParam().Exists ? PlainConnection(Original).QueryRows("SELECT * FROM PlantEvents;") : Rows{};
    int number = 0;
    for (std::ptrdiff_t place = 0; place < std::ssize(Opening); ++place)
    {
        const std::string& statement = Opening[static_cast<std::size_t>(place)];
        if (IsLookUp(statement))
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
        ExpectThatNothingIsLost();
    }
    EXPECT_TRUE(OpenedWithout(SQLiteCall::Exec, ++number, SQLITE_IOERR));
}

TEST_P(InterruptionTest, OfALookForAColumnTakesItForMissing)
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
            ExpectThatNothingIsLost();
        }
}

TEST_P(InterruptionTest, OfTheLookAtTheEventTableEndsTheOpeningWithoutAReasonOfItsOwn)
{
    for (const std::string before : {"", CannotOpen})
    {
        if (!before.empty())
        {
            EXPECT_FALSE(Database.Open(Scratch.File("")));
        }
        EXPECT_FALSE(OpenedWithout(SQLiteCall::Prepare, 1, SQLITE_IOERR, "SELECT sql FROM sqlite_master"));
        ExpectFailed(before);
        EXPECT_TRUE(Run.back().starts_with("SELECT sql"));
        ExpectThatNothingIsLost();
    }
}

TEST_P(InterruptionTest, OfReadingTheEventTablesDefinitionPutsTheRebuildOff)
{
    EXPECT_FALSE(OpenedWithout(SQLiteCall::Step, 1, SQLITE_IOERR, "SELECT sql FROM sqlite_master"));
    EXPECT_TRUE(Opened);
    EXPECT_EQ(Run, OpeningStatements(GetParam().File.MissingColumns));
    ExpectThatNothingIsLost();
}

INSTANTIATE_TEST_SUITE_P(OfA, InterruptionTest,
                         testing::Values(Start{"NewFile", false, {}, true}, Start{"CurrentFile", true, {}, true},
                                         Start{"OldFile", true, Oldest(), false}),
                         [](const auto& test) { return test.param.Name; });

} // namespace
