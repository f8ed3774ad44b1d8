// What a program does that has taken plantjournal in: it keeps a plant under an identifier of its own making, and looks
// at the file from outside.

#include "plant_database.h"
#include "plant_file.h"

#include <iostream>

std::string CreatePlantUUID(); // the library's

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
