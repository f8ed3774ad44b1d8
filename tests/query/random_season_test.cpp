// Answers about random seasons, compared with models that compute them from the lists.

#include "query/models.h"
#include "query/print.h"
#include "query/random_season.h"
#include "support/test_form.h"

#include <gtest/gtest.h>

using namespace support;

namespace
{

// Calls `ask` with some random seasons, and counts how often it returns a text that is not empty.
template <typename Ask> void AskRandomSeasons(const Ask& ask)
{
    std::mt19937_64 random(Seed());
    const TimeLimit limit;
    int answers = 0;
    for (int journal = 0; journal < 100 || (IsLongForm() && !limit.IsOver()); ++journal)
    {
        PlantDatabase database;
        ASSERT_TRUE(database.Open(":memory:"));
        RandomSeason content(random, database);
        if (journal % 2 == 0)
            content.Fill();
        else
            content.FillWithOddRows();
        const std::vector<ListedPlant> listed = ListPlants(database);
        for (int question = 0; question < 20; ++question)
        {
            const auto [answer, expected] = ask(database, content, listed);
            ASSERT_EQ(answer, expected) << "journal " << journal << ", question " << question << ", seed " << Seed();
            answers += answer.empty() ? 0 : 1;
        }
    }
    EXPECT_GT(answers, 300);
}

using Answers = std::pair<std::string, std::string>;
using Plants = std::vector<ListedPlant>;

TEST(RandomSeasonTest, TheStatusIsThatOfTheModel)
{
    AskRandomSeasons(
        [](PlantDatabase& database, RandomSeason& content, const Plants& listed) -> Answers
        {
            const PlantSet set = content.AnySet();
            const std::string today = content.AnyDay();
            std::vector<PlantStatus> out(2);
            EXPECT_TRUE(QueryPlantStatus(database, set, today, out));
            return {Printed(out), Printed(StatusModel(listed, set, today))};
        });
}

TEST(RandomSeasonTest, TheTotalsAreThoseOfTheModel)
{
    AskRandomSeasons(
        [](PlantDatabase& database, RandomSeason& content, const Plants& listed) -> Answers
        {
            const PlantTotalFilter filter = content.AnyTotalFilter();
            std::vector<PlantTotal> out(2);
            EXPECT_TRUE(QueryPlantTotals(database, filter, out));
            return {Printed(out), Printed(TotalModel(listed, filter))};
        });
}

TEST(RandomSeasonTest, TheComparisonIsThatOfTheModel)
{
    AskRandomSeasons(
        [](PlantDatabase& database, RandomSeason& content, const Plants& listed) -> Answers
        {
            const std::vector<PlantComparedSet> sets = content.AnyComparedSets();
            std::vector<PlantComparison> out(2);
            EXPECT_TRUE(QueryPlantComparison(database, sets, out));
            return {Printed(out), Printed(ComparisonModel(listed, sets))};
        });
}

TEST(RandomSeasonTest, TheLineageIsThatOfTheModel)
{
    AskRandomSeasons(
        [](PlantDatabase& database, RandomSeason& content, const Plants& listed) -> Answers
        {
            const std::string plant = content.AnyPlant();
            PlantLineage out;
            out.Ancestors.resize(2);
            EXPECT_TRUE(QueryPlantLineage(database, plant, out));
            return {Printed(out), Printed(LineageModel(listed, plant))};
        });
}

} // namespace
