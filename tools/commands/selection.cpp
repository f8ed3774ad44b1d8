#include "commands/selection.h"

#include "record/letters.h"
#include "record/nearest.h"
#include "record/text.h"
#include "refusal.h"
#include "terminal/printable.h"

#include <algorithm>

namespace
{

std::string GrowingStageObjection(const std::string& text)
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

// The names that were not matched, each with the nearest ones of growing plants: "; did you mean --tent Big?".
std::string NearestValues(const std::vector<Plant>& plants, const Selection& selection)
{
    std::vector<std::string> near;
    const auto add = [&](const char* flag, const std::optional<std::string>& wanted, std::string Plant::*field)
    {
        std::vector<std::string> values;
        for (const Plant& plant : plants)
            if (IsGrowing(plant.Stage))
                values.push_back(plant.*field);
        if (!wanted ||
            std::any_of(values.begin(), values.end(), [&](const std::string& value) { return Fits(wanted, value); }))
            return;
        for (const std::string& value : Nearest(*wanted, values))
            near.push_back(std::string(flag) + ' ' + InQuotes(Printable(value)));
    };
    add("--strain", selection.Strain, &Plant::Strain);
    add("--tent", selection.Tent, &Plant::Tent);
    return DidYouMean(near);
}

// Finds a plant that is named. `--all` is meant where no plant has the name "all".
Plant FindNamed(const std::vector<Plant>& plants, const std::string& name)
{
    const bool isName = std::any_of(plants.begin(), plants.end(),
                                    [](const Plant& plant) { return EqualIgnoringCase(plant.Name, "all"); });
    if (EqualIgnoringCase(name, "all") && !isName)
        throw Refusal(InQuotes(name) + ": no plant has this name or UUID; did you mean --all?");
    return FindPlant(plants, name);
}

} // namespace

bool IsGrowing(PlantStage stage)
{
    return stage == PlantStage::Seed || stage == PlantStage::Clone || stage == PlantStage::Veg ||
           stage == PlantStage::Flower;
}

bool Fits(const std::optional<std::string>& wanted, const std::string& text)
{
    return !wanted || WithoutCase(*wanted) == WithoutCase(text);
}

void AddSelectors(CLI::App& command, Selection& selection)
{
    AddSwitch(command, "--all", "all plants that grow today, whatever --date is", selection.All);
    AddFlag(command, {"--strain", "growing plants of this strain", "STRAIN"}, selection.Strain);
    AddFlag(command, {"--tent", "growing plants that are in this tent today", "TENT"}, selection.Tent);
    AddFlag(command,
            {"--stage", "growing plants that are in this stage today", "Seed|Clone|Veg|Flower", Need::Optional,
             GrowingStageObjection},
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
        select(FindNamed(plants, name));
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
    {
        const std::string near = NearestValues(plants, selection);
        throw Refusal("no growing plant matches the options; " +
                      (near.empty() ? "`plantjournal plant list` shows the plants" : near));
    }
    return selected;
}

bool IsExactName(const std::vector<Plant>& plants, const std::string& text)
{
    return std::any_of(plants.begin(), plants.end(),
                       [&](const Plant& plant) { return plant.Name == text || plant.UUID == text; });
}
