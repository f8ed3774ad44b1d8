// Salvages of files whose indexes are damaged, and that need them.

#include "plant_file.h"

#include "support/salvage_test.h"

#include <stdexcept>

using namespace support;

namespace
{

class SalvageIndexTest : public SalvageTest
{
  protected:
    static std::size_t Number(const std::string& bytes, std::size_t at, std::size_t size)
    {
        std::size_t number = 0;
        for (std::size_t i = 0; i < size; ++i)
            number = number * 256 + static_cast<unsigned char>(bytes[at + i]);
        return number;
    }
    // The first page of a table or index of this kind.
    UsedPage PageOf(const std::string& name, const std::string& kind) const
    {
        for (const UsedPage& page : UsedPages(Path))
            if (page.Name == name && page.Kind == kind)
                return page;
        throw std::runtime_error("no such page: " + name);
    }
    void Replace(std::size_t offset, const std::string& bytes) const
    {
        std::string file = FileBytes(Path);
        WriteBytes(Path, file.replace(offset, bytes.size(), bytes));
    }
};

TEST_F(SalvageIndexTest, AnIndexWithACycleEnds)
{
    Grow();
    const UsedPage leaf = PageOf("PlantEvents", "leaf");
    const UsedPage root = PageOf("PlantEventsByPlantDate", "internal");
    Replace(root.Offset + 8, {0, 0, static_cast<char>(root.Number / 256), static_cast<char>(root.Number % 256)});
    Zero(Path, leaf.Offset, leaf.Size);
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsRead, 203 - static_cast<std::int64_t>(leaf.Cells));
    EXPECT_FALSE(TableOf(report, "PlantEvents").IsWhole);
}

TEST_F(SalvageIndexTest, AnEntryWithoutARowIDNamesNoRow)
{
    Grow();
    const UsedPage leaf = PageOf("PlantEvents", "leaf");
    // The entry of event 5: its size, the header's size, four types, the plant and the date, and the row ID twice.
    const std::string key =
        PlainConnection(Path).Value("SELECT PlantUUID||EventDate FROM PlantEvents WHERE ID=5;") + "\5\5";
    const std::size_t at = FileBytes(Path).find(key);
    ASSERT_NE(at, std::string::npos);
    ASSERT_EQ(FileBytes(Path).substr(at - 2, 2), "\1\1"); // the types of the row IDs: integers of one byte
    Zero(Path, leaf.Offset, leaf.Size);
    const std::string whole = FileBytes(Path);
    const auto rows = static_cast<std::int64_t>(leaf.Cells);
    EXPECT_EQ(TableOf(Salvage(), "PlantEvents").RowsMissing, rows);
    Replace(at - 1, "\x0F"); // a text of one byte
    EXPECT_EQ(TableOf(Salvage(), "PlantEvents").RowsMissing, rows - 1);
    WriteBytes(Path, whole);
    Replace(at - 6, "\1\1"); // no values
    EXPECT_EQ(TableOf(Salvage(), "PlantEvents").RowsMissing, rows - 1);
}

TEST_F(SalvageIndexTest, AnIndexWithTheRowsOfAnotherTableIsNotUsed)
{
    const PlainConnection journal(Path);
    const std::string before = RowsOf(Path);
    journal.RunSQL("WITH RECURSIVE N(X) AS (SELECT 101 UNION ALL SELECT X+1 FROM N LIMIT 50) "
                   "INSERT INTO PlantJournalEntries(ID,PlantUUID,EntryDate,Details) SELECT "
                   "X,'11111111-1111-4111-8111-111111111111','2024-05-01','entry' FROM N;"
                   "PRAGMA writable_schema=ON; UPDATE sqlite_master SET rootpage=(SELECT rootpage FROM sqlite_master "
                   "WHERE name='PlantJournalByPlantDate') WHERE name='PlantEventsByPlantDate';");
    const std::string events = journal.Value("SELECT count(*) FROM PlantEvents NOT INDEXED;");
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(std::to_string(TableOf(report, "PlantEvents").RowsRead), events);
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsMissing, 0);
}

TEST_F(SalvageIndexTest, ADamagedRowOfASmallTableIsMissingAlone)
{
    const UsedPage root = PageOf("PlantEvents", "leaf");
    ASSERT_EQ(root.Path, "/");
    Replace(root.Offset + 8, "\xFF\xFF"); // the pointer to its first row
    const PlantSalvageReport report = Salvage();
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsRead, static_cast<std::int64_t>(root.Cells) - 1);
    EXPECT_EQ(TableOf(report, "PlantEvents").RowsMissing, 1);
}

} // namespace
