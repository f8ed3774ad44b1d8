// Every operation, and every opening of a journal, with every single call of the disk failing in turn: once or from
// then on, with an I/O error or for lack of room.

#include "support/disk_failure.h"
#include "support/journal_test.h"
#include "support/old_files.h"
#include "support/operations.h"
#include "support/schema_statements.h"
#include "support/soak.h"
#include "support/statements.h"

#include <algorithm>
#include <compare>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <stdexcept>

#include <sqlite3.h>

namespace
{

constexpr DiskCall Calls[] = {DiskCall::Open, DiskCall::Read, DiskCall::Write,  DiskCall::Truncate, DiskCall::Sync,
                              DiskCall::Size, DiskCall::Lock, DiskCall::Delete, DiskCall::Access};

// Gives each fault to `attempt`, which tells whether it happened, until one does not: each `stride`-th from the first
// on. Returns how many there were.
template <typename Attempt> std::uint64_t TryEveryFault(const Attempt& attempt, int stride = 1)
{
    std::uint64_t faults = 0;
    for (const DiskCall call : Calls)
        for (const DiskError error : {DiskError::IO, DiskError::Full})
            for (const bool lasting : {false, true})
                for (DiskFault fault{call, error, lasting, 1}; !testing::Test::HasFailure(); fault.Number += stride)
                {
                    SCOPED_TRACE(testing::Message() << fault);
                    if (!attempt(fault))
                        break;
                    ++faults;
                }
    return Count("disk faults", faults), faults;
}

// ---- Files as they lie on the disk

// A journal and what SQLite keeps beside it to undo an unfinished change. No text: no file.
struct Files
{
    std::string Journal;
    std::string Undo;

    friend auto operator<=>(const Files&, const Files&) = default;
};

std::string UndoPath(const std::string& path)
{
    return path + "-journal";
}

Files FilesAt(const std::string& path)
{
    const auto bytes = [](const std::string& file)
    { return std::filesystem::exists(file) ? FileBytes(file) : std::string(); };
    return {bytes(path), bytes(UndoPath(path))};
}

void Lay(const std::string& path, const Files& files)
{
    const auto write = [](const std::string& file, const std::string& bytes)
    {
        std::filesystem::remove(file);
        if (!bytes.empty() && !std::ofstream(file, std::ios::binary).write(bytes.data(), std::ssize(bytes)))
            throw std::runtime_error("cannot write " + file);
    };
    write(path, files.Journal);
    write(UndoPath(path), files.Undo);
}

// What is found in files that a program left behind when it died.
struct Finding
{
    std::string Damage;
    std::string Content;
    std::string ContentOnceOpened; // by the library, which brings it up to date
};

class DiskErrorTest : public testing::Test
{
  protected:
    // Equal files are looked at but once.
    const Finding& Found()
    {
        const auto [place, unknown] = Findings.try_emplace(FilesAt(Path));
        Finding& finding = place->second;
        if (unknown)
        {
            const std::string copy = Scratch.File("copy.db");
            Lay(copy, place->first);
            {
                const PlainConnection connection(copy);
                finding.Damage = Damage(connection.NativeHandle());
                finding.Content = Content(connection.NativeHandle());
            }
            Lay(copy, place->first);
            PlantDatabase database;
            EXPECT_TRUE(database.Open(copy));
            EXPECT_EQ(Damage(database.NativeHandle()), "ok");
            finding.ContentOnceOpened = Content(database.NativeHandle());
        }
        return finding;
    }

    // No statement is left prepared and no transaction open, and the journal can be written and read.
    static void ExpectWorking(PlantDatabase& database)
    {
        EXPECT_EQ(sqlite3_next_stmt(database.NativeHandle(), nullptr), nullptr);
        EXPECT_NE(sqlite3_get_autocommit(database.NativeHandle()), 0);

        PlantRepository repository(database);
        Strain trial;
        trial.Name = "a trial";
        EXPECT_TRUE(repository.CreateStrain(trial));
        std::vector<Strain> strains;
        EXPECT_TRUE(repository.ListStrains(strains));
        EXPECT_NE(std::find(strains.begin(), strains.end(), trial), strains.end());
        EXPECT_TRUE(repository.DeleteStrain(trial.ID));
    }

    ScratchDirectory Scratch;
    FailingDisk Disk;
    std::string Path = Scratch.File("journal.db");

  private:
    std::map<Files, Finding> Findings;
};

struct PlantedFiles
{
    Files Journal;
    Garden Planted;
};

// The file of a garden.
const PlantedFiles& GardenFiles()
{
    static const PlantedFiles files = []
    {
        const ScratchDirectory scratch;
        const std::string path = scratch.File("journal.db");
        PlantDatabase database;
        if (!database.Open(path))
            throw std::runtime_error(database.LastError());
        PlantRepository repository(database);
        const Garden garden = PlantGarden(repository);
        database.Close();
        return PlantedFiles{FilesAt(path), garden};
    }();
    return files;
}

// ---- Operations

class OperationTest : public DiskErrorTest, public testing::WithParamInterface<Operation>
{
  protected:
    // Opens the garden's file as it was at first.
    void Replant()
    {
        Database.Close();
        Lay(Path, GardenFiles().Journal);
        ASSERT_TRUE(Database.Open(Path));
    }

    std::string Content() const { return ::Content(Database.NativeHandle()); }

    PlantDatabase Database;
    PlantRepository Repository{Database};
};

TEST_P(OperationTest, IsWhollyDoneOrNotAtAllWhateverTheDiskDoes)
{
    ASSERT_NO_FATAL_FAILURE(Replant());
    const std::string before = Content();
    std::set<std::string> notDone = {before};
    Garden garden = GardenFiles().Planted;
    const CallRecorder recorder;
    ASSERT_TRUE(GetParam().Call(Repository, garden));
    const std::string after = Content();
    if (recorder.Statements().front() == SQL::RegisterStrain)
    {
        // The one trace that a failed operation may leave.
        ASSERT_NO_FATAL_FAILURE(Replant());
        Strain strain;
        strain.Name = "a new strain";
        ASSERT_TRUE(Repository.CreateStrain(strain));
        notDone.insert(Content());
    }

    const auto attempt = [&](const DiskFault& fault)
    {
        Replant();
        garden = GardenFiles().Planted;
        bool done = false;
        bool happened = false;
        {
            const DiskFailure failure(fault);
            done = GetParam().Call(Repository, garden);
            happened = failure.Happened();
        }
        const auto expectHonest = [&](const std::string& content)
        {
            if (done)
                EXPECT_EQ(content, after);
            else
                EXPECT_TRUE(notDone.contains(content)) << content;
        };
        const auto expectHonestFiles = [&]
        {
            const Finding& found = Found();
            EXPECT_EQ(found.Damage, "ok");
            expectHonest(found.Content);
            expectHonest(found.ContentOnceOpened);
        };
        EXPECT_TRUE(happened || done);
        expectHonestFiles();
        ExpectWorking(Database);
        expectHonest(Content());
        Database.Close();
        expectHonestFiles();
        return happened;
    };
    EXPECT_GE(TryEveryFault(attempt), before == after ? 10U : 100U);
}

INSTANTIATE_TEST_SUITE_P(Every, OperationTest, testing::ValuesIn(Operations()),
                         [](const auto& test) { return test.param.Name; });

} // namespace
