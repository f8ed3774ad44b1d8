// Salvages of files whose free pages still have deleted rows.

#include "plant_file.h"

#include "support/salvage_test.h"

using namespace support;

namespace
{

// A journal with deleted events, whose bytes are still in free pages.
class SalvageDeletedRowTest : public SalvageTest
{
  protected:
    SalvageDeletedRowTest()
    {
        Grow(500);
        PlainConnection(Path).RunSQL("PRAGMA secure_delete=OFF; DELETE FROM PlantEvents WHERE ID BETWEEN 51 AND 450;");
        EXPECT_NE(FileBytes(Path).find("event 400"), std::string::npos);
        Expected = RowsOf(Path);
    }
    // Sets the bytes of all pages of this kind to zero.
    void ZeroPages(const std::string& name, const std::string& kind) const
    {
        for (const UsedPage& page : UsedPages(Path))
            if (page.Name == name && page.Kind == kind)
                Zero(Path, page.Offset, page.Size);
    }
    // Where the page is in the file whose number, of four bytes, is at `at`.
    static std::size_t PageAt(const std::string& bytes, std::size_t at)
    {
        constexpr std::size_t pageSize = 512;
        std::size_t number = 0;
        for (const char byte : bytes.substr(at, 4))
            number = number * 256 + static_cast<unsigned char>(byte);
        return (number - 1) * pageSize;
    }
    // Where the first page of the free list is in the file.
    std::size_t FreeListAt() const { return PageAt(FileBytes(Path), 32); }

    std::string Expected;
};

TEST_F(SalvageDeletedRowTest, DeletedRowsDoNotFillAGap)
{
    ZeroPages("PlantEvents", "internal");
    Salvage();
    EXPECT_EQ(RowsOf(Destination), Expected);
}

TEST_F(SalvageDeletedRowTest, TheFreeListIsFoundByItsForm)
{
    ZeroPages("PlantEventsByPlantDate", "internal");
    ZeroPages("PlantEvents", "internal");
    Zero(Path, 0, 512); // the number of the first page of the list is here
    Salvage();
    EXPECT_EQ(RowsOf(Destination), Expected);
}

TEST_F(SalvageDeletedRowTest, AnIndexShowsWhichRowsAreDeleted)
{
    const std::size_t list = FreeListAt();
    ZeroPages("PlantEvents", "internal");
    Zero(Path, list, 512);
    Salvage();
    EXPECT_EQ(RowsOf(Destination), Expected);
}

TEST_F(SalvageDeletedRowTest, ADamagedFreeListCostsNoRow)
{
    const std::size_t list = FreeListAt();
    ZeroPages("PlantEvents", "internal");
    const std::string whole = FileBytes(Path);
    const std::string itself = whole.substr(32, 4);
    // A page of the list begins with the number of the next one, the number of free pages in it, and these.
    const std::pair<std::size_t, std::string> damages[] = {
        {0, itself},
        {0, std::string(4, '\xFF')},
        {4, std::string(4, '\xFF')},
        {8, std::string(4, '\0')},
        {8, std::string("\0\0\0\1", 4)},
        {8, std::string(4, '\xFF')},
        {8, whole.substr(list + 12, 4)}, // twice
    };
    for (const auto& [at, damage] : damages)
    {
        std::string bytes = whole;
        WriteBytes(Path, bytes.replace(list + at, 4, damage));
        Salvage();
        EXPECT_TRUE(RowsOf(Destination) == Expected) << at << ' ' << static_cast<int>(damage.back());
    }
}

TEST_F(SalvageDeletedRowTest, ALinkToAPageOfADamagedFreeListCostsNoRow)
{
    std::string bytes = FileBytes(Path);
    bytes[39] = static_cast<char>(bytes[39] + 1); // the number of free pages
    std::size_t root = 0;
    for (const UsedPage& page : UsedPages(Path))
        if (page.Name == "PlantEvents" && page.Kind == "internal" && page.Path == "/")
            root = page.Offset;
    const std::size_t list = FreeListAt();
    const auto byte = [&](std::size_t at) { return static_cast<std::size_t>(static_cast<unsigned char>(bytes[at])); };
    const std::string whole = bytes;
    for (std::size_t cell = 0; cell < byte(root + 4); ++cell)
    {
        const std::size_t link = root + byte(root + 12 + 2 * cell) * 256 + byte(root + 13 + 2 * cell);
        WriteBytes(Path, bytes.replace(link, 4, whole.substr(list + 8, 4)));
        Salvage();
        bytes = whole;
        const std::string kept = Salvaged("SELECT count(*) FROM PlantEvents WHERE ID<=50 OR ID>450");
        EXPECT_EQ(kept, "103") << "link " << cell; // as before the damage
    }
}

TEST_F(SalvageDeletedRowTest, ALinkToAFreePageCostsNoRow)
{
    const std::string whole = FileBytes(Path);
    const auto byte = [&](std::size_t at) { return static_cast<std::size_t>(static_cast<unsigned char>(whole[at])); };
    std::size_t root = 0;
    for (const UsedPage& page : UsedPages(Path))
        if (page.Name == "PlantEvents" && page.Kind == "internal" && page.Path == "/")
            root = page.Offset;
    const std::size_t list = FreeListAt();
    for (std::size_t cell = 0; cell < byte(root + 4); ++cell)
    {
        std::string bytes = whole;
        const std::size_t link = root + byte(root + 12 + 2 * cell) * 256 + byte(root + 13 + 2 * cell);
        WriteBytes(Path, bytes.replace(link, 4, whole.substr(list + 8, 4)));
        Salvage();
        ASSERT_EQ(RowsOf(Destination), Expected) << "link " << cell;
    }
}

// A journal with an older copy of a leaf in a free page, before that leaf in the file. Neither the list of free pages
// nor an index is left.
class SalvageOlderPageTest : public SalvageDeletedRowTest
{
  protected:
    SalvageOlderPageTest()
    {
        for (const UsedPage& page : UsedPages(Path))
            if (page.Name == "PlantEvents" && page.Kind == "leaf")
                Leaves.push_back(page);
        const std::size_t list = FreeListAt();
        const std::string bytes = FileBytes(Path);
        FreePage = bytes.substr(list + 8, 4);
        Leaf = Leaves[Leaves.size() - 3];
        EXPECT_LT(FreeAt(), Leaf.Offset);
        std::string older = bytes.substr(Leaf.Offset, 512);
        for (std::size_t at = 0; (at = older.find("event ", at)) != std::string::npos;)
            older.replace(at, 5, "EVENT");
        Change(FreeAt(), older);
        Zero(Path, list, 512);
        ZeroPages("PlantEventsByPlantDate", "internal");
    }
    void Change(std::size_t offset, const std::string& bytes) const
    {
        WriteBytes(Path, FileBytes(Path).replace(offset, bytes.size(), bytes));
    }
    std::size_t FreeAt() const { return PageAt(FreePage, 0); }
    std::string OlderRows() const { return Salvaged("SELECT count(*) FROM PlantEvents WHERE Details GLOB 'EVENT*'"); }

    std::vector<UsedPage> Leaves;
    UsedPage Leaf;
    std::string FreePage; // its number in the file
};

TEST_F(SalvageOlderPageTest, RowsOfTheTreeComeFirst)
{
    // The last row of the older page was on the next page since, which is lost.
    const UsedPage& next = Leaves[Leaves.size() - 2];
    const std::string bytes = FileBytes(Path);
    const auto byte = [&](std::size_t at) { return static_cast<std::size_t>(static_cast<unsigned char>(bytes[at])); };
    const std::size_t pointer = FreeAt() + 8 + 2 * (Leaf.Cells - 1);
    const std::size_t idAt = FreeAt() + byte(pointer) * 256 + byte(pointer + 1) + 1;
    const std::size_t id = (byte(idAt) % 128) * 128 + byte(idAt + 1) + 1;
    EXPECT_GT(id, 451U);
    Change(idAt, {static_cast<char>(128 + id / 128), static_cast<char>(id % 128)});
    Zero(Path, next.Offset, next.Size);

    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(OlderRows(), "1");
    EXPECT_EQ(Salvaged("SELECT Details GLOB 'EVENT*' FROM PlantEvents WHERE ID=" + std::to_string(id)), "1");
    const PlantSalvageTable& events = TableOf(report, "PlantEvents");
    EXPECT_EQ(events.RowsRead, 103 - static_cast<std::int64_t>(next.Cells) + 1);
    for (const PlantSalvageLoss& loss : events.Losses)
        EXPECT_EQ(loss.Reason.find("same row ID"), std::string::npos) << loss.Reason; // no row was a second one
}

TEST_F(SalvageOlderPageTest, APageOutOfItsRangeComesLast)
{
    const UsedPage& next = Leaves[Leaves.size() - 2];
    const std::string link = {0, 0, static_cast<char>(next.Number / 256), static_cast<char>(next.Number % 256)};
    int links = 0;
    for (const UsedPage& page : UsedPages(Path))
        if (page.Name == "PlantEvents" && page.Kind == "internal")
        {
            const std::size_t at = FileBytes(Path).find(link, page.Offset);
            if (at < page.Offset + page.Size)
            {
                Change(at, FreePage);
                ++links;
            }
        }
    EXPECT_EQ(links, 1);
    Salvage();
    EXPECT_EQ(OlderRows(), "0");
    EXPECT_EQ(RowsOf(Destination), Expected);
}

} // namespace
