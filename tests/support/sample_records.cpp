#include "support/sample_records.h"

#include <stdexcept>

namespace support
{

namespace
{

void Require(bool done)
{
    if (!done)
        throw std::runtime_error("the sample records could not be stored");
}

} // namespace

SampleRecords StoreSampleRecords(PlantRepository& repository)
{
    const std::string text = "a text that is too long to be kept without an allocation";
    SampleRecords sample;

    sample.Kind.Name = "Kind " + text;
    Require(repository.CreateStrain(sample.Kind));
    sample.Unused.Name = "Unused";
    Require(repository.CreateStrain(sample.Unused));

    sample.Mother.UUID = "11111111-1111-4111-8111-111111111111";
    sample.Mother.Name = "Mother";
    sample.Mother.Strain = sample.Kind.Name;
    sample.Mother.Notes = text;
    Require(repository.CreatePlant(sample.Mother));
    sample.Clone.UUID = "22222222-2222-4222-8222-222222222222";
    sample.Clone.Name = "Clone";
    sample.Clone.MotherPlantUUID = sample.Mother.UUID;
    Require(repository.CreatePlant(sample.Clone));

    sample.Event.PlantUUID = sample.Mother.UUID;
    sample.Event.Details = text;
    Require(repository.CreatePlantEvent(sample.Event));

    sample.Care.PlantUUID = sample.Mother.UUID;
    sample.Care.Notes = text;
    Require(repository.CreatePlantCareEntry(sample.Care));
    sample.Unlinked = sample.Care;
    Require(repository.CreatePlantCareEntry(sample.Unlinked));
    Require(repository.DeletePlantEvent(sample.Unlinked.TimelineEventID));
    sample.Unlinked.TimelineEventID = 0;

    sample.Harvest.HarvestDate = "2020-05-20";
    sample.Harvest.Notes = text;
    Require(repository.SaveHarvestRecord(sample.Mother, sample.Harvest));

    sample.Photo.UUID = "44444444-4444-4444-8444-444444444444";
    sample.Photo.PlantUUID = sample.Mother.UUID;
    sample.Photo.FilePath = text;
    Require(repository.CreatePlantPhoto(sample.Photo));

    sample.Observation.PlantUUID = sample.Mother.UUID;
    sample.Observation.Issue = text;
    Require(repository.CreatePlantHealthObservation(sample.Observation));

    sample.Entry.PlantUUID = sample.Mother.UUID;
    sample.Entry.Details = text;
    Require(repository.CreatePlantJournalEntry(sample.Entry));
    return sample;
}

} // namespace support
