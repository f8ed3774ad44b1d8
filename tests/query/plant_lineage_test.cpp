#include "query/query_test.h"

using namespace support;

namespace
{

class PlantLineageTest : public QueryTest
{
  protected:
    PlantLineage LineageOf(const std::string& plantUUID)
    {
        PlantLineage out;
        out.Ancestors.resize(2);
        out.Descendants.resize(2);
        const PlantQueryResult result = QueryPlantLineage(Database, plantUUID, out);
        EXPECT_TRUE(result) << result.Error;
        return out;
    }

    // For example "-1 Mother, 1 Clone".
    std::string Names(const Plant& plant)
    {
        const PlantLineage lineage = LineageOf(plant.UUID);
        std::string text;
        for (const std::vector<PlantRelative>& relatives : {lineage.Ancestors, lineage.Descendants})
            for (const PlantRelative& relative : relatives)
                text += (text.empty() ? "" : ", ") + std::to_string(relative.Generation) + ' ' + relative.Name;
        return text;
    }

    void MakeMother(const Plant& mother, const Plant& clone) const
    {
        RunSQL("UPDATE Plants SET MotherPlantID=" + std::to_string(mother.ID) +
               " WHERE ID=" + std::to_string(clone.ID) + ';');
    }
};

TEST_F(PlantLineageTest, AnUnknownPlantHasNoRelatives)
{
    NewPlant("Basil");
    for (const char* uuid : {"", "unknown"})
    {
        EXPECT_TRUE(LineageOf(uuid).Ancestors.empty());
        EXPECT_TRUE(LineageOf(uuid).Descendants.empty());
    }
}

TEST_F(PlantLineageTest, GenerationsAreCountedFromThePlant)
{
    const Plant first = NewPlant("first");
    const Plant second = NewPlant("second", "", first.UUID);
    const Plant third = NewPlant("third", "", second.UUID);
    const Plant fourth = NewPlant("fourth", "", third.UUID);
    NewPlant("sister", "", first.UUID);
    NewPlant("stranger");
    EXPECT_EQ(Names(third), "-1 second, -2 first, 1 fourth");
    EXPECT_EQ(Names(first), "1 second, 2 third, 3 fourth, 1 sister");
    EXPECT_EQ(Names(fourth), "-1 third, -2 second, -3 first");
}

TEST_F(PlantLineageTest, SiblingsAreSortedByNameAndThenByRowID)
{
    const Plant mother = NewPlant("mother");
    const Plant b = NewPlant("b", "A strain", mother.UUID);
    NewPlant("C", "", mother.UUID);
    const Plant a = NewPlant("A", "Z strain", mother.UUID);
    NewPlant("B", "", mother.UUID);
    NewPlant("z of A", "", a.UUID);
    NewPlant("y of A", "", a.UUID);
    NewPlant("x of b", "", b.UUID);
    EXPECT_EQ(Names(mother), "1 A, 2 y of A, 2 z of A, 1 b, 2 x of b, 1 B, 1 C");
}

TEST_F(PlantLineageTest, ARelativeHasItsPlantAndItsHarvest)
{
    const Plant mother = NewPlant("Mother", "Genovese");
    Plant clone = NewPlant("Clone", "Thai", mother.UUID);
    HarvestRecord record;
    record.HarvestDate = "2025-06-01";
    record.WetWeightG = 100;
    record.DryWeightG = 20;
    record.QualityRating = 8;
    record.SeedYield = 3;
    record.CureOutcome = "dry";
    record.Notes = "early";
    EXPECT_TRUE(Repository.SaveHarvestRecord(clone, record));
    const PlantLineage ofMother = LineageOf(mother.UUID);
    const PlantLineage ofClone = LineageOf(clone.UUID);
    PlantRelative expected;
    expected.UUID = clone.UUID;
    expected.Name = "Clone";
    expected.Strain = "Thai";
    expected.MotherPlantUUID = mother.UUID;
    expected.Stage = PlantStage::Harvested;
    expected.Generation = 1;
    expected.Harvest = record;
    EXPECT_EQ(Printed(ofMother.Descendants), Printed(expected) + '\n');
    expected = {};
    expected.UUID = mother.UUID;
    expected.Name = "Mother";
    expected.Strain = "Genovese";
    expected.Generation = -1;
    EXPECT_EQ(Printed(ofClone.Ancestors), Printed(expected) + '\n');
    RunSQL("UPDATE HarvestRecords SET TimelineEventID=NULL;");
    EXPECT_EQ(LineageOf(mother.UUID).Descendants.at(0).Harvest->TimelineEventID, 0);
}

TEST_F(PlantLineageTest, ACycleOfMothersEnds)
{
    const Plant a = NewPlant("a");
    const Plant b = NewPlant("b", "", a.UUID);
    const Plant c = NewPlant("c", "", b.UUID);
    const Plant d = NewPlant("d", "", c.UUID);
    MakeMother(c, a);
    EXPECT_EQ(Names(a), "-1 c, -2 b, 3 d");
    EXPECT_EQ(Names(d), "-1 c, -2 b, -3 a");
}

TEST_F(PlantLineageTest, APlantMayBeItsOwnMother)
{
    const Plant a = NewPlant("a");
    NewPlant("b", "", a.UUID);
    MakeMother(a, a);
    EXPECT_EQ(Names(a), "1 b");
}

TEST_F(PlantLineageTest, AThousandGenerationsAreListed)
{
    RunSQL("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<1001) "
           "INSERT INTO Plants(ID,UUID,Name,MotherPlantID) SELECT i,'u'||i,'p',NULLIF(i-1,0) FROM n;");
    EXPECT_EQ(LineageOf("u1").Descendants.at(999).Generation, 1'000);
    EXPECT_EQ(LineageOf("u1001").Ancestors.at(999).Generation, -1'000);
    EXPECT_EQ(LineageOf("u1001").Ancestors.at(999).UUID, "u1");
}

TEST_F(PlantLineageTest, ThePlantMayBeATextOfTheOldAnswer)
{
    const Plant mother = NewPlant("mother");
    const Plant clone = NewPlant("clone", "", mother.UUID);
    PlantLineage out = LineageOf(clone.UUID);
    ASSERT_TRUE(QueryPlantLineage(Database, out.Ancestors.at(0).UUID, out));
    EXPECT_TRUE(out.Ancestors.empty());
    EXPECT_EQ(out.Descendants.at(0).UUID, clone.UUID);
}

} // namespace
