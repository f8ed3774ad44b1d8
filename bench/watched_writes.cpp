// Creates care entries in a journal in memory, with a watcher or without. Built twice: with the watcher that names
// plants, and with the one that names families only.

#include "plant_watcher.h"

#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>

int main(int argc, char** argv)
{
    const std::string mode = argc == 3 ? argv[1] : "";
    if (mode != "watched" && mode != "unwatched")
    {
        std::cerr << "usage: " << argv[0] << " watched|unwatched ENTRIES\n";
        return 2;
    }
    PlantDatabase journal;
    PlantRepository repository(journal);
    Plant plant;
    plant.UUID = "11111111-1111-4111-8111-111111111111";
    if (!journal.Open(":memory:") || !repository.CreatePlant(plant))
        return EXIT_FAILURE;
    std::optional<PlantWatcher> watcher;
    if (mode == "watched")
        watcher.emplace(journal);
    PlantCareEntry entry;
    entry.PlantUUID = plant.UUID;
    entry.CareDate = "2024-05-06";
    entry.Action = PlantCareAction::Feed;
    entry.Product = "Bloom A";
    entry.AmountMl = 500;
    for (int i = 0; i < std::stoi(argv[2]); ++i)
        if (!repository.CreatePlantCareEntry(entry))
            return EXIT_FAILURE;
    return EXIT_SUCCESS;
}
