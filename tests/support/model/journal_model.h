#pragma once

#include "plant.h"

#include <cstdint>
#include <string>
#include <vector>

namespace support
{

// A journal in plain vectors. It has every operation of PlantRepository, with the same result, the same changes to the
// arguments and the same effect on later reads. It shares no code with the library, so that an error of the library
// shows as a difference.
class JournalModel
{
  public:
    bool ListPlants(std::vector<Plant>& out) const;
    bool GetPlant(const std::string& uuid, Plant& out) const;
    bool CreatePlant(Plant& p);
    bool UpdatePlant(const Plant& p);
    bool DeletePlant(const std::string& uuid);
    bool DuplicatePlant(const Plant& source, Plant& out);

    bool ListStrains(std::vector<Strain>& out) const;
    bool GetStrain(std::int64_t id, Strain& out) const;
    bool CreateStrain(Strain& strain);
    bool UpdateStrain(const Strain& strain);
    bool DeleteStrain(std::int64_t id);
    bool GetStrainSummary(std::int64_t strainID, StrainSummary& out) const;

    bool ListPlantEvents(const std::string& plantUUID, std::vector<PlantEvent>& out) const;
    bool CreatePlantEvent(PlantEvent& event);
    bool UpdatePlantEvent(const PlantEvent& event);
    bool DeletePlantEvent(std::int64_t id);

    bool ListPlantCareEntries(const std::string& plantUUID, std::vector<PlantCareEntry>& out) const;
    bool CreatePlantCareEntry(PlantCareEntry& entry);
    bool UpdatePlantCareEntry(PlantCareEntry& entry);
    bool DeletePlantCareEntry(std::int64_t id);
    std::string CareTimelineDetails(const PlantCareEntry& entry) const;

    bool GetHarvestRecord(const std::string& plantUUID, HarvestRecord& out) const;
    bool SaveHarvestRecord(Plant& plant, HarvestRecord& record);
    bool DeleteHarvestRecord(const std::string& plantUUID);

    bool ListPlantPhotos(const std::string& plantUUID, std::vector<PlantPhoto>& out) const;
    bool CreatePlantPhoto(PlantPhoto& photo);
    bool UpdatePlantPhoto(const PlantPhoto& photo);
    bool DeletePlantPhoto(const std::string& photoUUID);

    bool ListPlantHealthObservations(const std::string& plantUUID, std::vector<PlantHealthObservation>& out) const;
    bool CreatePlantHealthObservation(PlantHealthObservation& o);
    bool UpdatePlantHealthObservation(const PlantHealthObservation& o);
    bool DeletePlantHealthObservation(std::int64_t id);

    bool ListPlantJournalEntries(const std::string& plantUUID, std::vector<PlantJournalEntry>& out) const;
    bool CreatePlantJournalEntry(PlantJournalEntry& e);
    bool UpdatePlantJournalEntry(const PlantJournalEntry& e);
    bool DeletePlantJournalEntry(std::int64_t id);

    // The caller sets these, since the model cannot know them: the next generated UUID, and the date of today.
    std::string NextUUID;
    std::string Today;

    // Plants and strains that compare equal may be listed in any order. From now on they have the order of these lists.
    void OrderTiesLike(const std::vector<Plant>& plants, const std::vector<Strain>& strains);

    // The keys of all records, the oldest row first. The keys are whole; in a list they end at their first zero byte.
    std::vector<std::string> PlantUUIDs() const;
    std::vector<std::string> StrainNames() const;

  private:
    struct PlantRow : Plant
    {
        std::int64_t MotherID = 0; // 0 for none; used instead of MotherPlantUUID
    };

    std::int64_t IDOfPlant(const std::string& uuid) const;
    void RegisterStrain(const std::string& name);
    bool MayHaveItsMother(const Plant& plant) const;
    bool HasEvent(std::int64_t id) const;
    void WriteEvent(const PlantEvent& event, bool isNew);
    void RemoveEvent(std::int64_t id);

    std::vector<PlantRow> Plants;
    std::vector<Strain> Strains;
    std::vector<PlantEvent> Events;
    std::vector<PlantCareEntry> CareEntries;
    std::vector<HarvestRecord> HarvestRecords;
    std::vector<PlantPhoto> Photos;
    std::vector<PlantHealthObservation> HealthObservations;
    std::vector<PlantJournalEntry> JournalEntries;
};

} // namespace support
