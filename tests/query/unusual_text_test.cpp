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

// A harvest record is the only row of its statement, so no later step reports the failure.
TEST_F(UnusualTextTest, ATextWithoutMemoryIsNoEmptyText)
{
    const Plant mother = NewPlant("Basil");
    Plant clone = NewPlant("Clone", "", mother.UUID);
    HarvestRecord record;
    EXPECT_TRUE(Repository.SaveHarvestRecord(clone, record));
    for (std::size_t length = 5'000; length < 5'016; ++length) // SQLite has room for a zero byte after some
    {
        const std::string letters(length, 'a');
        RunSQL("UPDATE HarvestRecords SET Notes=CAST('" + letters + "' AS BLOB);");
        PlantLineage out;
        bool happened = true;
        for (int number = 1; happened; ++number)
        {
            try
            {
                const AllocationFailure failure(Allocator::SQLite, number);
                const PlantQueryResult result = QueryPlantLineage(Database, mother.UUID, out);
                happened = failure.Happened();
                EXPECT_TRUE(!result || out.Descendants.at(0).Harvest->Notes == letters) << "allocation " << number;
            }
            catch (const std::bad_alloc&)
            {
                EXPECT_TRUE(out.Descendants.empty());
            }
            ExpectNothingOpen();
        }
        EXPECT_EQ(out.Descendants.at(0).Harvest->Notes, letters);
    }
}

} // namespace
