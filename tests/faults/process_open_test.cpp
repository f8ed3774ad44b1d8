// Two processes that open one journal at the same time, with every schema that it can have.

#include "support/child_process.h"
#include "support/figures.h"
#include "support/journal_files.h"
#include "support/test_form.h"
#include "testing/old_files.h"
#include "testing/plain_connection.h"
#include "testing/records.h"
#include "testing/schema_statements.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

using namespace support;

namespace
{

using Random = std::mt19937_64;

// Where the process pauses while it opens a file: before the `Remaining`-th statement, counted from 1, that it runs
// without a lock. On Windows, a thread stands for the process.
struct Pause
{
    int Remaining = 0;
    std::function<void(const std::string& statement)> At;
};
thread_local Pause openingPause;

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
    if (own && sqlite3_get_autocommit(static_cast<sqlite3*>(db)) != 0 && --openingPause.Remaining == 0)
        openingPause.At(statement);
    return 0;
}

int OnConnection(sqlite3* db, char**, const sqlite3_api_routines*)
{
    return sqlite3_trace_v2(db, SQLITE_TRACE_STMT, OnStatement, db);
}

// The work of a process that opens a file. It pauses before a statement, which it sends after "at ", and sends the
// result of the opening.
auto OpenWithPause(const std::string& path, int number)
{
    return [path, number](const ParentProcess& parent)
    {
        openingPause = {number, [&](const std::string& statement)
                        {
                            parent.Send("at " + statement);
                            parent.Wait();
                        }};
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(OnConnection));
        parent.Send(OpeningResult(path));
    };
}

bool HasPaused(const std::string& line)
{
    return line.starts_with("at ");
}

class ConcurrentOpenTest : public JournalFileTest, public testing::WithParamInterface<OldFile>
{
  protected:
    ConcurrentOpenTest()
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

    // Expects that at most one of two openings failed, and that the file has the content of a complete migration.
    void ExpectOneFailureAtMost(const std::string& first, const std::string& second) const
    {
        static const std::set<std::string> possible = {
            "open",
            "duplicate column name: SeedDate",
            "duplicate column name: FlipHeightCm",
            "duplicate column name: FinalHeightCm",
            "duplicate column name: Sex",
            "duplicate column name: SeedYield",
            // If the system pauses one of them for longer than the other waits.
            "database is locked",
            "cannot rollback - no transaction is active",
        };
        for (const std::string& result : {first, second})
        {
            EXPECT_TRUE(possible.contains(result)) << result;
            AddToFigure("concurrent openings: " + result);
        }
        EXPECT_TRUE(first == "open" || second == "open") << first << ", " << second;
        EXPECT_EQ(ContentOnceOpen(Path), Whole);
    }

    std::string Whole;
};

// Each process pauses at a statement. The first continues to its end, then the second.
TEST_P(ConcurrentOpenTest, InAnyOrderOneMayFailAndNothingIsLost)
{
    Random random(Seed());
    bool paused = true;
    for (int firstPause = 1; paused; ++firstPause)
    {
        bool secondPaused = true;
        for (int secondPause = ShortOrLong(static_cast<int>(random() % 32), 1); secondPaused; ++secondPause)
        {
            SCOPED_TRACE("paused at " + std::to_string(firstPause) + " and " + std::to_string(secondPause));
            Restore();
            ChildProcess first(OpenWithPause(Path, firstPause));
            std::string firstResult = first.ReadLine().value_or("");
            paused = HasPaused(firstResult);
            ChildProcess second(OpenWithPause(Path, secondPause));
            std::string secondResult = second.ReadLine().value_or("");
            secondPaused = HasPaused(secondResult);
            if (paused)
            {
                first.Continue();
                firstResult = first.ReadLine().value_or("");
            }
            if (secondPaused)
            {
                second.Continue();
                secondResult = second.ReadLine().value_or("");
            }
            EXPECT_EQ(first.End(), "done");
            EXPECT_EQ(second.End(), "done");
            ExpectOneFailureAtMost(firstResult, secondResult);
            AddToFigure("orders of two concurrent openings");
            secondPaused = secondPaused && IsLongForm();
        }
    }
}

TEST_P(ConcurrentOpenTest, AtTheSameTimeOneMayFailAndNothingIsLost)
{
    for (int round = 0; round < ShortOrLong(10, 500); ++round)
    {
        Restore();
        const auto open = [&](const ParentProcess& parent)
        {
            parent.Send("ready");
            parent.Wait();
            parent.Send(OpeningResult(Path));
        };
        ChildProcess first(open);
        ChildProcess second(open);
        ASSERT_EQ(first.ReadLine(), "ready");
        ASSERT_EQ(second.ReadLine(), "ready");
        first.Continue();
        second.Continue();
        const std::string firstResult = first.ReadLine().value_or("");
        const std::string secondResult = second.ReadLine().value_or("");
        ExpectOneFailureAtMost(firstResult, secondResult);
        AddToFigure("openings at the same time");
    }
}

// A process that opens the file first reads the schema of the event table and then rebuilds the table. If another
// process rebuilds it and writes events in between, the first takes those events for old ones.
TEST_P(ConcurrentOpenTest, EventsWrittenMeanwhileLoseOnlyTheStockPhrases)
{
    bool paused = true;
    for (int number = 1; paused; ++number)
    {
        Restore();
        ChildProcess opening(OpenWithPause(Path, number));
        const std::string at = opening.ReadLine().value_or("");
        paused = HasPaused(at);
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
        if (paused)
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
        std::reverse(stored.begin(), stored.end()); // the newest is first
        EXPECT_EQ(stored, written);
    }
}

std::vector<OldFile> MissingAndOldFiles()
{
    std::vector<OldFile> files = OldFiles();
    files.push_back({"no_file", ""});
    return files;
}

INSTANTIATE_TEST_SUITE_P(File, ConcurrentOpenTest, testing::ValuesIn(MissingAndOldFiles()),
                         [](const auto& test) { return test.param.Name; });

} // namespace
