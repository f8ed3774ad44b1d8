// Salvages of files whose schema is damaged, or written to do harm.

#include "plant_file.h"

#include "support/migration_test.h"
#include "support/salvage_test.h"
#include "testing/old_files.h"

#include <filesystem>

using namespace support;

namespace
{

// A journal with several pages for its schema.
class SalvageSchemaTest : public SalvageTest
{
  protected:
    SalvageSchemaTest()
    {
        Grow();
        Expected = RowsOf(Path);
    }

    // Changes rows of the schema as no program should.
    void WriteSchema(const std::string& sql) const
    {
        PlainConnection(Path).RunSQL("PRAGMA writable_schema=ON; " + sql);
    }
    // Zeros the schema, and changes bytes of a leaf: by default, the first one of PlantEvents.
    void LoseTheSchemaAndChange(std::size_t offset, const std::string& changed, const std::string& name = "PlantEvents",
                                const std::string& path = "/001/") const
    {
        std::string bytes = FileBytes(Path);
        for (const UsedPage& page : UsedPages(Path))
        {
            if (page.Name == "sqlite_schema")
                bytes.replace(page.Offset, page.Size, page.Size, '\0');
            if (page.Name == name && page.Path == path)
                bytes.replace(page.Offset + offset, changed.size(), changed);
        }
        WriteBytes(Path, bytes);
    }
    void ExpectAllRows() const
    {
        const PlantSalvageReport report = Salvage();
        for (const PlantSalvageTable& table : report.Tables)
            EXPECT_EQ(table.RowsMissing, 0) << table.Name;
        EXPECT_EQ(RowsOf(Destination), Expected);
    }

    std::string Expected;
};

TEST_F(SalvageSchemaTest, ADamagedRowOfTheSchemaCostsNoRow)
{
    std::vector<UsedPage> leaves;
    for (const UsedPage& page : UsedPages(Path))
        if (page.Name == "sqlite_schema" && page.Kind == "leaf")
            leaves.push_back(page);
    ASSERT_GT(leaves.size(), 3U);
    const std::string whole = FileBytes(Path);
    for (const UsedPage& leaf : leaves)
    {
        SCOPED_TRACE(leaf.Number);
        std::string bytes = whole;
        bytes.replace(leaf.Offset + (leaf.Number == 1 ? 108 : 8), 2, "\xFF\xFF"); // the pointer to its first row
        WriteBytes(Path, bytes);
        ExpectAllRows();
    }
}

TEST_F(SalvageSchemaTest, ADamagedNameOfAColumnCostsNoRow)
{
    WriteSchema(
        "UPDATE sqlite_master SET sql=replace(sql,'EventDate','EventDatf') WHERE name='PlantEvents';"
        "UPDATE sqlite_master SET sql=replace(sql,'Severity','Sevfrity') WHERE name='PlantHealthObservations';");
    ExpectAllRows();
}

TEST_F(SalvageSchemaTest, ADamagedTypeOrNameOfATableCostsNoRow)
{
    const std::string whole = FileBytes(Path);
    for (const char* set : {"type='tablf'", "type='Table'", "type='view'", "name='PlantEventt'", "name='PlantEvent'"})
    {
        SCOPED_TRACE(set);
        WriteBytes(Path, whole);
        WriteSchema(std::string("UPDATE sqlite_master SET ") + set + " WHERE name='PlantEvents';");
        ExpectAllRows();
        WriteSchema("DELETE FROM sqlite_master WHERE type='index';"); // which show that rows are lost
        ExpectAllRows();
    }
}

TEST_F(SalvageSchemaTest, AnEntryOfAnotherProgramIsNotDamage)
{
    for (const char* added : {"ANALYZE;", "CREATE TABLE Mine(A);",
                              "CREATE TABLE [my own](ID INTEGER PRIMARY KEY "
                              "AUTOINCREMENT);",
                              "CREATE VIEW Names AS SELECT Name FROM Plants;",
                              "CREATE TRIGGER Added AFTER INSERT ON Plants BEGIN SELECT 1; END;"})
    {
        WriteOldFile(Path, OldFiles().front()); // without some tables, which could be lost
        PlainConnection(Path).RunSQL(added);
        for (const PlantSalvageTable& table : Salvage().Tables)
            EXPECT_TRUE(table.IsWhole) << added << ' ' << table.Name;
    }
}

TEST_F(SalvageSchemaTest, AFirstPageWithoutACellIsNotDamage)
{
    // Moves all rows of the schema to a new page, the only child of the first one.
    constexpr std::size_t size = 4096;
    WriteOldFile(Path, OldFiles().front()); // without some tables, which could be lost
    std::string bytes = FileBytes(Path);
    ASSERT_EQ(bytes[100], '\x0D');
    const std::size_t pointers = 8 + 2 * static_cast<std::size_t>(bytes[104]);
    std::string child = bytes.substr(100, pointers);
    child += std::string(100, '\0') + bytes.substr(100 + pointers, size - 100 - pointers);
    bytes[31] = static_cast<char>(bytes.size() / size + 1); // the number of pages
    const std::string header = std::string("\5\0\0\0\0\x10\0\0\0\0\0", 11) + bytes[31];
    bytes.replace(100, size - 100, header + std::string(size - 112, '\0'));
    WriteBytes(Path, bytes + child);
    ASSERT_EQ(Damage(PlainConnection(Path).NativeHandle()), "ok");
    for (const PlantSalvageTable& table : Salvage().Tables)
        EXPECT_TRUE(table.IsWhole) << table.Name;
}

TEST_F(SalvageSchemaTest, ATableWithTooFewColumnsGivesNoRow)
{
    PlainConnection(Path).RunSQL("DROP TABLE PlantPhotos; CREATE TABLE PlantPhotos(ID INTEGER PRIMARY KEY,UUID TEXT);"
                                 "INSERT INTO PlantPhotos VALUES(1,'a UUID');");
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(TableOf(report, "PlantPhotos").RowsRead, 0);
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsMissing, 0);
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsRead, 203);
}

TEST_F(SalvageSchemaTest, ADefinitionThatNeverEndsCostsNoRow)
{
    WriteSchema("UPDATE sqlite_master SET sql='CREATE TABLE PlantEvents AS WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL "
                "SELECT X+1 FROM N) SELECT X FROM N' WHERE name='PlantEvents';");
    ExpectAllRows();
}

TEST_F(SalvageSchemaTest, NoOtherStatementOfTheSchemaRuns)
{
    const std::string created = Scratch.File("created.db");
    for (const std::string& sql : {"ATTACH |" + created + "| AS Other", "VACUUM INTO |" + created + '|'})
    {
        WriteSchema("UPDATE sqlite_master SET sql=replace('" + sql + "','|',char(39)) WHERE name='PlantEvents';");
        ExpectAllRows();
        EXPECT_FALSE(std::filesystem::exists(created)) << sql;
    }
}

TEST_F(SalvageSchemaTest, WithoutTheSchemaADamagedRowIsMissingAlone)
{
    LoseTheSchemaAndChange(10, "\xFF\xFF"); // the pointer to the second row
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsRead, 202);
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsMissing, 1);
}

TEST_F(SalvageSchemaTest, WithoutTheSchemaADamagedPlantIsMissingAlone)
{
    const std::string rows = PlainConnection(Path).Value("SELECT count(*) FROM Plants;");
    LoseTheSchemaAndChange(8, "\xFF\xFF", "Plants", "/"); // the pointer to the first row
    const PlantSalvageTable plants = TableOf(Salvage(), "Plants");
    EXPECT_EQ(plants.RowsMissing, 1);
    EXPECT_EQ(std::to_string(plants.RowsRead + 1), rows);
}

TEST_F(SalvageSchemaTest, MoreRowsThanAPageCanHaveAreNotReportedAsMissing)
{
    LoseTheSchemaAndChange(3, std::string("\1\0", 2)); // the number of rows: 256
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsRead, 203);
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsMissing, 0);
}

TEST_F(SalvageSchemaTest, WithoutADefinitionTheDatesShowTheForm)
{
    // A migration appends SeedDate after Notes where the file was created without it. All columns between the two
    // places are texts.
    for (const std::size_t columnsAtCreation : {0U, 1U, 4U})
    {
        EarlierForm form = OldestForm();
        form.MissingColumns.erase(form.MissingColumns.begin(),
                                  form.MissingColumns.begin() + static_cast<std::ptrdiff_t>(columnsAtCreation));
        WriteEarlierFile(Path, form);
        ASSERT_TRUE(Database.Open(Path));
        Database.Close();
        // Texts of ten bytes are dates only with hyphens in the right places.
        PlainConnection(Path).RunSQL(
            "UPDATE Plants SET SeedDate='2024-01-01',Sex='Female';" // so that each row has a value in every column
            "INSERT INTO Plants(UUID,Name,SeedDate,CloneDate,TransplantDate,FlipDate,HarvestDate,Notes) VALUES"
            "('u1','first','2024-01-02','2024-01-03','','','2024-01-04','0123456789'),"
            "('u2','second','','2024-01-03','2024-01-04','','','0123-56789'),"
            "('u3','third','2024-01-02','','','2024-01-03','','0123456-89');");
        Expected = RowsOf(Path);
        std::string bytes = FileBytes(Path);
        for (const UsedPage& page : UsedPages(Path))
            if (page.Name == "sqlite_schema")
                bytes.replace(page.Offset, page.Size, page.Size, '\0');
        WriteBytes(Path, bytes);
        ExpectAllRows();
    }
}

} // namespace
