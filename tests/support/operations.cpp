#include "support/operations.h"

#include <limits>
#include <ostream>
#include <stdexcept>

namespace support
{

namespace
{

void Require(bool done)
{
    if (!done)
        throw std::runtime_error("the garden could not be planted");
}

// A list into a vector that is not empty before.
template <typename Record> auto ListOf(bool (PlantRepository::*list)(const std::string&, std::vector<Record>&))
{
    return [list](PlantRepository& repository, Garden& garden)
    {
        std::vector<Record> records(1);
        return (repository.*list)(garden.Mother.UUID, records);
    };
}

template <typename Record> auto ListAll(bool (PlantRepository::*list)(std::vector<Record>&))
{
    return [list](PlantRepository& repository, Garden&)
    {
        std::vector<Record> records(1);
        return (repository.*list)(records);
    };
}

Plant Seedling()
{
    Plant seedling;
    seedling.UUID = "33333333-3333-4333-8333-333333333333";
    seedling.Name = "Seedling with a name that is too long to be kept without an allocation";
    return seedling;
}

} // namespace

Garden PlantGarden(PlantRepository& repository)
{
    const std::string text = "a text that is too long to be kept without an allocation";
    Garden garden;

    garden.Kind.Name = "Kind " + text;
    Require(repository.CreateStrain(garden.Kind));
    garden.Unused.Name = "Unused";
    Require(repository.CreateStrain(garden.Unused));

    garden.Mother.UUID = "11111111-1111-4111-8111-111111111111";
    garden.Mother.Name = "Mother";
    garden.Mother.Strain = garden.Kind.Name;
    garden.Mother.Notes = text;
    Require(repository.CreatePlant(garden.Mother));
    garden.Clone.UUID = "22222222-2222-4222-8222-222222222222";
    garden.Clone.Name = "Clone";
    garden.Clone.MotherPlantUUID = garden.Mother.UUID;
    Require(repository.CreatePlant(garden.Clone));

    garden.Event.PlantUUID = garden.Mother.UUID;
    garden.Event.Details = text;
    Require(repository.CreatePlantEvent(garden.Event));

    garden.Care.PlantUUID = garden.Mother.UUID;
    garden.Care.Notes = text;
    Require(repository.CreatePlantCareEntry(garden.Care));
    garden.Unlinked = garden.Care;
    Require(repository.CreatePlantCareEntry(garden.Unlinked));
    Require(repository.DeletePlantEvent(garden.Unlinked.TimelineEventID));
    garden.Unlinked.TimelineEventID = 0;

    garden.Harvest.HarvestDate = "2020-05-20";
    garden.Harvest.Notes = text;
    Require(repository.SaveHarvestRecord(garden.Mother, garden.Harvest));

    garden.Photo.UUID = "44444444-4444-4444-8444-444444444444";
    garden.Photo.PlantUUID = garden.Mother.UUID;
    garden.Photo.FilePath = text;
    Require(repository.CreatePlantPhoto(garden.Photo));

    garden.Observation.PlantUUID = garden.Mother.UUID;
    garden.Observation.Issue = text;
    Require(repository.CreatePlantHealthObservation(garden.Observation));

    garden.Entry.PlantUUID = garden.Mother.UUID;
    garden.Entry.Details = text;
    Require(repository.CreatePlantJournalEntry(garden.Entry));
    return garden;
}

std::ostream& operator<<(std::ostream& out, const Operation& operation)
{
    return out << operation.Name;
}

const std::vector<Operation>& Operations()
{
    using R = PlantRepository;
    static const std::vector<Operation> operations = {
        {"ListPlants", ListAll(&R::ListPlants)},
        {"GetPlant", [](R& r, Garden& g) { return r.GetPlant(g.Mother.UUID, g.Clone); }},
        {"CreatePlant",
         [](R& r, Garden&)
         {
             Plant seedling = Seedling();
             return r.CreatePlant(seedling);
         }},
        {"CreatePlantOfANewStrainWithAMother",
         [](R& r, Garden& g)
         {
             Plant seedling = Seedling();
             seedling.Strain = "a new strain";
             seedling.MotherPlantUUID = g.Clone.UUID;
             return r.CreatePlant(seedling);
         }},
        {"UpdatePlant",
         [](R& r, Garden& g)
         {
             g.Mother.Strain = "a new strain";
             g.Mother.Tent = "another tent";
             return r.UpdatePlant(g.Mother);
         }},
        {"UpdatePlantWithAMother",
         [](R& r, Garden& g)
         {
             g.Clone.Tent = "another tent";
             return r.UpdatePlant(g.Clone);
         }},
        {"DeletePlant", [](R& r, Garden& g) { return r.DeletePlant(g.Mother.UUID); }},

        {"ListStrains", ListAll(&R::ListStrains)},
        {"GetStrain", [](R& r, Garden& g) { return r.GetStrain(g.Kind.ID, g.Unused); }},
        {"CreateStrain",
         [](R& r, Garden&)
         {
             Strain strain;
             strain.Name = "a new strain";
             return r.CreateStrain(strain);
         }},
        {"UpdateStrain",
         [](R& r, Garden& g)
         {
             g.Kind.Breeder = "a breeder";
             return r.UpdateStrain(g.Kind);
         }},
        {"UpdateStrainToANewName",
         [](R& r, Garden& g)
         {
             g.Kind.Name = "a new name";
             return r.UpdateStrain(g.Kind);
         }},
        {"DeleteStrain", [](R& r, Garden& g) { return r.DeleteStrain(g.Unused.ID); }},
        {"GetStrainSummary",
         [](R& r, Garden& g)
         {
             StrainSummary summary;
             return r.GetStrainSummary(g.Kind.ID, summary);
         }},

        {"ListPlantEvents", ListOf(&R::ListPlantEvents)},
        {"CreatePlantEvent", [](R& r, Garden& g) { return r.CreatePlantEvent(g.Event); }},
        {"UpdatePlantEvent",
         [](R& r, Garden& g)
         {
             g.Event.Type = PlantEventType::Flip;
             return r.UpdatePlantEvent(g.Event);
         }},
        {"DeletePlantEvent", [](R& r, Garden& g) { return r.DeletePlantEvent(g.Event.ID); }},

        {"ListPlantCareEntries", ListOf(&R::ListPlantCareEntries)},
        {"CreatePlantCareEntry", [](R& r, Garden& g) { return r.CreatePlantCareEntry(g.Care); }},
        {"UpdatePlantCareEntry",
         [](R& r, Garden& g)
         {
             g.Care.AmountMl = 500;
             return r.UpdatePlantCareEntry(g.Care);
         }},
        {"UpdatePlantCareEntryWithoutAnEvent", [](R& r, Garden& g) { return r.UpdatePlantCareEntry(g.Unlinked); }},
        {"DeletePlantCareEntry", [](R& r, Garden& g) { return r.DeletePlantCareEntry(g.Care.ID); }},
        {"DeletePlantCareEntryWithoutAnEvent", [](R& r, Garden& g) { return r.DeletePlantCareEntry(g.Unlinked.ID); }},

        {"GetHarvestRecord",
         [](R& r, Garden& g)
         {
             HarvestRecord record;
             return r.GetHarvestRecord(g.Mother.UUID, record);
         }},
        {"SaveHarvestRecordOfAnotherPlant",
         [](R& r, Garden& g)
         {
             HarvestRecord record;
             record.HarvestDate = "2020-05-21";
             return r.SaveHarvestRecord(g.Clone, record);
         }},
        {"SaveHarvestRecordAgain",
         [](R& r, Garden& g)
         {
             g.Harvest.DryWeightG = 777.42;
             return r.SaveHarvestRecord(g.Mother, g.Harvest);
         }},
        {"DeleteHarvestRecord", [](R& r, Garden& g) { return r.DeleteHarvestRecord(g.Mother.UUID); }},

        {"ListPlantPhotos", ListOf(&R::ListPlantPhotos)},
        {"CreatePlantPhoto",
         [](R& r, Garden& g)
         {
             g.Photo.UUID = "55555555-5555-4555-8555-555555555555";
             return r.CreatePlantPhoto(g.Photo);
         }},
        {"UpdatePlantPhoto",
         [](R& r, Garden& g)
         {
             g.Photo.Caption = "a caption";
             return r.UpdatePlantPhoto(g.Photo);
         }},
        {"DeletePlantPhoto", [](R& r, Garden& g) { return r.DeletePlantPhoto(g.Photo.UUID); }},

        {"ListPlantHealthObservations", ListOf(&R::ListPlantHealthObservations)},
        {"CreatePlantHealthObservation", [](R& r, Garden& g) { return r.CreatePlantHealthObservation(g.Observation); }},
        {"UpdatePlantHealthObservation",
         [](R& r, Garden& g)
         {
             g.Observation.Severity = 4;
             return r.UpdatePlantHealthObservation(g.Observation);
         }},
        {"DeletePlantHealthObservation",
         [](R& r, Garden& g) { return r.DeletePlantHealthObservation(g.Observation.ID); }},

        {"ListPlantJournalEntries", ListOf(&R::ListPlantJournalEntries)},
        {"CreatePlantJournalEntry", [](R& r, Garden& g) { return r.CreatePlantJournalEntry(g.Entry); }},
        {"UpdatePlantJournalEntry",
         [](R& r, Garden& g)
         {
             g.Entry.Type = PlantJournalType::Milestone;
             return r.UpdatePlantJournalEntry(g.Entry);
         }},
        {"DeletePlantJournalEntry", [](R& r, Garden& g) { return r.DeletePlantJournalEntry(g.Entry.ID); }},
    };
    return operations;
}

const std::vector<Operation>& RefusedOperations()
{
    using R = PlantRepository;
    static const std::vector<Operation> operations = {
        {"UpdateStrainToATakenName",
         [](R& r, Garden& g)
         {
             g.Kind.Name = g.Unused.Name;
             return r.UpdateStrain(g.Kind);
         }},
        {"CreatePlantCareEntryOfNoPlant",
         [](R& r, Garden& g)
         {
             g.Care.PlantUUID = "nobody";
             return r.CreatePlantCareEntry(g.Care);
         }},
        {"CreatePlantCareEntryWithoutANumber",
         [](R& r, Garden& g)
         {
             g.Care.RunoffMl = std::numeric_limits<double>::quiet_NaN();
             return r.CreatePlantCareEntry(g.Care);
         }},
        {"UpdatePlantCareEntryWithALostEvent",
         [](R& r, Garden& g)
         {
             g.Care.TimelineEventID = 4711;
             return r.UpdatePlantCareEntry(g.Care);
         }},
        {"SaveHarvestRecordOfAHarvestedPlant",
         [](R& r, Garden& g)
         {
             HarvestRecord another;
             return r.SaveHarvestRecord(g.Mother, another);
         }},
    };
    return operations;
}

} // namespace support
