#pragma once

#include "plant_database.h"

#include <string>
#include <vector>

// The operations on the records of a plant under one name for every kind. Each returns what the repository returns.

// Of harvest records, there is at most one.
bool ListRecords(PlantRepository& repository, const std::string& plantUUID, std::vector<PlantEvent>& out);
bool ListRecords(PlantRepository& repository, const std::string& plantUUID, std::vector<PlantCareEntry>& out);
bool ListRecords(PlantRepository& repository, const std::string& plantUUID, std::vector<HarvestRecord>& out);
bool ListRecords(PlantRepository& repository, const std::string& plantUUID, std::vector<PlantPhoto>& out);
bool ListRecords(PlantRepository& repository, const std::string& plantUUID, std::vector<PlantHealthObservation>& out);
bool ListRecords(PlantRepository& repository, const std::string& plantUUID, std::vector<PlantJournalEntry>& out);

// `plant` is the plant of the record; storing a harvest record also updates it.
bool CreateRecord(PlantRepository& repository, Plant& plant, PlantEvent& event);
bool CreateRecord(PlantRepository& repository, Plant& plant, PlantCareEntry& entry);
bool CreateRecord(PlantRepository& repository, Plant& plant, HarvestRecord& record);
bool CreateRecord(PlantRepository& repository, Plant& plant, PlantPhoto& photo);
bool CreateRecord(PlantRepository& repository, Plant& plant, PlantHealthObservation& observation);
bool CreateRecord(PlantRepository& repository, Plant& plant, PlantJournalEntry& entry);

bool UpdateRecord(PlantRepository& repository, Plant& plant, PlantEvent& event);
bool UpdateRecord(PlantRepository& repository, Plant& plant, PlantCareEntry& entry);
bool UpdateRecord(PlantRepository& repository, Plant& plant, HarvestRecord& record);
bool UpdateRecord(PlantRepository& repository, Plant& plant, PlantPhoto& photo);
bool UpdateRecord(PlantRepository& repository, Plant& plant, PlantHealthObservation& observation);
bool UpdateRecord(PlantRepository& repository, Plant& plant, PlantJournalEntry& entry);

bool DeleteRecord(PlantRepository& repository, const PlantEvent& event);
bool DeleteRecord(PlantRepository& repository, const PlantCareEntry& entry);
bool DeleteRecord(PlantRepository& repository, const HarvestRecord& record);
bool DeleteRecord(PlantRepository& repository, const PlantPhoto& photo);
bool DeleteRecord(PlantRepository& repository, const PlantHealthObservation& observation);
bool DeleteRecord(PlantRepository& repository, const PlantJournalEntry& entry);
