// Writes to a journal at random, as another program does. Prints each text that the journal then holds, as
// `stored TEXT`, and each that it no longer holds, as `deleted TEXT`.
// usage: random_writer JOURNAL MILLISECONDS SEED

#include "plant_database.h"

#include <chrono>
#include <iostream>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace
{

class Writer
{
  public:
    Writer(const std::string& journal, std::string seed) : Seed(std::move(seed)), Random(std::stoul(Seed))
    {
        if (!Database.Open(journal))
            throw std::runtime_error(Database.LastError());
    }

    void WriteOnce()
    {
        const std::vector<Plant> plants = Plants();
        if (plants.empty())
            return;
        Plant plant = plants[Random() % plants.size()];
        switch (Random() % 6)
        {
        case 0:
            Create(plant, &PlantRepository::CreatePlantCareEntry, &PlantCareEntry::Notes);
            break;
        case 1:
            Create(plant, &PlantRepository::CreatePlantHealthObservation, &PlantHealthObservation::Issue);
            break;
        case 2:
            plant.Stage = static_cast<PlantStage>(Random() % 8);
            Repository.UpdatePlant(plant);
            break;
        case 3:
            DeleteNote();
            break;
        default:
            CreateNote(plant);
        }
    }

    unsigned long Number(unsigned long limit) { return Random() % limit; }

  private:
    std::vector<Plant> Plants()
    {
        std::vector<Plant> plants;
        Repository.ListPlants(plants);
        return plants;
    }

    std::string NewText() { return "w" + Seed + "-" + std::to_string(++Count) + "."; }

    template <typename Record>
    bool Create(const Plant& plant, bool (PlantRepository::*create)(Record&), std::string Record::*text,
                Record record = {})
    {
        record.PlantUUID = plant.UUID;
        record.*text = NewText();
        if (!(Repository.*create)(record))
            return false;
        std::cout << "stored " << record.*text << std::endl;
        Last = record.ID;
        return true;
    }

    void CreateNote(const Plant& plant)
    {
        if (Create(plant, &PlantRepository::CreatePlantJournalEntry, &PlantJournalEntry::Details))
            Notes[Last] = "w" + Seed + "-" + std::to_string(Count) + ".";
    }

    // Only this program deletes its notes, so their row IDs stay valid.
    void DeleteNote()
    {
        if (Notes.empty() || !Repository.DeletePlantJournalEntry(Notes.begin()->first))
            return;
        std::cout << "deleted " << Notes.begin()->second << std::endl;
        Notes.erase(Notes.begin());
    }

    std::string Seed;
    std::mt19937 Random;
    PlantDatabase Database;
    PlantRepository Repository{Database};
    std::map<std::int64_t, std::string> Notes; // by row ID
    std::int64_t Last = 0;
    int Count = 0;
};

} // namespace

int main(int count, char** arguments)
{
    if (count != 4)
        return 2;
    Writer writer(arguments[1], arguments[3]);
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(std::stol(arguments[2]));
    while (std::chrono::steady_clock::now() < end)
    {
        writer.WriteOnce();
        std::this_thread::sleep_for(std::chrono::milliseconds(writer.Number(40)));
    }
}
