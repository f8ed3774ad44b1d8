#include "record/operations.h"

bool ListRecords(PlantRepository& repository, const std::string& plantUUID, std::vector<PlantEvent>& out)
{
    return repository.ListPlantEvents(plantUUID, out);
}

bool ListRecords(PlantRepository& repository, const std::string& plantUUID, std::vector<PlantCareEntry>& out)
{
    return repository.ListPlantCareEntries(plantUUID, out);
}

bool ListRecords(PlantRepository& repository, const std::string& plantUUID, std::vector<HarvestRecord>& out)
{
    HarvestRecord record;
    const bool found = repository.GetHarvestRecord(plantUUID, record);
    out.assign(found ? 1 : 0, record);
    return true;
}

bool ListRecords(PlantRepository& repository, const std::string& plantUUID, std::vector<PlantPhoto>& out)
{
    return repository.ListPlantPhotos(plantUUID, out);
}

bool ListRecords(PlantRepository& repository, const std::string& plantUUID, std::vector<PlantHealthObservation>& out)
{
    return repository.ListPlantHealthObservations(plantUUID, out);
}

bool ListRecords(PlantRepository& repository, const std::string& plantUUID, std::vector<PlantJournalEntry>& out)
{
    return repository.ListPlantJournalEntries(plantUUID, out);
}

bool CreateRecord(PlantRepository& repository, Plant&, PlantEvent& event)
{
    return repository.CreatePlantEvent(event);
}

bool CreateRecord(PlantRepository& repository, Plant&, PlantCareEntry& entry)
{
    return repository.CreatePlantCareEntry(entry);
}

bool CreateRecord(PlantRepository& repository, Plant& plant, HarvestRecord& record)
{
    return repository.SaveHarvestRecord(plant, record);
}

bool CreateRecord(PlantRepository& repository, Plant&, PlantPhoto& photo)
{
    return repository.CreatePlantPhoto(photo);
}

bool CreateRecord(PlantRepository& repository, Plant&, PlantHealthObservation& observation)
{
    return repository.CreatePlantHealthObservation(observation);
}

bool CreateRecord(PlantRepository& repository, Plant&, PlantJournalEntry& entry)
{
    return repository.CreatePlantJournalEntry(entry);
}

bool UpdateRecord(PlantRepository& repository, Plant&, PlantEvent& event)
{
    return repository.UpdatePlantEvent(event);
}

bool UpdateRecord(PlantRepository& repository, Plant&, PlantCareEntry& entry)
{
    return repository.UpdatePlantCareEntry(entry);
}

bool UpdateRecord(PlantRepository& repository, Plant& plant, HarvestRecord& record)
{
    return repository.SaveHarvestRecord(plant, record);
}

bool UpdateRecord(PlantRepository& repository, Plant&, PlantPhoto& photo)
{
    return repository.UpdatePlantPhoto(photo);
}

bool UpdateRecord(PlantRepository& repository, Plant&, PlantHealthObservation& observation)
{
    return repository.UpdatePlantHealthObservation(observation);
}

bool UpdateRecord(PlantRepository& repository, Plant&, PlantJournalEntry& entry)
{
    return repository.UpdatePlantJournalEntry(entry);
}

bool DeleteRecord(PlantRepository& repository, const PlantEvent& event)
{
    return repository.DeletePlantEvent(event.ID);
}

bool DeleteRecord(PlantRepository& repository, const PlantCareEntry& entry)
{
    return repository.DeletePlantCareEntry(entry.ID);
}

bool DeleteRecord(PlantRepository& repository, const HarvestRecord& record)
{
    return repository.DeleteHarvestRecord(record.PlantUUID);
}

bool DeleteRecord(PlantRepository& repository, const PlantPhoto& photo)
{
    return repository.DeletePlantPhoto(photo.UUID);
}

bool DeleteRecord(PlantRepository& repository, const PlantHealthObservation& observation)
{
    return repository.DeletePlantHealthObservation(observation.ID);
}

bool DeleteRecord(PlantRepository& repository, const PlantJournalEntry& entry)
{
    return repository.DeletePlantJournalEntry(entry.ID);
}
