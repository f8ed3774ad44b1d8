/// @file wheat_trial.cpp
/// Converts a field trial of wheat (data/variety-trials, described in its ORIGIN.md) to CSV files for
/// `plantjournal import`. It shows how to import tables from other sources:
///
///     wheat_trial examples/data/variety-trials/stroup.nin.txt wheat
///     plantjournal --file wheat.db import wheat

#include <charconv>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

/// One plot, which is one line of the table.
struct Plot
{
    std::string Cultivar;
    std::string Replicate; ///< Empty if missing.
    std::string Yield;     ///< Bushels per acre, as published. Empty if missing.
    int Column = 0;
    int Row = 0;
};

[[noreturn]] void Fail(const std::string& problem)
{
    throw std::runtime_error(problem);
}

int PositionFrom(const std::string& text, const std::string& place)
{
    int position = 0;
    const char* const end = &text[text.size()];
    const std::from_chars_result result = std::from_chars(text.data(), end, position);
    if (result.ec != std::errc() || result.ptr != end || position < 1 || position > 999)
        Fail(place + "\"" + text + "\" is not a position in the field");
    return position;
}

std::vector<std::string> Cells(std::string line)
{
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    std::vector<std::string> cells;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, '\t');)
        cells.push_back(cell == "NA" ? "" : cell); // a missing value
    return cells;
}

std::vector<Plot> ReadTrial(const std::string& path)
{
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line) || Cells(line) != std::vector<std::string>{"gen", "rep", "yield", "col", "row"})
        Fail(path + ":1: expected the headings gen, rep, yield, col and row");
    std::vector<Plot> plots;
    for (int number = 2; std::getline(file, line); ++number)
    {
        const std::string place = path + ":" + std::to_string(number) + ": ";
        const std::vector<std::string> cells = Cells(line);
        if (cells.size() != 5 || cells[0].empty())
            Fail(place + "expected a cultivar and four values");
        plots.push_back({cells[0], cells[1], cells[2], PositionFrom(cells[3], place), PositionFrom(cells[4], place)});
    }
    if (file.bad())
        Fail(path + ": read error");
    if (plots.empty())
        Fail(path + ":2: expected a row of data");
    return plots;
}

/// Returns the same UUID for the same plot each time, so that a second import is refused. Version 8 of UUIDs leaves the
/// digits to the application: RFC 9562, section 5.8.
std::string UUIDOf(const Plot& plot)
{
    std::ostringstream uuid;
    uuid << "a111a9ce-1989-8000-8000-" << std::setfill('0') << std::setw(6) << plot.Column << std::setw(6) << plot.Row;
    return uuid.str();
}

void WriteFile(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream file(path);
    if (!(file << text) || !file.flush())
        Fail(path.string() + ": cannot be written");
}

/// The values of this table need no quotes in CSV. Fields without a column get their defaults.
void WriteJournal(const std::vector<Plot>& plots, const std::filesystem::path& directory)
{
    std::ostringstream plants;
    std::ostringstream harvests;
    plants << "UUID,Name,Strain,Stage,Tent,Notes\n";
    harvests << "PlantUUID,HarvestDate,DryWeightG\n";
    for (const Plot& plot : plots)
    {
        plants << UUIDOf(plot) << ',' << plot.Cultivar << " c" << plot.Column << 'r' << plot.Row << ',' << plot.Cultivar
               << ',' << (plot.Yield.empty() ? "Archived" : "Veg") << ",Alliance,"
               << (plot.Replicate.empty() ? "" : "rep " + plot.Replicate) << '\n';
        if (!plot.Yield.empty())
            harvests << UUIDOf(plot) << ",1989," << plot.Yield << '\n';
    }
    std::filesystem::create_directories(directory);
    WriteFile(directory / "Plants.csv", plants.str());
    WriteFile(directory / "HarvestRecords.csv", harvests.str());
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        const std::vector<std::string> arguments(argv, std::next(argv, argc));
        if (arguments.size() != 3)
        {
            std::cerr << "Usage: wheat_trial TRIAL DIRECTORY\n"
                         "Converts the plots in the table TRIAL to CSV files in DIRECTORY.\n";
            return 2;
        }
        WriteJournal(ReadTrial(arguments[1]), arguments[2]);
        return 0;
    }
    catch (const std::exception& error)
    {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
