// `backup`: dated backups, their list, and the notice that offers one.

#include "support/dated_command.h"
#include "support/journal_files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>

using namespace support;

namespace
{

class BackUpCommandTest : public DatedCommandTest
{
  protected:
    BackUpCommandTest() { EXPECT_EQ(On("2026-05-01", {"plant", "add", "Basil"}).Error, ""); }
};

TEST_F(BackUpCommandTest, WithoutADestinationItIsInTheStateDirectory)
{
    const std::string out = DoneOn("2026-05-01", {"backup"});
    const std::filesystem::path directory = BackUpDirectoryIn(State);
    EXPECT_EQ(directory.parent_path().string(), State);
    EXPECT_TRUE(std::regex_match(directory.filename().string(), std::regex("journal\\.db-[0-9a-f]{16}"))) << directory;
    const std::string made = PathIn(directory.string(), "2026-05-01-120000-journal.db");
    EXPECT_EQ(out, "Backed up " + Journal + " to " + made + "\n");
    EXPECT_EQ(Parsed({"plant", "list", "--file", made}).size(), 1U);
    SetVariable(StateVariable, Scratch.File("state"));
    DoneOn("2026-05-01", {"backup", "--file", Journal});
    EXPECT_TRUE(std::filesystem::exists(BackUpDirectoryIn(Scratch.File("state/plantjournal/backups")) +
                                        "/2026-05-01-120000-journal.db"));
}

TEST_F(BackUpCommandTest, OnlyTheOwnerCanReadTheStateDirectory)
{
    using std::filesystem::perms;
    for (const Words& words : {Words{"backup"}, {"backup", "copy.db"}})
    {
        const std::string state = Scratch.File("state of " + words.back());
        SetVariable(StateVariable, state);
        DoneOn("2026-05-01", words);
        for (const char* name : {"", "/plantjournal", "/plantjournal/backups"})
            EXPECT_EQ(std::filesystem::status(state + name).permissions(), perms::owner_all) << state << name;
        const std::string directory = BackUpDirectoryIn(state + "/plantjournal/backups");
        EXPECT_EQ(std::filesystem::status(directory).permissions(), perms::owner_all) << directory;
    }
    DoneOn("2026-05-01", {"backup", "--to", "stick"}); // has the permissions of any new directory
    std::filesystem::create_directory(Scratch.File("any"));
    EXPECT_EQ(std::filesystem::status(Scratch.File("stick")).permissions(),
              std::filesystem::status(Scratch.File("any")).permissions());
}

TEST_F(BackUpCommandTest, OlderBackupsAreRemovedByDaysWeeksAndMonths)
{
    EXPECT_EQ(DoneOn("2026-05-01", {"backup"}).find("removed"), std::string::npos);
    EXPECT_TRUE(DoneOn("2026-05-01", {"backup"}).ends_with("120000_02-journal.db; removed 1 older backup\n"));
    for (const char* day : {"2026-05-02", "2026-05-03", "2026-05-04", "2026-05-05", "2026-05-06", "2026-05-07"})
        EXPECT_EQ(DoneOn(day, {"backup"}).find("removed"), std::string::npos) << day;
    EXPECT_TRUE(DoneOn("2026-05-08", {"backup"}).ends_with("; removed 1 older backup\n")); // of 1 May
    EXPECT_TRUE(DoneOn("2026-05-09", {"backup"}).ends_with("; removed 1 older backup\n")); // of 2 May
    EXPECT_EQ(DoneOn("2026-05-10", {"backup"}).find("removed"), std::string::npos); // 3 May is the newest of its week
}

TEST_F(BackUpCommandTest, QuietAndJSONNameTheBackup)
{
    const std::string first = DoneOn("2026-05-01", {"backup", "--quiet"});
    const std::string directory = BackUpDirectoryIn(State);
    EXPECT_EQ(first, PathIn(directory, "2026-05-01-120000-journal.db") + '\n');
    const JSON second = JSON::parse(DoneOn("2026-05-01", {"backup", "--json"}));
    EXPECT_EQ(second, (JSON{{"BackUp", PathIn(directory, "2026-05-01-120000_02-journal.db")},
                            {"Removed", {first.substr(0, first.size() - 1)}}}));
    EXPECT_EQ(JSON::parse(DoneOn("2026-05-01", {"backup", "copy.db", "--json"})),
              (JSON{{"BackUp", "copy.db"}, {"Removed", JSON::array()}}));
}

TEST_F(BackUpCommandTest, JournalsOfOneNameKeepTheirOwnBackups)
{
    const std::string other = Scratch.File("other/journal.db");
    DoneOn("2026-05-01", {"plant", "add", "Mint", "--file", other});
    for (const Words& words : {Words{"backup", "--to", "stick"}, {"backup", "--to", "stick", "--file", other}})
    {
        DoneOn("2026-05-01", words);
        EXPECT_NE(DoneOn("2026-05-01", words).find("; removed 1 older backup"), std::string::npos);
    }
    int directories = 0;
    for (const auto& entry : std::filesystem::directory_iterator(Scratch.File("stick")))
    {
        EXPECT_TRUE(entry.path().filename().string().starts_with("journal.db-"));
        EXPECT_TRUE(std::filesystem::exists(entry.path() / "2026-05-01-120000_02-journal.db"));
        ++directories;
    }
    EXPECT_EQ(directories, 2);
    std::filesystem::create_symlink(other, Scratch.File("link.db")); // has the backups of its target
    EXPECT_EQ(JSON::parse(DoneOn("2026-05-01", {"backup", "--list", "--json", "--to", "stick", "--file", "link.db"})),
              JSON::parse(DoneOn("2026-05-01", {"backup", "--list", "--json", "--to", "stick", "--file", other})));
}

TEST_F(BackUpCommandTest, TheListShowsAgeSizeAndContent)
{
    EXPECT_EQ(DoneOn("2026-05-01", {"backup", "--list"}), "No backups; `plantjournal backup` makes one.\n");
    EXPECT_EQ(DoneOn("2026-05-01", {"backup", "--list", "--json"}), "[]\n");
    DoneOn("2026-05-01", {"backup"});
    DoneOn("2026-05-03", {"feed", "Basil", "500ml"});
    DoneOn("2026-05-03", {"backup"});
    const std::string directory = BackUpDirectoryIn(State);
    const std::string first = PathIn(directory, "2026-05-01-120000-journal.db");
    const std::string second = PathIn(directory, "2026-05-03-120000-journal.db");
    const auto size = std::to_string(std::filesystem::file_size(Journal));
    const std::string list = DoneOn("2026-05-04", {"backup", "--list"});
    EXPECT_EQ(list, "Made                 Age        Bytes  Content                                         File\n"
                    "2026-05-03 12:00:00  yesterday  " +
                        size + "  1 plant, 2 other records, last date 2026-05-03  " + second +
                        "\n2026-05-01 12:00:00  3 d ago    " + size +
                        "  1 plant, 0 other records                        " + first + '\n');
    const JSON parsed = JSON::parse(DoneOn("2026-05-04", {"backup", "--list", "--json"}));
    ASSERT_EQ(parsed.size(), 2U);
    EXPECT_EQ(parsed[0].at("Time"), "2026-05-03 12:00:00");
    EXPECT_EQ(parsed[0].at("File"), second);
    EXPECT_EQ(parsed[0].at("Kind"), "Current");
    EXPECT_EQ(std::to_string(parsed[0].at("Bytes").get<long>()), size);
    EXPECT_EQ(parsed[0].at("LastDate"), "2026-05-03");
    EXPECT_EQ(parsed[0].at("Tables").at("PlantCareEntries"), 1);
    EXPECT_EQ(parsed[1].at("Tables").at("PlantCareEntries"), 0);
}

TEST_F(BackUpCommandTest, TheListShowsABackupThatCannotBeRead)
{
    DoneOn("2026-05-01", {"backup"});
    std::ofstream(BackUpDirectoryIn(State) + "/2026-05-01-120000-journal.db") << "a shopping list";
    EXPECT_NE(DoneOn("2026-05-01", {"backup", "--list"}).find("not an SQLite database"), std::string::npos);
    EXPECT_EQ(JSON::parse(DoneOn("2026-05-01", {"backup", "--list", "--json"})).at(0).at("Kind"), "NotADatabase");
}

TEST_F(BackUpCommandTest, TheListHasTheErrorOfABackupThatIsNotReadable)
{
    DoneOn("2026-05-01", {"backup", "--to", "stick"});
    const std::string made = BackUpDirectoryIn(Scratch.File("stick")) + "/2026-05-01-120000-journal.db";
    const Words list = {"backup", "--list", "--json", "--to", "stick"};
    EXPECT_EQ(JSON::parse(DoneOn("2026-05-01", list)).at(0).at("Error"), "");
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms(0755));
    std::filesystem::permissions(made, std::filesystem::perms::none);
    Around.AsUser = true;
    const JSON backUp = JSON::parse(DoneOn("2026-05-01", list)).at(0);
    EXPECT_EQ(backUp.at("Kind"), nullptr);
    EXPECT_EQ(backUp.at("Bytes"), std::filesystem::file_size(made));
    EXPECT_EQ(backUp.at("Error"), made + ": opening: unable to open database file");
    Around.AsUser = false;
}

TEST_F(BackUpCommandTest, OptionsThatDoNotGoTogetherAreRefused)
{
    EXPECT_NE(Mistaken({"backup", "x.db", "--list"}).find("DESTINATION does not go with --to or --list"),
              std::string::npos);
    EXPECT_NE(Mistaken({"backup", "x.db", "--to", "stick"}).find("DESTINATION does not go with --to or --list"),
              std::string::npos);
    EXPECT_NE(Mistaken({"backup", "--overwrite"}).find("--overwrite needs a DESTINATION"), std::string::npos);
}

TEST_F(BackUpCommandTest, ABrokenLinkAsTheDestinationIsRefused)
{
    std::filesystem::create_symlink("nowhere", Scratch.File("copy.db"));
    for (const Words& words :
         {Words{"backup", "copy.db"}, {"backup", "--overwrite", "copy.db"}, {"salvage", Journal, "copy.db"}})
        EXPECT_EQ(Refused(words),
                  "plantjournal: copy.db: a symbolic link to a file that does not exist; name another destination\n");
}

TEST_F(BackUpCommandTest, APlaceThatCannotBeUsedIsRefused)
{
    Write("file", "");
    const std::string refusal = Refused({"backup", "--to", "file"});
    EXPECT_NE(refusal.find("check that the backup's directory exists, is writable and has free space"),
              std::string::npos)
        << refusal;
    EXPECT_NE(Refused({"backup", "--list", "--to", "file"}).find("; check the path and the permissions"),
              std::string::npos);
    RemoveVariable(HomeVariable);
    EXPECT_NE(Refused({"backup", "--file", Journal}).find(std::string(HomeVariable) + " is not set; set it"),
              std::string::npos);
    const std::string notice = On("2026-05-01", {"water", "Basil", "--file", Journal}).Error;
    EXPECT_TRUE(notice.starts_with("notice: `undo` cannot roll back this change: ")) << notice;
    EXPECT_EQ(notice.find("name the backup"), std::string::npos) << notice;
}

TEST_F(BackUpCommandTest, APathThatIsTooLongForSQLiteIsCalledSo)
{
    std::string directory = "deep";
    for (int i = 0; i < 3; ++i)
        directory += '/' + std::string(200, 'd');
    std::filesystem::create_directories(Scratch.File(directory));
    EXPECT_EQ(Refused({"backup", directory + "/copy.db"}),
              "plantjournal: " + directory +
                  "/copy.db: opening: the path is too long for SQLite; use a shorter path\n");
}

TEST_F(BackUpCommandTest, TheDamageOfTheJournalIsNotThatOfThePlace)
{
    Sound = false;
    Done({"backup", "copy.db"});
    OverwritePage(Journal, "PlantsByStrain");
    for (const Words& words : {Words{"backup"}, {"backup", "other.db"}, {"backup", "copy.db", "--overwrite"}})
    {
        const std::string refusal = Refused(words);
        EXPECT_TRUE(
            refusal.ends_with(": checking the copy of " + Journal +
                              ": the journal is damaged: database disk image is malformed; restore a backup with "
                              "`plantjournal restore`, or read what is left with `plantjournal salvage`\n"))
            << refusal;
    }
}

TEST_F(BackUpCommandTest, AnOlderBackupThatCannotBeRemovedIsAnError)
{
    std::filesystem::create_directory(Scratch.File("stick"));
    DoneOn("2026-05-01", {"backup", "--to", "stick"});
    const std::string directory = BackUpDirectoryIn(Scratch.File("stick"));
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms::all);
    std::filesystem::permissions(directory, std::filesystem::perms(01777)); // only root removes root's files
    SetVariable(StateVariable, Scratch.File("state"));
    Around.AsUser = true;
    const ProgramResult outcome = On("2026-05-01", {"backup", "--to", "stick"});
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_TRUE(outcome.Error.ends_with(
        ": removing 2026-05-01-120000-journal.db: Operation not permitted; the new backup " + directory +
        "/2026-05-01-120000_02-journal.db is complete; check the "
        "permissions, and whether a program has an older backup open\n"))
        << outcome.Error;
    EXPECT_TRUE(std::filesystem::exists(directory + "/2026-05-01-120000_02-journal.db"));
    EXPECT_EQ(FileBytes(BackUpDirectoryIn(Scratch.File("state/plantjournal/backups")) + "/last-backup"),
              "2026-05-01\n"); // so that no notice offers a backup
    Around.AsUser = false;
}

// ---- The notice

class BackUpOfferTest : public BackUpCommandTest
{
  protected:
    std::string Offer(int days) const
    {
        return "notice: " + Journal + ": no backup for " + std::to_string(days) +
               " days; `plantjournal backup` makes one\n";
    }
    // What a change on that day prints on standard error.
    std::string Changed(const std::string& day) const { return NoticeOn(day, {"water", "Basil", "1l"}); }
};

TEST_F(BackUpOfferTest, AJournalOfSevenDaysNeedsNone)
{
    EXPECT_EQ(Changed("2026-05-01"), "");
    EXPECT_EQ(Changed("2026-05-08"), "");
}

TEST_F(BackUpOfferTest, AfterSevenDaysAChangeOffersABackup)
{
    EXPECT_EQ(Changed("2026-05-09"), Offer(8));
    EXPECT_EQ(Changed("2026-05-10"), Offer(9));
    EXPECT_EQ(NoticeOn("2026-05-11", {"water", "Basil", "1l", "--quiet"}), Offer(10));
    DoneOn("2026-05-10", {"plant", "list"});                                                // reading offers nothing
    EXPECT_EQ(On("2026-05-10", {"water", "Mint"}).Error.find("notice"), std::string::npos); // nor does a refusal
}

TEST_F(BackUpOfferTest, AnEmptyBackupOrOneOfTheFutureDoesNotCount)
{
    const std::string directory = BackUpDirectoryIn(State);
    std::filesystem::create_directories(directory);
    EXPECT_EQ(Changed("2026-05-01"), "");
    Write(directory + "/2026-05-08-120000-journal.db", "");
    Write(directory + "/2099-01-01-120000-journal.db", "a backup of a wrong clock");
    EXPECT_EQ(Changed("2026-05-09"), Offer(8));
    EXPECT_EQ(Changed("2026-05-10"), Offer(9));
}

TEST_F(BackUpOfferTest, AStoredDayThatIsNoDateOrOfTheFutureDoesNotCount)
{
    DoneOn("2026-05-01", {"backup"});
    const std::string stored = BackUpDirectoryIn(State) + "/last-backup";
    int day = 10;
    for (const char* text : {"garbage in a file", "~", "2099-01-01\n", ""})
    {
        Write(stored, text);
        EXPECT_EQ(Changed("2026-05-" + std::to_string(day)), Offer(day - 1)) << text;
        ++day;
    }
    Write(stored, "2026-05-15\n"); // of another time zone
    EXPECT_EQ(Changed("2026-05-14"), "");
}

TEST_F(BackUpOfferTest, AnUndoIsAChangeToo)
{
    EXPECT_EQ(Changed("2026-05-01"), "");
    EXPECT_EQ(NoticeOn("2026-05-09", {"undo", "--yes"}), Offer(8));
}

TEST_F(BackUpCommandTest, AnEmptyPathIsNotTakenForNone)
{
    for (const Words& words : {Words{"backup", ""},
                               {"backup", "--to", ""},
                               {"restore", ""},
                               {"restore", "--from", ""},
                               {"info", "--file", ""}})
    {
        const ProgramResult outcome = On("2026-05-05", words);
        EXPECT_EQ(outcome.Status, 2) << words.front();
        EXPECT_TRUE(outcome.Error.ends_with(": the text is empty; give a path\n")) << outcome.Error;
    }
}

TEST_F(BackUpOfferTest, ADayHasOneNoticeForEachJournal)
{
    const std::string other = Scratch.File("other.db");
    EXPECT_EQ(NoticeOn("2026-05-01", {"plant", "add", "Basil", "--file", other}), "");
    EXPECT_EQ(Changed("2026-05-09"), Offer(8));
    EXPECT_EQ(Changed("2026-05-09"), "");
    const std::string ofOther = NoticeOn("2026-05-09", {"water", "Basil", "1l", "--file", other});
    EXPECT_EQ(ofOther.find("notice: " + other + ": no backup for 8 days"), 0U) << ofOther;
    EXPECT_EQ(Changed("2026-05-09"), "");
    EXPECT_EQ(Changed("2026-05-10"), Offer(9));
}

TEST_F(BackUpOfferTest, WhereNothingCanBeStoredEachChangeHasOne)
{
    std::filesystem::create_directory(BackUpDirectoryIn(State) + "/last-notice"); // no file can have the name
    EXPECT_EQ(Changed("2026-05-09"), Offer(8));
    EXPECT_EQ(Changed("2026-05-09"), Offer(8));
}

TEST_F(BackUpOfferTest, ABackupToAnyPlaceCounts)
{
    const std::vector<Words> backUps = {{"backup"}, {"backup", "--to", "stick"}, {"backup", "copy.db"}};
    const std::vector<std::string> days = {"2026-06-01", "2026-06-11", "2026-06-21", "2026-07-01"};
    EXPECT_EQ(Changed(days[0]), Offer(31));
    for (std::size_t i = 0; i < backUps.size(); ++i)
    {
        DoneOn(days[i], backUps[i]);
        EXPECT_EQ(Changed(days[i]), "");
        EXPECT_EQ(Changed(days[i + 1]), Offer(10));
    }
}

TEST_F(BackUpOfferTest, ABackupOfAnotherProgramCounts)
{
    DoneOn("2026-06-01", {"backup"});
    std::filesystem::remove(BackUpDirectoryIn(State) + "/last-backup");
    EXPECT_EQ(Changed("2026-06-08"), "");
    EXPECT_EQ(Changed("2026-06-09"), Offer(8));
}

TEST_F(BackUpOfferTest, AClockThatWasSetBackStartsAgain)
{
    EXPECT_EQ(Changed("2020-01-01"), "");
    EXPECT_EQ(Changed("2020-01-09"), Offer(8));
}

TEST_F(BackUpOfferTest, WithoutAStateDirectoryThereIsNone)
{
    SetVariable("PLANTJOURNAL_FILE", Journal);
    RemoveVariable(HomeVariable);
    EXPECT_EQ(Changed("2026-06-09").find("no backup for"), std::string::npos);
}

} // namespace
