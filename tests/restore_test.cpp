#include "plant_file.h"

#include "support/child_process.h"
#include "support/damage_file.h"
#include "support/on_windows.h"
#include "support/restore_test.h"
#include "support/sqlite_calls.h"
#include "testing/old_files.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include <sqlite3.h>

using namespace support;

namespace
{

// ---- A journal that can be read

TEST_F(RestoreTest, AJournalHasTheBackupsContent)
{
    const std::string backUp = FileBytes(Destination);
    EXPECT_EQ(Restore(), "");
    EXPECT_FALSE(Restoration.MustReopen);
    ExpectRestored(LaterBytes);
    EXPECT_EQ(FileBytes(Destination) == backUp, true);
    ASSERT_TRUE(Database.Open(Path));
    Database.Close();
}

TEST_F(RestoreTest, AnOpenJournalGoesOnWithTheRestoredContent)
{
    ASSERT_TRUE(Database.Open(Path));
    EXPECT_EQ(Content(), Later); // in its cache now
    EXPECT_EQ(Restore(), "");
    EXPECT_FALSE(Restoration.MustReopen);
    EXPECT_EQ(Content(), BackedUp);
    Plant plant;
    plant.Name = "After the restoration";
    EXPECT_TRUE(Repository.CreatePlant(plant));
    Database.Close();
    EXPECT_EQ(support::Damage(PlainConnection(Path).NativeHandle()), "ok");
}

TEST_F(RestoreTest, AValueThatItsColumnDoesNotAllowIsNotDamage)
{
    PlainConnection(Path).RunSQL("PRAGMA ignore_check_constraints=ON; UPDATE PlantHealthObservations SET Severity=9;");
    ASSERT_EQ(PlainConnection(Path).Value("SELECT count(*)>0 FROM PlantHealthObservations WHERE Severity=9;"), "1");
    ASSERT_TRUE(Database.Open(Path));
    EXPECT_EQ(Restore(), "");
    EXPECT_FALSE(Restoration.MustReopen);
    EXPECT_EQ(Content(), BackedUp);
    Database.Close();
}

TEST_F(RestoreTest, ASecondRestorationOfADayKeepsItsOwnCopy)
{
    ASSERT_EQ(Restore(), "");
    PlainConnection(Path).RunSQL("UPDATE Plants SET Notes='later again';");
    const std::string former = FileBytes(Path);
    ASSERT_EQ(Restore(), "");
    EXPECT_EQ(Restoration.KeptPath, Kept + "-2");
    EXPECT_EQ(FileBytes(Kept) == LaterBytes, true);
    EXPECT_EQ(FileBytes(Kept + "-2") == former, true);
    EXPECT_EQ(ContentOf(Path), BackedUp);
}

TEST_F(RestoreTest, TheKeptCopyRestoresTheFormerJournal)
{
    ASSERT_EQ(Restore(), "");
    EXPECT_EQ(RestorePlantDatabase(Kept, Path, Restoration).Error, "");
    EXPECT_EQ(ContentOf(Path), Later);
}

TEST_F(RestoreTest, AnInterruptedWriteIsRolledBackFirst)
{
    const std::string torn = Scratch.File("torn.db");
    {
        const PlainConnection writer(Path);
        writer.RunSQL("PRAGMA cache_size=1; BEGIN; UPDATE Plants SET Notes=printf('%.9000c','x');");
        std::filesystem::copy_file(Path, torn);
        std::filesystem::copy_file(Path + "-journal", torn + "-journal");
    }
    EXPECT_EQ(RestorePlantDatabase(Destination, torn, Restoration).Error, "");
    EXPECT_FALSE(Restoration.MustReopen);
    EXPECT_EQ(ContentOf(torn), BackedUp);
    EXPECT_EQ(ContentOf(Restoration.KeptPath), Later);
}

TEST_F(RestoreTest, AnEmptyFileBecomesTheRestoredJournal)
{
    std::filesystem::resize_file(Path, 0);
    EXPECT_EQ(Restore(), "");
    EXPECT_FALSE(Restoration.MustReopen);
    ExpectRestored("");
}

TEST_F(RestoreTest, PagesOfAnotherSizeAreReplaced)
{
    PlainConnection(Path).RunSQL("PRAGMA page_size=1024; VACUUM;");
    const std::string former = FileBytes(Path);
    ASSERT_TRUE(Database.Open(Path));
    EXPECT_EQ(Content(), Later);
    EXPECT_EQ(Restore(), "");
    EXPECT_EQ(Content(), BackedUp);
    Database.Close();
    ExpectRestored(former);
}

TEST_F(RestoreTest, AnEarlierSchemaIsRestoredAndMustBeReopened)
{
    for (const OldFile& old : OldFiles())
    {
        WriteOldFile(Destination, old);
        EXPECT_EQ(Restore(), "") << old;
        EXPECT_EQ(ContentOf(Path), ContentOf(Destination)) << old;
        EXPECT_EQ(Restoration.MustReopen, !HasCurrentSchema(old)) << old;
        EXPECT_TRUE(Database.Open(Path)) << old;
        Database.Close();
    }
}

TEST_F(RestoreTest, ABrokenLinkIsAnErrorAndStays)
{
    const std::string link = Scratch.File("link.db");
    std::filesystem::create_symlink("nowhere", link);
    EXPECT_EQ(RestorePlantDatabase(Destination, link, Restoration).Error,
              link + ": a symbolic link to a file that does not exist");
    EXPECT_EQ(std::filesystem::read_symlink(link), "nowhere");
    EXPECT_FALSE(std::filesystem::exists(Scratch.File("nowhere")));
}

TEST_F(RestoreTest, ALinkToTheJournalStays)
{
    const std::string link = Scratch.File("link.db");
    std::filesystem::create_symlink(Path, link);
    EXPECT_EQ(RestorePlantDatabase(Destination, link, Restoration).Error, "");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(ContentOf(Path), BackedUp);
    EXPECT_TRUE(Restoration.KeptPath.starts_with(Path + ".before-restore-"));
    Damage();
    EXPECT_EQ(RestorePlantDatabase(Destination, link, Restoration).Error, "");
    EXPECT_TRUE(Restoration.MustReopen);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(ContentOf(Path), BackedUp);
}

// ---- A damaged journal

TEST_F(RestoreTest, ADamagedJournalIsReplacedAndKept)
{
    const auto damages = {std::pair(0L, 100UL), std::pair(100L, 3000UL),
                          std::pair(static_cast<long>(LaterBytes.size() / 2), 40'960UL)};
    for (const auto& [offset, count] : damages)
        for (const char byte : {'\0', '\xFF'})
        {
            Overwrite(offset, count, byte);
            const std::string damaged = FileBytes(Path);
            EXPECT_EQ(Restore(), "") << offset;
            EXPECT_TRUE(Restoration.MustReopen);
            ExpectRestored(damaged);
            std::filesystem::remove(Kept);
            std::ofstream(Path, std::ios::binary) << LaterBytes;
        }
}

TEST_F(RestoreTest, DamageThatOnlyTheIntegrityCheckFindsIsDamage)
{
    const int page =
        std::stoi(PlainConnection(Path).Value("SELECT rootpage FROM sqlite_master WHERE name='PlantsByStrain';"));
    Overwrite((page - 1) * 4096L + 3, 2); // the index has no entries
    const std::string damaged = FileBytes(Path);
    EXPECT_EQ(Restore(), "");
    EXPECT_TRUE(Restoration.MustReopen);
    ExpectRestored(damaged);
}

TEST_F(RestoreTest, ATornOffJournalIsReplacedAndKept)
{
    for (const std::size_t size : {99U, 512U, 4096U, 8191U, 40'960U})
    {
        std::filesystem::resize_file(Path, size);
        EXPECT_EQ(Restore(), "") << size;
        EXPECT_TRUE(Restoration.MustReopen) << size;
        ExpectRestored(LaterBytes.substr(0, size));
        std::filesystem::remove(Kept);
        std::ofstream(Path, std::ios::binary) << LaterBytes;
    }
}

TEST_F(RestoreTest, AFileThatIsNotADatabaseIsReplacedAndKept)
{
    std::ofstream(Path) << "a shopping list";
    EXPECT_EQ(Restore(), "");
    EXPECT_TRUE(Restoration.MustReopen);
    ExpectRestored("a shopping list");
}

// What counts the changes of the file differs from all that a program has seen under its name, so that a step of undo
// from before the restoration does not fit.
TEST_F(RestoreTest, AReplacedJournalHasAnotherCountOfChanges)
{
    const auto header = [](const std::string& path) { return FileBytes(path).substr(0, 100); };
    const std::string backUp = header(Destination);
    Damage();
    ASSERT_EQ(Restore(), "");
    const std::string first = header(Path);
    EXPECT_NE(first.substr(24, 4), backUp.substr(24, 4));
    EXPECT_EQ(first.substr(24, 4), first.substr(92, 4)); // SQLite trusts the header only where these are equal
    Damage();
    ASSERT_EQ(Restore(), "");
    EXPECT_NE(header(Path), first);
    std::filesystem::remove(Path);
    ASSERT_EQ(Restore(), "");
    EXPECT_NE(header(Path), first);
    EXPECT_NE(header(Path), backUp);
}

// ---- A missing journal

TEST_F(RestoreTest, AMissingJournalIsCreated)
{
    std::filesystem::remove(Path);
    EXPECT_EQ(Restore(), "");
    EXPECT_EQ(Restoration.KeptPath, "");
    EXPECT_FALSE(Restoration.MustReopen);
    EXPECT_EQ(ContentOf(Path), BackedUp);
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));

    const std::string far = Scratch.File("new/home/journal.db");
    EXPECT_EQ(RestorePlantDatabase(Destination, far, Restoration).Error, "");
    EXPECT_EQ(ContentOf(far), BackedUp);
}

TEST_F(RestoreTest, AJournalFromAReadOnlyBackupCanBeWritten)
{
    using std::filesystem::perms;
    std::filesystem::remove(Path);
    std::filesystem::permissions(Destination, perms::owner_read | perms::group_read);
    EXPECT_EQ(Restore(), "");
    const perms expected = std::filesystem::status(Destination).permissions() | perms::owner_write;
    EXPECT_NE(std::filesystem::status(Path).permissions() & perms::owner_write, perms::none);
    EXPECT_TRUE(OnWindows || std::filesystem::status(Path).permissions() == expected);
    std::filesystem::permissions(Destination, perms::owner_all); // Windows does not remove a read-only file
}

TEST_F(RestoreTest, AJournalThatIsCreatedMeanwhileIsNotReplaced)
{
    std::filesystem::remove(Path);
    const auto create = [&](std::int64_t, std::int64_t)
    {
        std::ofstream(Path) << "another program's";
        return true;
    };
    EXPECT_EQ(Restore(create), Path + ": another process has created the file meanwhile; try again");
    EXPECT_EQ(FileBytes(Path), "another program's");

    std::filesystem::remove(Path);
    const auto createWithLog = [&](std::int64_t, std::int64_t)
    {
        std::ofstream(Path + "-journal") << "its log";
        std::ofstream(Path) << "another program's";
        return true;
    };
    EXPECT_EQ(Restore(createWithLog), Path + ": another process has created the file meanwhile; try again");
}

// ---- What is refused

class RestoreRefusalTest : public RestoreTest
{
  protected:
    // Nothing is changed and no file is left.
    void ExpectRefused(const std::string& error)
    {
        const auto before = Scratch.Files();
        EXPECT_EQ(Restore(), error);
        EXPECT_EQ(Restoration.KeptPath, "");
        EXPECT_FALSE(Restoration.MustReopen);
        EXPECT_TRUE(Scratch.Files() == before);
    }
};

TEST_F(RestoreRefusalTest, ADamagedBackupIsNotRestored)
{
    const std::string whole = FileBytes(Destination);
    const int page = std::stoi(
        PlainConnection(Destination).Value("SELECT rootpage FROM sqlite_master WHERE name='PlantsByStrain';"));
    {
        std::fstream file(Destination, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp((page - 1) * 4096L + 3).put('\0').put('\0'); // the index has no entries
    }
    const auto before = Scratch.Files();
    EXPECT_TRUE(Restore().starts_with(Destination + ": checking the backup: the backup is damaged: "));
    EXPECT_TRUE(Scratch.Files() == before);
    std::ofstream(Destination, std::ios::binary) << whole.substr(0, 4096);
    ExpectRefused(Destination + ": reading the schema: database disk image is malformed");
}

TEST_F(RestoreRefusalTest, ABackupThatIsNotAJournalIsNotRestored)
{
    std::ofstream(Destination) << "some other text";
    ExpectRefused(Destination + ": reading the schema: file is not a database");
    std::ofstream(Destination) << "";
    ExpectRefused(Destination + ": reading the schema: not a plantjournal file: it has no tables");
    std::filesystem::remove(Destination);
    ExpectRefused(Destination + ": no such file");
    PlainConnection(Destination).RunSQL("CREATE TABLE Bees(X);");
    ExpectRefused(Destination +
                  ": reading the schema: not a plantjournal file: The table \"Bees\" is not part of a journal.");
}

TEST_F(RestoreRefusalTest, AnotherProgramsDatabaseIsNotReplaced)
{
    std::filesystem::remove(Path);
    PlainConnection(Path).RunSQL("CREATE TABLE Bees(X);");
    ExpectRefused(Path + ": reading the schema: not a plantjournal file: The table \"Bees\" is not part of a journal.");
    std::filesystem::remove(Path);
    std::filesystem::create_directory(Path);
    EXPECT_EQ(Restore(), Path + ": not a regular file");
}

TEST_F(RestoreRefusalTest, TheJournalItselfIsNotItsBackup)
{
    std::filesystem::remove(Destination);
    std::filesystem::create_symlink(Path, Destination);
    ExpectRefused(Path + ": the backup and the journal are the same file");
}

TEST_F(RestoreRefusalTest, AnEmptyPathIsAnError)
{
    EXPECT_EQ(RestorePlantDatabase("", Path, Restoration).Error, ": the path is empty or contains a zero byte");
    EXPECT_EQ(RestorePlantDatabase(Destination, "", Restoration).Error, ": the path is empty or contains a zero byte");
}

TEST_F(RestoreRefusalTest, AMissingDirectoryIsNotCreatedAsTheJournal)
{
    const std::string directory = Scratch.File("new/");
    EXPECT_EQ(RestorePlantDatabase(Destination, directory, Restoration).Error,
              directory + ": the path ends with a separator");
    EXPECT_FALSE(std::filesystem::exists(Scratch.File("new")));
}

TEST_F(RestoreRefusalTest, ALogNextToADamagedJournalIsNotApplied)
{
    const std::string advice = " exists, and SQLite would apply it to the copy; move it away first";
    Damage();
    std::ofstream(Path + "-journal") << std::string(512, '\0'); // SQLite does not remove this one
    ExpectRefused(Path + ": journal.db-journal" + advice);
    std::filesystem::remove(Path);
    ExpectRefused(Path + ": journal.db-journal" + advice);
    std::filesystem::rename(Path + "-journal", Path + "-wal");
    ExpectRefused(Path + ": journal.db-wal" + advice);
}

TEST_F(RestoreRefusalTest, AnInterruptionChangesNothing)
{
    const auto interrupt = [](std::int64_t done, std::int64_t total) { return done * 2 < total; };
    for (const bool damaged : {true, false})
    {
        if (damaged)
            Damage();
        else
            std::ofstream(Path, std::ios::binary) << LaterBytes;
        const std::string before = FileBytes(Path);
        EXPECT_EQ(Restore(interrupt), Path + ": copying the backup: interrupted");
        EXPECT_EQ(FileBytes(Path) == before, true);
        EXPECT_EQ(Restoration.KeptPath, "");
        EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
    }
}

TEST_F(RestoreRefusalTest, AnInterruptionBeforeTheFirstPageIsNotTooLate)
{
    Shrink(); // all pages are copied at once, so that the call after them is too late
    std::vector<std::int64_t> calls;
    const auto interrupt = [&](std::int64_t done, std::int64_t total)
    {
        EXPECT_EQ(total, static_cast<std::int64_t>(std::filesystem::file_size(Destination) / 4096));
        calls.push_back(done);
        return false;
    };
    EXPECT_EQ(Restore(interrupt), Path + ": copying the backup: interrupted");
    EXPECT_EQ(calls, std::vector<std::int64_t>{0});
    EXPECT_EQ(Restoration.KeptPath, "");
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
    EXPECT_EQ(FileBytes(Path) == LaterBytes, true);
}

TEST_F(RestoreRefusalTest, AnInterruptionAfterTheLastPageIsTooLate)
{
    EXPECT_EQ(Restore([](std::int64_t done, std::int64_t total) { return done != total; }), "");
    EXPECT_EQ(FileBytes(Kept) == LaterBytes, true);
    EXPECT_EQ(FileBytes(Path) == LaterBytes, false);
}

// ---- Other processes

class RestoreDuringWriteTest : public RestoreRefusalTest
{
  protected:
    // Restores while another process has begun a transaction. Changes no file. Returns the error without the path.
    std::string RestoreDuring(const char* begin)
    {
        const auto before = Scratch.Files();
        ChildProcess other(
            [&](const ParentProcess& parent)
            {
                const PlainConnection connection(Path);
                connection.RunSQL(begin);
                parent.Send("locked");
                parent.Wait();
            });
        EXPECT_EQ(other.ReadLine(), "locked");
        const std::string error = Restore();
        EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "journal.db"}));
        other.Continue();
        EXPECT_EQ(other.End(), "done");
        EXPECT_TRUE(Scratch.Files() == before);
        EXPECT_EQ(error.substr(0, Path.size()), Path);
        return error.substr(std::min(error.size(), Path.size()));
    }
};

TEST_F(RestoreDuringWriteTest, AProcessThatWritesIsNotDisturbed)
{
    EXPECT_EQ(RestoreDuring("BEGIN IMMEDIATE;"), ": locking: database is locked");
    EXPECT_EQ(RestoreDuring("BEGIN EXCLUSIVE;"), ": reading the schema: database is locked");
}

TEST_F(RestoreDuringWriteTest, AProcessThatWritesToADamagedJournalIsNotEither)
{
    Damage();
    EXPECT_EQ(RestoreDuring("BEGIN IMMEDIATE;"), ": locking: database is locked");
}

TEST_F(RestoreRefusalTest, AJournalThatIsReplacedMeanwhileIsNotReplaced)
{
    Damage();
    bool first = true;
    const auto replace = [&](std::int64_t, std::int64_t)
    {
        if (std::exchange(first, false))
        {
            std::filesystem::rename(Path, Scratch.File("former.db"));
            std::ofstream(Path, std::ios::binary) << LaterBytes;
        }
        return true;
    };
    EXPECT_EQ(Restore(replace), Path + ": another process has replaced the file meanwhile; try again");
    EXPECT_EQ(FileBytes(Path) == LaterBytes, true);
}

// SQLite would notice it only after the journal was copied aside.
TEST_F(RestoreRefusalTest, AJournalThatIsReplacedBeforeItIsLockedIsNotCopied)
{
    const std::string former = Scratch.File("former.db");
    const AfterCall replace(SQLiteCall::BackUp, 1,
                            [&]
                            {
                                std::filesystem::rename(Path, former);
                                WriteBytes(Path, "another program's");
                            });
    EXPECT_EQ(Restore(), Path + ": another process has replaced the file meanwhile; try again");
    EXPECT_TRUE(replace.Happened());
    EXPECT_EQ(Restoration.KeptPath, "");
    EXPECT_EQ(NamesOf(Scratch.Files()), (Names{"copy.db", "former.db", "journal.db"}));
    EXPECT_EQ(FileBytes(Path), "another program's");
    EXPECT_EQ(FileBytes(former) == LaterBytes, true);
}

TEST_F(RestoreTest, TheProgramKeepsItsLocksOnTheJournal)
{
    ChildProcess other( // started while no file is open
        [&](const ParentProcess& parent)
        {
            parent.Wait();
            sqlite3* db = nullptr;
            sqlite3_open(Path.c_str(), &db);
            parent.Send(std::to_string(sqlite3_exec(db, "BEGIN IMMEDIATE;", nullptr, nullptr, nullptr)));
            sqlite3_close(db);
        });
    const PlainConnection own(Path);
    own.RunSQL("BEGIN IMMEDIATE;");
    EXPECT_EQ(Restore(), Path + ": locking: database is locked");
    other.Continue();
    EXPECT_EQ(other.ReadLine(), std::to_string(SQLITE_BUSY));
}

TEST_F(RestoreTest, AWriterWaitsUntilTheJournalIsRestored)
{
    ChildProcess writer(
        [&](const ParentProcess& parent)
        {
            PlantDatabase database;
            PlantRepository repository(database);
            Plant plant;
            plant.Name = "Patient";
            if (!database.Open(Path))
                throw std::runtime_error("not opened");
            parent.Send("open");
            parent.Wait();
            parent.Send(repository.CreatePlant(plant) ? "stored" : "refused");
        });
    ASSERT_EQ(writer.ReadLine(), "open");
    bool first = true;
    const auto start = [&](std::int64_t, std::int64_t)
    {
        if (std::exchange(first, false))
            writer.Continue();
        return true;
    };
    EXPECT_EQ(Restore(start), "");
    EXPECT_EQ(writer.ReadLine(), "stored");
    EXPECT_EQ(writer.End(), "done");
    EXPECT_EQ(PlainConnection(Path).Value("SELECT COUNT(*) FROM Plants WHERE Name='Patient';"), "1");
    EXPECT_EQ(support::Damage(PlainConnection(Path).NativeHandle()), "ok");
    EXPECT_EQ(FileBytes(Kept) == LaterBytes, true);
}

} // namespace
