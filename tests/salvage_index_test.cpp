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

} // namespace
