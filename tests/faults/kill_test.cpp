// A killed process that was writing to a journal. The file has every acknowledged call, at most one more, and no part
// of a call.

#include "support/child_process.h"
#include "support/figures.h"
#include "support/journal_files.h"
#include "support/sqlite_calls.h"
#include "support/test_form.h"
#include "testing/old_files.h"
#include "testing/plain_connection.h"

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

// One writing call, which depends only on its number and on the content of the journal. On journals with the same
// content, the same calls in the same order have the same results. What a call stores has its number.
class NumberedCall
{
  public:
    NumberedCall(PlantRepository& repository, std::uint64_t number)
        : Repository(repository), Number(number), Random(Seed() * 1'000'003 + number),
          Date("2020-05-" + std::to_string(10 + Random() % 20)), Text("call " + std::to_string(number))
    {
        if (Random() % 8 == 0)
            Text.append(Below(20'000), '.'); // several pages of the file
    }

    // Returns the result of the call.
    bool Make()
    {
        if (!Repository.ListPlants(Plants))
            throw std::runtime_error("the journal could not be read");
        Owner = Plants.empty() ? Plant() : Plants[Below(Plants.size())];
        switch (Plants.size() < 4 ? 0 : Random() % 18)
        {
        case 0:
        case 1:
            return AddPlant();
        case 2:
            Owner.Notes = Text;
            Owner.MotherPlantUUID = Plants[Below(Plants.size())].UUID; // fails where this would close a cycle
            return Repository.UpdatePlant(Owner);
        case 3:
            return Plants.size() > 12 ? Repository.DeletePlant(Owner.UUID) : Repository.DeleteHarvestRecord(Owner.UUID);
        case 4:
        case 5:
            return WriteStrain();
        case 6:
        case 7:
            return WriteHarvest();
        case 8:
        case 9:
            return WriteEvent();
        case 10:
            return WritePhoto();
        case 11:
            return WriteRecord(Listed(&R::ListPlantHealthObservations), &R::CreatePlantHealthObservation,
                               &R::UpdatePlantHealthObservation, &R::DeletePlantHealthObservation,
                               [&](PlantHealthObservation& observation) { observation.Issue = Text; });
        case 12:
            return WriteRecord(Listed(&R::ListPlantJournalEntries), &R::CreatePlantJournalEntry,
                               &R::UpdatePlantJournalEntry, &R::DeletePlantJournalEntry,
                               [&](PlantJournalEntry& entry) { entry.Details = Text; });
        default:
            return WriteCare();
        }
    }

  private:
    using R = PlantRepository;

    std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Random() % count); }

    // Creates, updates or deletes one of the records. `fill` sets the fields that the call stores.
    template <typename Record, typename Result, typename Updated, typename Key, typename Fill>
    bool WriteRecord(std::vector<Record> records, bool (R::*create)(Record&), Result (R::*update)(Updated),
                     bool (R::*remove)(Key), const Fill& fill)
    {
        const auto fillWithOwner = [&](Record& record)
        {
            if constexpr (requires { record.PlantUUID; })
                record.PlantUUID = Owner.UUID;
            fill(record);
        };
        const std::uint64_t choice = Random() % 4;
        if (records.empty() || choice < 2)
        {
            Record record;
            fillWithOwner(record);
            return (Repository.*create)(record);
        }
        Record& record = records[Below(records.size())];
        if (choice == 2)
        {
            fillWithOwner(record);
            return (Repository.*update)(record);
        }
        if constexpr (requires { record.UUID; })
            return (Repository.*remove)(record.UUID);
        else
            return (Repository.*remove)(record.ID);
    }

    template <typename Record> std::vector<Record> Listed(bool (R::*list)(const std::string&, std::vector<Record>&))
    {
        std::vector<Record> records;
        if (!(Repository.*list)(Owner.UUID, records))
            throw std::runtime_error("the journal could not be read");
        return records;
    }

    bool AddPlant()
    {
        Plant added;
        added.UUID = "plant " + std::to_string(Number);
        added.Name = Text;
        added.Strain = Random() % 2 == 0 ? Owner.Strain : "strain " + std::to_string(Number);
        added.MotherPlantUUID = Random() % 2 == 0 ? Owner.UUID : std::string();
        return Repository.CreatePlant(added);
    }

    bool WriteStrain()
    {
        std::vector<Strain> strains;
        if (!Repository.ListStrains(strains))
            throw std::runtime_error("the journal could not be read");
        return WriteRecord(strains, &R::CreateStrain, &R::UpdateStrain, &R::DeleteStrain,
                           [&](Strain& strain)
                           {
                               strain.Name = "strain " + std::to_string(Number);
                               strain.Notes = Text;
                           });
    }

    bool WriteHarvest()
    {
        HarvestRecord record;
        Repository.GetHarvestRecord(Owner.UUID, record);
        record.HarvestDate = Date;
        record.Notes = Text;
        return Repository.SaveHarvestRecord(Owner, record);
    }

    bool WriteEvent()
    {
        std::vector<PlantEvent> events = Listed(&R::ListPlantEvents);
        std::erase_if(events, [](const PlantEvent& e) { return e.Type != PlantEventType::Note; }); // others have owners
        return WriteRecord(events, &R::CreatePlantEvent, &R::UpdatePlantEvent, &R::DeletePlantEvent,
                           [&](PlantEvent& event)
                           {
                               event.EventDate = Date;
                               event.Details = Text;
                           });
    }

    bool WritePhoto()
    {
        return WriteRecord(Listed(&R::ListPlantPhotos), &R::CreatePlantPhoto, &R::UpdatePlantPhoto,
                           &R::DeletePlantPhoto,
                           [&](PlantPhoto& photo)
                           {
                               if (photo.UUID.empty())
                                   photo.UUID = "photo " + std::to_string(Number);
                               photo.FilePath = Text;
                           });
    }

    bool WriteCare()
    {
        return WriteRecord(Listed(&R::ListPlantCareEntries), &R::CreatePlantCareEntry, &R::UpdatePlantCareEntry,
                           &R::DeletePlantCareEntry,
                           [&](PlantCareEntry& entry)
                           {
                               entry.CareDate = Date;
                               entry.Action = Random() % 2 == 0 ? PlantCareAction::Feed : PlantCareAction::Water;
                               entry.Notes = Text;
                           });
    }

    PlantRepository& Repository;
    std::uint64_t Number;
    std::mt19937_64 Random;
    std::string Date;
    std::string Text;
    std::vector<Plant> Plants;
    Plant Owner; // of the record
};

bool MakeCall(PlantRepository& repository, std::uint64_t number)
{
    return NumberedCall(repository, number).Make();
}

// ---- The writer

// Makes calls without end, from `number` on. Sends "attempt" before each call and its result after it.
void MakeCalls(const ParentProcess& parent, const std::string& path, std::uint64_t number)
{
    PlantDatabase database;
    OpenOrThrow(database, path);
    PlantRepository repository(database);
    for (;; ++number)
    {
        if (number % 32 == 0)
            OpenOrThrow(database, path);
        parent.Send("attempt");
        parent.Send(MakeCall(repository, number) ? "true" : "false");
    }
}

void Sleep(std::uint64_t microseconds)
{
    usleep(static_cast<useconds_t>(microseconds));
}

class KillTest : public JournalFileTest
{
  protected:
    // Every care entry and harvest record has its event, and every such event has its owner.
    void ExpectEventsOfAllOwners() const
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

    // A rollback journal is left if the process was killed during a write.
    void CountRollbackJournal() const
    {
        std::error_code none;
        if (std::filesystem::file_size(Path + "-journal", none) > 0 && !none)
            AddToFigure("kills that left a rollback journal");
    }
};

class KilledWriterTest : public KillTest
{
  protected:
    // Starts a writer at the call `number` and kills it. Returns the lines that it sent.
    std::vector<std::string> LinesOfKilledWriter(Random& random, std::uint64_t number) const
    {
        ChildProcess child([&](const ParentProcess& parent) { MakeCalls(parent, Path, number); });
        std::vector<std::string> lines;
        for (std::uint64_t wait = random() % 40; wait > 0; --wait)
            lines.push_back(child.ReadLine().value_or("the end"));
        Sleep(random() % 1'000);
        child.Kill();
        for (std::string& line : child.ReadLines())
            lines.push_back(std::move(line));
        EXPECT_EQ(child.End(), "signal 9") << testing::PrintToString(lines);
        AddToFigure("kills");
        CountRollbackJournal();
        return lines;
    }

    // Repeats the calls of the killed writer on a copy of the journal. The journal must have the content of the copy
    // after the acknowledged calls, or after the attempted one. Sets `number` to the next call.
    void ExpectContentOf(const std::vector<std::string>& lines, std::uint64_t& number) const
    {
        const std::string found = ContentOnceOpen(Path);
        ExpectEventsOfAllOwners();

        PlantDatabase repeated;
        ASSERT_TRUE(repeated.Open(Copy));
        PlantRepository repository(repeated);
        const auto content = [&] { return Content(repeated.NativeHandle()); };
        for (const std::string& line : lines)
            if (line == "attempt")
                AddToFigure("calls attempted");
            else
            {
                ASSERT_EQ(MakeCall(repository, number++) ? "true" : "false", line) << "call " << number - 1;
                AddToFigure("calls acknowledged");
            }
        if (lines.empty() || lines.back() != "attempt")
        {
            EXPECT_EQ(found, content());
            return;
        }

        AddToFigure("kills during a call");
        const std::uint64_t last = number++;
        if (found == content())
            return;
        bool registered = false;
        {
            // The new strain of a new plant is stored first. The file may have only that.
            const CallFailure between(SQLiteCall::Step, 1, SQLITE_IOERR, "INSERT INTO Plants(");
            MakeCall(repository, last);
            registered = between.Happened();
        }
        if (registered && found == content())
            return;
        if (registered)
            MakeCall(repository, last);
        EXPECT_EQ(found, content()) << "call " << last;
        AddToFigure("kills during a call that was stored");
    }

    std::string Copy = Scratch.File("copy.db");
};

TEST_F(KilledWriterTest, EveryAcknowledgedCallIsStoredAndNoneIsStoredInPart)
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
            ExpectContentOf(LinesOfKilledWriter(random, number), number);
            if (HasFailure())
                return;
        }
    }
    EXPECT_GE(AddToFigure("kills", 0), 200);
}

TEST_F(KillTest, TheNextOpenFinishesAMigrationThatWasKilled)
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
    starts.push_back({"no file", ""});
    for (const OldFile& start : starts)
    {
        SCOPED_TRACE(start.Name);
        if (!start.SQL.empty())
            WriteOldFile(original, start);
        restore(start);
        const std::string whole = ContentOnceOpen(Path);

        const auto open = [&](const ParentProcess& parent)
        {
            parent.Send("opening");
            PlantDatabase database;
            OpenOrThrow(database, Path);
            parent.Send("open");
            parent.Wait();
        };
        std::uint64_t longest = 2'000; // microseconds, adjusted until about one opening in three ends before the kill
        bool again = false;            // whether the next opening, too, is killed
        for (int kills = 0; kills < ShortOrLong(15, 500);)
        {
            if (!again)
                restore(start);
            ChildProcess child(open);
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
                AddToFigure("kills during an opening");
                CountRollbackJournal();
            }
            again = random() % 3 == 0;
            if (!again)
            {
                ASSERT_EQ(ContentOnceOpen(Path), whole);
            }
        }
    }
    EXPECT_GE(AddToFigure("kills during an opening", 0), 150);
}

} // namespace
