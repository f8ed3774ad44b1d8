// Import: what a source holds, and what the import adds to it, comes into the journal.

#include "command/transfer_fixture.h"
#include "testing/old_files.h"
#include "testing/plain_connection.h"

using namespace support;

namespace
{

class ImportTest : public TransferTest
{
};

TEST_F(ImportTest, AnImportPrintsHowManyRowsEachTableGained)
{
    Write("source.json", R"({"Plants":[{"Name":"Basil","UUID":"b1"}],"PlantEvents":[{"PlantUUID":"b1"}]})");
    const JSON counts = Parsed({"import", "source.json"});
    EXPECT_EQ(counts, JSON::parse(R"({"Strains":0,"Plants":1,"PlantEvents":1,"PlantCareEntries":0,"HarvestRecords":0,
        "PlantPhotos":0,"PlantHealthObservations":0,"PlantJournalEntries":0})"));
    Write("second.json", R"({"Plants":[{"Name":"Mint"},{"Name":"Thyme"}]})");
    EXPECT_TRUE(Done({"import", "second.json"})
                    .starts_with("Imported             Number\n"
                                 "Strains                   0\n"
                                 "Plants                    2\n"
                                 "Timeline events           0\n"));
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 3U);
}

TEST_F(ImportTest, TheCountsIncludeAddedStrainsAndEvents)
{
    Write("csv/Plants.csv", "UUID,Name,Strain\nb1,Basil,Genovese\nb2,Mint,Roma\nb3,Mint,Roma\nb4,Mint,\n");
    Write("csv/PlantCareEntries.csv", "PlantUUID,CareDate\nb1,2026-05-01\nb2,2026-05-02\n");
    Write("csv/HarvestRecords.csv", "PlantUUID,HarvestDate\nb1,2026-07-01\n");
    Done({"strain", "add", "Genovese"});
    EXPECT_EQ(Parsed({"import", "csv"}), JSON::parse(R"({"Strains":1,"Plants":4,"PlantEvents":3,"PlantCareEntries":2,
        "HarvestRecords":1,"PlantPhotos":0,"PlantHealthObservations":0,"PlantJournalEntries":0})"));
}

TEST_F(ImportTest, AnImportIntoAJournalWithABrokenReferenceIsRefused)
{
    KeepEverything();
    PlainConnection(Journal).RunSQL("INSERT INTO PlantJournalEntries(PlantUUID) VALUES('nobody');");
    Sound = false;
    EXPECT_NE(RefusedText(R"({"Plants":[{"Name":"Mint"}]})").find("journal.db: checking: "), std::string::npos);
}

TEST_F(ImportTest, AnImportWarnsOfWhatCheckFindsInItsRows)
{
    KeepEverything();
    Write("source.json",
          R"({"PlantPhotos":[{"PlantUUID":"0b0b0b0b-0000-4000-8000-000000000001","FilePath":"missing.jpg"}]})");
    const ProgramResult import = Run({"import", "source.json"});
    EXPECT_EQ(import.Status, 0);
    EXPECT_EQ(import.Error, "warning: new findings of `plantjournal check`: 1; run it to see them\n");
    Sound = false;
}

TEST_F(ImportTest, ARecordThatCannotBeStoredIsRefusedWithItsPlace)
{
    KeepEverything();
    PlainConnection(Journal).RunSQL("INSERT INTO Plants(UUID,Name) VALUES('','no UUID');");
    Write("care/PlantCareEntries.csv", "PlantUUID,CareDate\n,2026-05-01\n");
    Write("harvests/HarvestRecords.csv", "Notes\nnone\n");
    EXPECT_EQ(Refused({"import", "care"}),
              "plantjournal: care/PlantCareEntries.csv:2:1: the journal cannot store this row; nothing was "
              "changed; correct it and import again\n");
    EXPECT_EQ(Refused({"import", "harvests"}),
              "plantjournal: harvests/HarvestRecords.csv:2:1: the journal cannot store this row; nothing was "
              "changed; correct it and import again\n");
}

TEST_F(ImportTest, AnImportAddsStrainsAndEventsAsTheCommandsDo)
{
    // The same records by commands, and by files without strains, events and row IDs.
    Write("csv/Plants.csv", "Name,UUID,Strain,Stage\nBasil,b1,Genovese,flower\nMint,b2,,VEG\n");
    Write("csv/PlantCareEntries.csv",
          "PlantUUID,CareDate,Action,AmountMl,EC\nb1,2026-05-01,feed,500,1.8\nb1,2026,Water,,\n");
    Write("csv/HarvestRecords.csv", "ID,PlantUUID,HarvestDate,DryWeightG\n7,b1,2026-07-01,96.5\n");
    Done({"import", "csv"});
    const std::string imported = Exported();
    EXPECT_EQ(Done({"check"}), "No problems found.\n");
    std::filesystem::remove(Journal);
    Done({"plant", "add", "Basil", "--uuid", "b1", "--strain", "Genovese", "--stage", "flower"});
    Done({"plant", "add", "Mint", "--uuid", "b2"});
    Done({"feed", "b1", "--care-date", "2026-05-01", "--amount-ml", "500", "--ec", "1.8"});
    Done({"water", "b1", "--care-date", "2026"});
    Done({"harvest", "add", "b1", "--harvest-date", "2026-07-01", "--dry-weight-g", "96.5"});
    EXPECT_EQ(imported, Exported());
}

TEST_F(ImportTest, ANewPlantOrPhotoWithoutAUUIDGetsOne)
{
    Write("data/plantjournal/basil.jpg", "a picture");
    Left = {"basil.jpg", "journal.db"};
    Write("source.json", R"({"Plants":[{"Name":"Basil"},{"Name":"Mint"},{"UUID":"b1"}],"PlantPhotos":[
        {"PlantUUID":"b1","FilePath":"basil.jpg"},{"PlantUUID":"b1","FilePath":"basil.jpg"}]})");
    Done({"import", "source.json"});
    const JSON plants = Parsed({"plant", "list"});
    EXPECT_NE(plants.at(0).at("UUID"), plants.at(1).at("UUID"));
    const JSON photos = Parsed({"photo", "list", "b1"});
    EXPECT_NE(photos.at(0).at("UUID"), photos.at(1).at("UUID"));
    for (const JSON& uuid : {plants.at(1).at("UUID"), photos.at(0).at("UUID"), photos.at(1).at("UUID")})
        EXPECT_EQ(uuid.get<std::string>().size(), 36U);
}

TEST_F(ImportTest, CSVOfOtherProgramsIsRead)
{
    Write("csv/Plants.csv",
          "\xEF\xBB\xBFName,Notes,UUID\r\n\"Basil \"\"1\"\"\",\"a,\r\nb\",b1\r\n Mint ,,b2"); // no end
    Write("csv/readme.txt", "not a table");
    Done({"import", "csv"});
    const JSON plants = Parsed({"plant", "list"});
    ASSERT_EQ(plants.size(), 2U);
    EXPECT_EQ(plants.at(0).at("Name"), " Mint ");
    EXPECT_EQ(plants.at(1).at("Name"), "Basil \"1\"");
    EXPECT_EQ(plants.at(1).at("Notes"), "a,\r\nb");
}

TEST_F(ImportTest, DatesThatDoNotSortAreImportedWithAWarning)
{
    Write("csv/Plants.csv",
          "Name,UUID,SeedDate,FlipDate,HarvestDate\nBasil,b1,spring,2026-05-01,\nMint,b2,2026,2026-02-30,2026-05\n");
    const ProgramResult import = Run({"import", "csv"});
    EXPECT_EQ(import.Status, 0);
    EXPECT_EQ(import.Error, "warning: csv/Plants.csv:2:10: SeedDate: \"spring\": the text is not a date; "
                            "write YYYY-MM-DD, YYYY-MM or YYYY\n"
                            "warning: csv/Plants.csv:3:14: FlipDate: \"2026-02-30\": the text is not a date; "
                            "write YYYY-MM-DD, YYYY-MM or YYYY\n");
    EXPECT_EQ(Parsed({"plant", "show", "b1"}).at("SeedDate"), "spring");
}

TEST_F(ImportTest, AStrainThatTheJournalHasIsNotAddedAgain)
{
    KeepEverything();
    Write("source.json",
          R"({"Strains":[{"Name":"Genovese","Breeder":"Riviera","FloweringWeeks":9,"Notes":"large leaves"},
                            {"Name":"Roma"}],"Plants":[{"Name":"New","Strain":"Genovese"}]})");
    EXPECT_EQ(Parsed({"import", "source.json"}).at("Strains"), 1);
    EXPECT_EQ(Parsed({"strain", "list"}).size(), 2U);
    for (const char* others : {R"("Breeder":"another","FloweringWeeks":9,"Notes":"large leaves")",
                               R"("Breeder":"Riviera","FloweringWeeks":8,"Notes":"large leaves")",
                               R"("Breeder":"Riviera","FloweringWeeks":9,"Notes":"small leaves")"})
        EXPECT_EQ(RefusedText(R"({"Strains":[{"Name":"Genovese",)" + std::string(others) + "}]}"),
                  "source.json:1:21: Name: the journal already has \"Genovese\" with other values\n"
                  "plantjournal: source.json: errors: 1; nothing was imported; correct them and import again\n");
}

TEST_F(ImportTest, GivenStrainsAreTheOnlyOnesThatAnImportAdds)
{
    Write("source.json", R"({"Strains":[],"Plants":[{"Name":"Basil","Strain":"Genovese"}]})");
    const ProgramResult import = Run({"import", "source.json", "--json"});
    EXPECT_EQ(import.Status, 0);
    EXPECT_EQ(JSON::parse(import.Out).at("Strains"), 0);
    EXPECT_EQ(Parsed({"strain", "list"}), JSON::array());
    Sound = false; // a plant whose strain is missing is a finding
}

TEST_F(ImportTest, NewRowIDsAreInTheOrderOfTheIDsInTheSource)
{
    KeepEverything(); // uses the row ID 1
    const std::string basil = R"("PlantUUID":"0b0b0b0b-0000-4000-8000-000000000001")";
    Write("source.json", R"({"PlantJournalEntries":[{"ID":9,"Details":"second",)" + basil +
                             R"(},{"ID":1,"Details":"first",)" + basil + "}]}");
    Done({"import", "source.json"});
    for (const JSON& entry : Parsed({"note", "list", "Basil"}))
        EXPECT_EQ(entry.at("ID"), entry.at("Details") == "first" ? 2 : 3);
}

TEST_F(ImportTest, CarriageReturnsInValuesAreKept)
{
    Write("csv/Plants.csv", "Name,UUID,Notes\nBasil\r,b1,\"leaves\r\"\n");
    Done({"import", "csv"});
    const JSON plant = Parsed({"plant", "show", "b1"});
    EXPECT_EQ(plant.at("Name"), "Basil\r");
    EXPECT_EQ(plant.at("Notes"), "leaves\r");
    Done({"export", "--csv", "copy"});
    std::filesystem::remove(Journal);
    Done({"import", "copy"});
    EXPECT_EQ(Parsed({"plant", "show", "b1"}), plant);
}

TEST_F(ImportTest, ADirectoryWithoutCSVFilesIsRefused)
{
    std::filesystem::create_directory(Scratch.File("empty"));
    EXPECT_NE(Refused({"import", "empty"}).find("empty: the directory contains no CSV file"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(Journal));
}

TEST_F(ImportTest, MessagesAboutASourceContainNoControlCharacters)
{
    const std::string escape = "\x1B[2J";
    Write("source.json", R"({"Plants":[{"Stage":"\u001b[2J","\u001b[2J":"x"}],"\u001b[2J":[]})");
    const std::string message = Refused({"import", "source.json"});
    EXPECT_EQ(message.find('\x1B'), std::string::npos);
}

TEST_F(ImportTest, AnImportMigratesAnOlderJournalFirst)
{
    std::filesystem::create_directories(std::filesystem::path(Journal).parent_path());
    WriteOldFile(Journal, OldFiles().front());
    Write("source.json", R"({"Plants":[{"Name":"Basil"}]})");
    const ProgramResult import = Run({"import", "source.json"});
    EXPECT_EQ(import.Status, 0);
    EXPECT_NE(import.Error.find("earlier schema; backed up as "), std::string::npos);
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 3U);
    Left.push_back("journal.db.before-update-" + PlantEventCurrentDate());
    Sound = false;
}

TEST_F(ImportTest, AnImportKeepsTheFileThatOthersHaveOpen)
{
    KeepEverything();
    Write("source.json", R"({"Plants":[{"Name":"Mint"}]})");
    const PlainConnection other(Journal);
    EXPECT_EQ(other.Value("SELECT COUNT(*) FROM Plants;"), "2");
    Done({"import", "source.json"});
    EXPECT_EQ(other.Value("SELECT COUNT(*) FROM Plants;"), "3");
    EXPECT_EQ(other.Value("PRAGMA integrity_check;"), "ok");
}

TEST_F(ImportTest, AnImportIntoAnEmptyFileCreatesTheJournal)
{
    Write("data/plantjournal/journal.db", "");
    Write("source.json", R"({"Plants":[{"Name":"Basil"}]})");
    Done({"import", "source.json"});
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 1U);
}

} // namespace
