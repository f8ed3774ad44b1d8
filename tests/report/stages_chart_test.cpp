// Tests of the chart of stages.

#include "report/charts.h"

#include <gtest/gtest.h>

using namespace support;

namespace
{

using Rows = std::vector<std::vector<std::string>>;

const std::vector<PlantStageSpan> Basil = {{"Basil", PlantStage::Seed, Day(0), Day(10)},
                                           {"Basil", PlantStage::Veg, Day(10), Day(50)},
                                           {"Basil", PlantStage::Flower, Day(50), Day(100)}};

// The bars, without those of the key.
std::vector<Element> Bars(const SVGPicture& picture)
{
    std::vector<Element> bars = picture.Marks("rect");
    bars.erase(
        std::remove_if(bars.begin(), bars.end(), [&](const Element& bar) { return picture.TitleOf(bar).empty(); }),
        bars.end());
    return bars;
}

TEST(StagesChartTest, ABarBeginsAndEndsWithItsStage)
{
    const SVGPicture picture(DrawPlantStages(Basil).SVG);
    const std::vector<Element> bars = Bars(picture);
    ASSERT_EQ(bars.size(), 3U);
    const double perDay = (bars[2].Number("x") - bars[0].Number("x")) / 50;
    EXPECT_NEAR(bars[1].Number("x") - bars[0].Number("x"), 10 * perDay, 0.2);
    EXPECT_NEAR(bars[0].Number("width"), 10 * perDay - 1, 0.2); // a pixel separates the bars
    EXPECT_NEAR(bars[1].Number("width"), 40 * perDay - 1, 0.2);
    EXPECT_NEAR(bars[2].Number("width"), 50 * perDay - 1, 0.2);
    EXPECT_EQ(bars[0]["y"], bars[2]["y"]);
    EXPECT_NEAR(bars[2].Number("x") + bars[2].Number("width"), 720 - 8 - 1, 0.2);
}

TEST(StagesChartTest, ABarHasTheColourOfItsStageAndSaysWhatItIs)
{
    std::vector<PlantStageSpan> spans;
    for (const PlantStage stage : {PlantStage::Seed, PlantStage::Clone, PlantStage::Veg, PlantStage::Flower,
                                   PlantStage::Dry, PlantStage::Cure, PlantStage::Harvested, PlantStage::Archived})
    {
        const int begin = 30 * static_cast<int>(stage);
        spans.push_back({"Basil", stage, Day(begin), Day(begin + 30)});
    }
    const SVGPicture picture(DrawPlantStages(spans).SVG);
    std::string classes;
    for (const Element& bar : Bars(picture))
        classes += bar["class"] + " ";
    EXPECT_EQ(classes, "seed clone veg flower dry cure harvested archived ");
    EXPECT_EQ(picture.TitleOf(Bars(picture)[3]), "Basil: Flower from 31 Mar 2024 to 30 Apr 2024, 30 days");
    for (const char* stage : {"Seed", "Clone", "Veg", "Flower", "Dry", "Cure", "Harvested", "Archived"})
        EXPECT_EQ(picture.CountOf(stage), 2U) << stage; // in the bar and in the key
    EXPECT_EQ(picture.Marks("rect").size(), 16U);
}

TEST(StagesChartTest, ANarrowBarHasTheLettersThatTheKeyNames)
{
    const SVGPicture picture(DrawPlantStages({{"Basil", PlantStage::Flower, Day(0), Day(100)},
                                              {"Basil", PlantStage::Cure, Day(100), Day(104)},
                                              {"Basil", PlantStage::Dry, Day(104), Day(105)}})
                                 .SVG);
    EXPECT_EQ(picture.CountOf("Cure"), 1U);
    EXPECT_EQ(picture.CountOf("Cu"), 2U);
    EXPECT_EQ(picture.CountOf("D"), 1U); // a day has no room for a letter
}

TEST(StagesChartTest, TheTableHoldsEachSpan)
{
    const PlantChart chart = DrawPlantStages(Basil);
    EXPECT_EQ(chart.Columns, (std::vector<std::string>{"Plant", "Stage", "From", "To", "Days"}));
    EXPECT_EQ(chart.Rows, (Rows{{"Basil", "Seed", "2024-01-01", "2024-01-11", "10"},
                                {"Basil", "Veg", "2024-01-11", "2024-02-20", "40"},
                                {"Basil", "Flower", "2024-02-20", "2024-04-10", "50"}}));
    EXPECT_EQ(chart.Sentence, "The stages of 1 plant, from 1 Jan 2024 to 10 Apr 2024.");
}

TEST(StagesChartTest, PlantsAreInTheOrderInWhichTheyBegan)
{
    const SVGPicture picture(DrawPlantStages({{"Late", PlantStage::Veg, Day(50), Day(70)},
                                              {"Early", PlantStage::Veg, Day(0), Day(60)},
                                              {"Middle", PlantStage::Veg, Day(20), Day(60)}})
                                 .SVG);
    const std::vector<Element> bars = Bars(picture);
    ASSERT_EQ(bars.size(), 3U);
    EXPECT_EQ(picture.TitleOf(bars[0]).substr(0, 6), "Early:");
    EXPECT_EQ(picture.TitleOf(bars[2]).substr(0, 5), "Late:");
    EXPECT_LT(bars[0].Number("y"), bars[1].Number("y"));
    EXPECT_LT(bars[1].Number("y"), bars[2].Number("y"));
    ExpectParts(Parts(bars, "x"), {0, 0.4, 1});
}

TEST(StagesChartTest, PlantsOfOneNameHaveBarsOfTheirOwn)
{
    std::vector<PlantStageSpan> twins = Basil;
    twins.insert(twins.end(), Basil.begin(), Basil.end());
    const SVGPicture picture(DrawPlantStages(twins).SVG);
    EXPECT_EQ(picture.CountOf("Basil"), 2U);
    EXPECT_LT(Bars(picture)[2].Number("y"), Bars(picture)[3].Number("y"));
}

TEST(StagesChartTest, SpansWithoutTwoDaysAreLeftOut)
{
    const std::string missing = "No plant has a complete date on which a stage began.";
    ExpectNothingDrawn(DrawPlantStages({}), missing);
    ExpectNothingDrawn(DrawPlantStages({{"Basil", PlantStage::Veg, "spring", Day(3)},
                                        {"Basil", PlantStage::Veg, Day(3), "2024-02-30"},
                                        {"Basil", PlantStage::Veg, Day(3), Day(2)}}),
                       missing);
    std::vector<PlantStageSpan> spans = Basil;
    spans.push_back({"Odd", PlantStage::Veg, "", ""});
    EXPECT_EQ(DrawPlantStages(spans).Rows.size(), 3U);
}

TEST(StagesChartTest, AStageOfOneDayIsSeen)
{
    const DrawChart draw = [](double width) {
        return DrawPlantStages({{"Basil", PlantStage::Seed, Day(0), Day(0)}}, width);
    };
    ExpectSoundAtEveryWidth(draw);
    EXPECT_EQ(Bars(SVGPicture(draw(360).SVG)).at(0).Number("width"), 2);
    EXPECT_EQ(draw(360).Rows.at(0).back(), "0");
}

TEST(StagesChartTest, TheNewestFortyOfAThousandPlantsAreDrawn)
{
    std::vector<PlantStageSpan> spans;
    for (int i = 0; i < 1000; ++i)
        spans.push_back({"Plant " + std::to_string(i), PlantStage::Veg, Day(i), Day(i + 40)});
    const DrawChart draw = [&](double width) { return DrawPlantStages(spans, width); };
    ExpectSoundAtEveryWidth(draw);
    const PlantChart chart = draw(720);
    EXPECT_EQ(Bars(SVGPicture(chart.SVG)).size(), 40U);
    EXPECT_EQ(chart.Rows.size(), 40U);
    EXPECT_EQ(chart.Rows.front().front(), "Plant 960");
    EXPECT_EQ(chart.Rows.back().front(), "Plant 999");
    EXPECT_NE(chart.Sentence.find("These are the newest; 960 more plants began before them."), std::string::npos);
}

TEST(StagesChartTest, HostileNamesAreEscapedAndCut)
{
    std::vector<PlantStageSpan> spans;
    for (const std::string& name : HostileTexts())
        spans.push_back({name, static_cast<PlantStage>(77), Day(0), Day(20)});
    const DrawChart draw = [&](double width) { return DrawPlantStages(spans, width); };
    ExpectSoundAtEveryWidth(draw);
    const SVGPicture picture(draw(720).SVG);
    EXPECT_EQ(picture.Marks("rect", "veg").size(), spans.size() + 1); // an unknown stage is drawn as the default
    EXPECT_EQ(picture.CountOf("<script>alert(1)</script>"), 1U);
    EXPECT_EQ(picture.CountOf("(no name)"), 1U);
    EXPECT_LT(draw(720).SVG.size(), 8'000U);
}

TEST(StagesChartTest, ManyStagesAreSoundAtEveryWidth)
{
    std::vector<PlantStageSpan> spans;
    for (int plant = 0; plant < 9; ++plant)
        for (int stage = 0; stage < 8; ++stage)
            spans.push_back({"A plant with number " + std::to_string(plant), static_cast<PlantStage>(stage),
                             Day(plant * 7 + stage * (plant + 3)), Day(plant * 7 + (stage + 1) * (plant + 3))});
    ExpectSoundAtEveryWidth([&](double width) { return DrawPlantStages(spans, width); });
}

TEST(StagesChartTest, AStageOfTwentyYearsIsDrawn)
{
    const PlantStageSpan apple = {"Apple", PlantStage::Veg, "2004-01-01", "2023-12-27"}; // 7,300 days
    std::vector<PlantStageSpan> spans = Basil;
    spans.push_back(apple);
    EXPECT_EQ(Bars(SVGPicture(DrawPlantStages(spans).SVG)).size(), 4U);
    spans.back().To = "2023-12-28";
    EXPECT_EQ(Bars(SVGPicture(DrawPlantStages(spans).SVG)).size(), 3U);
}

TEST(StagesChartTest, APlantWithOneMistypedDateKeepsItsOtherStages)
{
    std::vector<PlantStageSpan> spans = Basil;
    spans.front().From = "1924-01-01";
    const PlantChart chart = DrawPlantStages(spans);
    EXPECT_EQ(Bars(SVGPicture(chart.SVG)).size(), 2U);
    EXPECT_EQ(chart.Rows.front(), (std::vector<std::string>{"Basil", "Seed", "1924-01-01", Day(10), "36,535"}));
    EXPECT_EQ(chart.Rows.size(), 3U);
}

TEST(StagesChartTest, TheOnlyStageIsDrawnHoweverLongItIs)
{
    const PlantChart chart = DrawPlantStages({{"Basil", PlantStage::Seed, "1924-01-01", Day(10)}});
    EXPECT_EQ(Bars(SVGPicture(chart.SVG)).size(), 1U);
    EXPECT_EQ(chart.Sentence, "The stages of 1 plant, from 1 Jan 1924 to 11 Jan 2024.");
    EXPECT_EQ(chart.Rows.size(), 1U);
}

} // namespace
