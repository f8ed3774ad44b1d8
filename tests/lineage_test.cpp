#include "support/journal_test.h"
#include "support/repository_operations.h"
#include "testing/operation_statements.h"

#include <string_view>

#include <sqlite3.h>

using namespace support;

namespace
{

class LineageTest : public JournalTest
{
  protected:
    static Plant Make(const std::string& uuid, const std::string& mother = {})
    {
        Plant plant;
        plant.UUID = uuid;
        plant.Name = uuid;
        plant.MotherPlantUUID = mother;
        return plant;
    }

    // Creates a plant with this UUID and returns whether it was stored.
    bool Create(const std::string& uuid, const std::string& mother = {})
    {
        Plant plant = Make(uuid, mother);
        return Repository.CreatePlant(plant);
    }

    bool SetMother(const std::string& uuid, const std::string& mother)
    {
        return Repository.UpdatePlant(Make(uuid, mother));
    }

    // Stores a link without the checks of the library.
    void Link(const std::string& uuid, const std::string& mother) const
    {
        RunSQL("UPDATE Plants SET MotherPlantID=(SELECT ID FROM Plants WHERE UUID='" + mother + "') WHERE UUID='" +
               uuid + "';");
    }

    // The stored UUIDs of every plant and its mother.
    Rows Links() const
    {
        return QueryRows(
            "SELECT p.UUID,m.UUID FROM Plants p LEFT JOIN Plants m ON m.ID=p.MotherPlantID ORDER BY p.UUID;");
    }
};

TEST_F(LineageTest, APlantWithoutAMotherIsAcceptedWithoutReadingTheOthers)
{
    Plant plant = Make("a");
    EXPECT_EQ(StatementsOf([&] { EXPECT_TRUE(Repository.CreatePlant(plant)); }), (Statements{SQL::InsertPlant}));
    EXPECT_EQ(StatementsOf([&] { EXPECT_TRUE(Repository.UpdatePlant(plant)); }), (Statements{SQL::UpdatePlant}));
}

TEST_F(LineageTest, AMotherThatIsNotStoredIsRefused)
{
    ASSERT_TRUE(Create("a"));
    for (const char* mother : {"b", "A", "a ", "aa"})
    {
        Plant plant = Make("c", mother);
        plant.ID = 77;
        EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.CreatePlant(plant)) << mother; }),
                  (Statements{SQL::ListPlants}));
        EXPECT_EQ(plant.ID, 77);
        EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(SetMother("a", mother)) << mother; }), (Statements{SQL::ListPlants}));
    }
    EXPECT_EQ(Links(), (Rows{{"a", "NULL"}}));
}

TEST_F(LineageTest, APlantIsNeverItsOwnMother)
{
    Plant own = Make("b", "b");
    EXPECT_TRUE(RefusedWithoutACall([&] { return Repository.CreatePlant(own); }));
    ASSERT_TRUE(Create("a"));
    EXPECT_TRUE(RefusedWithoutACall([&] { return SetMother("a", "a"); }));
    EXPECT_EQ(Links(), (Rows{{"a", "NULL"}}));
}

TEST_F(LineageTest, APlantWithoutAUUIDCannotBeGivenAMother)
{
    ASSERT_TRUE(Create("a"));
    EXPECT_TRUE(RefusedWithoutACall([&] { return SetMother("", "a"); }));
}

TEST_F(LineageTest, ANewPlantWithoutAUUIDMayHaveAMother)
{
    ASSERT_TRUE(Create("a"));
    EXPECT_TRUE(Create("", "a"));
    EXPECT_EQ(RowCount("Plants", "MotherPlantID=1"), 1);
}

TEST_F(LineageTest, ALinkThatWouldCloseACycleIsRefused)
{
    ASSERT_TRUE(Create("a") && Create("b", "a") && Create("c", "b") && Create("other"));
    const Rows before = Links();
    EXPECT_FALSE(SetMother("a", "b"));
    EXPECT_FALSE(SetMother("a", "c"));
    EXPECT_FALSE(SetMother("b", "c"));
    EXPECT_EQ(Links(), before);

    EXPECT_TRUE(SetMother("c", "a"));
    EXPECT_TRUE(SetMother("a", "other"));
    EXPECT_EQ(Links(), (Rows{{"a", "other"}, {"b", "a"}, {"c", "a"}, {"other", "NULL"}}));
}

TEST_F(LineageTest, ALinkMayBeReversedAfterTheOldOneIsRemoved)
{
    ASSERT_TRUE(Create("a") && Create("b", "a"));
    EXPECT_FALSE(SetMother("a", "b"));
    EXPECT_TRUE(SetMother("b", ""));
    EXPECT_TRUE(SetMother("a", "b"));
    EXPECT_EQ(Links(), (Rows{{"a", "b"}, {"b", "NULL"}}));
}

TEST_F(LineageTest, AMotherMayHaveManyClones)
{
    ASSERT_TRUE(Create("a") && Create("b", "a") && Create("c", "a"));
    EXPECT_TRUE(SetMother("b", "a"));
    EXPECT_TRUE(Create("d", "b"));
    EXPECT_EQ(Links(), (Rows{{"a", "NULL"}, {"b", "a"}, {"c", "a"}, {"d", "b"}}));
}

TEST_F(LineageTest, ALongLineageIsFollowedToItsEnd)
{
    ASSERT_TRUE(Create("0"));
    for (int i = 1; i < 60; ++i)
        ASSERT_TRUE(Create(std::to_string(i), std::to_string(i - 1)));
    EXPECT_TRUE(Create("youngest", "59"));
    EXPECT_FALSE(SetMother("0", "youngest"));
    EXPECT_EQ(RowCount("Plants", "MotherPlantID IS NULL"), 1);
}

TEST_F(LineageTest, AMotherInAStoredCycleIsRefused)
{
    ASSERT_TRUE(Create("a") && Create("b", "a") && Create("c", "b") && Create("self"));
    Link("a", "b");
    Link("self", "self");
    for (const char* mother : {"a", "b", "c", "self"})
    {
        EXPECT_FALSE(Create("new", mother)) << mother;
        EXPECT_EQ(RowCount("Plants"), 4);
    }
    EXPECT_TRUE(SetMother("a", ""));
    EXPECT_TRUE(Create("new", "c"));
}

TEST_F(LineageTest, ThePlantsOwnStoredLinkIsNotFollowed)
{
    ASSERT_TRUE(Create("a") && Create("b"));
    Link("a", "a");
    EXPECT_TRUE(SetMother("a", "b"));
    EXPECT_EQ(Links(), (Rows{{"a", "b"}, {"b", "NULL"}}));
}

TEST_F(LineageTest, AnAncestorMissingFromTheTableEndsTheLineage)
{
    ASSERT_TRUE(Create("a") && Create("b", "a"));
    RunSQL("PRAGMA foreign_keys=OFF; DELETE FROM Plants WHERE UUID='a'; PRAGMA foreign_keys=ON;");
    EXPECT_TRUE(Create("c", "b"));
}

TEST_F(LineageTest, AnAncestorThatCouldNotBeReadCountsAsUnknown)
{
    ASSERT_TRUE(Create("z") && Create("b", "z") && Create("a", "b"));
    // The list of plants is "a", "b", "z" and ends before "z".
    const CallFailure failure(SQLiteCall::Step, 3, SQLITE_IOERR, "SELECT");
    EXPECT_FALSE(Create("new", "a"));
    EXPECT_TRUE(failure.Happened());
}

TEST_F(LineageTest, ALinkIsRefusedWhenThePlantsCannotBeRead)
{
    ASSERT_TRUE(Create("a") && Create("b"));
    const CallFailure failure(SQLiteCall::Prepare, 1, SQLITE_NOMEM, "SELECT");
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(SetMother("b", "a")); }), (Statements{SQL::ListPlants}));
}

class DuplicateTest : public JournalTest
{
  protected:
    DuplicateTest()
    {
        const Plant mother = NewPlant("Mother");
        Source = {.ID = 0,
                  .UUID = "basil",
                  .Name = "Basil",
                  .Strain = "Genovese",
                  .MotherPlantUUID = mother.UUID,
                  .Stage = PlantStage::Cure,
                  .Sex = PlantSex::Male,
                  .Tent = "Shed",
                  .PotSize = "7 l",
                  .Medium = "Soil",
                  .SeedDate = "2023-01-09",
                  .FlipHeightCm = 12.5,
                  .FinalHeightCm = 99.75,
                  .CloneDate = "2023-02-08",
                  .TransplantDate = "2023-03-07",
                  .FlipDate = "2023-04-06",
                  .HarvestDate = "2023-05-05",
                  .Notes = "Smells of summer"};
        EXPECT_TRUE(Repository.CreatePlant(Source));
    }

    // The expected duplicate of `source`, with the identifiers of `duplicate`.
    static Plant Expected(const Plant& source, const Plant& duplicate)
    {
        Plant expected = source;
        expected.ID = duplicate.ID;
        expected.UUID = duplicate.UUID;
        expected.Name = source.Name + " copy";
        expected.MotherPlantUUID = "";
        return expected;
    }

    Plant Source;
};

TEST_F(DuplicateTest, ADuplicateIsACopyWithoutAMother)
{
    const Plant source = Source;
    Plant copy = StoredPlant(source.MotherPlantUUID); // DuplicatePlant must overwrite every field
    ASSERT_TRUE(Repository.DuplicatePlant(Source, copy));
    EXPECT_EQ(copy.ID, 3);
    EXPECT_EQ(copy.UUID.size(), 36U);
    EXPECT_EQ(copy, Expected(source, copy));
    EXPECT_EQ(StoredPlant(copy.UUID), copy);
    EXPECT_EQ(Source, source);
    EXPECT_EQ(StoredPlant("basil"), source);
}

TEST_F(DuplicateTest, DuplicateRunsTheStatementsOfACreate)
{
    Plant copy;
    EXPECT_EQ(StatementsOf([&] { EXPECT_TRUE(Repository.DuplicatePlant(Source, copy)); }),
              (Statements{SQL::RegisterStrain, SQL::InsertPlant}));
}

TEST_F(DuplicateTest, ADuplicateOfADuplicateIsNamedCopyTwice)
{
    Plant copy;
    Plant copyOfCopy;
    ASSERT_TRUE(Repository.DuplicatePlant(Source, copy));
    ASSERT_TRUE(Repository.DuplicatePlant(copy, copyOfCopy));
    EXPECT_EQ(copyOfCopy.Name, "Basil copy copy");
    EXPECT_NE(copyOfCopy.UUID, copy.UUID);
    EXPECT_EQ(RowCount("Plants"), 4);
}

TEST_F(DuplicateTest, TheSourceMayReceiveTheDuplicate)
{
    const Plant source = Source;
    ASSERT_TRUE(Repository.DuplicatePlant(Source, Source));
    EXPECT_NE(Source.UUID, "basil");
    EXPECT_EQ(Source, Expected(source, Source));
    EXPECT_EQ(StoredPlant(Source.UUID), Source);
    EXPECT_EQ(StoredPlant("basil"), source);
}

TEST_F(DuplicateTest, ADuplicateHasNoneOfTheRecordsOfItsSource)
{
    const SampleRecords sample = StoreSampleRecords(Repository);
    const auto recordsOf = [&](const std::string& plantUUID)
    {
        int records = 0;
        for (const char* table : {"PlantEvents", "PlantCareEntries", "HarvestRecords", "PlantPhotos",
                                  "PlantHealthObservations", "PlantJournalEntries"})
            records += RowCount(table, "PlantUUID='" + plantUUID + "'");
        return records;
    };
    const int before = recordsOf(sample.Mother.UUID);
    EXPECT_GE(before, 6);

    Plant copy;
    ASSERT_TRUE(Repository.DuplicatePlant(sample.Mother, copy));
    EXPECT_EQ(recordsOf(copy.UUID), 0);
    EXPECT_EQ(recordsOf(sample.Mother.UUID), before);
    EXPECT_EQ(RowCount("Plants", "MotherPlantID=(SELECT ID FROM Plants WHERE Name='Mother' AND Strain<>'')"), 1);
}

TEST_F(DuplicateTest, ASourceThatIsNotStoredCanBeDuplicated)
{
    Plant source;
    source.ID = 4711;
    source.MotherPlantUUID = "unknown";
    Plant copy;
    ASSERT_TRUE(Repository.DuplicatePlant(source, copy));
    EXPECT_EQ(copy.ID, 3);
    EXPECT_EQ(QueryRows("SELECT Name,Strain,MotherPlantID FROM Plants WHERE ID=3;"), (Rows{{" copy", "", "NULL"}}));
}

TEST_F(DuplicateTest, AFailedDuplicateIsReturnedButNotStored)
{
    const std::string before = Content();
    Plant copy;
    const CallFailure failure(SQLiteCall::Step, 1, SQLITE_FULL, "INSERT INTO Plants");
    EXPECT_FALSE(Repository.DuplicatePlant(Source, copy));
    EXPECT_EQ(copy.ID, 0);
    EXPECT_EQ(copy.UUID.size(), 36U);
    EXPECT_EQ(copy, Expected(Source, copy));
    EXPECT_EQ(Content(), before);
}

TEST_F(DuplicateTest, AFailedDuplicateStillRegistersTheStrain)
{
    Source.Strain = "Thai";
    Plant copy;
    const CallFailure failure(SQLiteCall::Step, 1, SQLITE_FULL, "INSERT INTO Plants");
    EXPECT_FALSE(Repository.DuplicatePlant(Source, copy));
    EXPECT_EQ(QueryRows("SELECT Name FROM Strains ORDER BY ID;"), (Rows{{"Genovese"}, {"Thai"}}));
}

} // namespace
