// Several processes and several threads that write to one journal at the same time.

#include "support/child_process.h"
#include "support/figures.h"
#include "support/journal_files.h"
#include "testing/plain_connection.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <deque>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using namespace support;

namespace
{

using ConcurrentWriteTest = JournalFileTest;

constexpr int Writers = 4;
constexpr int EntriesEach = 500;

// Writes care entries. Sends each to the parent, after + if it was stored and after - if not. Waits for the parent at
// the beginning and halfway.
void WriteEntries(const ParentProcess& parent, const std::string& path, int writer)
{
    PlantDatabase database;
    OpenOrThrow(database, path);
    PlantRepository repository(database);
    for (int i = 0; i < EntriesEach; ++i)
    {
        if (i == 0 || i == EntriesEach / 2)
        {
            parent.Send("ready");
            parent.Wait();
        }
        PlantCareEntry entry = WaterEntry("basil", "writer " + std::to_string(writer) + ", entry " + std::to_string(i));
        const bool stored = repository.CreatePlantCareEntry(entry);
        parent.Send((stored ? '+' : '-') + entry.Notes);
    }
}

TEST_F(ConcurrentWriteTest, FourProcessesLoseAndRepeatNoEntry)
{
    CreateNamedPlant(Path, "basil");
    std::deque<ChildProcess> children;
    for (int writer = 0; writer < Writers; ++writer)
        children.emplace_back([&](const ParentProcess& parent) { WriteEntries(parent, Path, writer); });
    for (ChildProcess& child : children)
        ASSERT_EQ(child.ReadLine(), "ready");
    for (const ChildProcess& child : children)
        child.Continue();

    // Halfway, a lock outlasts their waiting, so that each of them fails at least once.
    std::vector<std::string> sent;
    for (ChildProcess& child : children)
        for (std::string line; (line = child.ReadLine().value_or("ready")) != "ready";)
            sent.push_back(line);
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
            sent.push_back(std::move(line));
        EXPECT_EQ(child.End(), "done");
    }
    EXPECT_EQ(sent.size(), Writers * EntriesEach);

    const PlainConnection file(Path);
    EXPECT_EQ(Damage(file.NativeHandle()), "ok");
    Rows acknowledged;
    for (const std::string& line : sent)
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

TEST_F(ConcurrentWriteTest, ThreadsWithADatabaseEachLoseNothing)
{
    constexpr int threads = 4;
    constexpr int entries = 50;
    const auto ownPath = [&](int thread) { return Scratch.File(std::to_string(thread) + ".db"); };
    CreateNamedPlant(Path, "basil");
    for (int thread = 0; thread < threads; ++thread)
        CreateNamedPlant(ownPath(thread), "basil");

    std::vector<int> stored(threads);
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
                        PlantCareEntry entry = WaterEntry("basil", std::to_string(thread) + '/' + std::to_string(i));
                        std::vector<PlantEvent> timeline;
                        if (repository->CreatePlantCareEntry(entry) && repository->ListPlantEvents("basil", timeline))
                            ++stored[static_cast<std::size_t>(thread)];
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
    EXPECT_EQ(stored, std::vector<int>(threads, 2 * entries));
    EXPECT_EQ(entriesIn(Path), Rows{Row(4, std::to_string(threads * entries))});
    for (int thread = 0; thread < threads; ++thread)
        EXPECT_EQ(entriesIn(ownPath(thread)), Rows{Row(4, std::to_string(entries))});
    AddToFigure("entries stored by threads", std::uint64_t{2} * threads * entries);
}

} // namespace
