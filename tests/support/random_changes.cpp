#include "support/random_changes.h"

#include <gtest/gtest.h>

namespace support
{

JournalChange RandomChanges::Next(PlantRepository& repository)
{
    std::vector<Plant> plants;
    EXPECT_TRUE(repository.ListPlants(plants));
    if (plants.empty() || (plants.size() < 6 && Random() % 8 == 0))
        return NewPlant(plants);
    const Plant plant = OneOf(plants);
    switch (Random() % 12)
    {
    case 0:
        if (plants.size() >= 4)
            return {"", [=](PlantRepository& r) { return r.DeletePlant(plant.UUID); }};
        return ChangedPlant(plant);
    case 1:
        return ChangedPlant(plant);
    case 2:
        return ChangedStrain(repository);
    case 3:
    case 4:
    case 5:
        return ChangedCare(repository, plant);
    case 6:
    case 7:
        return ChangedHarvest(repository, plant);
    case 8:
        return ChangedEvent(repository, plant);
    case 9:
        return ChangedPhoto(repository, plant);
    case 10:
        return ChangedObservation(repository, plant);
    default:
        return ChangedEntry(repository, plant);
    }
}

JournalChange RandomChanges::NewPlant(const std::vector<Plant>& plants)
{
    Plant plant;
    plant.UUID = NewName("plant");
    plant.Name = Text();
    plant.Strain = "strain " + std::to_string(Random() % 4);
    if (!plants.empty())
        plant.MotherPlantUUID = OneOf(plants).UUID;
    return {plant.Strain, [=](PlantRepository& r)
            {
                Plant copy = plant;
                return r.CreatePlant(copy);
            }};
}

JournalChange RandomChanges::ChangedPlant(Plant plant)
{
    plant.Strain = "strain " + std::to_string(Random() % 4);
    plant.Notes = Text();
    return {plant.Strain, [=](PlantRepository& r) { return r.UpdatePlant(plant); }};
}

JournalChange RandomChanges::ChangedStrain(PlantRepository& repository)
{
    std::vector<Strain> strains;
    EXPECT_TRUE(repository.ListStrains(strains));
    Strain strain = OneOf(strains); // every plant has one
    strain.Name = NewName("strain called");
    strain.Notes = Text();
    return {"", [=](PlantRepository& r) { return r.UpdateStrain(strain); }};
}

// The event of a care entry or a harvest record is changed by these, but may be deleted.
JournalChange RandomChanges::ChangedEvent(PlantRepository& repository, const Plant& plant)
{
    std::vector<PlantEvent> events;
    EXPECT_TRUE(repository.ListPlantEvents(plant.UUID, events));
    PlantEvent event;
    event.PlantUUID = plant.UUID;
    if (!events.empty() && Random() % 2 == 0)
        event = OneOf(events);
    if (event.ID != 0 && (event.Type != PlantEventType::Note || Random() % 2 == 0))
        return {"", [=](PlantRepository& r) { return r.DeletePlantEvent(event.ID); }};
    event.Details = Text();
    return {"", [=](PlantRepository& r)
            {
                PlantEvent copy = event;
                return copy.ID == 0 ? r.CreatePlantEvent(copy) : r.UpdatePlantEvent(copy);
            }};
}

JournalChange RandomChanges::ChangedHarvest(PlantRepository& repository, const Plant& plant)
{
    HarvestRecord record;
    if (repository.GetHarvestRecord(plant.UUID, record) && Random() % 3 == 0)
        return {"", [=](PlantRepository& r) { return r.DeleteHarvestRecord(plant.UUID); }};
    record.HarvestDate = Date();
    record.Notes = Text();
    return {"", [=](PlantRepository& r)
            {
                Plant harvested = plant;
                HarvestRecord copy = record;
                return r.SaveHarvestRecord(harvested, copy);
            }};
}

template <typename Record, typename Update, typename Remove, typename Alter>
JournalChange RandomChanges::ChangedRecord(PlantRepository& repository, const Plant& plant,
                                           bool (PlantRepository::*list)(const std::string&, std::vector<Record>&),
                                           bool (PlantRepository::*create)(Record&), Update update,
                                           const Remove& remove, const Alter& alter)
{
    std::vector<Record> records;
    EXPECT_TRUE((repository.*list)(plant.UUID, records));
    Record record;
    record.PlantUUID = plant.UUID;
    if (!records.empty() && Random() % 2 == 0)
        record = OneOf(records);
    if (record.ID != 0 && Random() % 2 == 0)
        return {"", [=](PlantRepository& r) { return remove(r, record); }};
    alter(record);
    return {"", [=](PlantRepository& r)
            {
                Record copy = record;
                return copy.ID == 0 ? (r.*create)(copy) : (r.*update)(copy);
            }};
}

JournalChange RandomChanges::ChangedCare(PlantRepository& repository, const Plant& plant)
{
    using R = PlantRepository;
    return ChangedRecord(
        repository, plant, &R::ListPlantCareEntries, &R::CreatePlantCareEntry, &R::UpdatePlantCareEntry,
        [](R& r, const PlantCareEntry& entry) { return r.DeletePlantCareEntry(entry.ID); },
        [&](PlantCareEntry& entry)
        {
            entry.CareDate = Date();
            entry.Action = Random() % 2 == 0 ? PlantCareAction::Feed : PlantCareAction::Water;
            entry.Notes = Text();
        });
}

JournalChange RandomChanges::ChangedPhoto(PlantRepository& repository, const Plant& plant)
{
    using R = PlantRepository;
    return ChangedRecord(
        repository, plant, &R::ListPlantPhotos, &R::CreatePlantPhoto, &R::UpdatePlantPhoto,
        [](R& r, const PlantPhoto& photo) { return r.DeletePlantPhoto(photo.UUID); },
        [&](PlantPhoto& photo)
        {
            if (photo.UUID.empty())
                photo.UUID = NewName("photo");
            photo.FilePath = Text();
        });
}

JournalChange RandomChanges::ChangedObservation(PlantRepository& repository, const Plant& plant)
{
    using R = PlantRepository;
    return ChangedRecord(
        repository, plant, &R::ListPlantHealthObservations, &R::CreatePlantHealthObservation,
        &R::UpdatePlantHealthObservation,
        [](R& r, const PlantHealthObservation& o) { return r.DeletePlantHealthObservation(o.ID); },
        [&](PlantHealthObservation& o) { o.Issue = Text(); });
}

JournalChange RandomChanges::ChangedEntry(PlantRepository& repository, const Plant& plant)
{
    using R = PlantRepository;
    return ChangedRecord(
        repository, plant, &R::ListPlantJournalEntries, &R::CreatePlantJournalEntry, &R::UpdatePlantJournalEntry,
        [](R& r, const PlantJournalEntry& entry) { return r.DeletePlantJournalEntry(entry.ID); },
        [&](PlantJournalEntry& entry) { entry.Details = Text(); });
}

std::string RandomChanges::NewName(const std::string& prefix)
{
    return prefix + ' ' + std::to_string(++Names);
}

std::string RandomChanges::Date()
{
    return "2020-05-" + std::to_string(10 + Random() % 20);
}

// Some texts fill more than a page of the file.
std::string RandomChanges::Text()
{
    const std::size_t longest = Random() % 8 == 0 ? 9000 : 60;
    return NewName("text") + std::string(static_cast<std::size_t>(Random() % longest), '.');
}

} // namespace support
