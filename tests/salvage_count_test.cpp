// Salvages of files with pages that have other numbers of cells than they should.

#include "plant_file.h"

#include "support/salvage_test.h"

using namespace support;

namespace
{

std::size_t NumberAt(const std::string& bytes, std::size_t at)
{
    return static_cast<std::size_t>(static_cast<unsigned char>(bytes[at]) << 8U |
                                    static_cast<unsigned char>(bytes[at + 1]));
}

std::string TwoBytes(std::size_t number)
{
    return {static_cast<char>(number / 256), static_cast<char>(number % 256)};
}

class SalvageCountTest : public SalvageTest
{
  protected:
    SalvageCountTest() { Start(200); }

    void Start(int rows)
    {
        Grow(rows);
        Remember();
    }
    void Remember()
    {
        Whole = FileBytes(Path);
        Expected = RowsOf(Path);
        Pages = UsedPages(Path);
    }
    std::vector<UsedPage> PagesOf(const std::string& name, const std::string& kind) const
    {
        std::vector<UsedPage> pages;
        for (const UsedPage& page : Pages)
            if (page.Name == name && page.Kind == kind)
                pages.push_back(page);
        return pages;
    }
    // Of each kind of page of each table and of one index.
    std::vector<UsedPage> FirstAndLastPages() const
    {
        std::vector<UsedPage> pages;
        for (const UsedPage& page : Pages)
        {
            const std::vector<UsedPage> all = PagesOf(page.Name, page.Kind);
            const bool isFirstOrLast = page.Number == all.front().Number || page.Number == all.back().Number;
            if (isFirstOrLast && page.Name.find("autoindex") == std::string::npos &&
                (page.Name.find("By") == std::string::npos || page.Name == "PlantEventsByPlantDate"))
                pages.push_back(page);
        }
        return pages;
    }
    static std::size_t HeaderAt(const UsedPage& page) { return page.Offset + (page.Number == 1 ? 100 : 0); }
    // Changes the whole file at one place, and no other.
    void Change(std::size_t offset, const std::string& bytes) const
    {
        WriteBytes(Path, std::string(Whole).replace(offset, bytes.size(), bytes));
    }
    void MakeEmpty(const UsedPage& page) const
    {
        std::string header(page.Kind == "leaf" ? 8 : 12, '\0');
        header.replace(0, 1, 1, Whole[page.Offset]);
        header.replace(5, 2, TwoBytes(page.Size));
        if (page.Kind != "leaf")
            header.replace(8, 4, Whole, page.Offset + 8, 4); // the last child
        Change(page.Offset, header + std::string(page.Size - header.size(), '\0'));
    }
    // Removes the last cell of an interior page of a table as SQLite would, so that nothing on the page is wrong. The
    // last child takes the place of two.
    void RemoveChild(const UsedPage& page) const
    {
        std::string bytes = Whole;
        const std::size_t last = page.Offset + NumberAt(Whole, page.Offset + 12 + 2 * (page.Cells - 1));
        std::size_t end = last + 4;
        while ((static_cast<unsigned char>(Whole[end++]) & 0x80U) != 0)
            ;
        bytes.replace(page.Offset + 3, 2, TwoBytes(page.Cells - 1));
        bytes[page.Offset + 7] = static_cast<char>(static_cast<std::size_t>(Whole[page.Offset + 7]) + end - last);
        WriteBytes(Path, bytes);
    }
    // The names of the tables in which damage was found.
    static std::string Damaged(const PlantSalvageReport& report)
    {
        std::string names;
        for (const PlantSalvageTable& table : report.Tables)
            names += table.IsWhole ? "" : table.Name + ' ';
        return names;
    }
    static std::int64_t Missing(const PlantSalvageReport& report)
    {
        std::int64_t rows = 0;
        for (const PlantSalvageTable& table : report.Tables)
            rows += table.RowsMissing;
        return rows;
    }
    // All rows come back, although the tables that are named are damaged.
    void ExpectAllRows(const std::string& damagedTables) const
    {
        const PlantSalvageReport report = Salvage();
        EXPECT_EQ(Damaged(report), damagedTables);
        EXPECT_EQ(Missing(report), 0);
        EXPECT_EQ(report.ClearedLinks, 0);
        EXPECT_TRUE(RowsOf(Destination) == Expected);
    }
    // Whether the page is one of a table, and not of the schema or an index.
    static bool IsOfATable(const UsedPage& page)
    {
        return page.Name.find("By") == std::string::npos && page.Name.rfind("sqlite_", 0) != 0;
    }

    std::string Whole;
    std::string Expected;
    std::vector<UsedPage> Pages;
};

TEST_F(SalvageCountTest, AWrongCellCountCostsNoRow)
{
    for (const UsedPage& page : FirstAndLastPages())
        for (const std::size_t count : {std::size_t{0}, page.Cells - 1, page.Cells + 3, std::size_t{0xFFFF}})
        {
            if (count == page.Cells || page.Cells == 0)
                continue;
            SCOPED_TRACE(page.Name + page.Path + ' ' + std::to_string(count));
            Change(HeaderAt(page) + 3, TwoBytes(count));
            ExpectAllRows(IsOfATable(page) ? page.Name + ' ' : "");
            ASSERT_FALSE(HasFailure());
        }
}

TEST_F(SalvageCountTest, WrongFreeSpaceCostsNoRow)
{
    PlainConnection(Path).RunSQL("DELETE FROM PlantEvents WHERE ID%4=1;");
    Remember();
    const std::vector<UsedPage> leaves = PagesOf("PlantEvents", "leaf");
    const auto found = std::find_if(leaves.begin(), leaves.end(),
                                    [&](const UsedPage& leaf) { return NumberAt(Whole, leaf.Offset + 1) != 0; });
    ASSERT_NE(found, leaves.end()); // it has a free block
    for (const UsedPage& page : {*found, PagesOf("PlantEvents", "internal").front()})
        for (std::size_t at = 1; at < 8; ++at)
            for (const char wrong : {'\0', '\1', '\x7F', '\xFF'})
                if (at != 3 && at != 4 && Whole[page.Offset + at] != wrong)
                {
                    SCOPED_TRACE(page.Kind + ' ' + std::to_string(at) + ' ' + std::to_string(wrong));
                    Change(page.Offset + at, std::string(1, wrong));
                    ExpectAllRows("PlantEvents ");
                }
    const std::size_t block = NumberAt(Whole, found->Offset + 1);
    for (const std::size_t wrong : {std::size_t{1}, block, std::size_t{510}, std::size_t{0xFFFF}})
        for (const std::size_t at : {std::size_t{0}, std::size_t{2}}) // the next block, and the size
        {
            SCOPED_TRACE(std::to_string(at) + ' ' + std::to_string(wrong));
            Change(found->Offset + block + at, TwoBytes(wrong));
            ExpectAllRows("PlantEvents ");
        }
}

TEST_F(SalvageCountTest, AWrongPointerOfAnInteriorPageCostsNoRow)
{
    const UsedPage root = PagesOf("PlantEvents", "internal").at(0);
    for (const std::size_t pointer : {std::size_t{0}, root.Size - 4, std::size_t{0xFFFF}})
    {
        Change(root.Offset + 12, TwoBytes(pointer));
        ExpectAllRows("PlantEvents ");
    }
}

TEST_F(SalvageCountTest, ATwicePointedRowIsStoredOnce)
{
    const UsedPage leaf = PagesOf("PlantEvents", "leaf").at(1);
    Change(leaf.Offset + 10, Whole.substr(leaf.Offset + 8, 2));
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsRead, 202);
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsMissing, 1);
}

TEST_F(SalvageCountTest, AnEmptyLeafCostsItsRowsAlone)
{
    for (const UsedPage& leaf : FirstAndLastPages())
        if (leaf.Kind == "leaf" && IsOfATable(leaf) && leaf.Cells != 0)
        {
            SCOPED_TRACE(leaf.Name + leaf.Path);
            MakeEmpty(leaf);
            const PlantSalvageReport report = Salvage();
            EXPECT_EQ(Damaged(report), leaf.Name + ' ');
            EXPECT_EQ(Missing(report), leaf.Cells); // the index names them
        }
}

TEST_F(SalvageCountTest, AnEmptyLeafIsDamagedWithoutAnIndexToo)
{
    Whole.replace(PagesOf("PlantEventsByPlantDate", "internal").front().Offset, 512, 512, '\0');
    for (const UsedPage& leaf : PagesOf("PlantEvents", "leaf"))
    {
        SCOPED_TRACE(leaf.Path);
        MakeEmpty(leaf);
        EXPECT_EQ(Damaged(Salvage()), "PlantEvents ");
    }
}

TEST_F(SalvageCountTest, AnEmptyInteriorPageCostsNoRow)
{
    Start(600); // three levels
    for (int round = 0; round < 2; ++round)
    {
        for (const UsedPage& page : PagesOf("PlantEvents", "internal"))
        {
            SCOPED_TRACE(page.Path);
            MakeEmpty(page);
            ExpectAllRows("PlantEvents ");
        }
        Whole.replace(PagesOf("PlantEventsByPlantDate", "internal").front().Offset, 512, 512, '\0'); // round 1
    }
}

TEST_F(SalvageCountTest, AnIndexWithoutSomeOfItsEntriesIsNotUsed)
{
    const UsedPage leaf = PagesOf("PlantEvents", "leaf").at(3);
    Change(leaf.Offset + 8, "\xFF\xFF"); // the pointer to its first row
    Whole = FileBytes(Path);
    const auto expectOneMissing = [&]
    {
        const PlantSalvageReport report = Salvage();
        EXPECT_EQ(TableOf(report, "PlantEvents").RowsRead, 202);
        EXPECT_EQ(TableOf(report, "PlantEvents").RowsMissing, 1);
    };
    for (const std::string kind : {"leaf", "internal"})
        for (const UsedPage& page : PagesOf("PlantEventsByPlantDate", kind))
        {
            SCOPED_TRACE(page.Path);
            MakeEmpty(page);
            expectOneMissing();
            Change(page.Offset + 1, std::string("\xFF\xFF\0\1", 4)); // its free blocks, and the number of its cells
            expectOneMissing();
        }
}

TEST_F(SalvageCountTest, AnOlderCopyOfALeafCostsTheNewRowsAlone)
{
    const UsedPage older = PagesOf("PlantEvents", "leaf").back();
    const std::string bytes = Whole.substr(older.Offset, older.Size);
    const PlainConnection journal(Path);
    int rows = 0;
    do
    {
        journal.RunSQL("INSERT INTO PlantEvents(PlantUUID,Details) VALUES('11111111-1111-4111-8111-111111111111','');");
        Remember();
    } while (++rows, PagesOf("PlantEvents", "leaf").back().Number == older.Number);
    ASSERT_GT(rows, 1); // the last one is on a new leaf
    const std::string first = journal.Value("SELECT max(ID)-" + std::to_string(rows - 1) + " FROM PlantEvents;");
    Change(older.Offset, bytes);
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(Damaged(report), "PlantEvents ");
    EXPECT_EQ(Missing(report), rows - 1);
    EXPECT_EQ(Salvaged("SELECT count(*) FROM PlantEvents WHERE ID>=" + first), "1");
}

TEST_F(SalvageCountTest, AnIndexShowsThatAChildIsMissing)
{
    Start(600);
    int pages = 0;
    for (const UsedPage& page : PagesOf("PlantEvents", "internal"))
        if (page.Cells > 1)
        {
            SCOPED_TRACE(page.Path);
            RemoveChild(page);
            ExpectAllRows("PlantEvents ");
            ++pages;
        }
    EXPECT_GT(pages, 1);
}

// The table lacks a child, and the list of free pages looks whole but lacks a page with rows of this child and a
// deleted row.
TEST_F(SalvageCountTest, AnIndexShowsWhichMissingRowsAreDeleted)
{
    Grow(500);
    PlainConnection(Path).RunSQL("PRAGMA secure_delete=OFF; DELETE FROM PlantEvents WHERE ID BETWEEN 51 AND 450;");
    Remember();
    const auto pageAt = [&](std::size_t at) { return 512 * (NumberAt(Whole, at + 2) - 1); };
    const UsedPage root = PagesOf("PlantEvents", "internal").front();
    const std::size_t child = pageAt(root.Offset + NumberAt(Whole, root.Offset + 12 + 2 * (root.Cells - 1)));
    const std::size_t list = pageAt(32);
    const std::size_t freePage = pageAt(list + 8);
    const UsedPage index = PagesOf("PlantEventsByPlantDate", "internal").front();
    Whole.replace(list + 8, 4, std::string(2, '\0') + TwoBytes(index.Number));
    Whole.replace(freePage, 512, Whole, child, 512);
    const std::size_t rowID = freePage + NumberAt(Whole, freePage + 8) + 1; // of the first row, after its size
    ASSERT_GT(NumberAt(Whole, rowID), NumberAt("\x83\x42", 0));
    Whole.replace(rowID, 2, "\x83\x42"); // 450
    RemoveChild(root);
    ExpectAllRows("PlantEvents ");
}

TEST_F(SalvageCountTest, APageOfAnotherIndexCostsNoRow)
{
    const UsedPage index = PagesOf("PlantEventsByPlantDate", "internal").front();
    const UsedPage other = PagesOf("PlantJournalByPlantDate", "leaf").front();
    Whole.replace(index.Offset, 512, Whole, other.Offset, 512);
    Change(PagesOf("PlantEvents", "internal").front().Offset, std::string(512, '\0'));
    ExpectAllRows("PlantEvents ");
}

TEST_F(SalvageCountTest, AWrongRowIDInAnIndexCostsNoRow)
{
    PlainConnection(Path).RunSQL("DELETE FROM PlantEvents WHERE ID=100;");
    Remember();
    const std::string key =
        PlainConnection(Path).Value("SELECT PlantUUID||EventDate FROM PlantEvents WHERE ID=5;") + "\5\5";
    const std::size_t at = Whole.find(key);
    ASSERT_NE(at, std::string::npos);
    for (const char* rowID : {"\x06", "\x64"}) // that of another row, and that of the deleted row
    {
        Change(at + key.size() - 1, rowID);
        ExpectAllRows("");
    }
}

} // namespace
