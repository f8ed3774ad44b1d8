// Export: all records are written, as of one moment, or nothing is.

#include "command/transfer_fixture.h"
#include "testing/plain_connection.h"

#include <algorithm>
#include <chrono>
#include <thread>

using namespace support;

namespace
{

class ExportTest : public TransferTest
{
};

TEST_F(ExportTest, AnExportHasEachRecordOfTheListsOnALineOfItsOwn)
{
    KeepEverything();
    const std::string before = FileBytes(Journal);
    EXPECT_EQ(Done({"export", "journal.json"}), "Exported " + Journal + " to journal.json\n");
    for (const char* option : {"--quiet", "--json"})
        EXPECT_EQ(Done({"export", option, std::string("copy") + option + ".json"}), "");
    const std::string text = ExportBytes("journal.json");
    EXPECT_EQ(Exported(), text);
    EXPECT_EQ(FileBytes(Journal), before);

    const JSON all = JSON::parse(text);
    Words names = {"Format"};
    names.insert(names.end(), TableNames.begin(), TableNames.end());
    Words found;
    for (const auto& [name, value] : all.items())
        found.push_back(name);
    EXPECT_EQ(found, names);
    EXPECT_EQ(all.at("Format"), 1);
    EXPECT_EQ(all.at("Strains"), Parsed({"strain", "list"}));
    EXPECT_EQ(all.at("Plants"), Parsed({"plant", "list"}));
    for (const auto& [table, family] :
         std::vector<std::pair<const char*, const char*>>{{"PlantCareEntries", "care"},
                                                          {"HarvestRecords", "harvest"},
                                                          {"PlantPhotos", "photo"},
                                                          {"PlantHealthObservations", "health"},
                                                          {"PlantJournalEntries", "note"}})
    {
        JSON listed = Parsed({family, "list"});
        for (JSON& record : listed)
            record.erase("Plant"); // which an import does not read
        EXPECT_EQ(all.at(table), listed);
    }
    EXPECT_EQ(all.at("PlantEvents").size(), 3U);
    for (const JSON& event : all.at("PlantEvents"))
        EXPECT_NE(text.find('\n' + event.dump()), std::string::npos);
}

TEST_F(ExportTest, AnExportIsInTheOrderOfTheRowIDs)
{
    Done({"plant", "add", "Basil", "--strain", "Genovese"});
    Done({"plant", "add", "Mint"}); // comes first in the list
    const JSON plants = JSON::parse(Exported()).at("Plants");
    ASSERT_EQ(plants.size(), 2U);
    EXPECT_EQ(plants.at(0).at("ID"), 1);
    EXPECT_EQ(plants.at(1).at("ID"), 2);
}

TEST_F(ExportTest, AnExportAsCSVHasAFileForEachTable)
{
    KeepEverything();
    EXPECT_EQ(Done({"export", "--csv", "csv"}), "Exported " + Journal + " to csv\n");
    int files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(Scratch.File("csv")))
        ++files;
    EXPECT_EQ(files, 8);
    const JSON all = JSON::parse(Exported());
    for (const std::string& table : TableNames)
    {
        std::string headings;
        for (const auto& [name, value] : all.at(table).at(0).items())
            headings += (headings.empty() ? "" : ",") + name;
        EXPECT_TRUE(FileBytes(Scratch.File("csv/" + table + ".csv")).starts_with(headings + '\n')) << table;
    }
    EXPECT_EQ(FileBytes(Scratch.File("csv/Strains.csv")),
              "ID,Name,Breeder,FloweringWeeks,Notes\n1,Genovese,Riviera,9,large leaves\n");
    EXPECT_NE(FileBytes(Scratch.File("csv/Plants.csv")).find(",\"peat, \"\"fine\"\"\",2026-02,0.1,40.5,"),
              std::string::npos);
    EXPECT_NE(FileBytes(Scratch.File("csv/Plants.csv")).find(",\"two\nlines\"\n"), std::string::npos);
}

TEST_F(ExportTest, AnExportReplacesNoFile)
{
    KeepEverything();
    std::filesystem::create_directory(Scratch.File("directory"));
    std::filesystem::create_symlink("nowhere", Scratch.File("link"));
    for (const char* taken : {"basil.jpg", "directory", "link"})
        for (const bool csv : {false, true})
        {
            const Words words = csv ? Words{"export", "--csv", taken} : Words{"export", taken};
            EXPECT_NE(Refused(words).find("already exists; nothing was written"), std::string::npos);
        }
    EXPECT_EQ(FileBytes(Scratch.File("basil.jpg")), "a picture");
    EXPECT_TRUE(std::filesystem::is_empty(Scratch.File("directory")));
    EXPECT_NE(Refused({"export", "nowhere/journal.json"}).find("No such file or directory"), std::string::npos);
}

TEST_F(ExportTest, AnExportThatCannotReadEveryRowIsRefused)
{
    KeepEverything();
    const PlainConnection connection(Journal);
    connection.RunSQL("INSERT INTO PlantJournalEntries(PlantUUID,Details) VALUES('nobody','lost');");
    Sound = false;
    std::filesystem::create_directory(Scratch.File("out"));
    for (const Words& words : {Words{"export", "out/a.json"}, {"export", "-"}, {"export", "--csv", "out/csv"}})
        EXPECT_NE(Refused(words).find("only 1 of 2 rows of PlantJournalEntries could be read"), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(Scratch.File("out")));
}

TEST_F(ExportTest, AnExportReadsTheLastCommitWhileAnotherProgramWrites)
{
    KeepEverything();
    const std::string before = Exported();
    OtherProgram other(Journal, "BEGIN IMMEDIATE; UPDATE Plants SET Name='renamed';");
    EXPECT_EQ(Exported(), before);
    other.Finish();
    EXPECT_NE(Exported(), before);
}

TEST_F(ExportTest, AnExportShowsOneMomentWhileOthersWrite)
{
    Keep([](PlantRepository&) {});
    const auto state = [](const std::string& word)
    {
        return "BEGIN IMMEDIATE; UPDATE Plants SET Tent='" + word + "'; UPDATE PlantJournalEntries SET Details='" +
               word + "'; COMMIT;";
    };
    Words moments;
    {
        const PlainConnection connection(Journal);
        connection.RunSQL("WITH RECURSIVE N(I) AS (SELECT 1 UNION ALL SELECT I+1 FROM N WHERE I<500) "
                          "INSERT INTO Plants(UUID,Name) SELECT 'u'||I,'one of many' FROM N;"
                          "INSERT INTO PlantJournalEntries(PlantUUID) SELECT UUID FROM Plants;");
        for (const char* word : {"here", "there"})
        {
            connection.RunSQL(state(word));
            moments.push_back(Exported());
        }
    }
    const std::string end = Scratch.File("end");
    ChildProcess writer(
        [&](const ParentProcess& parent)
        {
            const PlainConnection connection(Journal);
            connection.RunSQL("PRAGMA busy_timeout=10000;");
            parent.Send("begun");
            for (int i = 0; !std::filesystem::exists(end); ++i)
            {
                connection.RunSQL(state(i % 2 == 0 ? "here" : "there"));
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
        });
    EXPECT_EQ(writer.ReadLine(), "begun");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(std::count(moments.begin(), moments.end(), Exported()), 1);
    Write("end", "");
    EXPECT_EQ(writer.End(), "done");
}

TEST_F(ExportTest, CtrlCDuringAnExportLeavesNothing)
{
    KeepEverything();
    std::filesystem::create_directory(Scratch.File("out"));
    OtherProgram other(Journal, "BEGIN EXCLUSIVE;"); // so that there is time for it
    RunningProgram program(Line({"export", "out/journal.json"}), Around);
    program.Interrupt();
    other.Finish();
    const ProgramResult outcome = program.End();
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_EQ(outcome.Error, "plantjournal: interrupted; nothing was changed; run the command again\n");
    EXPECT_TRUE(std::filesystem::is_empty(Scratch.File("out")));
}

} // namespace
