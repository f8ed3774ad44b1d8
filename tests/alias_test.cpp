// Calls with an argument that refers to a value which the call empties or overwrites.

#include "support/journal_test.h"
#include "support/repository_operations.h"

using namespace support;

namespace
{

class AliasTest : public JournalTest
{
  protected:
    // Expects the same list if the key is a member of a record in the vector.
    template <typename Record>
    void ExpectSameList(bool (PlantRepository::*list)(const std::string&, std::vector<Record>&))
    {
        std::vector<Record> expected;
        ASSERT_TRUE((Repository.*list)(Planted.Mother.UUID, expected));
        ASSERT_FALSE(expected.empty());
        std::vector<Record> records = expected;
        EXPECT_TRUE((Repository.*list)(records.front().PlantUUID, records));
        EXPECT_EQ(records, expected);
        records.reserve(records.capacity() + 1);
        EXPECT_TRUE((Repository.*list)(records.back().PlantUUID, records));
        EXPECT_EQ(records, expected);
    }

    SampleRecords Planted = StoreSampleRecords(Repository);
};

TEST_F(AliasTest, ADatabaseOpensItsOwnPathAgain)
{
    const std::string before = Content();
    std::string error = "untouched";
    EXPECT_TRUE(Database.Open(Database.Path(), &error));
    EXPECT_EQ(error, "untouched");
    EXPECT_EQ(Database.Path(), Path);
    EXPECT_EQ(Content(), before);
}

TEST_F(AliasTest, TheErrorMayBeThePath)
{
    std::string text = Scratch.File("");
    EXPECT_FALSE(Database.Open(text, &text));
    EXPECT_EQ(text, "unable to open database file");
}

TEST_F(AliasTest, AKeyMayBeInTheVectorThatIsFilled)
{
    ExpectSameList(&PlantRepository::ListPlantEvents);
    ExpectSameList(&PlantRepository::ListPlantCareEntries);
    ExpectSameList(&PlantRepository::ListPlantPhotos);
    ExpectSameList(&PlantRepository::ListPlantHealthObservations);
    ExpectSameList(&PlantRepository::ListPlantJournalEntries);
}

TEST_F(AliasTest, AHarvestRecordIsReadAgainByItsOwnPlantUUID)
{
    HarvestRecord record = Planted.Harvest;
    record.Notes = "not saved";
    EXPECT_TRUE(Repository.GetHarvestRecord(record.PlantUUID, record));
    EXPECT_EQ(record, Planted.Harvest);
}

TEST_F(AliasTest, AnUnknownHarvestRecordIsResetByItsOwnPlantUUID)
{
    HarvestRecord record = Planted.Harvest;
    record.PlantUUID = Planted.Clone.UUID;
    EXPECT_FALSE(Repository.GetHarvestRecord(record.PlantUUID, record));
    EXPECT_EQ(record, HarvestRecord());
}

TEST_F(AliasTest, APlantIsReadAgainByItsOwnUUID)
{
    Plant plant = Planted.Clone;
    plant.Notes = "not saved";
    EXPECT_TRUE(Repository.GetPlant(plant.UUID, plant));
    EXPECT_EQ(plant, Planted.Clone);

    EXPECT_TRUE(plant.Load(Repository, plant.MotherPlantUUID));
    EXPECT_EQ(plant, Planted.Mother);
}

TEST_F(AliasTest, APlantIsDuplicatedIntoItself)
{
    Plant plant = Planted.Clone;
    EXPECT_TRUE(Repository.DuplicatePlant(plant, plant));
    EXPECT_EQ(plant.Name, "Clone copy");
    EXPECT_EQ(plant.MotherPlantUUID, "");
    EXPECT_NE(plant.UUID, Planted.Clone.UUID);

    Plant stored;
    EXPECT_TRUE(Repository.GetPlant(plant.UUID, stored));
    EXPECT_EQ(plant, stored);
    EXPECT_TRUE(Repository.GetPlant(Planted.Clone.UUID, stored));
    EXPECT_EQ(stored, Planted.Clone);
}

} // namespace
