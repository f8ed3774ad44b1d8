// A process that writes a journal is killed at any moment, without a chance to tidy up: what it was told to be in the
// file is there, what it never asked for is not, and nothing is half done.

#include "support/child_process.h"
#include "support/figures.h"
#include "support/journal_test.h"
#include "support/test_form.h"
#include "testing/old_files.h"

#include <algorithm>
#include <climits>
#include <filesystem>
#include <random>
#include <stdexcept>

#include <gtest/gtest.h>
#include <unistd.h>

using namespace support;

namespace
{

using Random = std::mt19937_64;

// ---- The calls

// Creates, updates or deletes one of a plant's records. `fill` writes into a record what the call is to store.
template <typename Record, typename Result, typename Updated, typename Key, typename Fill>
bool Keep(PlantRepository& repository, Random& random, std::vector<Record> records,
          bool (PlantRepository::*create)(Record&), Result (PlantRepository::*update)(Updated),
          bool (PlantRepository::*remove)(Key), const Fill& fill)
{
    const std::uint64_t choice = random() % 4;
    if (records.empty() || choice < 2)
    {
        Record record;
        fill(record);
        return (repository.*create)(record);
    }
    Record& record = records[random() % records.size()];
    if (choice == 2)
    {
        fill(record);
        return (repository.*update)(record);
    }
    if constexpr (requires { record.UUID; })
        return (repository.*remove)(record.UUID);
    else
        return (repository.*remove)(record.ID);
}

// Makes one writing call, which the number and the journal's content decide: made in the same order on journals of the
// same content, the calls of the same numbers come to the same. What a call stores tells its number.
bool Write(PlantRepository& repository, std::uint64_t number)
{
    using R = PlantRepository;
    Random random(Seed() * 1'000'003 + number);
    const std::string date = "2020-05-" + std::to_string(10 + random() % 20);
    std::string mark = "call " + std::to_string(number);
    if (random() % 8 == 0)
        mark.append(random() % 20'000, '.'); // several pages of the file

    std::vector<Plant> plants;
    std::vector<Strain> strains;
    if (!repository.ListPlants(plants) || !repository.ListStrains(strains))
        throw std::runtime_error("the journal could not be read");
    Plant plant = plants.empty() ? Plant() : plants[random() % plants.size()];
    const auto listed = [&](auto list)
    {
        const auto read = [&]<typename Record>(bool (R::*operation)(const std::string&, std::vector<Record>&))
        {
            std::vector<Record> records;
            if (!(repository.*operation)(plant.UUID, records))
                throw std::runtime_error("the journal could not be read");
            return records;
        };
        return read(list);
    };

    const std::uint64_t kind = plants.size() < 4 ? 0 : random() % 18;
    switch (kind)
    {
    case 0:
    case 1:
    {
        Plant added;
        added.UUID = "plant " + std::to_string(number);
        added.Name = mark;
        added.Strain = random() % 2 == 0 ? plant.Strain : "strain " + std::to_string(number);
        added.MotherPlantUUID = random() % 2 == 0 ? plant.UUID : std::string();
        return repository.CreatePlant(added);
    }
    case 2:
        plant.Notes = mark;
        plant.MotherPlantUUID = plants[random() % plants.size()].UUID; // refused where that would close a circle
        return repository.UpdatePlant(plant);
    case 3:
        return plants.size() > 12 ? repository.DeletePlant(plant.UUID) : repository.DeleteHarvestRecord(plant.UUID);
    case 4:
    case 5:
        return Keep(repository, random, strains, &R::CreateStrain, &R::UpdateStrain, &R::DeleteStrain,
                    [&](Strain& strain)
                    {
                        strain.Name = "strain " + std::to_string(number);
                        strain.Notes = mark;
                    });
    case 6:
    case 7:
    {
        HarvestRecord record;
        repository.GetHarvestRecord(plant.UUID, record);
        record.HarvestDate = date;
        record.Notes = mark;
        return repository.SaveHarvestRecord(plant, record);
    }
    case 8:
    case 9:
    {
        std::vector<PlantEvent> events = listed(&R::ListPlantEvents);
        std::erase_if(events, [](const PlantEvent& e) { return e.Type != PlantEventType::Note; }); // others have owners
        return Keep(repository, random, events, &R::CreatePlantEvent, &R::UpdatePlantEvent, &R::DeletePlantEvent,
                    [&](PlantEvent& event)
                    {
                        event.PlantUUID = plant.UUID;
                        event.EventDate = date;
                        event.Details = mark;
                    });
    }
    case 10:
        return Keep(repository, random, listed(&R::ListPlantPhotos), &R::CreatePlantPhoto, &R::UpdatePlantPhoto,
                    &R::DeletePlantPhoto,
                    [&](PlantPhoto& photo)
                    {
                        if (photo.UUID.empty())
                            photo.UUID = "photo " + std::to_string(number);
                        photo.PlantUUID = plant.UUID;
                        photo.FilePath = mark;
                    });
    case 11:
        return Keep(repository, random, listed(&R::ListPlantHealthObservations), &R::CreatePlantHealthObservation,
                    &R::UpdatePlantHealthObservation, &R::DeletePlantHealthObservation,
                    [&](PlantHealthObservation& observation)
                    {
                        observation.PlantUUID = plant.UUID;
                        observation.Issue = mark;
                    });
    case 12:
        return Keep(repository, random, listed(&R::ListPlantJournalEntries), &R::CreatePlantJournalEntry,
                    &R::UpdatePlantJournalEntry, &R::DeletePlantJournalEntry,
                    [&](PlantJournalEntry& entry)
                    {
                        entry.PlantUUID = plant.UUID;
                        entry.Details = mark;
                    });
    default:
        return Keep(repository, random, listed(&R::ListPlantCareEntries), &R::CreatePlantCareEntry,
                    &R::UpdatePlantCareEntry, &R::DeletePlantCareEntry,
                    [&](PlantCareEntry& entry)
                    {
                        entry.PlantUUID = plant.UUID;
                        entry.CareDate = date;
                        entry.Action = random() % 2 == 0 ? PlantCareAction::Feed : PlantCareAction::Water;
                        entry.Notes = mark;
                    });
    }
}

// ---- The writer

void MustOpen(PlantDatabase& database, const std::string& path)
{
    if (!database.Open(path))
        throw std::runtime_error(database.LastError());
}

// Makes call after call from `number` on, without end, telling of each that it is about to be made and what came back.
void WriteOn(const ParentProcess& parent, const std::string& path, std::uint64_t number)
{
    PlantDatabase database;
    MustOpen(database, path);
    PlantRepository repository(database);
    for (;; ++number)
    {
        if (number % 32 == 0)
            MustOpen(database, path);
        parent.Send("attempt");
        parent.Send(Write(repository, number) ? "true" : "false");
    }
}

void Sleep(std::uint64_t microseconds)
{
    usleep(static_cast<useconds_t>(microseconds));
}

class KillTest : public testing::Test
{
  protected:
    // What the next opening finds after a kill.
    std::string ContentFound() const
    {
        PlantDatabase database;
        std::string error;
        EXPECT_TRUE(database.Open(Path, &error)) << error;
        EXPECT_EQ(Damage(database.NativeHandle()), "ok");
        return Content(database.NativeHandle());
    }

    // Every care entry and every harvest record has the event that mirrors it, and none is left without its owner.
    void ExpectThatEventsHaveTheirOwners() const
    {
        const PlainConnection file(Path);
        EXPECT_EQ(file.Value("SELECT COUNT(*) FROM (SELECT TimelineEventID,PlantUUID,CareDate AS Date,Action AS Type "
                             "FROM PlantCareEntries UNION ALL SELECT TimelineEventID,PlantUUID,HarvestDate,'Harvest' "
                             "FROM HarvestRecords) o LEFT JOIN PlantEvents e ON e.ID=o.TimelineEventID AND "
                             "e.PlantUUID=o.PlantUUID AND e.EventDate=o.Date AND e.EventType=o.Type "
                             "WHERE e.ID IS NULL;"),
                  "0");
        EXPECT_EQ(file.Value("SELECT (SELECT COUNT(*) FROM PlantEvents WHERE EventType IN ('Feed','Water','Harvest'))-"
                             "(SELECT COUNT(*) FROM PlantCareEntries)-(SELECT COUNT(*) FROM HarvestRecords);"),
                  "0");
    }

    // What a killed process leaves of a write that it was in the midst of.
    void CountRollbackJournal() const
    {
        std::error_code none;
        if (std::filesystem::file_size(Path + "-journal", none) > 0 && !none)
            AddToFigure("kills that left a rollback journal");
    }

    ScratchDirectory Scratch;
    std::string Path = Scratch.File("journal.db");
};

class KilledWriterTest : public KillTest
{
  protected:
    // What a writer has told that began with the call `number` and was killed.
    std::vector<std::string> ToldByAKilledWriter(Random& random, std::uint64_t number) const
    {
        ChildProcess child([&](const ParentProcess& parent) { WriteOn(parent, Path, number); });
        std::vector<std::string> told;
        for (std::uint64_t wait = random() % 40; wait > 0; --wait)
            told.push_back(child.ReadLine().value_or("the end"));
        Sleep(random() % 1'000);
        child.Kill();
        for (std::string& line : child.ReadLines())
            told.push_back(std::move(line));
        EXPECT_EQ(child.End(), "signal 9") << testing::PrintToString(told);
        AddToFigure("kills");
        CountRollbackJournal();
        return told;
    }

    // Makes the calls that were told again, undisturbed, on a copy of the journal as it was before them. The journal
    // must be where its copy is after the calls that were acknowledged, or after the one more that was attempted.
    // Leaves in `number` the call to go on with.
    void ExpectWhatWasTold(const std::vector<std::string>& told, std::uint64_t& number) const
    {
        const std::string found = ContentFound();
        ExpectThatEventsHaveTheirOwners();

        PlantDatabase undisturbed;
        ASSERT_TRUE(undisturbed.Open(Copy));
        PlantRepository repository(undisturbed);
        const auto content = [&] { return Content(undisturbed.NativeHandle()); };
        for (const std::string& line : told)
            if (line == "attempt")
                AddToFigure("calls attempted");
            else
            {
                ASSERT_EQ(Write(repository, number++) ? "true" : "false", line) << "call " << number - 1;
                AddToFigure("calls acknowledged");
            }
        if (told.empty() || told.back() != "attempt")
        {
            EXPECT_EQ(found, content());
            return;
        }

        AddToFigure("kills amid a call");
        const std::uint64_t last = number++;
        if (found == content())
            return;
        bool registered = false;
        {
            // A new plant's new strain is registered first, and may be all that is there.
            const CallFailure between(SQLiteCall::Step, 1, SQLITE_IOERR, "INSERT INTO Plants(");
            Write(repository, last);
            registered = between.Happened();
        }
        if (registered && found == content())
            return;
        if (registered)
            Write(repository, last);
        EXPECT_EQ(found, content()) << "call " << last;
        AddToFigure("kills amid a call that was stored");
    }

    std::string Copy = Scratch.File("copy.db");
};

TEST_F(KilledWriterTest, HasStoredWhatWasAcknowledgedAndNothingThatWasNotAttempted)
{
    Random random(Seed());
    std::uint64_t number = 0;
    const TimeLimit limit;
    for (int journal = 0; journal < ShortOrLong(7, INT_MAX) && !limit.IsOver(); ++journal)
    {
        std::filesystem::remove(Path);
        for (int round = 0; round < 40; ++round)
        {
            SCOPED_TRACE("journal " + std::to_string(journal) + ", call " + std::to_string(number) + " and on");
            std::filesystem::remove(Copy);
            if (std::filesystem::exists(Path))
                std::filesystem::copy_file(Path, Copy);
            ExpectWhatWasTold(ToldByAKilledWriter(random, number), number);
            if (HasFailure())
                return;
        }
    }
    EXPECT_GE(AddToFigure("kills", 0), 200);
}

TEST_F(KillTest, AnOpeningThatIsKilledIsFinishedByTheNext)
{
    const std::string original = Scratch.File("original.db");
    Random random(Seed());
    const auto restore = [&](const OldFile& file)
    {
        std::filesystem::remove(Path);
        std::filesystem::remove(Path + "-journal");
        if (!file.SQL.empty())
            std::filesystem::copy_file(original, Path);
    };

    std::vector<OldFile> starts = OldFiles();
    starts.push_back({"no file yet", ""});
    for (const OldFile& start : starts)
    {
        SCOPED_TRACE(start.Name);
        if (!start.SQL.empty())
            WriteOldFile(original, start);
        restore(start);
        const std::string whole = ContentFound();

        const auto openIt = [&](const ParentProcess& parent)
        {
            parent.Send("opening");
            PlantDatabase database;
            MustOpen(database, Path);
            parent.Send("open");
            parent.Wait();
        };
        std::uint64_t longest = 2'000; // microseconds, brought to where about every third opening comes to its end
        bool again = false;            // what a killed one has left is opened, and killed, once more
        for (int kills = 0; kills < ShortOrLong(15, 500);)
        {
            if (!again)
                restore(start);
            ChildProcess child(openIt);
            ASSERT_EQ(child.ReadLine(), "opening");
            Sleep(random() % longest);
            child.Kill();
            const bool opened = !child.ReadLines().empty();
            ASSERT_EQ(child.End(), "signal 9");
            longest = opened ? longest - longest / 8 : longest + longest / 16;
            if (!opened)
            {
                ++kills;
                AddToFigure("kills");
                AddToFigure("kills amid an opening");
                CountRollbackJournal();
            }
            again = random() % 3 == 0;
            if (!again)
            {
                ASSERT_EQ(ContentFound(), whole);
            }
        }
    }
    EXPECT_GE(AddToFigure("kills amid an opening", 0), 150);
}

} // namespace
