#include "commands/plant_labels.h"

#include "record/letters.h"

UUIDTexts PlantLabels(const std::vector<Plant>& plants)
{
    std::map<std::string, int> uses;
    for (const Plant& plant : plants)
        ++uses[WithoutCase(plant.Name)];
    UUIDTexts labels = ShownUUIDs(plants);
    for (const Plant& plant : plants)
    {
        std::string& label = labels.at(plant.UUID);
        if (plant.Name.empty())
            continue;
        if (uses.at(WithoutCase(plant.Name)) == 1)
            label = plant.Name;
        else
            label.insert(0, plant.Name + " (").append(")");
    }
    return labels;
}
