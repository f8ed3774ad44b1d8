#include "harvests.h"
#include "letters.h"
#include "plants.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace plant_query
{

namespace
{

// The mothers and clones of all plants.
class Family
{
  public:
    explicit Family(sqlite3* connection);

    PlantLineage Of(const std::string& plantUUID);

  private:
    std::vector<PlantRelative> Ancestors(const SetPlant& plant);
    // Leaves out the ancestors, of which some are descendants, too, where there is a cycle.
    std::vector<PlantRelative> Descendants(const SetPlant& plant);
    PlantRelative Relative(const SetPlant& plant, std::int64_t generation);

    std::vector<SetPlant> Plants; // sorted by name
    std::unordered_map<std::string, const SetPlant*> PlantsByUUID;
    std::unordered_map<std::string, std::vector<const SetPlant*>> Clones; // by the UUID of the mother
    std::unordered_set<const SetPlant*> PlantAndAncestors;
    HarvestReader Harvests;
};

Family::Family(sqlite3* connection) : Plants(PlantsOf(connection, {})), Harvests(connection)
{
    std::sort(Plants.begin(), Plants.end(),
              [](const SetPlant& left, const SetPlant& right) {
                  return std::make_pair(WithoutCase(left.Name), left.ID) <
                         std::make_pair(WithoutCase(right.Name), right.ID);
              });
    for (const SetPlant& plant : Plants)
    {
        PlantsByUUID.emplace(plant.UUID, &plant);
        if (!plant.MotherUUID.empty())
            Clones[plant.MotherUUID].push_back(&plant);
    }
}

PlantLineage Family::Of(const std::string& plantUUID)
{
    PlantLineage lineage;
    const auto plant = PlantsByUUID.find(plantUUID);
    if (plant == PlantsByUUID.end())
        return lineage;
    PlantAndAncestors = {plant->second};
    lineage.Ancestors = Ancestors(*plant->second);
    lineage.Descendants = Descendants(*plant->second);
    return lineage;
}

std::vector<PlantRelative> Family::Ancestors(const SetPlant& plant)
{
    std::vector<PlantRelative> ancestors;
    auto mother = PlantsByUUID.find(plant.MotherUUID);
    while (mother != PlantsByUUID.end() && PlantAndAncestors.insert(mother->second).second)
    {
        ancestors.push_back(Relative(*mother->second, -1 - static_cast<std::int64_t>(ancestors.size())));
        mother = PlantsByUUID.find(mother->second->MotherUUID);
    }
    return ancestors;
}

std::vector<PlantRelative> Family::Descendants(const SetPlant& plant)
{
    std::vector<PlantRelative> descendants;
    std::unordered_set<const SetPlant*> visited = {&plant};
    std::vector<std::pair<const SetPlant*, std::int64_t>> next; // the last one is listed first
    const auto addClones = [&](const SetPlant& mother, std::int64_t generation)
    {
        const auto clones = Clones.find(mother.UUID);
        if (clones == Clones.end())
            return;
        for (auto clone = clones->second.rbegin(); clone != clones->second.rend(); ++clone)
            next.emplace_back(*clone, generation);
    };
    addClones(plant, 1);
    while (!next.empty())
    {
        const auto [descendant, generation] = next.back();
        next.pop_back();
        if (!visited.insert(descendant).second)
            continue;
        if (PlantAndAncestors.count(descendant) == 0)
            descendants.push_back(Relative(*descendant, generation));
        addClones(*descendant, generation + 1);
    }
    return descendants;
}

PlantRelative Family::Relative(const SetPlant& plant, std::int64_t generation)
{
    PlantRelative relative;
    relative.UUID = plant.UUID;
    relative.Name = plant.Name;
    relative.Strain = plant.Strain;
    relative.MotherPlantUUID = plant.MotherUUID;
    relative.Stage = plant.Stage;
    relative.Generation = generation;
    relative.Harvest = Harvests.Of(plant.UUID);
    return relative;
}

} // namespace

} // namespace plant_query

PlantQueryResult QueryPlantLineage(PlantDatabase& database, const std::string& plantUUID, PlantLineage& out)
{
    return plant_query::Answer<PlantLineage>(
        database, out, [&](sqlite3* connection) { return plant_query::Family(connection).Of(plantUUID); });
}
