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
    // Where the first page of the free list is in the file.
    std::size_t FreeListAt() const
    {
        const std::string bytes = FileBytes(Path);
        return (static_cast<unsigned char>(bytes[34]) * 256U + static_cast<unsigned char>(bytes[35]) - 1U) * 512U;
    }

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

} // namespace
