#include "support/model/steps.h"

#include "support/model/random_arguments.h"
#include "testing/scratch_directory.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <type_traits>

namespace support
{

namespace
{

// A journal, its model and the arguments for the operations on them.
struct StepRunner
{
    explicit StepRunner(const std::string& path) : Journal(path), Arguments(Journal.Expected()) {}

    StepResult Run(const StepBytes& step);

    template <typename Call, typename... Types> bool Run(const char* name, const Call& call, Types&... arguments)
    {
        const auto result = Journal.Run(name, call, arguments...);
        (Arguments.Remember(arguments), ...);
        if constexpr (std::is_same_v<decltype(result), const bool>)
            return result;
        else
            return true;
    }

    SideBySide Journal;
    RandomArguments Arguments;
};

// An operation whose arguments come from the choices of a step.
struct StepOperation
{
    const char* Name;
    int Weight; // how often it is chosen, relative to the others
    bool (*Run)(StepRunner& runner, const char* name, Choices& choices);
};

template <auto Call, typename Type, RecordSource Mostly> bool OnRecord(StepRunner& runner, const char* name, Choices& c)
{
    auto record = runner.Arguments.Some<Type>(Mostly, c);
    return runner.Run(name, Call, record);
}

template <auto Call, typename Type> bool OnID(StepRunner& runner, const char* name, Choices& c)
{
    const std::int64_t id = runner.Arguments.SomeID<Type>(c);
    return runner.Run(name, Call, id);
}

template <auto Call> bool OnPlantUUID(StepRunner& runner, const char* name, Choices& c)
{
    const std::string uuid = runner.Arguments.PlantUUID(c);
    return runner.Run(name, Call, uuid);
}

// Lists the records of a plant into a vector that is not empty.
template <auto Call, typename Type> bool IntoList(StepRunner& runner, const char* name, Choices& c)
{
    const std::string uuid = runner.Arguments.PlantUUID(c);
    std::vector<Type> records = runner.Arguments.Returned<Type>();
    return runner.Run(name, Call, uuid, records);
}

std::vector<StepOperation> PlantOperations()
{
    using enum RecordSource;
    return {
        {"CreatePlant", 16, OnRecord<[](auto& j, Plant& p) { return j.CreatePlant(p); }, Plant, New>},
        {"UpdatePlant", 10, OnRecord<[](auto& j, Plant& p) { return j.UpdatePlant(p); }, Plant, File>},
        {"UpdatePlant with another mother", 8,
         [](StepRunner& runner, const char* name, Choices& c)
         {
             auto plant = runner.Arguments.Some<Plant>(File, c);
             plant.MotherPlantUUID = runner.Arguments.PlantUUID(c);
             return runner.Run(
                 name, [](auto& j, Plant& p) { return j.UpdatePlant(p); }, plant);
         }},
        {"DeletePlant", 3, OnPlantUUID<[](auto& j, const std::string& uuid) { return j.DeletePlant(uuid); }>},
        {"DuplicatePlant", 3,
         [](StepRunner& runner, const char* name, Choices& c)
         {
             auto source = runner.Arguments.Some<Plant>(File, c);
             auto copy = runner.Arguments.Some<Plant>(EarlierCall, c);
             return runner.Run(
                 name, [](auto& j, Plant& from, Plant& to) { return j.DuplicatePlant(from, to); }, source, copy);
         }},
        {"DuplicatePlant into itself", 1,
         OnRecord<[](auto& j, Plant& p) { return j.DuplicatePlant(p, p); }, Plant, File>},
        {"GetPlant", 2,
         [](StepRunner& runner, const char* name, Choices& c)
         {
             const std::string uuid = runner.Arguments.PlantUUID(c);
             auto plant = runner.Arguments.Some<Plant>(EarlierCall, c);
             return runner.Run(
                 name, [](auto& j, const std::string& key, Plant& p) { return j.GetPlant(key, p); }, uuid, plant);
         }},
        {"ListPlants", 1,
         [](StepRunner& runner, const char* name, Choices&)
         {
             std::vector<Plant> plants = runner.Arguments.Returned<Plant>();
             return runner.Run(
                 name, [](auto& j, std::vector<Plant>& out) { return j.ListPlants(out); }, plants);
         }},
    };
}

std::vector<StepOperation> StrainOperations()
{
    using enum RecordSource;
    return {
        {"CreateStrain", 6, OnRecord<[](auto& j, Strain& s) { return j.CreateStrain(s); }, Strain, New>},
        {"UpdateStrain", 10, OnRecord<[](auto& j, Strain& s) { return j.UpdateStrain(s); }, Strain, File>},
        {"DeleteStrain", 4, OnID<[](auto& j, std::int64_t id) { return j.DeleteStrain(id); }, Strain>},
        {"GetStrain", 1,
         [](StepRunner& runner, const char* name, Choices& c)
         {
             const std::int64_t id = runner.Arguments.SomeID<Strain>(c);
             auto strain = runner.Arguments.Some<Strain>(EarlierCall, c);
             return runner.Run(
                 name, [](auto& j, std::int64_t key, Strain& s) { return j.GetStrain(key, s); }, id, strain);
         }},
        {"ListStrains", 1,
         [](StepRunner& runner, const char* name, Choices&)
         {
             std::vector<Strain> strains = runner.Arguments.Returned<Strain>();
             return runner.Run(
                 name, [](auto& j, std::vector<Strain>& out) { return j.ListStrains(out); }, strains);
         }},
        {"GetStrainSummary", 1,
         [](StepRunner& runner, const char* name, Choices& c)
         {
             const std::int64_t id = runner.Arguments.SomeID<Strain>(c);
             StrainSummary summary;
             summary.StrainName = "not empty";
             summary.AverageQuality = 7;
             return runner.Run(
                 name, [](auto& j, std::int64_t key, StrainSummary& s) { return j.GetStrainSummary(key, s); }, id,
                 summary);
         }},
    };
}

std::vector<StepOperation> EventOperations()
{
    using enum RecordSource;
    return {
        {"CreatePlantEvent", 8,
         OnRecord<[](auto& j, PlantEvent& e) { return j.CreatePlantEvent(e); }, PlantEvent, New>},
        {"UpdatePlantEvent", 6,
         OnRecord<[](auto& j, PlantEvent& e) { return j.UpdatePlantEvent(e); }, PlantEvent, File>},
        {"DeletePlantEvent", 6, OnID<[](auto& j, std::int64_t id) { return j.DeletePlantEvent(id); }, PlantEvent>},
        {"ListPlantEvents", 1,
         IntoList<[](auto& j, auto& uuid, auto& out) { return j.ListPlantEvents(uuid, out); }, PlantEvent>},
    };
}

std::vector<StepOperation> CareOperations()
{
    using enum RecordSource;
    return {
        {"CreatePlantCareEntry", 12,
         OnRecord<[](auto& j, PlantCareEntry& e) { return j.CreatePlantCareEntry(e); }, PlantCareEntry, New>},
        {"UpdatePlantCareEntry", 12,
         OnRecord<[](auto& j, PlantCareEntry& e) { return j.UpdatePlantCareEntry(e); }, PlantCareEntry, File>},
        {"DeletePlantCareEntry", 5,
         OnID<[](auto& j, std::int64_t id) { return j.DeletePlantCareEntry(id); }, PlantCareEntry>},
        {"CareTimelineDetails", 1,
         OnRecord<[](auto& j, PlantCareEntry& e) { return j.CareTimelineDetails(e); }, PlantCareEntry, New>},
        {"ListPlantCareEntries", 1,
         IntoList<[](auto& j, auto& uuid, auto& out) { return j.ListPlantCareEntries(uuid, out); }, PlantCareEntry>},
    };
}

std::vector<StepOperation> HarvestOperations()
{
    using enum RecordSource;
    return {
        {"SaveHarvestRecord", 14,
         [](StepRunner& runner, const char* name, Choices& c)
         {
             auto plant = runner.Arguments.Some<Plant>(File, c);
             auto record = runner.Arguments.Some<HarvestRecord>(New, c);
             return runner.Run(
                 name, [](auto& j, Plant& p, HarvestRecord& r) { return j.SaveHarvestRecord(p, r); }, plant, record);
         }},
        {"SaveHarvestRecord again", 8,
         [](StepRunner& runner, const char* name, Choices& c)
         {
             auto record = runner.Arguments.Some<HarvestRecord>(File, c);
             Plant plant;
             plant.UUID = record.PlantUUID;
             return runner.Run(
                 name, [](auto& j, Plant& p, HarvestRecord& r) { return j.SaveHarvestRecord(p, r); }, plant, record);
         }},
        {"DeleteHarvestRecord", 3,
         OnPlantUUID<[](auto& j, const std::string& uuid) { return j.DeleteHarvestRecord(uuid); }>},
        {"GetHarvestRecord", 1,
         [](StepRunner& runner, const char* name, Choices& c)
         {
             const std::string uuid = runner.Arguments.PlantUUID(c);
             auto record = runner.Arguments.Some<HarvestRecord>(EarlierCall, c);
             return runner.Run(
                 name, [](auto& j, auto& key, HarvestRecord& r) { return j.GetHarvestRecord(key, r); }, uuid, record);
         }},
    };
}

std::vector<StepOperation> PhotoOperations()
{
    using enum RecordSource;
    return {
        {"CreatePlantPhoto", 5,
         OnRecord<[](auto& j, PlantPhoto& p) { return j.CreatePlantPhoto(p); }, PlantPhoto, New>},
        {"UpdatePlantPhoto", 5,
         OnRecord<[](auto& j, PlantPhoto& p) { return j.UpdatePlantPhoto(p); }, PlantPhoto, File>},
        {"DeletePlantPhoto", 3,
         [](StepRunner& runner, const char* name, Choices& c)
         {
             const std::string uuid = runner.Arguments.Some<PlantPhoto>(File, c).UUID;
             return runner.Run(
                 name, [](auto& j, const std::string& key) { return j.DeletePlantPhoto(key); }, uuid);
         }},
        {"ListPlantPhotos", 1,
         IntoList<[](auto& j, auto& uuid, auto& out) { return j.ListPlantPhotos(uuid, out); }, PlantPhoto>},
    };
}

std::vector<StepOperation> HealthOperations()
{
    using enum RecordSource;
    return {
        {"CreatePlantHealthObservation", 5,
         OnRecord<[](auto& j, PlantHealthObservation& o) { return j.CreatePlantHealthObservation(o); },
                  PlantHealthObservation, New>},
        {"UpdatePlantHealthObservation", 5,
         OnRecord<[](auto& j, PlantHealthObservation& o) { return j.UpdatePlantHealthObservation(o); },
                  PlantHealthObservation, File>},
        {"DeletePlantHealthObservation", 2,
         OnID<[](auto& j, std::int64_t id) { return j.DeletePlantHealthObservation(id); }, PlantHealthObservation>},
        {"ListPlantHealthObservations", 1,
         IntoList<[](auto& j, auto& uuid, auto& out) { return j.ListPlantHealthObservations(uuid, out); },
                  PlantHealthObservation>},
    };
}

std::vector<StepOperation> JournalEntryOperations()
{
    using enum RecordSource;
    return {
        {"CreatePlantJournalEntry", 5,
         OnRecord<[](auto& j, PlantJournalEntry& e) { return j.CreatePlantJournalEntry(e); }, PlantJournalEntry, New>},
        {"UpdatePlantJournalEntry", 5,
         OnRecord<[](auto& j, PlantJournalEntry& e) { return j.UpdatePlantJournalEntry(e); }, PlantJournalEntry, File>},
        {"DeletePlantJournalEntry", 2,
         OnID<[](auto& j, std::int64_t id) { return j.DeletePlantJournalEntry(id); }, PlantJournalEntry>},
        {"ListPlantJournalEntries", 1,
         IntoList<[](auto& j, auto& uuid, auto& out) { return j.ListPlantJournalEntries(uuid, out); },
                  PlantJournalEntry>},
    };
}

std::vector<StepOperation> FileOperations()
{
    return {
        {"Reopen", 4,
         [](StepRunner& runner, const char*, Choices&)
         {
             runner.Journal.Reopen();
             return true;
         }},
    };
}

// A step and the inputs of the fuzzer choose an operation by its place in this list.
const std::vector<StepOperation>& StepOperations()
{
    static const std::vector<StepOperation> operations = []
    {
        std::vector<StepOperation> all;
        for (const auto list : {PlantOperations, StrainOperations, EventOperations, CareOperations, HarvestOperations,
                                PhotoOperations, HealthOperations, JournalEntryOperations, FileOperations})
            for (const StepOperation& operation : list())
                all.push_back(operation);
        return all;
    }();
    return operations;
}

const StepOperation& OperationOf(const StepBytes& step)
{
    const std::vector<StepOperation>& operations = StepOperations();
    static const int weights = [&]
    {
        int sum = 0;
        for (const StepOperation& operation : operations)
            sum += operation.Weight;
        return sum;
    }();
    int left = step[0] * weights / 256;
    const auto chosen = std::find_if(operations.begin(), operations.end(),
                                     [&](const StepOperation& operation)
                                     {
                                         left -= operation.Weight;
                                         return left < 0;
                                     });
    return *chosen;
}

StepResult StepRunner::Run(const StepBytes& step)
{
    const StepOperation& operation = OperationOf(step);
    Choices choices(step);
    choices.Next();
    return {operation.Name, operation.Run(*this, operation.Name, choices)};
}

} // namespace

std::vector<StepBytes> StepsFrom(const std::uint8_t* data, std::size_t size)
{
    std::vector<StepBytes> steps((size + StepBytes{}.size() - 1) / StepBytes{}.size());
    for (std::size_t i = 0; i < size; ++i)
        steps[i / StepBytes{}.size()].at(i % StepBytes{}.size()) = data[i];
    return steps;
}

std::vector<StepResult> RunSteps(const std::vector<StepBytes>& steps)
{
    // A journal in memory is faster, but only one in a file can be closed and opened again.
    std::optional<ScratchDirectory> scratch;
    std::string path = ":memory:";
    if (std::any_of(steps.begin(), steps.end(),
                    [](const StepBytes& step) { return std::strcmp(OperationOf(step).Name, "Reopen") == 0; }))
        path = scratch.emplace().File("journal.db");
    StepRunner runner(path);
    std::vector<StepResult> results;
    for (const StepBytes& step : steps)
        results.push_back(runner.Run(step));
    runner.Journal.CheckFile();
    return results;
}

std::set<std::string> StepOperationNames()
{
    std::set<std::string> names;
    for (const StepOperation& operation : StepOperations())
        names.insert(operation.Name);
    return names;
}

} // namespace support
