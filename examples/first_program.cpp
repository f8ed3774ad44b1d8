#include "plant_database.h"

#include <iostream>

int main()
{
    PlantDatabase journal;
    std::string error;
    if (!journal.Open("journal.db", &error))
        return std::cerr << "journal.db: " << error << '\n', 1;
    PlantRepository repository(journal);

    Plant basil;
    basil.Name = "Basil by the window";
    if (!repository.CreatePlant(basil)) // writes back basil.ID and basil.UUID
        return 1;
    PlantCareEntry feeding;
    feeding.PlantUUID = basil.UUID;
    feeding.CareDate = PlantEventCurrentDate();
    feeding.Action = PlantCareAction::Feed;
    feeding.AmountMl = 250;
    if (!repository.CreatePlantCareEntry(feeding)) // also writes a timeline event, in the same transaction
        return 1;

    std::vector<PlantEvent> timeline;
    if (!repository.ListPlantEvents(basil.UUID, timeline))
        return 1;
    for (const PlantEvent& event : timeline)
        std::cout << event.EventDate << "  " << PlantEventTypeName(event.Type) << "  " << event.Details << '\n';
}
