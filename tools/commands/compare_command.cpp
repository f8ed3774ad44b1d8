#include "commands/answer.h"
#include "commands/arguments.h"
#include "commands/commands.h"
#include "commands/plant_set.h"
#include "commands/selection.h"
#include "journal/find_record.h"
#include "record/letters.h"
#include "record/nearest.h"
#include "refusal.h"
#include "terminal/console.h"
#include "terminal/printable.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <sstream>

namespace
{

struct CompareRequest
{
    std::vector<std::string> Names;
    PlantSetOptions Plants; // limit each set
    bool WithoutArchived = false;
    bool AsCSV = false;
};

struct Figure
{
    const char* Label;
    const char* Field;
    const char* Unit;
    PlantFigures PlantComparison::*Of;
};

constexpr Figure Figures[] = {
    {"Days from sowing to harvest", "DaysFromSeed", "", &PlantComparison::DaysFromSeed},
    {"Days from cutting to harvest", "DaysFromClone", "", &PlantComparison::DaysFromClone},
    {"Days from transplanting", "DaysFromTransplant", "", &PlantComparison::DaysFromTransplant},
    {"Days from flip to harvest", "DaysFromFlip", "", &PlantComparison::DaysFromFlip},
    {"Wet weight", "WetWeightG", " g", &PlantComparison::WetWeightG},
    {"Dry weight", "DryWeightG", " g", &PlantComparison::DryWeightG},
    {"Loss on drying", "DryingLossPercent", " %", &PlantComparison::DryingLossPercent},
    {"Quality (of 10)", "Quality", "", &PlantComparison::Quality},
    {"Water and feed per dry gram", "MlPerGram", " ml", &PlantComparison::MlPerGram}};

std::string Tenths(double number)
{
    const double rounded = std::round(number * 10) / 10;
    return RoundedTextOf(&rounded);
}

// "83 (79 to 88, 6 plants)"; empty without a value.
std::string FiguresText(const PlantFigures& figures, const std::string& unit)
{
    if (figures.Number == 0)
        return {};
    const std::string range =
        figures.Least == figures.Most ? "" : Tenths(figures.Least) + " to " + Tenths(figures.Most) + ", ";
    return Tenths(figures.Mean) + unit + " (" + range + std::to_string(figures.Number) +
           (figures.Number == 1 ? " plant)" : " plants)");
}

bool Names(const Plant& plant, const std::string& name)
{
    constexpr std::size_t shortestPrefix = 4; // as FindPlant() requires
    return plant.UUID == name || WithoutCase(plant.Name) == WithoutCase(name) ||
           (name.size() >= shortestPrefix && plant.UUID.starts_with(name));
}

// The plants that a name in the command line stands for: those of a strain, else one plant, else several plants whose
// names are separated by commas. Throws Refusal where it stands for none.
PlantSet SetNamed(const std::string& name, const std::vector<Plant>& plants, const std::vector<Strain>& strains)
{
    PlantSet set;
    std::vector<std::string> known;
    const auto addStrain = [&](const std::string& strain)
    {
        known.push_back(strain);
        if (Fits(name, strain) && std::find(set.Strains.begin(), set.Strains.end(), strain) == set.Strains.end())
            set.Strains.push_back(strain);
    };
    for (const Strain& strain : strains)
        addStrain(strain.Name);
    for (const Plant& plant : plants)
        addStrain(plant.Strain);
    if (!set.Strains.empty())
        return set;
    const bool isPlant =
        std::any_of(plants.begin(), plants.end(), [&](const Plant& plant) { return Names(plant, name); });
    if (!isPlant && name.find(',') == std::string::npos)
    {
        for (const Plant& plant : plants)
            known.push_back(plant.Name);
        std::sort(known.begin(), known.end());
        known.erase(std::unique(known.begin(), known.end()), known.end());
        std::vector<std::string> nearest = Nearest(name, known);
        for (std::string& near : nearest)
            near = InQuotes(Printable(near));
        throw Refusal(InQuotes(Printable(name)) + ": no strain or plant has this name; " +
                      (nearest.empty() ? "`plantjournal strain list` shows all strains" : DidYouMean(nearest)));
    }
    std::istringstream parts(name);
    if (isPlant)
        set.UUIDs.push_back(FindPlant(plants, name).UUID);
    else
        for (std::string part; std::getline(parts, part, ',');)
            set.UUIDs.push_back(FindPlant(plants, part).UUID);
    return set;
}

std::vector<Row> RowsOf(const std::vector<PlantComparison>& sets)
{
    std::vector<Row> rows = {{"Plants"}, {"Harvested"}};
    for (const PlantComparison& set : sets)
    {
        rows[0].push_back(std::to_string(set.Plants));
        rows[1].push_back(std::to_string(set.Harvested));
    }
    for (const Figure& figure : Figures)
    {
        Row row = {figure.Label};
        bool any = false;
        for (const PlantComparison& set : sets)
        {
            row.push_back(FiguresText(set.*figure.Of, figure.Unit));
            any = any || !row.back().empty();
        }
        if (any)
            rows.push_back(row);
    }
    return rows;
}

// Prints a column for each set, or one set after another where the columns do not fit the terminal.
void PrintComparison(const std::vector<PlantComparison>& sets)
{
    const std::vector<Row> rows = RowsOf(sets);
    std::vector<Column> columns = {{"", WhenNarrow::Keep}};
    for (const PlantComparison& set : sets)
        columns.push_back({Printable(set.Name), WhenNarrow::Keep});
    std::size_t width = 0;
    for (std::size_t i = 0; i < columns.size(); ++i)
    {
        std::size_t widest = Width(columns[i].Heading);
        for (const Row& row : rows)
            widest = std::max(widest, Width(row[i]));
        width += widest + (i == 0 ? 0 : 2);
    }
    if (!OutputIsTerminal() || width <= TerminalWidth())
        return PrintTable(std::cout, columns, rows);
    for (std::size_t i = 1; i < columns.size(); ++i)
    {
        std::vector<Property> properties = {{"Name", sets[i - 1].Name}};
        for (const Row& row : rows)
            properties.push_back({row[0], row[i]});
        std::cout << (i == 1 ? "" : "\n");
        PrintDescription(std::cout, properties);
    }
}

std::vector<AnswerField<PlantComparison>> ComparisonFields()
{
    std::vector<AnswerField<PlantComparison>> fields = {
        {"Name", [](const PlantComparison& set) { return Exact(set.Name); }},
        {"Plants", [](const PlantComparison& set) { return Exact(set.Plants); }},
        {"Harvested", [](const PlantComparison& set) { return Exact(set.Harvested); }}};
    for (const Figure& figure : Figures)
        AddFigures(fields, figure.Field, figure.Of);
    return fields;
}

std::vector<PlantComparedSet> SetsOf(Session& session, const std::vector<Plant>& plants,
                                     const std::vector<Strain>& strains, const CompareRequest& request)
{
    const PlantSet limits = request.WithoutArchived ? ListedPlantSet(session, plants, request.Plants)
                                                    : PlantSetOf(session, plants, request.Plants);
    const std::string to = LastDate(request.Plants);
    std::vector<PlantComparedSet> sets;
    for (const std::string& name : request.Names)
    {
        PlantComparedSet& set =
            sets.emplace_back(PlantComparedSet{name, SetNamed(name, plants, strains), FirstDate(request.Plants), to});
        if (set.Plants.Strains.size() == 1)
            set.Name = set.Plants.Strains.front();
        set.Plants.Tents = limits.Tents;
        set.Plants.Stages = limits.Stages;
    }
    return sets;
}

// Prints how many archived plants count, on a terminal: in a script the line would disturb the table.
void PrintArchivedCounted(const std::vector<Plant>& plants, const std::vector<PlantComparedSet>& sets)
{
    const auto isCounted = [&](const Plant& plant)
    {
        return plant.Stage == PlantStage::Archived &&
               std::any_of(sets.begin(), sets.end(), [&](const auto& set) { return IsIn(set.Plants, plant); });
    };
    const auto counted = std::count_if(plants.begin(), plants.end(), isCounted);
    if (counted > 0 && OutputIsTerminal())
        std::cout << (counted == 1 ? "1 archived plant is included; --without-archived leaves it out.\n"
                                   : std::to_string(counted) +
                                         " archived plants are included; --without-archived leaves them out.\n");
}

void Compare(Session& session, const CompareRequest& request)
{
    const bool forPrograms = IsForPrograms(session, request.AsCSV);
    const std::vector<Plant> plants = AllPlants(session);
    const std::vector<Strain> strains = AllStrains(session);
    if (plants.empty() && strains.empty() && !forPrograms)
    {
        std::cout << NoPlantsYet;
        return;
    }
    const std::vector<PlantComparedSet> sets = SetsOf(session, plants, strains, request);
    std::vector<PlantComparison> compared;
    session.RequireAnswer(QueryPlantComparison(session.ReadDatabase(), sets, compared));
    if (forPrograms)
        return PrintForPrograms(session, ComparisonFields(), compared);
    PrintComparison(compared);
    if (request.Plants.Stage == std::nullopt && !request.Plants.From && !request.Plants.To)
        PrintArchivedCounted(plants, sets);
}

} // namespace

void AddCompareCommand(CLI::App& program, Session& session)
{
    auto request = std::make_shared<CompareRequest>();
    CLI::App& compare = AddCommand(program, "compare", "Compare the harvests of strains, or of plants",
                                   "compare Genovese Cayenne\ncompare \"Basil 1,Basil 2\" Chili\n"
                                   "compare Genovese Cayenne --from 2025-01 --to 2025-06",
                                   [&session, request] { Compare(session, *request); });
    AddArguments(compare, "STRAIN-OR-PLANT",
                 "strains, plants, or several plants separated by commas; archived plants are included",
                 request->Names);
    AddFlag(compare, {"--tent", "only plants in this tent", "TENT"}, request->Plants.Tent);
    AddStageFlag(compare, "only plants in this stage", request->Plants.Stage);
    AddSwitch(compare, "--without-archived", "leave out archived plants", request->WithoutArchived);
    AddDateFlag(compare, "--from", "only plants harvested on this date or later", request->Plants.From);
    AddDateFlag(compare, "--to", "only plants harvested on this date or before", request->Plants.To);
    AddCSV(compare, request->AsCSV);
}
