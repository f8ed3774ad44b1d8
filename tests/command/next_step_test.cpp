// Every refusal says what to do next.

#include "support/command.h"
#include "testing/plain_connection.h"

#include <filesystem>

using namespace support;

namespace
{

// A command that is refused, and the end of the line that it prints.
struct Case
{
    Words Line;
    std::string NextStep;
};

class NextStepTest : public CommandTest
{
  protected:
    // The first line of the command's own message. Errors of an import and summaries precede it.
    std::string Message(const Words& words) const
    {
        const ProgramResult outcome = Run(words);
        EXPECT_TRUE(outcome.Status == 1 || outcome.Status == 2) << outcome.Status << ' ' << outcome.Out;
        const std::size_t begin = outcome.Error.find("plantjournal: ");
        EXPECT_NE(begin, std::string::npos) << outcome.Error;
        return begin == std::string::npos ? "" : outcome.Error.substr(begin, outcome.Error.find('\n', begin) - begin);
    }

    void ExpectNextSteps(const std::vector<Case>& cases) const
    {
        for (const auto& [words, step] : cases)
        {
            const std::string message = Message(words);
            EXPECT_TRUE(message.ends_with("; " + step)) << message << "\nexpected: " << step;
        }
    }

    // The row ID of the event that belongs to Basil's care entry.
    std::string EventOfCare() const { return Parsed({"care", "list", "Basil"}).at(0).at("TimelineEventID").dump(); }

    void WriteForeignFiles() const
    {
        Write("text.db", std::string(4096, 'x'));
        PlainConnection(Scratch.File("foreign.db")).RunSQL("CREATE TABLE Songs (Title TEXT);");
        std::filesystem::create_directories(Scratch.File("empty"));
    }
};

TEST_F(NextStepTest, WithoutAJournalTheMessageSaysHowToCreateOne)
{
    const std::string step = "`plantjournal plant add NAME` creates one, --file names another";
    for (const Words& words : {Words{"plant", "list"},
                               {"feed", "Basil"},
                               {"export", "x.json"},
                               {"timeline", "Basil"},
                               {"undo"},
                               {"plant", "add", "Cutting", "--mother", "Basil"},
                               {"check"},
                               {"check", "--repair"},
                               {"backup", "x.db"}})
        ExpectNextSteps({{words, step}});
    EXPECT_EQ(Refused({"check", "--file", "none.db"}),
              "plantjournal: none.db: no such file; `plantjournal plant add NAME --file none.db` creates one, --file "
              "names another\n");
}

TEST_F(NextStepTest, ARecordThatIsNotFoundNamesWhatToLookAt)
{
    KeepEverything();
    ExpectNextSteps({{{"plant", "show", "Rosemary"}, "`plantjournal plant list` shows all plants"},
                     {{"plant", "show", ""}, "`plantjournal plant list` shows all plants"},
                     {{"plant", "show", "Bsail"}, "did you mean \"Basil\"?"},
                     {{"plant", "show", "0b0b"}, "name one of these by its UUID:"},
                     {{"strain", "show", "Opal"}, "`plantjournal strain list` shows all strains"},
                     {{"care", "edit", "Basil", "99", "--ec", "1"}, "`plantjournal care list` shows the existing ones"},
                     {{"harvest", "delete", "Cutting", "--yes"}, "`plantjournal harvest list` shows the existing ones"},
                     {{"water", "--tent", "nowhere", "500ml"}, "`plantjournal plant list` shows the plants"}});
}

TEST_F(NextStepTest, ARefusedChangeNamesAnotherWay)
{
    KeepEverything();
    const std::string choose = "that name or UUID is already in use; choose another";
    const std::string mother = "the mother must not be the plant itself or one of its descendants; name another plant";
    ExpectNextSteps(
        {{{"harvest", "add", "Basil", "--unweighed"}, "`plantjournal harvest edit` changes it"},
         {{"harvest", "add", "Cutting"}, "give --wet-weight-g, --dry-weight-g or --unweighed"},
         {{"event", "delete", "Basil", EventOfCare(), "--yes"}, "`plantjournal care delete Basil 1` deletes both"},
         {{"plant", "add", "Mint", "--uuid", "0b0b0b0b-0000-4000-8000-000000000001"}, choose},
         {{"strain", "add", "Genovese"}, choose},
         {{"plant", "edit", "Basil", "--mother", "Cutting"}, mother},
         {{"plant", "edit", "Basil", "--mother", "Cutting", "--stage", "veg"}, mother},
         {{"plant", "add", "Mint", "--uuid", "m1", "--mother", "Basil", "--strain", "Genovese", "--sex", "it"},
          "`plantjournal help plant add` describes the values"},
         {{"strain", "delete", "Genovese", "--yes"},
          "it still has plants; `plantjournal plant edit PLANT --strain NAME` gives them another"},
         {{"clone", "Basil", "Cutting"}, "choose another name for the clone"}});
    for (const Words& words : {Words{"plant", "delete", "Basil"}, {"strain", "delete", "Genovese"}})
        EXPECT_TRUE(Message(words).ends_with("; pass --yes to confirm")) << Message(words);
}

TEST_F(NextStepTest, AMistakeInACommandLineSaysWhatToWrite)
{
    KeepEverything();
    ExpectNextSteps(
        {{{"plant", "edit", "Basil"}, "give at least one option that sets a field"},
         {{"stage", "Basil", "harvested"}, "`plantjournal harvest add PLANT` adds one"},
         {{"stage"}, "write it after the plants"},
         {{"stage", "Basil"}, "write the stage after the plants"},
         {{"note", "Basil"}, "write it after the plants"},
         {{"note", "Basil", "Cutting"}, "write the text after the plants"},
         {{"transplant", "Basil", "--tent", "Big"}, "--to-tent moves the plants that you name"},
         {{"feed", "500ml"}, "name one, or select plants with --all, --strain, --tent or --stage"},
         {{"feed", "Basil", "--amount", "much"}, "write an amount like 500ml or 0.5l"},
         {{"feed", "Basil", "Cutting", "5"}, "write an amount like 5ml, or name a plant by more of its UUID"},
         {{"feed", "Basil", "5ml", "--amount", "3ml"},
          "write it once, after the plants, with --amount or with --amount-ml"},
         {{"plant", "edit", "Basil", "--seed-date", "2026-02-30"},
          "write today, yesterday, tomorrow, a weekday, 3d, 2w or 1m (so long ago), YYYY-MM-DD, YYYY-MM or YYYY"},
         {{"clone", "Basil", "--count", "0"}, "write one from 1 to 1000"},
         {{"water", "--stage", "dry", "500ml"}, "name the plants instead"},
         {{"harvest", "add", "Cutting", "--unweighed", "--dry-weight-g", "3"}, "leave one of them out"},
         {{"export", "--csv", "-"}, "name a directory"},
         {{"help", "nonsense"}, "`plantjournal help` lists the commands"},
         {{"plant", "show"}, "`plantjournal help plant show` shows examples"}});
}

TEST_F(NextStepTest, AnImpossibleValueNamesTheHelpOfItsCommand)
{
    KeepEverything();
    for (const Words& words : {Words{"feed", "Basil", "--ph", "15"},
                               {"feed", "Basil", "--ec", "x"},
                               {"feed", "Basil", "--ec", "inf"},
                               {"feed", "Basil", "--ec", "1e999"}})
        ExpectNextSteps({{words, "`plantjournal help feed` describes the values"}});
    ExpectNextSteps({{{"plant", "add", ""}, "`plantjournal help plant add` describes the values"},
                     {{"health", "add", "Basil", "mites", "--severity", "7"}, "write a whole number from 1 to 5"}});
}

TEST_F(NextStepTest, ABackupOverAFileNamesOverwrite)
{
    KeepEverything();
    Done({"backup", "bk.db"});
    EXPECT_EQ(Refused({"backup", "bk.db"}), "plantjournal: bk.db exists; --overwrite replaces it\n");
    Done({"backup", "bk.db", "--overwrite"});
    WriteForeignFiles();
    EXPECT_EQ(Refused({"backup", "bk.db", "--file", "foreign.db"}).find("--overwrite"), std::string::npos);
}

TEST_F(NextStepTest, ABackupToAnImpossiblePlaceNamesWhatToCheck)
{
    KeepEverything();
    Write("new.db-wal", "");
    Write("old.db", "");
    Write("old.db-journal", "");
    const std::string other = "name another destination";
    ExpectNextSteps({{{"backup", Journal}, other},
                     {{"backup", "--overwrite", Journal}, other},
                     {{"backup", Scratch.File("")}, other},
                     {{"backup", "new.db"}, "move it away first; or " + other},
                     {{"backup", "--overwrite", "old.db"}, "move it away first; or " + other},
                     {{"backup", "no/such/directory.db"},
                      "check that the backup's directory exists, is writable and has free space"}});
}

TEST_F(NextStepTest, AnImportOfAJournalNamesTheOptionFile)
{
    KeepEverything();
    Done({"backup", "bk.db"});
    EXPECT_EQ(Refused({"import", "bk.db"}), "plantjournal: bk.db: that is a journal: use --file bk.db\n");
    Done({"plant", "list", "--file", "bk.db"});
}

TEST_F(NextStepTest, AnImportOfAnotherFileSaysWhatAnImportReads)
{
    KeepEverything();
    WriteForeignFiles();
    Write("broken.json", "{");
    Write("Plants.csv", "Name\nMint\n");
    Write("other.json", R"({"Animals": []})");
    const std::string readable = "name a JSON file, or a directory of CSV files";
    ExpectNextSteps({{{"import", "nowhere.json"}, readable + ", that you can read"},
                     {{"import", "foreign.db"}, readable},
                     {{"import", "empty"}, "`plantjournal export --csv` shows their form"},
                     {{"import", "Plants.csv"}, "name the directory that contains it"},
                     {{"import", "broken.json"}, "nothing was imported; correct them and import again"},
                     {{"import", "text.db"}, "nothing was imported; correct them and import again"}});
    EXPECT_NE(Refused({"import", "other.json"})
                  .find("\"Animals\" is not a table of the journal; the tables are Strains, Plants, PlantEvents, "),
              std::string::npos);
}

TEST_F(NextStepTest, AnUnreadableDirectoryOfAnImportIsNamed)
{
    KeepEverything();
    const std::string hidden = Scratch.File("hidden");
    std::filesystem::create_directories(hidden);
    std::filesystem::permissions(Scratch.File(""), std::filesystem::perms(0777));
    std::filesystem::permissions(hidden, std::filesystem::perms(0));
    Around.AsUser = true;
    EXPECT_EQ(Refused({"import", "hidden"}),
              "plantjournal: hidden: cannot be read: Permission denied; name a JSON file, or a directory of CSV files, "
              "that you can read\n");
    ExpectNextSteps(
        {{{"export", "hidden/x.json"}, "check that its directory exists and is writable"},
         {{"backup", "hidden/x.db"}, "check that the backup's directory exists, is writable and has free space"}});
    std::filesystem::permissions(hidden, std::filesystem::perms(0700));
}

TEST_F(NextStepTest, AnExportThatCannotBeWrittenNamesAnotherDestination)
{
    KeepEverything();
    Write("old.json", "old");
    ExpectNextSteps({{{"export", "old.json"}, "nothing was written; name another destination"},
                     {{"export", "no/such/directory.json"}, "check that its directory exists and is writable"}});
}

TEST_F(NextStepTest, AFileThatIsNoJournalNamesTheOptionFile)
{
    WriteForeignFiles();
    for (const char* file : {"text.db", "foreign.db"})
        for (const Words& words : {Words{"plant", "list"}, {"check"}, {"backup", "x"}, {"undo"}, {"feed", "Basil"}})
        {
            Words line = words;
            line.insert(line.end(), {"--file", file});
            ExpectNextSteps({{line, "--file names another file"}});
        }
    for (const char* command : {"info", "check", "undo"})
        ExpectNextSteps({{{command, "--file", Scratch.File("")},
                          "check the path and the permissions, or name another file with --file"}});
}

TEST_F(NextStepTest, ALockedJournalSaysToTryAgain)
{
    KeepEverything();
    const OtherProgram other(Journal, "BEGIN EXCLUSIVE;");
    ExpectNextSteps({{{"plant", "list"}, "try again when it has finished"},
                     {{"check"}, "try again when the other program has finished"},
                     {{"backup", "x.db"}, "try again when the other program has finished"}});
}

TEST_F(NextStepTest, ADamagedJournalNamesABackupAndTheSalvage)
{
    const std::string step =
        "restore a backup with `plantjournal restore`, or read what is left with `plantjournal salvage`";
    KeepEverything();
    std::filesystem::resize_file(Journal, std::filesystem::file_size(Journal) / 2);
    ExpectNextSteps({{{"plant", "list"}, step}, {{"backup", "x.db"}, step}});
    Sound = false;
}

TEST_F(NextStepTest, FindingsWithMissingEventsNameTheRepair)
{
    KeepEverything();
    PlainConnection(Journal).RunSQL("DELETE FROM PlantEvents WHERE ID=" + EventOfCare() + ";");
    ExpectNextSteps({{{"check"}, "nothing was changed; --repair restores the missing events"}});
    Sound = false;
}

TEST_F(NextStepTest, OtherFindingsNameTheRecordsAndABackup)
{
    KeepEverything();
    std::filesystem::remove(Scratch.File("basil.jpg"));
    const std::string step = "nothing was changed; edit the records, or restore a backup";
    ExpectNextSteps({{{"check"}, step}, {{"check", "--repair"}, "none of them can be repaired; " + step}});
    Sound = false;
}

TEST_F(NextStepTest, AnUndoThatIsRefusedNamesWhatToDoInstead)
{
    KeepEverything();
    ExpectNextSteps({{{"undo"}, "what undo needs is stored outside the journal file, for each user"}});
    Done({"plant", "add", "Mint"});
    EXPECT_TRUE(Message({"undo"}).ends_with("; pass --yes to confirm"));
    Keep(
        [](PlantRepository& repository)
        {
            Strain strain;
            strain.Name = "Opal";
            EXPECT_TRUE(repository.CreateStrain(strain));
        });
    ExpectNextSteps({{{"undo", "--yes"}, "nothing was changed; edit or delete the records instead"}});
}

using NextStepOnTerminalTest = TerminalTest;

TEST_F(NextStepOnTerminalTest, AnotherAnswerThanYesSaysHowToConfirm)
{
    KeepEverything();
    for (const Words& words : {Words{"plant", "delete", "Basil"}, {"strain", "delete", "Genovese"}})
        EXPECT_NE(RunOnTerminal(words, "n\n").Out.find("nothing was deleted; answer y, or pass --yes"),
                  std::string::npos);
    Done({"plant", "add", "Mint"});
    EXPECT_NE(RunOnTerminal({"undo"}, "n\n").Out.find("nothing was undone; answer y, or pass --yes"),
              std::string::npos);
}

} // namespace
