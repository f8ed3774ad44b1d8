#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/commands.h"
#include "commands/print.h"
#include "commands/record_lists.h"
#include "journal/find_record.h"
#include "terminal/printable.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <set>

namespace
{

using Children = std::multimap<std::string, Plant>; // by their mother's UUID

// What precedes a plant's line, and what precedes the lines of its children.
struct Lead
{
    std::string First;
    std::string Further;
};

// The harvest records, by the UUID of their plant.
using Harvests = std::map<std::string, HarvestRecord>;

Harvests AllHarvests(Session& session, const std::vector<Plant>& plants)
{
    Harvests harvests;
    for (const Plant& plant : plants)
        for (const HarvestRecord& harvest : RecordsOf<HarvestRecord>(session, plant))
            harvests.emplace(plant.UUID, harvest);
    return harvests;
}

// ": 52 g dry, quality 8 of 10, 2025-07-05"; empty without a harvest record.
std::string HarvestText(const Plant& plant, const Harvests& harvests)
{
    const auto found = harvests.find(plant.UUID);
    if (found == harvests.end())
        return {};
    const HarvestRecord& harvest = found->second;
    const auto entered = [](double number, const char* unit)
    { return number > 0 ? RoundedTextOf(&number) + unit : std::string(); };
    const std::string weight =
        harvest.DryWeightG > 0 ? entered(harvest.DryWeightG, " g dry") : entered(harvest.WetWeightG, " g wet");
    const std::string quality = entered(harvest.QualityRating, " of 10");
    const std::string text = Joined({weight, quality.empty() ? "" : "quality " + quality, harvest.HarvestDate}, ", ");
    return text.empty() ? "" : ": " + text;
}

// Draws a plant and, below it, its children. `shown` holds the plants that were drawn: a damaged file can have a cycle.
// NOLINTNEXTLINE(misc-no-recursion): a tree
void DrawTree(const Plant& plant, const Children& children, const Harvests& harvests, const Lead& lead,
              std::set<std::string>& shown)
{
    std::cout << lead.First << Printable(DisplayName(plant)) << (plant.Strain.empty() ? "" : " (")
              << Printable(plant.Strain) << (plant.Strain.empty() ? "" : ")") << ' ' << PlantStageName(plant.Stage)
              << Printable(HarvestText(plant, harvests)) << '\n';
    if (!shown.insert(plant.UUID).second)
        return;
    const auto [begin, end] = children.equal_range(plant.UUID);
    for (auto child = begin; child != end; ++child)
    {
        const bool last = std::next(child) == end;
        DrawTree(child->second, children, harvests,
                 {lead.Further + (last ? "└── " : "├── "), lead.Further + (last ? "    " : "│   ")}, shown);
    }
}

// NOLINTNEXTLINE(misc-no-recursion): a tree
JSON TreeJSON(const Plant& plant, const Children& children, const Harvests& harvests, std::set<std::string>& shown)
{
    JSON tree = RecordJSON(plant);
    const auto harvest = harvests.find(plant.UUID);
    tree.Add("Harvest", harvest == harvests.end() ? JSON::Null() : RecordJSON(harvest->second, plant));
    JSON clones = JSON::Array();
    if (shown.insert(plant.UUID).second)
        for (auto [child, end] = children.equal_range(plant.UUID); child != end; ++child)
            clones.Add(TreeJSON(child->second, children, harvests, shown));
    tree.Add("Clones", std::move(clones));
    return tree;
}

void ShowTree(Session& session, const std::string& named)
{
    const std::vector<Plant> plants = AllPlants(session);
    if (plants.empty() && named.empty() && !session.AsJSON)
        std::cout << "No plants yet; `plantjournal plant add NAME` adds one.\n";
    std::set<std::string> known;
    Children children;
    for (const Plant& plant : plants)
    {
        known.insert(plant.UUID);
        children.emplace(plant.MotherPlantUUID, plant);
    }
    std::vector<Plant> roots;
    if (!named.empty())
        roots.push_back(FindPlant(session, named));
    else
        std::copy_if(plants.begin(), plants.end(), std::back_inserter(roots),
                     [&](const Plant& plant) { return !known.contains(plant.MotherPlantUUID); });

    const Harvests harvests = AllHarvests(session, plants);
    std::set<std::string> shown;
    JSON trees = JSON::Array();
    const auto show = [&](const Plant& root)
    {
        if (session.AsJSON)
            trees.Add(TreeJSON(root, children, harvests, shown));
        else
            DrawTree(root, children, harvests, {}, shown);
    };
    for (const Plant& root : roots)
        show(root);
    if (named.empty()) // plants in a cycle and their descendants
        for (const Plant& plant : plants)
            if (!shown.contains(plant.UUID))
                show(plant);
    if (session.AsJSON)
        PrintJSON(trees);
}

} // namespace

void AddTreeCommand(CLI::App& plantGroup, Session& session)
{
    auto root = std::make_shared<Arguments>();
    AddPlantArgument(AddCommand(plantGroup, "tree", "Draw the lineage of one plant, or of all plants, with harvests",
                                "plant tree\nplant tree Basil", [&session, root] { ShowTree(session, root->Plant); }),
                     *root, Need::Optional);
}
