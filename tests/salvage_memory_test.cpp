// The memory that a salvage of a large file needs.

#include "plant_file.h"

#include "support/memory_peak.h"
#include "support/salvage_test.h"

#include <cstdint>
#include <filesystem>

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

} // namespace
