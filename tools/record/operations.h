#pragma once

#include "plant_database.h"

#include <functional>
#include <string>
#include <vector>

// What can be done with the records of a plant, alike for every kind.
template <typename Record> struct Operations
{
    std::function<bool(PlantRepository&, const std::string& plantUUID, std::vector<Record>&)> List;
    std::function<bool(PlantRepository&, Plant&, Record&)> Create;
    std::function<bool(PlantRepository&, Plant&, Record&)> Update;
    std::function<bool(PlantRepository&, const Record&)> Delete;
};

template <typename Record> const Operations<Record>& OperationsOn();
template <> const Operations<PlantEvent>& OperationsOn();
template <> const Operations<PlantCareEntry>& OperationsOn();
template <> const Operations<HarvestRecord>& OperationsOn();
template <> const Operations<PlantPhoto>& OperationsOn();
template <> const Operations<PlantHealthObservation>& OperationsOn();
template <> const Operations<PlantJournalEntry>& OperationsOn();
