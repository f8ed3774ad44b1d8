// Every operation and every opening, with a failure of each call of the disk in turn: once or from then on, as an I/O
// error or a full disk.

#include "support/disk_failure.h"
#include "support/figures.h"
#include "support/journal_test.h"
#include "support/repository_operations.h"
#include "support/test_form.h"
#include "testing/old_files.h"
#include "testing/operation_statements.h"
#include "testing/schema_statements.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <stdexcept>
#include <tuple>

#include <sqlite3.h>

using namespace support;

namespace
{

constexpr DiskCall Calls[] = {DiskCall::Open, DiskCall::Read, DiskCall::Write,  DiskCall::Truncate, DiskCall::Sync,
                              DiskCall::Size, DiskCall::Lock, DiskCall::Delete, DiskCall::Access};

// Calls `attempt` with each fault until it returns that the fault did not happen: faults of the first call of a kind,
// of the second and so on, or of every `stride`-th. Returns how many happened.
template <typename Attempt> std::uint64_t TryEveryFault(const Attempt& attempt, int stride = 1)
{
    std::uint64_t faults = 0;
    const auto happens = [&](const DiskFault& fault)
    {
        SCOPED_TRACE(testing::Message() << fault);
        if (!attempt(fault))
            return false;
        AddToFigure("disk faults: " + testing::PrintToString(fault.Call));
        ++faults;
        return !testing::Test::HasFailure(); // one is enough to read
    };
    for (const DiskCall call : Calls)
        for (const DiskError error : {DiskError::IO, DiskError::Full})
            for (const bool lasting : {false, true})
                for (int number = 1; happens({call, error, lasting, number}); number += stride)
                {
                }
    AddToFigure("disk faults", faults);
    return faults;
}

// ---- Files on the disk

// The bytes of a journal and of its rollback journal. Empty: the file does not exist.
struct Files
{
    std::string Journal;
    std::string Rollback;

    bool operator<(const Files& other) const
    {
        return std::tie(Journal, Rollback) < std::tie(other.Journal, other.Rollback);
    }
};

std::string RollbackPath(const std::string& path)
{
    return path + "-journal";
}

Files FilesAt(const std::string& path)
{
    const auto bytes = [](const std::string& file)
    { return std::filesystem::exists(file) ? FileBytes(file) : std::string(); };
    return {bytes(path), bytes(RollbackPath(path))};
}

void WriteFiles(const std::string& path, const Files& files)
{
    const auto write = [](const std::string& file, const std::string& bytes)
    {
        std::filesystem::remove(file);
        if (!bytes.empty() && !std::ofstream(file, std::ios::binary).write(bytes.data(), std::ssize(bytes)))
            throw std::runtime_error("cannot write " + file);
    };
    write(path, files.Journal);
    write(RollbackPath(path), files.Rollback);
}

// The state of the files that a killed program would leave.
struct Finding
{
    std::string Damage;
    std::string Content;
    std::string ContentOnceOpened; // by the library, which migrates it
};

class DiskErrorTest : public testing::Test
{
  protected:
    // Equal files are read once.
    const Finding& Found()
    {
        const auto [place, unknown] = Findings.try_emplace(FilesAt(Path));
        Finding& finding = place->second;
        if (unknown)
        {
            const std::string copy = Scratch.File("copy.db");
            WriteFiles(copy, place->first);
            {
                const PlainConnection connection(copy);
                finding.Damage = Damage(connection.NativeHandle());
                finding.Content = Content(connection.NativeHandle());
            }
            WriteFiles(copy, place->first);
            PlantDatabase database;
            EXPECT_TRUE(database.Open(copy));
            EXPECT_EQ(Damage(database.NativeHandle()), "ok");
            finding.ContentOnceOpened = Content(database.NativeHandle());
        }
        return finding;
    }

    // Expects that no statement and no transaction is open, and that the journal can be written and read.
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

struct SampleJournal
{
    Files Journal;
    SampleRecords Planted;
};

// The file of a journal with the sample records.
const SampleJournal& SampleFiles()
{
    static const SampleJournal files = []
    {
        const ScratchDirectory scratch;
        const std::string path = scratch.File("journal.db");
        PlantDatabase database;
        if (!database.Open(path))
            throw std::runtime_error(database.LastError());
        PlantRepository repository(database);
        const SampleRecords sample = StoreSampleRecords(repository);
        database.Close();
        return SampleJournal{FilesAt(path), sample};
    }();
    return files;
}

// ---- Operations

class OperationTest : public DiskErrorTest, public testing::WithParamInterface<Operation>
{
  protected:
    // Opens the original file.
    void Restore()
    {
        Database.Close();
        WriteFiles(Path, SampleFiles().Journal);
        EXPECT_TRUE(Database.Open(Path));
    }

    std::string Content() const { return ::Content(Database.NativeHandle()); }

    PlantDatabase Database;
    PlantRepository Repository{Database};
};

TEST_P(OperationTest, AFailedCallOfTheDiskLeavesNoPartialChange)
{
    Restore();
    const std::string before = Content();
    SampleRecords sample = SampleFiles().Planted;
    Statements statements;
    {
        const CallRecorder recorder;
        ASSERT_TRUE(GetParam().Call(Repository, sample));
        statements = recorder.Statements();
    }
    const std::string after = Content();
    std::set<std::string> notDone = {before};
    if (statements.front() == SQL::RegisterStrain) // a failed operation may leave the new strain
    {
        Restore();
        Strain strain;
        strain.Name = "a new strain";
        ASSERT_TRUE(Repository.CreateStrain(strain));
        notDone.insert(Content());
    }

    const auto attempt = [&](const DiskFault& fault)
    {
        Restore();
        sample = SampleFiles().Planted;
        bool done = false;
        bool happened = false;
        {
            const DiskFailure failure(fault);
            done = GetParam().Call(Repository, sample);
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
        Database.Close();
        expectHonestFiles();
        return happened;
    };
    EXPECT_GE(TryEveryFault(attempt), before == after ? 10U : 100U);
}

INSTANTIATE_TEST_SUITE_P(Every, OperationTest, testing::ValuesIn(Operations()),
                         [](const auto& test) { return test.param.Name; });

// ---- Reads

using Records = std::vector<std::string>; // in print

// A reading operation. Returns the records, or nothing if it returns false.
struct Read
{
    std::string Name;
    bool RowByRow; // and not at once, or sorted at the end
    std::function<std::optional<Records>(PlantRepository&, const SampleRecords&)> Call;
};

std::ostream& operator<<(std::ostream& out, const Read& read)
{
    return out << read.Name;
}

// Lists into a vector that is not empty.
template <typename Record, typename List> std::optional<Records> Listed(const List& list)
{
    std::vector<Record> records(1);
    const bool done = list(records);
    EXPECT_TRUE(done || records.empty());
    Records printed;
    for (const Record& record : records)
        printed.push_back(Print(record));
    return done ? std::optional(printed) : std::nullopt;
}

template <typename Record> auto ListOf(bool (PlantRepository::*list)(const std::string&, std::vector<Record>&))
{
    return [list](PlantRepository& repository, const SampleRecords& sample)
    { return Listed<Record>([&](auto& records) { return (repository.*list)(sample.Mother.UUID, records); }); };
}

template <typename Record> auto ListAll(bool (PlantRepository::*list)(std::vector<Record>&))
{
    return [list](PlantRepository& repository, const SampleRecords&)
    { return Listed<Record>([&](auto& records) { return (repository.*list)(records); }); };
}

// Reads one record, which stays unchanged on failure.
template <typename Key, typename Record, typename KeyOf>
auto Get(bool (PlantRepository::*get)(Key, Record&), const KeyOf& keyOf)
{
    return [get, keyOf](PlantRepository& repository, const SampleRecords& sample)
    {
        Record record;
        const bool done = (repository.*get)(keyOf(sample), record);
        EXPECT_TRUE(done || record == Record());
        return done ? std::optional(Records{Print(record)}) : std::nullopt;
    };
}

const std::vector<Read>& Reads()
{
    using R = PlantRepository;
    const auto mother = [](const SampleRecords& g) { return g.Mother.UUID; };
    const auto kind = [](const SampleRecords& g) { return g.Kind.ID; };
    static const std::vector<Read> reads = {
        {"ListPlants", false, ListAll(&R::ListPlants)},
        {"GetPlant", false, Get(&R::GetPlant, mother)},
        {"ListStrains", false, ListAll(&R::ListStrains)},
        {"GetStrain", false, Get(&R::GetStrain, kind)},
        {"GetStrainSummary", false, Get(&R::GetStrainSummary, kind)},
        {"ListPlantEvents", true, ListOf(&R::ListPlantEvents)},
        {"ListPlantCareEntries", true, ListOf(&R::ListPlantCareEntries)},
        {"GetHarvestRecord", false, Get(&R::GetHarvestRecord, mother)},
        {"ListPlantPhotos", true, ListOf(&R::ListPlantPhotos)},
        {"ListPlantHealthObservations", true, ListOf(&R::ListPlantHealthObservations)},
        {"ListPlantJournalEntries", true, ListOf(&R::ListPlantJournalEntries)},
    };
    return reads;
}

class ReadTest : public DiskErrorTest, public testing::WithParamInterface<Read>
{
  protected:
    // Fills many pages of the file, so that a list can fail between two rows.
    ReadTest()
    {
        WriteFiles(Path, SampleFiles().Journal);
        PlantDatabase database;
        EXPECT_TRUE(database.Open(Path));
        RunSQL(database.NativeHandle(), "BEGIN;");
        PlantRepository repository(database);
        SampleRecords sample = Planted;
        for (int i = 0; i < 20; ++i)
        {
            const std::string text(1'000, static_cast<char>('a' + i));
            sample.Clone.UUID = sample.Photo.UUID = sample.Kind.Name = sample.Clone.Notes = text;
            sample.Clone.Strain = Planted.Kind.Name;
            sample.Event.Details = sample.Care.Notes = sample.Photo.Caption = text;
            sample.Observation.Notes = sample.Entry.Details = text;
            EXPECT_TRUE(repository.CreatePlant(sample.Clone) && repository.CreateStrain(sample.Kind) &&
                        repository.CreatePlantEvent(sample.Event) && repository.CreatePlantPhoto(sample.Photo) &&
                        repository.CreatePlantHealthObservation(sample.Observation) &&
                        repository.CreatePlantJournalEntry(sample.Entry));
        }
        RunSQL(database.NativeHandle(), "COMMIT;");
        for (int i = 0; i < 20; ++i)
            EXPECT_TRUE(repository.CreatePlantCareEntry(sample.Care));
    }

    const SampleRecords Planted = SampleFiles().Planted;
};

TEST_P(ReadTest, AFailedCallOfTheDiskAddsNothingToARead)
{
    std::optional<Records> whole;
    {
        PlantDatabase database;
        EXPECT_TRUE(database.Open(Path));
        PlantRepository repository(database);
        whole = GetParam().Call(repository, Planted);
        ASSERT_TRUE(whole);
    }
    bool cutShort = false;
    const auto attempt = [&](const DiskFault& fault)
    {
        PlantDatabase database;
        EXPECT_TRUE(database.Open(Path));
        PlantRepository repository(database);
        std::optional<Records> found;
        bool happened = false;
        {
            const DiskFailure failure(fault);
            found = GetParam().Call(repository, Planted);
            happened = failure.Happened();
        }
        EXPECT_TRUE(happened || found == whole);
        if (found) // a list may end early
        {
            EXPECT_LE(found->size(), whole->size());
            EXPECT_TRUE(std::equal(found->begin(), found->end(), whole->begin()));
            cutShort = cutShort || (!found->empty() && found->size() < whole->size());
        }
        EXPECT_EQ(sqlite3_next_stmt(database.NativeHandle(), nullptr), nullptr);
        EXPECT_NE(sqlite3_get_autocommit(database.NativeHandle()), 0);
        EXPECT_EQ(GetParam().Call(repository, Planted), whole);
        return happened;
    };
    EXPECT_GE(TryEveryFault(attempt), 10U);
    EXPECT_EQ(cutShort, GetParam().RowByRow);
}

INSTANTIATE_TEST_SUITE_P(Every, ReadTest, testing::ValuesIn(Reads()), [](const auto& test) { return test.param.Name; });

// ---- Opening

struct Start
{
    std::string Name;
    bool EveryFault;                                    // in the short form, too
    std::function<Files(const std::string& path)> Make; // may use the file at `path`
};

std::ostream& operator<<(std::ostream& out, const Start& start)
{
    return out << start.Name;
}

// The files that a power loss during a long write leaves.
Files InterruptedFiles(const std::string& path)
{
    WriteFiles(path, SampleFiles().Journal);
    PlantDatabase database;
    EXPECT_TRUE(database.Open(path));
    PlantRepository repository(database);
    PlantJournalEntry entry = SampleFiles().Planted.Entry;
    entry.Details.assign(20'000, 'x');
    const DiskFailure failure({DiskCall::Delete, DiskError::IO, true, 1}); // the rollback journal stays valid
    EXPECT_FALSE(repository.CreatePlantJournalEntry(entry));
    EXPECT_TRUE(std::filesystem::exists(RollbackPath(path)));
    return FilesAt(path);
}

std::vector<Start> Starts()
{
    std::vector<Start> starts = {{"NoFile", true, [](const std::string&) { return Files(); }},
                                 {"CurrentFile", true, [](const std::string&) { return SampleFiles().Journal; }},
                                 {"InterruptedFile", true, InterruptedFiles}};
    for (const OldFile& file : OldFiles())
        starts.push_back({file.Name, file.Name == OldFiles().front().Name,
                          [file](const std::string& path)
                          {
                              WriteOldFile(path, file);
                              return FilesAt(path);
                          }});
    return starts;
}

class OpeningTest : public DiskErrorTest, public testing::WithParamInterface<Start>
{
  protected:
    // Restores the file and connects to it.
    PlainConnection Restored() const
    {
        WriteFiles(Path, Original);
        return PlainConnection(Path);
    }

    // The statements that opening the file executes, with or without the rebuild of an earlier event table.
    Statements Opening(bool withRebuild) const
    {
        const PlainConnection file = Restored();
        for (const std::string& table : CreateTableStatements())
            file.RunSQL(table);
        Statements missing;
        for (const AddedColumn& column : AddedColumns())
            if (file.Value("SELECT COUNT(*) FROM pragma_table_info('" + column.Table + "') WHERE name='" + column.Name +
                           "';") == "0")
                missing.push_back(column.Name);
        const bool oldEvents =
            file.Value("SELECT instr(sql,'LST Trained')=0 FROM sqlite_master WHERE name='PlantEvents';") == "1";
        return OpeningStatements(missing, oldEvents && withRebuild);
    }

    // The contents after each statement that is not in a transaction, in their order.
    std::vector<std::string> ContentsAfter(const Statements& statements) const
    {
        const PlainConnection file = Restored();
        std::vector<std::string> contents;
        for (const std::string& statement : statements)
        {
            file.RunSQL(statement);
            if (sqlite3_get_autocommit(file.NativeHandle()) != 0)
                contents.push_back(Content(file.NativeHandle()));
        }
        return contents;
    }

    const Files Original = GetParam().Make(Path);
    const std::vector<std::string> Between = ContentsAfter(Opening(true)); // where a failure may end the opening
    const std::string After = Between.back();
    // If the schema of the event table cannot be read, the next opening rebuilds the table.
    const std::string PutOff = ContentsAfter(Opening(false)).back();
};

TEST_P(OpeningTest, TheNextOpenFinishesAfterAFailedCallOfTheDisk)
{
    const auto attempt = [&](const DiskFault& fault)
    {
        WriteFiles(Path, Original);
        PlantDatabase database;
        std::string error = "untouched";
        bool opened = false;
        bool happened = false;
        {
            const DiskFailure failure(fault);
            opened = database.Open(Path, &error);
            happened = failure.Happened();
        }
        EXPECT_EQ(database.IsOpen(), opened);
        EXPECT_EQ(error, opened ? "untouched" : database.LastError());
        EXPECT_EQ(database.LastError().empty(), opened);
        EXPECT_TRUE(happened || (opened && Found().Content == After));
        const auto expectHonestFiles = [&]
        {
            const Finding& found = Found();
            EXPECT_EQ(found.Damage, "ok");
            if (opened)
                EXPECT_TRUE(found.Content == After || found.Content == PutOff) << found.Content;
            else
                EXPECT_NE(std::find(Between.begin(), Between.end(), found.Content), Between.end()) << found.Content;
            EXPECT_EQ(found.ContentOnceOpened, After);
        };
        expectHonestFiles();
        if (opened)
        {
            AddToFigure("rebuilds put off", Found().Content == After ? 0 : 1);
            ExpectWorking(database);
            database.Close();
            expectHonestFiles();
        }
        return happened;
    };
    EXPECT_GE(TryEveryFault(attempt, GetParam().EveryFault ? 1 : ShortOrLong(5, 1)), 100U);
}

INSTANTIATE_TEST_SUITE_P(From, OpeningTest, testing::ValuesIn(Starts()),
                         [](const auto& test) { return test.param.Name; });

} // namespace
