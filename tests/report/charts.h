// What every chart must be, and data for the tests of charts.
#pragma once

#include "plant_report.h"
#include "report/svg_picture.h"

#include <functional>
#include <string>
#include <vector>

namespace support
{

// Draws a chart with a width.
using DrawChart = std::function<PlantChart(double width)>;

// Draws the chart with many widths: each picture is sound and as wide as asked, or as the nearest width that is
// possible. Words and figures are the same for all.
void ExpectSoundAtEveryWidth(const DrawChart& draw);

// The chart has no picture and no figures, and its sentence says what is missing.
void ExpectNothingDrawn(const PlantChart& chart, const std::string& sentence);

// Texts that break careless pages: markup, quotes, right-to-left, emoji, 10,000 letters, control characters, broken
// UTF-8.
std::vector<std::string> HostileTexts();

// The day `days` after 2024-01-01, `YYYY-MM-DD`.
std::string Day(int days);

// The place of each mark as a part of the way from the first mark to the last one, by an attribute such as `cx`.
std::vector<double> Parts(const std::vector<Element>& marks, const std::string& attribute);

// The places are near each other: a tenth of a pixel is not drawn.
void ExpectParts(const std::vector<double>& parts, const std::vector<double>& expected);

// The places of a polyline.
std::vector<std::pair<double, double>> PointsOf(const Element& polyline);

// The place of a number on the axis before a chart, by the middle of its label.
double AxisPlace(const SVGPicture& picture, const std::string& label, std::size_t which = 0);

} // namespace support
