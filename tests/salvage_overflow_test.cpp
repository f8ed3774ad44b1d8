// Salvages of rows with texts that are longer than a page.

#include "plant_file.h"

#include "support/disk_failure.h"
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

TEST_F(SalvageOverflowTest, RowsOfAllLengthsComeBack)
{
    // The last value ends with zeros: the last page of some rows has nothing else.
    PlainConnection(Path).RunSQL("WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL SELECT X+1 FROM N LIMIT 540) "
                                 "INSERT INTO PlantCareEntries(PlantUUID,Product,RunoffMl) SELECT "
                                 "'11111111-1111-4111-8111-111111111111',printf('%.*c',900+X,'p'),0.5 FROM N;");
    Salvage();
    EXPECT_TRUE(RowsOf(Destination) == RowsOf(Path));
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

TEST_F(SalvageOverflowTest, TwoRowsWithTheSameOverflowPageAreReported)
{
    // The first page of each chain is followed by the second page of the same one.
    const auto second = [&](const UsedPage& page) { return page.Path.ends_with("+000001"); };
    const auto later = std::find_if(Overflow.begin() + 2, Overflow.end(), second);
    ASSERT_NE(later, Overflow.end());
    SetLink(Overflow.front(), {0, 0, static_cast<char>(later->Number / 256), static_cast<char>(later->Number % 256)});
    const PlantSalvageReport report = Salvage();
    EXPECT_FALSE(TableOf(report, "PlantEvents").IsWhole);
    EXPECT_TRUE(TableOf(report, "PlantJournalEntries").IsWhole);
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsRead, 23); // either row may be the whole one
}

TEST_F(SalvageOverflowTest, ManyRowsWithOneEndlessChainAreReadInLinearTime)
{
    // Every row claims a text of nearly the size of the file, and all texts are one cycle of pages. To follow the cycle
    // for each row would take half a million reads.
    constexpr std::size_t pages = 150;
    constexpr std::size_t firstOverflow = 120;
    constexpr int mostReads = 100'000;
    const auto link = [](std::size_t number) { return std::string{0, 0, 0, static_cast<char>(number)}; };
    std::string row = {'\x84', '\xAF', '\x6B', '\5'}; // the payload's size, 71,659, and the row ID
    row += std::string(39, 'x') + link(firstOverflow);
    std::string bytes = FileBytes(Path).substr(0, 512);
    for (std::size_t number = 2; number <= pages; ++number)
    {
        std::string content(512, 'x');
        if (number >= firstOverflow)
            content.replace(0, 4, link(number == pages ? firstOverflow : number + 1));
        else
        {
            content.replace(0, 8, std::string("\x0D\0\0\0\x1E\0\0\0", 8));
            for (std::size_t cell = 0; cell < 30; ++cell)
                content.replace(8 + 2 * cell, 2, {0, 68});
            content.replace(68, row.size(), row);
        }
        bytes += content;
    }
    WriteBytes(Path, bytes);
    {
        const FailingDisk disk;
        const DiskFailure tooManyReads({DiskCall::Read, DiskError::IO, false, mostReads});
        PlantSalvageReport report;
        SalvagePlantDatabase(Path, Destination, report);
        EXPECT_FALSE(tooManyReads.Happened());
    }
    EXPECT_TRUE(FileBytes(Path) == bytes);
}

} // namespace
