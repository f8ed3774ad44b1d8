// The example of the README, compiled and run.

#include "plant_query.h"
#include "support/journal_test.h"
#include "support/page.h"

#include <algorithm>
#include <iostream>

using namespace support;

namespace
{

int Ask(PlantDatabase& journal)
{
    // clang-format off
    // [questions]
    PlantActivityFilter week;
    week.Plants.Tents = {"Tent 1"};
    week.From = "2025-03-03";
    week.To = "2025-03-09";
    std::vector<PlantActivity> activities;
    if (PlantQueryResult result = QueryPlantActivity(journal, week, activities); !result)
        return std::cerr << result.Error << '\n', 1; // reading the events: database is locked
    for (const PlantActivity& activity : activities)
        std::cout << activity.Date << ' ' << activity.PlantName << ": " << activity.Kind << ' ' << activity.Text << '\n';

    PlantTotalFilter water;
    water.Group = PlantTotalGroup::Tent;
    water.Period = PlantPeriod::Month;
    std::vector<PlantTotal> totals;
    QueryPlantTotals(journal, water, totals);
    for (const PlantTotal& total : totals)
        std::cout << total.Period << ' ' << total.Name << ": " << total.AmountMl << " ml\n"; // 2025-03 Tent 1: 1250 ml
    // [end]
    // clang-format on
    return 0;
}

using ReadmeQueryTest = JournalTest;

TEST_F(ReadmeQueryTest, TheExampleIsThatOfTheReadme)
{
    const std::vector<std::string> blocks = CodeBlocks("README.md", "cpp");
    EXPECT_EQ(std::count(blocks.begin(), blocks.end(), Region(__FILE__, "questions")), 1);
}

TEST_F(ReadmeQueryTest, TheExamplePrintsTheWeekAndTheTotals)
{
    Plant basil = NewPlant("Basil");
    basil.Tent = "Tent 1";
    ASSERT_TRUE(Repository.UpdatePlant(basil));
    for (const char* date : {"2025-03-02", "2025-03-03", "2025-03-09"})
    {
        PlantCareEntry care;
        care.PlantUUID = basil.UUID;
        care.CareDate = date;
        care.AmountMl = 500;
        ASSERT_TRUE(Repository.CreatePlantCareEntry(care));
    }
    testing::internal::CaptureStdout();
    EXPECT_EQ(Ask(Database), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "2025-03-09 Basil: Water 500 ml\n2025-03-03 Basil: Water 500 ml\n"
                                                      "2025-03 Tent 1: 1500 ml\n");
    Database.Close();
    testing::internal::CaptureStderr();
    EXPECT_EQ(Ask(Database), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "reading the journal: the database is closed\n");
}

} // namespace
