// `restore`: which backup it takes, what it shows, and what it leaves.

#include "support/dated_command.h"
#include "support/journal_files.h"

#include <filesystem>
#include <fstream>
#include <utility>

using namespace support;

namespace
{

// A journal with two dated backups: of 1 May with a plant, and of 3 May with two.
class RestoreCommandTest : public DatedCommandTest
{
  protected:
    RestoreCommandTest()
    {
        DoneOn("2026-05-01", {"plant", "add", "Basil", "--uuid", "b1"});
        DoneOn("2026-05-01", {"backup"});
        DoneOn("2026-05-03", {"plant", "add", "Mint", "--uuid", "m1"});
        DoneOn("2026-05-03", {"backup"});
        DoneOn("2026-05-04", {"plant", "delete", "Mint", "--yes"});
        DoneOn("2026-05-04", {"feed", "Basil", "500ml"});
        First = PathIn(BackUpDirectoryIn(State), "2026-05-01-120000-journal.db");
        Second = PathIn(BackUpDirectoryIn(State), "2026-05-03-120000-journal.db");
    }

    // The number of plants.
    std::size_t Plants() const { return Parsed({"plant", "list"}).size(); }
    // Restores on 5 May; returns what is printed.
    std::string Restored(Words words)
    {
        words.insert(words.begin(), "restore");
        words.emplace_back("--yes");
        const std::string out = DoneOn("2026-05-05", words);
        Left.push_back("journal.db.before-restore-2026-05-05" +
                       (Left.size() > 1 ? '-' + std::to_string(Left.size()) : ""));
        return out;
    }

    std::string First;
    std::string Second;
    std::string Former = Journal + ".before-restore-2026-05-05";
};

TEST_F(RestoreCommandTest, WithoutAnArgumentItTakesTheNewestBackup)
{
    EXPECT_EQ(Restored({}), "Records                     Now  Backup  Change\n"
                            "Strains                       0       0\n"
                            "Plants                        1       2      +1\n"
                            "Timeline events               1       0      -1\n"
                            "Care entries                  1       0      -1\n"
                            "Harvest records               0       0\n"
                            "Photos                        0       0\n"
                            "Health observations           0       0\n"
                            "Journal entries               0       0\n"
                            "Last date            2026-05-04\n"
                            "Restored " +
                                Journal + " from " + Second + "\nThe former journal is " + Former + "\n");
    EXPECT_EQ(Plants(), 2U);
    EXPECT_EQ(Parsed({"plant", "list", "--file", Former}).size(), 1U);
    EXPECT_EQ(Parsed({"care", "list", "Basil", "--file", Former}).size(), 1U);
}

TEST_F(RestoreCommandTest, ADateTakesTheNewestBackupOfThatDayOrBefore)
{
    for (const char* date : {"2026-05-01", "2026-05-02", "3d"})
    {
        EXPECT_NE(Restored({date}).find("from " + First), std::string::npos) << date;
        EXPECT_EQ(Plants(), 1U);
    }
    for (const char* date : {"2026-05-03", "yesterday", "2026-05", "2026"})
        EXPECT_NE(Restored({date}).find("from " + Second), std::string::npos) << date;
    const std::string none = Refused({"restore", "2026-04-30", "--yes"});
    EXPECT_NE(none.find(": no good backup of 2026-04-30 or before; `plantjournal backup --list` lists the backups"),
              std::string::npos)
        << none;
}

TEST_F(RestoreCommandTest, ATimeTakesTheNewestBackupOfThenOrBefore)
{
    for (const char* time : {"2026-05-03 12:00", "2026-05-03 12:00:00", "2026-05-04 00:00"})
        EXPECT_NE(Restored({time}).find("from " + Second), std::string::npos) << time;
    for (const char* time : {"2026-05-03 11:59", "2026-05-03 11:59:59", "2026-05-01 12:00"})
        EXPECT_NE(Restored({time}).find("from " + First), std::string::npos) << time;
    EXPECT_NE(
        Refused({"restore", "2026-05-01 11:59", "--yes"}).find(": no good backup of 2026-05-01 11:59 or before; "),
        std::string::npos);
    for (const char* text :
         {"2026-05-03 24:00", "2026-05-03 12:60", "2026-02-30 12:00", "2026-05-03 12", "2026-05-03T12"})
        EXPECT_EQ(Refused({"restore", text, "--yes"}),
                  "plantjournal: " + std::string(text) +
                      ": no such backup, and not a date; `plantjournal backup --list` lists the backups; name one by "
                      "its file or by its time\n");
}

TEST_F(RestoreCommandTest, ANameWithoutADirectoryIsOneOfTheDatedBackups)
{
    const std::string name = std::filesystem::path(First).filename().string();
    EXPECT_NE(Restored({name}).find("from " + First + '\n'), std::string::npos);
    DoneOn("2026-05-01", {"backup", "--to", "stick"});
    const std::string other = PathIn(BackUpDirectoryIn(Scratch.File("stick")), name);
    EXPECT_NE(Restored({name, "--from", "stick"}).find("from " + other + '\n'), std::string::npos);
    EXPECT_NE(Refused({"restore", PathIn("nowhere", name), "--yes"}).find(": no such backup"), std::string::npos);
}

TEST_F(RestoreCommandTest, AFileDoesNotGoWithFrom)
{
    const ProgramResult outcome = On("2026-05-05", {"restore", First, "--from", "stick", "--yes"});
    EXPECT_EQ(outcome.Status, 2);
    EXPECT_NE(outcome.Error.find(" is a file, and does not go with --from"), std::string::npos) << outcome.Error;
    EXPECT_EQ(Parsed({"care", "list", "Basil"}).size(), 1U); // nothing was restored
}

TEST_F(RestoreCommandTest, WithoutABackupTheWaysOutAreNamed)
{
    std::filesystem::remove_all(BackUpDirectoryIn(State));
    EXPECT_TRUE(Refused({"restore", "--yes"})
                    .ends_with(": no backup of this journal; name a backup, or with --from the directory of "
                               "`plantjournal backup --to`, or read what is left of a damaged journal with "
                               "`plantjournal salvage`\n"));
}

TEST_F(RestoreCommandTest, AnyJournalFileCanBeRestored)
{
    DoneOn("2026-05-04", {"backup", "copy.db"});
    Restored({First});
    EXPECT_EQ(Plants(), 1U);
    Restored({"copy.db"});
    EXPECT_EQ(Parsed({"care", "list", "Basil"}).size(), 1U);
    Restored({Former + "-2"});
    EXPECT_EQ(Parsed({"care", "list", "Basil"}).size(), 0U);
}

TEST_F(RestoreCommandTest, AFileWhoseNameIsADateIsTheBackup)
{
    std::filesystem::copy_file(Second, Scratch.File("2026-05-01"));
    EXPECT_NE(Restored({"2026-05-01"}).find("Restored " + Journal + " from 2026-05-01\n"), std::string::npos);
    EXPECT_EQ(Plants(), 2U); // the dated backup of 1 May has one
}

TEST_F(RestoreCommandTest, ADirectoryWhoseNameIsADateIsNotTheBackup)
{
    std::filesystem::create_directory(Scratch.File("2026-05-01"));
    EXPECT_NE(Restored({"2026-05-01"}).find("2026-05-01-120000-journal.db\n"), std::string::npos);
    std::filesystem::create_directory(Scratch.File("photos"));
    EXPECT_NE(Refused({"restore", "photos", "--yes"}).find("photos: "), std::string::npos);
}

TEST_F(RestoreCommandTest, ATableThatTheBackupLacksLosesItsRows)
{
    PlainConnection(Second).RunSQL("DROP TABLE PlantHealthObservations; DROP TABLE PlantCareEntries;");
    const ProgramResult outcome = On("2026-05-05", {"restore", "--yes"});
    EXPECT_NE(outcome.Out.find("Care entries                  1       0      -1\n"), std::string::npos) << outcome.Out;
    EXPECT_NE(outcome.Error.find("programs that have it open must open it again"), std::string::npos);
    Left.emplace_back("journal.db.before-restore-2026-05-05");
    const JSON restored = JSON::parse(Restored({Former, "--json"}));
    EXPECT_EQ(restored.at("Tables").at("PlantCareEntries"), (JSON{{"Now", 0}, {"BackUp", 1}}));
}

TEST_F(RestoreCommandTest, AMovedJournalHasItsBackupsInTheFormerDirectory)
{
    const std::string former = std::filesystem::path(First).parent_path().filename().string();
    const std::string moved = Scratch.File("new/journal.db");
    std::filesystem::create_directory(Scratch.File("new"));
    std::filesystem::rename(Journal, moved);
    const std::string refusal = Refused({"restore", "--file", moved, "--yes"});
    EXPECT_NE(refusal.find(": no backup of this journal; backups of a journal with its name are in "),
              std::string::npos)
        << refusal;
    EXPECT_NE(refusal.find(former + "; name a backup, or with --from that directory if the journal was moved, or with "
                                    "--from the directory of `plantjournal backup --to`, or read what is left of a "
                                    "damaged journal with `plantjournal salvage`\n"),
              std::string::npos)
        << refusal;
    const std::string list = Done({"backup", "--list", "--file", moved});
    EXPECT_TRUE(list.starts_with("No backups; backups of a journal with its name are in ")) << list;
    EXPECT_TRUE(list.ends_with(former + "; `plantjournal backup --file " + moved + "` makes one.\n")) << list;
    const std::string place = PathIn(State, former);
    EXPECT_NE(Done({"backup", "--list", "--to", place, "--file", moved}).find("2026-05-03 12:00:00"),
              std::string::npos);
    EXPECT_EQ(On("2026-05-05", {"restore", "--from", place, "--file", moved, "--yes"}).Status, 0);
    std::filesystem::remove(moved + ".before-restore-2026-05-05");
    std::filesystem::rename(moved, Journal);
}

TEST_F(RestoreCommandTest, FromFindsTheBackupsOfAnotherPlace)
{
    DoneOn("2026-05-04", {"backup", "--to", "stick"});
    EXPECT_NE(Restored({"--from", "stick"}).find(Scratch.File("stick/journal.db-")), std::string::npos);
    EXPECT_EQ(Parsed({"care", "list", "Basil"}).size(), 1U);
    EXPECT_NE(Restored({"--from", PathIn(BackUpDirectoryIn(Scratch.File("stick")), "")})
                  .find(Scratch.File("stick/journal.db-")),
              std::string::npos);
    for (const Words& words : {Words{"restore", "--from", "nowhere", "--yes"}, {"backup", "--list", "--to", "nowhere"}})
        EXPECT_EQ(Refused(words), "plantjournal: nowhere: no such directory; check the path\n");
}

TEST_F(RestoreCommandTest, ADamagedBackupIsPassedOver)
{
    const auto size = std::filesystem::file_size(Second);
    std::filesystem::resize_file(Second, size / 2);
    const ProgramResult outcome = On("2026-05-05", {"restore", "--yes"});
    EXPECT_EQ(outcome.Status, 0);
    EXPECT_TRUE(outcome.Error.starts_with("notice: " + Second + ": ")) << outcome.Error;
    EXPECT_TRUE(outcome.Error.ends_with("; it is not used\n"));
    EXPECT_NE(outcome.Out.find("from " + First), std::string::npos);
    Left.emplace_back("journal.db.before-restore-2026-05-05");
    EXPECT_NE(Refused({"restore", Second, "--yes"}).find("; nothing was changed; `plantjournal backup --list`"),
              std::string::npos);
}

TEST_F(RestoreCommandTest, ABackupOfTheFutureIsRestoredOnlyByItsDateOrName)
{
    const std::string future = PathIn(BackUpDirectoryIn(State), "2099-01-01-120000-journal.db");
    std::filesystem::copy_file(First, future);
    const std::string notice =
        "notice: " + future + ": its date is after tomorrow, so it is not used; name it to restore it\n";
    const ProgramResult outcome = On("2026-05-05", {"restore", "--yes"});
    EXPECT_EQ(outcome.Status, 0);
    EXPECT_EQ(outcome.Error, notice);
    EXPECT_NE(outcome.Out.find("from " + Second), std::string::npos) << outcome.Out;
    Left.emplace_back("journal.db.before-restore-2026-05-05");
    EXPECT_NE(Restored({"today"}).find("from " + Second), std::string::npos);
    EXPECT_NE(Restored({"2099"}).find("from " + future), std::string::npos);
    EXPECT_NE(Restored({future}).find("from " + future), std::string::npos);
    for (const std::string& backUp : {First, Second})
        std::filesystem::remove(backUp);
    const ProgramResult none = On("2026-05-05", {"restore", "--yes"});
    EXPECT_EQ(none.Status, 1);
    EXPECT_TRUE(none.Error.starts_with(notice)) << none.Error;
    EXPECT_TRUE(none.Error.ends_with(": no good backup of 2026-05-06 or before; `plantjournal backup --list` lists the "
                                     "backups; name one by its file or by its time\n"))
        << none.Error;
}

TEST_F(RestoreCommandTest, AMissingJournalIsRestored)
{
    std::filesystem::rename(State, Scratch.File("stick")); // on Windows it is in the journal's directory
    std::filesystem::remove_all(std::filesystem::path(Journal).parent_path());
    const std::string out = DoneOn("2026-05-05", {"restore", "--from", "stick", "--yes"});
    EXPECT_TRUE(out.starts_with("The present file: no such file yet\n")) << out;
    EXPECT_EQ(out.find("The former journal"), std::string::npos);
    EXPECT_EQ(Plants(), 2U);
}

TEST_F(RestoreCommandTest, ADamagedJournalIsReplacedWithANotice)
{
    DamageJournal();
    const std::string damaged = FileBytes(Journal);
    const ProgramResult outcome = On("2026-05-05", {"restore", "--yes"});
    EXPECT_EQ(outcome.Status, 0);
    EXPECT_EQ(outcome.Error, "notice: " + Journal + ": programs that have it open must open it again\n");
    EXPECT_TRUE(outcome.Out.starts_with("The present file: damaged file; its records are not counted\n"))
        << outcome.Out;
    EXPECT_EQ(FileBytes(Former) == damaged, true);
    Left.emplace_back("journal.db.before-restore-2026-05-05");
    EXPECT_EQ(Plants(), 2U);
}

TEST_F(RestoreCommandTest, ADamagedIndexIsDamageOfTheJournal)
{
    OverwritePage(Journal, "sqlite_autoindex_Plants_1");
    const std::string check = On("2026-05-05", {"check"}).Error;
    EXPECT_TRUE(check.ends_with(
        "is malformed; restore a backup with `plantjournal restore`, or read what is left with `plantjournal salvage`\n"))
        << check;
    const std::string question = On("2026-05-05", {"restore"}).Error;
    EXPECT_TRUE(question.starts_with("The present file: damaged file\nRecords ")) << question;
    EXPECT_NE(question.find("\nPlants                        1       2      +1\n"), std::string::npos) << question;
    EXPECT_NE(question.find("Close the programs that have it open first"), std::string::npos) << question;
    const ProgramResult outcome = On("2026-05-05", {"restore", "--yes"});
    EXPECT_EQ(outcome.Error, "notice: " + Journal + ": programs that have it open must open it again\n");
    Left.emplace_back("journal.db.before-restore-2026-05-05");
}

TEST_F(RestoreCommandTest, AnInterruptedWriteIsNotCounted)
{
    const auto interrupt = [](const std::string& from, const std::string& to)
    {
        const PlainConnection writer(from);
        writer.RunSQL("PRAGMA cache_size=1; BEGIN; UPDATE Plants SET Notes=printf('%.90000c','x');");
        std::filesystem::copy_file(from, to);
        std::filesystem::copy_file(from + "-journal", to + "-journal");
    };
    const std::string torn = Scratch.File("torn.db");
    interrupt(Journal, torn);
    const std::string bytes = FileBytes(torn);
    const std::string question = On("2026-05-05", {"restore", Second, "--file", torn}).Error;
    EXPECT_TRUE(question.starts_with(
        "The present file: journal with an interrupted write; its records are not counted\nRecords "))
        << question;
    EXPECT_EQ(FileBytes(torn) == bytes, true); // nothing is rolled back before the answer
    EXPECT_NE(DoneOn("2026-05-05", {"restore", Second, "--file", torn, "--yes"}).find("Restored"), std::string::npos);

    const std::string hot = Scratch.File("hot.db");
    interrupt(Second, hot);
    EXPECT_NE(Refused({"restore", hot, "--yes"})
                  .find("hot.db: journal with an interrupted write, which `plantjournal plant list --file " + hot +
                        "` rolls back; nothing was changed"),
              std::string::npos);
}

TEST_F(RestoreCommandTest, AJournalWithADamagedSchemaNamesTheWayOut)
{
    PlainConnection(Journal).RunSQL("PRAGMA writable_schema=ON; UPDATE sqlite_master SET "
                                    "sql=replace(sql,'TimelineEventID','TimelineEveotID') WHERE "
                                    "name='PlantCareEntries';");
    for (const Words& words : {Words{"restore", "--yes"}, {"check"}, {"plant", "list"}, {"backup"}})
    {
        const std::string refusal = On("2026-05-05", words).Error;
        EXPECT_NE(refusal.find("; if this is the damaged journal, move it away and run `plantjournal restore`, or "),
                  std::string::npos)
            << refusal;
    }
    std::filesystem::rename(Journal, Scratch.File("away.db"));
    EXPECT_EQ(On("2026-05-05", {"restore", "--yes"}).Status, 0);
    EXPECT_EQ(Plants(), 2U);
    EXPECT_EQ(On("2026-05-05", {"salvage", "away.db", "salvaged.db"}).Status, 0);
    EXPECT_EQ(Parsed({"care", "list", "Basil", "--file", "salvaged.db"}).size(), 1U);
}

TEST_F(RestoreCommandTest, WhereNoBackupIsGoodNoneIsSaidToBeUsed)
{
    for (const std::string& backUp : {First, Second})
        std::filesystem::resize_file(backUp, 100);
    const std::string refusal = Refused({"restore", "--yes"});
    EXPECT_EQ(refusal.find("is used"), std::string::npos) << refusal;
    EXPECT_NE(refusal.find("; it is not used\n"), std::string::npos) << refusal;
    EXPECT_NE(refusal.find(": no good backup of "), std::string::npos) << refusal;
}

TEST_F(RestoreCommandTest, ABackupOfTomorrowIsOfAnotherTimeZone)
{
    const ProgramResult tomorrow = On("2026-05-02", {"restore", "--yes"});
    EXPECT_NE(tomorrow.Out.find("from " + Second), std::string::npos);
    EXPECT_EQ(tomorrow.Error, "notice: " + Second +
                                  ": the time in its name is after the present time; the backup before it is " + First +
                                  '\n');
    EXPECT_EQ(On("2026-05-01", {"restore", "--yes"}).Error,
              "notice: " + Second + ": its date is after tomorrow, so it is not used; name it to restore it\n");
    Left = {"journal.db", "journal.db.before-restore-2026-05-01", "journal.db.before-restore-2026-05-02"};
}

TEST_F(RestoreCommandTest, ABrokenLinkNamesTheTarget)
{
    const std::string link = Scratch.File("link.db");
    std::filesystem::create_symlink("nowhere.db", link);
    for (const Words& words : {Words{"restore", Second, "--yes"}, {"restore", "--yes"}, {"backup", "--list"}})
    {
        Words line = words;
        line.insert(line.end(), {"--file", link});
        EXPECT_EQ(Refused(line), "plantjournal: " + link +
                                     ": a symbolic link to a file that does not exist; remove the link, or name its "
                                     "target with --file\n");
    }
}

TEST_F(RestoreCommandTest, JSONHasTheRowsNowAndInTheBackup)
{
    const JSON restored = JSON::parse(Restored({"--json"}));
    EXPECT_EQ(restored.at("File"), Journal);
    EXPECT_EQ(restored.at("BackUp"), Second);
    EXPECT_EQ(restored.at("FormerFile"), Former);
    EXPECT_EQ(restored.at("LastDate"), (JSON{{"Now", "2026-05-04"}, {"BackUp", ""}}));
    EXPECT_EQ(restored.at("OpenPrograms"), "CanContinue");
    EXPECT_EQ(restored.at("Tables").at("Plants"), (JSON{{"Now", 1}, {"BackUp", 2}}));
    std::filesystem::remove(Journal);
    const JSON again = JSON::parse(DoneOn("2026-05-05", {"restore", "--yes", "--json"}));
    EXPECT_EQ(again.at("FormerFile"), nullptr);
    EXPECT_EQ(Restored({"--quiet"}), "");
}

TEST_F(RestoreCommandTest, JSONHasNoRowsOnlyOfAFileThatCannotBeRead)
{
    const auto rows = [&]
    {
        const ProgramResult outcome = On("2026-05-05", {"restore", "--yes", "--json"});
        const JSON restored = JSON::parse(outcome.Out);
        return std::pair(restored.at("Tables").at("Plants"), restored.at("LastDate").at("Now"));
    };
    std::filesystem::remove(Journal);
    EXPECT_EQ(rows(), std::pair(JSON{{"Now", 0}, {"BackUp", 2}}, JSON("")));
    std::filesystem::resize_file(Journal, 0);
    EXPECT_EQ(rows(), std::pair(JSON{{"Now", 0}, {"BackUp", 2}}, JSON("")));
    DamageJournal();
    EXPECT_EQ(rows(), std::pair(JSON{{"Now", nullptr}, {"BackUp", 2}}, JSON(nullptr)));
    Left.insert(Left.end(), {"journal.db.before-restore-2026-05-05", "journal.db.before-restore-2026-05-05-2"});
}

TEST_F(RestoreCommandTest, WithoutATerminalItNeedsYes)
{
    const std::string refusal = Refused({"restore"});
    EXPECT_NE(refusal.find("Restore " + Journal + " from " + Second +
                           "? Standard input is not a terminal; pass --yes to confirm"),
              std::string::npos);
    EXPECT_NE(refusal.find("Plants "), std::string::npos); // what would change
}

TEST_F(RestoreCommandTest, AnotherProgramsFileIsRefused)
{
    EXPECT_NE(Refused({"restore", "basil", "--yes"}).find("basil: no such backup, and not a date"), std::string::npos);
    Write("notes.txt", "notes");
    EXPECT_NE(Refused({"restore", "notes.txt", "--yes"}).find("notes.txt: not an SQLite database"), std::string::npos);
    EXPECT_NE(Refused({"restore", Journal, "--yes"})
                  .find("the backup and the journal are the same file; name another backup, or another journal with "),
              std::string::npos);
    const std::string foreign = Scratch.File("foreign.db");
    PlainConnection(foreign).RunSQL("CREATE TABLE t (a);");
    EXPECT_NE(
        Refused({"restore", Second, "--file", foreign, "--yes"})
            .find(": The table \"t\" is not part of a journal; if this is the damaged journal, move it away and run "
                  "`plantjournal restore --file " +
                  foreign + "`, or read what is left with `plantjournal salvage`; --file names another file\n"),
        std::string::npos);
}

TEST_F(RestoreCommandTest, WhatCannotBeReplacedIsRefusedBeforeTheQuestion)
{
    const auto refusal = [&](const std::string& backUp, const std::string& file) {
        return Refused({"restore", backUp, "--file", file});
    };
    const std::string checks = "check the paths, the permissions and the free space of the disk\n";
    const std::string folder = Scratch.File("folder");
    std::filesystem::create_directory(folder);
    EXPECT_EQ(refusal(Second, folder), "plantjournal: " + folder + ": not a regular file; " + checks);
    EXPECT_EQ(refusal(Journal, Journal),
              "plantjournal: " + Journal +
                  ": the backup and the journal are the same file; name another backup, or another journal with "
                  "--file\n");
    const std::string foreign = Scratch.File("foreign.db");
    PlainConnection(foreign).RunSQL("CREATE TABLE t (a);");
    EXPECT_TRUE(refusal(Second, foreign)
                    .starts_with("plantjournal: " + foreign + ": reading the schema: not a plantjournal file: "));
}

TEST_F(RestoreCommandTest, AMissingDirectoryIsNotTheJournal)
{
    for (const Words& answer : {Words{}, Words{"--yes"}})
    {
        Words line = {"restore", Second, "--file", "new/"};
        line.insert(line.end(), answer.begin(), answer.end());
        EXPECT_TRUE(Refused(line).ends_with("the path ends with a separator; name a file\n"));
    }
    EXPECT_FALSE(std::filesystem::exists(Scratch.File("new")));
}

TEST_F(RestoreCommandTest, ARollbackJournalIsKeptWithItsJournal)
{
    const std::string log = Journal + "-journal";
    const std::string away = ": journal.db-journal exists, and SQLite would apply it to the copy; move it away first; ";
    DamageJournal();
    Write(log, std::string(512, '\0')); // SQLite does not remove this one
    EXPECT_EQ(Refused({"restore", "--yes"}),
              "plantjournal: " + Journal + away +
                  "move the journal with it, so that `plantjournal salvage` reads both; then run the command again\n");
    std::filesystem::rename(Journal, Scratch.File("away.db"));
    EXPECT_EQ(Refused({"restore", "--yes"}), "plantjournal: " + Journal + away + "then run the command again\n");
    std::filesystem::rename(log, Scratch.File("away.db-journal"));
    EXPECT_EQ(On("2026-05-05", {"restore", "--yes"}).Status, 0);
    EXPECT_EQ(Plants(), 2U);
}

TEST_F(RestoreCommandTest, AReasonThatIsASentenceLosesItsStop)
{
    int page = 0;
    {
        const PlainConnection backUp(Second);
        page = std::stoi(backUp.Value("SELECT rootpage FROM sqlite_master WHERE name='PlantsByStrain';"));
    }
    std::fstream file(Second, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp((page - 1) * 4096L).write(std::string(4096, '\0').data(), 4096);
    file.close();
    const std::string refusal = Refused({"restore", Second, "--yes"});
    EXPECT_NE(refusal.find("; nothing was changed"), std::string::npos) << refusal;
    EXPECT_EQ(refusal.find(".;"), std::string::npos) << refusal;
    const std::string notice = On("2026-05-05", {"restore"}).Error;
    EXPECT_TRUE(notice.starts_with("notice: " + Second)) << notice;
    EXPECT_EQ(notice.find(".;"), std::string::npos) << notice;
}

TEST_F(RestoreCommandTest, UndoDoesNotApplyAnEarlierStep)
{
    // The record of the last change fits the backup of that state, but the journal was restored since.
    DoneOn("2026-05-04", {"backup"});
    for (const bool damaged : {false, true})
    {
        if (damaged)
            DamageJournal();
        Left.push_back("journal.db.before-restore-2026-05-05" + std::string(damaged ? "-2" : ""));
        EXPECT_EQ(On("2026-05-05", {"restore", "--yes"}).Status, 0);
        EXPECT_NE(Refused({"undo", "--yes"}).find("undo: the journal has changed since \"Fed Basil: 500 ml"),
                  std::string::npos);
    }
    DoneOn("2026-05-05", {"water", "Basil", "1l"});
    EXPECT_TRUE(DoneOn("2026-05-05", {"undo", "--yes"}).starts_with("Undone: Watered Basil"));
}

class RestoreQuestionTest : public RestoreCommandTest
{
  protected:
    void SetUp() override { SkipWithoutTerminal(); }
};

TEST_F(RestoreQuestionTest, ItShowsTheChangesAndAsks)
{
    const ProgramResult declined = RunOnTerminal({"restore"}, "n\n");
    EXPECT_EQ(declined.Status, 1);
    EXPECT_NE((declined.Out + declined.Error).find("Restore " + Journal), std::string::npos);
    EXPECT_NE((declined.Out + declined.Error).find("nothing was restored; answer y, or pass --yes"), std::string::npos);
    EXPECT_EQ(Plants(), 1U);
    EXPECT_EQ(RunOnTerminal({"restore"}, "y\n").Status, 0);
    EXPECT_EQ(Plants(), 2U);
    Left.push_back("journal.db.before-restore-" + PlantEventCurrentDate());
}

TEST_F(RestoreQuestionTest, AChangeSinceTheQuestionIsNotLost)
{
    Surroundings terminal = Around;
    terminal.Columns = 80;
    RunningProgram command(Line({"restore"}), terminal);
    ASSERT_TRUE(command.Await("from " + Second + '?'));
    EXPECT_EQ(Run({"plant", "add", "Sage"}).Status, 0);
    command.Type("y\n");
    const ProgramResult outcome = command.End();
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Out.find(Journal + ": it has changed since the question; nothing was restored; run the command "
                                         "again"),
              std::string::npos)
        << outcome.Out;
    EXPECT_EQ(Parsed({"plant", "show", "Sage"}).at("Name"), "Sage");
}

TEST_F(RestoreQuestionTest, ABackupThatWasRemovedMeanwhileSaysToRunItAgain)
{
    Surroundings terminal = Around;
    terminal.Columns = 80;
    RunningProgram command(Line({"restore"}), terminal);
    ASSERT_TRUE(command.Await("from " + Second + '?'));
    std::filesystem::remove(Second);
    command.Type("y\n");
    const ProgramResult outcome = command.End();
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Out.find(Second + ": no such file; run the command again"), std::string::npos) << outcome.Out;
    EXPECT_EQ(RunOnTerminal({"restore"}, "y\n").Status, 0);
    Left.push_back("journal.db.before-restore-" + PlantEventCurrentDate());
}

} // namespace
