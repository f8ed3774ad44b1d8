#include "validation/stored_records.h"

#include <ostream>
#include <stdexcept>

namespace support
{

namespace
{

// The sample records as every journal of them stores them.
SampleRecords Sample()
{
    PlantDatabase database;
    if (!database.Open(":memory:"))
        throw std::runtime_error(database.LastError());
    PlantRepository repository(database);
    return StoreSampleRecords(repository);
}

template <typename Record, typename Change> Record Changed(Record record, const Change& change)
{
    change(record);
    return record;
}

constexpr auto AsNew = [](auto& record)
{
    record.ID = 0;
    if constexpr (requires { record.UUID; })
        record.UUID = "33333333-3333-4333-8333-333333333333";
};
constexpr auto OfUnknownPlant = [](auto& record)
{
    record.ID = 0;
    record.PlantUUID = "unknown";
};

// A text that needs more pages than the file has.
const std::string& LongText()
{
    static const std::string text(100'000, 'x');
    return text;
}

// The clone has no harvest record yet.
constexpr auto OfClone = [](auto& record)
{
    record = {};
    record.PlantUUID = "22222222-2222-4222-8222-222222222222";
    record.Notes = LongText();
};

std::vector<StoredRecord> AcceptedPlantsAndStrains(const SampleRecords& sample)
{
    const std::string& text = LongText();
    return {
        StoredRecordOf("CreateStrain", false,
                       Changed(sample.Kind,
                               [&](Strain& strain)
                               {
                                   strain.ID = 0;
                                   strain.Name = text;
                               })),
        StoredRecordOf("UpdateStrain", true, Changed(sample.Kind, [&](Strain& strain) { strain.Name = text; })),
        StoredRecordOf("CreatePlant", false,
                       Changed(sample.Clone,
                               [&](Plant& plant)
                               {
                                   AsNew(plant);
                                   plant.Notes = text;
                               })),
        StoredRecordOf("CreatePlantOfANewStrain", false,
                       Changed(sample.Clone,
                               [&](Plant& plant)
                               {
                                   AsNew(plant);
                                   plant.Strain = text;
                               })),
        StoredRecordOf("UpdatePlant", false, Changed(sample.Clone, [&](Plant& plant) { plant.Notes = text; })),
    };
}

std::vector<StoredRecord> AcceptedEvents(const SampleRecords& sample)
{
    const std::string& text = LongText();
    return {
        StoredRecordOf("CreatePlantEvent", false,
                       Changed(sample.Event,
                               [&](PlantEvent& event)
                               {
                                   event.ID = 0;
                                   event.Details = text;
                               })),
        StoredRecordOf("UpdatePlantEvent", false,
                       Changed(sample.Event, [&](PlantEvent& event) { event.Details = text; })),
        StoredRecordOf("CreatePlantCareEntry", true, Changed(sample.Care, OfClone)),
        StoredRecordOf("UpdatePlantCareEntry", true,
                       Changed(sample.Care, [&](PlantCareEntry& entry) { entry.Notes = text; })),
        StoredRecordOf("UpdatePlantCareEntryWithoutAnEvent", true,
                       Changed(sample.Unlinked, [&](PlantCareEntry& entry) { entry.Notes = text; })),
        StoredRecordOf("CreateHarvestRecord", true, Changed(sample.Harvest, OfClone)),
        StoredRecordOf("UpdateHarvestRecord", true,
                       Changed(sample.Harvest, [&](HarvestRecord& record) { record.Notes = text; })),
    };
}

std::vector<StoredRecord> AcceptedNotes(const SampleRecords& sample)
{
    const std::string& text = LongText();
    return {
        StoredRecordOf("CreatePlantPhoto", false,
                       Changed(sample.Photo,
                               [&](PlantPhoto& photo)
                               {
                                   AsNew(photo);
                                   photo.Caption = text;
                               })),
        StoredRecordOf("UpdatePlantPhoto", false,
                       Changed(sample.Photo, [&](PlantPhoto& photo) { photo.Caption = text; })),
        StoredRecordOf("CreatePlantHealthObservation", false,
                       Changed(sample.Observation,
                               [&](PlantHealthObservation& observation)
                               {
                                   observation.ID = 0;
                                   observation.Notes = text;
                               })),
        StoredRecordOf(
            "UpdatePlantHealthObservation", false,
            Changed(sample.Observation, [&](PlantHealthObservation& observation) { observation.Notes = text; })),
        StoredRecordOf("CreatePlantJournalEntry", false,
                       Changed(sample.Entry,
                               [&](PlantJournalEntry& entry)
                               {
                                   entry.ID = 0;
                                   entry.Details = text;
                               })),
        StoredRecordOf("UpdatePlantJournalEntry", false,
                       Changed(sample.Entry, [&](PlantJournalEntry& entry) { entry.Details = text; })),
    };
}

std::vector<StoredRecord> Accepted()
{
    const SampleRecords sample = Sample();
    std::vector<StoredRecord> all = AcceptedPlantsAndStrains(sample);
    for (const auto& some : {AcceptedEvents(sample), AcceptedNotes(sample)})
        all.insert(all.end(), some.begin(), some.end());
    return all;
}

std::vector<StoredRecord> RefusedByTheJournal()
{
    const SampleRecords sample = Sample();
    const auto withUnknownEvent = [](auto& record) { record.TimelineEventID = 99; };
    return {
        StoredRecordOf("AStrainWithAUsedName", false, Changed(sample.Kind, [](Strain& strain) { strain.ID = 0; })),
        StoredRecordOf("AnUnknownStrain", true, Changed(sample.Kind, [](Strain& strain) { strain.ID = 99; })),
        StoredRecordOf("AStrainRenamedToAUsedName", true,
                       Changed(sample.Kind, [&](Strain& strain) { strain.Name = sample.Unused.Name; })),
        StoredRecordOf("APlantWithAUsedUUID", false, Changed(sample.Clone, [](Plant& plant) { plant.ID = 0; })),
        StoredRecordOf("APlantOfAnUnknownMother", false,
                       Changed(sample.Clone, [](Plant& plant) { plant.MotherPlantUUID = "unknown"; })),
        StoredRecordOf("AMotherThatDescends", false,
                       Changed(sample.Mother, [&](Plant& plant) { plant.MotherPlantUUID = sample.Clone.UUID; })),
        StoredRecordOf("AnEventOfAnUnknownPlant", false, Changed(sample.Event, OfUnknownPlant)),
        StoredRecordOf("ACareEntryOfAnUnknownPlant", true, Changed(sample.Care, OfUnknownPlant)),
        StoredRecordOf("ACareEntryOfAnUnknownEvent", true, Changed(sample.Care, withUnknownEvent)),
        StoredRecordOf("AnUnlinkedCareEntryOfAnUnknownPlant", true,
                       Changed(sample.Unlinked, [](PlantCareEntry& entry) { entry.PlantUUID = "unknown"; })),
        StoredRecordOf("ASecondHarvestRecord", true, Changed(sample.Harvest, AsNew)),
        StoredRecordOf("AHarvestRecordOfAnUnknownPlant", true, Changed(sample.Harvest, OfUnknownPlant)),
        StoredRecordOf("AHarvestRecordOfAnUnknownEvent", true, Changed(sample.Harvest, withUnknownEvent)),
        StoredRecordOf("APhotoWithAUsedUUID", false, Changed(sample.Photo, [](PlantPhoto& photo) { photo.ID = 0; })),
        StoredRecordOf("APhotoOfAnUnknownPlant", false,
                       Changed(sample.Photo,
                               [](PlantPhoto& photo)
                               {
                                   OfUnknownPlant(photo);
                                   photo.UUID = "new";
                               })),
        StoredRecordOf("AnObservationOfAnUnknownPlant", false, Changed(sample.Observation, OfUnknownPlant)),
        StoredRecordOf("AJournalEntryOfAnUnknownPlant", false, Changed(sample.Entry, OfUnknownPlant)),
    };
}

std::vector<StoredRecord> RefusedByThemselves()
{
    const SampleRecords sample = Sample();
    const auto withoutPlant = [](auto& record) { record.PlantUUID.clear(); };
    return {
        StoredRecordOf("AStrainWithoutAName", true, Changed(sample.Kind, [](Strain& strain) { strain.Name.clear(); })),
        StoredRecordOf("APlantThatIsItsOwnMother", false,
                       Changed(sample.Clone, [](Plant& plant) { plant.MotherPlantUUID = plant.UUID; })),
        StoredRecordOf("APlantWithoutAUUID", false, Changed(sample.Clone, [](Plant& plant) { plant.UUID.clear(); })),
        StoredRecordOf("AnEventWithoutAPlant", false, Changed(sample.Event, withoutPlant)),
        StoredRecordOf("ACareEntryWithoutAPlant", true, Changed(sample.Care, withoutPlant)),
        StoredRecordOf("AHarvestRecordWithoutAPlant", true, Changed(sample.Harvest, withoutPlant)),
        StoredRecordOf("APhotoWithoutAPlant", false, Changed(sample.Photo, withoutPlant)),
        StoredRecordOf("APhotoWithoutAUUID", false,
                       Changed(sample.Photo, [](PlantPhoto& photo) { photo.UUID.clear(); })),
        StoredRecordOf("APhotoWithoutAPath", false,
                       Changed(sample.Photo, [](PlantPhoto& photo) { photo.FilePath.clear(); })),
        StoredRecordOf("AnObservationWithoutAnIssue", false,
                       Changed(sample.Observation, [](auto& observation) { observation.Issue.clear(); })),
        StoredRecordOf("AJournalEntryWithoutAPlant", false, Changed(sample.Entry, withoutPlant)),
    };
}

} // namespace

std::ostream& operator<<(std::ostream& out, const StoredRecord& record)
{
    return out << record.Name;
}

const std::vector<StoredRecord>& AcceptedRecords()
{
    static const std::vector<StoredRecord> records = Accepted();
    return records;
}

const std::vector<StoredRecord>& RecordsRefusedByTheJournal()
{
    static const std::vector<StoredRecord> records = RefusedByTheJournal();
    return records;
}

const std::vector<StoredRecord>& RecordsRefusedByThemselves()
{
    static const std::vector<StoredRecord> records = RefusedByThemselves();
    return records;
}

} // namespace support
