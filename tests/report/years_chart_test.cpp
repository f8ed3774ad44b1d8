// Tests of the chart that compares calendar years.

#include "report/charts.h"

#include <algorithm>

#include <gtest/gtest.h>

using namespace support;

namespace
{

// Two years: in 2024 one feeding on each first of a month, in 2025 two on the first days of January to March.
std::vector<PlantCalendarDay> TwoYears()
{
    std::vector<PlantCalendarDay> days;
    for (const char* month : {"01", "02", "03", "04", "05", "06", "07", "08", "09", "10", "11", "12"})
        days.push_back({std::string("2024-") + month + "-01", "Feed", 1});
    for (const char* month : {"01", "02", "03"})
        days.push_back({std::string("2025-") + month + "-01", "Water", 2});
    return days;
}

TEST(YearsChartTest, EachYearIsALineOfTheCareSinceItsBeginning)
{
    const PlantChart chart = DrawPlantYears(TwoYears());
    const SVGPicture picture(chart.SVG);
    const auto earlier = PointsOf(picture.Marks("polyline", "faint").at(0));
    const auto latest = PointsOf(picture.Marks("polyline", "mark").at(0));
    ASSERT_EQ(earlier.size(), 1 + 2 * 12 + 1U);
    ASSERT_EQ(latest.size(), 1 + 2 * 3U);
    const double zero = AxisPlace(picture, "0");
    const double ten = AxisPlace(picture, "10");
    const double one = (zero - ten) / 10;
    EXPECT_NEAR(earlier.front().second, zero, 0.1);
    EXPECT_NEAR(earlier.back().second, zero - 12 * one, 0.2);
    EXPECT_NEAR(latest.back().second, zero - 6 * one, 0.2);
    // 1 March is the 61st day in a year with 29 February, in both years.
    EXPECT_EQ(earlier.at(6).first, latest.back().first);
    EXPECT_NEAR((latest.back().first - latest.front().first) / (earlier.back().first - earlier.front().first),
                60 / 366.0, 0.001);
}

TEST(YearsChartTest, TheLatestYearIsThickAndEndsWithADotAndItsName)
{
    const SVGPicture picture(DrawPlantYears(TwoYears()).SVG);
    const Element dot = picture.Marks("circle", "mark").at(0);
    const auto latest = PointsOf(picture.Marks("polyline", "mark").at(0));
    EXPECT_EQ(dot.Number("cx"), latest.back().first);
    EXPECT_EQ(dot.Number("cy"), latest.back().second);
    EXPECT_EQ(picture.TitleOf(dot), "2025: 6 feedings and waterings");
    EXPECT_EQ(picture.Marks("polyline", "mark").at(0)["stroke-width"], "3");
    EXPECT_EQ(picture.Marks("polyline", "faint").at(0)["stroke-width"], "1");
    const std::vector<std::string> words = picture.Words();
    EXPECT_EQ(std::count(words.begin(), words.end(), "2025"), 1);
    EXPECT_EQ(std::count(words.begin(), words.end(), "2024"), 1);
}

TEST(YearsChartTest, TheSentenceComparesTheYearsOnTheSameDay)
{
    EXPECT_EQ(DrawPlantYears(TwoYears()).Sentence,
              "By 1 Mar, 2025 had 6 feedings and waterings; 2024 had 3 by the same day.");
    EXPECT_EQ(DrawPlantYears({{"2023-05-01", "Feed", 4}, {"2024-02-29", "Feed", 1}}).Sentence,
              "By 29 Feb, 2024 had 1 feeding or watering; 2023 had 0 by the same day.");
}

TEST(YearsChartTest, TheTableHoldsTheSumAtTheEndOfEachMonth)
{
    const PlantChart chart = DrawPlantYears(TwoYears());
    EXPECT_EQ(chart.Columns, (std::vector<std::string>{"By the end of", "2024", "2025"}));
    ASSERT_EQ(chart.Rows.size(), 12U);
    EXPECT_EQ(chart.Rows[0], (std::vector<std::string>{"Jan", "1", "2"}));
    EXPECT_EQ(chart.Rows[2], (std::vector<std::string>{"Mar", "3", "6"}));
    EXPECT_EQ(chart.Rows[3], (std::vector<std::string>{"Apr", "4", ""})); // not over yet
    EXPECT_EQ(chart.Rows[11], (std::vector<std::string>{"Dec", "12", ""}));
}

TEST(YearsChartTest, CareOnTheLastDayOfAMonthBelongsToIt)
{
    const PlantChart chart =
        DrawPlantYears({{"2023-01-31", "Feed", 1}, {"2023-12-31", "Feed", 2}, {"2024-02-29", "Feed", 5}});
    EXPECT_EQ(chart.Rows[0], (std::vector<std::string>{"Jan", "1", "0"}));
    EXPECT_EQ(chart.Rows[1], (std::vector<std::string>{"Feb", "1", "5"}));
    EXPECT_EQ(chart.Rows[11], (std::vector<std::string>{"Dec", "3", ""}));
}

TEST(YearsChartTest, WithoutASecondYearNothingIsDrawn)
{
    const std::string missing = "No second calendar year has care.";
    ExpectNothingDrawn(DrawPlantYears({}), missing);
    ExpectNothingDrawn(DrawPlantYears({{"2024-01-01", "Feed", 1}, {"2024-12-31", "Feed", 1}}), missing);
    ExpectNothingDrawn(DrawPlantYears({{"2023", "Feed", 1}, {"2022-01-01", "Photo", 1}, {"2024-12-31", "Feed", 1}}),
                       missing);
}

TEST(YearsChartTest, TwoYearsAreSoundAtEveryWidth)
{
    ExpectSoundAtEveryWidth([](double width) { return DrawPlantYears(TwoYears(), width); });
    // A year that ends on its last day has its name before the end.
    const DrawChart whole = [](double width) {
        return DrawPlantYears({{"2023-06-01", "Feed", 4}, {"2024-12-31", "Feed", 9}}, width);
    };
    ExpectSoundAtEveryWidth(whole);
    const SVGPicture picture(whole(720).SVG);
    for (const Element& text : picture.Marks("text", "ink"))
        EXPECT_LT(text.Number("x"), picture.Marks("circle", "mark").at(0).Number("cx"));
}

TEST(YearsChartTest, TheLastTenYearsAreDrawnWithNamesThatDoNotTouch)
{
    std::vector<PlantCalendarDay> days;
    for (int year = 2010; year <= 2023; ++year)
        for (int i = 0; i < 3; ++i)
            days.push_back({std::to_string(year) + "-0" + std::to_string(3 * i + 1) + "-15", "Feed", 5});
    const DrawChart draw = [&](double width) { return DrawPlantYears(days, width); };
    ExpectSoundAtEveryWidth(draw);
    const PlantChart chart = draw(720);
    const SVGPicture picture(chart.SVG);
    EXPECT_EQ(picture.Marks("polyline").size(), 10U);
    EXPECT_EQ(chart.Columns.size(), 11U);
    EXPECT_EQ(chart.Columns[1], "2014");
    EXPECT_NE(chart.Sentence.find(" 4 earlier years are not drawn."), std::string::npos);
    const std::vector<std::string> words = picture.Words();
    for (int year = 2014; year <= 2023; ++year)
        EXPECT_EQ(std::count(words.begin(), words.end(), std::to_string(year)), 1) << year;
}

TEST(YearsChartTest, YearsWithLittleCareKeepTheirNamesInThePicture)
{
    std::vector<PlantCalendarDay> days = {{"2023-12-31", "Feed", 5000}};
    for (int year = 2014; year < 2023; ++year)
        days.push_back({std::to_string(year) + "-06-01", "Feed", 1});
    ExpectSoundAtEveryWidth([&](double width) { return DrawPlantYears(days, width); });
}

} // namespace
