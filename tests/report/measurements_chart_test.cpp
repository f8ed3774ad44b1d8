// Tests of the chart of EC and pH.

#include "report/charts.h"

#include <set>

#include <gtest/gtest.h>

using namespace support;

namespace
{

PlantFigures Figures(double mean)
{
    PlantFigures figures;
    if (mean != 0)
        figures = {2, mean, mean - 0.25, mean + 0.25};
    return figures;
}

PlantTotal Total(const std::string& name, const std::string& period, double ec, double ph, std::int64_t feedings = 2)
{
    PlantTotal total;
    total.Period = period;
    total.Key = name;
    total.Name = name;
    total.Feedings = feedings;
    total.EC = Figures(ec);
    total.PH = Figures(ph);
    return total;
}

// The marks of the chart, without that of the heading.
std::vector<Element> Dots(const SVGPicture& picture, const std::string& element, const std::string& role)
{
    std::vector<Element> dots = picture.Marks(element, role);
    dots.erase(dots.begin());
    return dots;
}

TEST(MeasurementsChartTest, EachMeanHasItsPlaceOnTheDaysAndOnTheAxis)
{
    const PlantChart chart = DrawPlantMeasurements(
        {Total("Basil", Day(0), 1, 0), Total("Basil", Day(7), 1.5, 0), Total("Basil", Day(70), 3, 0)},
        PlantPeriod::Week);
    const SVGPicture picture(chart.SVG);
    const std::vector<Element> dots = Dots(picture, "circle", "ec");
    ExpectParts(Parts(dots, "cx"), {0, 0.1, 1});
    ExpectParts(Parts(dots, "cy"), {0, 0.25, 1});
    EXPECT_NEAR(dots[0].Number("cy"), AxisPlace(picture, "1"), 0.1);
    EXPECT_NEAR(dots[2].Number("cy"), AxisPlace(picture, "3"), 0.1);
    EXPECT_EQ(picture.TitleOf(dots[1]), "8 Jan 2024: EC 1.5, 2 entries");
    EXPECT_EQ(picture.CountOf("pH"), 0U); // nothing was entered
}

TEST(MeasurementsChartTest, NoLineGoesOverAPeriodWithoutAValue)
{
    const SVGPicture picture(DrawPlantMeasurements({Total("Basil", Day(0), 1, 5), Total("Basil", Day(7), 2, 0),
                                                    Total("Basil", Day(14), 3, 6), Total("Basil", Day(28), 1, 7),
                                                    Total("Basil", Day(35), 1, 7)},
                                                   PlantPeriod::Week)
                                 .SVG);
    const std::vector<Element> ec = picture.Marks("polyline", "ec");
    ASSERT_EQ(ec.size(), 2U); // interrupted where a week is missing
    EXPECT_EQ(PointsOf(ec[0]).size(), 3U);
    EXPECT_EQ(PointsOf(ec[1]).size(), 2U);
    const std::vector<Element> ph = picture.Marks("polyline", "ph");
    ASSERT_EQ(ph.size(), 1U); // and where a week has no pH
    EXPECT_EQ(PointsOf(ph[0]).size(), 2U);
    EXPECT_EQ(Dots(picture, "circle", "ec").size(), 5U);
    EXPECT_EQ(Dots(picture, "path", "ph").size(), 4U); // pH has another shape
}

TEST(MeasurementsChartTest, DaysAndMonthsFollowEachOtherInTheCalendar)
{
    const auto lines = [](const std::vector<PlantTotal>& totals, PlantPeriod period)
    { return SVGPicture(DrawPlantMeasurements(totals, period).SVG).Marks("polyline").size(); };
    EXPECT_EQ(lines({Total("A", "2024-02-28", 1, 0), Total("A", "2024-02-29", 2, 0)}, PlantPeriod::Day), 1U);
    EXPECT_EQ(lines({Total("A", "2024-02-27", 1, 0), Total("A", "2024-02-29", 2, 0)}, PlantPeriod::Day), 0U);
    EXPECT_EQ(lines({Total("A", "2023-12", 1, 0), Total("A", "2024-01", 2, 0)}, PlantPeriod::Month), 1U);
    EXPECT_EQ(lines({Total("A", "2024-01", 1, 0), Total("A", "2024-03", 2, 0)}, PlantPeriod::Month), 0U);
}

TEST(MeasurementsChartTest, SmallChartsHaveOneScale)
{
    const SVGPicture picture(DrawPlantMeasurements({Total("A", Day(0), 1, 0), Total("A", Day(7), 2, 0),
                                                    Total("B", Day(0), 2, 0), Total("B", Day(7), 1, 0)},
                                                   PlantPeriod::Week)
                                 .SVG);
    const std::vector<Element> dots = Dots(picture, "circle", "ec");
    ASSERT_EQ(dots.size(), 4U);
    EXPECT_EQ(dots[0].Number("cy"), dots[3].Number("cy"));
    EXPECT_EQ(dots[1].Number("cy"), dots[2].Number("cy"));
    EXPECT_LT(dots[1].Number("cx"), dots[2].Number("cx")); // B is after A
    EXPECT_NEAR(dots[1].Number("cx") - dots[0].Number("cx"), dots[3].Number("cx") - dots[2].Number("cx"), 0.2);
    EXPECT_EQ(picture.CountOf("A"), 1U);
    EXPECT_EQ(picture.CountOf("B"), 1U);
}

TEST(MeasurementsChartTest, ADayHasOnePlaceForECAndPH)
{
    const SVGPicture picture(DrawPlantMeasurements({Total("A", Day(0), 1, 0), Total("A", Day(50), 2, 5),
                                                    Total("A", Day(100), 0, 6), Total("B", Day(0), 4, 0)},
                                                   PlantPeriod::Day, 720)
                                 .SVG);
    const std::vector<Element> ec = Dots(picture, "circle", "ec");
    ASSERT_EQ(ec.size(), 3U);
    EXPECT_NEAR(ec[2].Number("cy"), AxisPlace(picture, "4"), 0.1); // the scale holds the values of all names
    EXPECT_NEAR(ec[1].Number("cy"), AxisPlace(picture, "2"), 0.1);
    ASSERT_EQ(Dots(picture, "path", "ph").size(), 2U);
    const DrawChart alone = [](double width)
    {
        return DrawPlantMeasurements(
            {Total("A", Day(0), 1, 5), Total("A", Day(50), 2, 5), Total("A", Day(100), 3, 6), Total("B", Day(0), 4, 5)},
            PlantPeriod::Day, width);
    };
    const std::vector<Element> whole = Dots(SVGPicture(alone(720).SVG), "circle", "ec");
    EXPECT_EQ(ec[1]["cx"], whole[1]["cx"]); // the days are those of EC and pH
}

TEST(MeasurementsChartTest, TheTableHoldsEachMean)
{
    const PlantChart chart = DrawPlantMeasurements(
        {Total("Basil", "2024-02", 1.25, 6), Total("Basil", "2024-01", 1, 0)}, PlantPeriod::Month);
    EXPECT_EQ(chart.Columns, (std::vector<std::string>{"Name", "Date", "Measure", "Entries", "Mean", "Least", "Most"}));
    EXPECT_EQ(chart.Rows,
              (std::vector<std::vector<std::string>>{{"Basil", "2024-01", "EC", "2", "1", "0.75", "1.25"},
                                                     {"Basil", "2024-02", "EC", "2", "1.25", "1", "1.5"},
                                                     {"Basil", "2024-02", "pH", "2", "6", "5.75", "6.25"}}));
    EXPECT_EQ(chart.Sentence, "The mean of each month, from 1 Jan 2024 to 29 Feb 2024: EC from 1 to 1.25; pH 6. "
                              "A line is interrupted where nothing was entered.");
    EXPECT_EQ(DrawPlantMeasurements({Total("Basil", Day(0), 1, 0)}, PlantPeriod::Day).Sentence,
              "The mean of each day, on 1 Jan 2024: EC 1. A line is interrupted where nothing was entered.");
}

TEST(MeasurementsChartTest, ASeriesOfUpToTwelveValuesHasLargeDots)
{
    std::vector<PlantTotal> totals;
    for (int day = 0; day < 12; ++day)
        totals.push_back(Total("Basil", Day(day), 1.5, 0));
    const auto radius = [&]
    {
        const SVGPicture picture(DrawPlantMeasurements(totals, PlantPeriod::Day).SVG);
        return Dots(picture, "circle", "ec").front()["r"];
    };
    EXPECT_EQ(radius(), "3");
    totals.push_back(Total("Basil", Day(12), 1.5, 0));
    EXPECT_EQ(radius(), "2.2");
}

TEST(MeasurementsChartTest, OnlyMeasurementsWithADateAreDrawn)
{
    const PlantChart chart = DrawPlantMeasurements(
        {Total("Basil", Day(0), 1, 0), Total("Basil", "", 2, 7), Total("Basil", Day(1), 0, 0)}, PlantPeriod::Day);
    EXPECT_EQ(chart.Rows, (std::vector<std::vector<std::string>>{{"Basil", Day(0), "EC", "2", "1", "0.75", "1.25"}}));
}

TEST(MeasurementsChartTest, TheSentenceCountsTheValuesOfAMistypedYear)
{
    const PlantChart chart = DrawPlantMeasurements(
        {Total("Basil", Day(0), 1, 6), Total("Basil", Day(1), 1, 6), Total("Basil", "1924-01-01", 2, 7)},
        PlantPeriod::Day);
    EXPECT_NE(chart.Sentence.find(" 4 values are not drawn: their dates"), std::string::npos) << chart.Sentence;
    EXPECT_EQ(chart.Rows.size(), 6U);
    EXPECT_EQ(chart.Rows.front().at(1), "1924-01-01");
}

TEST(MeasurementsChartTest, WithoutMeasurementsNothingIsDrawn)
{
    const std::string missing = "No feeding or watering has a complete date and an EC or a pH.";
    ExpectNothingDrawn(DrawPlantMeasurements({}, PlantPeriod::Day), missing);
    ExpectNothingDrawn(DrawPlantMeasurements({Total("Basil", Day(0), 0, 0)}, PlantPeriod::Day), missing);
    ExpectNothingDrawn(DrawPlantMeasurements({Total("Basil", "", 1, 6)}, PlantPeriod::Day), missing);
    ExpectNothingDrawn(DrawPlantMeasurements({Total("Basil", "2024-13", 1, 6)}, PlantPeriod::Month), missing);
}

TEST(MeasurementsChartTest, AValueAloneIsSound)
{
    for (const auto& [ec, ph] : {std::pair{1.4, 0.0}, {0.0, 6.2}, {1.4, 6.2}})
        ExpectSoundAtEveryWidth(
            [ec = ec, ph = ph](double width)
            { return DrawPlantMeasurements({Total("Basil", Day(0), ec, ph)}, PlantPeriod::Day, width); });
}

TEST(MeasurementsChartTest, TwoPlantsOfOneNameHaveASmallChartEach)
{
    PlantTotal twin = Total("Basil", Day(0), 1, 0);
    twin.Key = "another";
    const SVGPicture picture(DrawPlantMeasurements({Total("Basil", Day(0), 1, 0), twin}, PlantPeriod::Day).SVG);
    EXPECT_EQ(picture.CountOf("Basil"), 2U);
}

TEST(MeasurementsChartTest, TheTwelveNamesWithMostEntriesOfAHundredAreDrawn)
{
    std::vector<PlantTotal> totals;
    std::string month = "2015-01";
    for (int i = 0; i < 120; ++i)
    {
        month = std::to_string(2015 + i / 12) + (i % 12 < 9 ? "-0" : "-") + std::to_string(i % 12 + 1);
        for (int name = 0; name < 100; ++name)
            totals.push_back(Total("Product " + std::to_string(name), month, 1 + name % 7 * 0.3 + i % 5 * 0.1,
                                   i == 50 ? 0 : 5.5 + i % 3 * 0.2, name));
    }
    const DrawChart draw = [&](double width) { return DrawPlantMeasurements(totals, PlantPeriod::Month, width); };
    ExpectSoundAtEveryWidth(draw);
    const PlantChart chart = draw(720);
    const SVGPicture picture(chart.SVG);
    EXPECT_EQ(picture.CountOf("Product 99"), 2U); // EC and pH
    EXPECT_EQ(picture.CountOf("Product 88"), 2U);
    EXPECT_EQ(picture.CountOf("Product 87"), 0U);
    EXPECT_NE(chart.Sentence.find(" The 12 with the most entries are drawn; 88 more are not."), std::string::npos);
    EXPECT_EQ(picture.Marks("polyline", "ec").size(), 12U);
    EXPECT_EQ(picture.Marks("polyline", "ph").size(), 24U);
    EXPECT_TRUE(Dots(picture, "circle", "ec").empty()); // a line of so many needs no dots
    EXPECT_LT(chart.SVG.size(), 120'000U);
    std::set<std::string> names;
    for (const std::vector<std::string>& row : chart.Rows)
        names.insert(row.front());
    EXPECT_EQ(names.size(), 12U);
}

TEST(MeasurementsChartTest, AValueAloneAmongManyIsADot)
{
    std::vector<PlantTotal> totals;
    for (int i = 0; i < 61; ++i)
        totals.push_back(Total("Basil", Day(i), 1 + i % 4 * 0.1, 0));
    totals.push_back(Total("Basil", Day(70), 1, 0));
    const SVGPicture picture(DrawPlantMeasurements(totals, PlantPeriod::Day).SVG);
    EXPECT_EQ(picture.Marks("polyline", "ec").size(), 1U);
    EXPECT_EQ(Dots(picture, "circle", "ec").size(), 1U);
}

TEST(MeasurementsChartTest, HostileNamesAreEscapedAndCut)
{
    std::vector<PlantTotal> totals;
    for (const std::string& name : HostileTexts())
        totals.push_back(Total(name, Day(0), 1, 6));
    const DrawChart draw = [&](double width) { return DrawPlantMeasurements(totals, PlantPeriod::Day, width); };
    ExpectSoundAtEveryWidth(draw);
    EXPECT_EQ(SVGPicture(draw(720).SVG).CountOf("(no name)"), 2U);
}

} // namespace
