// A program that uses three libraries: stores a plant under a UUID that it creates, inspects the file, and asks how the
// plant is.

#include "plant_database.h"
#include "plant_file.h"
#include "plant_query.h"

#include <iostream>

std::string CreatePlantUUID(); // exported by the library, in no header

int main()
{
    PlantDatabase journal;
    PlantRepository repository(journal);
    Plant basil;
    basil.UUID = CreatePlantUUID();
    basil.Name = "Basil";
    PlantFileInspection file;
    if (!journal.Open("journal.db") || !basil.Save(repository) || !InspectPlantDatabase("journal.db", file))
        return 1;
    std::vector<PlantStatus> plants;
    if (!QueryPlantStatus(journal, {}, PlantEventCurrentDate(), plants) || plants.size() != 1)
        return 1;
    std::cout << PlantFileKindName(file.Kind) << ", " << PlantStageName(plants[0].Stage) << ", " << plants[0].Name
              << '\n';
}
