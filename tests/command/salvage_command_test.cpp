// `plantjournal salvage`: what it prints, and the advice that leads to it.

#include "support/command.h"
#include "support/damage_file.h"
#include "testing/plain_connection.h"

#include <algorithm>
#include <filesystem>

using namespace support;

namespace
{

// The journal of the tests, of which one table is lost.
class SalvageCommandTest : public CommandTest
{
  protected:
    SalvageCommandTest()
    {
        KeepEverything();
        Damaged = Scratch.File("damaged.db");
        std::filesystem::copy_file(Journal, Damaged);
    }
    // Sets the pages of a table to zero.
    void Lose(const std::string& table) const
    {
        for (const UsedPage& page : UsedPages(Damaged))
            if (page.Name == table)
                Zero(Damaged, page.Offset, page.Size);
    }

    std::string Damaged;
};

TEST_F(SalvageCommandTest, AWholeJournalComesBackWithAllRows)
{
    const std::string out = Done({"salvage", "damaged.db", "new.db"});
    EXPECT_TRUE(out.starts_with("Salvaged damaged.db to new.db\nTable ")) << out;
    EXPECT_TRUE(
        out.ends_with("\nA changed byte inside a value can stay unnoticed: compare the new journal with what you "
                      "remember.\nNext: `plantjournal check --file new.db`\n"))
        << out;
    EXPECT_EQ(Done({"export", "-", "--file", "new.db"}), Done({"export", "-", "--file", "damaged.db"}));
}

TEST_F(SalvageCommandTest, TheTableShowsWhatIsMissingAndWhy)
{
    Lose("PlantEvents");
    const std::string before = FileBytes(Damaged);
    const std::string out = Done({"salvage", "damaged.db", "new.db"});
    EXPECT_NE(out.find("They were damaged, or on damaged pages."), std::string::npos) << out;
    EXPECT_NE(out.find("Links to lost mothers and events that were cleared: "), std::string::npos) << out;
    EXPECT_NE(out.find("Next: `plantjournal check --repair --file new.db`\n"), std::string::npos) << out;
    EXPECT_TRUE(FileBytes(Damaged) == before);
    Run({"check", "--repair", "--file", "new.db"});
    EXPECT_NE(Done({"timeline", "Basil", "--file", "new.db"}), "");
}

TEST_F(SalvageCommandTest, ATableWithoutRecordsIsShownOnlyIfItIsDamaged)
{
    EXPECT_EQ(Done({"salvage", "damaged.db", "new.db"}).find("SchemaMeta"), std::string::npos);
    Lose("SchemaMeta");
    const std::string out = Done({"salvage", "damaged.db", "another.db"});
    EXPECT_NE(out.find("\nSchemaMeta "), std::string::npos) << out;
    Damaged = Scratch.File("refused.db");
    std::filesystem::copy_file(Journal, Damaged);
    PlainConnection(Damaged).RunSQL("DROP TABLE SchemaMeta; CREATE TABLE SchemaMeta(Key TEXT PRIMARY KEY,Value TEXT);"
                                    "INSERT INTO SchemaMeta VALUES('key',NULL);");
    const std::string refused = Done({"salvage", "refused.db", "third.db"});
    EXPECT_NE(refused.find("\nSchemaMeta "), std::string::npos) << refused;
}

TEST_F(SalvageCommandTest, TheJSONHasTheWholeReport)
{
    Lose("PlantJournalEntries");
    const JSON report = Parsed({"salvage", "damaged.db", "new.db"});
    EXPECT_EQ(report.at("Damaged"), "damaged.db");
    EXPECT_EQ(report.at("Destination"), "new.db");
    EXPECT_EQ(report.at("Tables").size(), 9U);
    for (const JSON& table : report.at("Tables"))
    {
        const bool isLost = table.at("Name") == "PlantJournalEntries";
        EXPECT_EQ(table.at("State"), isLost ? "Damaged" : "Whole") << table;
        EXPECT_EQ(table.at("Losses").size(), isLost ? 1U : 0U) << table;
        EXPECT_EQ(table.at("RowsMissing") == 0, !isLost) << table;
    }
    for (const char* number : {"PlaceholderPlants", "ClearedLinks", "FailedReads"})
        EXPECT_EQ(report.at(number), 0) << number;
    EXPECT_EQ(report.at("InterruptedWrite"), "None");
    EXPECT_EQ(report.at("WriteAheadLog"), "None");
    EXPECT_EQ(report.at("Limit"),
              "A changed byte inside a value can stay unnoticed: compare the new journal with what you remember.");
}

TEST_F(SalvageCommandTest, AWriteAheadLogIsReportedAsNotRead)
{
    WriteBytes(Damaged + "-wal", "frames");
    EXPECT_EQ(NoticesOf({"salvage", "damaged.db", "new.db", "--quiet"}),
              "notice: damaged.db: the changes in its write-ahead log were not read\n");
    const ProgramResult result = Run({"salvage", "damaged.db", "another.db", "--json"});
    EXPECT_EQ(JSON::parse(result.Out).at("WriteAheadLog"), "NotRead");
}

TEST_F(SalvageCommandTest, AnInterruptedWriteIsReported)
{
    const std::string interrupted = Scratch.File("interrupted.db");
    {
        const PlainConnection writer(Damaged);
        writer.RunSQL("PRAGMA cache_size=1; BEGIN; UPDATE PlantEvents SET Details='changed'; UPDATE "
                      "PlantJournalEntries SET Details=hex(zeroblob(90000));");
        std::filesystem::copy_file(Damaged, interrupted);
        std::filesystem::copy_file(Damaged + "-journal", interrupted + "-journal");
        writer.RunSQL("ROLLBACK;");
    }
    EXPECT_EQ(Parsed({"salvage", "interrupted.db", "1.db"}).at("InterruptedWrite"), "RolledBack");
    EXPECT_NE(Done({"salvage", "interrupted.db", "2.db"}).find("An interrupted write is not part of the new journal."),
              std::string::npos);

    std::string journal = FileBytes(interrupted + "-journal");
    journal[0] = 'X';
    WriteBytes(interrupted + "-journal", journal);
    EXPECT_EQ(Parsed({"salvage", "interrupted.db", "3.db"}).at("InterruptedWrite"), "NotRolledBack");
    const std::string out = Done({"salvage", "interrupted.db", "4.db"});
    EXPECT_NE(out.find("\nAn interrupted write was not wholly rolled back: rows can have values from that write.\n"),
              std::string::npos)
        << out;
}

TEST_F(SalvageCommandTest, PagesThatAreCutOffAreCounted)
{
    std::filesystem::resize_file(Damaged, std::filesystem::file_size(Damaged) - 1);
    EXPECT_EQ(Parsed({"salvage", "damaged.db", "new.db"}).at("MissingPages"), 1);
    const std::string out = Done({"salvage", "damaged.db", "another.db"});
    EXPECT_NE(out.find("\nPages that the damaged file has lost at its end: 1\n"), std::string::npos) << out;
}

TEST_F(SalvageCommandTest, LostPlantsAreAnnounced)
{
    Lose("Plants");
    const std::string out = Done({"salvage", "damaged.db", "new.db"});
    EXPECT_NE(out.find("Plants that were added for lost ones, named \"Lost plant\": "), std::string::npos) << out;
    EXPECT_NE(Done({"plant", "list", "--file", "new.db"}).find("Lost plant "), std::string::npos);
}

TEST_F(SalvageCommandTest, CtrlCDuringASalvageLeavesNoFiles)
{
    std::filesystem::create_directory(Scratch.File("salvaged"));
    OtherProgram other(Damaged, "BEGIN EXCLUSIVE;"); // so that the signal comes in time
    RunningProgram program(Line({"salvage", "damaged.db", "salvaged/new.db"}), Around);
    program.Interrupt();
    other.Finish();
    const ProgramResult outcome = program.End();
    EXPECT_EQ(outcome.Status, 1);
    // Windows may deliver it later, when the new journal is written.
    EXPECT_TRUE(outcome.Error.ends_with(": reading the damaged file: interrupted; run the command again\n"))
        << outcome.Error;
    EXPECT_TRUE(std::filesystem::is_empty(Scratch.File("salvaged")));
}

TEST_F(SalvageCommandTest, ImpossibleValuesAreNamedInNotices)
{
    const PlainConnection damaged(Damaged);
    damaged.RunSQL("UPDATE Plants SET FlipDate='2O26-03-01' WHERE Name='Basil';"
                   "UPDATE Strains SET FloweringWeeks=-1;"
                   "UPDATE PlantCareEntries SET PH=99 WHERE ID=(SELECT min(ID) FROM PlantCareEntries);");
    const std::string care = damaged.Value("SELECT min(ID) FROM PlantCareEntries;");
    const std::string strain = damaged.Value("SELECT Name FROM Strains;");
    const std::string notices = NoticesOf({"salvage", "damaged.db", "new.db"});
    for (const std::string& notice : Words{
             "notice: plant Basil: FlipDate \"2O26-03-01\": ", "notice: strain " + strain + ": FloweringWeeks \"-1\": ",
             "notice: care entry " + care + " of Basil: PH \"99\": "})
        EXPECT_NE(notices.find(notice), std::string::npos) << notices;
    EXPECT_EQ(std::count(notices.begin(), notices.end(), '\n'), 3) << notices;
    damaged.RunSQL("UPDATE PlantEvents SET EventDate='?'; INSERT INTO PlantEvents(PlantUUID,EventDate,EventType) "
                   "SELECT UUID,'?','Note' FROM Plants,(VALUES(1),(2),(3),(4),(5),(6),(7),(8),(9),(10));");
    EXPECT_NE(NoticesOf({"salvage", "damaged.db", "new2.db"}).find("\nnotice: more impossible values, not shown: "),
              std::string::npos);
}

TEST_F(SalvageCommandTest, QuietPrintsNothing)
{
    EXPECT_EQ(Done({"salvage", "--quiet", "damaged.db", "new.db"}), "");
}

TEST_F(SalvageCommandTest, EachRefusalNamesTheNextStep)
{
    EXPECT_EQ(Refused({"salvage", "damaged.db", "damaged.db"}),
              "plantjournal: damaged.db: the source and the destination are the same file; name another destination\n");
    EXPECT_EQ(Refused({"salvage", "none.db", "new.db"}),
              "plantjournal: none.db: no such file; check the path, or name another file\n");
    EXPECT_EQ(Refused({"salvage", "basil.jpg", "new.db"}),
              "plantjournal: basil.jpg: no table of a journal was found in it; check the path, or name another file\n");
    EXPECT_EQ(Refused({"salvage", "damaged.db", "basil.jpg"}),
              "plantjournal: basil.jpg: already exists; name another destination\n");
    EXPECT_TRUE(Refused({"salvage", "damaged.db", "none/new.db"})
                    .ends_with("; check that the directory exists, is writable and has free space\n"));
    EXPECT_NE(Mistaken({"salvage"}).find("DAMAGED, DESTINATION are missing; "), std::string::npos);
    EXPECT_NE(Mistaken({"salvage", "damaged.db"}).find("DESTINATION is missing; "), std::string::npos);
}

TEST_F(SalvageCommandTest, TheAdviceForADamagedJournalNamesIt)
{
    const std::string advice =
        "restore a backup with `plantjournal restore --file damaged.db`, or read what is left with `plantjournal salvage`\n";
    std::filesystem::resize_file(Damaged, std::filesystem::file_size(Damaged) / 2);
    for (const Words& words : {Words{"plant", "list"}, {"check"}, {"backup", "copy.db"}})
    {
        Words line = words;
        line.insert(line.end(), {"--file", "damaged.db"});
        EXPECT_TRUE(Refused(line).ends_with("; " + advice)) << Refused(line);
    }
    Zero(Damaged, 0, 100);
    EXPECT_NE(
        Refused({"check", "--file", "damaged.db"})
            .find(
                "; if this is the damaged journal, `plantjournal restore --file damaged.db` replaces it with a backup, and "
                "`plantjournal salvage` reads what is left; --file names another file\n"),
        std::string::npos);
    Done({"salvage", "damaged.db", "new.db"});
}

} // namespace
