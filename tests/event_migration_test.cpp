// The rebuild of an event table of an earlier schema.

#include "support/migration_test.h"
#include "testing/schema_statements.h"

#include <algorithm>
#include <chrono>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>
#include <sqlite3.h>

using namespace support;

namespace
{

constexpr auto UncheckedEvents =
    "CREATE TABLE PlantEvents (ID INTEGER PRIMARY KEY, PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE "
    "CASCADE, EventDate TEXT NOT NULL DEFAULT '', EventType TEXT NOT NULL DEFAULT 'Note', Details TEXT NOT NULL "
    "DEFAULT '')";

TEST_F(MigrationTest, OldNotesGetTheirTypeAndLoseStockPhrases)
{
    WriteFileWithEvents(UncheckedEvents, "INSERT INTO PlantEvents VALUES(-4,'m','2019','Note','Topped'),"
                                         "(2,'m','2019-05-02','Water','Watered'),(3,'m','','Feed','Fed 2 ml'),"
                                         "(9223372036854775807,'unknown','later','Training','tied down'),"
                                         "(7,'c','x','Note','Defoliated'),(8,'c','x','Harvest','Harvested');");
    Migrate();
    EXPECT_EQ(QueryRows("SELECT * FROM PlantEvents;"),
              (Rows{{"-4", "m", "2019", "Topped", ""},
                    {"2", "m", "2019-05-02", "Water", ""},
                    {"3", "m", "", "Feed", "Fed 2 ml"},
                    {"7", "c", "x", "Defoliated", ""},
                    {"8", "c", "x", "Harvest", ""},
                    {"9223372036854775807", "unknown", "later", "Note", "tied down"}}));
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

TEST_F(MigrationTest, ARebuiltEventTableHasTheConstraintsOfANewOne)
{
    WriteEarlierFile(Path, OldestForm());
    ASSERT_TRUE(Database.Open(Path));
    const auto execute = [&](const std::string& sql)
    { return sqlite3_exec(Database.NativeHandle(), sql.c_str(), nullptr, nullptr, nullptr); };
    EXPECT_EQ(execute("INSERT INTO PlantEvents(PlantUUID,EventType) VALUES('m','LST Trained');"), SQLITE_OK);
    EXPECT_EQ(execute("INSERT INTO PlantEvents(PlantUUID,EventType) VALUES('m','Training');"), SQLITE_CONSTRAINT);
    EXPECT_EQ(execute("INSERT INTO PlantEvents(PlantUUID) VALUES('unknown');"), SQLITE_CONSTRAINT);
    EXPECT_EQ(execute("DELETE FROM PlantEvents WHERE ID IN (12,17);"), SQLITE_OK);
    EXPECT_EQ(
        QueryRows("SELECT TimelineEventID FROM PlantCareEntries UNION ALL SELECT TimelineEventID FROM HarvestRecords;"),
        (Rows{{"NULL"}, {"NULL"}, {"NULL"}}));
    EXPECT_EQ(execute("DELETE FROM Plants;"), SQLITE_OK);
    EXPECT_EQ(QueryRows("SELECT COUNT(*) FROM PlantEvents;"), Rows{{"0"}});
}

TEST_F(MigrationTest, AnEventTableWithoutTheNewestTypeIsRebuilt)
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

TEST_F(MigrationTest, AnEventTableNamedInOtherCaseIsNotRebuilt)
{
    const std::string definition = Replaced(UncheckedEvents, "PlantEvents", "plantevents");
    WriteFileWithEvents(definition);
    Migrate();
    EXPECT_EQ(QueryRows("SELECT sql FROM sqlite_master WHERE name='plantevents';"), Rows{{definition}});
}

TEST_F(MigrationTest, AViewInPlaceOfTheEventTableIsRefused)
{
    const std::string definition = "CREATE VIEW PlantEvents AS SELECT 1 AS PlantUUID";
    WriteFileWithEvents(definition);
    ExpectFailure("views may not be indexed");
    EXPECT_EQ(QueryRows("SELECT sql FROM sqlite_master WHERE name LIKE 'PlantEvents%';"), Rows{{definition}});
}

TEST_F(MigrationTest, AFailedRebuildReportsTheReasonAndChangesNothing)
{
    const std::pair<std::string, std::string> obstacles[] = {
        {"CREATE TABLE PlantEvents_Migrated (ID);", "table PlantEvents_Migrated already exists"},
        {"ALTER TABLE PlantEvents RENAME COLUMN Details TO Remarks;", "no such column: Details"},
        {"CREATE VIEW Broken AS SELECT x FROM nowhere;", "error in view Broken: no such table: main.nowhere"},
    };
    for (const auto& [obstacle, reason] : obstacles)
    {
        WriteEarlierFile(Path, {{}, true, false});
        RunSQL(obstacle);
        const std::string before = Content();
        ExpectFailure(reason);
        EXPECT_EQ(Content(), before);
    }
}

TEST_F(MigrationTest, ClosingRollsBackARebuildWhoseRollbackFailed)
{
    const std::string leftover = "table PlantEvents_Migrated already exists";
    const std::tuple<std::string, int, std::string> recoveries[] = {{"ROLLBACK;", 1, leftover},
                                                                    {"PRAGMA foreign_keys=ON;", 2, "not an error"}};
    for (const auto& [statement, number, reason] : recoveries)
    {
        WriteEarlierFile(Path, {{}, true, false});
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

TEST_F(MigrationTest, ARebuildWaitsForTheLockAndThenFails)
{
    WriteEarlierFile(Path, {{}, true, false});
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

TEST_F(MigrationTest, ACurrentFileOpensWhileAnotherConnectionWrites)
{
    WriteEarlierFile(Path, {});
    const PlainConnection other(Path);
    other.RunSQL("BEGIN IMMEDIATE;");
    const auto start = std::chrono::steady_clock::now();
    Migrate();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2'400));
}

} // namespace
