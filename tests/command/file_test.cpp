// Where the journal is, and what the command does with missing, older, foreign, damaged, locked and read-only files.

#include "support/child_process.h"
#include "support/command.h"
#include "support/journal_files.h"
#include "testing/old_files.h"
#include "testing/plain_connection.h"

#include <filesystem>

using namespace support;

namespace
{

// The kind of the file in the output of `info`.
std::string KindIn(const std::string& info)
{
    const std::size_t label = info.find("\nKind ");
    const std::size_t begin = info.find_first_not_of(' ', label + 5);
    return label == std::string::npos ? "" : info.substr(begin, info.find('\n', begin) - begin);
}

using JournalPlaceTest = CommandTest;

TEST_F(JournalPlaceTest, TheDefaultPlaceIsTheXDGDataDirectory)
{
    EXPECT_FALSE(std::filesystem::exists(Journal));
    Done({"plant", "add", "Basil"});
    EXPECT_TRUE(std::filesystem::exists(Journal));
}

TEST_F(JournalPlaceTest, WithoutXDGDataHomeThePlaceIsBelowHome)
{
    const std::string home = Scratch.File("home/.local/share/plantjournal/journal.db");
    std::erase_if(Around.Environment, [](const std::string& text) { return text.starts_with("XDG_DATA_HOME="); });
    for (const char* ignored : {"", "XDG_DATA_HOME=", "XDG_DATA_HOME=relative"})
    {
        Surroundings around = Around;
        if (*ignored != '\0')
            around.Environment.emplace_back(ignored);
        EXPECT_EQ(RunningProgram(Line({"plant", "add", "Basil"}), around).End().Status, 0);
        EXPECT_TRUE(std::filesystem::remove(home)) << ignored;
    }
}

TEST_F(JournalPlaceTest, WithoutAHomeDirectoryTheFlagIsRequired)
{
    RemoveVariable(HomeVariable);
    RemoveVariable("XDG_DATA_HOME");
    EXPECT_NE(Refused({"plant", "add", "Basil"}).find("pass --file to name the journal"), std::string::npos);
}

TEST_F(JournalPlaceTest, ARelativeHomeDirectoryCountsAsNone)
{
    RemoveVariable("XDG_DATA_HOME");
    SetVariable(HomeVariable, "home");
    EXPECT_NE(Refused({"plant", "add", "Basil"}).find("pass --file to name the journal"), std::string::npos);
    EXPECT_EQ(NoticesOf({"plant", "add", "Basil", "--file", Scratch.File("named.db")}).find("notice: `undo` cannot "),
              0U);
}

TEST_F(JournalPlaceTest, TheFlagPrevailsOverTheEnvironment)
{
    Around.Environment.push_back("PLANTJOURNAL_FILE=" + Scratch.File("named.db"));
    Done({"plant", "add", "Basil"});
    Done({"plant", "add", "Mint", "--file", "flag.db"});
    Done({"--file=flag.db", "plant", "add", "Thyme"});
    EXPECT_FALSE(std::filesystem::exists(Journal));
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 1U);
    EXPECT_EQ(Parsed({"plant", "list", "--file", "flag.db"}).size(), 2U);
    Around.Environment.back() = "PLANTJOURNAL_FILE=";
    EXPECT_NE(Refused({"plant", "list"}).find(Journal), std::string::npos);
}

TEST_F(JournalPlaceTest, ReadingCreatesNoJournal)
{
    for (const Words& words : {Words{"plant", "list"},
                               {"plant", "tree"},
                               {"strain", "list"},
                               {"care", "list"},
                               {"timeline", "Basil"},
                               {"feed", "Basil"},
                               {"plant", "edit", "Basil", "--tent", "x"},
                               {"export", "-"},
                               {"backup", "copy.db"},
                               {"check"}})
        Refused(words);
    EXPECT_EQ(Parsed({"info"}).at("Kind"), "Missing");
    EXPECT_EQ(KindIn(Done({"info"})), "no such file yet");
    EXPECT_FALSE(std::filesystem::exists(Journal));
}

TEST_F(JournalPlaceTest, ARefusedWriteCreatesNoJournal)
{
    Refused({"plant", "add", "Cutting", "--mother", "Basil"});
    EXPECT_FALSE(std::filesystem::exists(Journal));
}

TEST_F(JournalPlaceTest, AnEmptyFileBecomesAJournal)
{
    Write("data/plantjournal/journal.db", "");
    EXPECT_EQ(KindIn(Done({"info"})), "empty file");
    EXPECT_NE(Refused({"plant", "list"}).find("no such journal"), std::string::npos);
    Done({"plant", "add", "Basil"});
}

// ---- Older files

class OlderJournalTest : public CommandTest, public testing::WithParamInterface<OldFile>
{
  protected:
    OlderJournalTest()
    {
        std::filesystem::create_directories(std::filesystem::path(Journal).parent_path());
        WriteOldFile(Journal, GetParam());
        Sound = false; // files of earlier versions can have findings
    }
};

TEST_P(OlderJournalTest, AnEarlierSchemaIsBackedUpAndMigratedOnce)
{
    const std::string before = Content();
    const JSON info = Parsed({"info"});
    EXPECT_EQ(info.at("Kind"), HasCurrentSchema(GetParam()) ? "Current" : "Older");
    EXPECT_EQ(KindIn(Done({"info"})),
              HasCurrentSchema(GetParam()) ? "journal, current schema" : "journal, earlier schema");
    EXPECT_EQ(info.at("Steps").empty(), HasCurrentSchema(GetParam()));
    Run({"check"});
    EXPECT_EQ(Content(), before); // neither changes the file

    const ProgramResult first = Run({"plant", "list", "--json"});
    EXPECT_EQ(first.Status, 0);
    EXPECT_EQ(JSON::parse(first.Out).size(), 2U);
    if (HasCurrentSchema(GetParam()))
    {
        EXPECT_EQ(first.Error, "");
        EXPECT_EQ(Content(), before);
        return;
    }
    Left.push_back("journal.db.before-update-" + PlantEventCurrentDate());
    const std::string backUp = Scratch.File("data/plantjournal/" + Left.back());
    EXPECT_EQ(first.Error, Journal + ": earlier schema; backed up as " + backUp + ", now migrating\n");
    EXPECT_EQ(::Content(PlainConnection(backUp).NativeHandle()), before);
    EXPECT_EQ(Done({"plant", "list", "--json"}), first.Out);
    EXPECT_EQ(Parsed({"info"}).at("Kind"), "Current");
    EXPECT_EQ(KindIn(Done({"info"})), "journal, current schema");
}

INSTANTIATE_TEST_SUITE_P(Of, OlderJournalTest, testing::ValuesIn(OldFiles()),
                         [](const auto& test) { return test.param.Name; });

class JournalKindTest : public CommandTest
{
  protected:
    JournalKindTest() { std::filesystem::create_directories(std::filesystem::path(Journal).parent_path()); }

    // The message of reading and of writing; neither changes the file.
    std::string RefusedToUse() const
    {
        const std::string reason = Refused({"plant", "list"});
        EXPECT_EQ(Refused({"plant", "add", "Basil"}), reason);
        Refused({"feed", "Basil"});
        Refused({"export", "-"});
        Write("plants.json", R"({"Plants":[{"Name":"Basil"}]})");
        Refused({"import", "plants.json"});
        return reason;
    }
};

TEST_F(JournalKindTest, AMigrationKeepsEarlierBackups)
{
    WriteOldFile(Journal, OldFiles().front());
    const std::string name = "journal.db.before-update-" + PlantEventCurrentDate();
    Write("data/plantjournal/" + name, "the first");
    std::filesystem::create_symlink("nowhere", Scratch.File("data/plantjournal/" + name + "-2"));
    Run({"plant", "list"});
    EXPECT_EQ(FileBytes(Scratch.File("data/plantjournal/" + name)), "the first");
    Left.insert(Left.end(), {name, name + "-2", name + "-3"});
    Sound = false;
}

TEST_F(JournalKindTest, AJournalIsNotMigratedWithoutABackup)
{
    WriteOldFile(Journal, OldFiles().front());
    const std::string before = Content();
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms(0755));
    std::filesystem::permissions(Journal, std::filesystem::perms(0666)); // the file is writable, its directory is not
    Around.AsUser = true;
    EXPECT_NE(Refused({"plant", "list"}).find("a journal is not migrated without a backup"), std::string::npos);
    EXPECT_EQ(Content(), before);
    Sound = false;
}

TEST_F(JournalKindTest, AnotherProgramsDatabaseIsNotChanged)
{
    PlainConnection(Journal).RunSQL("CREATE TABLE \"Songs\x1B[2J\"(Title);");
    const std::string reason = RefusedToUse();
    EXPECT_NE(reason.find("not a plantjournal file, or one of a newer version"), std::string::npos) << reason;
    EXPECT_EQ(reason.find('\x1B'), std::string::npos);
    EXPECT_EQ(Parsed({"info"}).at("Kind"), "Foreign");
    EXPECT_EQ(KindIn(Done({"info"})), "not a plantjournal file");
    Sound = false;
}

TEST_F(JournalKindTest, AJournalOfANewerVersionIsNotChanged)
{
    KeepEverything();
    PlainConnection(Journal).RunSQL("ALTER TABLE Plants ADD COLUMN Colour TEXT;");
    EXPECT_NE(RefusedToUse().find("not a plantjournal file, or one of a newer version"), std::string::npos);
    Sound = false;
}

TEST_F(JournalKindTest, AFileThatIsNotADatabaseIsNotChanged)
{
    Write("data/plantjournal/journal.db", "dear diary, " + std::string(5000, 'x'));
    EXPECT_NE(RefusedToUse().find("not an SQLite database; it was not changed"), std::string::npos);
    EXPECT_EQ(Parsed({"info"}).at("Kind"), "NotADatabase");
    EXPECT_EQ(KindIn(Done({"info"})), "not an SQLite database");
    EXPECT_NE(Refused({"check"}).find("journal.db"), std::string::npos);
    EXPECT_NE(Refused({"backup", "copy.db"}).find("journal.db"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(Scratch.File("copy.db")));
    Sound = false;
}

TEST_F(JournalKindTest, ADirectoryIsRefused)
{
    std::filesystem::create_directory(Journal);
    RefusedToUse();
    Refused({"info"});
    std::filesystem::remove(Journal);
}

TEST_F(JournalKindTest, ADamagedJournalIsReportedAndNotChanged)
{
    KeepEverything();
    std::filesystem::resize_file(Journal, std::filesystem::file_size(Journal) / 2);
    RefusedToUse();
    EXPECT_NE(Run({"check"}).Status, 0);
    Refused({"backup", "copy.db"});
    Sound = false;
}

TEST_F(JournalKindTest, DamagedRowsAreReportedByTheCommandThatReadsThem)
{
    KeepEverything();
    OverwritePage(Journal, "Plants");
    for (const Words& words :
         {Words{"plant", "list"}, {"plant", "list", "--json"}, {"feed", "Basil"}, {"timeline", "Basil"}})
    {
        const std::string reason = Refused(words);
        EXPECT_NE(reason.find("the plants cannot be listed: database disk image is malformed; the file is damaged, "
                              "restore a backup"),
                  std::string::npos)
            << reason;
    }
    EXPECT_EQ(Parsed({"info"}).at("Kind"), "Damaged");
    EXPECT_EQ(KindIn(Done({"info"})), "damaged file");
    Sound = false;
}

TEST_F(JournalKindTest, AnEarlierSchemaWithDamagedRowsIsNotMigrated)
{
    WriteOldFile(Journal, OldFiles().front());
    OverwritePage(Journal, "Plants");
    EXPECT_NE(Refused({"plant", "list"}).find("journal.db: damaged ("), std::string::npos);
    Sound = false;
}

TEST_F(JournalKindTest, AnEarlierSchemaWithADamagedIndexIsNotMigrated)
{
    WriteOldFile(Journal, OldFiles().front());
    OverwritePage(Journal, "sqlite_autoindex_Plants_1");
    const std::string before = FileBytes(Journal);
    const std::string refusal = Refused({"plant", "list"});
    EXPECT_NE(refusal.find("the journal is damaged: database disk image is malformed; a journal is not migrated "
                           "without a backup; restore a backup with `plantjournal restore`"),
              std::string::npos)
        << refusal;
    EXPECT_EQ(FileBytes(Journal) == before, true);
    Sound = false;
}

TEST_F(JournalKindTest, UnknownEventTypesAreRefusedAlsoWithoutACheck)
{
    KeepEverything();
    PlainConnection(Journal).RunSQL("PRAGMA writable_schema=ON; UPDATE sqlite_master SET sql=replace(sql,"
                                    "'CHECK(EventType IN (','CHECK(1 OR EventType IN (') WHERE name='PlantEvents';");
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 2U);
    PlainConnection(Journal).RunSQL("UPDATE PlantEvents SET EventType='Pruned' WHERE ID=1;");
    EXPECT_NE(RefusedToUse().find("not a plantjournal file, or one of a newer version"), std::string::npos);
    Sound = false;
}

TEST_F(JournalKindTest, AnInterruptedWriteIsRolledBack)
{
    KeepEverything();
    const std::string before = Content();
    // A child is killed in a transaction after some of its pages were written to the file.
    ChildProcess child(
        [&](const ParentProcess& parent)
        {
            const PlainConnection connection(Journal);
            connection.RunSQL("PRAGMA cache_size=1; PRAGMA cache_spill=1; BEGIN;");
            for (int i = 0; i < 200; ++i)
                connection.RunSQL("INSERT INTO Strains(Name,Notes) VALUES('" + std::to_string(i) +
                                  "',hex(randomblob(500)));");
            parent.Send("written");
            parent.Wait();
        });
    ASSERT_EQ(child.ReadLine(), "written");
    child.Kill();
    child.End();
    ASSERT_TRUE(std::filesystem::exists(Journal + "-journal"));
    EXPECT_EQ(Parsed({"info"}).at("Kind"), "Interrupted");
    EXPECT_EQ(KindIn(Done({"info"})), "journal with an interrupted write");
    EXPECT_TRUE(Refused({"check"}).ends_with("; `plantjournal plant list` opens it\n"));
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 2U);
    EXPECT_EQ(Content(), before);
}

// ---- Locks and permissions

TEST_F(JournalKindTest, ALockedJournalIsRefusedAfterAWait)
{
    KeepEverything();
    const OtherProgram other(Journal, "BEGIN EXCLUSIVE;");
    EXPECT_EQ(KindIn(Done({"info"})), "file that another program is writing to");
    EXPECT_NE(Refused({"plant", "list"}).find("another program is writing to it; try again when it has finished"),
              std::string::npos);
}

TEST_F(JournalKindTest, AJournalBeingWrittenIsReadableButNotWritable)
{
    KeepEverything();
    const OtherProgram other(Journal, "BEGIN IMMEDIATE;");
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 2U);
    const std::string reason = Refused({"plant", "edit", "Basil", "--tent", "North"});
    EXPECT_NE(
        reason.find("database is locked; another program is writing to the journal, try again when it has finished"),
        std::string::npos)
        << reason;
}

TEST_F(JournalKindTest, AShortLockDelaysACommand)
{
    KeepEverything();
    OtherProgram other(Journal, "BEGIN EXCLUSIVE;");
    RunningProgram program(Line({"plant", "edit", "Basil", "--tent", "North"}), Around);
    EXPECT_FALSE(Await([&] { return !program.Runs(); }, std::chrono::milliseconds(300)));
    other.Finish();
    EXPECT_EQ(program.End().Status, 0);
    EXPECT_EQ(Parsed({"plant", "show", "Basil"}).at("Tent"), "North");
}

TEST_F(JournalKindTest, AReadOnlyFileIsReadAndNotWritten)
{
    KeepEverything();
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms(0777));
    std::filesystem::permissions(Journal, std::filesystem::perms(0444));
    Around.AsUser = true;
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 2U);
    EXPECT_EQ(Done({"check"}), "No problems found.\n");
    Done({"timeline", "Basil"});
    Done({"export", "copy.json"});
    Done({"backup", "copy.db"});
    EXPECT_EQ(FileBytes(Scratch.File("copy.db")).size(), FileBytes(Journal).size());
    for (const Words& words : {Words{"feed", "Basil"},
                               {"plant", "add", "Mint"},
                               {"plant", "delete", "Basil", "--yes"},
                               {"strain", "add", "Mint"}})
    {
        const std::string reason = Refused(words);
        EXPECT_NE(reason.find("attempt to write a readonly database; make the file writable, or copy it"),
                  std::string::npos)
            << reason;
    }
    Write("plants.json", R"({"Plants":[{"Name":"Mint"}]})");
    Refused({"import", "plants.json"});
}

TEST_F(JournalKindTest, AnUnreadableFileIsRefused)
{
    KeepEverything();
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms(0777));
    std::filesystem::permissions(Journal, std::filesystem::perms(0));
    Around.AsUser = true;
    RefusedToUse();
    EXPECT_NE(Refused({"info"}).find("journal.db"), std::string::npos);
    std::filesystem::permissions(Journal, std::filesystem::perms(0644));
}

// ---- Backups

TEST_F(JournalKindTest, ABackupHoldsTheWholeJournal)
{
    KeepEverything();
    EXPECT_EQ(Done({"backup", "copy.db"}), "Backed up " + Journal + " to copy.db\n");
    EXPECT_EQ(Done({"backup", "--quiet", "--overwrite", "copy.db"}), "");
    EXPECT_EQ(::Content(PlainConnection(Scratch.File("copy.db")).NativeHandle()), Content());
}

TEST_F(JournalKindTest, ABackupReplacesAFileOnlyWithOverwrite)
{
    KeepEverything();
    Write("copy.db", "something");
    EXPECT_NE(Refused({"backup", "copy.db"}).find("copy.db"), std::string::npos);
    EXPECT_EQ(FileBytes(Scratch.File("copy.db")), "something");
    Done({"backup", "--overwrite", "copy.db"});
    EXPECT_EQ(::Content(PlainConnection(Scratch.File("copy.db")).NativeHandle()), Content());
    Refused({"backup", "--overwrite", Journal});
    Refused({"backup", "nowhere/copy.db"});
}

TEST_F(JournalKindTest, ABackupWorksWhileAnotherProgramWrites)
{
    KeepEverything();
    const std::string before = Content();
    OtherProgram other(Journal, "BEGIN IMMEDIATE; UPDATE Strains SET Notes='of the other';");
    Done({"backup", "copy.db"});
    EXPECT_EQ(::Content(PlainConnection(Scratch.File("copy.db")).NativeHandle()), before);
    other.Finish();
}

TEST_F(JournalKindTest, CtrlCDuringABackupLeavesNoFiles)
{
    KeepEverything();
    std::filesystem::create_directory(Scratch.File("backups"));
    OtherProgram other(Journal, "BEGIN EXCLUSIVE;"); // so that the signal comes in time
    RunningProgram program(Line({"backup", "backups/copy.db"}), Around);
    program.Interrupt();
    other.Finish();
    const ProgramResult outcome = program.End();
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_TRUE(outcome.Error.ends_with("run the command again\n")) << outcome.Error;
    EXPECT_TRUE(std::filesystem::is_empty(Scratch.File("backups")));
}

} // namespace
