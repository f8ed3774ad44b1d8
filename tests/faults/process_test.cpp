// Several processes and threads with one journal file, and a process that may not do what it wants with it.

#include "support/child_process.h"
#include "support/figures.h"
#include "support/journal_test.h"
#include "support/repository_operations.h"
#include "support/test_form.h"
#include "testing/old_files.h"
#include "testing/schema_statements.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <filesystem>
#include <functional>
#include <random>
#include <set>
#include <stdexcept>
#include <thread>

#include <grp.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

using namespace support;

namespace
{

using Clock = std::chrono::steady_clock;
using Random = std::mt19937_64;

void MustOpen(PlantDatabase& database, const std::string& path)
{
    if (!database.Open(path))
        throw std::runtime_error(database.LastError());
}

// What opening comes to: "open", or the reason why not.
std::string Opening(const std::string& path)
{
    PlantDatabase database;
    std::string error;
    return database.Open(path, &error) ? "open" : error;
}

// Opens the file, which must succeed and find no damage, and gives what it holds then.
std::string ContentOnceOpen(const std::string& path)
{
    PlantDatabase database;
    std::string error;
    EXPECT_TRUE(database.Open(path, &error)) << error;
    EXPECT_EQ(Damage(database.NativeHandle()), "ok");
    return Content(database.NativeHandle());
}

// A plant in the file at `path`, which is made where it is missing. Its identifier is its name.
void MakePlant(const std::string& path, const std::string& name)
{
    PlantDatabase database;
    ASSERT_TRUE(database.Open(path));
    Plant plant;
    plant.UUID = name;
    plant.Name = name;
    ASSERT_TRUE(PlantRepository(database).CreatePlant(plant));
}

// A garden in a new file.
SampleRecords MakeSampleJournal(const std::string& path)
{
    PlantDatabase database;
    MustOpen(database, path);
    PlantRepository repository(database);
    return StoreSampleRecords(repository);
}

bool IsReading(const Operation& operation)
{
    return operation.Name.starts_with("List") || operation.Name.starts_with("Get");
}

PlantCareEntry Watering(const std::string& plant, const std::string& notes)
{
    PlantCareEntry entry;
    entry.PlantUUID = plant;
    entry.CareDate = "2020-05-20";
    entry.Notes = notes;
    return entry;
}

class ProcessTest : public testing::Test
{
  protected:
    ScratchDirectory Scratch;
    std::string Path = Scratch.File("journal.db");
};

// ---- Writing at once

constexpr int Writers = 4;
constexpr int EntriesEach = 500;

// Writes care entries, telling each with what came back. Awaits the parent's word at the beginning and half way.
void WriteEntries(const ParentProcess& parent, const std::string& path, int writer)
{
    PlantDatabase database;
    MustOpen(database, path);
    PlantRepository repository(database);
    for (int i = 0; i < EntriesEach; ++i)
    {
        if (i == 0 || i == EntriesEach / 2)
        {
            parent.Send("ready");
            parent.Wait();
        }
        PlantCareEntry entry = Watering("basil", "writer " + std::to_string(writer) + ", entry " + std::to_string(i));
        const bool kept = repository.CreatePlantCareEntry(entry);
        parent.Send((kept ? '+' : '-') + entry.Notes);
    }
}

TEST_F(ProcessTest, FourWritersLoseNothingAndDoubleNothing)
{
    MakePlant(Path, "basil");
    std::deque<ChildProcess> children;
    for (int writer = 0; writer < Writers; ++writer)
        children.emplace_back([&](const ParentProcess& parent) { WriteEntries(parent, Path, writer); });
    for (ChildProcess& child : children)
        ASSERT_EQ(child.ReadLine(), "ready");
    for (const ChildProcess& child : children)
        child.Continue();

    // Half way the file is held for longer than they wait: each is refused at least once.
    std::vector<std::string> told;
    for (ChildProcess& child : children)
        for (std::string line; (line = child.ReadLine().value_or("ready")) != "ready";)
            told.push_back(line);
    {
        const PlainConnection other(Path);
        other.RunSQL("BEGIN IMMEDIATE;");
        for (const ChildProcess& child : children)
            child.Continue();
        std::this_thread::sleep_for(std::chrono::milliseconds(3'200));
    }
    for (ChildProcess& child : children)
    {
        for (std::string& line : child.ReadLines())
            told.push_back(std::move(line));
        EXPECT_EQ(child.End(), "done");
    }
    EXPECT_EQ(told.size(), Writers * EntriesEach);

    const PlainConnection file(Path);
    EXPECT_EQ(Damage(file.NativeHandle()), "ok");
    Rows acknowledged;
    for (const std::string& line : told)
    {
        AddToFigure(line[0] == '+' ? "entries acknowledged" : "entries refused");
        if (line[0] == '+')
            acknowledged.push_back({line.substr(1), "0 ml | " + line.substr(1)});
    }
    EXPECT_GE(AddToFigure("entries refused", 0), Writers);
    std::sort(acknowledged.begin(), acknowledged.end());
    EXPECT_EQ(file.QueryRows("SELECT c.Notes,e.Details FROM PlantCareEntries c JOIN PlantEvents e ON "
                             "e.ID=c.TimelineEventID ORDER BY 1;"),
              acknowledged);
    const std::string number = std::to_string(acknowledged.size());
    EXPECT_EQ(file.QueryRows("SELECT COUNT(*),COUNT(DISTINCT TimelineEventID) FROM PlantCareEntries;"),
              (Rows{{number, number}}));
    EXPECT_EQ(file.Value("SELECT COUNT(*) FROM PlantEvents;"), number);
}

// ---- Waiting for a lock

// What another process is at when it holds the file, and what the rebuild of an event table comes to then.
struct Lock
{
    std::string Name;
    std::string SQL;
    std::string RebuildRefusal;
};

// Makes a call twice, each time at the parent's word, telling how many milliseconds it took and what it came to.
void CallTwice(const ParentProcess& parent, const std::function<std::string()>& call)
{
    parent.Send("ready");
    for (int i = 0; i < 2; ++i)
    {
        parent.Wait();
        const auto start = Clock::now();
        const std::string result = call();
        parent.Send(std::to_string((Clock::now() - start) / std::chrono::milliseconds(1)));
        parent.Send(result);
    }
}

// Every writing operation and every kind of opening, under every lock, each in a process and on a file of its own and
// all at the same time.
TEST_F(ProcessTest, ALockIsWaitedForAndOneThatOutlastsTheWaitLeavesTheFileAsItWas)
{
    constexpr auto locked = "database is locked";
    const std::vector<Lock> locks = {
        {"a writer", "BEGIN IMMEDIATE;", "cannot rollback - no transaction is active"},
        {"a writer that commits", "BEGIN EXCLUSIVE;", locked},
        {"a reader", "BEGIN; SELECT * FROM sqlite_master;", locked},
    };
    struct Case
    {
        std::string Name;
        std::string Path;
        std::string LockSQL;
        std::string Refused; // what the process tells
        std::string Done;
        std::string Before;
        std::string After;
    };
    std::deque<Case> cases;
    std::deque<ChildProcess> children;
    const auto newCase = [&](const std::string& name, const Lock& lock, const std::string& refused,
                             const std::string& done) -> Case&
    {
        const std::string path = Scratch.File(std::to_string(cases.size()) + ".db");
        return cases.emplace_back(
            Case{name + " under the lock of " + lock.Name, path, lock.SQL, refused, done, "", ""});
    };
    for (const Operation& operation : Operations())
    {
        if (IsReading(operation))
            continue;
        std::string after;
        {
            PlantDatabase undisturbed;
            ASSERT_TRUE(undisturbed.Open(""));
            PlantRepository repository(undisturbed);
            SampleRecords sample = StoreSampleRecords(repository);
            ASSERT_TRUE(operation.Call(repository, sample));
            after = Content(undisturbed.NativeHandle());
        }
        for (const Lock& lock : locks)
        {
            Case& c = newCase(operation.Name, lock, "false", "true");
            const SampleRecords sample = MakeSampleJournal(c.Path);
            c.Before = ContentOnceOpen(c.Path);
            c.After = after;
            children.emplace_back(
                [&](const ParentProcess& parent)
                {
                    PlantDatabase database;
                    MustOpen(database, c.Path);
                    PlantRepository repository(database);
                    CallTwice(parent,
                              [&]
                              {
                                  SampleRecords copy = sample;
                                  return operation.Call(repository, copy) ? "true" : "false";
                              });
                });
        }
    }
    std::vector<OldFile> files = OldFiles();
    std::erase_if(files, HasCurrentSchema); // these are opened without a lock
    files.push_back({"an empty file", "SELECT 1;"});
    for (const OldFile& file : files)
        for (const Lock& lock : locks)
        {
            const bool hasEveryColumn = file.Name == "08_seed_yield" || file.Name == "10_unchecked";
            Case& c = newCase("opening " + file.Name, lock, hasEveryColumn ? lock.RebuildRefusal : locked, "open");
            WriteOldFile(c.Path, file);
            c.After = ContentOnceOpen(c.Path);
            WriteOldFile(c.Path, file);
            c.Before = Content(PlainConnection(c.Path).NativeHandle());
            children.emplace_back([&](const ParentProcess& parent)
                                  { CallTwice(parent, [&] { return Opening(c.Path); }); });
        }

    for (ChildProcess& child : children)
        ASSERT_EQ(child.ReadLine(), "ready");
    std::deque<PlainConnection> others;
    for (const Case& c : cases)
        others.emplace_back(c.Path).RunSQL(c.LockSQL);

    for (const ChildProcess& child : children)
        child.Continue();
    for (std::size_t i = 0; i < cases.size(); ++i)
    {
        SCOPED_TRACE(cases[i].Name);
        const int milliseconds = std::stoi(children[i].ReadLine().value_or("0"));
        EXPECT_GE(milliseconds, 2'400);
        EXPECT_LT(milliseconds, 10'000);
        EXPECT_EQ(children[i].ReadLine(), cases[i].Refused);
        EXPECT_EQ(Content(others[i].NativeHandle()), cases[i].Before);
        AddToFigure("calls that a lock outlasted");
    }

    for (const ChildProcess& child : children)
        child.Continue();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    for (const PlainConnection& other : others)
        other.RunSQL("ROLLBACK;");
    for (std::size_t i = 0; i < cases.size(); ++i)
    {
        SCOPED_TRACE(cases[i].Name);
        EXPECT_GE(std::stoi(children[i].ReadLine().value_or("0")), 500);
        EXPECT_EQ(children[i].ReadLine(), cases[i].Done);
        EXPECT_EQ(children[i].End(), "done");
        EXPECT_EQ(ContentOnceOpen(cases[i].Path), cases[i].After);
        AddToFigure("calls that outlasted a lock");
    }
}

// ---- Opening at once

// Where the process halts while it opens a file: at the `Remaining`-th statement, counted from 1, that it is about to
// run with no lock held.
struct Halt
{
    int Remaining = 0;
    std::function<void(const std::string& statement)> At;
} halt;

int OnStatement(unsigned, void* db, void*, void* text)
{
    static const std::vector<std::string> opening = []
    {
        std::vector<std::string> columns;
        for (const AddedColumn& column : AddedColumns())
            columns.push_back(column.Name);
        return OpeningStatements(columns, true);
    }();
    const std::string statement = static_cast<const char*>(text);
    const bool own = std::find(opening.begin(), opening.end(), statement) != opening.end();
    if (own && sqlite3_get_autocommit(static_cast<sqlite3*>(db)) != 0 && --halt.Remaining == 0)
        halt.At(statement);
    return 0;
}

int OnConnection(sqlite3* db, char**, const sqlite3_api_routines*)
{
    return sqlite3_trace_v2(db, SQLITE_TRACE_STMT, OnStatement, db);
}

// A process that opens a file, halting on the way: it tells the statement that it halts at, "at " before it, and in
// the end what the opening came to.
auto OpeningWithAHalt(const std::string& path, int number)
{
    return [path, number](const ParentProcess& parent)
    {
        halt = {number, [&](const std::string& statement)
                {
                    parent.Send("at " + statement);
                    parent.Wait();
                }};
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(OnConnection));
        parent.Send(Opening(path));
    };
}

bool HasHalted(const std::string& line)
{
    return line.starts_with("at ");
}

class OpeningAtOnceTest : public ProcessTest, public testing::WithParamInterface<OldFile>
{
  protected:
    OpeningAtOnceTest()
    {
        Restore();
        Whole = ContentOnceOpen(Path);
    }

    void Restore() const
    {
        std::filesystem::remove(Path);
        if (!GetParam().SQL.empty())
            WriteOldFile(Path, GetParam());
    }

    // Two processes have opened the file. One may be refused, and nothing is lost.
    void ExpectOneRefusalAtMost(const std::string& first, const std::string& second) const
    {
        static const std::set<std::string> possible = {
            "open",
            "duplicate column name: SeedDate",
            "duplicate column name: FlipHeightCm",
            "duplicate column name: FinalHeightCm",
            "duplicate column name: Sex",
            "duplicate column name: SeedYield",
            // Where the machine lets one of them stand still for longer than the other waits.
            "database is locked",
            "cannot rollback - no transaction is active",
        };
        for (const std::string& result : {first, second})
        {
            EXPECT_TRUE(possible.contains(result)) << result;
            AddToFigure("openings at once: " + result);
        }
        EXPECT_TRUE(first == "open" || second == "open") << first << ", " << second;
        EXPECT_EQ(ContentOnceOpen(Path), Whole);
    }

    std::string Whole;
};

// One process gets to some statement and the other, too; then the one goes on to its end, and then the other.
TEST_P(OpeningAtOnceTest, OneMayBeRefusedAndNothingIsLost)
{
    Random random(Seed());
    bool halted = true;
    for (int firstHalt = 1; halted; ++firstHalt)
    {
        bool secondHalted = true;
        for (int secondHalt = ShortOrLong(static_cast<int>(random() % 32), 1); secondHalted; ++secondHalt)
        {
            SCOPED_TRACE("halts " + std::to_string(firstHalt) + " and " + std::to_string(secondHalt));
            Restore();
            ChildProcess first(OpeningWithAHalt(Path, firstHalt));
            std::string firstResult = first.ReadLine().value_or("");
            halted = HasHalted(firstResult);
            ChildProcess second(OpeningWithAHalt(Path, secondHalt));
            std::string secondResult = second.ReadLine().value_or("");
            secondHalted = HasHalted(secondResult);
            if (halted)
            {
                first.Continue();
                firstResult = first.ReadLine().value_or("");
            }
            if (secondHalted)
            {
                second.Continue();
                secondResult = second.ReadLine().value_or("");
            }
            EXPECT_EQ(first.End(), "done");
            EXPECT_EQ(second.End(), "done");
            ExpectOneRefusalAtMost(firstResult, secondResult);
            AddToFigure("orders of two openings");
            secondHalted = secondHalted && IsLongForm();
        }
    }
}

TEST_P(OpeningAtOnceTest, FromTheSameMomentOneMayBeRefusedAndNothingIsLost)
{
    for (int round = 0; round < ShortOrLong(10, 500); ++round)
    {
        Restore();
        const auto open = [&](const ParentProcess& parent)
        {
            parent.Send("ready");
            parent.Wait();
            parent.Send(Opening(Path));
        };
        ChildProcess first(open);
        ChildProcess second(open);
        ASSERT_EQ(first.ReadLine(), "ready");
        ASSERT_EQ(second.ReadLine(), "ready");
        first.Continue();
        second.Continue();
        const std::string firstResult = first.ReadLine().value_or("");
        const std::string secondResult = second.ReadLine().value_or("");
        ExpectOneRefusalAtMost(firstResult, secondResult);
        AddToFigure("races of two openings");
    }
}

// A process that opens the file looks at its event table and makes it anew a moment later. Where another has made it
// anew in that moment, and has written events, these are taken for old ones.
TEST_P(OpeningAtOnceTest, WhatIsWrittenMeanwhileStaysButForTheStockPhrases)
{
    bool halted = true;
    for (int number = 1; halted; ++number)
    {
        Restore();
        ChildProcess opening(OpeningWithAHalt(Path, number));
        const std::string at = opening.ReadLine().value_or("");
        halted = HasHalted(at);
        SCOPED_TRACE(at);

        std::vector<PlantEvent> written;
        {
            PlantDatabase database;
            ASSERT_TRUE(database.Open(Path));
            PlantRepository repository(database);
            Plant plant;
            ASSERT_TRUE(repository.CreatePlant(plant));
            for (const auto& [type, details] : {std::pair(PlantEventType::Note, "a note"),
                                                {PlantEventType::Note, "watered"},
                                                {PlantEventType::Topped, "above the fifth node"},
                                                {PlantEventType::Water, "Watered"},
                                                {PlantEventType::Note, "Topped"}})
            {
                PlantEvent event;
                event.PlantUUID = plant.UUID;
                event.EventDate = "2021-01-02";
                event.Type = type;
                event.Details = details;
                ASSERT_TRUE(repository.CreatePlantEvent(event));
                written.push_back(event);
            }
        }
        if (halted)
        {
            opening.Continue();
            opening.ReadLine();
        }
        EXPECT_EQ(opening.End(), "done");

        if (at == "at PRAGMA foreign_keys=OFF;" || at == "at BEGIN IMMEDIATE;")
        {
            written[3].Details = "";
            written[4].Type = PlantEventType::Topped;
            written[4].Details = "";
        }
        PlantDatabase database;
        ASSERT_TRUE(database.Open(Path));
        std::vector<PlantEvent> stored;
        ASSERT_TRUE(PlantRepository(database).ListPlantEvents(written[0].PlantUUID, stored));
        std::reverse(stored.begin(), stored.end()); // the newest came first
        EXPECT_EQ(stored, written);
    }
}

std::vector<OldFile> NewAndOldFiles()
{
    std::vector<OldFile> files = OldFiles();
    files.push_back({"no_file", ""});
    return files;
}

INSTANTIATE_TEST_SUITE_P(Of, OpeningAtOnceTest, testing::ValuesIn(NewAndOldFiles()),
                         [](const auto& test) { return test.param.Name; });

// ---- Permissions

// Does what a user may do who is not the administrator, and gives what was told.
std::vector<std::string> AsAUser(const std::function<void(const ParentProcess&)>& work)
{
    ChildProcess child(
        [&](const ParentProcess& parent)
        {
            constexpr uid_t nobody = 65534;
            if (geteuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0))
                throw std::runtime_error("privileges could not be given up");
            work(parent);
        });
    std::vector<std::string> lines = child.ReadLines();
    EXPECT_EQ(child.End(), "done");
    return lines;
}

void Allow(const std::string& path, unsigned mode)
{
    std::filesystem::permissions(path, static_cast<std::filesystem::perms>(mode));
}

class PermissionTest : public ProcessTest
{
  protected:
    PermissionTest()
    {
        Allow(Scratch.File(""), 0755);
        std::filesystem::create_directory(Directory);
        Allow(Directory, 0777);
    }
    ~PermissionTest() override { Allow(Directory, 0777); }

    std::string Directory = Scratch.File("journals");
    std::string Path = Directory + "/journal.db";
};

// What a user is not permitted to do.
struct Prohibition
{
    std::string Name;
    unsigned FileMode;
    unsigned DirectoryMode;
    bool Reading; // is permitted
};

TEST_F(PermissionTest, WhatIsNotPermittedIsRefusedAndChangesNothing)
{
    const std::string cannotOpen = "unable to open database file";
    const std::string readOnly = "attempt to write a readonly database";
    const std::vector<Prohibition> prohibitions = {
        {"a read-only file", 0444, 0777, true},
        {"a read-only directory", 0666, 0555, true},
        {"a read-only file in a read-only directory", 0444, 0555, true},
        {"a file without permissions", 0, 0777, false},
        {"a directory without permissions", 0666, 0, false},
    };
    for (const Prohibition& prohibition : prohibitions)
    {
        SCOPED_TRACE(prohibition.Name);
        // Does `work` on the file without the permission; what it tells, and not a byte changed.
        const auto prohibited = [&](const std::function<void(const ParentProcess&)>& work)
        {
            const std::string bytes = FileBytes(Path);
            Allow(Path, prohibition.FileMode);
            Allow(Directory, prohibition.DirectoryMode);
            std::vector<std::string> told = AsAUser(work);
            Allow(Directory, 0777);
            Allow(Path, 0666);
            EXPECT_TRUE(FileBytes(Path) == bytes);
            return told;
        };

        for (const OldFile& file : OldFiles())
        {
            SCOPED_TRACE(file.Name);
            WriteOldFile(Path, file);
            const std::string whole = ContentOnceOpen(Path);
            WriteOldFile(Path, file);
            EXPECT_EQ(prohibited([&](const ParentProcess& parent) { parent.Send(Opening(Path)); }),
                      std::vector<std::string>{!prohibition.Reading     ? cannotOpen
                                               : HasCurrentSchema(file) ? "open"
                                                                        : readOnly});
            EXPECT_EQ(ContentOnceOpen(Path), whole);
        }

        std::filesystem::remove(Path);
        const SampleRecords sample = MakeSampleJournal(Path);
        const std::string whole = ContentOnceOpen(Path);
        const std::vector<std::string> told = prohibited(
            [&](const ParentProcess& parent)
            {
                PlantDatabase database;
                if (!database.Open(Path))
                    return parent.Send(database.LastError());
                PlantRepository repository(database);
                for (const Operation& operation : Operations())
                {
                    SampleRecords copy = sample;
                    if (operation.Call(repository, copy) != IsReading(operation))
                        parent.Send(operation.Name);
                }
                parent.Send(Content(database.NativeHandle()) == whole ? "all is there" : "something is missing");
                Strain strain;
                strain.Name = "a new strain";
                repository.CreateStrain(strain);
                parent.Send(sqlite3_errmsg(database.NativeHandle()));
            });
        EXPECT_EQ(told, prohibition.Reading ? (std::vector<std::string>{"all is there", readOnly})
                                            : std::vector<std::string>{cannotOpen});
        MakePlant(Path, "basil"); // once it is permitted again
    }
}

TEST_F(PermissionTest, NothingIsMadeWhereThatIsNotPermitted)
{
    Allow(Directory, 0555);
    EXPECT_EQ(AsAUser(
                  [&](const ParentProcess& parent)
                  {
                      parent.Send(Opening(Path));
                      parent.Send(Opening(Directory + "/further/journal.db"));
                  }),
              (std::vector<std::string>(2, "unable to open database file")));
    EXPECT_TRUE(std::filesystem::is_empty(Directory));
}

TEST_F(PermissionTest, ADirectoryInTheFilesPlaceIsRefusedAndStays)
{
    std::filesystem::create_directory(Path);
    Allow(Path, 0777);
    const auto open = [&](const ParentProcess& parent) { parent.Send(Opening(Path)); };
    EXPECT_EQ(AsAUser(open), std::vector<std::string>{"unable to open database file"});
    EXPECT_EQ(Opening(Path), "unable to open database file");
    EXPECT_TRUE(std::filesystem::is_empty(Path));
}

// ---- Threads

TEST_F(ProcessTest, ThreadsWithDatabasesOfTheirOwnLoseNothing)
{
    constexpr int threads = 4;
    constexpr int entries = 50;
    const auto ownPath = [&](int thread) { return Scratch.File(std::to_string(thread) + ".db"); };
    MakePlant(Path, "basil");
    for (int thread = 0; thread < threads; ++thread)
        MakePlant(ownPath(thread), "basil");

    std::vector<int> kept(threads);
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread)
        running.emplace_back(
            [&, thread]
            {
                PlantDatabase shared;
                PlantDatabase own;
                if (!shared.Open(Path) || !own.Open(ownPath(thread)))
                    return;
                PlantRepository sharedRepository(shared);
                PlantRepository ownRepository(own);
                for (int i = 0; i < entries; ++i)
                    for (PlantRepository* repository : {&sharedRepository, &ownRepository})
                    {
                        PlantCareEntry entry = Watering("basil", std::to_string(thread) + '/' + std::to_string(i));
                        std::vector<PlantEvent> timeline;
                        if (repository->CreatePlantCareEntry(entry) && repository->ListPlantEvents("basil", timeline))
                            ++kept[static_cast<std::size_t>(thread)];
                    }
            });
    for (std::thread& thread : running)
        thread.join();

    const auto entriesIn = [](const std::string& path)
    {
        const PlainConnection file(path);
        EXPECT_EQ(Damage(file.NativeHandle()), "ok");
        return file.QueryRows(
            "SELECT COUNT(*),COUNT(DISTINCT Notes),COUNT(DISTINCT TimelineEventID),(SELECT COUNT(*) FROM "
            "PlantEvents) FROM PlantCareEntries;");
    };
    EXPECT_EQ(kept, std::vector<int>(threads, 2 * entries));
    EXPECT_EQ(entriesIn(Path), Rows{Row(4, std::to_string(threads * entries))});
    for (int thread = 0; thread < threads; ++thread)
        EXPECT_EQ(entriesIn(ownPath(thread)), Rows{Row(4, std::to_string(entries))});
    AddToFigure("entries kept by threads", std::uint64_t{2} * threads * entries);
}

} // namespace
