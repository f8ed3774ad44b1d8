// The schema of a journal file and its constraints.

#include "support/journal_test.h"
#include "support/repository_operations.h"
#include "testing/schema_statements.h"

#include <algorithm>
#include <ostream>
#include <set>
#include <utility>

#include <sqlite3.h>

using namespace support;

namespace
{

// ---- Tables

struct TableForm
{
    std::string Name;
    Rows Columns;     // name, type, NOT NULL, default, position in the primary key
    Rows ForeignKeys; // column, referenced table, referenced column, ON DELETE
    Statements Unique;
};

std::ostream& operator<<(std::ostream& out, const TableForm& form)
{
    return out << form.Name;
}

const Row RowID = {"ID", "INTEGER", "0", "NULL", "1"};
const Row PlantUUID = {"PlantUUID", "TEXT", "1", "NULL", "0"};
const Row EventLink = {"TimelineEventID", "INTEGER", "0", "NULL", "0"};
const Row PlantReference = {"PlantUUID", "Plants", "UUID", "CASCADE"};
const Row EventReference = {"TimelineEventID", "PlantEvents", "ID", "SET NULL"};

Row Text(const std::string& name, const std::string& initial = "''")
{
    return {name, "TEXT", "1", initial, "0"};
}

Row TextWithoutDefault(const std::string& name)
{
    return Text(name, "NULL");
}

Row Real(const std::string& name)
{
    return {name, "REAL", "1", "0", "0"};
}

Row Integer(const std::string& name, const std::string& initial = "0")
{
    return {name, "INTEGER", "1", initial, "0"};
}

const TableForm TableForms[] = {
    {"SchemaMeta", {{"Key", "TEXT", "0", "NULL", "1"}, TextWithoutDefault("Value")}, {}, {"Key"}},
    {"Strains",
     {RowID, TextWithoutDefault("Name"), Text("Breeder"), Integer("FloweringWeeks"), Text("Notes")},
     {},
     {"Name"}},
    {"Plants",
     {RowID,
      TextWithoutDefault("UUID"),
      TextWithoutDefault("Name"),
      Text("Strain"),
      {"MotherPlantID", "INTEGER", "0", "NULL", "0"},
      Text("Stage", "'Veg'"),
      Text("Sex", "'Unknown'"),
      Text("Tent"),
      Text("PotSize"),
      Text("Medium"),
      Text("SeedDate"),
      Real("FlipHeightCm"),
      Real("FinalHeightCm"),
      Text("CloneDate"),
      Text("TransplantDate"),
      Text("FlipDate"),
      Text("HarvestDate"),
      Text("Notes")},
     {{"MotherPlantID", "Plants", "ID", "SET NULL"}},
     {"UUID"}},
    {"PlantEvents",
     {RowID, PlantUUID, Text("EventDate"), Text("EventType", "'Note'"), Text("Details")},
     {PlantReference},
     {}},
    {"PlantCareEntries",
     {RowID, EventLink, PlantUUID, Text("CareDate"), Text("Action", "'Water'"), Text("Product"), Real("AmountMl"),
      Real("EC"), Real("PH"), Real("RunoffMl"), Text("Notes")},
     {PlantReference, EventReference},
     {}},
    {"HarvestRecords",
     {RowID, EventLink, PlantUUID, Text("HarvestDate"), Real("WetWeightG"), Real("DryWeightG"), Real("QualityRating"),
      Integer("SeedYield"), Text("CureOutcome"), Text("Notes")},
     {PlantReference, EventReference},
     {"PlantUUID"}},
    {"PlantPhotos",
     {RowID, TextWithoutDefault("UUID"), PlantUUID, Text("PhotoDate"), TextWithoutDefault("FilePath"), Text("Caption")},
     {PlantReference},
     {"UUID"}},
    {"PlantHealthObservations",
     {RowID, PlantUUID, Text("ObservationDate"), TextWithoutDefault("Issue"), Integer("Severity", "1"),
      Text("Treatment"), Text("Notes")},
     {PlantReference},
     {}},
    {"PlantJournalEntries",
     {RowID, PlantUUID, Text("EntryDate"), Text("Type", "'Observation'"), Text("Details")},
     {PlantReference},
     {}},
};

class TableTest : public JournalTest, public testing::WithParamInterface<TableForm>
{
};

TEST_P(TableTest, TheTableHasItsColumnsInOrder)
{
    EXPECT_EQ(QueryRows("SELECT name,type,\"notnull\",dflt_value,pk FROM pragma_table_info('" + GetParam().Name +
                        "') ORDER BY cid;"),
              GetParam().Columns);
}

TEST_P(TableTest, TheTableHasItsForeignKeys)
{
    EXPECT_EQ(QueryRows("SELECT \"from\",\"table\",\"to\",on_delete FROM pragma_foreign_key_list('" + GetParam().Name +
                        "') ORDER BY 1;"),
              GetParam().ForeignKeys);
    EXPECT_EQ(QueryRows("SELECT 1 FROM pragma_foreign_key_list('" + GetParam().Name +
                        "') WHERE on_update<>'NO ACTION' OR \"match\"<>'NONE';"),
              Rows{});
}

TEST_P(TableTest, TheTableHasItsUniqueColumns)
{
    Rows expected;
    for (const std::string& column : GetParam().Unique)
        expected.push_back({column});
    EXPECT_EQ(QueryRows("SELECT i.name FROM pragma_index_list('" + GetParam().Name +
                        "') l, pragma_index_info(l.name) i WHERE l.\"unique\" ORDER BY 1;"),
              expected);
}

INSTANTIATE_TEST_SUITE_P(Every, TableTest, testing::ValuesIn(TableForms),
                         [](const auto& test) { return test.param.Name; });

// ---- The file

class SchemaTest : public JournalTest
{
  protected:
    // Whether the file accepts the row. The row is not kept.
    bool Accepts(const std::string& insert) const
    {
        RunSQL("SAVEPOINT trial;");
        const int result = sqlite3_exec(Database.NativeHandle(), insert.c_str(), nullptr, nullptr, nullptr);
        RunSQL("ROLLBACK TO trial; RELEASE trial;");
        EXPECT_TRUE(result == SQLITE_OK || result == SQLITE_CONSTRAINT) << insert;
        return result == SQLITE_OK;
    }
};

TEST_F(SchemaTest, TheSchemaHasExactlyTheseTablesAndIndexes)
{
    std::set<std::string> expected;
    for (const Statements& statements : {CreateTableStatements(), CreateIndexStatements()})
        for (const std::string& statement : statements)
            expected.insert(StoredStatement(statement));
    std::set<std::string> stored;
    for (const Row& row : QueryRows("SELECT sql FROM sqlite_master WHERE sql IS NOT NULL;"))
        stored.insert(row[0]);
    EXPECT_EQ(stored, expected);
    EXPECT_EQ(expected.size(), 16U);
    EXPECT_EQ(QueryRows("SELECT name FROM sqlite_master WHERE sql IS NULL AND name NOT LIKE 'sqlite_autoindex_%';"),
              Rows{});
    EXPECT_EQ(QueryRows("SELECT type,COUNT(*) FROM sqlite_master WHERE sql IS NOT NULL GROUP BY type ORDER BY type;"),
              (Rows{{"index", "7"}, {"table", "9"}}));
}

TEST_F(SchemaTest, TheTablesHaveTheirNames)
{
    EXPECT_EQ(QueryRows("SELECT name FROM sqlite_master WHERE type='table' ORDER BY rowid;"),
              (Rows{{"SchemaMeta"},
                    {"Strains"},
                    {"Plants"},
                    {"PlantEvents"},
                    {"PlantCareEntries"},
                    {"HarvestRecords"},
                    {"PlantPhotos"},
                    {"PlantHealthObservations"},
                    {"PlantJournalEntries"}}));
}

TEST_F(SchemaTest, TheFileHasNoVersionNumberAndNoApplicationID)
{
    for (const std::string pragma : {"user_version", "application_id"})
        EXPECT_EQ(QueryRows("PRAGMA " + pragma + ';'), Rows{{"0"}}) << pragma;
    EXPECT_EQ(QueryRows("PRAGMA journal_mode;"), Rows{{"delete"}});
    EXPECT_EQ(QueryRows("PRAGMA encoding;"), Rows{{"UTF-8"}});
    EXPECT_EQ(QueryRows("PRAGMA integrity_check;"), Rows{{"ok"}});
}

TEST_F(SchemaTest, TheIndexesHaveTheirKeys)
{
    Rows expected = {{"PlantsByStrain", "Plants", "Strain", "0"}, {"PlantsByMother", "Plants", "MotherPlantID", "0"}};
    const std::string byPlantDate[][3] = {{"PlantEventsByPlantDate", "PlantEvents", "EventDate"},
                                          {"PlantCareByPlantDate", "PlantCareEntries", "CareDate"},
                                          {"PlantPhotosByPlantDate", "PlantPhotos", "PhotoDate"},
                                          {"PlantHealthByPlantDate", "PlantHealthObservations", "ObservationDate"},
                                          {"PlantJournalByPlantDate", "PlantJournalEntries", "EntryDate"}};
    for (const auto& [index, table, date] : byPlantDate)
    {
        expected.push_back({index, table, "PlantUUID", "0"});
        expected.push_back({index, table, date, "1"});
        expected.push_back({index, table, "ID", "1"});
    }
    EXPECT_EQ(QueryRows("SELECT m.name,m.tbl_name,k.name,k.\"desc\" FROM sqlite_master m, pragma_index_xinfo(m.name) k "
                        "WHERE m.type='index' AND m.sql IS NOT NULL AND k.\"key\" ORDER BY m.rowid,k.seqno;"),
              expected);
}

TEST_F(SchemaTest, ARowOfColumnDefaultsReadsAsADefaultRecord)
{
    RunSQL("INSERT INTO Strains(ID,Name) VALUES(1,'s');"
           "INSERT INTO Plants(ID,UUID,Name) VALUES(1,'p','');"
           "INSERT INTO PlantEvents(ID,PlantUUID) VALUES(1,'p');"
           "INSERT INTO PlantCareEntries(ID,PlantUUID) VALUES(1,'p');"
           "INSERT INTO HarvestRecords(ID,PlantUUID) VALUES(1,'p');"
           "INSERT INTO PlantPhotos(ID,UUID,PlantUUID,FilePath) VALUES(1,'f','p','');"
           "INSERT INTO PlantHealthObservations(ID,PlantUUID,Issue) VALUES(1,'p','');"
           "INSERT INTO PlantJournalEntries(ID,PlantUUID) VALUES(1,'p');");
    // The record without the values that the row sets.
    const auto withoutKeys = [](auto record)
    {
        record.ID = 0;
        if constexpr (requires { record.PlantUUID; })
            record.PlantUUID.clear();
        if constexpr (requires { record.UUID; })
            record.UUID.clear();
        return record;
    };
    Plant plant;
    EXPECT_TRUE(Repository.GetPlant("p", plant));
    EXPECT_EQ(withoutKeys(plant), Plant{});
    Strain strain;
    EXPECT_TRUE(Repository.GetStrain(1, strain));
    strain.Name.clear();
    EXPECT_EQ(withoutKeys(strain), Strain{});
    HarvestRecord harvest;
    EXPECT_TRUE(Repository.GetHarvestRecord("p", harvest));
    EXPECT_EQ(withoutKeys(harvest), HarvestRecord{});
    EXPECT_EQ(withoutKeys(Listed(&PlantRepository::ListPlantEvents, "p").at(0)), PlantEvent{});
    EXPECT_EQ(withoutKeys(Listed(&PlantRepository::ListPlantCareEntries, "p").at(0)), PlantCareEntry{});
    EXPECT_EQ(withoutKeys(Listed(&PlantRepository::ListPlantPhotos, "p").at(0)), PlantPhoto{});
    EXPECT_EQ(withoutKeys(Listed(&PlantRepository::ListPlantHealthObservations, "p").at(0)), PlantHealthObservation{});
    EXPECT_EQ(withoutKeys(Listed(&PlantRepository::ListPlantJournalEntries, "p").at(0)), PlantJournalEntry{});
}

TEST_F(SchemaTest, AnEnumerationColumnTakesOnlyItsStoredNames)
{
    const struct
    {
        std::string Insert;
        Statements Names;
    } columns[] = {
        {"INSERT INTO Plants(UUID,Name,Stage) VALUES('q','','?');",
         {"Seed", "Clone", "Veg", "Flower", "Dry", "Cure", "Harvested", "Archived"}},
        {"INSERT INTO Plants(UUID,Name,Sex) VALUES('q','','?');", {"Unknown", "Female", "Male", "Hermaphrodite"}},
        {"INSERT INTO PlantEvents(PlantUUID,EventType) VALUES('p','?');",
         {"Clone", "Transplant", "Flip", "Harvest", "Feed", "Water", "Stage", "Topped", "LST Trained", "Defoliated",
          "Note"}},
        {"INSERT INTO PlantCareEntries(PlantUUID,Action) VALUES('p','?');", {"Feed", "Water"}},
        {"INSERT INTO PlantJournalEntries(PlantUUID,Type) VALUES('p','?');",
         {"Observation", "Training", "Pruning", "Topping", "Defoliation", "Milestone"}},
    };
    RunSQL("INSERT INTO Plants(UUID,Name) VALUES('p','');");
    std::set<std::string> words;
    for (const auto& column : columns)
        words.insert(column.Names.begin(), column.Names.end());
    for (const std::string other : {"", " ", "LSTTrained", "lst trained", "0", "1"})
        words.insert(other);
    for (const auto& [insert, names] : columns)
    {
        for (const std::string& word : words)
        {
            const bool known = std::find(names.begin(), names.end(), word) != names.end();
            EXPECT_EQ(Accepts(Replaced(insert, "?", word)), known) << insert << word;
        }
        for (const std::string& name : names)
            for (const std::string& value : {'\'' + name + " '", "lower('" + name + "')", "upper('" + name + "')"})
                EXPECT_FALSE(Accepts(Replaced(insert, "'?'", value))) << insert << value;
        EXPECT_FALSE(Accepts(Replaced(insert, "'?'", "NULL"))) << insert;
    }
}

TEST_F(SchemaTest, ASeverityIsFromOneToFive)
{
    RunSQL("INSERT INTO Plants(UUID,Name) VALUES('p','');");
    for (int severity = -1; severity <= 7; ++severity)
        EXPECT_EQ(Accepts("INSERT INTO PlantHealthObservations(PlantUUID,Issue,Severity) VALUES('p','thrips'," +
                          std::to_string(severity) + ");"),
                  severity >= 1 && severity <= 5)
            << severity;
}

TEST_F(SchemaTest, UniqueValuesAreComparedWithCase)
{
    RunSQL("INSERT INTO Strains(Name) VALUES('Roma');"
           "INSERT INTO Plants(UUID,Name) VALUES('p','Name');"
           "INSERT INTO HarvestRecords(PlantUUID) VALUES('p');"
           "INSERT INTO PlantPhotos(UUID,PlantUUID,FilePath) VALUES('f','p','');");
    const std::pair<std::string, bool> rows[] = {
        {"Strains(Name) VALUES('Roma')", false},
        {"Strains(Name) VALUES('roma')", true},
        {"Plants(UUID,Name) VALUES('p','')", false},
        {"Plants(UUID,Name) VALUES('P','Name')", true},
        {"HarvestRecords(PlantUUID) VALUES('p')", false},
        {"PlantPhotos(UUID,PlantUUID,FilePath) VALUES('f','p','another')", false},
        {"PlantPhotos(UUID,PlantUUID,FilePath) VALUES('F','p','')", true},
    };
    for (const auto& [row, accepted] : rows)
        EXPECT_EQ(Accepts("INSERT INTO " + row + ';'), accepted) << row;
}

TEST_F(SchemaTest, ARowOfAnUnknownPlantOrEventIsRefused)
{
    RunSQL("INSERT INTO Plants(UUID,Name) VALUES('p','');");
    for (const std::string row :
         {"PlantEvents(PlantUUID) VALUES('?')", "PlantCareEntries(PlantUUID) VALUES('?')",
          "HarvestRecords(PlantUUID) VALUES('?')", "PlantPhotos(UUID,PlantUUID,FilePath) VALUES('f','?','')",
          "PlantHealthObservations(PlantUUID,Issue) VALUES('?','')", "PlantJournalEntries(PlantUUID) VALUES('?')",
          "PlantCareEntries(PlantUUID,TimelineEventID) VALUES('p',1)",
          "HarvestRecords(PlantUUID,TimelineEventID) VALUES('p',1)",
          "Plants(UUID,Name,MotherPlantID) VALUES('q','',4711)"})
        EXPECT_FALSE(Accepts("INSERT INTO " + row + ';')) << row;
}

// ---- A journal with records

class PlantedSchemaTest : public JournalTest
{
  protected:
    SampleRecords Planted = StoreSampleRecords(Repository);
};

TEST_F(PlantedSchemaTest, DeletingAPlantKeepsItsClonesAndItsStrain)
{
    const std::string ofTheMother = "PlantUUID='" + Planted.Mother.UUID + '\'';
    const Statements tables = {"PlantEvents", "PlantCareEntries",        "HarvestRecords",
                               "PlantPhotos", "PlantHealthObservations", "PlantJournalEntries"};
    for (const std::string& table : tables)
        EXPECT_GT(RowCount(table, ofTheMother), 0) << table;
    EXPECT_EQ(RowCount("Plants", "MotherPlantID=" + std::to_string(Planted.Mother.ID)), 1);
    const int strains = RowCount("Strains");

    RunSQL("DELETE FROM Plants WHERE UUID='" + Planted.Mother.UUID + "';");
    for (const std::string& table : tables)
        EXPECT_EQ(RowCount(table), 0) << table;
    EXPECT_EQ(QueryRows("SELECT UUID,MotherPlantID FROM Plants;"), (Rows{{Planted.Clone.UUID, "NULL"}}));
    EXPECT_EQ(RowCount("Strains"), strains);
}

TEST_F(PlantedSchemaTest, DeletingAnEventKeepsItsOwner)
{
    for (const auto& [table, event] :
         {std::pair<std::string, std::int64_t>("PlantCareEntries", Planted.Care.TimelineEventID),
          {"HarvestRecords", Planted.Harvest.TimelineEventID}})
    {
        const int rows = RowCount(table);
        const int unlinked = RowCount(table, "TimelineEventID IS NULL");
        EXPECT_EQ(RowCount(table, "TimelineEventID=" + std::to_string(event)), 1) << table;
        RunSQL("DELETE FROM PlantEvents WHERE ID=" + std::to_string(event) + ';');
        EXPECT_EQ(RowCount(table), rows) << table;
        EXPECT_EQ(RowCount(table, "TimelineEventID IS NULL"), unlinked + 1) << table;
    }
}

TEST_F(PlantedSchemaTest, NoOperationWritesSchemaMeta)
{
    for (const Operation& operation : Operations())
    {
        SampleRecords sample = Planted;
        operation.Call(Repository, sample);
        EXPECT_EQ(RowCount("SchemaMeta"), 0) << operation;
    }
}

} // namespace
