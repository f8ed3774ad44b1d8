#include "commands/plant_set.h"

#include "commands/arguments.h"
#include "commands/selection.h"
#include "journal/find_record.h"
#include "record/dates.h"
#include "record/nearest.h"
#include "record/text.h"
#include "refusal.h"
#include "terminal/console.h"
#include "terminal/printable.h"

#include <algorithm>
#include <iostream>

namespace
{

template <typename Value> bool IsOneOf(const std::vector<Value>& wanted, const Value& value)
{
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), value) != wanted.end();
}

void AddOnce(std::vector<std::string>& texts, const std::string& text)
{
    if (std::find(texts.begin(), texts.end(), text) == texts.end())
        texts.push_back(text);
}

// The names, in their exact letters, that an option stands for. Throws Refusal where there is none. The message calls
// a thing with the name `what`; `advice` is what to do where no name is near.
std::vector<std::string> ExactNames(const std::optional<std::string>& wanted, const std::vector<std::string>& names,
                                    const std::string& what, const std::string& advice)
{
    std::vector<std::string> exact;
    for (const std::string& name : names)
        if (wanted && Fits(wanted, name))
            AddOnce(exact, name);
    if (!wanted || !exact.empty())
        return exact;
    std::vector<std::string> known;
    for (const std::string& name : names)
        AddOnce(known, name);
    std::vector<std::string> nearest = Nearest(*wanted, known);
    for (std::string& name : nearest)
        name = InQuotes(Printable(name));
    throw Refusal(InQuotes(Printable(*wanted)) + ": " + what + " has this name; " +
                  (nearest.empty() ? advice : DidYouMean(nearest)));
}

bool IsNotArchived(PlantStage stage)
{
    return stage != PlantStage::Archived;
}

} // namespace

void AddPlantNames(CLI::App& command, PlantSetOptions& options)
{
    AddArguments(command, "PLANT", "UUIDs, prefixes of UUIDs, or names; each must match exactly one plant",
                 options.Named, Need::Optional);
}

void AddPlantFlag(CLI::App& command, PlantSetOptions& options)
{
    AddFlag(command, {"--plant", "only this plant", "PLANT"}, options.Plant);
}

void AddPlantOptions(CLI::App& command, PlantSetOptions& options)
{
    AddFlag(command, {"--strain", "only plants of this strain", "STRAIN"}, options.Strain);
    AddFlag(command, {"--tent", "only plants in this tent", "TENT"}, options.Tent);
    AddStageFlag(command, "only plants in this stage", options.Stage);
}

void AddAllPlants(CLI::App& command, const std::string& help, PlantSetOptions& options)
{
    AddSwitch(command, "--all", help, options.All);
}

void AddPeriod(CLI::App& command, PlantSetOptions& options)
{
    AddDateFlag(command, "--from", "the first date", options.From);
    AddDateFlag(command, "--to", "the last date", options.To);
}

std::string FirstDate(const PlantSetOptions& options)
{
    return DateFrom(options.From.value_or(""));
}

std::string LastDate(const PlantSetOptions& options)
{
    const std::string first = FirstDate(options);
    std::string last = DateFrom(options.To.value_or(""));
    if (!last.empty() && first > last && !first.starts_with(last)) // --to 2025 includes the year
        RefuseUsage("--from " + InQuotes(first) + " is later than --to " + InQuotes(last) + "; swap them");
    return last;
}

PlantSet PlantSetOf(Session& session, const std::vector<Plant>& plants, const PlantSetOptions& options)
{
    PlantSet set;
    for (const std::string& name : options.Named)
        AddOnce(set.UUIDs, FindPlant(plants, name).UUID);
    if (options.Plant)
        AddOnce(set.UUIDs, FindPlant(plants, *options.Plant).UUID);
    if (options.Stage)
        ParseValue(*options.Stage, &set.Stages.emplace_back());
    std::vector<std::string> strains;
    std::vector<std::string> tents;
    for (const Plant& plant : plants)
    {
        strains.push_back(plant.Strain);
        tents.push_back(plant.Tent);
    }
    for (const Strain& strain : AllStrains(session)) // also those without plants
        strains.push_back(strain.Name);
    set.Strains = ExactNames(options.Strain, strains, "no strain", "`plantjournal strain list` shows all strains");
    set.Tents = ExactNames(options.Tent, tents, "no tent", "`plantjournal plant list --all` shows the tents");
    return set;
}

PlantSet ListedPlantSet(Session& session, const std::vector<Plant>& plants, const PlantSetOptions& options)
{
    PlantSet set = PlantSetOf(session, plants, options);
    if (!options.All && !options.NamesPlants())
        LimitStages(set, IsNotArchived);
    return set;
}

void LimitStages(PlantSet& set, bool (*wanted)(PlantStage))
{
    if (!set.Stages.empty())
        return;
    const PlantStage anyStage{};
    for (const std::string& name : EnumerationNames(&anyStage))
    {
        PlantStage stage{};
        ParseValue(name, &stage);
        if (wanted(stage))
            set.Stages.push_back(stage);
    }
}

bool IsIn(const PlantSet& set, const Plant& plant)
{
    return IsOneOf(set.UUIDs, plant.UUID) && IsOneOf(set.Strains, plant.Strain) && IsOneOf(set.Tents, plant.Tent) &&
           IsOneOf(set.Stages, plant.Stage);
}

void PrintArchivedLeftOut(Session& session, const std::vector<Plant>& plants, const PlantSetOptions& options)
{
    const PlantSet all = PlantSetOf(session, plants, options);
    const PlantSet listed = ListedPlantSet(session, plants, options);
    const auto leftOut =
        std::count_if(plants.begin(), plants.end(),
                      [&](const Plant& plant)
                      { return plant.Stage == PlantStage::Archived && IsIn(all, plant) && !IsIn(listed, plant); });
    if (leftOut > 0 && OutputIsTerminal())
        std::cout << (leftOut == 1 ? "1 archived plant is left out; --all includes it.\n"
                                   : std::to_string(leftOut) + " archived plants are left out; --all includes them.\n");
}
