/// @file wheat_trial.cpp
/// Turns a field trial of wheat (data/variety-trials, explained in its ORIGIN.md) into CSV files that the command
/// `plantjournal import` takes: the way for other people's tables into a journal.
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

/// One plot: a line of the table.
struct Plot
{
    std::string Cultivar;
    std::string Replicate; ///< Empty where it is missing.
    std::string Yield;     ///< Bushels per acre, as published; empty where it is missing.
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
        Fail(place + "\"" + text + "\" is no place in the field");
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
        Fail(path + ":1: the headings gen, rep, yield, col and row are expected");
    std::vector<Plot> plots;
    for (int number = 2; std::getline(file, line); ++number)
    {
        const std::string place = path + ":" + std::to_string(number) + ": ";
        const std::vector<std::string> cells = Cells(line);
        if (cells.size() != 5 || cells[0].empty())
            Fail(place + "a cultivar and four values are expected");
        plots.push_back({cells[0], cells[1], cells[2], PositionFrom(cells[3], place), PositionFrom(cells[4], place)});
    }
    if (file.bad() || plots.empty())
        Fail(path + ": cannot be read to its end");
    return plots;
}

/// The same plot has the same identifier whenever it is converted, so that a second import is refused. A UUID of
/// version 8, whose digits anybody may choose: RFC 9562, section 5.8.
std::string IdentifierOf(const Plot& plot)
{
    std::ostringstream identifier;
    identifier << "a111a9ce-1989-8000-8000-" << std::setfill('0') << std::setw(6) << plot.Column << std::setw(6)
               << plot.Row;
    return identifier.str();
}

void WriteFile(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream file(path);
    if (!(file << text) || !file.flush())
        Fail(path.string() + ": cannot be written");
}

/// No value of this table needs quotes; what is not given is a record's default.
void WriteJournal(const std::vector<Plot>& plots, const std::filesystem::path& directory)
{
    std::ostringstream plants;
    std::ostringstream harvests;
    plants << "UUID,Name,Strain,Stage,Tent,Notes\n";
    harvests << "PlantUUID,HarvestDate,DryWeightG\n";
    for (const Plot& plot : plots)
    {
        plants << IdentifierOf(plot) << ',' << plot.Cultivar << " c" << plot.Column << 'r' << plot.Row << ','
               << plot.Cultivar << ',' << (plot.Yield.empty() ? "Archived" : "Veg") << ",Alliance,"
               << (plot.Replicate.empty() ? "" : "rep " + plot.Replicate) << '\n';
        if (!plot.Yield.empty())
            harvests << IdentifierOf(plot) << ",1989," << plot.Yield << '\n';
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
                         "Writes the plots of the table TRIAL as CSV files into DIRECTORY.\n";
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
