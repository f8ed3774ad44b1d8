#include "workload.h"

#include "testing/old_files.h"
#include "testing/plain_connection.h"

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <stdexcept>
#include <utility>

using namespace support;

namespace
{

constexpr int CareEntriesPerPlant = Seed().CareEntriesPerPlant;

Plant NewPlant()
{
    Plant plant;
    plant.Name = "Plant 99999";
    plant.Strain = "Strain 3";
    plant.Stage = PlantStage::Seed;
    plant.Sex = PlantSex::Female;
    plant.Tent = "Tent 1";
    plant.PotSize = "11 l";
    plant.Medium = "Coco";
    plant.SeedDate = "2024-03-01";
    plant.Notes = "vigorous";
    return plant;
}

PlantCareEntry NewCareEntry()
{
    PlantCareEntry entry;
    entry.PlantUUID = SeedUUID(1);
    entry.CareDate = "2024-05-06";
    entry.Action = PlantCareAction::Feed;
    entry.Product = "Bloom A";
    entry.AmountMl = 500;
    entry.EC = 1.8;
    entry.PH = 6.2;
    return entry;
}

HarvestRecord NewHarvest()
{
    HarvestRecord record;
    record.HarvestDate = "2024-07-05";
    record.WetWeightG = 450;
    record.DryWeightG = 112.5;
    record.QualityRating = 8;
    return record;
}

// A step that uses the next of the arguments each time. It may change its argument.
template <typename Argument, typename Work> Step ForEach(std::vector<Argument> arguments, Work work)
{
    return [arguments = std::move(arguments), work = std::move(work), next = std::size_t{0}]() mutable
    { return work(arguments.at(next++)); };
}

std::vector<int> Range(int first, int count)
{
    std::vector<int> numbers(static_cast<std::size_t>(count));
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

Workload CreatePlants(std::string name, int among, int steps, const std::string& mother)
{
    const auto prepare = [=](Implementation& implementation, const std::string&)
    {
        Plant plant = NewPlant();
        plant.MotherPlantUUID = mother;
        return ForEach(std::vector<Plant>(static_cast<std::size_t>(steps), plant),
                       [&implementation](Plant& p) { return implementation.CreatePlant(p); });
    };
    return {std::move(name), among,   {among, 0, 0},
            steps,           prepare, "DELETE FROM Plants WHERE ID>" + std::to_string(among) + ";"};
}

Workload ListEvents(int count, int steps)
{
    const auto prepare = [=](Implementation& implementation, const std::string&) -> Step
    {
        return [&implementation, uuid = SeedUUID(1), size = static_cast<std::size_t>(count)]
        {
            std::vector<PlantEvent> events;
            return implementation.ListPlantEvents(uuid, events) && events.size() == size;
        };
    };
    return {"list events", count, {1, count, 0}, steps, prepare, ""};
}

Workload ListPlants(int count, int steps)
{
    const auto prepare = [=](Implementation& implementation, const std::string&) -> Step
    {
        return [&implementation, size = static_cast<std::size_t>(count)]
        {
            std::vector<Plant> plants;
            return implementation.ListPlants(plants) && plants.size() == size;
        };
    };
    return {"list plants", count, {count, 0, 0}, steps, prepare, ""};
}

Workload GetPlant(int among, int steps)
{
    const auto prepare = [=](Implementation& implementation, const std::string&) -> Step
    {
        return [&implementation, uuid = SeedUUID(among / 2)]
        {
            Plant plant;
            return implementation.GetPlant(uuid, plant) && plant.UUID == uuid;
        };
    };
    return {"get a plant", among, {among, 0, 0}, steps, prepare, ""};
}

Seed WithCareEntries(int count)
{
    return {std::max(1, count / CareEntriesPerPlant), 0, count};
}

// Without foreign keys, which would search all care entries for each event.
std::string WithoutForeignKeys(const std::string& statements)
{
    return "PRAGMA foreign_keys=OFF;BEGIN;" + statements + "COMMIT;PRAGMA foreign_keys=ON;";
}

Workload CreateCareEntries(int among, int steps)
{
    const auto prepare = [=](Implementation& implementation, const std::string&)
    {
        return ForEach(std::vector<PlantCareEntry>(static_cast<std::size_t>(steps), NewCareEntry()),
                       [&implementation](PlantCareEntry& entry) { return implementation.CreatePlantCareEntry(entry); });
    };
    const std::string above = std::to_string(among);
    return {"create a care entry",
            among,
            WithCareEntries(among),
            steps,
            prepare,
            WithoutForeignKeys("DELETE FROM PlantCareEntries WHERE ID>" + above + ";DELETE FROM PlantEvents WHERE ID>" +
                               above + " AND ID<" + std::to_string(FirstHarvestEvent) + ";")};
}

Workload UpdateCareEntries(int among, int steps)
{
    const auto prepare = [=](Implementation& implementation, const std::string&)
    {
        std::vector<PlantCareEntry> entries;
        for (const int id : Range(1, steps))
        {
            entries.push_back(NewCareEntry());
            entries.back().ID = entries.back().TimelineEventID = id;
        }
        return ForEach(std::move(entries),
                       [&implementation](PlantCareEntry& entry) { return implementation.UpdatePlantCareEntry(entry); });
    };
    return {"update a care entry", among, WithCareEntries(among), steps, prepare, ""};
}

Workload DeleteCareEntries(int among, int steps)
{
    const auto prepare = [=](Implementation& implementation, const std::string&)
    { return ForEach(Range(1, steps), [&implementation](int id) { return implementation.DeletePlantCareEntry(id); }); };
    return {"delete a care entry",
            among,
            WithCareEntries(among),
            steps,
            prepare,
            WithoutForeignKeys(InsertCareEntries(1, steps, CareEntriesPerPlant))};
}

Workload SaveNewHarvests(int among, int steps)
{
    const auto prepare = [=](Implementation& implementation, const std::string&)
    {
        std::vector<Plant> plants;
        for (const int number : Range(0, steps))
            plants.emplace_back().UUID = SeedUUID(3 * number + 1);
        return ForEach(std::move(plants),
                       [&implementation, harvest = NewHarvest()](Plant& plant)
                       {
                           HarvestRecord record = harvest;
                           return implementation.SaveHarvestRecord(plant, record);
                       });
    };
    return {"save a new harvest",
            among,
            {among, 0, 0},
            steps,
            prepare,
            WithoutForeignKeys("DELETE FROM HarvestRecords WHERE ID>" + std::to_string(among / 3 * 3) +
                               ";DELETE FROM PlantEvents WHERE ID>" + std::to_string(FirstHarvestEvent + among) +
                               ";UPDATE Plants SET Stage='Flower',HarvestDate='' WHERE ID%3<>0;")};
}

Workload SaveHarvestsAgain(int among, int steps)
{
    const auto prepare = [=](Implementation& implementation, const std::string&)
    {
        std::vector<Plant> plants;
        for (const int number : Range(1, steps))
        {
            plants.emplace_back().ID = std::int64_t{3} * number;
            plants.back().UUID = SeedUUID(3 * number);
        }
        return ForEach(std::move(plants),
                       [&implementation, harvest = NewHarvest()](Plant& plant)
                       {
                           HarvestRecord record = harvest;
                           record.ID = plant.ID;
                           record.TimelineEventID = FirstHarvestEvent + plant.ID;
                           return implementation.SaveHarvestRecord(plant, record);
                       });
    };
    return {"save a harvest again", among, {among, 0, 0}, steps, prepare, ""};
}

Workload SummariseStrain(int among, int steps)
{
    const auto prepare = [=](Implementation& implementation, const std::string&) -> Step
    {
        return [&implementation, count = among / 10]
        {
            StrainSummary summary;
            return implementation.GetStrainSummary(4, summary) && summary.TotalPlants == count;
        };
    };
    return {"strain summary", among, {among, 0, 0}, steps, prepare, ""};
}

Workload DeletePlant(int among)
{
    const int last = among / CareEntriesPerPlant;
    const auto prepare = [=](Implementation& implementation, const std::string&) -> Step
    { return [&implementation, uuid = SeedUUID(last)] { return implementation.DeletePlant(uuid); }; };
    Workload workload{"delete a plant with 500 care entries",
                      among,
                      WithCareEntries(among),
                      1,
                      prepare,
                      InsertPlants(last, last) +
                          InsertCareEntries(among - CareEntriesPerPlant + 1, among, CareEntriesPerPlant)};
    workload.InMemory = false; // takes seconds, and what matters is how long other writers wait
    workload.Rounds = 3;
    return workload;
}

Workload CreateJournals(int steps)
{
    const auto prepare = [=](Implementation& implementation, const std::string& path)
    {
        std::vector<std::string> paths;
        for (const int number : Range(0, steps))
        {
            paths.push_back(path == ":memory:" ? path : path + std::to_string(number));
            std::filesystem::remove(paths.back());
        }
        return ForEach(std::move(paths),
                       [&implementation](const std::string& file)
                       {
                           const bool opened = implementation.Open(file);
                           implementation.Close();
                           return opened;
                       });
    };
    return {"create a journal", 0, {}, steps, prepare, ""};
}

Workload OpenJournals(int steps)
{
    const auto prepare = [=](Implementation& implementation, const std::string& path) -> Step
    {
        implementation.Close();
        return [&implementation, path]
        {
            const bool opened = implementation.Open(path);
            implementation.Close();
            return opened;
        };
    };
    Workload workload{"open a journal", 0, {1000, 0, 0}, steps, prepare, ""};
    workload.InMemory = false;
    return workload;
}

// Writes a journal of the oldest schema that has every table, with `events` more events.
void WriteOldFileWith(const std::string& path, int events)
{
    const auto found = std::find_if(OldFiles().begin(), OldFiles().end(),
                                    [](const OldFile& file) { return file.Name == "02_every_table"; });
    WriteOldFile(path, *found);
    PlainConnection(path).RunSQL(InsertEvents("0f0f0f0f-0000-4000-8000-000000000005", events));
}

Workload MigrateJournal(int events)
{
    const auto prepare = [=](Implementation& implementation, const std::string& path) -> Step
    {
        implementation.Close();
        const std::string pristine = path + ".old";
        if (!std::filesystem::exists(pristine))
            WriteOldFileWith(pristine, events);
        std::filesystem::copy_file(pristine, path, std::filesystem::copy_options::overwrite_existing);
        return [&implementation, path] { return implementation.Open(path); };
    };
    Workload workload{"migrate an older journal", events, {}, 1, prepare, ""};
    workload.InMemory = false;
    return workload;
}

Workload CreateUUIDs(int steps)
{
    const auto prepare = [](Implementation& implementation, const std::string&) -> Step
    { return [&implementation] { return implementation.CreateUUID().size() == 36; }; };
    Workload workload{"create a UUID", 0, {}, steps, prepare, ""};
    workload.OnDisk = false;
    return workload;
}

std::string WithCommas(int number)
{
    std::string text = std::to_string(number);
    for (int position = static_cast<int>(text.size()) - 3; position > 0; position -= 3)
        text.insert(static_cast<std::size_t>(position), 1, ',');
    return text;
}

} // namespace

std::string Workload::Title() const
{
    return Size == 0 ? Name : Name + ", " + WithCommas(Size);
}

const std::vector<Workload>& Workloads()
{
    static const std::vector<Workload> workloads = {
        CreatePlants("create a plant", 1000, 50, ""),
        CreatePlants("create a clone", 1000, 5, SeedUUID(500)),
        ListEvents(10, 200),
        ListEvents(1000, 10),
        ListEvents(100'000, 1),
        ListPlants(100, 20),
        ListPlants(1000, 5),
        ListPlants(10'000, 1),
        GetPlant(100, 20),
        GetPlant(1000, 5),
        GetPlant(10'000, 1),
        CreateCareEntries(1000, 50),
        CreateCareEntries(100'000, 50),
        UpdateCareEntries(1000, 50),
        UpdateCareEntries(100'000, 50),
        DeleteCareEntries(1000, 20),
        DeleteCareEntries(10'000, 10),
        DeleteCareEntries(100'000, 5),
        SaveNewHarvests(1000, 50),
        SaveHarvestsAgain(1000, 50),
        SummariseStrain(1000, 10),
        SummariseStrain(10'000, 5),
        DeletePlant(100'000),
        CreateJournals(5),
        OpenJournals(20),
        MigrateJournal(100'000),
        CreateUUIDs(1000),
    };
    return workloads;
}

const Workload& WorkloadTitled(std::string_view title)
{
    for (const Workload& workload : Workloads())
        if (workload.Title() == title)
            return workload;
    throw std::invalid_argument("no workload has the title " + std::string(title));
}
