#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/commands.h"
#include "commands/print.h"
#include "commands/selection.h"
#include "commands/shown_uuids.h"
#include "journal/find_record.h"
#include "journal/last_care.h"
#include "record/elapsed.h"
#include "record/letters.h"
#include "terminal/console.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <set>

namespace
{

struct PlantFilter
{
    std::optional<std::string> Strain;
    std::optional<std::string> Tent;
    std::optional<std::string> Stage;
    bool All = false;
};

struct FilteredPlants
{
    std::vector<Plant> Shown;
    std::size_t Archived = 0; // how many plants are left out only because they are archived
};

FilteredPlants Filtered(const std::vector<Plant>& plants, const PlantFilter& filter)
{
    FilteredPlants filtered;
    for (const Plant& plant : plants)
        if (!Fits(filter.Strain, plant.Strain) || !Fits(filter.Tent, plant.Tent) ||
            !Fits(filter.Stage, PlantStageName(plant.Stage)))
            continue;
        else if (plant.Stage == PlantStage::Archived && !filter.All && !filter.Stage)
            ++filtered.Archived;
        else
            filtered.Shown.push_back(plant);
    return filtered;
}

// A plant that was harvested grows no older.
std::string AgeOf(const Plant& plant, const std::string& today)
{
    return AgeText(plant.SeedDate.empty() ? plant.CloneDate : plant.SeedDate,
                   plant.HarvestDate.empty() ? today : plant.HarvestDate);
}

// Whether every plant can be named by its name.
bool HaveUniqueNames(const std::vector<Plant>& plants)
{
    std::set<std::string> names = {""};
    return std::all_of(plants.begin(), plants.end(),
                       [&](const Plant& plant) { return names.insert(WithoutCase(plant.Name)).second; });
}

void PrintPlants(Session& session, const std::vector<Plant>& plants, const std::vector<Plant>& shown)
{
    const std::string today = PlantEventCurrentDate();
    const UUIDTexts uuids = ShownUUIDs(plants);
    const std::map<std::string, LastCare> lastCare = LastCareOfPlants(session);
    std::vector<Row> rows;
    for (const Plant& plant : shown)
    {
        const auto care = lastCare.find(plant.UUID);
        rows.push_back({plant.Name, plant.Strain, PlantStageName(plant.Stage), AgeOf(plant, today),
                        care == lastCare.end()
                            ? ""
                            : Joined({AgoText(care->second.Date, today), "(" + care->second.Action + ")"}, " "),
                        plant.Tent, uuids.at(plant.UUID)});
    }
    PrintTable(std::cout,
               {{"Name", WhenNarrow::Keep},
                {"Strain"},
                {"Stage"},
                {"Age"},
                {"Last care"},
                {"Tent"},
                {"UUID", HaveUniqueNames(plants) ? WhenNarrow::Drop : WhenNarrow::Keep}},
               rows);
}

void ListPlants(Session& session, const PlantFilter& filter)
{
    const std::vector<Plant> plants = AllPlants(session);
    const FilteredPlants filtered = Filtered(plants, filter);
    if (session.AsJSON)
        return PrintJSON(RecordsJSON(filtered.Shown));
    if (!filtered.Shown.empty())
        PrintPlants(session, plants, filtered.Shown);
    else if (plants.empty())
        std::cout << "No plants yet; `plantjournal plant add NAME` adds one.\n";
    else if (filtered.Archived == 0)
        std::cout << "No plants match the options; `plantjournal plant list --all` shows all plants.\n";
    // A script reads the output as a table, so the line would disturb it.
    if (filtered.Archived > 0 && (filtered.Shown.empty() || OutputIsTerminal()))
        std::cout << (filtered.Archived == 1
                          ? "1 archived plant is not shown; --all shows it.\n"
                          : std::to_string(filtered.Archived) + " archived plants are not shown; --all shows them.\n");
}

} // namespace

void AddPlantListCommand(CLI::App& plantGroup, Session& session)
{
    auto filter = std::make_shared<PlantFilter>();
    CLI::App& list = AddCommand(plantGroup, "list", "List the plants with their age and last care",
                                "plant list\nplant list --stage flower --tent South\nplant list --all --json",
                                [&session, filter] { ListPlants(session, *filter); });
    AddStageFlag(list, "list the plants in this stage", filter->Stage);
    AddFlag(list, {"--strain", "list the plants of this strain", "STRAIN"}, filter->Strain);
    AddFlag(list, {"--tent", "list the plants in this tent", "TENT"}, filter->Tent);
    AddSwitch(list, "--all", "list archived plants, too", filter->All);
}
