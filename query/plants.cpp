#include "plants.h"

#include "letters.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <utility>

namespace plant_query
{

template <typename Value> bool Fits(const std::vector<Value>& wanted, const Value& value)
{
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), value) != wanted.end();
}

// The other files use these.
template bool Fits(const std::vector<std::string>& wanted, const std::string& value);
template bool Fits(const std::vector<PlantCareAction>& wanted, const PlantCareAction& value);

namespace
{

constexpr const char* SelectPlants =
    "SELECT ID,UUID,Name,Strain,COALESCE((SELECT UUID FROM Plants m WHERE m.ID=p.MotherPlantID),''),"
    "Stage,Tent,SeedDate,CloneDate,TransplantDate,FlipDate,HarvestDate FROM Plants p ";

void AddPlants(Statement& rows, const PlantSet& set, std::vector<SetPlant>& plants)
{
    while (rows.Step())
    {
        SetPlant plant;
        plant.ID = rows.Integer(0);
        plant.UUID = rows.Text(1);
        plant.Name = rows.Text(2);
        plant.Strain = rows.Text(3);
        plant.MotherUUID = rows.Text(4);
        plant.Stage = PlantStageFromName(rows.Text(5));
        plant.Tent = rows.Text(6);
        if (!IsIn(set, plant))
            continue;
        plant.SeedDate = rows.Text(7);
        plant.CloneDate = rows.Text(8);
        plant.TransplantDate = rows.Text(9);
        plant.FlipDate = rows.Text(10);
        plant.HarvestDate = rows.Text(11);
        plants.push_back(std::move(plant));
    }
}

// Does not read the other plants.
std::vector<SetPlant> NamedPlants(sqlite3* connection, const PlantSet& set)
{
    Statement rows(connection, "reading the plants", std::string(SelectPlants) + "WHERE UUID>=? AND UUID<?;");
    std::vector<SetPlant> plants;
    for (const std::string& uuid : std::set<std::string>(set.UUIDs.begin(), set.UUIDs.end()))
    {
        const std::string next = uuid + '\1'; // a stored UUID that continues with a zero byte is read without the rest
        rows.Bind(1, uuid);
        rows.Bind(2, next);
        AddPlants(rows, set, plants);
        rows.Reset();
    }
    std::sort(plants.begin(), plants.end(),
              [](const SetPlant& left, const SetPlant& right)
              {
                  return std::make_tuple(WithoutCase(left.Strain), WithoutCase(left.Name), left.ID) <
                         std::make_tuple(WithoutCase(right.Strain), WithoutCase(right.Name), right.ID);
              });
    return plants;
}

} // namespace

std::vector<SetPlant> PlantsOf(sqlite3* connection, const PlantSet& set)
{
    if (!set.UUIDs.empty())
        return NamedPlants(connection, set);
    Statement rows(connection, "reading the plants",
                   std::string(SelectPlants) + "ORDER BY Strain COLLATE NOCASE,Name COLLATE NOCASE,ID;");
    std::vector<SetPlant> plants;
    AddPlants(rows, set, plants);
    return plants;
}

bool IsIn(const PlantSet& set, const SetPlant& plant)
{
    return Fits(set.UUIDs, plant.UUID) && Fits(set.Strains, plant.Strain) && Fits(set.Tents, plant.Tent) &&
           Fits(set.Stages, plant.Stage);
}

bool IsEveryPlant(const PlantSet& set)
{
    return set.UUIDs.empty() && set.Strains.empty() && set.Tents.empty() && set.Stages.empty();
}

} // namespace plant_query
