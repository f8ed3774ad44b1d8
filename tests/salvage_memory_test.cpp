// The memory that a salvage of a large file needs.

#include "plant_file.h"

#include "support/memory_peak.h"
#include "support/salvage_test.h"

#include <cstdint>
#include <filesystem>
#include <vector>

using namespace support;

namespace
{

// A journal of 20 MB in 5,000 pages, each with one long row.
class SalvageMemoryTest : public SalvageTest
{
  protected:
    static constexpr std::int64_t Rows = 5000;

    SalvageMemoryTest()
    {
        PlainConnection(Path).RunSQL(
            "WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL SELECT X+1 FROM N LIMIT 5000) INSERT INTO "
            "PlantJournalEntries(ID,PlantUUID,EntryDate,Details) SELECT X+100,'11111111-1111-4111-8111-111111111111',"
            "'2026-05-01',printf('%.3000c',char(97+X%26)) FROM N;");
        EXPECT_GT(std::filesystem::file_size(Path), 20'000'000U);
    }
    // Salvages the journal, and returns how much memory that needs.
    std::int64_t MemoryOfSalvage()
    {
        const MemoryPeak peak;
        const PlantFileResult result = SalvagePlantDatabase(Path, Destination, Report);
        EXPECT_TRUE(result) << result.Error;
        return peak.Bytes();
    }
    void ZeroPages(const std::string& name, const std::string& kind) const
    {
        for (const UsedPage& page : UsedPages(Path))
            if (page.Name == name && page.Kind == kind)
                Zero(Path, page.Offset, page.Size);
    }

    static constexpr std::int64_t MostOfSQLite = 4'000'000;
    static constexpr std::int64_t MostOfAPage = 200;
    static constexpr std::int64_t MostOfARowID = 100;
    PlantSalvageReport Report;
};

TEST_F(SalvageMemoryTest, TheRowsAreNotInMemory)
{
    EXPECT_LT(MemoryOfSalvage(), MostOfSQLite + Rows * MostOfAPage);
    EXPECT_EQ(TableOf(Report, "PlantJournalEntries").RowsRead, Rows + 1);
}

TEST_F(SalvageMemoryTest, TheRowsOfALostTreeAreNotInMemoryEither)
{
    PlainConnection(Path).RunSQL("PRAGMA secure_delete=OFF; DELETE FROM PlantEvents;");
    ZeroPages("PlantJournalEntries", "internal");
    Zero(Path, 32, 4); // the first page of the list of free pages
    Zero(Path, 0, 4);
    EXPECT_LT(MemoryOfSalvage(), MostOfSQLite + Rows * (MostOfAPage + MostOfARowID));
    EXPECT_EQ(TableOf(Report, "PlantJournalEntries").RowsRead, Rows + 1);
}

// A journal whose entries are on one page of 64 KiB. Many cells of this page share their bytes.
class SalvageSharedBytesTest : public SalvageMemoryTest
{
  protected:
    static constexpr std::size_t PageSize = 65536;

    SalvageSharedBytesTest()
    {
        PlainConnection(Path).RunSQL("DELETE FROM PlantJournalEntries; PRAGMA page_size=65536; VACUUM;");
        for (const UsedPage& page : UsedPages(Path))
            if (page.Name == "PlantJournalEntries")
                At = page.Offset;
    }
    static std::string Varint(std::size_t number)
    {
        std::string bytes(1, static_cast<char>(number % 128));
        while ((number /= 128) != 0)
            bytes.insert(0, 1, static_cast<char>(128 + number % 128));
        return bytes;
    }
    // The beginning of an entry whose details have this size.
    static std::string EntryWithDetails(std::size_t size)
    {
        const std::string values = "11111111-1111-4111-8111-1111111111112026-05-01Topping";
        const std::string types = std::string("\0\x55\x21\x1B", 4) + Varint(13 + 2 * size);
        const std::string header = Varint(types.size() + 1) + types;
        return Varint(header.size() + values.size() + size) + '\1' + header + values;
    }
    // Writes a leaf with these pointers and cells, which are at the end of it.
    void WriteLeaf(const std::vector<std::size_t>& pointers, const std::string& cells) const
    {
        const auto twoBytes = [](std::size_t number) {
            return std::string({static_cast<char>(number / 256), static_cast<char>(number % 256)});
        };
        std::string page = std::string("\x0D\0\0", 3) + twoBytes(pointers.size()) + twoBytes(PageSize - cells.size());
        page += '\7'; // bytes in fragments, so that no number of cells fills the page
        for (const std::size_t pointer : pointers)
            page += twoBytes(pointer);
        ASSERT_LE(page.size() + cells.size(), PageSize);
        page += std::string(PageSize - cells.size() - page.size(), '\0') + cells;
        WriteBytes(Path, FileBytes(Path).replace(At, PageSize, page));
    }

    static constexpr std::int64_t MostOfLargePages = 16 * 65536; // of the page, its row, and the list of its cells
    std::size_t At = 0;
};

TEST_F(SalvageSharedBytesTest, ARowIsReadOnceFromEqualPointers)
{
    const std::string cell = EntryWithDetails(30'000) + std::string(30'000, 'd');
    WriteLeaf(std::vector<std::size_t>(17'000, PageSize - cell.size()), cell);
    EXPECT_LT(MemoryOfSalvage(), MostOfSQLite + MostOfLargePages);
    EXPECT_EQ(TableOf(Report, "PlantJournalEntries").RowsRead, 1);
}

TEST_F(SalvageSharedBytesTest, OverlappingRowsAreReadOnce)
{
    constexpr std::size_t entries = 500;
    std::string cells; // the details of each entry have the entries behind it
    std::vector<std::size_t> begins;
    for (std::size_t entry = 0; entry < entries; ++entry)
    {
        begins.push_back(cells.size());
        cells += EntryWithDetails(20'000);
    }
    cells += std::string(20'000, 'd');
    std::vector<std::size_t> pointers;
    for (const std::size_t begin : begins)
        pointers.push_back(PageSize - cells.size() + begin);
    WriteLeaf(pointers, cells);
    EXPECT_LT(MemoryOfSalvage(), MostOfSQLite + MostOfLargePages);
    EXPECT_LT(TableOf(Report, "PlantJournalEntries").RowsRead, 3);
}

} // namespace
