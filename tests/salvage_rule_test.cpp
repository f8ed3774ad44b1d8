// What a salvage stores of the rows that it reads, and what it reports.

#include "plant_file.h"

#include "support/salvage_test.h"

using namespace support;

namespace
{

constexpr const char* Mother = "11111111-1111-4111-8111-111111111111";

class SalvageRuleTest : public SalvageTest
{
  protected:
    // Writes as a program without the library's rules.
    void Write(const std::string& sql) const
    {
        PlainConnection(Path).RunSQL("PRAGMA foreign_keys=OFF; PRAGMA ignore_check_constraints=ON; " + sql);
    }
    // Sets the bytes of the table's root page to zero.
    void ZeroTable(const std::string& table) const
    {
        for (const UsedPage& page : UsedPages(Path))
            if (page.Name == table && page.Path == "/")
                Zero(Path, page.Offset, page.Size);
    }
    std::string IDOf(const std::string& uuid) const
    {
        return PlainConnection(Path).Value("SELECT ID FROM Plants WHERE UUID='" + uuid + "';");
    }
};

TEST_F(SalvageRuleTest, ALostPlantIsReplacedWithItsUUIDAndRowID)
{
    const std::string id = IDOf(Mother);
    const std::string clones =
        PlainConnection(Path).Value("SELECT count(*) FROM Plants WHERE MotherPlantID=" + id + ';');
    ASSERT_NE(clones, "0");
    Write("UPDATE Plants SET Stage='Unknown' WHERE ID=" + id + ';');
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(report.PlaceholderPlants, 1);
    EXPECT_EQ(report.ClearedLinks, 0);
    EXPECT_EQ(Salvaged(std::string("SELECT ID||' '||Name||' '||Stage FROM Plants WHERE UUID='") + Mother + "'"),
              id + " Lost plant 11111111 Veg");
    EXPECT_EQ(Salvaged("SELECT count(*) FROM Plants WHERE MotherPlantID=" + id), clones);
    const PlantSalvageTable& plants = TableOf(report, "Plants");
    EXPECT_EQ(plants.RowsRead, 1);
    EXPECT_EQ(plants.RowsMissing, 1);
    ASSERT_EQ(plants.Losses.size(), 1);
    EXPECT_EQ(plants.Losses.front().Reason, "A value is not one of those that its column allows.");
}

TEST_F(SalvageRuleTest, TheIndexGivesTheRowIDsOfLostPlants)
{
    const std::string id = IDOf(Mother);
    ZeroTable("Plants");
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(Salvaged(std::string("SELECT ID FROM Plants WHERE UUID='") + Mother + "'"), id);
    EXPECT_EQ(TableOf(report, "Plants").RowsRead, 0);
    EXPECT_EQ(TableOf(report, "Plants").RowsMissing, 2);
    EXPECT_FALSE(TableOf(report, "Plants").IsWhole);
}

TEST_F(SalvageRuleTest, RecordsOfAnUnknownPlantAreKept)
{
    Write("UPDATE PlantPhotos SET PlantUUID='new'; UPDATE PlantHealthObservations SET PlantUUID='new';");
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(report.PlaceholderPlants, 1);
    EXPECT_EQ(Salvaged("SELECT Name FROM Plants WHERE UUID='new'"), "Lost plant new");
    EXPECT_EQ(Salvaged("SELECT PlantUUID FROM PlantPhotos"), "new");
    ASSERT_EQ(TableOf(report, "Plants").Losses.size(), 1);
    EXPECT_EQ(TableOf(report, "Plants").Losses.front().Reason,
              "Other rows refer to them, but they are not in the file.");
}

TEST_F(SalvageRuleTest, ARowOfAUUIDWithAZeroByteIsNotStored)
{
    Write("UPDATE PlantPhotos SET PlantUUID=CAST(x'31310000' AS TEXT);");
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(report.PlaceholderPlants, 0);
    EXPECT_EQ(Salvaged("SELECT count(*) FROM PlantPhotos"), "0");
    ASSERT_EQ(TableOf(report, "PlantPhotos").Losses.size(), 1);
    EXPECT_EQ(TableOf(report, "PlantPhotos").Losses.front().Reason, "A UUID has a zero byte.");
    EXPECT_EQ(TableOf(report, "Plants").RowsMissing, 0);
}

TEST_F(SalvageRuleTest, APlantWhoseUUIDHasAZeroByteIsLost)
{
    const std::string id = IDOf(Mother);
    Write("UPDATE Plants SET UUID=CAST(x'31310000' AS TEXT) WHERE ID=" + id + ';');
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(report.PlaceholderPlants, 1);
    EXPECT_EQ(Salvaged(std::string("SELECT Name FROM Plants WHERE UUID='") + Mother + "'"), "Lost plant 11111111");
    EXPECT_EQ(TableOf(report, "Plants").RowsMissing, 1);
    EXPECT_EQ(Salvaged("SELECT count(*) FROM Plants WHERE hex(UUID)='31310000'"), "0");
}

TEST_F(SalvageRuleTest, ALinkToALostMotherIsCleared)
{
    Write(
        "UPDATE Plants SET MotherPlantID=77 WHERE MotherPlantID IS NOT NULL; UPDATE PlantPhotos SET PlantUUID='new';");
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(report.ClearedLinks, 1);
    EXPECT_EQ(TableOf(report, "Plants").RowsMissing, 1); // it may be the same plant
    EXPECT_EQ(Salvaged("SELECT count(*) FROM Plants WHERE MotherPlantID IS NOT NULL"), "0");
}

TEST_F(SalvageRuleTest, ALinkToALostEventIsCleared)
{
    Write("UPDATE PlantCareEntries SET TimelineEventID=901 WHERE TimelineEventID IS NOT NULL; "
          "UPDATE HarvestRecords SET TimelineEventID=902;");
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(report.ClearedLinks, 2);
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsMissing, 2);
    EXPECT_EQ(Salvaged("SELECT count(*) FROM HarvestRecords WHERE TimelineEventID IS NULL"), "1");
    EXPECT_EQ(report.PlaceholderPlants, 0);
}

TEST_F(SalvageRuleTest, ARecordWithoutALinkHasNoneThatIsCleared)
{
    Write("UPDATE PlantCareEntries SET TimelineEventID=NULL WHERE ID=(SELECT min(ID) FROM PlantCareEntries);");
    const std::string links =
        PlainConnection(Path).Value("SELECT (SELECT count(TimelineEventID) FROM PlantCareEntries)+count("
                                    "TimelineEventID) FROM HarvestRecords;");
    ASSERT_EQ(links, "1");
    const std::string whole = FileBytes(Path);
    ZeroTable("PlantEvents");
    EXPECT_EQ(Salvage().ClearedLinks, 1);

    WriteBytes(Path, whole);
    Write("UPDATE PlantCareEntries SET TimelineEventID=NULL; UPDATE HarvestRecords SET TimelineEventID=NULL; "
          "DELETE FROM PlantEvents;");
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(report.ClearedLinks, 0);
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsMissing, 0);
}

TEST_F(SalvageRuleTest, LostStrainsAreCountedByTheirNames)
{
    ZeroTable("Strains");
    ZeroTable("sqlite_autoindex_Strains_1");
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(Salvaged("SELECT count(*) FROM Strains"), "0");
    EXPECT_EQ(std::to_string(TableOf(report, "Strains").RowsMissing),
              PlainConnection(Path).Value("SELECT count(DISTINCT Strain) FROM Plants WHERE Strain<>'';"));
}

TEST_F(SalvageRuleTest, ValuesThatTheTableDoesNotAllowAreRefused)
{
    Write("UPDATE PlantHealthObservations SET Severity=6; UPDATE PlantJournalEntries SET Type='Sowing';"
          "UPDATE PlantCareEntries SET Action='Rain' WHERE ID=(SELECT min(ID) FROM PlantCareEntries);");
    const PlantSalvageReport report = Salvage();
    for (const char* table : {"PlantHealthObservations", "PlantJournalEntries", "PlantCareEntries"})
    {
        ASSERT_EQ(TableOf(report, table).Losses.size(), 1) << table;
        EXPECT_EQ(TableOf(report, table).Losses.front().Reason, "A value is not one of those that its column allows.");
        EXPECT_EQ(TableOf(report, table).Losses.front().Rows, 1);
        EXPECT_TRUE(TableOf(report, table).IsWhole);
    }
    EXPECT_EQ(Salvaged("SELECT count(*) FROM PlantCareEntries"), "1");
}

TEST_F(SalvageRuleTest, ValuesOfAnotherTypeAreRefused)
{
    Write("UPDATE PlantPhotos SET Caption=x'00';"
          "UPDATE PlantCareEntries SET EC='strong' WHERE ID=(SELECT min(ID) FROM PlantCareEntries);");
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(TableOf(report, "PlantPhotos").RowsMissing, 1);
    EXPECT_EQ(TableOf(report, "PlantCareEntries").RowsMissing, 1);
    EXPECT_EQ(TableOf(report, "PlantCareEntries").RowsRead, 1);
}

TEST_F(SalvageRuleTest, BytesThatAreNotANumberAreAMissingValue)
{
    Write("UPDATE PlantCareEntries SET RunoffMl=0.71875 WHERE ID=(SELECT min(ID) FROM PlantCareEntries);");
    std::string bytes = FileBytes(Path);
    const std::string number("\x3F\xE7\0\0\0\0\0\0", 8);
    const std::size_t at = bytes.find(number);
    ASSERT_NE(at, std::string::npos);
    WriteBytes(Path, bytes.replace(at, 8, 8, '\xFF'));
    const PlantSalvageReport report = Salvage();
    const PlantSalvageTable& care = TableOf(report, "PlantCareEntries");
    EXPECT_EQ(care.RowsRead, 1);
    ASSERT_EQ(care.Losses.size(), 1);
    EXPECT_EQ(care.Losses.front().Reason, "A value is missing.");
}

TEST_F(SalvageRuleTest, ASecondRowWithAUUIDIsRefused)
{
    const std::string other = "22222222-2222-4222-8222-222222222222";
    Write("INSERT INTO Plants(UUID,Name) VALUES('" + other.substr(0, 35) + "X','second');");
    std::string bytes = FileBytes(Path);
    const std::string stored = other.substr(0, 35) + "X";
    for (std::size_t at = bytes.find(stored); at != std::string::npos; at = bytes.find(stored))
        bytes.replace(at, stored.size(), Mother);
    WriteBytes(Path, bytes);
    const PlantSalvageReport report = Salvage();
    ASSERT_EQ(TableOf(report, "Plants").Losses.size(), 1);
    EXPECT_EQ(TableOf(report, "Plants").Losses.front().Reason, "Another row has the same UUID.");
    EXPECT_EQ(Salvaged("SELECT count(*) FROM Plants WHERE Name='second'"), "0");
}

TEST_F(SalvageRuleTest, TheRowOnTheFirstPageIsKeptOfTwo)
{
    // Two copies of a page of events: the second has another text in one row.
    Grow();
    const std::vector<UsedPage> pages = UsedPages(Path);
    for (const UsedPage& page : pages)
        if (page.Name == "PlantEvents" && page.Kind == "internal")
            Zero(Path, page.Offset, page.Size);
    std::string bytes = FileBytes(Path);
    for (const UsedPage& page : pages)
        if (page.Name == "PlantEvents" && page.Path == "/001/")
        {
            std::string copy = bytes.substr(page.Offset, page.Size);
            const std::size_t at = copy.rfind("event ");
            ASSERT_NE(at, std::string::npos);
            copy.replace(at, 5, "EVENT");
            bytes += copy;
        }
    WriteBytes(Path, bytes);
    const PlantSalvageReport report = Salvage();
    const PlantSalvageTable& events = TableOf(report, "PlantEvents");
    EXPECT_EQ(events.RowsRead, 203);
    ASSERT_EQ(events.Losses.size(), 1);
    EXPECT_EQ(events.Losses.front().Reason, "A different row with the same row ID was kept.");
    EXPECT_EQ(events.Losses.front().Rows, 1);
    EXPECT_EQ(Salvaged("SELECT count(*) FROM PlantEvents WHERE Details LIKE 'EVENT%'"), "200");
    EXPECT_EQ(Salvaged("SELECT count(*) FROM PlantEvents WHERE Details GLOB 'EVENT*'"), "0");
}

TEST_F(SalvageRuleTest, AChangedByteInsideAValueIsNotNoticed)
{
    std::string bytes = FileBytes(Path);
    const std::string text = PlainConnection(Path).Value("SELECT Issue FROM PlantHealthObservations;");
    for (const UsedPage& page : UsedPages(Path))
        if (page.Name == "PlantHealthObservations")
            bytes[bytes.find(text, page.Offset)] = 'X';
    WriteBytes(Path, bytes);
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(Salvaged("SELECT Issue FROM PlantHealthObservations"), 'X' + text.substr(1));
    EXPECT_TRUE(TableOf(report, "PlantHealthObservations").IsWhole);
}

} // namespace
