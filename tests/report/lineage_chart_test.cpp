// Tests of the chart of mothers and clones.

#include "report/charts.h"

#include <gtest/gtest.h>

using namespace support;

namespace
{

PlantRelative Relative(const std::string& name, std::int64_t generation, double dry = 0, double wet = 0)
{
    PlantRelative plant;
    plant.Name = name;
    plant.Strain = "Genovese";
    plant.Generation = generation;
    plant.Stage = PlantStage::Flower;
    if (dry != 0 || wet != 0)
    {
        plant.Harvest.emplace();
        plant.Harvest->DryWeightG = dry;
        plant.Harvest->WetWeightG = wet;
    }
    return plant;
}

const std::vector<PlantRelative> Family = {Relative("Mother", 0), Relative("First", 1, 100, 400),
                                           Relative("Its clone", 2, 50), Relative("Second", 1, 0, 300)};

TEST(LineageChartTest, ACloneIsBelowAndRightOfItsMotherAndJoined)
{
    const SVGPicture picture(DrawPlantLineage(Family).SVG);
    const std::vector<Element> dots = picture.Marks("circle", "mark");
    ASSERT_EQ(dots.size(), 4U);
    const double indent = dots[1].Number("cx") - dots[0].Number("cx");
    EXPECT_GT(indent, 10);
    EXPECT_EQ(dots[2].Number("cx") - dots[1].Number("cx"), indent);
    EXPECT_EQ(dots[3]["cx"], dots[1]["cx"]);
    for (std::size_t i = 1; i < 4; ++i)
        EXPECT_EQ(dots[i].Number("cy") - dots[i - 1].Number("cy"), 24);
    const std::vector<Element> branches = picture.Marks("polyline", "faint");
    ASSERT_EQ(branches.size(), 3U);
    const std::vector<std::size_t> mothers = {0, 1, 0};
    for (std::size_t i = 0; i < 3; ++i)
    {
        const auto points = PointsOf(branches[i]);
        EXPECT_EQ(points.front().first, dots[mothers[i]].Number("cx"));
        EXPECT_EQ(points.front().second, dots[mothers[i]].Number("cy") + 5);
        EXPECT_EQ(points.back().second, dots[i + 1].Number("cy"));
        EXPECT_EQ(points.back().first, dots[i + 1].Number("cx") - 5);
    }
    EXPECT_EQ(picture.TitleOf(dots[0]), "Mother, Genovese, Flower");
}

TEST(LineageChartTest, ABarIsAsLongAsTheDryWeight)
{
    const SVGPicture picture(DrawPlantLineage(Family).SVG);
    const std::vector<Element> bars = picture.Marks("rect", "harvested");
    ASSERT_EQ(bars.size(), 2U);
    EXPECT_NEAR(bars[0].Number("width"), 2 * bars[1].Number("width"), 0.2);
    EXPECT_EQ(bars[0]["x"], bars[1]["x"]);
    EXPECT_EQ(picture.TitleOf(bars[0]), "First: 100 g");
    for (const char* word : {"100 g", "50 g", "300 g wet", "Flower", "Dry weight, grams", "Its clone"})
        EXPECT_EQ(picture.CountOf(word), 1U) << word;
}

TEST(LineageChartTest, TheTableHoldsEachPlant)
{
    const PlantChart chart = DrawPlantLineage(Family);
    EXPECT_EQ(chart.Columns,
              (std::vector<std::string>{"Plant", "Strain", "Generation", "Stage", "Dry weight, g", "Wet weight, g"}));
    EXPECT_EQ(chart.Rows, (std::vector<std::vector<std::string>>{{"Mother", "Genovese", "0", "Flower", "", ""},
                                                                 {"First", "Genovese", "1", "Flower", "100", "400"},
                                                                 {"Its clone", "Genovese", "2", "Flower", "50", ""},
                                                                 {"Second", "Genovese", "1", "Flower", "", "300"}}));
    EXPECT_EQ(chart.Sentence, "1 mother with 3 descendants.");
}

TEST(LineageChartTest, PlantsWithoutRelativesAreLeftOut)
{
    const std::string missing = "No plant has a mother in the journal.";
    ExpectNothingDrawn(DrawPlantLineage({}), missing);
    ExpectNothingDrawn(DrawPlantLineage({Relative("A", 0), Relative("B", 0, 40)}), missing);
    std::vector<PlantRelative> plants = {Relative("Alone", 0)};
    plants.insert(plants.end(), Family.begin(), Family.end());
    plants.push_back(Relative("Alone, too", 0));
    EXPECT_EQ(DrawPlantLineage(plants).Rows, DrawPlantLineage(Family).Rows);
}

TEST(LineageChartTest, WithoutYieldsTheStagesAreShown)
{
    PlantRelative unweighed = Relative("Clone", 1);
    unweighed.Harvest.emplace();
    const DrawChart draw = [&](double width) { return DrawPlantLineage({Relative("Mother", 0), unweighed}, width); };
    ExpectSoundAtEveryWidth(draw);
    const SVGPicture picture(draw(720).SVG);
    for (const char* word : {"Stage", "Flower", "not weighed"})
        EXPECT_EQ(picture.CountOf(word), 1U) << word;
    EXPECT_TRUE(picture.Marks("rect").empty());
}

TEST(LineageChartTest, ManyGenerationsStayInThePicture)
{
    std::vector<PlantRelative> plants = {Relative("Above", -3)};
    for (int i = 0; i < 30; ++i)
        plants.push_back(Relative("Generation " + std::to_string(i), i, 10 + i));
    plants.front().Generation = 1; // an odd list begins with a clone
    const DrawChart draw = [&](double width) { return DrawPlantLineage(plants, width); };
    ExpectSoundAtEveryWidth(draw);
    const SVGPicture picture(draw(360).SVG);
    const std::vector<Element> dots = picture.Marks("circle", "mark");
    ASSERT_EQ(dots.size(), 30U);
    EXPECT_LT(dots[7].Number("cx"), dots[8].Number("cx"));
    EXPECT_EQ(dots[8]["cx"], dots[29]["cx"]);
}

TEST(LineageChartTest, ABranchNeverLeadsToAnotherTree)
{
    const SVGPicture picture(DrawPlantLineage({Relative("One", 0), Relative("Clone", 1), Relative("Two", 0),
                                               Relative("Clone of a plant that is missing", 2)})
                                 .SVG);
    const std::vector<Element> dots = picture.Marks("circle", "mark");
    const auto points = PointsOf(picture.Marks("polyline", "faint").at(1));
    EXPECT_EQ(points.front().first, dots[2].Number("cx"));
    EXPECT_EQ(points.front().second, dots[2].Number("cy") + 5);
}

TEST(LineageChartTest, AnAncestorBeginsATree)
{
    const PlantChart chart = DrawPlantLineage({Relative("Mother's mother", -2), Relative("Mother", -1, 10),
                                               Relative("Plant", 0, 10), Relative("Clone", 1, 10)});
    EXPECT_EQ(chart.Rows.size(), 2U);
    EXPECT_EQ(chart.Rows[0][0], "Plant");
}

TEST(LineageChartTest, TheFirstFortyOfAThousandPlantsAreDrawn)
{
    std::vector<PlantRelative> plants;
    for (int tree = 0; tree < 100; ++tree)
        for (int i = 0; i < 10; ++i)
            plants.push_back(
                Relative("Plant " + std::to_string(tree) + "." + std::to_string(i), i == 0 ? 0 : 1 + i % 3, 20.5 + i));
    const DrawChart draw = [&](double width) { return DrawPlantLineage(plants, width); };
    ExpectSoundAtEveryWidth(draw);
    const PlantChart chart = draw(720);
    EXPECT_EQ(SVGPicture(chart.SVG).Marks("circle").size(), 40U);
    EXPECT_EQ(chart.Rows.size(), 40U);
    EXPECT_EQ(chart.Sentence,
              "100 mothers with 900 descendants. The first 40 plants are drawn; 960 more plants are not.");
}

TEST(LineageChartTest, HostileNamesAreEscapedAndCut)
{
    std::vector<PlantRelative> plants = {Relative("Mother", 0)};
    for (const std::string& name : HostileTexts())
    {
        plants.push_back(Relative(name, 1, 1e12, 5));
        plants.back().Strain = name;
    }
    const DrawChart draw = [&](double width) { return DrawPlantLineage(plants, width); };
    ExpectSoundAtEveryWidth(draw);
    EXPECT_EQ(SVGPicture(draw(720).SVG).CountOf("<script>alert(1)</script>"), 1U);
    EXPECT_LT(draw(720).SVG.size(), 15'000U);
}

} // namespace
