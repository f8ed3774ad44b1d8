// Tests of the chart of harvests.

#include "report/charts.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

using namespace support;

namespace
{

PlantHarvest Harvest(const std::string& plant, const std::string& strain, double dry, double wet = 0)
{
    PlantHarvest harvest;
    harvest.PlantName = plant;
    harvest.Strain = strain;
    harvest.Record.HarvestDate = "2024-09-01";
    harvest.Record.DryWeightG = dry;
    harvest.Record.WetWeightG = wet;
    return harvest;
}

// The dots of plants, without that of the key.
std::vector<Element> Dots(const SVGPicture& picture)
{
    std::vector<Element> dots = picture.Marks("circle", "mark");
    dots.erase(
        std::remove_if(dots.begin(), dots.end(), [&](const Element& dot) { return picture.TitleOf(dot).empty(); }),
        dots.end());
    return dots;
}

TEST(HarvestChartTest, ADotStandsWhereItsWeightIsAndTheMeanIsALine)
{
    const PlantChart chart = DrawPlantHarvests(
        {Harvest("C", "Genovese", 300), Harvest("A", "Genovese", 100), Harvest("B", "Genovese", 120.5)});
    const SVGPicture picture(chart.SVG);
    const std::vector<Element> dots = Dots(picture);
    ExpectParts(Parts(dots, "cx"), {0, 0.1025, 1});
    EXPECT_EQ(picture.TitleOf(dots[1]), "B: 120.5 g");
    const Element mean = picture.Marks("line", "mean").at(1); // the first is that of the key
    EXPECT_EQ(mean["x1"], mean["x2"]);
    EXPECT_NEAR((mean.Number("x1") - dots[0].Number("cx")) / (dots[2].Number("cx") - dots[0].Number("cx")),
                (520.5 / 3 - 100) / 200, 0.001);
    EXPECT_LT(mean.Number("y1"), dots[0].Number("cy") - 4);
    EXPECT_GT(mean.Number("y2"), dots[0].Number("cy") + 4);
    EXPECT_EQ(picture.CountOf("3 plants, mean 173.5 g"), 1U);
    const std::vector<Element> words = picture.Marks("text");
    const auto label = std::find_if(words.begin(), words.end(), [](const Element& word) { return word.Text == "200"; });
    ASSERT_NE(label, words.end());
    EXPECT_NEAR(label->Number("x"), (dots[0].Number("cx") + dots[2].Number("cx")) / 2, 0.1);
}

TEST(HarvestChartTest, DotsThatWouldTouchAreAboveEachOther)
{
    std::vector<PlantHarvest> harvests;
    for (int i = 0; i < 9; ++i)
        harvests.push_back(Harvest("Plant " + std::to_string(i), "Genovese", 100 + i * 0.01));
    harvests.push_back(Harvest("Other", "Genovese", 200));
    const std::vector<Element> dots = Dots(SVGPicture(DrawPlantHarvests(harvests).SVG));
    ASSERT_EQ(dots.size(), 10U);
    for (std::size_t i = 0; i < dots.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            EXPECT_GE(
                std::hypot(dots[i].Number("cx") - dots[j].Number("cx"), dots[i].Number("cy") - dots[j].Number("cy")),
                7.9)
                << i << " and " << j;
    EXPECT_EQ(dots[0]["cy"], dots[9]["cy"]); // alone in the middle
}

TEST(HarvestChartTest, TheStrainWithTheGreatestMeanIsTheFirst)
{
    const SVGPicture picture(DrawPlantHarvests({Harvest("A", "Small", 50), Harvest("B", "Small", 52),
                                                Harvest("C", "Large", 90), Harvest("D", "", 70)})
                                 .SVG);
    std::vector<std::pair<double, std::string>> strains;
    for (const Element& text : picture.Marks("text", "ink"))
        if (text.Text == "Small" || text.Text == "Large" || text.Text == "(no strain)")
            strains.emplace_back(text.Number("y"), text.Text);
    ASSERT_EQ(strains.size(), 3U);
    std::sort(strains.begin(), strains.end());
    EXPECT_EQ(strains[0].second, "Large");
    EXPECT_EQ(strains[1].second, "(no strain)");
    EXPECT_EQ(strains[2].second, "Small");
    EXPECT_EQ(picture.Marks("line", "mean").size(), 4U); // of the key and of three strains
    EXPECT_EQ(picture.CountOf("1 plant, mean 90 g"), 1U);
}

TEST(HarvestChartTest, PlantsWithOnlyAWetWeightHaveAScaleOfTheirOwn)
{
    const PlantChart chart =
        DrawPlantHarvests({Harvest("Dry", "Genovese", 100, 900), Harvest("Dry 2", "Genovese", 120, 800),
                           Harvest("Wet", "Genovese", 0, 500), Harvest("Wet 2", "Genovese", 0, 700)});
    const SVGPicture picture(chart.SVG);
    EXPECT_EQ(picture.CountOf("Dry weight, grams"), 1U);
    EXPECT_EQ(picture.CountOf("Only wet weight, grams"), 1U);
    EXPECT_EQ(picture.CountOf("2 plants, mean 110 g"), 1U);
    EXPECT_EQ(picture.CountOf("2 plants, mean 600 g"), 1U);
    const std::vector<Element> dots = Dots(picture);
    ASSERT_EQ(dots.size(), 4U);
    EXPECT_LT(dots[1].Number("cy"), dots[2].Number("cy"));
    EXPECT_EQ(chart.Sentence,
              "Dry weights of 2 plants of 1 strain: 100 g to 120 g, mean 110 g. Wet weights of 2 plants "
              "of 1 strain: 500 g to 700 g, mean 600 g.");
    EXPECT_EQ(chart.Columns,
              (std::vector<std::string>{"Strain", "Plant", "Harvested", "Dry weight, g", "Wet weight, g"}));
    EXPECT_EQ(chart.Rows, (std::vector<std::vector<std::string>>{{"Genovese", "Dry", "2024-09-01", "100", "900"},
                                                                 {"Genovese", "Dry 2", "2024-09-01", "120", "800"},
                                                                 {"Genovese", "Wet", "2024-09-01", "", "500"},
                                                                 {"Genovese", "Wet 2", "2024-09-01", "", "700"}}));
}

TEST(HarvestChartTest, EqualWeightsAreStatedOnce)
{
    EXPECT_EQ(DrawPlantHarvests({Harvest("A", "Genovese", 100), Harvest("B", "Genovese", 100)}).Sentence,
              "Dry weights of 2 plants of 1 strain: each 100 g.");
    EXPECT_EQ(DrawPlantHarvests({Harvest("A", "Genovese", 100)}).Sentence,
              "Dry weights of 1 plant of 1 strain: 100 g.");
}

TEST(HarvestChartTest, WithoutWeightsNothingIsDrawn)
{
    const std::string missing = "No harvest has a weight.";
    ExpectNothingDrawn(DrawPlantHarvests({}), missing);
    ExpectNothingDrawn(DrawPlantHarvests({Harvest("A", "B", 0, 0), Harvest("A", "B", -1, -2),
                                          Harvest("A", "B", 0, std::numeric_limits<double>::infinity())}),
                       missing);
}

TEST(HarvestChartTest, OnePlantIsSound)
{
    const DrawChart draw = [](double width) { return DrawPlantHarvests({Harvest("Basil", "", 12.34)}, width); };
    ExpectSoundAtEveryWidth(draw);
    EXPECT_EQ(draw(720).Sentence, "Dry weights of 1 plant of 1 strain: 12.3 g.");
    EXPECT_EQ(draw(720).Rows.at(0), (std::vector<std::string>{"", "Basil", "2024-09-01", "12.34", ""}));
}

TEST(HarvestChartTest, TheTwelveStrainsWithMostPlantsOfAHundredAreDrawn)
{
    std::vector<PlantHarvest> harvests;
    for (int strain = 0; strain < 100; ++strain)
        for (int plant = 0; plant < 5 + (strain >= 88 ? strain : 0); ++plant)
            harvests.push_back(Harvest("Plant " + std::to_string(plant), "Strain " + std::to_string(strain),
                                       50 + strain % 10 * 3 + plant % 17));
    const DrawChart draw = [&](double width) { return DrawPlantHarvests(harvests, width); };
    ExpectSoundAtEveryWidth(draw);
    const PlantChart chart = draw(720);
    const SVGPicture picture(chart.SVG);
    EXPECT_EQ(picture.Marks("line", "mean").size(), 13U);
    EXPECT_EQ(picture.CountOf("Strain 99"), 1U);
    EXPECT_EQ(picture.CountOf("Strain 88"), 1U);
    EXPECT_EQ(picture.CountOf("Strain 87"), 0U);
    EXPECT_NE(chart.Sentence.find(" These are the strains with the most plants; 88 more strains are not drawn."),
              std::string::npos);
    EXPECT_EQ(chart.Rows.size(), Dots(picture).size());
    EXPECT_LT(chart.SVG.size(), 250'000U);
}

TEST(HarvestChartTest, HostileNamesAreEscapedAndCut)
{
    std::vector<PlantHarvest> harvests;
    for (const std::string& name : HostileTexts())
    {
        harvests.push_back(Harvest(name, name, 100));
        harvests.back().Record.HarvestDate = name;
    }
    const DrawChart draw = [&](double width) { return DrawPlantHarvests(harvests, width); };
    ExpectSoundAtEveryWidth(draw);
    EXPECT_EQ(SVGPicture(draw(720).SVG).CountOf("<script>alert(1)</script>"), 1U);
    EXPECT_LT(draw(720).SVG.size(), 12'000U);
}

} // namespace
