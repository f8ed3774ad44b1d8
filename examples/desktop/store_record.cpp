#include "store_record.h"

#include <algorithm>

namespace
{

bool Create(PlantDatabase& database, PlantCareEntry& entry)
{
    return PlantRepository(database).CreatePlantCareEntry(entry);
}

bool Create(PlantDatabase& database, PlantJournalEntry& entry)
{
    return PlantRepository(database).CreatePlantJournalEntry(entry);
}

bool Create(PlantDatabase& database, PlantHealthObservation& observation)
{
    return PlantRepository(database).CreatePlantHealthObservation(observation);
}

bool Create(PlantDatabase& database, HarvestRecord& record)
{
    PlantRepository repository(database);
    Plant plant;
    return repository.GetPlant(record.PlantUUID, plant) && repository.SaveHarvestRecord(plant, record);
}

// Since the form was filled in, another program may have deleted the harvest record or its event.
void Renew(PlantDatabase& database, HarvestRecord& record)
{
    if (record.ID == 0)
        return;
    HarvestRecord stored;
    const bool found = PlantRepository(database).GetHarvestRecord(record.PlantUUID, stored);
    record.ID = found && stored.ID == record.ID ? record.ID : 0;
    record.TimelineEventID = record.ID == 0 ? 0 : stored.TimelineEventID;
}

void Renew(PlantDatabase& /*database*/, const auto& /*record*/) {}

template <typename Record> StoreResult Store(PlantDatabase& database, Record record)
{
    StoreResult result;
    Renew(database, record);
    if (const PlantValidationResult read = Validate(record, database, result.Problems); !read)
    {
        result.Reason = read.Error;
        return result;
    }
    const auto isUnlikely = [](const PlantProblem& problem) { return problem.Kind == PlantProblemKind::Unlikely; };
    result.Problems.erase(std::remove_if(result.Problems.begin(), result.Problems.end(), isUnlikely),
                          result.Problems.end());
    if (!result.Problems.empty())
        return result;
    Record written = record; // receives row IDs, which are not valid after a failure
    result.Stored = Create(database, written);
    if (!result.Stored)
        result.Reason = Explain(database, record);
    return result;
}

} // namespace

StoreResult StoreRecord(PlantDatabase& database, const FormRecord& record)
{
    return std::visit([&](const auto& wanted) { return Store(database, wanted); }, record);
}
