#include "plant_file.h"

#include "support/allocation_failure.h"
#include "support/child_process.h"
#include "support/disk_failure.h"
#include "support/journal_test.h"
#include "support/repository_operations.h"
#include "testing/old_files.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <new>
#include <optional>
#include <set>
#include <stdexcept>

#include <dlfcn.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace support;

namespace
{

using namespace std::string_literals;

// ---- The system's calls, as the library meets them: each can be made to fail.

constexpr int EveryCall = 0;
int failingCall = EveryCall; // counted from 1
std::set<std::string> failingNames;
int callsMade = 0;

template <typename Function, typename... Arguments> int Call(const char* name, Arguments... arguments)
{
    if (failingNames.contains(name) && (++callsMade == failingCall || failingCall == EveryCall))
    {
        errno = EIO;
        return -1;
    }
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name))(arguments...);
}

// Acts, while in scope, right after a link was made.
std::function<void()> afterLink;

class AfterLink
{
  public:
    explicit AfterLink(std::function<void()> act) { afterLink = std::move(act); }
    ~AfterLink() { afterLink = nullptr; }
    AfterLink(const AfterLink&) = delete;
    AfterLink& operator=(const AfterLink&) = delete;
};

// Makes the `number`-th call of the named functions fail while in scope.
class SystemFailure
{
  public:
    SystemFailure(std::set<std::string> names, int number)
    {
        failingNames = std::move(names);
        failingCall = number;
        callsMade = 0;
    }
    ~SystemFailure() { failingNames.clear(); }
    SystemFailure(const SystemFailure&) = delete;
    SystemFailure& operator=(const SystemFailure&) = delete;

    bool Happened() const { return callsMade >= failingCall; }
};

} // namespace

extern "C"
{
    int link(const char* from, const char* to) noexcept
    {
        const int result = Call<int(const char*, const char*)>("link", from, to);
        if (afterLink)
            afterLink();
        return result;
    }
    int rename(const char* from, const char* to) noexcept
    {
        return Call<int(const char*, const char*)>("rename", from, to);
    }
    int fsync(int file)
    {
        return Call<int(int)>("fsync", file);
    }
    sqlite3_backup* sqlite3_backup_init(sqlite3* to, const char* toName, sqlite3* from, const char* fromName)
    {
        if (failingNames.contains("sqlite3_backup_init"))
            return nullptr;
        return reinterpret_cast<decltype(&sqlite3_backup_init)>(dlsym(RTLD_NEXT, "sqlite3_backup_init"))(
            to, toName, from, fromName);
    }
    int fchmod(int file, mode_t mode) noexcept
    {
        return Call<int(int, mode_t)>("fchmod", file, mode);
    }
}

namespace
{

// ---- The backups

class BackUpTest : public JournalTest
{
  protected:
    BackUpTest()
    {
        StoreSampleRecords(Repository);
        Database.Close();
    }

    std::string BackUp(const PlantBackUpProgress& progress = {}, PlantBackUpMode mode = PlantBackUpMode::Keep) const
    {
        return BackUpPlantDatabase(Path, Destination, progress, mode).Error;
    }
    // Makes the journal some hundred pages longer, so that it takes several goes to copy.
    void Grow(int rows = 4000) const
    {
        PlainConnection(Path).RunSQL("WITH RECURSIVE N(X) AS (SELECT 1 UNION ALL SELECT X+1 FROM N LIMIT " +
                                     std::to_string(rows) +
                                     ") INSERT INTO PlantJournalEntries(PlantUUID,Details) SELECT "
                                     "'11111111-1111-4111-8111-111111111111',printf('%.1000c','x') FROM N;");
    }
    // All of them, even where another connection writes.
    void ExpectWhole() const
    {
        const PlainConnection copy(Destination);
        EXPECT_EQ(::Content(copy.NativeHandle()), ::Content(PlainConnection(Path).NativeHandle()));
        EXPECT_EQ(Damage(copy.NativeHandle()), "ok");
    }

    std::string Destination = Scratch.File("copy.db");
};

using Names = std::set<std::string>;

Names NamesOf(const std::map<std::string, std::string>& files)
{
    Names names;
    for (const auto& [name, bytes] : files)
        names.insert(name);
    return names;
}

TEST_F(BackUpTest, ACopyHoldsWhatTheJournalHoldsAndNothingElseIsLeft)
{
    const std::string before = FileBytes(Path);
    EXPECT_EQ(BackUp(), "");
    EXPECT_EQ(FileBytes(Path), before);
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
    ExpectWhole();
    ASSERT_TRUE(Database.Open(Destination));
    Database.Close();
}

TEST_F(BackUpTest, AnOlderJournalStaysAnOlderOne)
{
    for (const OldFile& old : OldFiles())
    {
        WriteOldFile(Path, old);
        EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "") << old;
        ExpectWhole();
        PlantFileInspection source;
        PlantFileInspection copy;
        EXPECT_TRUE(InspectPlantDatabase(Path, source) && InspectPlantDatabase(Destination, copy));
        EXPECT_EQ(copy.Steps, source.Steps);
    }
}

TEST_F(BackUpTest, TheCopyHasTheSourcesPermissions)
{
    for (const auto mode : {0600, 0640, 0664, 0400})
    {
        ASSERT_EQ(chmod(Path.c_str(), static_cast<mode_t>(mode)), 0);
        EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "");
        EXPECT_EQ(static_cast<int>(std::filesystem::status(Destination).permissions()), mode);
    }
}

TEST_F(BackUpTest, WhileItIsMadeNobodyElseMayReadIt)
{
    ASSERT_EQ(chmod(Path.c_str(), 0600), 0);
    const mode_t mask = umask(0);
    int seen = 0;
    const auto look = [&](std::int64_t /*done*/, std::int64_t /*total*/)
    {
        for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(Path).parent_path()))
        {
            ++seen;
            EXPECT_EQ(static_cast<int>(entry.status().permissions()), 0600) << entry.path();
        }
        return true;
    };
    EXPECT_EQ(BackUp(look), "");
    umask(mask);
    EXPECT_EQ(seen, 2);
}

TEST_F(BackUpTest, WhatAnInterruptedWriterLeftBehindIsTakenBackFirst)
{
    const std::string torn = Scratch.File("torn.db");
    {
        const PlainConnection writer(Path);
        writer.RunSQL("PRAGMA cache_size=1; BEGIN; UPDATE Plants SET Notes=printf('%.9000c','x');");
        std::filesystem::copy_file(Path, torn);
        std::filesystem::copy_file(Path + "-journal", torn + "-journal");
    }
    EXPECT_EQ(BackUpPlantDatabase(torn, Destination).Error, "");
    ExpectWhole();
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db", "torn.db"}));
}

TEST_F(BackUpTest, ProgressIsToldToItsEnd)
{
    Grow();
    std::vector<std::pair<std::int64_t, std::int64_t>> told;
    EXPECT_EQ(BackUp(
                  [&](std::int64_t done, std::int64_t total)
                  {
                      told.emplace_back(done, total);
                      return true;
                  }),
              "");
    const auto pages = static_cast<std::int64_t>(std::filesystem::file_size(Path) / 4096);
    ASSERT_GT(told.size(), 3U);
    for (std::size_t i = 0; i < told.size(); ++i)
    {
        EXPECT_EQ(told[i].second, pages);
        EXPECT_GT(told[i].first, i == 0 ? 0 : told[i - 1].first);
    }
    EXPECT_EQ(told.back().first, pages);
    ExpectWhole();
}

TEST_F(BackUpTest, AnInterruptionLeavesNothingAndSaysSo)
{
    Grow();
    const auto before = Scratch.Files();
    for (const std::int64_t last : {0, 500, 1'000'000}) // at the first word, on the way, at the last word
    {
        const auto untilThere = [&](std::int64_t done, std::int64_t total) { return done <= last && done < total; };
        EXPECT_EQ(BackUp(untilThere), Destination + ": copying " + Path + ": interrupted");
        EXPECT_TRUE(Scratch.Files() == before);
    }
}

TEST_F(BackUpTest, AnExceptionOfTheCallBackPassesAndLeavesNothing)
{
    const auto before = Scratch.Files();
    const auto fail = [](std::int64_t, std::int64_t) -> bool { throw std::runtime_error("tired"); };
    EXPECT_THROW(BackUp(fail), std::runtime_error);
    const auto failToLook = [](std::int64_t, std::int64_t) { return std::filesystem::file_size("/no/such/file") > 0; };
    EXPECT_THROW(BackUp(failToLook), std::filesystem::filesystem_error);
    EXPECT_TRUE(Scratch.Files() == before);
}

// ---- Others at the same time

TEST_F(BackUpTest, OthersWriteBetweenTwoWordsOfProgressAndTheCopyIsOfOneMoment)
{
    Grow();
    const PlainConnection other(Path);
    int words = 0;
    const auto write = [&](std::int64_t, std::int64_t)
    {
        // An entry at each end of the file: a copy that is of two moments has one without the other.
        other.RunSQL("BEGIN; UPDATE Plants SET Notes='" + std::to_string(words) +
                     "'; UPDATE PlantJournalEntries SET Details='" + std::to_string(words) +
                     "' WHERE ID=(SELECT MAX(ID) FROM PlantJournalEntries); COMMIT;");
        return ++words < 1000;
    };
    EXPECT_EQ(BackUp(write), "");
    EXPECT_LT(words, 10); // it has an end
    const PlainConnection copy(Destination);
    EXPECT_EQ(Damage(copy.NativeHandle()), "ok");
    const std::string moment = copy.Value("SELECT Notes FROM Plants WHERE ID=1;");
    EXPECT_EQ(moment, std::to_string(words - 2)); // the last word came after the copy
    EXPECT_EQ(copy.Value("SELECT Details FROM PlantJournalEntries ORDER BY ID DESC LIMIT 1;"), moment);
}

TEST_F(BackUpTest, AnotherProcessThatWritesAllTheTimeNeitherStopsItNorIsStopped)
{
    Grow();
    ChildProcess writer(
        [&](const ParentProcess& parent)
        {
            PlantDatabase database;
            PlantRepository repository(database);
            Plant plant;
            plant.Name = "Busy";
            if (!database.Open(Path) || !repository.CreatePlant(plant))
                throw std::runtime_error("no plant");
            parent.Send("writing");
            for (int i = 0; i < 300; ++i)
            {
                PlantCareEntry entry;
                entry.PlantUUID = plant.UUID;
                entry.AmountMl = i;
                if (!repository.CreatePlantCareEntry(entry))
                    throw std::runtime_error("a write was refused");
            }
        });
    ASSERT_EQ(writer.ReadLine(), "writing");
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "");
        std::vector<PlantFileFinding> findings;
        EXPECT_EQ(CheckPlantDatabase(Destination, findings).Error, "");
        for (const PlantFileFinding& finding : findings) // the garden's own
            EXPECT_TRUE(finding.Kind == PlantFindingKind::MissingEvent ||
                        finding.Kind == PlantFindingKind::MissingPhotoFile)
                << finding.Description;
    }
    EXPECT_EQ(writer.End(), "done");
}

TEST_F(BackUpTest, ALockThatIsHeldForTooLongIsAnError)
{
    {
        const PlainConnection other(Path);
        other.RunSQL("BEGIN EXCLUSIVE;");
        EXPECT_EQ(BackUp(), Path + ": reading the schema: database is locked");
    }
    EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});

    Grow();
    const PlainConnection other(Path);
    const auto lock = [&](std::int64_t, std::int64_t)
    {
        if (sqlite3_get_autocommit(other.NativeHandle()) != 0)
            other.RunSQL("BEGIN EXCLUSIVE;");
        return true;
    };
    EXPECT_EQ(BackUp(lock), Destination + ": copying " + Path + ": database is locked");
    other.RunSQL("ROLLBACK;");
    EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});
}

TEST_F(BackUpTest, TheProgramsOwnLocksOnTheJournalAndOnTheCopyHold)
{
    ChildProcess other( // begun while nothing is open
        [&](const ParentProcess& parent)
        {
            for (const std::string& path : {Path, Destination})
            {
                parent.Wait();
                sqlite3* db = nullptr;
                sqlite3_open(path.c_str(), &db);
                parent.Send(std::to_string(sqlite3_exec(db, "BEGIN IMMEDIATE;", nullptr, nullptr, nullptr)));
                sqlite3_close(db);
            }
        });
    const std::string refused = std::to_string(SQLITE_BUSY);
    const PlainConnection own(Path);
    own.RunSQL("BEGIN IMMEDIATE;");
    PlantFileInspection found;
    std::vector<PlantFileFinding> findings;
    EXPECT_TRUE(InspectPlantDatabase(Path, found));
    EXPECT_TRUE(CheckPlantDatabase(Path, findings));
    std::optional<PlainConnection> ownCopy;
    const AfterLink open( // from the moment it has its name
        [&]
        {
            ownCopy.emplace(Destination);
            ownCopy->RunSQL("BEGIN IMMEDIATE;");
        });
    EXPECT_EQ(BackUp(), "");
    ASSERT_TRUE(ownCopy);
    other.Continue();
    EXPECT_EQ(other.ReadLine(), refused);
    other.Continue();
    EXPECT_EQ(other.ReadLine(), refused);
}

// ---- The destination

TEST_F(BackUpTest, WhatExistsIsNeverOverwrittenUnlessTold)
{
    std::ofstream(Destination) << "an older copy";
    EXPECT_EQ(BackUp(), Destination + ": looking at what is there: it exists");
    EXPECT_EQ(FileBytes(Destination), "an older copy");
    EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "");
    ExpectWhole();
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
}

TEST_F(BackUpTest, WhatIsMadeMeanwhileIsNotOverwritten)
{
    const auto meddle = [&](std::int64_t, std::int64_t)
    {
        std::ofstream(Destination) << "somebody else's";
        return true;
    };
    EXPECT_EQ(BackUp(meddle), Destination + ": looking at what is there: it exists");
    EXPECT_EQ(FileBytes(Destination), "somebody else's");
    std::filesystem::remove(Destination);

    // A link that leads nowhere is a name all the same.
    std::filesystem::create_symlink("nowhere", Destination);
    EXPECT_EQ(BackUp(), Destination + ": giving the copy its name: File exists");
    EXPECT_TRUE(std::filesystem::is_symlink(Destination));
    std::filesystem::remove(Destination);
    EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});
}

TEST_F(BackUpTest, AFileSystemWithoutLinksTakesTheCopyToo)
{
    {
        const SystemFailure noLinks({"link"}, 1);
        EXPECT_EQ(BackUp(), "");
        EXPECT_TRUE(noLinks.Happened());
    }
    ExpectWhole();
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
}

TEST_F(BackUpTest, TheSourceIsNoDestination)
{
    const std::string before = FileBytes(Path);
    const std::string expected = ": looking at what is there: it is the source";
    for (const PlantBackUpMode mode : {PlantBackUpMode::Keep, PlantBackUpMode::Overwrite})
    {
        EXPECT_EQ(BackUpPlantDatabase(Path, Path, {}, mode).Error, Path + expected);
        std::filesystem::create_symlink(Path, Destination);
        EXPECT_EQ(BackUp({}, mode), Destination + expected);
        std::filesystem::remove(Destination);
        std::filesystem::create_hard_link(Path, Destination);
        EXPECT_EQ(BackUp({}, mode), Destination + expected);
        std::filesystem::remove(Destination);
    }
    EXPECT_EQ(Scratch.Files(), (std::map<std::string, std::string>{{"journal.db", before}}));
}

TEST_F(BackUpTest, ALinkStaysAndLeadsToTheNewCopy)
{
    const std::string target = Scratch.File("target.db");
    std::ofstream(target) << "an older copy";
    std::filesystem::create_symlink("target.db", Destination);
    EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), "");
    EXPECT_TRUE(std::filesystem::is_symlink(Destination));
    EXPECT_FALSE(std::filesystem::is_symlink(target));
    ExpectWhole();
}

TEST_F(BackUpTest, AJournalBesideTheDestinationIsNotTakenForTheCopys)
{
    for (const char* suffix : {"-journal", "-wal"})
        for (const PlantBackUpMode mode : {PlantBackUpMode::Keep, PlantBackUpMode::Overwrite})
        {
            const std::string expected = Destination + ": looking at what is there: a " + suffix +
                                         " lies beside it, which would be taken for the copy's";
            std::ofstream(Destination + suffix) << "left";
            EXPECT_EQ(BackUp({}, mode), expected);
            std::filesystem::remove(Destination + suffix);
            const auto meddle = [&](std::int64_t, std::int64_t)
            {
                std::ofstream(Destination + suffix) << "left";
                return true;
            };
            EXPECT_EQ(BackUp(meddle, mode), expected);
            EXPECT_EQ(FileBytes(Destination + suffix), "left");
            std::filesystem::remove(Destination + suffix);
            EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});
        }
}

TEST_F(BackUpTest, APlaceThatTakesNoFileIsAnError)
{
    Destination = Scratch.File("no/copy.db");
    EXPECT_EQ(BackUp(), Destination + ": making a file beside it: No such file or directory");
    std::filesystem::create_directory(Scratch.File("no"));
    Destination = Scratch.File("no");
    for (const PlantBackUpMode mode : {PlantBackUpMode::Keep, PlantBackUpMode::Overwrite})
        EXPECT_EQ(BackUp({}, mode), Destination + ": finding it: it is no regular file");
    std::filesystem::remove(Destination);
    Destination = "";
    EXPECT_EQ(BackUp(), ": finding it: a path that is empty or holds a zero byte names no file");
    EXPECT_EQ(NamesOf(Scratch.Files()), Names{"journal.db"});
}

// ---- The source

TEST_F(BackUpTest, WhatIsNoJournalIsAnErrorAndLeavesNothing)
{
    std::filesystem::remove(Path);
    const auto expectError = [&](const std::string& error)
    {
        const auto before = Scratch.Files();
        EXPECT_EQ(BackUp(), Path + ": " + error);
        EXPECT_TRUE(Scratch.Files() == before);
    };
    expectError("finding it: there is no such file");
    std::ofstream(Path) << "";
    expectError("reading the schema: it is no journal, it has no table");
    std::ofstream(Path) << "some other text";
    expectError("reading the schema: file is not a database");
    std::filesystem::remove(Path);
    PlainConnection(Path).RunSQL("CREATE TABLE Bees(X);");
    expectError("reading the schema: it is no journal of ours: The table \"Bees\" is not ours.");
    PlainConnection(Path).RunSQL("PRAGMA journal_mode=WAL;");
    expectError(
        "reading the schema: it is no journal of ours: The file keeps a write-ahead log, which no journal does.");
    EXPECT_EQ(BackUpPlantDatabase("", Destination).Error,
              ": finding it: a path that is empty or holds a zero byte names no file");
}

TEST_F(BackUpTest, ADamagedJournalIsAnErrorAndReplacesNoCopy)
{
    ASSERT_EQ(BackUp(), "");
    const std::string kept = FileBytes(Destination);
    const int page =
        std::stoi(PlainConnection(Path).Value("SELECT rootpage FROM sqlite_master WHERE name='PlantsByStrain';"));
    {
        std::fstream file(Path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp((page - 1) * 4096L + 3).put('\0').put('\0'); // the index has no entries
    }
    const auto before = Scratch.Files();
    const std::string error = BackUp({}, PlantBackUpMode::Overwrite);
    EXPECT_TRUE(error.starts_with(Destination + ": checking the copy: the journal is damaged: ")) << error;
    EXPECT_TRUE(Scratch.Files() == before);
    EXPECT_EQ(FileBytes(Destination), kept);

    std::filesystem::resize_file(Path, 4096);
    EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), Path + ": reading the schema: database disk image is malformed");
    EXPECT_EQ(FileBytes(Destination), kept);
}

TEST_F(BackUpTest, AJournalWithOddRowsIsKept)
{
    PlainConnection(Path).RunSQL("PRAGMA ignore_check_constraints=ON; UPDATE Plants SET Stage='Bloom'; UPDATE "
                                 "PlantHealthObservations SET Severity=9; PRAGMA foreign_keys=OFF; UPDATE PlantPhotos "
                                 "SET PlantUUID='nobody';");
    EXPECT_EQ(BackUp(), "");
    EXPECT_EQ(::Content(PlainConnection(Destination).NativeHandle()), ::Content(PlainConnection(Path).NativeHandle()));
}

// ---- Failures

// Backs up with each failure in turn, onto nothing and onto an older copy: all is there, or all is as before and the
// error says why.
template <typename Fail>
void ExpectAllOrNothing(const ScratchDirectory& scratch, const std::string& path, const std::string& destination,
                        const Fail& fail)
{
    for (const PlantBackUpMode mode : {PlantBackUpMode::Keep, PlantBackUpMode::Overwrite})
        for (int number = 1;; ++number)
        {
            std::filesystem::remove(destination);
            if (mode == PlantBackUpMode::Overwrite)
                std::ofstream(destination) << "an older copy";
            const auto before = scratch.Files();
            PlantFileResult result;
            bool happened = false;
            try
            {
                const auto failure = fail(number);
                result = BackUpPlantDatabase(path, destination, {}, mode);
                happened = failure.Happened();
            }
            catch (const std::bad_alloc&)
            {
                result = {"no memory"};
                happened = true;
            }
            if (result)
            {
                EXPECT_EQ(NamesOf(scratch.Files()), (Names{"copy.db", "journal.db"}));
                const PlainConnection copy(destination);
                EXPECT_EQ(::Content(copy.NativeHandle()), ::Content(PlainConnection(path).NativeHandle())) << number;
            }
            else
                EXPECT_TRUE(scratch.Files() == before) << number << ' ' << result.Error;
            if (!happened)
            {
                EXPECT_TRUE(result) << result.Error;
                break;
            }
            ASSERT_LT(number, 20'000);
        }
}

TEST_F(BackUpTest, AFullDiskLeavesNoHalfFileAndSaysSo)
{
    const FailingDisk disk;
    const auto before = Scratch.Files();
    for (const bool lasting : {false, true})
    {
        const DiskFailure failure({DiskCall::Write, DiskError::Full, lasting, 3});
        EXPECT_EQ(BackUp(), Destination + ": copying " + Path + ": database or disk is full");
        EXPECT_TRUE(failure.Happened());
        EXPECT_TRUE(Scratch.Files() == before);
    }
    ExpectAllOrNothing(Scratch, Path, Destination,
                       [](int number) {
                           return DiskFailure({DiskCall::Write, DiskError::Full, true, number});
                       });
}

TEST_F(BackUpTest, AFailingDiskLeavesNoHalfFile)
{
    const FailingDisk disk;
    for (const DiskCall call : {DiskCall::Open, DiskCall::Read, DiskCall::Write, DiskCall::Truncate, DiskCall::Size,
                                DiskCall::Lock, DiskCall::Delete, DiskCall::Access})
        ExpectAllOrNothing(Scratch, Path, Destination,
                           [&](int number) {
                               return DiskFailure({call, DiskError::IO, false, number});
                           });
}

TEST_F(BackUpTest, AFailingSystemCallLeavesNoHalfFile)
{
    for (const char* call : {"fchmod", "fsync"})
    {
        const auto before = Scratch.Files();
        const SystemFailure failure({call}, 1);
        EXPECT_EQ(BackUp(), Destination + ": syncing the copy: Input/output error");
        EXPECT_TRUE(Scratch.Files() == before);
    }
    std::ofstream(Destination) << "an older copy";
    const auto before = Scratch.Files();
    const SystemFailure failure({"rename"}, 1);
    EXPECT_EQ(BackUp({}, PlantBackUpMode::Overwrite), Destination + ": giving the copy its name: Input/output error");
    EXPECT_TRUE(Scratch.Files() == before);
}

TEST_F(BackUpTest, WhereNeitherLinksNorRenamingWorkNothingIsLeft)
{
    const auto before = Scratch.Files();
    const SystemFailure failure({"link", "rename"}, EveryCall);
    EXPECT_EQ(BackUp(), Destination + ": giving the copy its name: Input/output error");
    EXPECT_TRUE(Scratch.Files() == before);
}

TEST_F(BackUpTest, ADirectoryThatCannotBeSyncedIsAnErrorWithTheCopyInPlace)
{
    {
        const SystemFailure failure({"fsync"}, 2);
        EXPECT_EQ(BackUp(), Destination + ": syncing the directory: Input/output error");
    }
    ExpectWhole();
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
}

TEST_F(BackUpTest, ACopyThatCannotBeginLeavesNothing)
{
    const auto before = Scratch.Files();
    const SystemFailure failure({"sqlite3_backup_init"}, EveryCall);
    EXPECT_TRUE(BackUp().starts_with(Destination + ": copying " + Path + ": "));
    EXPECT_TRUE(Scratch.Files() == before);
}

TEST_F(BackUpTest, WithoutMemoryNothingIsLeft)
{
    for (const Allocator allocator : {Allocator::New, Allocator::SQLite})
        ExpectAllOrNothing(Scratch, Path, Destination,
                           [&](int number) { return AllocationFailure(allocator, number + number * number / 20); });
}

} // namespace
