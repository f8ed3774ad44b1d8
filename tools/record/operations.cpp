#include "record/operations.h"

namespace
{

template <typename Record, typename Create, typename Update, typename Delete>
Operations<Record> Of(bool (PlantRepository::*list)(const std::string&, std::vector<Record>&), Create create,
                      Update update, Delete remove)
{
    return {
        list, [create](PlantRepository& repository, Plant&, Record& record) { return (repository.*create)(record); },
        [update](PlantRepository& repository, Plant&, Record& record) { return (repository.*update)(record); }, remove};
}

} // namespace

template <> const Operations<PlantEvent>& OperationsOn()
{
    static const Operations<PlantEvent> operations =
        Of(&PlantRepository::ListPlantEvents, &PlantRepository::CreatePlantEvent, &PlantRepository::UpdatePlantEvent,
           [](PlantRepository& repository, const PlantEvent& event) { return repository.DeletePlantEvent(event.ID); });
    return operations;
}

template <> const Operations<PlantCareEntry>& OperationsOn()
{
    static const Operations<PlantCareEntry> operations =
        Of(&PlantRepository::ListPlantCareEntries, &PlantRepository::CreatePlantCareEntry,
           &PlantRepository::UpdatePlantCareEntry,
           [](PlantRepository& repository, const PlantCareEntry& entry)
           { return repository.DeletePlantCareEntry(entry.ID); });
    return operations;
}

template <> const Operations<HarvestRecord>& OperationsOn()
{
    const auto save = [](PlantRepository& repository, Plant& plant, HarvestRecord& record)
    { return repository.SaveHarvestRecord(plant, record); };
    static const Operations<HarvestRecord> operations = {
        [](PlantRepository& repository, const std::string& plantUUID, std::vector<HarvestRecord>& out)
        {
            HarvestRecord record;
            const bool found = repository.GetHarvestRecord(plantUUID, record);
            out.assign(found ? 1 : 0, record);
            return true;
        },
        save, save,
        [](PlantRepository& repository, const HarvestRecord& record)
        { return repository.DeleteHarvestRecord(record.PlantUUID); }};
    return operations;
}

template <> const Operations<PlantPhoto>& OperationsOn()
{
    static const Operations<PlantPhoto> operations = Of(
        &PlantRepository::ListPlantPhotos, &PlantRepository::CreatePlantPhoto, &PlantRepository::UpdatePlantPhoto,
        [](PlantRepository& repository, const PlantPhoto& photo) { return repository.DeletePlantPhoto(photo.UUID); });
    return operations;
}

template <> const Operations<PlantHealthObservation>& OperationsOn()
{
    static const Operations<PlantHealthObservation> operations =
        Of(&PlantRepository::ListPlantHealthObservations, &PlantRepository::CreatePlantHealthObservation,
           &PlantRepository::UpdatePlantHealthObservation,
           [](PlantRepository& repository, const PlantHealthObservation& observation)
           { return repository.DeletePlantHealthObservation(observation.ID); });
    return operations;
}

template <> const Operations<PlantJournalEntry>& OperationsOn()
{
    static const Operations<PlantJournalEntry> operations =
        Of(&PlantRepository::ListPlantJournalEntries, &PlantRepository::CreatePlantJournalEntry,
           &PlantRepository::UpdatePlantJournalEntry,
           [](PlantRepository& repository, const PlantJournalEntry& entry)
           { return repository.DeletePlantJournalEntry(entry.ID); });
    return operations;
}
