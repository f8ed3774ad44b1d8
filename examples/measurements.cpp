#include "measurements.h"

#include "record/decimal.h"

#include <cctype>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <initializer_list>
#include <iomanip>
#include <limits>
#include <sstream>
#include <system_error>

namespace
{

/// One line of a data file.
struct Row
{
    std::string Place; ///< `file:line`, for messages.
    std::string Date;
    std::vector<std::string> Cells;
};

/// A column and the range of its values. Positions count from 1. Columns are found by position, because the headings of
/// one file are incomplete; the name is used in messages only.
struct Column
{
    std::size_t Position;
    const char* Name;
    double Lowest;
    double Highest;
};

constexpr Column Irrigation = {6, "Irr", 0, 1000};
constexpr Column Drain = {7, "Drain", 0, 1000};
constexpr Column IrrigationPH = {2, "irr_PH", 0, 14};
constexpr Column IrrigationEC = {3, "irr_EC", 0, 100};
constexpr Column DrainPH = {21, "drain_PH", 0, 14};
constexpr Column DrainEC = {22, "drain_EC", 0, 100};
constexpr Column ClassA = {2, "ProdA", 0, 100};
constexpr Column ClassB = {3, "ProdB", 0, 100};
constexpr Column Flavour = {2, "Flavour", 0, 100};
constexpr Column SolubleSolids = {3, "TSS", 0, 100};
constexpr Column DryMatter = {8, "DMC_fruit", 0, 100};
constexpr Column StemGrowth = {2, "Stem_elong", 0, 1000};
constexpr Column StemThickness = {3, "Stem_thick", 0, 1000};
constexpr Column Trusses = {4, "Cum_trusses", 0, 1000};
constexpr Column PlantDensity = {6, "plant_dens", 0.01, 1000};

/// Returns whether the whole of `text` was read.
bool IsWhole(const std::string& text, const std::from_chars_result& result)
{
    return result.ec == std::errc() && result.ptr == &text[text.size()];
}

/// Parses the whole of `text` as a number, independent of the locale.
bool ParseNumber(const std::string& text, double& out)
{
    return IsWhole(text, DecimalFromChars(text.data(), &text[text.size()], out));
}

bool ParseNumber(const std::string& text, int& out)
{
    return IsWhole(text, std::from_chars(text.data(), &text[text.size()], out));
}

/// Returns the number in a cell, or NaN if the measurement is missing.
double NumberOrMissing(const Row& row, const Column& column)
{
    const std::string& text = row.Cells.at(column.Position - 1);
    if (text == "NaN" || text == "nan")
        return std::numeric_limits<double>::quiet_NaN();
    const std::string cell = row.Place + ": " + column.Name + " \"" + text + "\" is ";
    double number = 0;
    Require(ParseNumber(text, number) && std::isfinite(number), cell + "not a number");
    Require(number >= column.Lowest && number <= column.Highest, cell + "out of range");
    return number;
}

double Number(const Row& row, const Column& column)
{
    const double number = NumberOrMissing(row, column);
    Require(!std::isnan(number), row.Place + ": " + column.Name + " is missing; a number is required");
    return number;
}

/// A measurement within a text: `Before`, the value as it is written in the file, `After`.
struct Phrase
{
    const char* Before;
    const Column& Source;
    const char* After;
};

/// Joins the measurements of a row into a text such as "stem growth 3.6 cm, trusses 2". Leaves out missing ones.
std::string Join(const Row& row, const char* separator, std::initializer_list<Phrase> phrases)
{
    std::string text;
    for (const Phrase& phrase : phrases)
    {
        if (!std::isnan(NumberOrMissing(row, phrase.Source)))
            text += (text.empty() ? "" : separator) + (phrase.Before + row.Cells.at(phrase.Source.Position - 1)) +
                    phrase.After;
    }
    return text;
}

std::string Capitalized(std::string text)
{
    if (!text.empty())
        text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    return text;
}

/// Converts a spreadsheet's day number to a date: day n is 1899-12-30 plus n days.
/// The algorithm is from Howard Hinnant, "chrono-Compatible Low-Level Date Algorithms" (public domain).
std::string DateOfDay(int day)
{
    const int sinceMarch0 = day + 693899; // days since 0000-03-01: a leap day is the last of its year
    const int era = sinceMarch0 / 146097; // 400 years each
    const int dayOfEra = sinceMarch0 % 146097;
    const int yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int monthFromMarch = (5 * dayOfYear + 2) / 153;
    const int dayOfMonth = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
    const int month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    const int year = era * 400 + yearOfEra + (month <= 2 ? 1 : 0);

    std::ostringstream date;
    date << std::setfill('0') << std::setw(4) << year << '-' << std::setw(2) << month << '-' << std::setw(2)
         << dayOfMonth;
    return date.str();
}

/// Splits a line into its cells and trims them.
std::vector<std::string> Cells(const std::string& line)
{
    constexpr const char* blanks = " \t\r";
    std::vector<std::string> cells;
    std::istringstream stream(line + ","); // keeps an empty last cell
    for (std::string cell; std::getline(stream, cell, ',');)
    {
        cell.erase(cell.find_last_not_of(blanks) + 1);
        cell.erase(0, cell.find_first_not_of(blanks));
        cells.push_back(cell);
    }
    return cells;
}

/// Reads the rows below the heading. Drops empty cells after the last column, because one file has them.
std::vector<Row> ReadRows(const std::string& path, std::size_t columnCount)
{
    const std::string byteOrderMark = "\xEF\xBB\xBF"; // one file begins with it
    constexpr int firstDay = 43466;                   // 2019-01-01
    constexpr int lastDay = 44196;                    // 2020-12-31

    errno = 0;
    std::ifstream file(path);
    Require(file.is_open(), path + ": cannot be opened: " + std::generic_category().message(errno));

    std::string line;
    std::getline(file, line);
    if (line.rfind(byteOrderMark, 0) == 0)
        line.erase(0, byteOrderMark.size());
    const std::string heading = Cells(line).front();
    Require(heading == "%Time" || heading == "%time", path + ":1: expected headings that begin with %Time");

    std::vector<Row> rows;
    for (int lineNumber = 2; std::getline(file, line); ++lineNumber)
    {
        Row row = {path + ":" + std::to_string(lineNumber), "", Cells(line)};
        while (row.Cells.size() > columnCount && row.Cells.back().empty())
            row.Cells.pop_back();
        Require(row.Cells.size() == columnCount, row.Place + ": expected " + std::to_string(columnCount) +
                                                     " columns, found " + std::to_string(row.Cells.size()));
        int day = 0;
        Require(ParseNumber(row.Cells.front(), day) && day >= firstDay && day <= lastDay,
                row.Place + ": \"" + row.Cells.front() + "\" is not a day number of 2019 or 2020");
        row.Date = DateOfDay(day);
        rows.push_back(row);
    }
    Require(!file.bad(), path + ": read error");
    Require(!rows.empty(), path + ":2: expected a row of data");
    return rows;
}

/// Returns one care entry for each laboratory sample, with what was fed from that day on.
std::vector<PlantCareEntry> ReadSamples(const std::vector<Row>& analyses)
{
    std::vector<PlantCareEntry> samples;
    for (const Row& row : analyses)
    {
        PlantCareEntry sample;
        sample.CareDate = row.Date;
        sample.Action = PlantCareAction::Feed;
        sample.Product = "Nutrient solution";
        sample.EC = Number(row, IrrigationEC);
        sample.PH = Number(row, IrrigationPH);
        sample.Notes = Join(row, " ", {{"EC ", DrainEC, ""}, {"pH ", DrainPH, ""}});
        if (!sample.Notes.empty())
            sample.Notes.insert(0, "drain ");
        samples.push_back(sample);
    }
    return samples;
}

/// Returns one care entry for each day with irrigation. Days before the first sample count as watering; later days feed
/// what the latest sample shows. `density` is in plants per square metre.
std::vector<PlantCareEntry> ReadCare(const std::vector<Row>& days, const std::vector<Row>& analyses, double density)
{
    const std::vector<PlantCareEntry> samples = ReadSamples(analyses);
    std::vector<PlantCareEntry> care;
    for (const Row& row : days)
    {
        PlantCareEntry entry;
        for (const PlantCareEntry& sample : samples)
        {
            if (sample.CareDate <= row.Date && sample.CareDate >= entry.CareDate)
                entry = sample;
        }
        if (entry.CareDate != row.Date)
            entry.Notes.clear();
        entry.CareDate = row.Date;
        entry.AmountMl = Number(row, Irrigation) * 1000 / density;
        entry.RunoffMl = Number(row, Drain) * 1000 / density;
        if (entry.AmountMl > 0)
            care.push_back(entry);
    }
    return care;
}

/// Returns one event for each picking.
std::vector<PlantEvent> ReadPickings(const std::vector<Row>& pickings)
{
    std::vector<PlantEvent> events;
    for (const Row& row : pickings)
    {
        PlantEvent event;
        event.EventDate = row.Date;
        event.Type = PlantEventType::Harvest;
        event.Details = Capitalized(Join(row, ", ", {{"class A ", ClassA, " kg/m2"}, {"class B ", ClassB, " kg/m2"}}));
        events.push_back(event);
    }
    return events;
}

/// Appends a journal entry unless its text is empty.
void Append(std::vector<PlantJournalEntry>& journal, const Row& row, PlantJournalType type, const std::string& details)
{
    if (details.empty())
        return;
    PlantJournalEntry& entry = journal.emplace_back();
    entry.EntryDate = row.Date;
    entry.Type = type;
    entry.Details = Capitalized(details);
}

/// Returns one journal entry for each week and each tasting with a measurement.
std::vector<PlantJournalEntry> ReadJournal(const std::vector<Row>& weeks, const std::vector<Row>& tastings)
{
    std::vector<PlantJournalEntry> journal;
    for (const Row& row : weeks)
        Append(journal, row, PlantJournalType::Observation,
               Join(row, ", ",
                    {{"stem growth ", StemGrowth, " cm"},
                     {"thickness ", StemThickness, " mm"},
                     {"trusses ", Trusses, ""}}));
    for (const Row& row : tastings)
        Append(
            journal, row, PlantJournalType::Milestone,
            Join(row, ", ", {{"flavour ", Flavour, ""}, {"Brix ", SolubleSolids, ""}, {"dry matter ", DryMatter, ""}}));
    return journal;
}

/// Returns the season's yield of one plant. Dry weight is the wet weight times the mean dry matter content.
HarvestRecord ReadHarvest(const std::vector<Row>& pickings, const std::vector<Row>& tastings, double density)
{
    double picked = 0; // kilograms per square metre
    for (const Row& row : pickings)
        picked += Number(row, ClassA) + Number(row, ClassB);

    double flavours = 0;
    double dryMatters = 0;
    std::size_t dryMatterCount = 0;
    for (const Row& row : tastings)
    {
        flavours += Number(row, Flavour);
        if (const double percent = NumberOrMissing(row, DryMatter); !std::isnan(percent))
        {
            dryMatters += percent;
            ++dryMatterCount;
        }
    }
    Require(dryMatterCount > 0,
            tastings.front().Place + ": DMC_fruit is missing in every row; at least one number is required");

    HarvestRecord harvest;
    harvest.HarvestDate = pickings.back().Date;
    harvest.WetWeightG = picked * 1000 / density;
    harvest.DryWeightG = harvest.WetWeightG * (dryMatters / static_cast<double>(dryMatterCount)) / 100;
    harvest.QualityRating = flavours / static_cast<double>(tastings.size()) / 10;
    return harvest;
}

Compartment ReadCompartment(const std::string& dataDirectory, const std::string& name)
{
    const std::string folder = dataDirectory + "/" + name + "/";
    const std::vector<Row> resources = ReadRows(folder + "Resources.csv", 7);
    const std::vector<Row> analyses = ReadRows(folder + "LabAnalysis.csv", 39);
    const std::vector<Row> pickings = ReadRows(folder + "Production.csv", 9);
    const std::vector<Row> tastings = ReadRows(folder + "TomQuality.csv", 8);
    const std::vector<Row> weeks = ReadRows(folder + "CropParameters.csv", 6);
    const double density = Number(weeks.front(), PlantDensity);
    for (const Row& row : weeks)
        Require(Number(row, PlantDensity) == density, row.Place + ": plant_dens differs from the first row");

    Compartment measured;
    measured.Subject.Name = name;
    measured.Subject.Strain = "Axiany";
    measured.Subject.Tent = "Bleiswijk";
    measured.Subject.Medium = "slab";
    measured.Subject.TransplantDate = resources.front().Date;
    measured.Events = ReadPickings(pickings);
    measured.Care = ReadCare(resources, analyses, density);
    measured.Journal = ReadJournal(weeks, tastings);
    measured.Harvest = ReadHarvest(pickings, tastings, density);
    return measured;
}

} // namespace

void Require(bool condition, const std::string& problem)
{
    if (!condition)
        throw Problem(problem);
}

std::vector<Compartment> ReadMeasurements(const std::string& dataDirectory)
{
    std::vector<Compartment> season;
    for (const char* name : {"AICU", "Automatoes", "Digilog", "IUACAAS", "Reference", "TheAutomators"})
        season.push_back(ReadCompartment(dataDirectory, name));
    return season;
}
