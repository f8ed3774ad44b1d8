#include "plant_database.h"

#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <sqlite3.h>

namespace
{

// A command reads the rest of its line. The text of an exception is shown to the user.
using Command = void (*)(PlantDatabase& journal, std::istream& words);

// Ends the command if an operation failed. Call it right after the operation: the next statement replaces the reason.
void Require(const PlantDatabase& journal, bool done)
{
    const int code = sqlite3_errcode(journal.NativeHandle());
    if (done && code == SQLITE_OK) // a list that ended early also returns true
        return;
    if (code == SQLITE_BUSY)
        throw std::runtime_error("Another program is using the journal. Try again.");
    if (code == SQLITE_OK)
        throw std::runtime_error("The journal refused the record.");
    throw std::runtime_error(sqlite3_errmsg(journal.NativeHandle()));
}

void AddPlant(PlantDatabase& journal, std::istream& words)
{
    Plant plant;
    plant.Stage = PlantStage::Seed;
    plant.SeedDate = PlantEventCurrentDate();
    if (!(words >> plant.Name))
        throw std::runtime_error("Which name?");
    std::getline(words >> std::ws, plant.Strain); // the rest of the line; also registers a new strain
    Require(journal, PlantRepository(journal).CreatePlant(plant));
    std::cout << "Sown on " << plant.SeedDate << ".\n";
}

void ListPlants(PlantDatabase& journal, std::istream& /*words*/)
{
    std::vector<Plant> plants;
    Require(journal, PlantRepository(journal).ListPlants(plants));
    for (const Plant& plant : plants)
        std::cout << plant.Name << " (" << plant.Strain << "): " << PlantStageName(plant.Stage) << '\n';
}

// Finds the plant that has the next word as its name.
Plant FindPlant(PlantDatabase& journal, std::istream& words)
{
    std::string name;
    words >> name;
    std::vector<Plant> plants;
    Require(journal, PlantRepository(journal).ListPlants(plants));
    for (const Plant& plant : plants)
        if (plant.Name == name)
            return plant;
    throw std::runtime_error("No plant is named \"" + name + "\".");
}

void Feed(PlantDatabase& journal, std::istream& words)
{
    PlantCareEntry feeding;
    feeding.PlantUUID = FindPlant(journal, words).UUID;
    feeding.CareDate = PlantEventCurrentDate();
    feeding.Action = PlantCareAction::Feed;
    if (!(words >> feeding.AmountMl))
        throw std::runtime_error("How many millilitres?");
    std::getline(words >> std::ws, feeding.Product);
    Require(journal, PlantRepository(journal).CreatePlantCareEntry(feeding));
    std::cout << "Fed.\n";
}

void ShowTimeline(PlantDatabase& journal, std::istream& words)
{
    const Plant plant = FindPlant(journal, words);
    std::vector<PlantEvent> timeline;
    Require(journal, PlantRepository(journal).ListPlantEvents(plant.UUID, timeline));
    for (const PlantEvent& event : timeline)
        std::cout << event.EventDate << "  " << PlantEventTypeName(event.Type) << "  " << event.Details << '\n';
}

void Harvest(PlantDatabase& journal, std::istream& words)
{
    PlantRepository repository(journal);
    Plant plant = FindPlant(journal, words);
    HarvestRecord record;
    repository.GetHarvestRecord(plant.UUID, record); // false if this is the first harvest
    if (!(words >> record.WetWeightG >> record.DryWeightG))
        throw std::runtime_error("How many grams, wet and dry?");
    Require(journal, repository.SaveHarvestRecord(plant, record));
    std::cout << "Harvested on " << plant.HarvestDate << ".\n";
}

void ShowStrain(PlantDatabase& journal, std::istream& words)
{
    std::string name;
    std::getline(words >> std::ws, name);
    std::vector<Strain> strains;
    Require(journal, PlantRepository(journal).ListStrains(strains));
    for (const Strain& strain : strains)
    {
        if (strain.Name != name)
            continue;
        StrainSummary summary;
        Require(journal, PlantRepository(journal).GetStrainSummary(strain.ID, summary));
        std::cout << summary.TotalPlants << " plants, " << summary.HarvestCount << " harvested, "
                  << summary.AverageDryWeightG << " g dry on average\n";
        return;
    }
    throw std::runtime_error("No strain is named \"" + name + "\".");
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
