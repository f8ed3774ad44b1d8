// The plants of a set, read once for an answer.
#pragma once

#include "reading.h"

#include <string>
#include <vector>

namespace plant_query
{

// What the answers need of a plant.
struct SetPlant
{
    std::int64_t ID = 0;
    std::string UUID;
    std::string Name;
    std::string Strain;
    std::string MotherUUID;
    PlantStage Stage = PlantStage::Veg;
    std::string Tent;
    std::string SeedDate;
    std::string CloneDate;
    std::string TransplantDate;
    std::string FlipDate;
    std::string HarvestDate;
};

// Whether a list of wanted values is empty or contains the value.
template <typename Value> bool Fits(const std::vector<Value>& wanted, const Value& value);

// The plants of a set in the order of PlantRepository::ListPlants(). Plants of one strain and name are sorted by row
// ID.
std::vector<SetPlant> PlantsOf(sqlite3* connection, const PlantSet& set);

// Whether the plant is in the set.
bool IsIn(const PlantSet& set, const SetPlant& plant);

// Whether the set is restricted in no way.
bool IsEveryPlant(const PlantSet& set);

} // namespace plant_query
