/// @file plant_report.h
/// Pictures of a season: charts as SVG texts, and a page that puts them together.
///
/// A chart is a pure function: it reads no file and no clock, and the same records give the same text.
/// WritePlantReport() reads an open journal from one transaction, as plant_query.h describes, draws the charts and
/// returns one HTML text. Threads and exceptions: as in plant_query.h.
///
/// The drawing is written here. Each mark needs a class, so that a light and a dark style sheet can change its colour,
/// and a title, which a browser shows. Of the libraries for C and C++ in Debian 12 that were looked at, none that draws
/// charts writes both. Cairo and MathGL write letters as outlines. Qt's generator (which QCustomPlot and Qwt use),
/// PLplot, GNU libplot and ploticus write fixed colours, and neither a class nor a title for a mark. gnuplot is a
/// program; it writes a class only for the lines of the grid, and a title only for each plot. Graphviz writes both, but
/// draws only graphs. wxSVG and librsvg show SVG documents, and svgpp reads them; these three draw no charts.
///
/// Every text of a record is escaped. An SVG text is a whole `svg` element in the SVG namespace with a `viewBox`, a
/// `title` and a `desc`. Each mark has its colour of the light palette as attributes, so that any program can draw it,
/// and a class, so that PlantReportStyle() can change it. Colours never carry a meaning alone.
#pragma once

#include "plant_query.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Marks the functions that the shared library exports. All other symbols are hidden.
#if !defined(_WIN32)
#define PLANTJOURNAL_REPORT_API __attribute__((visibility("default")))
#elif defined(plantjournal_report_EXPORTS) // CMake defines it while it builds the library
#define PLANTJOURNAL_REPORT_API __declspec(dllexport)
#else
#define PLANTJOURNAL_REPORT_API
#endif

/// A picture with its words and its figures.
struct PlantChart
{
    std::string Heading;                        ///< What the chart is about.
    std::string Sentence;                       ///< What is seen.
    std::string SVG;                            ///< The picture; empty where the records hold nothing to draw.
    std::vector<std::string> Columns;           ///< The headings of the table of figures.
    std::vector<std::vector<std::string>> Rows; ///< The figures in the picture, a text for each column.
};

/// A plant in a stage for some days.
struct PlantStageSpan
{
    std::string PlantName;              ///< The name of the plant.
    PlantStage Stage = PlantStage::Veg; ///< The stage.
    std::string From;                   ///< The day on which the stage began.
    std::string To;                     ///< The day on which the next stage began, or the last day of the chart.
};

/// A harvest of a plant.
struct PlantHarvest
{
    std::string PlantName; ///< The name of the plant.
    std::string Strain;    ///< The strain of the plant.
    HarvestRecord Record;  ///< The harvest record.
};

/// A health observation of a plant.
struct PlantHealth
{
    std::string PlantName;              ///< The name of the plant.
    PlantHealthObservation Observation; ///< The observation.
};

/// @name Charts
/// The `width` of a picture is in pixels. A picture that is shown as wide as it was drawn has letters of 11 to 13
/// pixels, so a telephone needs a picture of its own: WritePlantReport() draws each chart with 720 and with 360 pixels.
/// Less than 320 counts as 320, and more than 1600 as 1600. The words and figures are the same for every width.
///
/// A date may have a mistyped year. A chart over time shows the days around which most records are. Records before or
/// after a gap of more than five years, if the gap is also longer than the time of all others, are not drawn: the
/// sentence counts them, and they are the first rows of the table, or the last columns of that of the years.
/// @{

/// The width of a picture on a desktop or on paper, in pixels.
constexpr double PlantChartWidth = 720;

/// Draws a bar for each stage of each plant over time. Spans without two days of the calendar are left out.
PLANTJOURNAL_REPORT_API PlantChart DrawPlantStages(const std::vector<PlantStageSpan>& spans,
                                                   double width = PlantChartWidth);

/// Draws a calendar of care: a cell a day, darker the more feedings and waterings there were. Above two years it shows
/// a cell a week, and above ten years a cell a month.
PLANTJOURNAL_REPORT_API PlantChart DrawPlantCareCalendar(const std::vector<PlantCalendarDay>& days,
                                                         double width = PlantChartWidth);

/// Draws EC and pH over time, a small chart for each `Name` of the totals. Nothing is drawn where nothing was entered,
/// and no line joins values with such a gap between them. Draws the 12 names with the most care entries. The totals may
/// be of any group; `period` is the length of time of each row: a day, a week or a month.
PLANTJOURNAL_REPORT_API PlantChart DrawPlantMeasurements(const std::vector<PlantTotal>& totals, PlantPeriod period,
                                                         double width = PlantChartWidth);

/// Draws the millilitres of water and feed for each period. `waterings` are totals of the action `Water` and `feedings`
/// of the action `Feed`, one row a period; `period` is the length of time of each row: a day, a week or a month.
PLANTJOURNAL_REPORT_API PlantChart DrawPlantCareAmounts(const std::vector<PlantTotal>& waterings,
                                                        const std::vector<PlantTotal>& feedings, PlantPeriod period,
                                                        double width = PlantChartWidth);

/// Draws the dry weight of each plant as a dot, by strain, and the mean of each strain. Plants that have only a wet
/// weight are drawn by it, in a chart of their own scale.
PLANTJOURNAL_REPORT_API PlantChart DrawPlantHarvests(const std::vector<PlantHarvest>& harvests,
                                                     double width = PlantChartWidth);

/// Draws mothers and their clones with their yields. `plants` are the roots and their descendants, in the order of
/// `PlantLineage`; `Generation` 0 begins a tree.
PLANTJOURNAL_REPORT_API PlantChart DrawPlantLineage(const std::vector<PlantRelative>& plants,
                                                    double width = PlantChartWidth);

/// Draws health observations over time by severity.
PLANTJOURNAL_REPORT_API PlantChart DrawPlantHealth(const std::vector<PlantHealth>& observations,
                                                   double width = PlantChartWidth);

/// Draws the care of the latest calendar year over that of the years before, day by day. Without a second year there is
/// nothing to draw.
PLANTJOURNAL_REPORT_API PlantChart DrawPlantYears(const std::vector<PlantCalendarDay>& days,
                                                  double width = PlantChartWidth);

/// @}
/// @name Page
/// @{

/// What a report holds.
struct PlantReportOptions
{
    std::string Title; ///< The title of the page.
    PlantSet Plants;   ///< The plants. A report of one plant shows its history with photos and notes.
    std::string From;  ///< The first date; empty for no limit. As in `PlantActivityFilter`.
    std::string To;    ///< The last date; empty for no limit. As in `PlantActivityFilter`.
    std::string Today; ///< The day on which the report is made, `YYYY-MM-DD`. Any other text is an error.
    /// Returns the `src` of the image of a photo: a URL relative to the page, or a `data:` URI where the picture is
    /// embedded. An empty text leaves the photo out. Without a function, no photo is shown.
    std::function<std::string(const PlantPhoto& photo)> PhotoSource;
};

/// Returns the style sheet of the charts, for front ends that show charts by themselves: it makes them light or dark as
/// the reader prefers. It has no rules for anything outside of a chart.
PLANTJOURNAL_REPORT_API std::string PlantReportStyle();

/// Writes a report as one HTML text in XML syntax. The text refers to no other file than the photos, holds no script,
/// and forbids everything else by its Content-Security-Policy.
///
/// Large journals are summed by week or month until a chart holds what a person can read. `out` receives the text; it
/// is empty after an error.
PLANTJOURNAL_REPORT_API PlantQueryResult WritePlantReport(PlantDatabase& database, const PlantReportOptions& options,
                                                          std::string& out);

/// @}
