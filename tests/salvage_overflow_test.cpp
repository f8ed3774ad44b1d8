// Salvages of rows with texts that are longer than a page.

#include "plant_file.h"

#include "support/salvage_test.h"

using namespace support;

namespace
{

// A journal whose notes fill several pages each, between short ones.
class SalvageOverflowTest : public SalvageTest
{
  protected:
    SalvageOverflowTest()
    {
        Grow(20);
        PlainConnection(Path).RunSQL("UPDATE PlantEvents SET Details=printf('%.*c',3000,char(65+ID%26)) WHERE ID%5=0;");
        for (const UsedPage& page : UsedPages(Path))
            if (page.Kind == "overflow" && page.Name == "PlantEvents")
                Overflow.push_back(page);
        Long = PlainConnection(Path).Value("SELECT count(*) FROM PlantEvents WHERE ID%5=0;");
    }

    void ExpectOneRowLost() const
    {
        const PlantSalvageReport report = Salvage();
        EXPECT_EQ(TableOf(report, "PlantEvents").RowsRead, 22);
        EXPECT_EQ(TableOf(report, "PlantEvents").RowsMissing, 1);
        EXPECT_EQ(Salvaged("SELECT count(*) FROM PlantEvents WHERE length(Details)=3000"),
                  std::to_string(std::stoi(Long) - 1));
    }
    void SetLink(const UsedPage& page, const std::string& link) const
    {
        std::string bytes = FileBytes(Path);
        bytes.replace(page.Offset, 4, link);
        WriteBytes(Path, bytes);
    }

    std::vector<UsedPage> Overflow;
    std::string Long; // the number of long texts
};

TEST_F(SalvageOverflowTest, LongTextsComeBack)
{
    Salvage();
    EXPECT_EQ(RowsOf(Destination), RowsOf(Path));
}

TEST_F(SalvageOverflowTest, ALostOverflowPageCostsItsRowAlone)
{
    const std::string whole = FileBytes(Path);
    for (const std::size_t page : {0U, 2U, 4U}) // the first, one in the middle
    {
        Zero(Path, Overflow.at(page).Offset, 512);
        ExpectOneRowLost();
        ExpectOneRowLost();
        WriteBytes(Path, whole);
    }
}

TEST_F(SalvageOverflowTest, ALostLastOverflowPageCostsItsRow)
{
    std::size_t last = 0;
    while (Overflow.at(last + 1).Path.substr(0, 8) == Overflow.front().Path.substr(0, 8))
        ++last;
    Zero(Path, Overflow.at(last).Offset, 512); // the link to the next page is zero in any case
    ExpectOneRowLost();
    ExpectOneRowLost();
}

TEST_F(SalvageOverflowTest, AChainThatIsACycleOrTooShortCostsItsRow)
{
    const std::string whole = FileBytes(Path);
    const auto number = [](std::size_t page) {
        return std::string{0, 0, static_cast<char>(page / 256), static_cast<char>(page % 256)};
    };
    for (const std::string& link : {number(Overflow.front().Number), number(0), std::string("\xFF\xFF\xFF\xFF")})
    {
        SetLink(Overflow.front(), link);
        ExpectOneRowLost();
        ExpectOneRowLost();
        WriteBytes(Path, whole);
    }
}

TEST_F(SalvageOverflowTest, ManyRowsWithOneEndlessChainEnd)
{
    // Every row claims a text of the size of the file, and all texts are one cycle of pages.
    std::string bytes(512 * 400, '\0');
    bytes.replace(0, 512, FileBytes(Path).substr(0, 512));
    for (std::size_t page = 1; page < 400; ++page)
    {
        std::string content(512, 'x');
        if (page >= 200)
            content.replace(0, 4,
                            {0, 0, static_cast<char>((page == 399U ? 200U : page + 1U) / 256U),
                             static_cast<char>((page == 399 ? 200 : page + 1) % 256)});
        else
        {
            content.replace(0, 8, std::string("\x0D\0\0\0\x28\0\0\0", 8));
            for (std::size_t cell = 0; cell < 40; ++cell)
                content.replace(8 + 2 * cell, 2, {0, 100});
            content.replace(100, 4, {'\x8C', '\x80', '\0', '\5'}); // the payload's size, and the row ID
            content.replace(508, 4, {0, 0, 0, '\xC8'});
        }
        bytes.replace(page * 512, 512, content);
    }
    WriteBytes(Path, bytes);
    PlantSalvageReport report;
    SalvagePlantDatabase(Path, Destination, report);
    EXPECT_TRUE(FileBytes(Path) == bytes);
}

} // namespace
