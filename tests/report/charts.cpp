#include "report/charts.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>
#include <sstream>

#include <gtest/gtest.h>

namespace support
{

void ExpectSoundAtEveryWidth(const DrawChart& draw)
{
    const PlantChart usual = draw(PlantChartWidth);
    ASSERT_FALSE(usual.SVG.empty()) << usual.Sentence;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const auto& [asked, drawn] : {std::pair{720.0, 720.0},
                                       {360.0, 360.0},
                                       {320.0, 320.0},
                                       {390.0, 390.0},
                                       {1600.0, 1600.0},
                                       {-5.0, 320.0},
                                       {nan, 320.0},
                                       {1e9, 1600.0}})
    {
        SCOPED_TRACE("width " + std::to_string(asked));
        const PlantChart chart = draw(asked);
        const SVGPicture picture(chart.SVG);
        picture.ExpectSound();
        EXPECT_EQ(picture.Width(), drawn);
        EXPECT_EQ(picture.AccessibleName(), chart.Heading);
        EXPECT_EQ(picture.Description(), chart.Sentence);
        EXPECT_EQ(chart.Heading, usual.Heading);
        EXPECT_EQ(chart.Sentence, usual.Sentence);
        EXPECT_EQ(chart.Columns, usual.Columns);
        EXPECT_EQ(chart.Rows, usual.Rows);
        for (const std::vector<std::string>& row : chart.Rows)
            EXPECT_EQ(row.size(), chart.Columns.size());
    }
}

void ExpectNothingDrawn(const PlantChart& chart, const std::string& sentence)
{
    EXPECT_EQ(chart.SVG, "");
    EXPECT_TRUE(chart.Rows.empty());
    EXPECT_EQ(chart.Sentence, sentence);
    EXPECT_FALSE(chart.Heading.empty());
}

std::vector<std::string> HostileTexts()
{
    return {"<script>alert(1)</script>",
            "\"quoted\" & 'quoted' ]]>",
            "\u05e9\u05dc\u05d5\u05dd \u202eabc",
            "\U0001f331\U0001f469\u200d\U0001f33e\U0001f33b",
            std::string(10'000, 'W'),
            std::string("a\x01\x1f\x7f z"),
            "\xff\xfe broken \xc3",
            ""};
}

std::string Day(int days)
{
    using namespace std::chrono;
    const year_month_day day{sys_days{2024y / January / 1} + std::chrono::days{days}};
    std::ostringstream text;
    text.fill('0');
    text.width(4);
    text << static_cast<int>(day.year()) << '-';
    text.width(2);
    text << static_cast<unsigned>(day.month()) << '-';
    text.width(2);
    text << static_cast<unsigned>(day.day());
    return text.str();
}

std::vector<double> Parts(const std::vector<Element>& marks, const std::string& attribute)
{
    std::vector<double> parts;
    for (const Element& mark : marks)
        parts.push_back((mark.Number(attribute) - marks.front().Number(attribute)) /
                        (marks.back().Number(attribute) - marks.front().Number(attribute)));
    return parts;
}

void ExpectParts(const std::vector<double>& parts, const std::vector<double>& expected)
{
    ASSERT_EQ(parts.size(), expected.size());
    for (std::size_t i = 0; i < parts.size(); ++i)
        EXPECT_NEAR(parts[i], expected[i], 0.01) << "mark " << i;
}

std::vector<std::pair<double, double>> PointsOf(const Element& polyline)
{
    std::vector<std::pair<double, double>> points;
    std::istringstream text(polyline["points"]);
    double x = 0;
    double y = 0;
    char comma = 0;
    while (text >> x >> comma >> y)
        points.emplace_back(x, y);
    return points;
}

double AxisPlace(const SVGPicture& picture, const std::string& label, std::size_t which)
{
    for (const Element& text : picture.Marks("text"))
        if (text.Text == label && which-- == 0)
            return text.Number("y") - 4;
    ADD_FAILURE() << "no label " << label;
    return 0;
}

} // namespace support
