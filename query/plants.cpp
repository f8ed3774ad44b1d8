#include "plants.h"

#include <utility>

namespace plant_query
{

std::vector<SetPlant> PlantsOf(sqlite3* connection, const PlantSet& set)
{
    Statement rows(connection, "reading the plants",
                   "SELECT ID,UUID,Name,Strain,COALESCE((SELECT UUID FROM Plants m WHERE m.ID=p.MotherPlantID),''),"
                   "Stage,Tent,SeedDate,CloneDate,TransplantDate,FlipDate,HarvestDate "
                   "FROM Plants p ORDER BY Strain COLLATE NOCASE,Name COLLATE NOCASE;");
    std::vector<SetPlant> plants;
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
