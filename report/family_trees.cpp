#include "family_trees.h"

#include "read.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace plant_report
{

namespace
{

PlantRelative RelativeOf(PlantDatabase& database, const Plant& plant)
{
    PlantRelative relative;
    relative.UUID = plant.UUID;
    relative.Name = plant.Name;
    relative.Strain = plant.Strain;
    relative.MotherPlantUUID = plant.MotherPlantUUID;
    relative.Stage = plant.Stage;
    relative.Harvest = ReadHarvestRecord(database, plant.UUID);
    return relative;
}

// The plant with its ancestors, the oldest first, and its descendants. They have generations from 0.
std::vector<PlantRelative> ReadFamilyOf(PlantDatabase& database, const Plant& plant)
{
    PlantLineage lineage;
    RequireAnswer(QueryPlantLineage(database, plant.UUID, lineage));
    std::vector<PlantRelative> family(lineage.Ancestors.rbegin(), lineage.Ancestors.rend());
    const auto generation = static_cast<std::int64_t>(family.size());
    family.push_back(RelativeOf(database, plant));
    family.insert(family.end(), lineage.Descendants.begin(), lineage.Descendants.end());
    for (PlantRelative& relative : family)
        relative.Generation += generation;
    return family.size() == 1 ? std::vector<PlantRelative>() : family;
}

} // namespace

std::vector<PlantRelative> ReadFamilyTrees(PlantDatabase& database, const std::vector<Plant>& plants)
{
    if (plants.size() == 1)
        return ReadFamilyOf(database, plants.front());
    std::map<std::string, const Plant*> known;
    for (const Plant& plant : plants)
        known.emplace(plant.UUID, &plant);
    std::map<std::string, std::vector<const Plant*>> clones; // by their mother's UUID; empty for the roots
    for (const Plant& plant : plants)
        clones[known.count(plant.MotherPlantUUID) != 0 ? plant.MotherPlantUUID : std::string()].push_back(&plant);
    for (auto& [mother, siblings] : clones)
        std::sort(siblings.begin(), siblings.end(),
                  [](const Plant* a, const Plant* b) { return std::tie(a->Name, a->ID) > std::tie(b->Name, b->ID); });

    std::vector<PlantRelative> trees;
    std::vector<std::pair<const Plant*, std::int64_t>> waiting; // plants and their generations, the next one last
    for (const Plant* root : clones[{}])
        if (clones.count(root->UUID) != 0)
            waiting.emplace_back(root, 0);
    while (!waiting.empty())
    {
        const auto [plant, generation] = waiting.back();
        waiting.pop_back();
        trees.push_back(RelativeOf(database, *plant));
        trees.back().Generation = generation;
        if (const auto found = clones.find(plant->UUID); found != clones.end())
            for (const Plant* clone : found->second)
                waiting.emplace_back(clone, generation + 1);
    }
    return trees;
}

} // namespace plant_report
