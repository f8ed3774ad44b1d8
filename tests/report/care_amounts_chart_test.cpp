// Tests of the chart of water and feed.

#include "report/charts.h"

#include <limits>

#include <gtest/gtest.h>

using namespace support;

namespace
{

PlantTotal Amount(const std::string& period, double ml)
{
    PlantTotal total;
    total.Period = period;
    total.AmountMl = ml;
    return total;
}

TEST(CareAmountsChartTest, ABarStandsInItsPeriodAndIsAsHighAsTheAmount)
{
    const PlantChart chart = DrawPlantCareAmounts({Amount(Day(0), 500), Amount(Day(7), 1000), Amount(Day(28), 250)},
                                                  {Amount(Day(7), 1000), Amount(Day(14), 100)}, PlantPeriod::Week);
    const SVGPicture picture(chart.SVG);
    const std::vector<Element> water = picture.Marks("rect", "water");
    const std::vector<Element> feed = picture.Marks("rect", "feed");
    ASSERT_EQ(water.size(), 3U);
    ASSERT_EQ(feed.size(), 2U);
    EXPECT_NEAR(water[1].Number("height"), 2 * water[0].Number("height"), 0.2);
    EXPECT_NEAR(water[1].Number("height"), 4 * water[2].Number("height"), 0.4);
    EXPECT_EQ(feed[0]["height"], water[1]["height"]); // one scale
    ExpectParts(Parts(water, "x"), {0, 0.25, 1});
    EXPECT_EQ(feed[0]["x"], water[1]["x"]);
    EXPECT_NEAR(water[1].Number("y"), AxisPlace(picture, "1,000", 0), 0.1);
    EXPECT_NEAR(feed[0].Number("y"), AxisPlace(picture, "1,000", 1), 0.1);
    EXPECT_NEAR(water[1].Number("y") + water[1].Number("height"), AxisPlace(picture, "0", 0), 0.1);
    EXPECT_GT(feed[0].Number("y"), water[0].Number("y") + water[0].Number("height"));
    EXPECT_EQ(picture.TitleOf(feed[1]), "2024-01-15: 100 ml of feed");
}

TEST(CareAmountsChartTest, OnlyAmountsWithADateAreDrawn)
{
    const PlantChart chart =
        DrawPlantCareAmounts({Amount(Day(0), 500), Amount("", 700), Amount(Day(1), 0)}, {}, PlantPeriod::Day);
    EXPECT_EQ(chart.Rows, (std::vector<std::vector<std::string>>{{Day(0), "500", ""}}));
}

TEST(CareAmountsChartTest, TheTableHoldsTheMillilitresOfEachPeriod)
{
    const PlantChart chart = DrawPlantCareAmounts({Amount(Day(7), 1000), Amount(Day(0), 33.25), Amount(Day(0), 100)},
                                                  {Amount(Day(14), 12345)}, PlantPeriod::Week);
    EXPECT_EQ(chart.Columns, (std::vector<std::string>{"Date", "Water, ml", "Feed, ml"}));
    EXPECT_EQ(chart.Rows,
              (std::vector<std::vector<std::string>>{
                  {"2024-01-01", "133.25", ""}, {"2024-01-08", "1,000", ""}, {"2024-01-15", "", "12,345"}}));
    EXPECT_EQ(chart.Sentence, "1.1 l of water and 12.3 l of feed, from 1 Jan 2024 to 21 Jan 2024, by week.");
}

TEST(CareAmountsChartTest, LargeAmountsAreInLitres)
{
    const SVGPicture litres(DrawPlantCareAmounts({Amount("2024-01", 2000)}, {}, PlantPeriod::Month).SVG);
    EXPECT_EQ(litres.CountOf("Water, litres a month"), 1U);
    EXPECT_NEAR(litres.Marks("rect", "water").at(0).Number("y"), AxisPlace(litres, "2"), 0.1);
    const SVGPicture millilitres(DrawPlantCareAmounts({}, {Amount(Day(0), 1999)}, PlantPeriod::Day).SVG);
    EXPECT_EQ(millilitres.CountOf("Feed, millilitres a day"), 1U);
    EXPECT_EQ(DrawPlantCareAmounts({Amount("2024-01", 123'456)}, {}, PlantPeriod::Month).Sentence,
              "123 l of water, from 1 Jan 2024 to 31 Jan 2024, by month.");
}

TEST(CareAmountsChartTest, OnlyWhatWasGivenIsDrawn)
{
    const SVGPicture feed(DrawPlantCareAmounts({Amount(Day(0), 0)}, {Amount(Day(0), 5)}, PlantPeriod::Day).SVG);
    EXPECT_TRUE(feed.Marks("rect", "water").empty());
    EXPECT_EQ(feed.CountOf("Water, millilitres a day"), 0U);
    const SVGPicture both(DrawPlantCareAmounts({Amount(Day(0), 5)}, {Amount(Day(0), 5)}, PlantPeriod::Day).SVG);
    EXPECT_GT(both.Height(), feed.Height() + 100);
}

TEST(CareAmountsChartTest, WithoutAmountsNothingIsDrawn)
{
    const std::string missing = "No feeding or watering has an amount and a complete date.";
    const double infinity = std::numeric_limits<double>::infinity();
    ExpectNothingDrawn(DrawPlantCareAmounts({}, {}, PlantPeriod::Week), missing);
    ExpectNothingDrawn(DrawPlantCareAmounts({Amount(Day(0), 0), Amount("", 5)},
                                            {Amount(Day(0), -5), Amount(Day(1), infinity)}, PlantPeriod::Week),
                       missing);
}

TEST(CareAmountsChartTest, AMonthIsAsWideAsItsDays)
{
    std::vector<PlantTotal> months;
    for (const char* month : {"2024-01", "2024-02", "2024-03", "2025-12"})
        months.push_back(Amount(month, 100));
    const std::vector<Element> bars =
        SVGPicture(DrawPlantCareAmounts(months, {}, PlantPeriod::Month, 720).SVG).Marks("rect", "water");
    EXPECT_NEAR(bars[1].Number("width") / bars[0].Number("width"), 29 / 31.0, 0.02);
    EXPECT_NEAR(bars[3].Number("width"), bars[0].Number("width"), 0.2);
}

TEST(CareAmountsChartTest, OnePeriodAndTheLastOfTheCalendarAreSound)
{
    for (const PlantPeriod period : {PlantPeriod::Day, PlantPeriod::Week, PlantPeriod::Month})
        for (const char* day : {"2024-01-01", "9999-12-27"})
        {
            const std::string first = period == PlantPeriod::Month ? std::string(day, 7) : day;
            ExpectSoundAtEveryWidth(
                [&](double width)
                { return DrawPlantCareAmounts({Amount(first, 300)}, {Amount(first, 0.001)}, period, width); });
        }
}

TEST(CareAmountsChartTest, TenYearsAreSoundAndSmall)
{
    std::vector<PlantTotal> weeks;
    for (int i = 0; i < 520; ++i)
        weeks.push_back(Amount(Day(7 * i), 100 + i % 9 * 1000));
    const DrawChart draw = [&](double width) { return DrawPlantCareAmounts(weeks, weeks, PlantPeriod::Week, width); };
    ExpectSoundAtEveryWidth(draw);
    const SVGPicture picture(draw(360).SVG);
    EXPECT_EQ(picture.Marks("rect", "feed").size(), 520U);
    EXPECT_GE(picture.Marks("rect", "feed").at(0).Number("width"), 1); // wide enough to be seen
    EXPECT_LT(draw(720).SVG.size(), 200'000U);
}

} // namespace
