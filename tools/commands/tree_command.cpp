#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/commands.h"
#include "commands/print.h"
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

// Draws a plant and, below it, its children. `shown` holds the plants that were drawn: a damaged file can have a cycle.
// NOLINTNEXTLINE(misc-no-recursion): a tree
void DrawTree(const Plant& plant, const Children& children, const Lead& lead, std::set<std::string>& shown)
{
    std::cout << lead.First << Printable(DisplayName(plant)) << (plant.Strain.empty() ? "" : " (")
              << Printable(plant.Strain) << (plant.Strain.empty() ? "" : ")") << ' ' << PlantStageName(plant.Stage)
              << '\n';
    if (!shown.insert(plant.UUID).second)
        return;
    const auto [begin, end] = children.equal_range(plant.UUID);
    for (auto child = begin; child != end; ++child)
    {
        const bool last = std::next(child) == end;
        DrawTree(child->second, children,
                 {lead.Further + (last ? "└── " : "├── "), lead.Further + (last ? "    " : "│   ")}, shown);
    }
}

// NOLINTNEXTLINE(misc-no-recursion): a tree
JSON TreeJSON(const Plant& plant, const Children& children, std::set<std::string>& shown)
{
    JSON tree = RecordJSON(plant);
    JSON clones = JSON::Array();
    if (shown.insert(plant.UUID).second)
        for (auto [child, end] = children.equal_range(plant.UUID); child != end; ++child)
            clones.Add(TreeJSON(child->second, children, shown));
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

    std::set<std::string> shown;
    JSON trees = JSON::Array();
    const auto show = [&](const Plant& root)
    {
        if (session.AsJSON)
            trees.Add(TreeJSON(root, children, shown));
        else
            DrawTree(root, children, {}, shown);
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
    AddPlantArgument(AddCommand(plantGroup, "tree", "Draw the lineage of one plant, or of all plants",
                                "plant tree\nplant tree Basil", [&session, root] { ShowTree(session, root->Plant); }),
                     *root, Need::Optional);
}
