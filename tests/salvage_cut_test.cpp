// Salvages of files whose end is missing.

#include "plant_file.h"

#include "support/salvage_test.h"

#include <set>
#include <sstream>

using namespace support;

namespace
{

// A journal with texts of several pages.
class SalvageCutTest : public SalvageTest
{
  protected:
    SalvageCutTest()
    {
        Grow();
        PlainConnection(Path).RunSQL("UPDATE PlantEvents SET Details=printf('%.*c',2000,char(65+ID%26)) WHERE ID%9=0;"
                                     "VACUUM;");
        Whole = FileBytes(Path);
        for (const std::string& row : LinesOf(RowsOf(Path)))
            Rows.insert(row);
    }

    static std::vector<std::string> LinesOf(const std::string& text)
    {
        std::istringstream stream(text);
        std::vector<std::string> lines;
        for (std::string line; std::getline(stream, line);)
            lines.push_back(line);
        return lines;
    }
    PlantSalvageReport SalvageFirst(std::size_t size) const
    {
        WriteBytes(Path, Whole.substr(0, size));
        return Salvage();
    }

    std::string Whole;
    std::set<std::string> Rows;
};

TEST_F(SalvageCutTest, NoValueComesFromBehindTheEnd)
{
    PlainConnection(Path).RunSQL("UPDATE PlantCareEntries SET TimelineEventID=NULL; UPDATE HarvestRecords SET "
                                 "TimelineEventID=NULL; UPDATE Plants SET MotherPlantID=NULL;"); // no link is cleared
    Whole = FileBytes(Path);
    for (const std::string& row : LinesOf(RowsOf(Path)))
        Rows.insert(row);
    for (std::size_t size = Whole.size(); size > 10'000; size -= 217)
    {
        SalvageFirst(size);
        for (const std::string& row : LinesOf(RowsOf(Destination)))
            ASSERT_TRUE(Rows.contains(row) || row.find("Lost plant 11111111") != std::string::npos ||
                        row.find("Lost plant 22222222") != std::string::npos)
                << size << ": " << row;
    }
}

TEST_F(SalvageCutTest, ACutPageGivesTheRowsThatItStillHas)
{
    for (const UsedPage& leaf : UsedPages(Path))
        if (leaf.Name == "PlantJournalEntries" && leaf.Kind == "leaf")
        {
            const PlantSalvageTable before = TableOf(SalvageFirst(leaf.Offset + leaf.Size), "PlantJournalEntries");
            const PlantSalvageTable after =
                TableOf(SalvageFirst(leaf.Offset + leaf.Size - 1), "PlantJournalEntries"); // the end of its first row
            EXPECT_EQ(after.RowsRead, before.RowsRead - 1);
            EXPECT_FALSE(after.IsWhole);
            WriteBytes(Path, Whole);
        }
}

TEST_F(SalvageCutTest, MissingPagesAreReported)
{
    EXPECT_EQ(Salvage().MissingPages, 0);
    EXPECT_EQ(SalvageFirst(Whole.size() - 1).MissingPages, 1);
    EXPECT_EQ(SalvageFirst(Whole.size() - 512).MissingPages, 1);
    EXPECT_EQ(SalvageFirst(Whole.size() - 513).MissingPages, 2);
    EXPECT_EQ(SalvageFirst(Whole.size() - 5120).MissingPages, 10);
    WriteBytes(Path, Whole + 'x');
    EXPECT_EQ(Salvage().MissingPages, 0);
    std::string bytes = Whole;
    bytes[24] = '\x7F'; // the change counter: an earlier SQLite wrote the file, and did not count its pages
    WriteBytes(Path, bytes.substr(0, bytes.size() - 512));
    EXPECT_EQ(Salvage().MissingPages, 0);
}

} // namespace
