// The power goes, at every write and every sync that the library makes SQLite do, and comes back.

#include "support/figures.h"
#include "support/journal_test.h"
#include "support/repository_operations.h"
#include "support/simulated_disk.h"
#include "support/test_form.h"
#include "testing/old_files.h"
#include "testing/operation_statements.h"

#include <cstdint>
#include <functional>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <sqlite3.h>

using namespace support;

namespace
{

// ---- The disk itself: were it kinder than a real one, nothing here would be proved.

class SimulatedDiskTest : public testing::Test
{
  protected:
    // What `look` finds after the power went, over many fates of what was not synced.
    template <typename Look> auto Fates(const Look& look)
    {
        std::set<decltype(look())> fates;
        const SimulatedDisk before = Disk;
        for (int i = 0; i < 500; ++i)
        {
            Disk = before;
            Disk.Reboot(Random);
            fates.insert(look());
        }
        Disk = before;
        return fates;
    }

    std::string Bytes(const std::string& name) { return std::string(Disk.Bytes(Disk.Open(name))); }

    SimulatedDisk Disk;
    std::mt19937_64 Random{Seed()};
};

TEST_F(SimulatedDiskTest, KeepsWhatWasSyncedAndMayKeepDropOrTearWhatWasNot)
{
    const int file = Disk.Open("file");
    EXPECT_TRUE(Disk.Write(file, 0, std::string(1024, 'a')));
    Disk.Settle();
    EXPECT_EQ(Fates([&] { return Bytes("file"); }), (std::set{std::string(1024, 'a')}));

    EXPECT_TRUE(Disk.Write(file, 100, std::string(800, 'b')));
    const std::string a(512, 'a');
    const std::string left = std::string(100, 'a') + std::string(412, 'b');
    const std::string right = std::string(388, 'b') + std::string(124, 'a');
    EXPECT_EQ(Bytes("file"), left + right);
    EXPECT_EQ(Fates([&] { return Bytes("file"); }), (std::set{a + a, left + a, a + right, left + right}));

    EXPECT_TRUE(Disk.Sync(file));
    EXPECT_EQ(Fates([&] { return Bytes("file"); }), (std::set{left + right}));
}

TEST_F(SimulatedDiskTest, MayKeepALaterWriteAndDropAnEarlierOne)
{
    const int file = Disk.Open("file");
    EXPECT_TRUE(Disk.Write(file, 0, std::string(1024, '-')));
    Disk.Settle();
    EXPECT_TRUE(Disk.Write(file, 0, "1"));
    EXPECT_TRUE(Disk.Write(file, 512, "2"));
    EXPECT_EQ(Fates([&] { return Bytes("file").substr(0, 1) + Bytes("file").substr(512, 1); }),
              (std::set<std::string>{"--", "1-", "-2", "12"}));
}

TEST_F(SimulatedDiskTest, MayGrowAFileAndFillItWithNoise)
{
    const int file = Disk.Open("file");
    EXPECT_TRUE(Disk.Write(file, 0, "a"));
    Disk.Settle();
    EXPECT_TRUE(Disk.Write(file, 1, "b"));
    const std::set<std::string> fates = Fates([&] { return Bytes("file"); });
    EXPECT_EQ(fates.count("a"), 1U);
    EXPECT_EQ(fates.count("ab"), 1U);
    EXPECT_GT(fates.size(), 10U);
}

TEST_F(SimulatedDiskTest, MayDropATruncationUntilItIsSynced)
{
    const int file = Disk.Open("file");
    EXPECT_TRUE(Disk.Write(file, 0, "abc"));
    Disk.Settle();
    EXPECT_TRUE(Disk.Truncate(file, 1));
    EXPECT_EQ(Fates([&] { return Bytes("file"); }), (std::set<std::string>{"a", "abc"}));
    EXPECT_TRUE(Disk.Sync(file));
    EXPECT_EQ(Fates([&] { return Bytes("file"); }), (std::set<std::string>{"a"}));
}

TEST_F(SimulatedDiskTest, MayLoseANewFileUntilItsDirectoryIsSynced)
{
    const int file = Disk.Open("file");
    EXPECT_TRUE(Disk.Write(file, 0, "a"));
    EXPECT_TRUE(Disk.Sync(file));
    EXPECT_EQ(Fates([&] { return Disk.Exists("file"); }), (std::set{false, true}));
    EXPECT_TRUE(Disk.SyncDirectory());
    EXPECT_EQ(Fates([&] { return Disk.Exists("file"); }), (std::set{true}));
}

TEST_F(SimulatedDiskTest, BringsARemovedFileBackOnlyWhereUnlinksDoNotLast)
{
    Disk.Open("file");
    Disk.Settle();
    const SimulatedDisk settled = Disk;
    EXPECT_TRUE(Disk.Unlink("file"));
    EXPECT_EQ(Fates([&] { return Disk.Exists("file"); }), (std::set{false}));

    Disk = settled;
    Disk.UnlinksLast = false;
    EXPECT_TRUE(Disk.Unlink("file"));
    EXPECT_FALSE(Disk.Exists("file"));
    EXPECT_EQ(Fates([&] { return Disk.Exists("file"); }), (std::set{false, true}));
    EXPECT_TRUE(Disk.SyncDirectory());
    EXPECT_EQ(Fates([&] { return Disk.Exists("file"); }), (std::set{false}));
}

TEST_F(SimulatedDiskTest, ReachesTheDiskOrNotWithTheCallAtWhichThePowerGoesAndWithNoneAfterIt)
{
    const int file = Disk.Open("file");
    EXPECT_TRUE(Disk.Write(file, 0, "-"));
    Disk.Settle();
    const SimulatedDisk settled = Disk;

    Disk.DieAt(2);
    EXPECT_TRUE(Disk.Write(file, 0, "1"));
    EXPECT_FALSE(Disk.Sync(file));
    EXPECT_TRUE(Disk.IsDead());
    EXPECT_FALSE(Disk.Write(file, 0, "2"));
    EXPECT_FALSE(Disk.Truncate(file, 0));
    EXPECT_FALSE(Disk.Sync(file));
    EXPECT_FALSE(Disk.SyncDirectory());
    EXPECT_FALSE(Disk.Unlink("file"));
    EXPECT_FALSE(Disk.Exists("file"));
    EXPECT_EQ(Disk.Calls(), 2);
    EXPECT_EQ(Fates([&] { return Bytes("file"); }), (std::set<std::string>{"-", "1"}));

    Disk = settled;
    Disk.DieAt(1);
    EXPECT_FALSE(Disk.Unlink("file"));
    EXPECT_EQ(Fates([&] { return Disk.Exists("file"); }), (std::set{false, true}));
}

// ---- Journals on it

constexpr auto File = "journal.db"; // a bare name: there is no directory to be made on the real disk

// What the file system and the caller do for the last operation.
struct World
{
    const char* Name;
    bool UnlinksLast;
    const char* Setting; // of the caller, made after opening
    bool MayTakeBackTheLast;
};

// SQLite ends a transaction by removing its journal, and does not sync the directory after that unless it is told to:
// https://www.sqlite.org/pragma.html#pragma_synchronous
constexpr World UnlinksLast = {"unlinks last", true, "", false};
constexpr World UnlinksComeUndone = {"unlinks come undone", false, "", true};
constexpr World UnlinksAreSynced = {"unlinks are synced", false, "PRAGMA synchronous=EXTRA;", false};

// Care entries and harvests whose event is not there, or is not theirs.
constexpr auto WithoutTheirEvent =
    "SELECT 'care entry',o.ID FROM PlantCareEntries o LEFT JOIN PlantEvents e ON e.ID=o.TimelineEventID AND "
    "e.PlantUUID=o.PlantUUID AND e.EventDate=o.CareDate AND e.EventType=o.Action "
    "WHERE o.TimelineEventID IS NOT NULL AND e.ID IS NULL UNION ALL "
    "SELECT 'harvest',o.ID FROM HarvestRecords o LEFT JOIN PlantEvents e ON e.ID=o.TimelineEventID AND "
    "e.PlantUUID=o.PlantUUID AND e.EventDate=o.HarvestDate AND e.EventType='Harvest' "
    "WHERE o.TimelineEventID IS NOT NULL AND e.ID IS NULL;";

// The journal as its grower finds it: it opens, it is sound, and this is in it.
std::string Found()
{
    PlantDatabase database;
    std::string error;
    EXPECT_TRUE(database.Open(File, &error)) << error;
    if (!database.IsOpen())
        return {};
    EXPECT_EQ(Damage(database.NativeHandle()), "ok");
    EXPECT_EQ(QueryRows(database.NativeHandle(), WithoutTheirEvent), Rows{});
    return Content(database.NativeHandle());
}

// How far something came before the power went.
struct Death
{
    bool Done; // it returned true
    bool Idle; // the power went only when it had returned
};

class PowerLossTest : public testing::Test
{
  protected:
    // An empty disk.
    void Begin(const World& world)
    {
        Disk = {};
        Disk.UnlinksLast = world.UnlinksLast;
        Setting = world.Setting;
    }

    // Opens the journal and lets `work` begin. The power goes at the `call`-th call from there or, where there are
    // fewer, when it has returned.
    template <typename Work> Death DieIn(const Work& work, int call)
    {
        PlantDatabase database;
        EXPECT_TRUE(database.Open(File));
        RunSQL(database.NativeHandle(), Setting);
        PlantRepository repository(database);
        Disk.DieAt(call);
        const bool done = work(repository);
        return {done, Die()};
    }

    // Opens the journal, and the power goes likewise.
    Death DieInOpening(int call)
    {
        PlantDatabase database;
        Disk.DieAt(call);
        const bool opened = database.Open(File);
        return {opened, Die()};
    }

    // The power goes, where it has not gone yet. Whether it had not.
    bool Die()
    {
        const bool idle = !Disk.IsDead();
        Disk.Die();
        return idle;
    }

    // The power comes back, again and again from the same moment, each time with another fate of what was not synced.
    // `look` looks at what is left. Now and then the power goes once more while the file is mended.
    template <typename Look> void Reboot(int fates, const Look& look)
    {
        AddToFigure("crash points");
        const SimulatedDisk dead = Disk;
        for (int fate = 0; fate < fates && !HasFailure(); ++fate)
        {
            Disk = dead;
            Disk.Reboot(Random);
            if (Random() % 4 == 0)
            {
                const Death death = DieInOpening(1 + static_cast<int>(Random() % 8));
                EXPECT_EQ(death.Done, death.Idle);
                AddToFigure("crash points", death.Idle ? 0 : 1);
                Disk.Reboot(Random);
            }
            look();
            AddToFigure("journals looked at after a crash");
        }
    }

    SimulatedDisk Disk;
    DiskInUse InUse{Disk};
    std::string Setting;
    std::mt19937_64 Random{Seed()};
};

// ---- Every operation

// A duplicate's identifier is another every time.
std::string Anonymous(std::string content, const SampleRecords& sample)
{
    const std::string& uuid = sample.Clone.UUID;
    for (std::size_t at = 0; (at = content.find(uuid, at)) != std::string::npos;)
        content.replace(at, uuid.size(), "the clone's");
    return content;
}

class OperationPowerLossTest : public PowerLossTest
{
  protected:
    // Brings a planted journal onto the disk.
    void Plant(const World& world)
    {
        Begin(world);
        {
            PlantDatabase database;
            ASSERT_TRUE(database.Open(File));
            PlantRepository repository(database);
            Planted = StoreSampleRecords(repository);
        }
        Disk.Settle();
        Settled = Disk;
        Before = Found();
        RunSQL(PlainConnection(File).NativeHandle(), "INSERT INTO Strains(Name) VALUES('a new strain');");
        Registered = Found();
    }

    // What the operation leads to where the power stays; whether it writes at all.
    bool Writes(const Operation& operation)
    {
        Disk = Settled;
        SampleRecords sample = Planted;
        Statements statements;
        {
            PlantDatabase database;
            EXPECT_TRUE(database.Open(File));
            PlantRepository repository(database);
            const CallRecorder recorder;
            EXPECT_TRUE(operation.Call(repository, sample));
            statements = recorder.Statements();
        }
        RegistersAStrain = statements.front() == SQL::RegisterStrain;
        const std::string after = Found();
        After = Anonymous(after, sample);
        return after != Before;
    }

    // Lets the power go at each call of the operation, and once it is done. `look` gets what it made of its garden and
    // whether it was done.
    template <typename Look> void DieInEachCall(const Operation& operation, const Look& look)
    {
        bool idle = false;
        for (int call = 1; !idle && !HasFailure(); ++call)
        {
            SCOPED_TRACE("call " + std::to_string(call));
            Disk = Settled;
            SampleRecords sample = Planted;
            const Death death =
                DieIn([&](PlantRepository& repository) { return operation.Call(repository, sample); }, call);
            idle = death.Idle;
            EXPECT_TRUE(death.Done || !idle);
            look(sample, death.Done);
        }
    }

    int TakenBack(const World& world);

    SampleRecords Planted;
    SimulatedDisk Settled;
    std::string Before;
    std::string Registered; // a plant's new strain comes before the plant
    std::string After;
    bool RegistersAStrain = false;
};

// Operations() but for this one that chooses an identifier.
std::vector<Operation> OperationsAndDuplicatePlant()
{
    std::vector<Operation> operations = Operations();
    operations.push_back(
        {"DuplicatePlant", [](PlantRepository& r, SampleRecords& g) { return r.DuplicatePlant(g.Mother, g.Clone); }});
    return operations;
}

// Every operation in a world, with the power going everywhere. How often an operation was done and then was not there.
int OperationPowerLossTest::TakenBack(const World& world)
{
    Plant(world);
    int operations = 0;
    int takenBack = 0;
    int whole = 0;
    int notAtAll = 0;
    for (const Operation& operation : OperationsAndDuplicatePlant())
    {
        SCOPED_TRACE(operation.Name);
        if (!Writes(operation))
            continue;
        ++operations;
        const auto look = [&](const SampleRecords& sample, bool done)
        {
            const std::string found = Anonymous(Found(), sample);
            const bool finished = found == After;
            const bool untouched = found == Anonymous(Before, sample);
            const bool registered = RegistersAStrain && found == Anonymous(Registered, sample);
            EXPECT_TRUE(finished || untouched || registered) << found;
            EXPECT_TRUE(finished || !done || world.MayTakeBackTheLast) << found;
            takenBack += done && !finished ? 1 : 0;
            whole += !done && finished ? 1 : 0;
            notAtAll += !done && untouched ? 1 : 0;
        };
        DieInEachCall(operation, [&](const SampleRecords& sample, bool done)
                      { Reboot(ShortOrLong(2, 20), [&] { look(sample, done); }); });
    }
    EXPECT_GT(whole, 0);
    EXPECT_GT(notAtAll, 0);
    EXPECT_GE(operations, 30);
    return takenBack;
}

TEST_F(OperationPowerLossTest, WhatWasDoneIsThereAndWhatWasNotIsThereWholeOrNotAtAll)
{
    EXPECT_EQ(TakenBack(UnlinksLast), 0);
}

// A limit of the library: it leaves SQLite's setting as it is.
TEST_F(OperationPowerLossTest, WhereUnlinksComeUndoneAnOperationThatWasDoneMayBeTakenBackWhole)
{
    const int takenBack = TakenBack(UnlinksComeUndone);
    EXPECT_GT(takenBack, 0);
    AddToFigure("operations done and taken back where unlinks come undone", static_cast<std::uint64_t>(takenBack));
}

TEST_F(OperationPowerLossTest, WhereUnlinksComeUndoneTheCallersSettingKeepsWhatWasDone)
{
    EXPECT_EQ(TakenBack(UnlinksAreSynced), 0);
}

// SQLite can be told to be faster at the risk of the journal. Were that not seen here, neither would be a library that
// told it so.
TEST_F(OperationPowerLossTest, ACarelessSettingIsSeen)
{
    const auto foundWhereSound = []() -> std::string
    {
        try
        {
            PlantDatabase database;
            const bool sound = database.Open(File) && Damage(database.NativeHandle()) == "ok";
            return sound ? Content(database.NativeHandle()) : "";
        }
        catch (const std::runtime_error&)
        {
            return "";
        }
    };
    for (const char* setting : {"PRAGMA synchronous=OFF;", "PRAGMA journal_mode=MEMORY;"})
    {
        SCOPED_TRACE(setting);
        Plant(UnlinksLast);
        Setting = setting;
        int lost = 0;
        int damaged = 0;
        for (const Operation& operation : Operations())
        {
            if (!Writes(operation))
                continue;
            DieInEachCall(operation,
                          [&](const SampleRecords&, bool done)
                          {
                              Disk.Reboot(Random);
                              const std::string found = foundWhereSound();
                              damaged += found.empty() ? 1 : 0;
                              lost += done && !found.empty() && found != After ? 1 : 0;
                          });
        }
        EXPECT_GT(damaged, 0);
        if (setting == std::string("PRAGMA synchronous=OFF;"))
        {
            EXPECT_GT(lost, 0);
        }
    }
}

// ---- Whole seasons

// One change, with all its arguments: it does the same in every journal of the same content.
struct Change
{
    std::string NewStrain; // registered before anything else
    std::function<bool(PlantRepository&)> Make;
};

// Tends a journal at random. Everything that it does succeeds and changes something.
class Gardener
{
  public:
    explicit Gardener(std::mt19937_64& random) : Random(random) {}

    Change Next(PlantRepository& repository)
    {
        using R = PlantRepository;
        std::vector<Plant> plants;
        EXPECT_TRUE(repository.ListPlants(plants));
        if (plants.empty() || (plants.size() < 6 && Random() % 8 == 0))
            return NewPlant(plants);
        const Plant plant = OneOf(plants);
        switch (Random() % 12)
        {
        case 0:
            if (plants.size() >= 4)
                return {"", [=](R& r) { return r.DeletePlant(plant.UUID); }};
            return ChangedPlant(plant);
        case 1:
            return ChangedPlant(plant);
        case 2:
            return ChangedStrain(repository);
        case 3:
        case 4:
        case 5:
            return ChangedRecord(
                repository, plant, &R::ListPlantCareEntries, &R::CreatePlantCareEntry, &R::UpdatePlantCareEntry,
                [](R& r, const PlantCareEntry& entry) { return r.DeletePlantCareEntry(entry.ID); },
                [&](PlantCareEntry& entry)
                {
                    entry.CareDate = Date();
                    entry.Action = Random() % 2 == 0 ? PlantCareAction::Feed : PlantCareAction::Water;
                    entry.Notes = Text();
                });
        case 6:
        case 7:
            return ChangedHarvest(repository, plant);
        case 8:
            return ChangedEvent(repository, plant);
        case 9:
            return ChangedRecord(
                repository, plant, &R::ListPlantPhotos, &R::CreatePlantPhoto, &R::UpdatePlantPhoto,
                [](R& r, const PlantPhoto& photo) { return r.DeletePlantPhoto(photo.UUID); },
                [&](PlantPhoto& photo)
                {
                    if (photo.UUID.empty())
                        photo.UUID = Name("photo");
                    photo.FilePath = Text();
                });
        case 10:
            return ChangedRecord(
                repository, plant, &R::ListPlantHealthObservations, &R::CreatePlantHealthObservation,
                &R::UpdatePlantHealthObservation,
                [](R& r, const PlantHealthObservation& o) { return r.DeletePlantHealthObservation(o.ID); },
                [&](PlantHealthObservation& o) { o.Issue = Text(); });
        default:
            return ChangedRecord(
                repository, plant, &R::ListPlantJournalEntries, &R::CreatePlantJournalEntry,
                &R::UpdatePlantJournalEntry,
                [](R& r, const PlantJournalEntry& entry) { return r.DeletePlantJournalEntry(entry.ID); },
                [&](PlantJournalEntry& entry) { entry.Details = Text(); });
        }
    }

  private:
    template <typename Record> Record OneOf(const std::vector<Record>& records)
    {
        return records.at(Random() % records.size());
    }

    std::string Name(const std::string& of) { return of + ' ' + std::to_string(++Names); }
    std::string Date() { return "2020-05-" + std::to_string(10 + Random() % 20); }
    // Some texts fill pages of their own.
    std::string Text()
    {
        const std::size_t longest = Random() % 8 == 0 ? 9000 : 60;
        return Name("text") + std::string(Random() % longest, '.');
    }

    Change NewPlant(const std::vector<Plant>& plants)
    {
        Plant plant;
        plant.UUID = Name("plant");
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

    Change ChangedPlant(Plant plant)
    {
        plant.Strain = "strain " + std::to_string(Random() % 4);
        plant.Notes = Text();
        return {plant.Strain, [=](PlantRepository& r) { return r.UpdatePlant(plant); }};
    }

    Change ChangedStrain(PlantRepository& repository)
    {
        std::vector<Strain> strains;
        EXPECT_TRUE(repository.ListStrains(strains));
        Strain strain = OneOf(strains); // every plant has one
        strain.Name = Name("strain called");
        strain.Notes = Text();
        return {"", [=](PlantRepository& r) { return r.UpdateStrain(strain); }};
    }

    // An event of a care entry or a harvest is left to these, but may be deleted.
    Change ChangedEvent(PlantRepository& repository, const Plant& plant)
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

    Change ChangedHarvest(PlantRepository& repository, const Plant& plant)
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
    Change ChangedRecord(PlantRepository& repository, const Plant& plant,
                         bool (PlantRepository::*list)(const std::string&, std::vector<Record>&),
                         bool (PlantRepository::*create)(Record&), Update update, const Remove& remove,
                         const Alter& alter)
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

    std::mt19937_64& Random;
    int Names = 0;
};

// What a journal must hold, kept where no power is lost.
class Ledger
{
  public:
    Ledger() { EXPECT_TRUE(Database.Open(":memory:")); }

    std::string Content() const { return ::Content(Database.NativeHandle()); }

    void Register(const std::string& strain)
    {
        RunSQL(Database.NativeHandle(), "INSERT INTO Strains(Name) VALUES('" + strain + "') ON CONFLICT DO NOTHING;");
    }

    void Make(const Change& change) { EXPECT_TRUE(change.Make(Repository)); }

  private:
    PlantDatabase Database;
    PlantRepository Repository{Database};
};

class SeasonPowerLossTest : public PowerLossTest
{
  protected:
    // Tends the journal until the power goes. What may be missing from the file then, or be there, is in Unsure.
    void Tend(const World& world, Gardener& gardener, Ledger& ledger)
    {
        const auto tend = [&](PlantRepository& repository)
        {
            while (!Disk.IsDead() && !HasFailure())
            {
                if (Random() % 8 == 0)
                {
                    PlantCareEntry ofNoPlant;
                    ofNoPlant.PlantUUID = "no plant";
                    EXPECT_FALSE(repository.CreatePlantCareEntry(ofNoPlant)); // and what follows is kept all the same
                    continue;
                }
                const Change change = gardener.Next(repository);
                const bool done = change.Make(repository);
                EXPECT_TRUE(done || Disk.IsDead());
                if (done)
                {
                    for (const Change& sure : Unsure)
                        ledger.Make(sure);
                    Unsure.clear();
                    AddToFigure("operations done");
                }
                if (done && !world.MayTakeBackTheLast)
                    ledger.Make(change);
                else
                    Unsure.push_back(change);
                if (Random() % 32 == 0)
                    return true;
            }
            return true;
        };
        DieIn(tend, 1 + static_cast<int>(Random() % 400));
    }

    // Brings the ledger to what was found, which must be on its way.
    void Settle(Ledger& ledger, const std::string& found)
    {
        const auto isSettled = [&] { return ledger.Content() == found; };
        for (const Change& change : Unsure)
        {
            if (isSettled())
                break;
            if (!change.NewStrain.empty())
                ledger.Register(change.NewStrain);
            if (isSettled())
                break;
            ledger.Make(change);
        }
        EXPECT_EQ(found, ledger.Content());
        Unsure.clear();
    }

    std::vector<Change> Unsure;
};

TEST_F(SeasonPowerLossTest, NothingThatWasDoneIsLostHoweverOftenThePowerGoes)
{
    for (const World& world : {UnlinksLast, UnlinksComeUndone, UnlinksAreSynced})
    {
        SCOPED_TRACE(world.Name);
        const TimeLimit limit;
        for (int season = 0; (IsLongForm() ? !limit.IsOver() : season < 8) && !HasFailure(); ++season)
        {
            SCOPED_TRACE("season " + std::to_string(season));
            Begin(world);
            Gardener gardener(Random);
            Ledger ledger;
            for (int loss = 0; loss < 40 && !HasFailure(); ++loss)
            {
                Tend(world, gardener, ledger);
                Reboot(1, [&] { Settle(ledger, Found()); });
            }
        }
    }
}

// ---- The migration

class MigrationPowerLossTest : public PowerLossTest
{
  protected:
    // Writes a file of an old form, and more into it.
    void Write(const World& world, const OldFile& file, const std::string& more = {})
    {
        Begin(world);
        PlainConnection(File).RunSQL("BEGIN;" + file.SQL + more + "COMMIT;");
        Disk.Settle();
    }

    // All forms, and the file that is not there yet.
    static std::vector<OldFile> Files()
    {
        std::vector<OldFile> files = OldFiles();
        files.push_back({"new", ""});
        return files;
    }
};

TEST_F(MigrationPowerLossTest, TheNextOpeningFinishesWhatThePowerEnded)
{
    for (const OldFile& file : Files())
        for (const World& world : {UnlinksLast, UnlinksComeUndone})
        {
            SCOPED_TRACE(file.Name + ", " + world.Name);
            Write(world, file);
            const SimulatedDisk written = Disk;
            const std::string whole = Found();
            bool idle = false;
            for (int call = 1; !idle && !HasFailure(); ++call)
            {
                SCOPED_TRACE("call " + std::to_string(call));
                Disk = written;
                const Death death = DieInOpening(call);
                idle = death.Idle;
                EXPECT_EQ(death.Done, idle);
                Reboot(ShortOrLong(1, 10), [&] { EXPECT_EQ(Found(), whole); });
            }
        }
}

// Lets the power go as a connection that is opened while this is in scope begins its `number`-th statement.
class DeathAtStatement
{
  public:
    DeathAtStatement(SimulatedDisk& disk, int number) : Disk(disk), Remaining(number)
    {
        current = this;
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(Watch));
    }
    ~DeathAtStatement() { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(Watch)); }
    DeathAtStatement(const DeathAtStatement&) = delete;
    DeathAtStatement& operator=(const DeathAtStatement&) = delete;

  private:
    static int Watch(sqlite3* db, const char**, const sqlite3_api_routines*)
    {
        return sqlite3_trace_v2(db, SQLITE_TRACE_STMT, Begins, nullptr);
    }
    static int Begins(unsigned, void*, void*, void*)
    {
        if (--current->Remaining == 0)
            current->Disk.Die();
        return 0;
    }

    static inline DeathAtStatement* current = nullptr;
    SimulatedDisk& Disk;
    int Remaining;
};

TEST_F(MigrationPowerLossTest, TheNextOpeningGoesOnAfterAnyStatement)
{
    for (const OldFile& file : Files())
    {
        SCOPED_TRACE(file.Name);
        Write(UnlinksLast, file);
        const SimulatedDisk written = Disk;
        const std::string whole = Found();
        bool idle = false;
        for (int statement = 1; !idle && !HasFailure(); ++statement)
        {
            SCOPED_TRACE("statement " + std::to_string(statement));
            Disk = written;
            {
                const DeathAtStatement death(Disk, statement);
                idle = DieInOpening(0).Idle;
            }
            Reboot(ShortOrLong(1, 10), [&] { EXPECT_EQ(Found(), whole); });
        }
    }
}

// So many that SQLite cannot keep them in memory until the end of the transaction.
TEST_F(MigrationPowerLossTest, ALargeEventTableIsRebuiltWholeOrNotAtAll)
{
    constexpr auto many =
        "WITH RECURSIVE n(i) AS (SELECT 100 UNION ALL SELECT i+1 FROM n WHERE i<6100) INSERT INTO PlantEvents "
        "SELECT i,'0f0f0f0f-0000-4000-8000-000000000005','2019-06-'||(10+i%20),CASE i%4 WHEN 0 THEN 'Water' ELSE 'Note' "
        "END,CASE i%4 WHEN 0 THEN 'Watered' WHEN 1 THEN 'Topped' ELSE i||printf('%300s','') END FROM n;"
        "INSERT INTO PlantCareEntries(TimelineEventID,PlantUUID,CareDate) "
        "SELECT ID,PlantUUID,EventDate FROM PlantEvents WHERE ID>=100 AND ID%8=0;";
    Write(UnlinksLast, OldFiles().at(1), many); // the oldest form that has every table
    const SimulatedDisk written = Disk;
    int calls = 0;
    {
        PlantDatabase database;
        Disk.DieAt(0);
        ASSERT_TRUE(database.Open(File));
        calls = Disk.Calls();
        int spilled = 0;
        int highest = 0;
        sqlite3_db_status(database.NativeHandle(), SQLITE_DBSTATUS_CACHE_SPILL, &spilled, &highest, 0);
        EXPECT_GT(spilled, 100);
    }
    const std::string whole = Found();
    const TimeLimit limit;
    for (int point = 0; (IsLongForm() ? !limit.IsOver() : point < 60) && !HasFailure(); ++point)
    {
        const int call = 1 + static_cast<int>(Random() % static_cast<unsigned>(calls));
        SCOPED_TRACE("call " + std::to_string(call));
        Disk = written;
        EXPECT_FALSE(DieInOpening(call).Done);
        Reboot(1, [&] { EXPECT_EQ(Found(), whole); });
    }
}

// Stays the last: the figures are of the whole program.
TEST(PowerLossFiguresTest, ThePowerWentOftenEnough)
{
    EXPECT_GE(AddToFigure("crash points", 0), 5'000);
}

} // namespace
