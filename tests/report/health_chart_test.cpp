// Tests of the chart of health problems.

#include "report/charts.h"

#include <algorithm>

#include <gtest/gtest.h>

using namespace support;

namespace
{

PlantHealth Seen(const std::string& plant, const std::string& date, const std::string& issue, int severity)
{
    PlantHealth health;
    health.PlantName = plant;
    health.Observation.ObservationDate = date;
    health.Observation.Issue = issue;
    health.Observation.Severity = severity;
    return health;
}

// The marks of observations, without those of the key.
std::vector<Element> Seen(const SVGPicture& picture, const std::string& element)
{
    std::vector<Element> marks = picture.Marks(element);
    marks.erase(
        std::remove_if(marks.begin(), marks.end(), [&](const Element& mark) { return picture.TitleOf(mark).empty(); }),
        marks.end());
    return marks;
}

TEST(HealthChartTest, AMarkHasItsDayAndTheRowOfItsIssue)
{
    const SVGPicture picture(DrawPlantHealth({Seen("A", Day(0), "Thrips", 1), Seen("A", Day(10), "Mites", 2),
                                              Seen("A", Day(25), "Thrips", 3), Seen("B", Day(100), "Thrips", 4)})
                                 .SVG);
    const std::vector<Element> marks = Seen(picture, "circle");
    ASSERT_EQ(marks.size(), 4U); // Thrips first, since it was seen more often
    ExpectParts({(marks[1].Number("cx") - marks[0].Number("cx")) / (marks[2].Number("cx") - marks[0].Number("cx")),
                 (marks[3].Number("cx") - marks[0].Number("cx")) / (marks[2].Number("cx") - marks[0].Number("cx"))},
                {0.25, 0.1});
    EXPECT_EQ(marks[0]["cy"], marks[2]["cy"]);
    EXPECT_EQ(marks[3].Number("cy") - marks[0].Number("cy"), 26);
    EXPECT_EQ(picture.CountOf("Thrips"), 1U);
    EXPECT_EQ(picture.CountOf("Mites"), 1U);
}

TEST(HealthChartTest, AMoreSevereProblemIsLargerAndHasAnotherColour)
{
    std::vector<PlantHealth> observations;
    for (int severity = 1; severity <= 5; ++severity)
        observations.push_back(Seen("A", Day(10 * severity), "Thrips", severity));
    observations.push_back(Seen("A", Day(60), "Thrips", 99)); // counts as 5
    observations.push_back(Seen("A", Day(70), "Thrips", -1)); // counts as 1
    const SVGPicture picture(DrawPlantHealth(observations).SVG);
    const std::vector<Element> marks = Seen(picture, "circle");
    ASSERT_EQ(marks.size(), 7U);
    for (int severity = 1; severity <= 5; ++severity)
    {
        const auto i = static_cast<std::size_t>(severity - 1);
        EXPECT_EQ(marks[i]["class"], "severity" + std::to_string(severity));
        EXPECT_GT(marks[i].Number("r"), i == 0 ? 3 : marks[i - 1].Number("r") + 1);
    }
    EXPECT_EQ(marks[5]["class"], "severity5");
    EXPECT_EQ(marks[6]["class"], "severity1");
    for (const char* word : {"Severity", "1 slight", "2", "3", "4", "5 severe"})
        EXPECT_EQ(picture.CountOf(word), 1U) << word;
}

TEST(HealthChartTest, ObservationsOfADayAndIssueAreOneMarkOfTheWorst)
{
    const PlantChart chart =
        DrawPlantHealth({Seen("A", Day(0), "Spider mites", 2), Seen("B", Day(0), "spider MITES", 4),
                         Seen("A", Day(0), "Spider mites", 1), Seen("A", Day(3), "Wilting", 3)});
    EXPECT_EQ(chart.Columns, (std::vector<std::string>{"Issue", "Date", "Worst severity", "Observations", "Plants"}));
    EXPECT_EQ(chart.Rows, (std::vector<std::vector<std::string>>{{"Spider mites", "2024-01-01", "4", "3", "2 plants"},
                                                                 {"Wilting", "2024-01-04", "3", "1", "A"}}));
    const SVGPicture picture(chart.SVG);
    const std::vector<Element> marks = Seen(picture, "circle");
    ASSERT_EQ(marks.size(), 2U);
    EXPECT_EQ(marks[0]["class"], "severity4");
    EXPECT_EQ(picture.TitleOf(marks[0]), "2024-01-01: severity 4, 3 observations, 2 plants");
    EXPECT_EQ(chart.Sentence, "4 observations from 1 Jan 2024 to 4 Jan 2024. The larger a mark, the more "
                              "severe was the problem.");
}

TEST(HealthChartTest, WithoutObservationsNothingIsDrawn)
{
    const std::string missing = "No health observation has a complete date.";
    ExpectNothingDrawn(DrawPlantHealth({}), missing);
    ExpectNothingDrawn(DrawPlantHealth({Seen("A", "", "Thrips", 1), Seen("A", "2024-02-30", "Thrips", 1)}), missing);
}

TEST(HealthChartTest, OneObservationIsSound)
{
    ExpectSoundAtEveryWidth([](double width) { return DrawPlantHealth({Seen("", Day(0), "", 5)}, width); });
    const PlantChart chart = DrawPlantHealth({Seen("", Day(0), "", 5)});
    EXPECT_EQ(chart.Rows.at(0), (std::vector<std::string>{"(no issue named)", "2024-01-01", "5", "1", "(no name)"}));
}

TEST(HealthChartTest, AboveHalfAYearAMarkIsABarOfAWeek)
{
    const PlantChart chart = DrawPlantHealth({Seen("A", Day(0), "Thrips", 1), Seen("B", Day(6), "Thrips", 5),
                                              Seen("A", Day(7), "Thrips", 2), Seen("A", Day(183), "Thrips", 4)});
    const SVGPicture picture(chart.SVG);
    EXPECT_TRUE(Seen(picture, "circle").empty());
    const std::vector<Element> bars = Seen(picture, "rect");
    ASSERT_EQ(bars.size(), 3U);
    ExpectParts(Parts(bars, "x"), {0, 7 / 182.0, 1});
    EXPECT_NEAR(bars[0].Number("height") / bars[1].Number("height"), 2.5, 0.01);
    EXPECT_EQ(bars[0].Number("y") + bars[0].Number("height"), bars[2].Number("y") + bars[2].Number("height"));
    EXPECT_EQ(chart.Rows.at(0), (std::vector<std::string>{"Thrips", "2024-01-01", "5", "2", "2 plants"}));
    EXPECT_NE(chart.Sentence.find(" Each mark is the worst severity of a week."), std::string::npos);
    EXPECT_EQ(
        DrawPlantHealth({Seen("A", Day(0), "Thrips", 1), Seen("A", Day(182), "Thrips", 4)}).Sentence.find("Each mark"),
        std::string::npos);
}

TEST(HealthChartTest, AboveTwoYearsABarIsAMonth)
{
    const PlantChart chart = DrawPlantHealth({Seen("A", Day(3), "Thrips", 1), Seen("A", Day(732 + 3), "Thrips", 4)});
    EXPECT_EQ(chart.Rows.at(0).at(1), "2024-01");
    EXPECT_EQ(chart.Rows.at(1).at(1), "2026-01");
    EXPECT_NE(chart.Sentence.find("of a month."), std::string::npos);
    EXPECT_EQ(DrawPlantHealth({Seen("A", Day(3), "Thrips", 1), Seen("A", Day(3 + 731), "Thrips", 4)}).Rows.at(0).at(1),
              "2024-01-01");
}

TEST(HealthChartTest, ObservationsBeforeTheLastTenYearsAreLeftOut)
{
    std::vector<PlantHealth> observations = {Seen("A", Day(-1), "Thrips", 1), Seen("A", "spring", "Thrips", 1)};
    for (const int day : {0, 1200, 2400, 3659})
        observations.push_back(Seen("A", Day(day), "Thrips", 1));
    const PlantChart chart = DrawPlantHealth(observations);
    EXPECT_EQ(chart.Rows.size(), 4U);
    EXPECT_NE(
        chart.Sentence.find("2 observations are left out: not of the last ten years, or without a complete date."),
        std::string::npos);
    observations.back() = Seen("A", Day(3660), "Thrips", 1);
    EXPECT_EQ(DrawPlantHealth(observations).Rows.size(), 3U);
}

TEST(HealthChartTest, ManyIssuesBecomeTwelveRows)
{
    std::vector<PlantHealth> observations;
    for (int issue = 0; issue < 20; ++issue)
        for (int i = 0; i <= issue; ++i)
            observations.push_back(
                Seen("Plant " + std::to_string(i % 3), Day(i * 5), "Issue " + std::to_string(issue), 1 + issue % 5));
    const DrawChart draw = [&](double width) { return DrawPlantHealth(observations, width); };
    ExpectSoundAtEveryWidth(draw);
    const PlantChart chart = draw(720);
    const SVGPicture picture(chart.SVG);
    EXPECT_EQ(picture.CountOf("Issue 19"), 1U);
    EXPECT_EQ(picture.CountOf("Issue 9"), 1U);
    EXPECT_EQ(picture.CountOf("Issue 8"), 0U);
    EXPECT_EQ(picture.CountOf("9 other issues"), 1U);
    EXPECT_EQ(chart.Rows.back(), (std::vector<std::string>{"9 other issues", Day(40), "4", "1", "Plant 2"}));
    const auto others = std::find_if(chart.Rows.begin(), chart.Rows.end(),
                                     [](const auto& row) { return row.front() == "9 other issues"; });
    EXPECT_EQ(*others, (std::vector<std::string>{"9 other issues", Day(0), "5", "9", "Plant 0"}));
}

TEST(HealthChartTest, TenYearsOfManyPlantsAreSoundAndSmall)
{
    std::vector<PlantHealth> observations;
    for (int i = 0; i < 5000; ++i)
        observations.push_back(Seen("Plant " + std::to_string(i % 1000), Day(i * 37 % 3650),
                                    "Issue " + std::to_string(i % 23), 1 + i % 5));
    const DrawChart draw = [&](double width) { return DrawPlantHealth(observations, width); };
    ExpectSoundAtEveryWidth(draw);
    EXPECT_LT(draw(720).SVG.size(), 250'000U);
    EXPECT_EQ(draw(720).Rows.size(), Seen(SVGPicture(draw(720).SVG), "rect").size());
}

TEST(HealthChartTest, HostileTextsAreEscapedAndCut)
{
    std::vector<PlantHealth> observations;
    for (const std::string& text : HostileTexts())
        observations.push_back(Seen(text, Day(0), text, 3));
    const DrawChart draw = [&](double width) { return DrawPlantHealth(observations, width); };
    ExpectSoundAtEveryWidth(draw);
    EXPECT_EQ(SVGPicture(draw(720).SVG).CountOf("<script>alert(1)</script>"), 1U);
    EXPECT_LT(draw(720).SVG.size(), 12'000U);
}

} // namespace
