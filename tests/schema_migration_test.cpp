// The migration of every earlier schema, and of missing tables and columns.

#include "support/migration_test.h"
#include "testing/schema_statements.h"

#include <algorithm>
#include <cctype>
#include <tuple>

#include <gtest/gtest.h>

using namespace support;

namespace
{

EarlierForm FormOf(const std::tuple<unsigned, bool, bool>& parameter)
{
    const auto& [columns, oldEvents, noIndexes] = parameter;
    EarlierForm form{{}, oldEvents, noIndexes};
    for (std::size_t i = 0; i < AddedColumns().size(); ++i)
        if ((columns >> i & 1U) != 0)
            form.MissingColumns.push_back(AddedColumns()[i].Name);
    return form;
}

class EarlierFormTest : public MigrationTest, public testing::WithParamInterface<std::tuple<unsigned, bool, bool>>
{
  protected:
    EarlierFormTest() { WriteEarlierFile(Path, File); }

    Statements StatementsOfMigration()
    {
        const CallRecorder recorder;
        Migrate();
        EXPECT_EQ(recorder.CallCount(SQLiteCall::Finalize), recorder.CallCount(SQLiteCall::Prepare));
        return recorder.Statements();
    }

    void ExpectCurrentTablesAndIndexes() const;
    void ExpectEveryRecord() const;

    // The value of `column` after the migration.
    std::string Value(const std::string& column, const std::string& kept, const std::string& initial) const
    {
        return Lacks(File, column) ? initial : kept;
    }

    const EarlierForm File = FormOf(GetParam());
};

void EarlierFormTest::ExpectCurrentTablesAndIndexes() const
{
    const CurrentTables fresh;
    for (const std::string table : {"Plants", "HarvestRecords"})
    {
        const std::string query = "SELECT name,type,\"notnull\",dflt_value,pk FROM pragma_table_info('" + table + "');";
        Rows columns = fresh.QueryRows(query);
        for (const AddedColumn& added : AddedColumns()) // SQLite appends an added column
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
        else if (i != 2 && i != 5) // SQLite rewrites these two when it adds a column
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

TEST_P(EarlierFormTest, AFileIsMigratedOnceAndKeepsEveryRecord)
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
    const EarlierForm form = FormOf(test.param);
    std::string name = "FileWithout";
    for (const std::string& column : form.MissingColumns)
        name += column;
    return name + (form.OldEvents ? "NewEvents" : "") + (form.NoIndexes ? "Indexes" : "");
}

INSTANTIATE_TEST_SUITE_P(A, EarlierFormTest,
                         testing::Combine(testing::Range(0U, 32U), testing::Bool(), testing::Bool()), NameOf);

TEST_F(MigrationTest, AMissingTableIsCreatedAndTheOthersKeepTheirRows)
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
            WriteEarlierFile(Path, {});
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

TEST_F(MigrationTest, AColumnNameInOtherCaseIsNotTheColumn)
{
    for (const AddedColumn& column : AddedColumns())
        for (const bool upper : {false, true})
        {
            std::string spelling = column.Name;
            std::transform(spelling.begin(), spelling.end(), spelling.begin(),
                           [&](char c) { return static_cast<char>(upper ? std::toupper(c) : std::tolower(c)); });
            WriteEarlierFile(Path, {{column.Name}});
            RunSQL(Replaced(column.Statement, column.Name, spelling));
            const std::string bytes = FileBytes(Path);
            ExpectFailure("duplicate column name: " + column.Name);
            EXPECT_EQ(FileBytes(Path), bytes);
        }
}

TEST_F(MigrationTest, TheSearchForAColumnStopsAtTheFirstMatch)
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

} // namespace
