// Tests of the calendar of care.

#include "report/charts.h"

#include <algorithm>
#include <map>

#include <gtest/gtest.h>

using namespace support;

namespace
{

using Rows = std::vector<std::vector<std::string>>;

// The cells with care, by the title before the colon; without those of the key.
std::map<std::string, Element> Cells(const SVGPicture& picture)
{
    std::map<std::string, Element> cells;
    for (const Element& rect : picture.Marks("rect"))
        if (const std::string title = picture.TitleOf(rect); !title.empty())
            cells[title.substr(0, title.find(':'))] = rect;
    return cells;
}

double MiddleX(const Element& cell)
{
    return cell.Number("x") + cell.Number("width") / 2;
}

double MiddleY(const Element& cell)
{
    return cell.Number("y") + cell.Number("height") / 2;
}

// One watering each `step` days.
std::vector<PlantCalendarDay> Waterings(int days, int step)
{
    std::vector<PlantCalendarDay> waterings;
    for (int day = 0; day < days; day += step)
        waterings.push_back({Day(day), "Water", 1 + day % 9});
    return waterings;
}

TEST(CareCalendarTest, AColumnIsAWeekFromMondayToSunday)
{
    // 2024-01-01 was a Monday.
    const SVGPicture picture(
        DrawPlantCareCalendar({{Day(0), "Water", 1}, {Day(1), "Water", 1}, {Day(6), "Water", 1}, {Day(7), "Water", 1}})
            .SVG);
    std::map<std::string, Element> cells = Cells(picture);
    ASSERT_EQ(cells.size(), 4U);
    const Element& monday = cells["1 Jan 2024"];
    const double pitch = MiddleY(cells["2 Jan 2024"]) - MiddleY(monday);
    EXPECT_GE(pitch, 11);
    EXPECT_NEAR(MiddleX(cells["2 Jan 2024"]), MiddleX(monday), 0.2);
    EXPECT_NEAR(MiddleX(cells["7 Jan 2024"]), MiddleX(monday), 0.2);
    EXPECT_NEAR(MiddleY(cells["7 Jan 2024"]) - MiddleY(monday), 6 * pitch, 0.3);
    EXPECT_NEAR(MiddleX(cells["8 Jan 2024"]) - MiddleX(monday), pitch, 0.2);
    EXPECT_NEAR(MiddleY(cells["8 Jan 2024"]), MiddleY(monday), 0.2);
    EXPECT_EQ(picture.Marks("rect", "line").size(), 4U); // a small mark for each day between without care
}

TEST(CareCalendarTest, MoreCareIsLargerAndDarker)
{
    std::vector<PlantCalendarDay> days;
    for (int i = 0; i < 8; ++i)
        days.push_back({Day(i), i % 2 == 0 ? "Feed" : "Water", i + 1});
    const SVGPicture picture(DrawPlantCareCalendar(days).SVG);
    std::map<std::string, Element> cells = Cells(picture);
    double before = 0;
    for (int step = 1; step <= 4; ++step)
        for (const int day : {2 * step - 1, 2 * step})
        {
            const Element& cell = cells[std::to_string(day) + " Jan 2024"];
            EXPECT_EQ(cell["class"], "count" + std::to_string(step)) << day;
            EXPECT_EQ(cell["width"], cell["height"]);
            if (day % 2 == 1)
            {
                EXPECT_GT(cell.Number("width"), before);
            }
            before = cell.Number("width");
        }
    const std::vector<std::string> words = picture.Words();
    for (const char* range : {"1–2", "3–4", "5–6", "7–8", "Feedings and waterings a day"})
        EXPECT_EQ(std::count(words.begin(), words.end(), range), 1) << range;
}

TEST(CareCalendarTest, FeedingsAndWateringsOfADayAreAddedUp)
{
    const PlantChart chart = DrawPlantCareCalendar({{Day(0), "Feed", 1},
                                                    {Day(0), "Feed", 1},
                                                    {Day(0), "Water", 4},
                                                    {Day(0), "Note", 99},
                                                    {Day(1), "Photo", 1},
                                                    {Day(2), "Feed", 1},
                                                    {Day(3), "Feed", 0},
                                                    {"2024-02-30", "Feed", 7},
                                                    {"", "Water", 7}});
    EXPECT_EQ(chart.Rows, (Rows{{"2024-01-01", "2", "4"}, {"2024-01-03", "1", "0"}}));
    EXPECT_EQ(chart.Columns, (std::vector<std::string>{"Date", "Feedings", "Waterings"}));
    const SVGPicture picture(chart.SVG);
    EXPECT_EQ(picture.TitleOf(Cells(picture)["1 Jan 2024"]), "1 Jan 2024: 2 feedings, 4 waterings");
    EXPECT_EQ(chart.Sentence, "2 days of care from 1 Jan 2024 to 3 Jan 2024: 3 feedings, 4 waterings. The larger "
                              "a cell, the more care there was that day.");
}

TEST(CareCalendarTest, WithoutCareNothingIsDrawn)
{
    const std::string missing = "No feeding or watering has a complete date.";
    ExpectNothingDrawn(DrawPlantCareCalendar({}), missing);
    ExpectNothingDrawn(DrawPlantCareCalendar({{"2024", "Feed", 1}, {Day(1), "Photo", 1}}), missing);
}

TEST(CareCalendarTest, OneDayIsDrawn)
{
    const DrawChart draw = [](double width) { return DrawPlantCareCalendar({{Day(6), "Feed", 1}}, width); };
    ExpectSoundAtEveryWidth(draw);
    const SVGPicture picture(draw(360).SVG);
    EXPECT_EQ(picture.Marks("rect", "count4").size(), 2U); // the cell and the key
    const std::vector<std::string> words = picture.Words();
    for (const char* word : {"Mon", "Wed", "Fri", "Sun", "Jan 2024", "1"})
        EXPECT_EQ(std::count(words.begin(), words.end(), word), 1) << word;
}

TEST(CareCalendarTest, TheYearIsNamedAtTheBeginningAndInJanuary)
{
    const auto has = [](const std::vector<PlantCalendarDay>& days, const std::string& word)
    {
        const std::vector<std::string> words = SVGPicture(DrawPlantCareCalendar(days).SVG).Words();
        return std::count(words.begin(), words.end(), word) == 1;
    };
    const std::vector<PlantCalendarDay> winter = {{"2023-12-20", "Feed", 1}, {"2024-03-01", "Feed", 1}};
    EXPECT_TRUE(has(winter, "Dec")); // January follows
    EXPECT_TRUE(has(winter, "Jan 2024"));
    EXPECT_TRUE(has(winter, "Feb"));
    EXPECT_TRUE(has({{"2023-12-20", "Feed", 1}}, "Dec 2023"));
    EXPECT_TRUE(has({{"2023-10-20", "Feed", 1}, {"2023-12-20", "Feed", 1}}, "Oct 2023"));
}

TEST(CareCalendarTest, TwoYearsHaveACellADayInStripsThatFit)
{
    const std::vector<PlantCalendarDay> days = Waterings(2 * 366, 3);
    const DrawChart draw = [&](double width) { return DrawPlantCareCalendar(days, width); };
    ExpectSoundAtEveryWidth(draw);
    const SVGPicture wide(draw(720).SVG);
    const SVGPicture narrow(draw(360).SVG);
    EXPECT_EQ(Cells(wide).size(), days.size());
    EXPECT_EQ(wide.Marks("rect", "line").size(), 2 * 366 - days.size() - 2); // the last two days have none
    EXPECT_GT(narrow.Height(), wide.Height() * 1.5);
    const std::vector<std::string> words = narrow.Words();
    EXPECT_EQ(std::count(words.begin(), words.end(), "Mon"), 4);
    EXPECT_EQ(std::count(words.begin(), words.end(), "Jan 2025"), 1);
    EXPECT_EQ(std::count(words.begin(), words.end(), "Mar"), 2);
    double last = 0;
    for (const auto& [day, cell] : Cells(narrow))
        last = std::max(last, MiddleX(cell));
    EXPECT_GT(last, 360 * 0.9); // the strips use the width
}

TEST(CareCalendarTest, AboveTwoYearsACellIsAWeekInTheRowOfItsYear)
{
    std::vector<PlantCalendarDay> days = Waterings(2 * 366 + 1, 1);
    const PlantChart chart = DrawPlantCareCalendar(days);
    const SVGPicture picture(chart.SVG);
    std::map<std::string, Element> cells = Cells(picture);
    EXPECT_EQ(cells.size(), 105U); // 733 days from a Monday
    EXPECT_EQ(chart.Rows.size(), 105U);
    EXPECT_EQ(chart.Rows[0], (std::vector<std::string>{"2024-01-01", "0", "28"})); // 1 + 2 + ... + 7
    const Element& first = cells["The week of 1 Jan 2024"];
    const Element& second = cells["The week of 8 Jan 2024"];
    const Element& nextYear = cells["The week of 30 Dec 2024"]; // whose Thursday is in 2025
    EXPECT_NEAR(MiddleX(second) - MiddleX(first), (720 - 40) / 53.0, 0.1);
    EXPECT_NEAR(MiddleX(nextYear), MiddleX(first), 0.1);
    EXPECT_NEAR(nextYear.Number("y") + nextYear.Number("height") - first.Number("y") - first.Number("height"), 22, 0.1);
    EXPECT_NE(chart.Sentence.find("the more care there was that week."), std::string::npos);
    const std::vector<std::string> words = picture.Words();
    for (const char* word : {"2024", "2025", "2026", "Jan", "Dec", "Feedings and waterings a week"})
        EXPECT_EQ(std::count(words.begin(), words.end(), word), 1) << word;
}

TEST(CareCalendarTest, TheBarOfAWeekGrowsWithItsCare)
{
    std::vector<PlantCalendarDay> days = {{Day(0), "Feed", 1}, {Day(800), "Feed", 40}};
    const SVGPicture picture(DrawPlantCareCalendar(days).SVG);
    std::map<std::string, Element> cells = Cells(picture);
    const Element& little = cells["The week of 1 Jan 2024"];
    const Element& much = cells["The week of 9 Mar 2026"];
    EXPECT_EQ(little["class"], "count1");
    EXPECT_EQ(much["class"], "count4");
    EXPECT_NEAR(much.Number("height") / little.Number("height"), 4, 0.1);
    EXPECT_EQ(little["width"], much["width"]);
}

TEST(CareCalendarTest, TenYearsAreSoundAndSmall)
{
    const std::vector<PlantCalendarDay> days = Waterings(10 * 366, 1);
    const DrawChart draw = [&](double width) { return DrawPlantCareCalendar(days, width); };
    ExpectSoundAtEveryWidth(draw);
    EXPECT_EQ(Cells(SVGPicture(draw(360).SVG)).size(), 523U);
    EXPECT_LT(draw(720).SVG.size(), 100'000U);
    const std::vector<std::string> words = SVGPicture(draw(360).SVG).Words();
    EXPECT_EQ(std::count(words.begin(), words.end(), "Apr"), 1);
    EXPECT_EQ(std::count(words.begin(), words.end(), "Feb"), 0); // has no room
}

TEST(CareCalendarTest, AboveTenYearsACellIsAMonth)
{
    const std::vector<PlantCalendarDay> days = Waterings(10 * 366 + 1, 1);
    const DrawChart draw = [&](double width) { return DrawPlantCareCalendar(days, width); };
    ExpectSoundAtEveryWidth(draw);
    const PlantChart chart = draw(720);
    EXPECT_EQ(chart.Rows.size(), 121U);
    EXPECT_EQ(chart.Rows[1][0], "2024-02");
    const SVGPicture picture(chart.SVG);
    std::map<std::string, Element> cells = Cells(picture);
    const Element& january = cells["Jan 2024"];
    EXPECT_NEAR(MiddleX(cells["Dec 2024"]) - MiddleX(january), 11 * (720 - 40) / 12.0, 0.1);
    EXPECT_NEAR(MiddleX(cells["Jan 2025"]), MiddleX(january), 0.1);
    EXPECT_NE(chart.Sentence.find("the more care there was that month."), std::string::npos);
}

TEST(CareCalendarTest, TheNewestFortyYearsAreDrawn)
{
    std::vector<PlantCalendarDay> days;
    for (int year = 1984; year <= 2024; year += 4)
        days.push_back({std::to_string(year) + "-12-05", "Feed", 1});
    const PlantChart chart = DrawPlantCareCalendar(days);
    EXPECT_EQ(chart.Rows.size(), 10U);
    EXPECT_EQ(chart.Rows.front(), (std::vector<std::string>{"1988-12", "1", "0"}));
    EXPECT_NE(chart.Sentence.find(" Earlier years are left out."), std::string::npos);
    days.front().Date = "1985-01-01";
    const PlantChart whole = DrawPlantCareCalendar(days);
    EXPECT_EQ(whole.Rows.front(), (std::vector<std::string>{"1985-01", "1", "0"}));
    EXPECT_EQ(whole.Sentence.find("Earlier years"), std::string::npos);
}

TEST(CareCalendarTest, TheFirstAndTheLastDayOfTheCalendarAreDrawn)
{
    ExpectSoundAtEveryWidth([](double width) { return DrawPlantCareCalendar({{"9999-12-31", "Feed", 1}}, width); });
    ExpectSoundAtEveryWidth([](double width) { return DrawPlantCareCalendar({{"0000-01-01", "Feed", 1}}, width); });
    ExpectSoundAtEveryWidth(
        [](double width) {
            return DrawPlantCareCalendar({{"0000-01-01", "Feed", 1}, {"0005-01-01", "Feed", 1}}, width);
        });
}

} // namespace
