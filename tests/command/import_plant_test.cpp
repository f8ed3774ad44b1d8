// The column `Plant` of an import: rows that name their plant as a person does.

#include "command/transfer_fixture.h"

using namespace support;

namespace
{

class ImportPlantTest : public TransferTest
{
  protected:
    // Imports a source with errors; returns the messages, without the last line.
    std::string Errors(const std::string& source) const
    {
        const std::string message = Refused({"import", source});
        return message.substr(0, message.find("plantjournal: "));
    }

    // The products of the care entries of a plant, oldest first.
    Words Products(const std::string& plant) const
    {
        Words products;
        for (const JSON& entry : Parsed({"care", "list", plant}))
            products.insert(products.begin(), entry.at("Product"));
        return products;
    }
};

TEST_F(ImportPlantTest, ASpreadsheetNamesPlantsOfTheJournalAndTheImport)
{
    Done({"plant", "add", "Basil"});
    Write("csv/Plants.csv", "Name,Strain\nMint,Spear\n\"Chili, red\",Rocoto\n");
    Write("csv/PlantCareEntries.csv", "Plant,CareDate,Action,Product\n"
                                      "Basil,2026-05-01,feed,A\n"
                                      "Mint,2026-05-02,feed,B\n"
                                      "\"Chili, red\",2026-05-03,feed,C\n"
                                      "Basil,2026-05-04,feed,D\n");
    Write("events/PlantEvents.csv", "EventDate,Type,Plant\n2026-05-01,Note,Mint\n");
    Write("csv/HarvestRecords.csv", "DryWeightG,Plant\n96.5,Basil\n");
    Write("csv/PlantHealthObservations.csv", "Issue,Plant\nmites,Basil\n");
    Write("csv/PlantJournalEntries.csv", "Plant,Details\nBasil,grows\n");
    Done({"import", "csv"});
    Done({"import", "events"});
    EXPECT_EQ(Products("Basil"), (Words{"A", "D"}));
    EXPECT_EQ(Products("Mint"), Words{"B"});
    EXPECT_EQ(Products("Chili, red"), Words{"C"});
    for (const char* family : {"harvest", "health", "note"})
        EXPECT_EQ(Parsed({family, "list", "Basil"}).size(), 1U) << family;
    EXPECT_EQ(Parsed({"event", "list", "Mint"}).size(), 2U);
}

TEST_F(ImportPlantTest, JSONTakesTheFieldToo)
{
    Write("data/plantjournal/m.jpg", "a picture");
    Left = {"journal.db", "m.jpg"};
    Write("source.json", R"({"Plants":[{"Name":"Mint"}],
        "PlantPhotos":[{"Plant":"Mint","FilePath":"m.jpg"}],"PlantJournalEntries":[{"Details":"x","Plant":"Mint"}]})");
    Done({"import", "source.json"});
    EXPECT_EQ(Parsed({"photo", "list", "Mint"}).size(), 1U);
    EXPECT_EQ(Parsed({"note", "list", "Mint"}).at(0).at("Details"), "x");
}

TEST_F(ImportPlantTest, AnUnknownOrAmbiguousNameIsAnErrorWithItsPlace)
{
    Done({"plant", "add", "Basil"});
    Done({"plant", "add", "Twin"});
    Write("csv/Plants.csv", "Name\nTwin\nMint\n");
    Write("csv/PlantJournalEntries.csv", "Details,Plant\na,basil\nb,Bas\nc,Twin\nd,\ne,Basil\n");
    EXPECT_EQ(
        Errors("csv"),
        "csv/PlantJournalEntries.csv:2:3: Plant: \"basil\": no plant of the journal or of this import has exactly "
        "this name; correct it, or import the plant, too\n"
        "csv/PlantJournalEntries.csv:3:3: Plant: \"Bas\": no plant of the journal or of this import has exactly "
        "this name; correct it, or import the plant, too\n"
        "csv/PlantJournalEntries.csv:4:3: Plant: \"Twin\": several plants have this name; give the UUID of one in "
        "PlantUUID\n"
        "csv/PlantJournalEntries.csv:5:1: PlantUUID: is empty; give the UUID of a plant, or its name in Plant\n");
}

TEST_F(ImportPlantTest, TheUUIDCountsAndAnotherNameIsAWarning)
{
    Done({"plant", "add", "Basil", "--uuid", "b1"});
    Done({"plant", "add", "Mint", "--uuid", "m1"});
    EXPECT_EQ(Run({"plant", "add", "Mint", "--uuid", "m2"}).Status, 0); // with a notice about the name
    Write("csv/PlantCareEntries.csv",
          "PlantUUID,Plant,Product\n"
          "b1,Basil,same\nb1,Mint,other\nb1,unknown,third\nb1,,none\n,Basil,name\nm2,Mint,two\n");
    const ProgramResult result = Run({"import", "csv"});
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(result.Error, "warning: csv/PlantCareEntries.csv:3:4: Plant: \"Mint\": the plant with the UUID \"b1\" is "
                            "named \"Basil\"; the row is imported for that plant\n"
                            "warning: csv/PlantCareEntries.csv:4:4: Plant: \"unknown\": the plant with the UUID \"b1\" "
                            "is named \"Basil\"; the row is imported for that plant\n");
    EXPECT_EQ(Products("b1"), (Words{"same", "other", "third", "none", "name"}));
    EXPECT_EQ(Products("m2"), Words{"two"});
    Write("csv/PlantCareEntries.csv", "PlantUUID,Plant\nx1,Basil\n");
    EXPECT_EQ(Errors("csv"), "csv/PlantCareEntries.csv:2:1: PlantUUID: no plant has the UUID \"x1\"\n");
}

TEST_F(ImportPlantTest, OnlyRecordsOfAPlantHaveTheColumn)
{
    Write("plants/Plants.csv", "Name,Plant\nBasil,Mint\n");
    EXPECT_EQ(Errors("plants"), "plants/Plants.csv:2:7: Plants has no field \"Plant\"\n");
    Write("strains/Strains.csv", "Name,Plant\nRoma,Mint\n");
    EXPECT_EQ(Errors("strains"), "strains/Strains.csv:2:6: Strains has no field \"Plant\"\n");
    Done({"plant", "add", "Basil"});
    Write("notes/PlantJournalEntries.csv", "Plant,Plant\nBasil,Basil\n");
    EXPECT_EQ(Errors("notes"), "notes/PlantJournalEntries.csv:2:7: Plant occurs twice\n");
}

TEST_F(ImportPlantTest, ImpossibleAndUnlikelyValuesAreImportedWithAWarning)
{
    Write("csv/Strains.csv", "Name,FloweringWeeks\nRoma,-1\n");
    Write("csv/Plants.csv", "UUID,Name,SeedDate,FlipHeightCm,FinalHeightCm\nb1,Basil,2026-05-01,-2,\n");
    Write("csv/PlantCareEntries.csv", "Plant,CareDate,PH,EC,AmountMl,RunoffMl\n"
                                      "Basil,2026-04-30,15,1800,Infinity,\nBasil,2026-05-01,7,1,1,1\n");
    Write("csv/HarvestRecords.csv", "Plant,HarvestDate,WetWeightG,DryWeightG\nBasil,9999,1,2\n");
    const ProgramResult result = Run({"import", "csv"});
    EXPECT_EQ(result.Status, 0);
    const std::string care = "warning: csv/PlantCareEntries.csv:2:";
    EXPECT_EQ(result.Error,
              "warning: csv/Strains.csv:2:6: FloweringWeeks: \"-1\": the flowering time cannot be negative\n"
              "warning: csv/Plants.csv:2:21: FlipHeightCm: \"-2\": the height cannot be negative\n" +
                  care + "7: CareDate: \"2026-04-30\": the date is before the plant was sown (2026-05-01)\n" + care +
                  "26: AmountMl: \"inf\": the number is not finite\n" + care +
                  "21: EC: \"1800\": the EC is above 20; the journal expects mS/cm\n" + care +
                  "18: PH: \"15\": the pH must be from 0 to 14\n"
                  "warning: csv/HarvestRecords.csv:2:7: HarvestDate: \"9999\": the date is in the future\n"
                  "warning: csv/HarvestRecords.csv:2:14: DryWeightG: \"2\": the dry weight is above the wet weight\n");
    EXPECT_EQ(Parsed({"harvest", "list", "b1"}).at(0).at("DryWeightG"), 2.0);
}

TEST_F(ImportPlantTest, AtMost20WarningsAreShown)
{
    for (const int rows : {20, 21, 5000})
    {
        std::string csv = "Name,SeedDate\n";
        for (int i = 0; i < rows; ++i)
            csv += "Basil,9999\n";
        Write("csv/Plants.csv", csv);
        const ProgramResult result = Run({"import", "csv"});
        EXPECT_EQ(result.Status, 0);
        const std::string rest =
            rows == 20 ? "" : "warning: more warnings, not shown: " + std::to_string(rows - 20) + "\n";
        EXPECT_EQ(std::count(result.Error.begin(), result.Error.end(), '\n'), rows == 20 ? 20 : 21);
        EXPECT_NE(
            result.Error.find("warning: csv/Plants.csv:21:7: SeedDate: \"9999\": the date is in the future\n" + rest),
            std::string::npos)
            << result.Error;
    }
}

TEST_F(ImportPlantTest, AJournalOfImpossibleValuesComesBackFromItsExport)
{
    Keep(
        [](PlantRepository& repository)
        {
            Plant plant;
            plant.Name = "Basil";
            plant.SeedDate = "spring";
            plant.FlipHeightCm = -1;
            EXPECT_TRUE(repository.CreatePlant(plant));
            PlantCareEntry entry;
            entry.PlantUUID = plant.UUID;
            entry.PH = 15;
            EXPECT_TRUE(repository.CreatePlantCareEntry(entry));
        });
    const std::string before = Exported();
    Write("source.json", before);
    std::filesystem::remove(Journal);
    EXPECT_EQ(Run({"import", "source.json"}).Status, 0);
    EXPECT_EQ(Exported(), before);
}

} // namespace
