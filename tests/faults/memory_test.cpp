// Every operation and every opening, with a failure of each allocation in turn, and with heap limits of every size.

#include "support/allocation_failure.h"
#include "support/copy_over.h"
#include "support/figures.h"
#include "support/journal_test.h"
#include "support/on_windows.h"
#include "support/repository_operations.h"
#include "support/test_form.h"
#include "testing/old_files.h"

#include <filesystem>
#include <functional>
#include <map>
#include <new>
#include <optional>

#include <sqlite3.h>

using namespace support;

namespace
{

// Limits the heap of SQLite to this many bytes more than it uses. Memory that SQLite frees can be allocated again.
class HeapLimit
{
  public:
    explicit HeapLimit(std::int64_t bytes) { sqlite3_hard_heap_limit64(sqlite3_memory_used() + bytes); }
    ~HeapLimit() { sqlite3_hard_heap_limit64(0); }
    HeapLimit(const HeapLimit&) = delete;
    HeapLimit& operator=(const HeapLimit&) = delete;
};

// The result of a call while memory was short.
struct Outcome
{
    bool Done = false;
    bool Clean = false; // memory did not run out
};

template <typename Call> Outcome WithFailure(Allocator allocator, int number, const Call& call, bool lasting = false)
{
    Outcome outcome;
    const AllocationFailure failure(allocator, number, lasting);
    try
    {
        outcome.Done = call();
    }
    catch (const std::bad_alloc&)
    {
    }
    outcome.Clean = !failure.Happened();
    return outcome;
}

template <typename Call> bool WithHeapOf(std::int64_t bytes, const Call& call)
{
    const HeapLimit limit(bytes);
    try
    {
        return call();
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

// A file that is restored before each trial.
class MemoryTest : public testing::Test
{
  protected:
    void Restore() const { CopyOver(Original, Path); }

    // The content of the file, which must be undamaged and without a rollback journal. Equal files are read once.
    const std::string& Found()
    {
        const std::string journal = Path + "-journal";
        // Without memory, SQLite on Windows cannot remove the rollback journal. The next use of the file rolls the
        // write back. A rollback journal that was not synced begins with a zero: it is not applied, and the next write
        // replaces it.
        if (OnWindows && std::filesystem::exists(journal))
            PlainConnection(Path).RunSQL("SELECT COUNT(*) FROM sqlite_master;");
        EXPECT_FALSE(std::filesystem::exists(journal) && (!OnWindows || FileBytes(journal).front() != '\0'));
        const auto [place, unknown] = Contents.try_emplace(FileBytes(Path));
        if (unknown)
        {
            const PlainConnection file(Path);
            EXPECT_EQ(Damage(file.NativeHandle()), "ok");
            place->second = Content(file.NativeHandle());
        }
        return place->second;
    }

    ScratchDirectory Scratch;
    std::string Original = Scratch.File("original.db");
    std::string Path = Scratch.File("journal.db");

  private:
    std::map<std::string, std::string> Contents;
};

// ---- Operations

class OperationMemoryTest : public MemoryTest, public testing::WithParamInterface<Operation>
{
  protected:
    OperationMemoryTest()
    {
        PlantDatabase database;
        EXPECT_TRUE(database.Open(Original));
        PlantRepository repository(database);
        Planted = StoreSampleRecords(repository);
        Before = Content(database.NativeHandle());
        RunSQL(database.NativeHandle(), "BEGIN; INSERT INTO Strains(Name) VALUES('a new strain');");
        WithTheStrain = Content(database.NativeHandle());
        RunSQL(database.NativeHandle(), "ROLLBACK;");

        Restore();
        EXPECT_TRUE(database.Open(Path));
        SampleRecords sample = Planted;
        const CallRecorder recorder;
        Succeeds = GetParam().Call(repository, sample);
        RegistersAStrain = recorder.Calls().front().SQL.starts_with("INSERT INTO Strains(Name) VALUES(?) ON CONFLICT");
        After = Content(database.NativeHandle());
    }

    // Makes one call on the original journal while memory is short.
    Outcome Try(const std::function<Outcome(const std::function<bool()>&)>& shortOfMemory)
    {
        Restore();
        PlantDatabase database;
        EXPECT_TRUE(database.Open(Path));
        PlantRepository repository(database);
        SampleRecords sample = Planted;
        const Outcome outcome = shortOfMemory([&] { return GetParam().Call(repository, sample); });

        EXPECT_EQ(sqlite3_next_stmt(database.NativeHandle(), nullptr), nullptr);
        EXPECT_NE(sqlite3_get_autocommit(database.NativeHandle()), 0);
        EXPECT_EQ(database.LastError(), "");
        ExpectHonest(outcome.Done);

        if (!outcome.Done)
        {
            sample = Planted;
            EXPECT_EQ(GetParam().Call(repository, sample), Succeeds) << "once there is memory again";
        }
        database.Close();
        EXPECT_EQ(Found(), After);
        AddToFigure("allocations failed in operations", outcome.Clean ? 0 : 1);
        return outcome;
    }

    void ExpectHonest(bool done)
    {
        const std::string& content = Found();
        const bool strainOnly = !done && RegistersAStrain && content == WithTheStrain;
        EXPECT_TRUE(strainOnly || content == (done ? After : Before)) << content;
    }

    SampleRecords Planted;
    std::string Before;
    std::string WithTheStrain; // a plant's new strain is registered first, and stays where the plant is refused
    std::string After;
    bool Succeeds = false;
    bool RegistersAStrain = false;
};

TEST_P(OperationMemoryTest, AFailedAllocationIsReportedAndLeavesNoPartialChange)
{
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        for (int number = 1;; ++number)
        {
            SCOPED_TRACE((allocator == Allocator::New ? "operator new " : "SQLite's allocation ") +
                         std::to_string(number));
            const Outcome outcome = Try([&](const auto& call) { return WithFailure(allocator, number, call); });
            if (!outcome.Clean)
                continue;
            EXPECT_EQ(outcome.Done, Succeeds);
            break;
        }
}

TEST_P(OperationMemoryTest, AFullHeapIsReportedAndLeavesNoPartialChange)
{
    const std::int64_t step = ShortOrLong(400, 50);
    int untroubled = 0; // SQLite may do with less than it would like to have: one success is not the end
    for (std::int64_t bytes = 0; untroubled < 20; bytes += step)
    {
        SCOPED_TRACE(std::to_string(bytes) + " bytes left");
        const Outcome outcome = Try([&](const auto& call) { return Outcome{WithHeapOf(bytes, call), false}; });
        untroubled += outcome.Done == Succeeds ? 1 : 0;
    }
}

// Another thread may allocate the memory that a statement frees, so that none is left for the rollback.
TEST_P(OperationMemoryTest, AHeapThatFillsUpIsReportedAndLeavesNoPartialChange)
{
    for (const SQLiteCall call : {SQLiteCall::Exec, SQLiteCall::Finalize})
    {
        Outcome outcome;
        for (int number = 1; !outcome.Clean; ++number)
        {
            SCOPED_TRACE((call == SQLiteCall::Exec ? "execution " : "finalization ") + std::to_string(number));
            outcome = Try(
                [&](const auto& operation)
                {
                    std::optional<HeapLimit> full;
                    const AfterCall fill(call, number, [&] { full.emplace(0); });
                    const bool done = operation();
                    return Outcome{done, !fill.Happened()};
                });
        }
        EXPECT_EQ(outcome.Done, Succeeds);
    }
}

// A limit of the library: a rollback needs memory. Without it the transaction stays open until the connection is
// closed.
TEST_P(OperationMemoryTest, ClosingEndsATransactionThatCouldNotBeRolledBack)
{
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
    {
        Outcome outcome;
        for (int number = 1; !outcome.Clean; number += ShortOrLong(5, 1))
        {
            SCOPED_TRACE((allocator == Allocator::New ? "operator new " : "SQLite's allocation ") +
                         std::to_string(number));
            Restore();
            PlantDatabase database;
            EXPECT_TRUE(database.Open(Path));
            PlantRepository repository(database);
            SampleRecords sample = Planted;
            outcome = WithFailure(
                allocator, number, [&] { return GetParam().Call(repository, sample); }, true);
            EXPECT_EQ(sqlite3_next_stmt(database.NativeHandle(), nullptr), nullptr);
            const bool open = sqlite3_get_autocommit(database.NativeHandle()) == 0;
            EXPECT_FALSE(open && (outcome.Done || allocator == Allocator::New));
            AddToFigure("transactions left open without memory", open ? 1 : 0);
            database.Close();
            ExpectHonest(outcome.Done);
        }
    }
}

std::string NameOf(const testing::TestParamInfo<Operation>& test)
{
    return test.param.Name;
}

INSTANTIATE_TEST_SUITE_P(EveryOperation, OperationMemoryTest, testing::ValuesIn(Operations()), NameOf);
INSTANTIATE_TEST_SUITE_P(EveryRefusal, OperationMemoryTest, testing::ValuesIn(RefusedOperations()), NameOf);

// ---- Opening

struct File
{
    std::string Name;
    std::function<void(const std::string&)> Write; // empty: there is none
};

std::vector<File> Files()
{
    std::vector<File> files = {{"NoFile", {}},
                               {"CurrentFile", [](const std::string& path)
                                {
                                    PlantDatabase database;
                                    EXPECT_TRUE(database.Open(path));
                                    PlantRepository repository(database);
                                    StoreSampleRecords(repository);
                                }}};
    for (const OldFile& old : OldFiles())
        files.push_back({"Form" + old.Name, [&](const std::string& path) { WriteOldFile(path, old); }});
    return files;
}

class OpeningMemoryTest : public MemoryTest, public testing::WithParamInterface<File>
{
  protected:
    OpeningMemoryTest()
    {
        if (GetParam().Write)
            GetParam().Write(Original);
        Restore();
        EXPECT_TRUE(PlantDatabase().Open(Path));
        After = Found();
    }

    void Restore() const
    {
        std::filesystem::remove(Path);
        if (GetParam().Write)
            MemoryTest::Restore();
    }

    // Opens the file while memory is short. The next opening must do the rest.
    Outcome Try(const std::function<Outcome(const std::function<bool()>&)>& shortOfMemory)
    {
        Restore();
        PlantDatabase database;
        const Outcome outcome = shortOfMemory([&] { return database.Open(Path); });
        EXPECT_EQ(database.IsOpen(), outcome.Done);
        EXPECT_TRUE(!outcome.Done || sqlite3_next_stmt(database.NativeHandle(), nullptr) == nullptr);

        std::string error;
        EXPECT_TRUE(database.Open(Path, &error)) << error;
        EXPECT_EQ(Found(), After);
        AddToFigure("allocations failed in openings", outcome.Clean ? 0 : 1);
        return outcome;
    }

    std::string After;
};

TEST_P(OpeningMemoryTest, TheNextOpenFinishesAfterAFailedAllocation)
{
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
    {
        const int step = allocator == Allocator::New ? 1 : ShortOrLong(61, 1); // SQLite's are too many for every build
        Outcome outcome;
        for (int number = 1; !outcome.Clean; number += step)
        {
            SCOPED_TRACE((allocator == Allocator::New ? "operator new " : "SQLite's allocation ") +
                         std::to_string(number));
            outcome = Try([&](const auto& call) { return WithFailure(allocator, number, call); });
        }
        EXPECT_TRUE(outcome.Done);
    }
}

TEST_P(OpeningMemoryTest, TheNextOpenFinishesAfterAFullHeap)
{
    const std::int64_t step = ShortOrLong(20'000, 200);
    int untroubled = 0;
    for (std::int64_t bytes = 0; untroubled < 20; bytes += step)
    {
        SCOPED_TRACE(std::to_string(bytes) + " bytes left");
        untroubled += Try([&](const auto& call) { return Outcome{WithHeapOf(bytes, call), false}; }).Done ? 1 : 0;
    }
}

INSTANTIATE_TEST_SUITE_P(Of, OpeningMemoryTest, testing::ValuesIn(Files()),
                         [](const auto& test) { return test.param.Name; });

} // namespace
