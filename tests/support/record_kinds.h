#pragma once

#include "support/journal_test.h"

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

namespace support
{

template <typename Type> struct TextColumn
{
    const char* Name;
    std::string Type::*Field;
};

template <typename Type> struct NumberColumn
{
    const char* Name;
    double Type::*Field;
};

// A type of record: its table, its columns of free text and of real numbers, and the operations on it.
template <typename Type> struct RecordKind;

template <> struct RecordKind<Plant>
{
    static constexpr auto Table = "Plants";
    static constexpr TextColumn<Plant> Texts[] = {
        {"Name", &Plant::Name},           {"Strain", &Plant::Strain},
        {"Tent", &Plant::Tent},           {"PotSize", &Plant::PotSize},
        {"Medium", &Plant::Medium},       {"SeedDate", &Plant::SeedDate},
        {"CloneDate", &Plant::CloneDate}, {"TransplantDate", &Plant::TransplantDate},
        {"FlipDate", &Plant::FlipDate},   {"HarvestDate", &Plant::HarvestDate},
        {"Notes", &Plant::Notes}};
    static constexpr NumberColumn<Plant> Numbers[] = {{"FlipHeightCm", &Plant::FlipHeightCm},
                                                      {"FinalHeightCm", &Plant::FinalHeightCm}};

    static bool Create(PlantRepository& repository, Plant& plant) { return repository.CreatePlant(plant); }
    static bool Update(PlantRepository& repository, Plant& plant) { return repository.UpdatePlant(plant); }
    static bool Read(PlantRepository& repository, Plant& plant) { return repository.GetPlant(plant.UUID, plant); }
};

template <> struct RecordKind<Strain>
{
    static constexpr auto Table = "Strains";
    static constexpr TextColumn<Strain> Texts[] = {
        {"Name", &Strain::Name}, {"Breeder", &Strain::Breeder}, {"Notes", &Strain::Notes}};

    static bool Create(PlantRepository& repository, Strain& strain) { return repository.CreateStrain(strain); }
    static bool Update(PlantRepository& repository, Strain& strain) { return repository.UpdateStrain(strain); }
    static bool Read(PlantRepository& repository, Strain& strain) { return repository.GetStrain(strain.ID, strain); }
};

template <> struct RecordKind<HarvestRecord>
{
    static constexpr auto Table = "HarvestRecords";
    static constexpr TextColumn<HarvestRecord> Texts[] = {{"HarvestDate", &HarvestRecord::HarvestDate},
                                                          {"CureOutcome", &HarvestRecord::CureOutcome},
                                                          {"Notes", &HarvestRecord::Notes}};
    static constexpr NumberColumn<HarvestRecord> Numbers[] = {{"WetWeightG", &HarvestRecord::WetWeightG},
                                                              {"DryWeightG", &HarvestRecord::DryWeightG},
                                                              {"QualityRating", &HarvestRecord::QualityRating}};

    static bool Create(PlantRepository& repository, HarvestRecord& record)
    {
        Plant plant;
        return repository.GetPlant(record.PlantUUID, plant) && repository.SaveHarvestRecord(plant, record);
    }
    static bool Update(PlantRepository& repository, HarvestRecord& record) { return Create(repository, record); }
    static bool Read(PlantRepository& repository, HarvestRecord& record)
    {
        return repository.GetHarvestRecord(record.PlantUUID, record);
    }
};

// The types of which a plant has many records.
template <typename Type, auto ListOperation, auto CreateOperation, auto UpdateOperation> struct PlantRecordKind
{
    static bool List(PlantRepository& repository, const std::string& plantUUID, std::vector<Type>& out)
    {
        return (repository.*ListOperation)(plantUUID, out);
    }
    static bool Create(PlantRepository& repository, Type& record) { return (repository.*CreateOperation)(record); }
    static bool Update(PlantRepository& repository, Type& record) { return (repository.*UpdateOperation)(record); }
    static bool Read(PlantRepository& repository, Type& record)
    {
        std::vector<Type> records;
        if (!List(repository, record.PlantUUID, records))
            return false;
        const auto found = std::find_if(records.begin(), records.end(),
                                        [&](const Type& candidate) { return candidate.ID == record.ID; });
        if (found == records.end())
            return false;
        record = *found;
        return true;
    }
};

template <>
struct RecordKind<PlantEvent> : PlantRecordKind<PlantEvent, &PlantRepository::ListPlantEvents,
                                                &PlantRepository::CreatePlantEvent, &PlantRepository::UpdatePlantEvent>
{
    static constexpr auto Table = "PlantEvents";
    static constexpr auto Date = &PlantEvent::EventDate;
    static constexpr TextColumn<PlantEvent> Texts[] = {{"EventDate", &PlantEvent::EventDate},
                                                       {"Details", &PlantEvent::Details}};

    static bool Delete(PlantRepository& repository, const PlantEvent& event)
    {
        return repository.DeletePlantEvent(event.ID);
    }
};

template <>
struct RecordKind<PlantCareEntry>
    : PlantRecordKind<PlantCareEntry, &PlantRepository::ListPlantCareEntries, &PlantRepository::CreatePlantCareEntry,
                      &PlantRepository::UpdatePlantCareEntry>
{
    static constexpr auto Table = "PlantCareEntries";
    static constexpr auto Date = &PlantCareEntry::CareDate;
    static constexpr TextColumn<PlantCareEntry> Texts[] = {{"CareDate", &PlantCareEntry::CareDate},
                                                           {"Product", &PlantCareEntry::Product},
                                                           {"Notes", &PlantCareEntry::Notes}};
    static constexpr NumberColumn<PlantCareEntry> Numbers[] = {{"AmountMl", &PlantCareEntry::AmountMl},
                                                               {"EC", &PlantCareEntry::EC},
                                                               {"PH", &PlantCareEntry::PH},
                                                               {"RunoffMl", &PlantCareEntry::RunoffMl}};

    static bool Delete(PlantRepository& repository, const PlantCareEntry& entry)
    {
        return repository.DeletePlantCareEntry(entry.ID);
    }
};

template <>
struct RecordKind<PlantPhoto> : PlantRecordKind<PlantPhoto, &PlantRepository::ListPlantPhotos,
                                                &PlantRepository::CreatePlantPhoto, &PlantRepository::UpdatePlantPhoto>
{
    static constexpr auto Table = "PlantPhotos";
    static constexpr auto Date = &PlantPhoto::PhotoDate;
    static constexpr TextColumn<PlantPhoto> Texts[] = {
        {"PhotoDate", &PlantPhoto::PhotoDate}, {"FilePath", &PlantPhoto::FilePath}, {"Caption", &PlantPhoto::Caption}};

    static bool Delete(PlantRepository& repository, const PlantPhoto& photo)
    {
        return repository.DeletePlantPhoto(photo.UUID);
    }
};

template <>
struct RecordKind<PlantHealthObservation>
    : PlantRecordKind<PlantHealthObservation, &PlantRepository::ListPlantHealthObservations,
                      &PlantRepository::CreatePlantHealthObservation, &PlantRepository::UpdatePlantHealthObservation>
{
    static constexpr auto Table = "PlantHealthObservations";
    static constexpr auto Date = &PlantHealthObservation::ObservationDate;
    static constexpr TextColumn<PlantHealthObservation> Texts[] = {
        {"ObservationDate", &PlantHealthObservation::ObservationDate},
        {"Issue", &PlantHealthObservation::Issue},
        {"Treatment", &PlantHealthObservation::Treatment},
        {"Notes", &PlantHealthObservation::Notes}};

    static bool Delete(PlantRepository& repository, const PlantHealthObservation& observation)
    {
        return repository.DeletePlantHealthObservation(observation.ID);
    }
};

template <>
struct RecordKind<PlantJournalEntry>
    : PlantRecordKind<PlantJournalEntry, &PlantRepository::ListPlantJournalEntries,
                      &PlantRepository::CreatePlantJournalEntry, &PlantRepository::UpdatePlantJournalEntry>
{
    static constexpr auto Table = "PlantJournalEntries";
    static constexpr auto Date = &PlantJournalEntry::EntryDate;
    static constexpr TextColumn<PlantJournalEntry> Texts[] = {{"EntryDate", &PlantJournalEntry::EntryDate},
                                                              {"Details", &PlantJournalEntry::Details}};

    static bool Delete(PlantRepository& repository, const PlantJournalEntry& entry)
    {
        return repository.DeletePlantJournalEntry(entry.ID);
    }
};

// Names the instances of a typed test after the tables.
struct TableName
{
    template <typename Type> static std::string GetName(int /*index*/) { return RecordKind<Type>::Table; }
};

template <typename Type> class RecordKindTest : public JournalTest
{
  protected:
    RecordKindTest() : Basil(NewPlant("Basil")), Mint(NewPlant("Mint")) {}

    // A record with only the mandatory values.
    Type Bare() const
    {
        Type record;
        if constexpr (requires { record.PlantUUID; })
            record.PlantUUID = Basil.UUID;
        if constexpr (requires { record.FilePath; })
            record.FilePath = "leaf.jpg";
        if constexpr (requires { record.Issue; })
            record.Issue = "Aphids";
        if constexpr (std::is_same_v<Type, Strain>)
            record.Name = "Genovese";
        return record;
    }

    bool Create(Type& record) { return RecordKind<Type>::Create(Repository, record); }
    bool Update(Type& record) { return RecordKind<Type>::Update(Repository, record); }

    Type New()
    {
        Type record = Bare();
        EXPECT_TRUE(Create(record));
        return record;
    }

    Type Stored(Type record)
    {
        EXPECT_TRUE(RecordKind<Type>::Read(Repository, record));
        return record;
    }

    // The value of a column in the record's row.
    std::string Value(const std::string& column, const Type& record) const
    {
        return QueryRows("SELECT " + column + " FROM " + RecordKind<Type>::Table +
                         " WHERE ID=" + std::to_string(record.ID) + ";")
            .at(0)
            .at(0);
    }

    Plant Basil;
    Plant Mint;
};

} // namespace support
