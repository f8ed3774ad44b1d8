// A program that uses both libraries: stores a plant under a UUID that it creates, and inspects the file.

#include "plant_database.h"
#include "plant_file.h"

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
    std::cout << PlantFileKindName(file.Kind) << ", " << PlantStageName(basil.Stage) << '\n';
}
