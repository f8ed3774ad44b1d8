#include "support/migration_test.h"

#include "testing/schema_statements.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace support
{

namespace
{

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

} // namespace

EarlierForm OldestForm()
{
    EarlierForm form{{}, true, true};
    for (const AddedColumn& column : AddedColumns())
        form.MissingColumns.push_back(column.Name);
    return form;
}

bool Lacks(const EarlierForm& form, const std::string& column)
{
    return std::find(form.MissingColumns.begin(), form.MissingColumns.end(), column) != form.MissingColumns.end();
}

Statements TablesOf(const EarlierForm& form)
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

void WriteEarlierFile(const std::string& path, const EarlierForm& form)
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

CurrentTables::CurrentTables() : PlainConnection(":memory:")
{
    for (const std::string& table : CreateTableStatements())
        RunSQL(table);
}

void MigrationTest::Migrate()
{
    std::string error;
    EXPECT_TRUE(Database.Open(Path, &error)) << error;
    Database.Close();
}

void MigrationTest::ExpectClosed() const
{
    EXPECT_FALSE(Database.IsOpen());
    EXPECT_EQ(Database.NativeHandle(), nullptr);
    EXPECT_EQ(Database.Path(), "");
}

void MigrationTest::ExpectFailure(const std::string& reason)
{
    std::string error = "untouched";
    EXPECT_FALSE(Database.Open(Path, &error));
    EXPECT_EQ(error, reason);
    EXPECT_EQ(Database.LastError(), reason);
    ExpectClosed();
}

void MigrationTest::WriteFileWithEvents(const std::string& definition, const std::string& rows) const
{
    WriteEarlierFile(Path, {});
    RunSQL("DROP TABLE PlantEvents;" + definition + ';' + rows);
}

} // namespace support
