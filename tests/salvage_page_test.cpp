// Salvages of files with damaged pages.

#include "plant_file.h"

#include "support/salvage_test.h"

using namespace support;

namespace
{

// A journal with several pages for its events and its journal entries.
class SalvagePageTest : public SalvageTest
{
  protected:
    SalvagePageTest()
    {
        Grow();
        Expected = RowsOf(Path);
        Pages = UsedPages(Path);
    }

    // The n-th page of a table or index of this kind.
    const UsedPage& PageOf(const std::string& name, const std::string& kind, std::size_t number = 0) const
    {
        for (const UsedPage& page : Pages)
            if (page.Name == name && page.Kind == kind && number-- == 0)
                return page;
        throw std::runtime_error("no such page: " + name);
    }
    void ZeroPage(const UsedPage& page) const { Zero(Path, page.Offset, page.Size); }
    void Change(std::size_t offset, const std::string& bytes) const
    {
        std::string file = FileBytes(Path);
        file.replace(offset, bytes.size(), bytes);
        WriteBytes(Path, file);
    }
    // All rows come back, although the tables that are named are damaged.
    void ExpectAllRows(const std::string& damagedTables) const
    {
        std::string damaged;
        for (const PlantSalvageTable& table : Salvage().Tables)
        {
            EXPECT_EQ(table.RowsMissing, 0) << table.Name;
            damaged += table.IsWhole ? "" : table.Name + ' ';
        }
        EXPECT_EQ(damaged, damagedTables);
        EXPECT_EQ(RowsOf(Destination), Expected);
    }

    static constexpr const char* EveryTable =
        "SchemaMeta Strains Plants PlantEvents PlantCareEntries HarvestRecords PlantPhotos "
        "PlantHealthObservations PlantJournalEntries ";
    std::string Expected;
    std::vector<UsedPage> Pages;
};

TEST_F(SalvagePageTest, AZeroedHeaderCostsNoRow)
{
    Zero(Path, 0, 100);
    ExpectAllRows("");
}

TEST_F(SalvagePageTest, AZeroedFirstPageCostsNoRow)
{
    Zero(Path, 0, 512);
    ExpectAllRows(""); // the other pages of the schema name all tables
}

TEST_F(SalvagePageTest, AZeroedSchemaCostsNoRow)
{
    for (const UsedPage& page : Pages)
        if (page.Name == "sqlite_schema")
            ZeroPage(page);
    ExpectAllRows(EveryTable);
}

TEST_F(SalvagePageTest, AZeroedRootCostsNoRow)
{
    ZeroPage(PageOf("PlantEvents", "internal"));
    ExpectAllRows("PlantEvents ");
}

TEST_F(SalvagePageTest, ALeafInPlaceOfTheRootCostsNoRow)
{
    const std::string whole = FileBytes(Path);
    for (const std::string table : {"PlantEvents", "PlantJournalEntries"})
        for (const UsedPage& leaf : Pages)
            if (leaf.Name == table && leaf.Kind == "leaf")
            {
                Change(PageOf(table, "internal").Offset, whole.substr(leaf.Offset, leaf.Size));
                ExpectAllRows(table + ' ');
                WriteBytes(Path, whole);
            }
}

TEST_F(SalvagePageTest, ALeafInPlaceOfAnyInteriorPageCostsNoRow)
{
    Grow(600); // three levels
    Expected = RowsOf(Path);
    Pages = UsedPages(Path);
    const std::string whole = FileBytes(Path);
    std::vector<UsedPage> leaves;
    std::size_t interiors = 0;
    for (const UsedPage& page : Pages)
        if (page.Name == "PlantEvents" && page.Kind == "leaf")
            leaves.push_back(page);
    for (const UsedPage& page : Pages)
        if (page.Name == "PlantEvents" && page.Kind == "internal")
        {
            ++interiors;
            for (std::size_t leaf = 0; leaf < leaves.size(); leaf += leaves.size() / 5)
            {
                Change(page.Offset, whole.substr(leaves[leaf].Offset, page.Size));
                ExpectAllRows("PlantEvents ");
                WriteBytes(Path, whole);
            }
        }
    EXPECT_GE(interiors, 3U);
}

TEST_F(SalvagePageTest, ARootThatIsALeafIsWhole)
{
    PlainConnection(Path).RunSQL("DELETE FROM PlantEvents WHERE ID>3; DELETE FROM PlantJournalEntries;");
    Expected = RowsOf(Path);
    ExpectAllRows("");
}

TEST_F(SalvagePageTest, EveryZeroedInteriorPageCostsNoRow)
{
    for (const UsedPage& page : Pages)
        if (page.Kind == "internal")
            ZeroPage(page);
    Salvage();
    EXPECT_EQ(RowsOf(Destination), Expected);
}

TEST_F(SalvagePageTest, EveryZeroedIndexCostsNoRow)
{
    for (const UsedPage& page : Pages)
        if (page.Name.find("By") != std::string::npos || page.Name.find("autoindex") != std::string::npos)
            ZeroPage(page);
    ExpectAllRows("");
}

TEST_F(SalvagePageTest, AnyByteOfTheHeaderCanBeWrong)
{
    const std::string whole = FileBytes(Path);
    for (std::size_t at = 0; at < 100; ++at)
        for (const char change : {'\x01', '\xFF'})
        {
            SCOPED_TRACE(at);
            Change(at, std::string(1, static_cast<char>(whole[at] ^ change)));
            Salvage();
            ASSERT_TRUE(RowsOf(Destination) == Expected);
            WriteBytes(Path, whole);
        }
}

TEST_F(SalvagePageTest, AWrongPageSizeIsFound)
{
    Change(16, std::string("\x10\x00", 2));
    ExpectAllRows("");
}

TEST_F(SalvagePageTest, ALostLeafCostsItsRowsAlone)
{
    const UsedPage& leaf = PageOf("PlantEvents", "leaf", 3);
    const std::size_t before = PageOf("PlantEvents", "leaf", 0).Cells + PageOf("PlantEvents", "leaf", 1).Cells +
                               PageOf("PlantEvents", "leaf", 2).Cells;
    ZeroPage(leaf);
    const PlantSalvageReport report = Salvage();
    const PlantSalvageTable& events = TableOf(report, "PlantEvents");
    EXPECT_EQ(events.RowsRead, 203 - static_cast<std::int64_t>(leaf.Cells));
    EXPECT_EQ(events.RowsMissing, leaf.Cells); // the index names them
    ASSERT_EQ(events.Losses.size(), 1);
    EXPECT_EQ(events.Losses.front().Reason, "They were damaged, or on damaged pages.");
    EXPECT_EQ(Salvaged("SELECT count(*) FROM PlantEvents WHERE ID BETWEEN " + std::to_string(before + 2) + " AND " +
                       std::to_string(before + leaf.Cells)),
              "0");
}

TEST_F(SalvagePageTest, ADamagedRowCostsItselfAlone)
{
    const UsedPage& leaf = PageOf("PlantJournalEntries", "leaf", 1);
    Change(leaf.Offset + 8 + 2 * 2, std::string("\xFF\xFF", 2)); // the pointer to its third row
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(TableOf(report, "PlantJournalEntries").RowsRead, 200);
    EXPECT_EQ(TableOf(report, "PlantJournalEntries").RowsMissing, 1);
}

TEST_F(SalvagePageTest, ARowWithValuesThatDoNotFillItIsNotStored)
{
    const UsedPage& leaf = PageOf("PlantEvents", "leaf", 3);
    const std::string types("\0\x55\x21\x15\x1D", 5); // NULL and texts of 36, 10, 4 and 8 bytes
    const std::size_t at = FileBytes(Path).find(types, leaf.Offset);
    ASSERT_LT(at, leaf.Offset + leaf.Size);
    Change(at + 4, "\x1B"); // a text of 7 bytes
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsRead, 202);
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsMissing, 1);
}

TEST_F(SalvagePageTest, ARowWhoseNumbersDoNotEndIsNotStored)
{
    const UsedPage& leaf = PageOf("PlantEvents", "leaf", 3);
    const std::string whole = FileBytes(Path);
    const std::size_t types = whole.find(std::string("\0\x55\x21\x15\x1D", 5), leaf.Offset);
    ASSERT_LT(types, leaf.Offset + leaf.Size);
    Change(types + 4, "\x9D"); // the last type continues behind the types
    EXPECT_EQ(TableOf(Salvage(), "PlantEvents").RowsMissing, 1);

    WriteBytes(Path, whole);
    Change(leaf.Offset + 8 + 2, std::string("\x01\xFC", 2)); // the second row begins four bytes before the page's end
    Change(leaf.Offset + leaf.Size - 4, std::string(4, '\xFF')); // there, the text of another row ends
    EXPECT_EQ(TableOf(Salvage(), "PlantEvents").RowsMissing, 1);
}

TEST_F(SalvagePageTest, ARowWithATextOfGigabytesIsNotStored)
{
    const UsedPage& leaf = PageOf("PlantEvents", "leaf", 3);
    const std::string types("\0\x55\x21\x15\x1D", 5); // NULL and texts of 36, 10, 4 and 8 bytes
    const std::string file = FileBytes(Path);
    const std::size_t header = file.find(types, leaf.Offset) - 1;
    ASSERT_LT(header, leaf.Offset + leaf.Size);
    // The row has a longer header now, and a text of 2^31 + 4 bytes, of which four are there.
    Change(header, '\x0A' + types.substr(0, 4) + "\x90\x80\x80\x80\x15" + file.substr(header + 6, 50) + "note");
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsRead, 202);
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsMissing, 1);
}

TEST_F(SalvagePageTest, ARowIDOutOfOrderIsNotStored)
{
    const UsedPage& leaf = PageOf("PlantEvents", "leaf", 1);
    const std::string page = FileBytes(Path).substr(leaf.Offset, leaf.Size);
    const auto cell =
        static_cast<std::size_t>(static_cast<unsigned char>(page[8]) << 8U | static_cast<unsigned char>(page[9]));
    Change(leaf.Offset + cell + 1, "\x7F"); // the row ID of the first row, after one byte with the payload's size
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsRead, 202);
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsMissing, 1);
}

TEST_F(SalvagePageTest, AWrongLinkToALeafCostsNoRow)
{
    const UsedPage& root = PageOf("PlantEvents", "internal");
    const std::string whole = FileBytes(Path);
    const std::string page = whole.substr(root.Offset, root.Size);
    const auto cell =
        static_cast<std::size_t>(static_cast<unsigned char>(page[14]) << 8U | static_cast<unsigned char>(page[15]));
    for (const char wrong : {'\0', '\1', '\2', '\xFE', static_cast<char>(root.Number),
                             static_cast<char>(PageOf("PlantEvents", "leaf", 4).Number),
                             static_cast<char>(PageOf("PlantJournalEntries", "leaf", 2).Number),
                             static_cast<char>(PageOf("PlantJournalEntries", "leaf", 5).Number)})
    {
        SCOPED_TRACE(static_cast<int>(wrong));
        Change(root.Offset + cell + 3, std::string(1, wrong));
        ExpectAllRows("PlantEvents ");
        WriteBytes(Path, whole);
    }
}

TEST_F(SalvagePageTest, TwoLinksToALeafWithRowsOfBothCostNoRow)
{
    const UsedPage& root = PageOf("PlantEvents", "internal");
    const std::string page = FileBytes(Path).substr(root.Offset, root.Size);
    const auto cellAt = [&](std::size_t at)
    {
        return root.Offset + (static_cast<std::size_t>(static_cast<unsigned char>(page[at]) << 8U |
                                                       static_cast<unsigned char>(page[at + 1])));
    };
    Change(cellAt(12) + 4, "\1"); // only the first row of the first leaf is in the first range
    Change(cellAt(14) + 3, std::string(1, static_cast<char>(PageOf("PlantEvents", "leaf").Number)));
    ExpectAllRows("PlantEvents ");
}

TEST_F(SalvagePageTest, WrongKeysOfAnInteriorPageCostNoRow)
{
    const UsedPage& root = PageOf("PlantEvents", "internal");
    const std::string whole = FileBytes(Path);
    const std::string page = whole.substr(root.Offset, root.Size);
    const auto cell =
        static_cast<std::size_t>(static_cast<unsigned char>(page[14]) << 8U | static_cast<unsigned char>(page[15]));
    for (const char wrong : {'\0', '\1', '\x30', '\x7F', '\xFF'})
    {
        Change(root.Offset + cell + 4, std::string(1, wrong));
        Salvage();
        EXPECT_TRUE(RowsOf(Destination) == Expected) << static_cast<int>(wrong);
        WriteBytes(Path, whole);
    }
}

TEST_F(SalvagePageTest, TheLastLinkMayLeadToTheFirstLeaf)
{
    Change(PageOf("PlantEvents", "internal").Offset + 8,
           {0, 0, 0, static_cast<char>(PageOf("PlantEvents", "leaf").Number)});
    ExpectAllRows("PlantEvents ");
}

TEST_F(SalvagePageTest, TwoEqualKeysOfAnInteriorPageCostNoRow)
{
    const UsedPage& root = PageOf("PlantEvents", "internal");
    const std::string page = FileBytes(Path).substr(root.Offset, root.Size);
    const auto cellAt = [&](std::size_t at)
    {
        return static_cast<std::size_t>(static_cast<unsigned char>(page[at]) << 8U |
                                        static_cast<unsigned char>(page[at + 1]));
    };
    Change(root.Offset + cellAt(14) + 4, page.substr(cellAt(12) + 4, 1));
    Salvage();
    EXPECT_EQ(RowsOf(Destination), Expected);
}

TEST_F(SalvagePageTest, APointerToTheEndOfAnInteriorPageCostsNoRow)
{
    const UsedPage& root = PageOf("PlantEvents", "internal");
    Change(root.Offset + 12, std::string("\x01\xFC", 2)); // the last four of 512 bytes: a link without a key
    ExpectAllRows("PlantEvents ");
}

TEST_F(SalvagePageTest, ATreeWithACycleEnds)
{
    const UsedPage& root = PageOf("PlantEvents", "internal");
    std::string page = FileBytes(Path).substr(root.Offset, root.Size);
    const std::string link = {0, 0, 0, static_cast<char>(root.Number)};
    const auto cells = static_cast<unsigned char>(page[4]);
    for (std::size_t cell = 0; cell < cells; ++cell)
    {
        const auto at = static_cast<std::size_t>(static_cast<unsigned char>(page[12 + 2 * cell]) << 8U |
                                                 static_cast<unsigned char>(page[13 + 2 * cell]));
        page.replace(at, 4, link);
    }
    page.replace(8, 4, link);
    Change(root.Offset, page);
    ExpectAllRows("PlantEvents ");
}

TEST_F(SalvagePageTest, ATruncatedFileGivesItsFirstPages)
{
    const std::string whole = FileBytes(Path);
    for (std::size_t size = whole.size(); size > 0; size -= std::min<std::size_t>(size, 700))
    {
        WriteBytes(Path, whole.substr(0, size));
        PlantSalvageReport report;
        std::filesystem::remove(Destination);
        const PlantFileResult result = SalvagePlantDatabase(Path, Destination, report);
        const std::size_t wholePages = size / 512;
        std::size_t rows = 0;
        for (const UsedPage& page : Pages)
            if (page.Name == "PlantEvents" && page.Kind == "leaf" && page.Number <= wholePages)
                rows += page.Cells;
        if (rows != 0)
        {
            ASSERT_TRUE(result) << result.Error;
            EXPECT_GE(TableOf(report, "PlantEvents").RowsRead, rows);
        }
    }
}

} // namespace
