// Draws two pictures of a journal and writes them to SVG files, which any browser shows in its light or dark colours.
// usage: season_pictures JOURNAL DIRECTORY

#include "plant_report.h"

#include <fstream>
#include <iostream>

namespace
{

// The pictures of a page share its style sheet. A picture in a file of its own needs one inside.
bool WriteFile(const std::string& path, const PlantChart& chart)
{
    std::string svg = chart.SVG;
    svg.insert(svg.find('>') + 1, "<style>" + PlantReportStyle() + "</style>");
    std::ofstream file(path, std::ios::binary);
    file << svg << '\n';
    return static_cast<bool>(file.flush());
}

PlantTotalFilter EachWeek(PlantTotalGroup group, std::vector<PlantCareAction> actions)
{
    PlantTotalFilter filter;
    filter.Group = group;
    filter.Actions = std::move(actions);
    filter.Period = PlantPeriod::Week;
    return filter;
}

// Returns the error; empty where the pictures were written.
std::string DrawPictures(PlantDatabase& journal, const std::string& directory)
{
    std::vector<PlantTotal> waterings;
    std::vector<PlantTotal> feedings;
    std::vector<PlantTotal> measurements;
    PlantQueryResult read =
        QueryPlantTotals(journal, EachWeek(PlantTotalGroup::All, {PlantCareAction::Water}), waterings);
    if (read)
        read = QueryPlantTotals(journal, EachWeek(PlantTotalGroup::All, {PlantCareAction::Feed}), feedings);
    if (read)
        read = QueryPlantTotals(journal, EachWeek(PlantTotalGroup::Plant, {}), measurements);
    if (!read)
        return read.Error;
    if (!WriteFile(directory + "/water-and-feed.svg", DrawPlantCareAmounts(waterings, feedings, PlantPeriod::Week)) ||
        !WriteFile(directory + "/ec-and-ph.svg", DrawPlantMeasurements(measurements, PlantPeriod::Week)))
        return directory + ": the pictures could not be written";
    return {};
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 3)
        return std::cerr << "usage: season_pictures JOURNAL DIRECTORY\n", 2;
    PlantDatabase journal;
    std::string error;
    if (journal.Open(arguments[1], &error))
        error = DrawPictures(journal, arguments[2]);
    if (!error.empty())
        return std::cerr << "season_pictures: " << error << '\n', 1;
}
