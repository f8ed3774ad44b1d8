#include "commands/answer.h"
#include "commands/arguments.h"
#include "commands/commands.h"
#include "commands/plant_set.h"
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

struct TreeRequest
{
    Arguments Root;
    PlantSetOptions Plants;
    bool AsCSV = false;
};

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

// The plants that are shown, in the order of the lists.
struct Family
{
    std::vector<Plant> Plants;
    Children Clones;
    Harvests Harvested;
    std::vector<Plant> Ancestors; // of the plant that was named, its mother first
};

// What the tree shows of a plant.
void PrintPlant(const Plant& plant, const Family& family, const std::string& lead)
{
    std::cout << lead << Printable(DisplayName(plant)) << (plant.Strain.empty() ? "" : " (") << Printable(plant.Strain)
              << (plant.Strain.empty() ? "" : ")") << ' ' << PlantStageName(plant.Stage)
              << Printable(HarvestText(plant, family.Harvested)) << '\n';
}

// Draws a plant and, below it, its children. `shown` holds the plants that were drawn: a damaged file can have a cycle.
// NOLINTNEXTLINE(misc-no-recursion): a tree
void DrawTree(const Plant& plant, const Family& family, const Lead& lead, std::set<std::string>& shown)
{
    PrintPlant(plant, family, lead.First);
    if (!shown.insert(plant.UUID).second)
        return;
    const auto [begin, end] = family.Clones.equal_range(plant.UUID);
    for (auto child = begin; child != end; ++child)
    {
        const bool last = std::next(child) == end;
        DrawTree(child->second, family,
                 {lead.Further + (last ? "└── " : "├── "), lead.Further + (last ? "    " : "│   ")}, shown);
    }
}

// Draws the ancestors of a plant, each below its mother and without its other clones. Returns where the plant follows.
Lead DrawAncestors(const Family& family, std::set<std::string>& shown)
{
    Lead lead;
    for (auto ancestor = family.Ancestors.rbegin(); ancestor != family.Ancestors.rend(); ++ancestor)
    {
        PrintPlant(*ancestor, family, lead.First);
        lead = {lead.Further + "└── ", lead.Further + "    "};
        shown.insert(ancestor->UUID);
    }
    return lead;
}

JSON PlantJSON(const Plant& plant, const Family& family)
{
    JSON json = RecordJSON(plant);
    const auto harvest = family.Harvested.find(plant.UUID);
    json.Add("Harvest", harvest == family.Harvested.end() ? JSON::Null() : RecordJSON(harvest->second, plant));
    return json;
}

// NOLINTNEXTLINE(misc-no-recursion): a tree
JSON TreeJSON(const Plant& plant, const Family& family, std::set<std::string>& shown)
{
    JSON tree = PlantJSON(plant, family);
    JSON clones = JSON::Array();
    if (shown.insert(plant.UUID).second)
        for (auto [child, end] = family.Clones.equal_range(plant.UUID); child != end; ++child)
            clones.Add(TreeJSON(child->second, family, shown));
    tree.Add("Clones", std::move(clones));
    return tree;
}

PlantRelative RelativeOf(const Plant& plant, const Family& family, std::int64_t generation)
{
    PlantRelative relative;
    relative.UUID = plant.UUID;
    relative.Name = plant.Name;
    relative.Strain = plant.Strain;
    relative.MotherPlantUUID = plant.MotherPlantUUID;
    relative.Stage = plant.Stage;
    relative.Generation = generation;
    if (const auto harvest = family.Harvested.find(plant.UUID); harvest != family.Harvested.end())
        relative.Harvest = harvest->second;
    return relative;
}

// NOLINTNEXTLINE(misc-no-recursion): a tree
void AddRelatives(const Plant& plant, const Family& family, std::int64_t generation, std::set<std::string>& shown,
                  std::vector<PlantRelative>& relatives)
{
    if (!shown.insert(plant.UUID).second)
        return;
    relatives.push_back(RelativeOf(plant, family, generation));
    for (auto [child, end] = family.Clones.equal_range(plant.UUID); child != end; ++child)
        AddRelatives(child->second, family, generation + 1, shown, relatives);
}

std::vector<AnswerField<PlantRelative>> RelativeFields()
{
    const auto number = [](double HarvestRecord::*of) {
        return [of](const PlantRelative& plant)
        { return plant.Harvest ? Exact((*plant.Harvest).*of) : ExactlyNothing(); };
    };
    return {{"PlantUUID", [](const PlantRelative& plant) { return Exact(plant.UUID); }},
            {"Plant", [](const PlantRelative& plant) { return Exact(plant.Name); }},
            {"Strain", [](const PlantRelative& plant) { return Exact(plant.Strain); }},
            {"Stage", [](const PlantRelative& plant) { return Exact(TextOf(&plant.Stage)); }},
            {"MotherPlantUUID", [](const PlantRelative& plant) { return Exact(plant.MotherPlantUUID); }},
            {"Generation", [](const PlantRelative& plant) { return Exact(plant.Generation); }},
            {"HarvestDate", [](const PlantRelative& plant)
             { return Exact(plant.Harvest ? plant.Harvest->HarvestDate : std::string()); }},
            {"WetWeightG", number(&HarvestRecord::WetWeightG)},
            {"DryWeightG", number(&HarvestRecord::DryWeightG)},
            {"QualityRating", number(&HarvestRecord::QualityRating)}};
}

// The plants that the options select, and the plant that is named. A plant whose mother is not among them is a root.
Family FamilyOf(Session& session, const std::vector<Plant>& plants, const TreeRequest& request, const Plant& named)
{
    const PlantSet set = PlantSetOf(session, plants, request.Plants);
    Family family;
    std::map<std::string, Plant> byUUID;
    for (const Plant& plant : plants)
        if (IsIn(set, plant) || plant.UUID == named.UUID)
        {
            family.Plants.push_back(plant);
            family.Clones.emplace(plant.MotherPlantUUID, plant);
            byUUID.emplace(plant.UUID, plant);
        }
    family.Harvested = AllHarvests(session, family.Plants);
    PlantLineage lineage;
    session.RequireAnswer(QueryPlantLineage(session.ReadDatabase(), named.UUID, lineage));
    for (const PlantRelative& ancestor : lineage.Ancestors)
        if (const auto shown = byUUID.find(ancestor.UUID); shown != byUUID.end())
            family.Ancestors.push_back(shown->second);
    return family;
}

// The plants at which the trees begin: the one that is named, or those without a mother, then those of cycles.
std::vector<Plant> RootsOf(const Family& family, const Plant& named)
{
    if (!named.UUID.empty())
        return {named};
    std::set<std::string> known;
    for (const Plant& plant : family.Plants)
        known.insert(plant.UUID);
    std::vector<Plant> roots;
    std::copy_if(family.Plants.begin(), family.Plants.end(), std::back_inserter(roots),
                 [&](const Plant& plant) { return !known.contains(plant.MotherPlantUUID); });
    std::set<std::string> shown;
    std::vector<PlantRelative> ignored;
    for (const Plant& root : roots)
        AddRelatives(root, family, 0, shown, ignored);
    for (const Plant& plant : family.Plants)
        if (!shown.contains(plant.UUID))
        {
            roots.push_back(plant);
            AddRelatives(plant, family, 0, shown, ignored);
        }
    return roots;
}

void PrintTreesAsJSON(const Family& family, const std::vector<Plant>& roots, bool isNamed)
{
    std::set<std::string> shown;
    JSON trees = JSON::Array();
    for (const Plant& root : roots)
    {
        JSON tree = TreeJSON(root, family, shown);
        JSON ancestors = JSON::Array();
        for (const Plant& ancestor : family.Ancestors)
            ancestors.Add(PlantJSON(ancestor, family));
        if (isNamed)
            tree.Add("Ancestors", std::move(ancestors));
        trees.Add(std::move(tree));
    }
    PrintJSON(trees);
}

void PrintTreesAsCSV(const Session& session, const Family& family, const std::vector<Plant>& roots)
{
    std::set<std::string> shown;
    std::vector<PlantRelative> relatives;
    for (const Plant& ancestor : family.Ancestors)
    {
        relatives.insert(relatives.begin(),
                         RelativeOf(ancestor, family, -1 - static_cast<std::int64_t>(relatives.size())));
        shown.insert(ancestor.UUID);
    }
    for (const Plant& root : roots)
        AddRelatives(root, family, 0, shown, relatives);
    PrintForPrograms(session, RelativeFields(), relatives);
}

void ShowTree(Session& session, const TreeRequest& request)
{
    const bool forPrograms = IsForPrograms(session, request.AsCSV);
    const std::vector<Plant> plants = AllPlants(session);
    const bool isNamed = !request.Root.Plant.empty();
    const Plant named = isNamed ? FindPlant(plants, request.Root.Plant) : Plant{};
    const Family family = FamilyOf(session, plants, request, named);
    const std::vector<Plant> roots = RootsOf(family, named);
    if (session.AsJSON)
        return PrintTreesAsJSON(family, roots, isNamed);
    if (forPrograms)
        return PrintTreesAsCSV(session, family, roots);
    if (plants.empty())
        std::cout << NoPlantsYet;
    else if (roots.empty())
        std::cout << "No plants match the options; `plantjournal plant tree` shows all plants.\n";
    std::set<std::string> shown;
    const Lead lead = DrawAncestors(family, shown);
    for (const Plant& root : roots)
        DrawTree(root, family, lead, shown);
}

} // namespace

void AddTreeCommand(CLI::App& plantGroup, Session& session)
{
    auto request = std::make_shared<TreeRequest>();
    CLI::App& tree = AddCommand(plantGroup, "tree", "Draw the lineage of one plant, or of all plants, with harvests",
                                "plant tree\nplant tree Basil\nplant tree --strain Genovese --csv",
                                [&session, request] { ShowTree(session, *request); });
    AddPlantArgument(tree, request->Root, Need::Optional);
    AddPlantOptions(tree, request->Plants);
    AddCSV(tree, request->AsCSV);
}
