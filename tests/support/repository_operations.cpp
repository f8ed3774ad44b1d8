#include "support/repository_operations.h"

#include <limits>
#include <ostream>
#include <stdexcept>

namespace support
{

namespace
{

using R = PlantRepository;

// A list into a vector that is not empty before.
template <typename Record> auto ListOf(bool (PlantRepository::*list)(const std::string&, std::vector<Record>&))
{
    return [list](PlantRepository& repository, SampleRecords& sample)
    {
        std::vector<Record> records(1);
        return (repository.*list)(sample.Mother.UUID, records);
    };
}

template <typename Record> auto ListAll(bool (PlantRepository::*list)(std::vector<Record>&))
{
    return [list](PlantRepository& repository, SampleRecords&)
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

std::vector<Operation> PlantCalls()
{
    return {
        {"ListPlants", ListAll(&R::ListPlants)},
        {"GetPlant", [](R& r, SampleRecords& g) { return r.GetPlant(g.Mother.UUID, g.Clone); }},
        {"CreatePlant",
         [](R& r, SampleRecords&)
         {
             Plant seedling = Seedling();
             return r.CreatePlant(seedling);
         }},
        {"CreatePlantOfANewStrainWithAMother",
         [](R& r, SampleRecords& g)
         {
             Plant seedling = Seedling();
             seedling.Strain = "a new strain";
             seedling.MotherPlantUUID = g.Clone.UUID;
             return r.CreatePlant(seedling);
         }},
        {"UpdatePlant",
         [](R& r, SampleRecords& g)
         {
             g.Mother.Strain = "a new strain";
             g.Mother.Tent = "another tent";
             return r.UpdatePlant(g.Mother);
         }},
        {"UpdatePlantWithAMother",
         [](R& r, SampleRecords& g)
         {
             g.Clone.Tent = "another tent";
             return r.UpdatePlant(g.Clone);
         }},
        {"DeletePlant", [](R& r, SampleRecords& g) { return r.DeletePlant(g.Mother.UUID); }},
    };
}

std::vector<Operation> StrainCalls()
{
    return {
        {"ListStrains", ListAll(&R::ListStrains)},
        {"GetStrain", [](R& r, SampleRecords& g) { return r.GetStrain(g.Kind.ID, g.Unused); }},
        {"CreateStrain",
         [](R& r, SampleRecords&)
         {
             Strain strain;
             strain.Name = "a new strain";
             return r.CreateStrain(strain);
         }},
        {"UpdateStrain",
         [](R& r, SampleRecords& g)
         {
             g.Kind.Breeder = "a breeder";
             return r.UpdateStrain(g.Kind);
         }},
        {"UpdateStrainToANewName",
         [](R& r, SampleRecords& g)
         {
             g.Kind.Name = "a new name";
             return r.UpdateStrain(g.Kind);
         }},
        {"DeleteStrain", [](R& r, SampleRecords& g) { return r.DeleteStrain(g.Unused.ID); }},
        {"GetStrainSummary",
         [](R& r, SampleRecords& g)
         {
             StrainSummary summary;
             return r.GetStrainSummary(g.Kind.ID, summary);
         }},
    };
}

std::vector<Operation> EventCalls()
{
    return {
        {"ListPlantEvents", ListOf(&R::ListPlantEvents)},
        {"CreatePlantEvent", [](R& r, SampleRecords& g) { return r.CreatePlantEvent(g.Event); }},
        {"UpdatePlantEvent",
         [](R& r, SampleRecords& g)
         {
             g.Event.Type = PlantEventType::Flip;
             return r.UpdatePlantEvent(g.Event);
         }},
        {"DeletePlantEvent", [](R& r, SampleRecords& g) { return r.DeletePlantEvent(g.Event.ID); }},
    };
}

std::vector<Operation> CareCalls()
{
    return {
        {"ListPlantCareEntries", ListOf(&R::ListPlantCareEntries)},
        {"CreatePlantCareEntry", [](R& r, SampleRecords& g) { return r.CreatePlantCareEntry(g.Care); }},
        {"UpdatePlantCareEntry",
         [](R& r, SampleRecords& g)
         {
             g.Care.AmountMl = 500;
             return r.UpdatePlantCareEntry(g.Care);
         }},
        {"UpdatePlantCareEntryWithoutAnEvent",
         [](R& r, SampleRecords& g) { return r.UpdatePlantCareEntry(g.Unlinked); }},
        {"DeletePlantCareEntry", [](R& r, SampleRecords& g) { return r.DeletePlantCareEntry(g.Care.ID); }},
        {"DeletePlantCareEntryWithoutAnEvent",
         [](R& r, SampleRecords& g) { return r.DeletePlantCareEntry(g.Unlinked.ID); }},
    };
}

std::vector<Operation> HarvestCalls()
{
    return {
        {"GetHarvestRecord",
         [](R& r, SampleRecords& g)
         {
             HarvestRecord record;
             return r.GetHarvestRecord(g.Mother.UUID, record);
         }},
        {"SaveHarvestRecordOfAnotherPlant",
         [](R& r, SampleRecords& g)
         {
             HarvestRecord record;
             record.HarvestDate = "2020-05-21";
             return r.SaveHarvestRecord(g.Clone, record);
         }},
        {"SaveHarvestRecordAgain",
         [](R& r, SampleRecords& g)
         {
             g.Harvest.DryWeightG = 777.42;
             return r.SaveHarvestRecord(g.Mother, g.Harvest);
         }},
        {"DeleteHarvestRecord", [](R& r, SampleRecords& g) { return r.DeleteHarvestRecord(g.Mother.UUID); }},
    };
}

std::vector<Operation> PhotoCalls()
{
    return {
        {"ListPlantPhotos", ListOf(&R::ListPlantPhotos)},
        {"CreatePlantPhoto",
         [](R& r, SampleRecords& g)
         {
             g.Photo.UUID = "55555555-5555-4555-8555-555555555555";
             return r.CreatePlantPhoto(g.Photo);
         }},
        {"UpdatePlantPhoto",
         [](R& r, SampleRecords& g)
         {
             g.Photo.Caption = "a caption";
             return r.UpdatePlantPhoto(g.Photo);
         }},
        {"DeletePlantPhoto", [](R& r, SampleRecords& g) { return r.DeletePlantPhoto(g.Photo.UUID); }},
    };
}

std::vector<Operation> HealthCalls()
{
    return {
        {"ListPlantHealthObservations", ListOf(&R::ListPlantHealthObservations)},
        {"CreatePlantHealthObservation",
         [](R& r, SampleRecords& g) { return r.CreatePlantHealthObservation(g.Observation); }},
        {"UpdatePlantHealthObservation",
         [](R& r, SampleRecords& g)
         {
             g.Observation.Severity = 4;
             return r.UpdatePlantHealthObservation(g.Observation);
         }},
        {"DeletePlantHealthObservation",
         [](R& r, SampleRecords& g) { return r.DeletePlantHealthObservation(g.Observation.ID); }},
    };
}

std::vector<Operation> JournalEntryCalls()
{
    return {
        {"ListPlantJournalEntries", ListOf(&R::ListPlantJournalEntries)},
        {"CreatePlantJournalEntry", [](R& r, SampleRecords& g) { return r.CreatePlantJournalEntry(g.Entry); }},
        {"UpdatePlantJournalEntry",
         [](R& r, SampleRecords& g)
         {
             g.Entry.Type = PlantJournalType::Milestone;
             return r.UpdatePlantJournalEntry(g.Entry);
         }},
        {"DeletePlantJournalEntry", [](R& r, SampleRecords& g) { return r.DeletePlantJournalEntry(g.Entry.ID); }},
    };
}

} // namespace

std::ostream& operator<<(std::ostream& out, const Operation& operation)
{
    return out << operation.Name;
}

const std::vector<Operation>& Operations()
{
    static const std::vector<Operation> operations = []
    {
        std::vector<Operation> all;
        for (const auto& group : {PlantCalls(), StrainCalls(), EventCalls(), CareCalls(), HarvestCalls(), PhotoCalls(),
                                  HealthCalls(), JournalEntryCalls()})
            all.insert(all.end(), group.begin(), group.end());
        return all;
    }();
    return operations;
}

const std::vector<Operation>& RefusedOperations()
{
    static const std::vector<Operation> operations = {
        {"UpdateStrainToATakenName",
         [](R& r, SampleRecords& g)
         {
             g.Kind.Name = g.Unused.Name;
             return r.UpdateStrain(g.Kind);
         }},
        {"CreatePlantCareEntryOfNoPlant",
         [](R& r, SampleRecords& g)
         {
             g.Care.PlantUUID = "nobody";
             return r.CreatePlantCareEntry(g.Care);
         }},
        {"CreatePlantCareEntryWithoutANumber",
         [](R& r, SampleRecords& g)
         {
             g.Care.RunoffMl = std::numeric_limits<double>::quiet_NaN();
             return r.CreatePlantCareEntry(g.Care);
         }},
        {"UpdatePlantCareEntryWithALostEvent",
         [](R& r, SampleRecords& g)
         {
             g.Care.TimelineEventID = 4711;
             return r.UpdatePlantCareEntry(g.Care);
         }},
        {"SaveHarvestRecordOfAHarvestedPlant",
         [](R& r, SampleRecords& g)
         {
             HarvestRecord another;
             return r.SaveHarvestRecord(g.Mother, another);
         }},
    };
    return operations;
}

} // namespace support
