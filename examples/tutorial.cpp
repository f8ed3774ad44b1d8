#include "plant_query.h"
#include "plant_validation.h"

#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

// A command reads the rest of its line. The text of an exception is shown to the user.
using Command = void (*)(PlantDatabase& journal, std::istream& words);

// Ends the command if a record was not stored. Call it right after the operation, because the next statement replaces
// the reason. `record` is the record as it was before the operation.
template <typename Record> void RequireStored(PlantDatabase& journal, bool stored, const Record& record)
{
    if (!stored)
        throw std::runtime_error(Explain(journal, record));
}

// Ends the command if a question was not answered.
void RequireAnswer(const PlantQueryResult& result)
{
    if (!result)
        throw std::runtime_error(result.Error);
}

void AddPlant(PlantDatabase& journal, std::istream& words)
{
    Plant plant;
    plant.Stage = PlantStage::Seed;
    plant.SeedDate = PlantEventCurrentDate();
    if (!(words >> plant.Name))
        throw std::runtime_error("Which name?");
    std::getline(words >> std::ws, plant.Strain); // the rest of the line; also registers a new strain
    const Plant before = plant;
    RequireStored(journal, PlantRepository(journal).CreatePlant(plant), before);
    std::cout << "Sown on " << plant.SeedDate << ".\n";
}

void ListPlants(PlantDatabase& journal, std::istream& /*words*/)
{
    std::vector<PlantStatus> plants;
    RequireAnswer(QueryPlantStatus(journal, {}, PlantEventCurrentDate(), plants));
    for (const PlantStatus& plant : plants)
        std::cout << plant.Name << " (" << plant.Strain << "): " << PlantStageName(plant.Stage) << '\n';
}

// Returns the UUID of the plant that has the next word as its name.
std::string FindPlant(PlantDatabase& journal, std::istream& words)
{
    std::string name;
    words >> name;
    std::vector<PlantStatus> plants;
    RequireAnswer(QueryPlantStatus(journal, {}, PlantEventCurrentDate(), plants));
    for (const PlantStatus& plant : plants)
        if (plant.Name == name)
            return plant.PlantUUID;
    throw std::runtime_error("No plant is named \"" + name + "\".");
}

// Ends the command if a value of a record has no meaning. Prints a notice of a value that is unlikely.
template <typename Record> void RequireValid(const Record& record)
{
    for (const PlantProblem& problem : Validate(record))
    {
        if (problem.Kind != PlantProblemKind::Unlikely)
            throw std::runtime_error(problem.Description);
        std::cout << "Notice: " << problem.Description << '\n';
    }
}

void Feed(PlantDatabase& journal, std::istream& words)
{
    PlantCareEntry feeding;
    feeding.PlantUUID = FindPlant(journal, words);
    feeding.CareDate = PlantEventCurrentDate();
    feeding.Action = PlantCareAction::Feed;
    if (!(words >> feeding.AmountMl))
        throw std::runtime_error("How many millilitres?");
    std::getline(words >> std::ws, feeding.Product);
    RequireValid(feeding);
    const PlantCareEntry before = feeding;
    RequireStored(journal, PlantRepository(journal).CreatePlantCareEntry(feeding), before);
    std::cout << "Fed.\n";
}

void ShowTimeline(PlantDatabase& journal, std::istream& words)
{
    std::vector<PlantActivity> timeline;
    RequireAnswer(QueryPlantTimeline(journal, FindPlant(journal, words), timeline));
    for (const PlantActivity& activity : timeline)
        std::cout << activity.Date << "  " << activity.Kind << (activity.Text.empty() ? "" : "  ") << activity.Text
                  << '\n';
}

void SetStage(PlantDatabase& journal, std::istream& words)
{
    PlantRepository repository(journal);
    const std::string uuid = FindPlant(journal, words);
    std::string name;
    words >> name;
    const std::optional<PlantStage> stage = ParsePlantStage(name);
    if (!stage)
    {
        std::string stages = "Which stage?";
        for (const PlantStage value : PlantStages)
            stages += std::string(" ") + PlantStageName(value);
        throw std::runtime_error(stages);
    }
    Plant plant;
    if (!repository.GetPlant(uuid, plant))
        throw std::runtime_error("The plant cannot be read.");
    plant.Stage = *stage;
    RequireStored(journal, repository.UpdatePlant(plant), plant);
    std::cout << plant.Name << " is in the stage " << PlantStageName(plant.Stage) << ".\n";
}

void Harvest(PlantDatabase& journal, std::istream& words)
{
    PlantRepository repository(journal);
    const std::string uuid = FindPlant(journal, words);
    Plant plant;
    if (!repository.GetPlant(uuid, plant))
        throw std::runtime_error("The plant cannot be read.");
    HarvestRecord record;
    repository.GetHarvestRecord(uuid, record); // false if this is the first harvest
    record.PlantUUID = uuid;
    if (!(words >> record.WetWeightG >> record.DryWeightG))
        throw std::runtime_error("How many grams, wet and dry?");
    RequireValid(record);
    const HarvestRecord before = record;
    RequireStored(journal, repository.SaveHarvestRecord(plant, record), before);
    std::cout << "Harvested on " << plant.HarvestDate << ".\n";
}

void ShowStrain(PlantDatabase& journal, std::istream& words)
{
    PlantComparedSet set;
    std::getline(words >> std::ws, set.Name);
    set.Plants.Strains = {set.Name};
    std::vector<PlantComparison> comparison;
    RequireAnswer(QueryPlantComparison(journal, {set}, comparison));
    std::cout << comparison[0].Plants << " plants, " << comparison[0].Harvested << " harvested, "
              << comparison[0].DryWeightG.Mean << " g dry on average\n";
}

} // namespace

int main(int argc, char** argv)
{
    PlantDatabase journal;
    std::string error;
    if (!journal.Open(argc > 1 ? argv[1] : "garden.db", &error))
    {
        std::cerr << "The journal cannot be opened: " << error << '\n';
        return 1;
    }

    std::map<std::string, Command> commands;
    commands["plant"] = AddPlant;
    commands["plants"] = ListPlants;
    commands["feed"] = Feed;
    commands["timeline"] = ShowTimeline;
    commands["stage"] = SetStage;
    commands["harvest"] = Harvest;
    commands["strain"] = ShowStrain;

    std::string line;
    while (std::cout << "> " << std::flush && std::getline(std::cin, line) && line != "quit")
    {
        std::istringstream words(line);
        std::string name;
        words >> name;
        try
        {
            commands.at(name)(journal, words);
        }
        catch (const std::out_of_range&)
        {
            for (const auto& command : commands)
                std::cout << command.first << ' ';
            std::cout << "quit\n";
        }
        catch (const std::runtime_error& reason)
        {
            std::cout << reason.what() << '\n';
        }
    }
}
