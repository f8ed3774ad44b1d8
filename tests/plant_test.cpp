#include "support/journal_test.h"
#include "testing/operation_statements.h"

#include <climits>
#include <regex>

#include <sqlite3.h>

using namespace support;

namespace
{

constexpr auto EveryColumn = "SELECT ID,UUID,Name,Strain,MotherPlantID,Stage,Sex,Tent,PotSize,Medium,SeedDate,"
                             "FlipHeightCm,FinalHeightCm,CloneDate,TransplantDate,FlipDate,HarvestDate,Notes "
                             "FROM Plants ORDER BY ID;";

class PlantTest : public JournalTest
{
  protected:
    std::vector<Plant> ListedPlants()
    {
        std::vector<Plant> plants;
        EXPECT_TRUE(Repository.ListPlants(plants));
        return plants;
    }

    std::vector<std::string> ListedNames()
    {
        std::vector<std::string> names;
        for (const Plant& plant : ListedPlants())
            names.push_back(plant.Strain + '/' + plant.Name);
        return names;
    }
};

Plant Named(const std::string& uuid, const std::string& name)
{
    Plant plant;
    plant.UUID = uuid;
    plant.Name = name;
    return plant;
}

// Every field differs from the other fields and from its default.
Plant FullPlant(const std::string& mother)
{
    return {.ID = 99,
            .UUID = "basil",
            .Name = "Basil",
            .Strain = "Genovese",
            .MotherPlantUUID = mother,
            .Stage = PlantStage::Flower,
            .Sex = PlantSex::Female,
            .Tent = "Window",
            .PotSize = "11 l",
            .Medium = "Coco",
            .SeedDate = "2024-01-01",
            .FlipHeightCm = 30.25,
            .FinalHeightCm = 61.5,
            .CloneDate = "2024-02-02",
            .TransplantDate = "2024-03-03",
            .FlipDate = "2024-04-04",
            .HarvestDate = "2024-05-05",
            .Notes = "Likes the sun"};
}

TEST_F(PlantTest, CreateStoresEveryFieldInItsColumn)
{
    const Plant mother = NewPlant("Mother");
    Plant basil = FullPlant(mother.UUID);
    ASSERT_TRUE(Repository.CreatePlant(basil));

    Plant expected = FullPlant(mother.UUID);
    expected.ID = 2;
    EXPECT_EQ(basil, expected);
    EXPECT_EQ(QueryRows(EveryColumn).at(1),
              (Row{"2", "basil", "Basil", "Genovese", "1", "Flower", "Female", "Window", "11 l", "Coco", "2024-01-01",
                   "30.25", "61.5", "2024-02-02", "2024-03-03", "2024-04-04", "2024-05-05", "Likes the sun"}));
    EXPECT_EQ(ListedPlants(), (std::vector{mother, expected}));
    EXPECT_EQ(StoredPlant("basil"), expected);
}

TEST_F(PlantTest, CreateOfABarePlantStoresTheDefaults)
{
    Plant plant;
    plant.UUID = "bare";
    ASSERT_TRUE(Repository.CreatePlant(plant));
    EXPECT_EQ(QueryRows(EveryColumn), (Rows{{"1", "bare", "", "", "NULL", "Veg", "Unknown", "", "", "", "", "0.0",
                                             "0.0", "", "", "", "", ""}}));
    EXPECT_EQ(StoredPlant("bare"), plant);
}

TEST_F(PlantTest, UpdateOverwritesEveryFieldButTheIdentifiers)
{
    NewPlant("First");
    const Plant mother = NewPlant("Second");
    Plant basil = Named("basil", "Unnamed");
    ASSERT_TRUE(Repository.CreatePlant(basil));
    const Rows others = QueryRows("SELECT * FROM Plants WHERE ID<3;");

    const Plant changed = FullPlant(mother.UUID); // no plant has its ID
    ASSERT_TRUE(Repository.UpdatePlant(changed));

    Plant expected = changed;
    expected.ID = 3;
    EXPECT_EQ(QueryRows(EveryColumn).at(2),
              (Row{"3", "basil", "Basil", "Genovese", "2", "Flower", "Female", "Window", "11 l", "Coco", "2024-01-01",
                   "30.25", "61.5", "2024-02-02", "2024-03-03", "2024-04-04", "2024-05-05", "Likes the sun"}));
    EXPECT_EQ(StoredPlant("basil"), expected);
    EXPECT_EQ(QueryRows("SELECT * FROM Plants WHERE ID<3;"), others);

    ASSERT_TRUE(Repository.UpdatePlant(Named("basil", "")));
    EXPECT_EQ(QueryRows(EveryColumn).at(2),
              (Row{"3", "basil", "", "", "NULL", "Veg", "Unknown", "", "", "", "", "0.0", "0.0", "", "", "", "", ""}));
}

TEST_F(PlantTest, EachOperationRunsItsStatements)
{
    const Plant mother = NewPlant("Mother");
    Plant plain = Named("plain", "Plain");
    Plant strainOnly = Named("strain", "Of a strain");
    strainOnly.Strain = "Genovese";
    Plant motherOnly = Named("mother", "Of a mother");
    motherOnly.MotherPlantUUID = mother.UUID;
    Plant full = FullPlant(mother.UUID);

    EXPECT_EQ(StatementsOf([&] { Repository.CreatePlant(plain); }), (Statements{SQL::InsertPlant}));
    EXPECT_EQ(StatementsOf([&] { Repository.CreatePlant(strainOnly); }),
              (Statements{SQL::RegisterStrain, SQL::InsertPlant}));
    EXPECT_EQ(StatementsOf([&] { Repository.CreatePlant(motherOnly); }),
              (Statements{SQL::ListPlants, SQL::InsertPlant}));
    EXPECT_EQ(StatementsOf([&] { Repository.CreatePlant(full); }),
              (Statements{SQL::RegisterStrain, SQL::ListPlants, SQL::InsertPlant}));

    EXPECT_EQ(StatementsOf([&] { Repository.UpdatePlant(plain); }), (Statements{SQL::UpdatePlant}));
    EXPECT_EQ(StatementsOf([&] { Repository.UpdatePlant(full); }),
              (Statements{SQL::RegisterStrain, SQL::ListPlants, SQL::UpdatePlant}));

    std::vector<Plant> plants;
    EXPECT_EQ(StatementsOf([&] { Repository.ListPlants(plants); }), (Statements{SQL::ListPlants}));
    EXPECT_EQ(StatementsOf([&] { Repository.GetPlant("plain", plain); }), (Statements{SQL::ListPlants}));
    EXPECT_EQ(StatementsOf([&] { Repository.DeletePlant("plain"); }), (Statements{"DELETE FROM Plants WHERE UUID=?;"}));
    EXPECT_EQ(RowCount("Plants"), 4);
}

TEST_F(PlantTest, CreateGivesAPlantWithoutAUUIDANewOne)
{
    const std::regex version4("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
    const Plant first = NewPlant("First");
    const Plant second = NewPlant("Second");
    EXPECT_TRUE(std::regex_match(first.UUID, version4)) << first.UUID;
    EXPECT_TRUE(std::regex_match(second.UUID, version4)) << second.UUID;
    EXPECT_NE(first.UUID, second.UUID);
    EXPECT_EQ(QueryRows("SELECT UUID FROM Plants ORDER BY ID;"), (Rows{{first.UUID}, {second.UUID}}));
}

TEST_F(PlantTest, AUUIDThatExistsIsRefused)
{
    NewPlant("Other");
    Plant first = Named("basil", "First");
    ASSERT_TRUE(Repository.CreatePlant(first));
    Plant second = Named("basil", "Second");
    second.ID = 77;
    EXPECT_FALSE(Repository.CreatePlant(second));
    EXPECT_STREQ(sqlite3_errmsg(Database.NativeHandle()), "UNIQUE constraint failed: Plants.UUID");
    EXPECT_EQ(second.ID, 77);
    EXPECT_EQ(second.UUID, "basil");
    EXPECT_EQ(QueryRows("SELECT Name FROM Plants WHERE UUID='basil';"), (Rows{{"First"}}));

    Plant otherCase = Named("Basil", "Third");
    EXPECT_TRUE(Repository.CreatePlant(otherCase));
}

TEST_F(PlantTest, ANewStrainIsRegisteredWithDefaults)
{
    NewPlant("Basil", "Genovese");
    Plant moved = NewPlant("Mint", "Spearmint");
    moved.Strain = "Peppermint";
    ASSERT_TRUE(Repository.UpdatePlant(moved));
    EXPECT_EQ(QueryRows("SELECT Name,Breeder,FloweringWeeks,Notes FROM Strains ORDER BY ID;"),
              (Rows{{"Genovese", "", "0", ""}, {"Spearmint", "", "0", ""}, {"Peppermint", "", "0", ""}}));
}

TEST_F(PlantTest, AnExistingStrainIsUnchanged)
{
    Strain genovese;
    genovese.Name = "Genovese";
    genovese.Breeder = "Aunt Rosa";
    genovese.FloweringWeeks = 8;
    genovese.Notes = "From the balcony";
    ASSERT_TRUE(Repository.CreateStrain(genovese));
    Plant basil = NewPlant("Basil", "Genovese");
    ASSERT_TRUE(Repository.UpdatePlant(basil));
    EXPECT_EQ(QueryRows("SELECT * FROM Strains;"), (Rows{{"1", "Genovese", "Aunt Rosa", "8", "From the balcony"}}));
}

TEST_F(PlantTest, StrainNamesThatDifferInCaseAreTwoStrains)
{
    NewPlant("One", "Genovese");
    NewPlant("Two", "genovese");
    EXPECT_EQ(QueryRows("SELECT Name FROM Strains ORDER BY ID;"), (Rows{{"Genovese"}, {"genovese"}}));
}

TEST_F(PlantTest, APlantWithoutAStrainRegistersNone)
{
    Plant plant = NewPlant("Basil");
    ASSERT_TRUE(Repository.UpdatePlant(plant));
    EXPECT_EQ(QueryRows("SELECT Strain FROM Plants;"), (Rows{{""}}));
    EXPECT_EQ(RowCount("Strains"), 0);
}

TEST_F(PlantTest, ARefusedPlantStillRegistersItsStrain)
{
    const Plant stored = NewPlant("Stored");

    Plant orphan = Named("orphan", "Orphan");
    orphan.Strain = "Of an orphan";
    orphan.MotherPlantUUID = "unknown";
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.CreatePlant(orphan)); }),
              (Statements{SQL::RegisterStrain, SQL::ListPlants}));

    Plant twin = Named(stored.UUID, "Twin");
    twin.Strain = "Of a twin";
    EXPECT_FALSE(Repository.CreatePlant(twin));

    Plant moved = stored;
    moved.Strain = "Of the moved";
    moved.MotherPlantUUID = "unknown";
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.UpdatePlant(moved)); }),
              (Statements{SQL::RegisterStrain, SQL::ListPlants}));

    EXPECT_EQ(QueryRows("SELECT Name FROM Strains ORDER BY ID;"),
              (Rows{{"Of an orphan"}, {"Of a twin"}, {"Of the moved"}}));
    EXPECT_EQ(ListedPlants(), (std::vector{stored}));
}

TEST_F(PlantTest, AStrainThatCannotBeRegisteredStopsTheOperationAtOnce)
{
    const Plant mother = NewPlant("Mother");
    Plant plant = FullPlant(mother.UUID);
    plant.UUID.clear();
    for (const auto operation : {+[](PlantRepository&repository, Plant&p) { return repository.CreatePlant(p); },
                                 +[](PlantRepository&repository, Plant&p) { return repository.UpdatePlant(p); }})
    {
        const CallFailure failure(SQLiteCall::Step, 1, SQLITE_FULL);
        EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(operation(Repository, plant)); }), (Statements{SQL::RegisterStrain}));
    }
    EXPECT_EQ(plant.UUID, "");
    EXPECT_EQ(plant.ID, 99);
    EXPECT_EQ(ListedPlants(), (std::vector{mother}));
}

TEST_F(PlantTest, ANewUUIDStaysWhenThePlantIsRefused)
{
    Plant orphan;
    orphan.ID = 77;
    orphan.MotherPlantUUID = "unknown";
    EXPECT_FALSE(Repository.CreatePlant(orphan));
    EXPECT_EQ(orphan.UUID.size(), 36U);
    EXPECT_EQ(orphan.ID, 77);

    Plant unlucky;
    const CallFailure failure(SQLiteCall::Step, 1, SQLITE_FULL, "INSERT INTO Plants");
    EXPECT_FALSE(Repository.CreatePlant(unlucky));
    EXPECT_EQ(unlucky.UUID.size(), 36U);
    EXPECT_EQ(unlucky.ID, 0);
}

TEST_F(PlantTest, AMotherIsReadBackUntilSheIsDeleted)
{
    const Plant mother = NewPlant("Mother");
    const Plant clone = NewPlant("Clone", "", mother.UUID);
    EXPECT_EQ(StoredPlant(clone.UUID).MotherPlantUUID, mother.UUID);
    ASSERT_TRUE(Repository.DeletePlant(mother.UUID));
    EXPECT_EQ(StoredPlant(clone.UUID).MotherPlantUUID, "");
    EXPECT_EQ(QueryRows("SELECT MotherPlantID FROM Plants;"), (Rows{{"NULL"}}));
}

TEST_F(PlantTest, AMotherMissingFromTheTableReadsBackAsNone)
{
    const Plant mother = NewPlant("Mother");
    const Plant clone = NewPlant("Clone", "", mother.UUID);
    RunSQL("PRAGMA foreign_keys=OFF; DELETE FROM Plants WHERE ID=1; PRAGMA foreign_keys=ON;");
    EXPECT_EQ(QueryRows("SELECT MotherPlantID FROM Plants;"), (Rows{{"1"}}));
    EXPECT_EQ(StoredPlant(clone.UUID).MotherPlantUUID, "");
}

TEST_F(PlantTest, UpdateSetsAndClearsTheMother)
{
    const Plant mother = NewPlant("Mother");
    Plant clone = NewPlant("Clone");
    for (const std::string& uuid : {mother.UUID, std::string()})
    {
        clone.MotherPlantUUID = uuid;
        ASSERT_TRUE(Repository.UpdatePlant(clone));
        EXPECT_EQ(StoredPlant(clone.UUID).MotherPlantUUID, uuid);
    }
    EXPECT_EQ(RowCount("Plants", "MotherPlantID IS NULL"), 2);
}

TEST_F(PlantTest, GetFindsThePlantWithExactlyThatUUID)
{
    Plant lower = Named("basil-a", "Lower");
    Plant upper = Named("BASIL-A", "Upper");
    Plant longer = Named("basil-ab", "Longer");
    for (Plant* plant : {&upper, &longer, &lower})
        ASSERT_TRUE(Repository.CreatePlant(*plant));
    EXPECT_EQ(StoredPlant("basil-a"), lower);
    EXPECT_EQ(StoredPlant("BASIL-A"), upper);
    EXPECT_EQ(StoredPlant("basil-ab"), longer);

    Plant found = FullPlant("a mother"); // GetPlant must overwrite every field
    ASSERT_TRUE(Repository.GetPlant("basil-a", found));
    EXPECT_EQ(found, lower);
}

TEST_F(PlantTest, GetOfAnUnknownPlantLeavesTheRecordUnchanged)
{
    NewPlant("Other");
    Plant basil = Named("basil", "Basil");
    ASSERT_TRUE(Repository.CreatePlant(basil));
    const Plant before = FullPlant("mother");
    for (const char* uuid : {"mint", "Basil", "basil ", "basi", ""})
    {
        Plant plant = before;
        EXPECT_FALSE(Repository.GetPlant(uuid, plant)) << uuid;
        EXPECT_EQ(plant, before);
    }
}

TEST_F(PlantTest, GetFailsWhenThePlantsCannotBeListed)
{
    NewPlant("First");
    const Plant basil = NewPlant("Second");
    const Plant before = FullPlant("mother");
    for (const auto& [call, number] : {std::pair(SQLiteCall::Prepare, 1), std::pair(SQLiteCall::Step, 2)})
    {
        const CallFailure failure(call, number, SQLITE_IOERR);
        Plant plant = before;
        EXPECT_FALSE(Repository.GetPlant(basil.UUID, plant));
        EXPECT_TRUE(failure.Happened());
        EXPECT_EQ(plant, before);
    }
}

TEST_F(PlantTest, AListIsSortedByStrainThenByNameIgnoringCase)
{
    NewPlant("b", "basil");
    NewPlant("É", "mint");
    NewPlant("zinnia");
    NewPlant("C", "Basil");
    NewPlant("é", "mint");
    NewPlant("A", "Basil");
    NewPlant("f", "Mint");
    NewPlant("a", "Apple");
    EXPECT_EQ(ListedNames(), (std::vector<std::string>{"/zinnia", "Apple/a", "Basil/A", "basil/b", "Basil/C", "Mint/f",
                                                       "mint/É", "mint/é"}));
}

TEST_F(PlantTest, AListOfAnEmptyJournalEmptiesTheVector)
{
    std::vector<Plant> plants(3);
    EXPECT_TRUE(Repository.ListPlants(plants));
    EXPECT_TRUE(plants.empty());

    const Plant basil = NewPlant("Basil");
    plants.resize(3);
    EXPECT_TRUE(Repository.ListPlants(plants));
    EXPECT_EQ(plants, (std::vector{basil}));
}

TEST_F(PlantTest, AListThatCannotBePreparedIsEmptyAndFalse)
{
    NewPlant("Basil");
    std::vector<Plant> plants(3);
    const CallFailure failure(SQLiteCall::Prepare, 1, SQLITE_NOMEM);
    EXPECT_FALSE(Repository.ListPlants(plants));
    EXPECT_TRUE(plants.empty());
}

TEST_F(PlantTest, AnErrorWhileReadingEndsTheListEarly)
{
    for (const char* name : {"A", "B", "C", "D"})
        NewPlant(name);
    std::vector<Plant> plants;
    const CallFailure failure(SQLiteCall::Step, 3, SQLITE_IOERR);
    EXPECT_TRUE(Repository.ListPlants(plants));
    ASSERT_EQ(plants.size(), 2U);
    EXPECT_EQ(plants[1].Name, "B");
}

TEST_F(PlantTest, UpdateAndDeleteOfAnUnknownPlantChangeNothingAndSucceed)
{
    const Plant mother = NewPlant("Mother", "Genovese");
    Plant unknown = Named("unknown", "Unknown");
    unknown.ID = mother.ID;
    unknown.Strain = "Genovese";
    const std::string before = Content();
    EXPECT_TRUE(Repository.UpdatePlant(unknown));
    unknown.MotherPlantUUID = mother.UUID;
    EXPECT_TRUE(Repository.UpdatePlant(unknown));
    EXPECT_TRUE(Repository.UpdatePlant(Plant()));
    EXPECT_TRUE(Repository.DeletePlant("unknown"));
    EXPECT_TRUE(Repository.DeletePlant(""));
    EXPECT_EQ(Content(), before);
}

TEST_F(PlantTest, DeleteRemovesOnlyThePlantAndItsRecords)
{
    const Plant basil = NewPlant("Basil", "Genovese");
    const Plant mint = NewPlant("Mint", "Spearmint", basil.UUID);
    for (Plant plant : {basil, mint})
    {
        PlantEvent event;
        event.PlantUUID = plant.UUID;
        EXPECT_TRUE(Repository.CreatePlantEvent(event));
        PlantCareEntry entry;
        entry.PlantUUID = plant.UUID;
        EXPECT_TRUE(Repository.CreatePlantCareEntry(entry));
        HarvestRecord record;
        EXPECT_TRUE(Repository.SaveHarvestRecord(plant, record));
        PlantPhoto photo;
        photo.PlantUUID = plant.UUID;
        photo.FilePath = "leaf.jpg";
        EXPECT_TRUE(Repository.CreatePlantPhoto(photo));
        PlantHealthObservation observation;
        observation.PlantUUID = plant.UUID;
        observation.Issue = "Aphids";
        EXPECT_TRUE(Repository.CreatePlantHealthObservation(observation));
        PlantJournalEntry journalEntry;
        journalEntry.PlantUUID = plant.UUID;
        EXPECT_TRUE(Repository.CreatePlantJournalEntry(journalEntry));
    }

    ASSERT_TRUE(Repository.DeletePlant(basil.UUID));
    EXPECT_EQ(QueryRows("SELECT UUID FROM Plants;"), (Rows{{mint.UUID}}));
    for (const char* table :
         {"PlantCareEntries", "HarvestRecords", "PlantPhotos", "PlantHealthObservations", "PlantJournalEntries"})
        EXPECT_EQ(QueryRows(std::string("SELECT PlantUUID FROM ") + table + ";"), (Rows{{mint.UUID}})) << table;
    EXPECT_EQ(RowCount("PlantEvents", "PlantUUID='" + mint.UUID + "'"), 3);
    EXPECT_EQ(RowCount("PlantEvents"), 3);
    EXPECT_EQ(QueryRows("SELECT Name FROM Strains ORDER BY ID;"), (Rows{{"Genovese"}, {"Spearmint"}}));
}

TEST_F(PlantTest, DeleteComparesTheUUIDExactly)
{
    Plant basil = Named("basil", "Basil");
    ASSERT_TRUE(Repository.CreatePlant(basil));
    EXPECT_TRUE(Repository.DeletePlant("BASIL"));
    EXPECT_EQ(RowCount("Plants"), 1);
    EXPECT_TRUE(Repository.DeletePlant("basil"));
    EXPECT_EQ(RowCount("Plants"), 0);
}

TEST_F(PlantTest, StagesAndSexesAreStoredByTheirNames)
{
    const std::pair<PlantStage, const char*> stages[] = {
        {PlantStage::Seed, "Seed"},           {PlantStage::Clone, "Clone"},      {PlantStage::Veg, "Veg"},
        {PlantStage::Flower, "Flower"},       {PlantStage::Dry, "Dry"},          {PlantStage::Cure, "Cure"},
        {PlantStage::Harvested, "Harvested"}, {PlantStage::Archived, "Archived"}};
    const std::pair<PlantSex, const char*> sexes[] = {{PlantSex::Unknown, "Unknown"},
                                                      {PlantSex::Female, "Female"},
                                                      {PlantSex::Male, "Male"},
                                                      {PlantSex::Hermaphrodite, "Hermaphrodite"}};
    Plant plant = NewPlant("Basil");
    for (const auto& [stage, stageName] : stages)
        for (const auto& [sex, sexName] : sexes)
        {
            plant.Stage = stage;
            plant.Sex = sex;
            ASSERT_TRUE(Repository.UpdatePlant(plant));
            EXPECT_EQ(QueryRows("SELECT Stage,Sex FROM Plants;"), (Rows{{stageName, sexName}}));
            EXPECT_EQ(StoredPlant(plant.UUID), plant);
        }
}

TEST_F(PlantTest, NumbersOutsideTheEnumerationsAreStoredAsTheDefaults)
{
    Plant plant = NewPlant("Basil");
    for (const std::int32_t number : {-1, 8, 99, INT_MIN, INT_MAX})
    {
        plant.Stage = static_cast<PlantStage>(number);
        plant.Sex = static_cast<PlantSex>(number);
        ASSERT_TRUE(Repository.UpdatePlant(plant));
        EXPECT_EQ(QueryRows("SELECT Stage,Sex FROM Plants;"), (Rows{{"Veg", "Unknown"}}));
    }
}

TEST_F(PlantTest, StoredNamesThatAreUnknownReadAsTheDefaults)
{
    Plant plant = NewPlant("Basil");
    plant.Stage = PlantStage::Dry;
    plant.Sex = PlantSex::Male;
    ASSERT_TRUE(Repository.UpdatePlant(plant));
    RunSQL("PRAGMA ignore_check_constraints=ON; UPDATE Plants SET Stage='dry',Sex='Both';");
    EXPECT_EQ(StoredPlant(plant.UUID).Stage, PlantStage::Veg);
    EXPECT_EQ(StoredPlant(plant.UUID).Sex, PlantSex::Unknown);
}

TEST_F(PlantTest, AStageThatTheFileDoesNotAllowIsRefused)
{
    Plant stored = NewPlant("Stored");
    ReplaceInDefinitions("'Seed',", "");
    Plant seed;
    seed.Stage = PlantStage::Seed;
    EXPECT_FALSE(Repository.CreatePlant(seed));
    EXPECT_EQ(sqlite3_extended_errcode(Database.NativeHandle()), SQLITE_CONSTRAINT_CHECK);
    EXPECT_EQ(seed.ID, 0);
    stored.Stage = PlantStage::Seed;
    EXPECT_FALSE(Repository.UpdatePlant(stored));
    EXPECT_EQ(QueryRows("SELECT Stage FROM Plants;"), (Rows{{"Veg"}}));
}

} // namespace
