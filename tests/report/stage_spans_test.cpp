// Tests of the stages of a plant over time.

#include "report/stage_spans.h"

#include "query/days.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace plant_report;

namespace
{

class StageSpansTest : public testing::Test
{
  protected:
    StageSpansTest()
    {
        Basil.Name = "Basil";
        Basil.Stage = PlantStage::Veg;
    }

    void Happened(const std::string& date, const std::string& kind, const std::string& text = {})
    {
        PlantActivity activity;
        activity.Date = date;
        activity.Kind = kind;
        activity.Text = text;
        Activities.push_back(activity);
    }

    // "Seed 2025-03-01 2025-03-20, Veg ..." for a report that ends on 2025-12-31.
    std::string Spans(const std::string& lastCare = "0000-01-01") const
    {
        std::string text;
        for (const PlantStageSpan& span : StageSpansOf(Basil, Activities, *plant_query::DaysSinceEpoch(lastCare),
                                                       *plant_query::DaysSinceEpoch("2025-12-31")))
        {
            EXPECT_EQ(span.PlantName, "Basil");
            text += (text.empty() ? "" : ", ") + std::string(PlantStageName(span.Stage)) + " " + span.From.substr(5) +
                    " " + span.To.substr(5);
        }
        return text;
    }

    Plant Basil;
    std::vector<PlantActivity> Activities;
};

TEST_F(StageSpansTest, APlantWithoutADateHasNoSpan)
{
    EXPECT_EQ(Spans(), "");
    Happened("", "Sown");
    Happened("2025-03", "Flip");
    EXPECT_EQ(Spans(), "");
}

TEST_F(StageSpansTest, EachStageLastsUntilTheNextBegins)
{
    Basil.Stage = PlantStage::Cure;
    Happened("2025-03-01", "Sown");
    Happened("2025-03-20", "Stage", "Veg");
    Happened("2025-05-01", "Flip");
    Happened("2025-07-01", "Stage", "Dry");
    Happened("2025-07-15", "Stage", "Cure");
    EXPECT_EQ(Spans(), "Seed 03-01 03-20, Veg 03-20 05-01, Flower 05-01 07-01, Dry 07-01 07-15, Cure 07-15 12-31");
}

TEST_F(StageSpansTest, APlantInVegWithoutItsDateWasInItSinceItWasSown)
{
    Happened("2025-03-01", "Sown");
    EXPECT_EQ(Spans(), "Veg 03-01 12-31");
    Basil.Stage = PlantStage::Seed;
    EXPECT_EQ(Spans(), "Seed 03-01 12-31");
}

TEST_F(StageSpansTest, TransplantingBeginsVegWithoutAnEventThatDoes)
{
    Happened("2025-03-01", "Sown");
    Happened("2025-03-10", "Transplant");
    EXPECT_EQ(Spans(), "Seed 03-01 03-10, Veg 03-10 12-31");
    Happened("2025-03-20", "Stage", "Veg");
    EXPECT_EQ(Spans(), "Seed 03-01 03-20, Veg 03-20 12-31");
}

TEST_F(StageSpansTest, APlantThatWasOnlyTransplantedIsInVeg)
{
    Happened("2025-03-10", "Transplant");
    EXPECT_EQ(Spans(), "Veg 03-10 12-31");
}

TEST_F(StageSpansTest, TransplantingLaterChangesNothing)
{
    Basil.Stage = PlantStage::Flower;
    Happened("2025-05-01", "Flip");
    Happened("2025-05-10", "Transplant");
    EXPECT_EQ(Spans(), "Flower 05-01 12-31");
}

TEST_F(StageSpansTest, ThePlantsOwnDatesCountBeforeEvents)
{
    Basil.Stage = PlantStage::Harvested;
    Basil.FlipDate = "2025-05-02";
    Basil.HarvestDate = "2025-07-02";
    Happened("2025-05-01", "Flip");
    Happened("2025-05-02", "Flip");
    Happened("2025-06-01", "Harvest");
    Happened("2025-07-02", "Harvest");
    Happened("2025-07-09", "Harvest");
    EXPECT_EQ(Spans(), "Flower 05-02 07-02, Harvested 07-02 07-02");
}

TEST_F(StageSpansTest, WithoutADateOfThePlantTheNewestEventCounts)
{
    Basil.Stage = PlantStage::Harvested;
    Happened("2025-05-01", "Flip");
    Happened("2025-05-02", "Flip");
    Happened("2025-07-01", "Harvest");
    Happened("2025-07-02", "Harvest");
    EXPECT_EQ(Spans(), "Flower 05-02 07-02, Harvested 07-02 07-02");
}

TEST_F(StageSpansTest, AMotherIsNotACloneOnTheDayOfACut)
{
    Happened("2025-03-01", "Sown");
    Happened("2025-04-01", "Clone", "Clone cut: Basil 2");
    EXPECT_EQ(Spans(), "Veg 03-01 12-31");
}

TEST_F(StageSpansTest, ACloneBeginsOnTheDayOfItsCut)
{
    Basil.Stage = PlantStage::Clone;
    Basil.MotherPlantUUID = "mother";
    Happened("2025-04-01", "Clone");
    Happened("2025-06-01", "Clone", "Clone cut: Basil 3");
    EXPECT_EQ(Spans(), "Clone 04-01 12-31");
    Basil.CloneDate = "2025-06-01";
    EXPECT_EQ(Spans(), "Clone 06-01 12-31");
}

TEST_F(StageSpansTest, TransplantingACloneBeginsVeg)
{
    Basil.MotherPlantUUID = "mother";
    Happened("2025-04-01", "Clone");
    EXPECT_EQ(Spans(), "Veg 04-01 12-31") << "as that of a seedling without the date of its stage";
    Happened("2025-04-10", "Transplant");
    EXPECT_EQ(Spans(), "Clone 04-01 04-10, Veg 04-10 12-31");
}

TEST_F(StageSpansTest, ACutBeforeAllOtherDatesIsThatOfAClone)
{
    Basil.Stage = PlantStage::Clone;
    Happened("2025-04-01", "Clone");
    EXPECT_EQ(Spans(), "") << "a plant without a mother";
    Basil.MotherPlantUUID = "mother";
    EXPECT_EQ(Spans(), "Clone 04-01 12-31");
    Activities.insert(Activities.begin(), Activities.front());
    Activities.front().Date = "2025-03-01";
    Activities.front().Kind = "Flip";
    EXPECT_EQ(Spans(), "Flower 03-01 12-31");
}

TEST_F(StageSpansTest, OnlyTheLastStageOfADayHasASpan)
{
    Basil.Stage = PlantStage::Flower;
    Happened("2025-03-01", "Sown");
    Happened("2025-03-01", "Stage", "Veg");
    Happened("2025-05-01", "Stage", "Veg");
    Happened("2025-05-01", "Flip");
    EXPECT_EQ(Spans(), "Veg 03-01 05-01, Flower 05-01 12-31");
}

TEST_F(StageSpansTest, AStageThatBeginsAgainIsOneSpan)
{
    Happened("2025-03-01", "Stage", "Veg");
    Happened("2025-04-01", "Stage", "Veg");
    EXPECT_EQ(Spans(), "Veg 03-01 12-31");
}

TEST_F(StageSpansTest, AnEventThatNamesNoStageChangesNothing)
{
    Basil.Stage = PlantStage::Flower;
    Happened("2025-05-01", "Flip");
    Happened("2025-05-02", "Stage", "veg");
    Happened("2025-05-03", "Stage", "");
    Happened("2025-05-04", "Note", "Dry");
    EXPECT_EQ(Spans(), "Flower 05-01 12-31");
}

TEST_F(StageSpansTest, APlantThatIsOverEndsWithItsLastCare)
{
    Basil.Stage = PlantStage::Archived;
    Happened("2025-03-01", "Sown");
    EXPECT_EQ(Spans("2025-08-01"), "Seed 03-01 08-01");
    EXPECT_EQ(Spans("2025-02-01"), "Seed 03-01 03-01");
    EXPECT_EQ(Spans("2026-02-01"), "Seed 03-01 12-31");
}

TEST_F(StageSpansTest, AnArchivedPlantGrowsNoMore)
{
    Basil.Stage = PlantStage::Archived;
    Happened("2025-03-01", "Sown");
    Happened("2025-06-01", "Stage", "Archived");
    EXPECT_EQ(Spans("2025-08-01"), "Seed 03-01 06-01, Archived 06-01 06-01");
}

TEST_F(StageSpansTest, AStageThatBeginsAfterTheReportHasItsOwnDay)
{
    Basil.Stage = PlantStage::Flower;
    Happened("2026-05-01", "Flip");
    EXPECT_EQ(Spans(), "Flower 05-01 05-01");
}

TEST_F(StageSpansTest, AGrowingPlantKeepsTheLastKnownStage)
{
    Basil.Stage = PlantStage::Flower;
    Happened("2025-03-01", "Stage", "Veg");
    EXPECT_EQ(Spans("2025-04-01"), "Veg 03-01 12-31");
}

} // namespace
