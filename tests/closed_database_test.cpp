// The records that are given to an operation on a closed database.

#include "support/journal_test.h"
#include "support/repository_operations.h"

using namespace support;

namespace
{

class ClosedDatabaseTest : public JournalTest
{
  protected:
    ClosedDatabaseTest() : Planted(StoreSampleRecords(Repository)) { Database.Close(); }

    SampleRecords Planted;
};

TEST_F(ClosedDatabaseTest, AListIsEmptied)
{
    std::vector<Plant> plants(3);
    EXPECT_FALSE(Repository.ListPlants(plants));
    EXPECT_TRUE(plants.empty());
    std::vector<Strain> strains(3);
    EXPECT_FALSE(Repository.ListStrains(strains));
    EXPECT_TRUE(strains.empty());
}

TEST_F(ClosedDatabaseTest, AReadOfAPlantOrStrainLeavesTheRecordUnchanged)
{
    Plant plant = Planted.Clone;
    EXPECT_FALSE(Repository.GetPlant(Planted.Mother.UUID, plant));
    EXPECT_EQ(plant, Planted.Clone);
    Strain strain = Planted.Unused;
    EXPECT_FALSE(Repository.GetStrain(Planted.Kind.ID, strain));
    EXPECT_EQ(strain, Planted.Unused);
}

TEST_F(ClosedDatabaseTest, AReadOfASummaryOrHarvestRecordResetsIt)
{
    StrainSummary summary;
    summary.StrainName = "Stale";
    summary.Veg = 3;
    EXPECT_FALSE(Repository.GetStrainSummary(Planted.Kind.ID, summary));
    EXPECT_EQ(summary, StrainSummary());
    HarvestRecord record = Planted.Harvest;
    EXPECT_FALSE(Repository.GetHarvestRecord(Planted.Mother.UUID, record));
    EXPECT_EQ(record, HarvestRecord());
}

TEST_F(ClosedDatabaseTest, NewRecordsGetNoRowIDs)
{
    const auto expectUnchanged = [&](const auto& given, const auto& create)
    {
        auto record = given;
        EXPECT_FALSE((Repository.*create)(record));
        EXPECT_EQ(record, given);
    };
    expectUnchanged(Planted.Mother, &PlantRepository::CreatePlant);
    expectUnchanged(Planted.Kind, &PlantRepository::CreateStrain);
    expectUnchanged(Planted.Event, &PlantRepository::CreatePlantEvent);
    expectUnchanged(Planted.Care, &PlantRepository::CreatePlantCareEntry);
    expectUnchanged(Planted.Unlinked, &PlantRepository::UpdatePlantCareEntry);
    expectUnchanged(Planted.Photo, &PlantRepository::CreatePlantPhoto);
    expectUnchanged(Planted.Observation, &PlantRepository::CreatePlantHealthObservation);
    expectUnchanged(Planted.Entry, &PlantRepository::CreatePlantJournalEntry);
}

TEST_F(ClosedDatabaseTest, ValuesFilledInBeforeTheWriteStay)
{
    Plant plant;
    EXPECT_FALSE(Repository.CreatePlant(plant));
    EXPECT_EQ(plant.UUID.size(), 36U);

    Plant copy;
    EXPECT_FALSE(Repository.DuplicatePlant(Planted.Clone, copy));
    EXPECT_EQ(copy.Name, "Clone copy");
    EXPECT_EQ(copy.UUID.size(), 36U);
    EXPECT_EQ(copy.ID, 0);

    PlantPhoto photo = Planted.Photo;
    photo.UUID.clear();
    EXPECT_FALSE(Repository.CreatePlantPhoto(photo));
    EXPECT_EQ(photo.UUID.size(), 36U);

    PlantHealthObservation observation = Planted.Observation;
    observation.Severity = 9;
    EXPECT_FALSE(Repository.CreatePlantHealthObservation(observation));
    EXPECT_EQ(observation.Severity, 5);

    plant = Planted.Clone;
    HarvestRecord record;
    EXPECT_FALSE(Repository.SaveHarvestRecord(plant, record));
    EXPECT_EQ(plant, Planted.Clone);
    EXPECT_EQ(record.PlantUUID, Planted.Clone.UUID);
    EXPECT_EQ(record.HarvestDate.size(), 10U);
    EXPECT_EQ(record.TimelineEventID, 0);
    EXPECT_EQ(record.ID, 0);
}

} // namespace
