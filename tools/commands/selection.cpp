#include "commands/selection.h"

#include "record/letters.h"
#include "record/text.h"
#include "refusal.h"

#include <algorithm>

namespace
{

bool IsGrowing(PlantStage stage)
{
    return stage == PlantStage::Seed || stage == PlantStage::Clone || stage == PlantStage::Veg ||
           stage == PlantStage::Flower;
}

std::string StageObjection(const std::string& text)
{
    try
    {
        PlantStage stage{};
        ParseValue(text, &stage);
        return IsGrowing(stage) ? ""
                                : InQuotes(text) + " is not a stage of growing plants: Seed, Clone, Veg or Flower; "
                                                   "name the plants instead";
    }
    catch (const BadValue& bad)
    {
        return bad.what();
    }
}

} // namespace

bool Fits(const std::optional<std::string>& wanted, const std::string& text)
{
    return !wanted || WithoutCase(*wanted) == WithoutCase(text);
}

void AddSelectors(CLI::App& command, Selection& selection)
{
    AddSwitch(command, "--all", "all growing plants", selection.All);
    AddFlag(command, {"--strain", "growing plants of this strain", "STRAIN"}, selection.Strain);
    AddFlag(command, {"--tent", "growing plants in this tent", "TENT"}, selection.Tent);
    AddFlag(command,
            {"--stage", "growing plants in this stage", "Seed|Clone|Veg|Flower", Need::Optional, StageObjection},
            selection.Stage);
}

std::vector<Plant> SelectPlants(const std::vector<Plant>& plants, const Selection& selection)
{
    std::vector<Plant> selected;
    const auto select = [&](const Plant& plant)
    {
        if (std::none_of(selected.begin(), selected.end(),
                         [&](const Plant& other) { return other.UUID == plant.UUID; }))
            selected.push_back(plant);
    };
    for (const std::string& name : selection.Named)
        select(FindPlant(plants, name));
    if (!selection.HasSelectors())
    {
        if (selected.empty())
            RefuseUsage("no plant was named; name one, or select plants with --all, --strain, --tent or --stage");
        return selected;
    }
    bool any = false;
    for (const Plant& plant : plants)
        if (IsGrowing(plant.Stage) && Fits(selection.Strain, plant.Strain) && Fits(selection.Tent, plant.Tent) &&
            Fits(selection.Stage, PlantStageName(plant.Stage)))
        {
            any = true;
            select(plant);
        }
    if (!any)
        throw Refusal("no growing plant matches the options; `plantjournal plant list` shows the plants");
    return selected;
}

bool IsExactName(const std::vector<Plant>& plants, const std::string& text)
{
    return std::any_of(plants.begin(), plants.end(),
                       [&](const Plant& plant) { return plant.Name == text || plant.UUID == text; });
}
