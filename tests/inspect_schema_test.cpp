#include "plant_file.h"

#include "support/inspect_test.h"
#include "support/sample_records.h"
#include "testing/old_files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

using namespace support;

namespace
{

using Texts = std::vector<std::string>;

PlantFileInspection InspectedBySchema(const std::string& path)
{
    PlantFileInspection found;
    found.Tables.emplace_back(); // stale
    found.FirstDate = found.LastDate = "stale";
    const PlantFileResult result = InspectPlantSchema(path, found);
    EXPECT_TRUE(result) << result.Error;
    EXPECT_TRUE(found.Tables.empty());
    EXPECT_EQ(found.FirstDate + found.LastDate, "");
    return found;
}

class InspectSchemaTest : public JournalTest
{
  protected:
    InspectSchemaTest()
    {
        StoreSampleRecords(Repository);
        Database.Close();
    }

    // What both inspections find in the file after these statements. Neither changes it.
    PlantFileInspection BothAfter(const std::string& sql) const
    {
        PlainConnection(Path).RunSQL(sql);
        const auto before = Scratch.Files();
        const PlantFileInspection whole = Inspected(Path);
        PlantFileInspection schema = InspectedBySchema(Path);
        EXPECT_EQ(schema.Kind, whole.Kind) << sql;
        EXPECT_EQ(schema.Steps, whole.Steps) << sql;
        EXPECT_EQ(schema.Reasons, whole.Reasons) << sql;
        EXPECT_EQ(schema.Bytes, whole.Bytes) << sql;
        EXPECT_EQ(schema.EventTypesUnchecked, whole.EventTypesUnchecked) << sql;
        EXPECT_TRUE(Scratch.Files() == before) << sql;
        return schema;
    }
    PlantFileKind KindAfter(const std::string& sql) const { return BothAfter(sql).Kind; }

    // Replaces the event table by one of this definition, with these event types in its rows.
    void ReplaceEventTable(const std::string& definition, const Texts& types) const
    {
        const PlainConnection file(Path);
        file.RunSQL("PRAGMA foreign_keys=OFF; DROP TABLE PlantEvents;" + definition);
        for (const std::string& type : types)
            file.RunSQL("INSERT INTO PlantEvents(PlantUUID,EventType) VALUES('p','" + type + "');");
        file.RunSQL("CREATE INDEX PlantEventsByPlantDate ON PlantEvents(PlantUUID,EventDate DESC,ID DESC);");
    }
    std::string EventTable() const
    {
        return PlainConnection(Path).Value("SELECT sql FROM sqlite_master WHERE name='PlantEvents';");
    }
};

TEST_F(InspectSchemaTest, EveryEarlierSchemaIsFoundAsByTheWholeInspection)
{
    for (const OldFile& old : OldFiles())
    {
        SCOPED_TRACE(old.Name);
        WriteOldFile(Path, old);
        const PlantFileInspection found = BothAfter("SELECT 1;");
        EXPECT_EQ(found.Kind, HasCurrentSchema(old) ? PlantFileKind::Current : PlantFileKind::Older);
        EXPECT_EQ(found.Steps.empty(), HasCurrentSchema(old));
        EXPECT_FALSE(found.EventTypesUnchecked); // the migration rebuilds a table without the CHECK
    }
}

TEST_F(InspectSchemaTest, AForeignSchemaIsFoundAsByTheWholeInspection)
{
    for (const char* sql :
         {"CREATE TABLE Bees(X);", "CREATE INDEX Quick ON Plants(Name);", "CREATE VIEW Seen AS SELECT 1;",
          "CREATE TRIGGER Late AFTER INSERT ON Plants BEGIN SELECT 1; END;", "ALTER TABLE Plants ADD COLUMN Colour;",
          "ALTER TABLE Plants DROP COLUMN Tent;", "DROP TABLE SchemaMeta; CREATE VIEW SchemaMeta AS SELECT 1;",
          "PRAGMA foreign_keys=OFF; DROP TABLE PlantEvents; CREATE VIEW PlantEvents AS SELECT 'Bee' AS EventType;",
          "DROP INDEX PlantsByStrain; CREATE INDEX PlantsByStrain ON Strains(Notes);", "PRAGMA journal_mode=WAL;"})
    {
        WriteOldFile(Path, OldFiles().back());
        const PlantFileInspection found = BothAfter(sql);
        EXPECT_EQ(found.Kind, PlantFileKind::Foreign) << sql;
        EXPECT_FALSE(found.Reasons.empty()) << sql;
        EXPECT_FALSE(found.EventTypesUnchecked) << sql;
    }
}

TEST_F(InspectSchemaTest, AMissingTableOrIndexIsFoundAsByTheWholeInspection)
{
    EXPECT_EQ(BothAfter("DROP INDEX PlantsByStrain;").Steps, Texts{"create index PlantsByStrain"});
    EXPECT_EQ(BothAfter("DROP TABLE SchemaMeta;").Steps,
              (Texts{"create table SchemaMeta", "create index PlantsByStrain"}));
    EXPECT_EQ(KindAfter("PRAGMA foreign_keys=OFF; DROP TABLE PlantEvents;"), PlantFileKind::Older);
}

TEST_F(InspectSchemaTest, ANewerListOfEventTypesIsForeign)
{
    OpenJournal();
    ReplaceInDefinitions("'Defoliated'", "'Defoliated','Repotted'");
    Database.Close();
    EXPECT_EQ(BothAfter("SELECT 1;").Reasons, Texts{"The event type \"Repotted\" is unknown to this version."});
}

// ---- What only rows show

TEST_F(InspectSchemaTest, AnEventTableWithoutItsCheckHasUncheckedEventTypes)
{
    const std::string sound = EventTable();
    const std::string unchecked = sound.substr(0, sound.find(", CHECK(")) + " /* 'LST Trained' */);";
    ReplaceEventTable(unchecked, {"Note", "Repotted"});
    const PlantFileInspection schema = InspectedBySchema(Path);
    EXPECT_EQ(schema.Kind, PlantFileKind::Current);
    EXPECT_TRUE(schema.EventTypesUnchecked);
    const PlantFileInspection whole = Inspected(Path);
    EXPECT_EQ(whole.Kind, PlantFileKind::Foreign);
    EXPECT_FALSE(whole.EventTypesUnchecked);

    ReplaceEventTable(unchecked, {"Note"});
    EXPECT_EQ(KindAfter("SELECT 1;"), PlantFileKind::Current);
    EXPECT_TRUE(BothAfter("SELECT 1;").EventTypesUnchecked);
    EXPECT_TRUE(BothAfter("DROP INDEX PlantsByStrain;").EventTypesUnchecked);
}

TEST_F(InspectSchemaTest, AnyOtherDefinitionOfTheEventTableHasUncheckedEventTypes)
{
    const std::string sound = EventTable();
    const std::string check = "CHECK(EventType IN (";
    const std::size_t begin = sound.find(check);
    const std::string list = sound.substr(begin + check.size());
    for (const std::string& other :
         {sound.substr(0, begin) + "CHECK(1 OR EventType IN (" + list,
          sound.substr(0, begin) + "CHECK(Details IN (" + list,
          sound.substr(0, begin) + "CHECK (EventType IN (" + list, // equivalent, but only the text is compared
          "CREATE TABLE PlantEvents /* ( */" + sound.substr(sound.find('('))})
    {
        ReplaceEventTable(other, {});
        EXPECT_EQ(BothAfter("SELECT 1;").Kind, PlantFileKind::Current) << other;
        EXPECT_TRUE(InspectedBySchema(Path).EventTypesUnchecked) << other;
    }
    ReplaceEventTable("CREATE TABLE 'PlantEvents'" + sound.substr(sound.find('(')), {});
    EXPECT_FALSE(BothAfter("SELECT 1;").EventTypesUnchecked);
}

TEST_F(InspectSchemaTest, NoPageOfATableOrIndexIsRead)
{
    const PlantFileInspection before = InspectedBySchema(Path);
    const Rows pages = PlainConnection(Path).QueryRows("SELECT rootpage FROM sqlite_master WHERE rootpage>0;");
    ASSERT_GE(pages.size(), 16U);
    {
        std::fstream file(Path, std::ios::in | std::ios::out | std::ios::binary);
        for (const Row& page : pages)
            file.seekp((std::stoi(page[0]) - 1) * 4096L) << std::string(4096, '\x7F');
    }
    EXPECT_EQ(Inspected(Path).Kind, PlantFileKind::Damaged);
    const PlantFileInspection after = InspectedBySchema(Path);
    EXPECT_EQ(after.Kind, PlantFileKind::Current);
    EXPECT_EQ(after.Bytes, before.Bytes);
}

TEST_F(InspectSchemaTest, TheNumberOfRowsDoesNotChangeTheStatements)
{
    const auto inspect = [&] { InspectedBySchema(Path); };
    const auto steps = [&]
    {
        const CallRecorder recorder;
        inspect();
        return recorder.CallCount(SQLiteCall::Step);
    };
    const Statements statements = StatementsOf(inspect);
    const int before = steps();
    PlainConnection(Path).RunSQL("WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL SELECT X+1 FROM N LIMIT 1000) "
                                 "INSERT INTO Strains(Name) SELECT X FROM N;");
    EXPECT_EQ(StatementsOf(inspect), statements);
    EXPECT_EQ(steps(), before);
}

// ---- Files that are not a journal

TEST_F(InspectSchemaTest, AFileThatIsNotAJournalIsFoundAsByTheWholeInspection)
{
    PlainConnection(Path).RunSQL("PRAGMA user_version=1;");
    std::filesystem::resize_file(Path, std::filesystem::file_size(Path) / 2);
    EXPECT_EQ(InspectedBySchema(Path).Kind, PlantFileKind::Damaged);
    EXPECT_EQ(InspectedBySchema(Path).Reasons, Inspected(Path).Reasons);
    std::ofstream(Path) << "some other text, which is longer than the header of a database: " << std::string(100, 'x');
    EXPECT_EQ(InspectedBySchema(Path).Kind, PlantFileKind::NotADatabase);
    EXPECT_EQ(InspectedBySchema(Path).Bytes, Inspected(Path).Bytes);
    std::ofstream(Path) << "";
    EXPECT_EQ(InspectedBySchema(Path).Kind, PlantFileKind::Empty);
    std::filesystem::remove(Path);
    EXPECT_EQ(KindAfter("CREATE TABLE T(X); DROP TABLE T;"), PlantFileKind::Empty);
    std::filesystem::remove(Path);
    EXPECT_EQ(InspectedBySchema(Path).Kind, PlantFileKind::Missing);
    EXPECT_TRUE(Scratch.Files().empty());
}

TEST_F(InspectSchemaTest, ALockedFileIsLocked)
{
    const PlainConnection other(Path);
    other.RunSQL("BEGIN EXCLUSIVE;");
    EXPECT_EQ(InspectedBySchema(Path).Kind, PlantFileKind::Locked);
}

TEST_F(InspectSchemaTest, AnInterruptedWriteIsFoundAndLeftAlone)
{
    const std::string torn = Scratch.File("torn.db");
    {
        const PlainConnection writer(Path);
        writer.RunSQL("PRAGMA cache_size=1; BEGIN; UPDATE Plants SET Notes=printf('%.9000c','x');");
        std::filesystem::copy_file(Path, torn);
        std::filesystem::copy_file(Path + "-journal", torn + "-journal");
    }
    const auto before = Scratch.Files();
    EXPECT_EQ(InspectedBySchema(torn).Kind, PlantFileKind::Interrupted);
    EXPECT_TRUE(Scratch.Files() == before);
}

TEST_F(InspectSchemaTest, APathThatNamesNoFileIsAnError)
{
    for (const std::string& path : {std::string(), Scratch.File("")})
    {
        PlantFileInspection whole;
        PlantFileInspection schema;
        schema.Steps = {"stale"};
        EXPECT_EQ(InspectPlantSchema(path, schema).Error, InspectPlantDatabase(path, whole).Error);
        EXPECT_FALSE(InspectPlantSchema(path, schema));
        EXPECT_TRUE(schema.Steps.empty());
    }
}

} // namespace
