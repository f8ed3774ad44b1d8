#include "workload.h"

#include "testing/old_files.h"
#include "testing/plain_connection.h"

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <ios>
#include <numeric>
#include <sstream>
#include <stdexcept>
#include <utility>

using namespace support;

namespace
{

constexpr int CareEntriesOfAPlant = 500;
constexpr int FirstHarvestEvent = 10'000'000; // above the events of care entries, which have their entries' numbers

// The identifier of the made-up plant `id`, as the statements below compose it.
std::string UUIDOf(int id)
{
    std::ostringstream text;
    text << std::hex << std::setfill('0') << std::setw(8) << id << "-0000-4000-8000-" << std::setw(12) << id;
    return text.str();
}

// Numbers from `first` to `last`, as a table n(i).
std::string Numbers(int first, int last)
{
    return "WITH RECURSIVE n(i) AS (SELECT " + std::to_string(first) + " UNION ALL SELECT i+1 FROM n WHERE i<" +
           std::to_string(last) + ") ";
}

std::string InsertPlants(int first, int last)
{
    return "INSERT INTO Plants(ID,UUID,Name,Strain,MotherPlantID,Stage,Sex,Tent,PotSize,Medium,SeedDate,FlipHeightCm,"
           "FinalHeightCm,CloneDate,FlipDate,HarvestDate,Notes) " +
           Numbers(first, last) +
           "SELECT i,printf('%08x-0000-4000-8000-%012x',i,i),printf('Plant %05d',i*7919%100003),'Strain '||(i%10),"
           "CASE i%2 WHEN 0 THEN i-1 END,CASE i%3 WHEN 0 THEN 'Harvested' ELSE 'Flower' END,'Female','Tent '||(i%4),"
           "'11 l','Coco','2024-03-01',40+i%30,90+i%50,CASE i%2 WHEN 0 THEN '2024-03-20' ELSE '' END,'2024-05-01',"
           "CASE i%3 WHEN 0 THEN '2024-07-05' ELSE '' END,'vigorous' FROM n;";
}

std::string InsertCareEntries(int first, int last)
{
    const std::string plant = "printf('%08x-0000-4000-8000-%012x',(i-1)/500+1,(i-1)/500+1)";
    const std::string date = "date('2015-01-01','+'||(i%500*7)||' days')";
    return "INSERT INTO PlantEvents(ID,PlantUUID,EventDate,EventType,Details) " + Numbers(first, last) + "SELECT i," +
           plant + "," + date +
           ",CASE i%2 WHEN 0 THEN 'Water' ELSE 'Feed' END,CASE i%2 WHEN 0 THEN '500 ml' ELSE "
           "'Bloom A | 500 ml | EC 1.80' END FROM n;"
           "INSERT INTO PlantCareEntries(ID,TimelineEventID,PlantUUID,CareDate,Action,Product,AmountMl,EC) " +
           Numbers(first, last) + "SELECT i,i," + plant + "," + date +
           ",CASE i%2 WHEN 0 THEN 'Water' ELSE 'Feed' END,CASE i%2 WHEN 0 THEN '' ELSE 'Bloom A' END,500,"
           "CASE i%2 WHEN 0 THEN 0 ELSE 1.8 END FROM n;";
}

std::string InsertHarvests(int first, int last)
{
    const std::string event = std::to_string(FirstHarvestEvent) + "+i";
    return "INSERT INTO PlantEvents(ID,PlantUUID,EventDate,EventType,Details) " + Numbers(first, last) + "SELECT " +
           event +
           ",printf('%08x-0000-4000-8000-%012x',i,i),'2024-07-05','Harvest','Wet 450.0 g | Dry 112.5 g | Quality "
           "8.0/10' FROM n WHERE i%3=0;"
           "INSERT INTO HarvestRecords(ID,TimelineEventID,PlantUUID,HarvestDate,WetWeightG,DryWeightG,QualityRating) " +
           Numbers(first, last) + "SELECT i," + event +
           ",printf('%08x-0000-4000-8000-%012x',i,i),'2024-07-05',450,112.5,8 FROM n WHERE i%3=0;";
}

std::string InsertEvents(const std::string& plantUUID, int count)
{
    return "INSERT INTO PlantEvents(PlantUUID,EventDate,EventType,Details) " + Numbers(1, count) + "SELECT '" +
           plantUUID +
           "',date('2015-01-01','+'||(i/30)||' days'),CASE i%2 WHEN 0 THEN 'Water' ELSE 'Feed' END,"
           "CASE i%2 WHEN 0 THEN '500 ml' ELSE 'Bloom A | 500 ml | EC 1.80' END FROM n;";
}

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
    entry.PlantUUID = UUIDOf(1);
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

// A step for each of the arguments, in turn: what the step is given may be changed by it, and is made anew each time.
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
    const auto prepare = [=](Contender& contender, const std::string&)
    {
        Plant plant = NewPlant();
        plant.MotherPlantUUID = mother;
        return ForEach(std::vector<Plant>(static_cast<std::size_t>(steps), plant),
                       [&contender](Plant& p) { return contender.CreatePlant(p); });
    };
    return {std::move(name), among,   {among, 0, 0},
            steps,           prepare, "DELETE FROM Plants WHERE ID>" + std::to_string(among) + ";"};
}

Workload ListEvents(int count, int steps)
{
    const auto prepare = [=](Contender& contender, const std::string&) -> Step
    {
        return [&contender, uuid = UUIDOf(1), size = static_cast<std::size_t>(count)]
        {
            std::vector<PlantEvent> events;
            return contender.ListPlantEvents(uuid, events) && events.size() == size;
        };
    };
    return {"list events", count, {1, count, 0}, steps, prepare, ""};
}

Workload ListPlants(int count, int steps)
{
    const auto prepare = [=](Contender& contender, const std::string&) -> Step
    {
        return [&contender, size = static_cast<std::size_t>(count)]
        {
            std::vector<Plant> plants;
            return contender.ListPlants(plants) && plants.size() == size;
        };
    };
    return {"list plants", count, {count, 0, 0}, steps, prepare, ""};
}

Workload GetPlant(int among, int steps)
{
    const auto prepare = [=](Contender& contender, const std::string&) -> Step
    {
        return [&contender, uuid = UUIDOf(among / 2)]
        {
            Plant plant;
            return contender.GetPlant(uuid, plant) && plant.UUID == uuid;
        };
    };
    return {"get a plant", among, {among, 0, 0}, steps, prepare, ""};
}

Seed WithCareEntries(int count)
{
    return {std::max(1, count / CareEntriesOfAPlant), 0, count};
}

// Taken back without foreign keys, which would look through the care log for each event.
std::string RestoreCareEntries(const std::string& statements)
{
    return "PRAGMA foreign_keys=OFF;BEGIN;" + statements + "COMMIT;PRAGMA foreign_keys=ON;";
}

Workload CreateCareEntries(int among, int steps)
{
    const auto prepare = [=](Contender& contender, const std::string&)
    {
        return ForEach(std::vector<PlantCareEntry>(static_cast<std::size_t>(steps), NewCareEntry()),
                       [&contender](PlantCareEntry& entry) { return contender.CreatePlantCareEntry(entry); });
    };
    const std::string above = std::to_string(among);
    return {"create a care entry",
            among,
            WithCareEntries(among),
            steps,
            prepare,
            RestoreCareEntries("DELETE FROM PlantCareEntries WHERE ID>" + above + ";DELETE FROM PlantEvents WHERE ID>" +
                               above + " AND ID<" + std::to_string(FirstHarvestEvent) + ";")};
}

Workload UpdateCareEntries(int among, int steps)
{
    const auto prepare = [=](Contender& contender, const std::string&)
    {
        std::vector<PlantCareEntry> entries;
        for (const int id : Range(1, steps))
        {
            entries.push_back(NewCareEntry());
            entries.back().ID = entries.back().TimelineEventID = id;
        }
        return ForEach(std::move(entries),
                       [&contender](PlantCareEntry& entry) { return contender.UpdatePlantCareEntry(entry); });
    };
    return {"update a care entry", among, WithCareEntries(among), steps, prepare, ""};
}

Workload DeleteCareEntries(int among, int steps)
{
    const auto prepare = [=](Contender& contender, const std::string&)
    { return ForEach(Range(1, steps), [&contender](int id) { return contender.DeletePlantCareEntry(id); }); };
    return {"delete a care entry",
            among,
            WithCareEntries(among),
            steps,
            prepare,
            RestoreCareEntries(InsertCareEntries(1, steps))};
}

Workload SaveNewHarvests(int among, int steps)
{
    const auto prepare = [=](Contender& contender, const std::string&)
    {
        std::vector<Plant> plants;
        for (const int number : Range(0, steps))
            plants.emplace_back().UUID = UUIDOf(3 * number + 1);
        return ForEach(std::move(plants),
                       [&contender, harvest = NewHarvest()](Plant& plant)
                       {
                           HarvestRecord record = harvest;
                           return contender.SaveHarvestRecord(plant, record);
                       });
    };
    return {"save a new harvest",
            among,
            {among, 0, 0},
            steps,
            prepare,
            RestoreCareEntries("DELETE FROM HarvestRecords WHERE ID>" + std::to_string(among / 3 * 3) +
                               ";DELETE FROM PlantEvents WHERE ID>" + std::to_string(FirstHarvestEvent + among) +
                               ";UPDATE Plants SET Stage='Flower',HarvestDate='' WHERE ID%3<>0;")};
}

Workload SaveHarvestsAgain(int among, int steps)
{
    const auto prepare = [=](Contender& contender, const std::string&)
    {
        std::vector<Plant> plants;
        for (const int number : Range(1, steps))
        {
            plants.emplace_back().ID = std::int64_t{3} * number;
            plants.back().UUID = UUIDOf(3 * number);
        }
        return ForEach(std::move(plants),
                       [&contender, harvest = NewHarvest()](Plant& plant)
                       {
                           HarvestRecord record = harvest;
                           record.ID = plant.ID;
                           record.TimelineEventID = FirstHarvestEvent + plant.ID;
                           return contender.SaveHarvestRecord(plant, record);
                       });
    };
    return {"save a harvest again", among, {among, 0, 0}, steps, prepare, ""};
}

Workload SummariseStrain(int among, int steps)
{
    const auto prepare = [=](Contender& contender, const std::string&) -> Step
    {
        return [&contender, count = among / 10]
        {
            StrainSummary summary;
            return contender.GetStrainSummary(4, summary) && summary.TotalPlants == count;
        };
    };
    return {"strain summary", among, {among, 0, 0}, steps, prepare, ""};
}

Workload DeletePlant(int among)
{
    const int last = among / CareEntriesOfAPlant;
    const auto prepare = [=](Contender& contender, const std::string&) -> Step
    { return [&contender, uuid = UUIDOf(last)] { return contender.DeletePlant(uuid); }; };
    Workload workload{"delete a plant with 500 care entries",
                      among,
                      WithCareEntries(among),
                      1,
                      prepare,
                      InsertPlants(last, last) + InsertCareEntries(among - CareEntriesOfAPlant + 1, among)};
    workload.Rounds = 3;
    return workload;
}

Workload OpenNew(int steps)
{
    const auto prepare = [=](Contender& contender, const std::string& path)
    {
        std::vector<std::string> paths;
        for (const int number : Range(0, steps))
        {
            paths.push_back(path == ":memory:" ? path : path + std::to_string(number));
            std::filesystem::remove(paths.back());
        }
        return ForEach(std::move(paths),
                       [&contender](const std::string& file)
                       {
                           const bool opened = contender.Open(file);
                           contender.Close();
                           return opened;
                       });
    };
    return {"open a new file", 0, {}, steps, prepare, ""};
}

Workload OpenCurrent(int steps)
{
    const auto prepare = [=](Contender& contender, const std::string& path) -> Step
    {
        contender.Close();
        return [&contender, path]
        {
            const bool opened = contender.Open(path);
            contender.Close();
            return opened;
        };
    };
    Workload workload{"open a current file", 0, {1000, 0, 0}, steps, prepare, ""};
    workload.InMemory = false;
    return workload;
}

// A file of the oldest form that has every table, with `events` more events.
void WriteOldFileWith(const std::string& path, int events)
{
    const auto found = std::find_if(OldFiles().begin(), OldFiles().end(),
                                    [](const OldFile& file) { return file.Name == "02_every_table"; });
    WriteOldFile(path, *found);
    PlainConnection(path).RunSQL(InsertEvents("0f0f0f0f-0000-4000-8000-000000000005", events));
}

Workload OpenOld(int events)
{
    const auto prepare = [=](Contender& contender, const std::string& path) -> Step
    {
        contender.Close();
        const std::string pristine = path + ".old";
        if (!std::filesystem::exists(pristine))
            WriteOldFileWith(pristine, events);
        std::filesystem::copy_file(pristine, path, std::filesystem::copy_options::overwrite_existing);
        return [&contender, path] { return contender.Open(path); };
    };
    Workload workload{"open an old file", events, {}, 1, prepare, ""};
    workload.InMemory = false;
    return workload;
}

Workload Identifiers(int steps)
{
    const auto prepare = [](Contender& contender, const std::string&) -> Step
    { return [&contender] { return contender.CreateIdentifier().size() == 36; }; };
    Workload workload{"an identifier", 0, {}, steps, prepare, ""};
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

void Require(bool done, const std::string& what)
{
    if (!done)
        throw std::runtime_error(what + " failed");
}

} // namespace

void Fill(Contender& contender, const Seed& seed)
{
    std::string statements = "BEGIN;";
    if (seed.Plants > 0)
        statements += "INSERT INTO Strains(ID,Name) " + Numbers(0, 9) + "SELECT i+1,'Strain '||i FROM n;" +
                      InsertPlants(1, seed.Plants);
    if (seed.CareEntries > 0)
        statements += InsertCareEntries(1, seed.CareEntries);
    if (seed.Plants > 0)
        statements += InsertHarvests(1, seed.Plants);
    if (seed.EventsOfFirstPlant > 0)
        statements += InsertEvents(UUIDOf(1), seed.EventsOfFirstPlant);
    Require(contender.Execute(statements + "COMMIT;"), "filling a journal");
}

std::string Workload::Title() const
{
    return Size == 0 ? Name : Name + ", " + WithCommas(Size);
}

const std::vector<Workload>& Workloads()
{
    static const std::vector<Workload> workloads = {
        CreatePlants("create a plant", 1000, 50, ""),
        CreatePlants("create a clone", 1000, 5, UUIDOf(500)),
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
        OpenNew(5),
        OpenCurrent(20),
        OpenOld(100'000),
        Identifiers(1000),
    };
    return workloads;
}

const Workload& WorkloadTitled(std::string_view title)
{
    for (const Workload& workload : Workloads())
        if (workload.Title() == title)
            return workload;
    throw std::invalid_argument("no workload is called " + std::string(title));
}

Bout::Bout(const ContenderKind& kind, const Workload& workload, Medium medium, const std::string& directory)
    : Work(workload), Keeper(kind.Make()),
      JournalPath(medium == Medium::Memory ? ":memory:"
                                           : (std::filesystem::path(directory) / (kind.Name + ".db")).string())
{
    if (medium == Medium::Disk)
        std::filesystem::remove(JournalPath);
    Require(Keeper->Open(JournalPath), kind.Name + ": opening " + JournalPath);
    Fill(*Keeper, Work.Holds);
}

Step Bout::Prepare()
{
    return Work.Prepare(*Keeper, JournalPath);
}

void Bout::Restore()
{
    if (!Work.Restore.empty())
        Require(Keeper->Execute(Work.Restore), "taking back: " + Work.Title());
}
