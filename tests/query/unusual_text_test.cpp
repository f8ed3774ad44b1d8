// Columns that hold no text, as other programs can write them.

#include "query/query_test.h"
#include "support/allocation_failure.h"

#include <new>

using namespace support;

namespace
{

class UnusualTextTest : public QueryTest
{
  protected:
    std::vector<PlantTotal> Totals()
    {
        PlantTotalFilter filter;
        filter.Group = PlantTotalGroup::Strain;
        return AnswerOf<std::vector<PlantTotal>>(QueryPlantTotals, filter);
    }
};

TEST_F(UnusualTextTest, AMissingTextIsEmpty)
{
    const Plant plant = NewPlant("Basil", "Genovese");
    Stored(PlantCareEntry{}, plant, &PlantRepository::CreatePlantCareEntry);
    ReplaceInDefinitions("Strain TEXT NOT NULL", "Strain TEXT");
    RunSQL("UPDATE Plants SET Strain=NULL;");
    ASSERT_EQ(Totals().size(), 1U);
    EXPECT_EQ(Totals().at(0).Key, "");
}

TEST_F(UnusualTextTest, ATextWithoutMemoryIsNoEmptyText)
{
    const Plant plant = NewPlant("Basil");
    Stored(PlantCareEntry{}, plant, &PlantRepository::CreatePlantCareEntry);
    for (std::size_t length = 5'000; length < 5'016; ++length) // SQLite has room for a zero byte after some
    {
        const std::string letters(length, 'a');
        RunSQL("UPDATE Plants SET Strain=CAST('" + letters + "' AS BLOB);");
        ASSERT_EQ(Totals().at(0).Key, letters);
        PlantTotalFilter filter;
        filter.Group = PlantTotalGroup::Strain;
        std::vector<PlantTotal> out;
        bool happened = true;
        for (int number = 1; happened; ++number)
        {
            try
            {
                const AllocationFailure failure(Allocator::SQLite, number);
                const PlantQueryResult result = QueryPlantTotals(Database, filter, out);
                happened = failure.Happened();
                EXPECT_TRUE(!result || out.at(0).Key == letters) << "allocation " << number;
            }
            catch (const std::bad_alloc&)
            {
                EXPECT_TRUE(out.empty());
            }
            ExpectNothingOpen();
        }
    }
}

} // namespace
