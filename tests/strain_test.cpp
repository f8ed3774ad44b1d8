#include "support/journal_test.h"
#include "testing/operation_statements.h"

#include <climits>
#include <cstdint>
#include <limits>

#include <sqlite3.h>

using namespace support;

namespace
{

constexpr auto ListAll = "SELECT ID,Name,Breeder,FloweringWeeks,Notes FROM Strains ORDER BY Name COLLATE NOCASE;";
constexpr auto GetOne = "SELECT ID,Name,Breeder,FloweringWeeks,Notes FROM Strains WHERE ID=?;";
constexpr auto InsertStrain = "INSERT INTO Strains(Name,Breeder,FloweringWeeks,Notes) VALUES(?,?,?,?);";
constexpr auto GetName = "SELECT Name FROM Strains WHERE ID=?;";
constexpr auto UpdateStrain = "UPDATE Strains SET Name=?,Breeder=?,FloweringWeeks=?,Notes=? WHERE ID=?;";
constexpr auto Rename = "UPDATE Plants SET Strain=? WHERE Strain=?;";
constexpr auto InUse = "SELECT 1 FROM Plants WHERE Strain=(SELECT Name FROM Strains WHERE ID=?) LIMIT 1;";
constexpr auto DeleteStrain = "DELETE FROM Strains WHERE ID=?;";
constexpr auto Summarize =
    "SELECT s.ID,s.Name,COUNT(p.ID),COALESCE(SUM(p.Stage='Seed'),0),COALESCE(SUM(p.Stage='Clone'),0),"
    "COALESCE(SUM(p.Stage='Veg'),0),COALESCE(SUM(p.Stage='Flower'),0),COALESCE(SUM(p.Stage='Dry'),0),"
    "COALESCE(SUM(p.Stage='Cure'),0),COALESCE(SUM(p.Stage='Harvested'),0),COALESCE(SUM(p.Stage='Archived'),0),"
    "COUNT(h.ID),COALESCE(AVG(NULLIF(h.DryWeightG,0)),0),COALESCE(AVG(NULLIF(h.QualityRating,0)),0) FROM Strains s "
    "LEFT JOIN Plants p ON p.Strain=s.Name LEFT JOIN HarvestRecords h ON h.PlantUUID=p.UUID WHERE s.ID=? GROUP BY "
    "s.ID,s.Name;";

class StrainTest : public JournalTest
{
  protected:
    Strain NewStrain(const std::string& name)
    {
        Strain strain = Full(name);
        EXPECT_TRUE(Repository.CreateStrain(strain));
        return strain;
    }

    static Strain Full(const std::string& name)
    {
        return {.ID = 0, .Name = name, .Breeder = "Aunt Rosa", .FloweringWeeks = 9, .Notes = "Rare"};
    }

    std::vector<std::string> ListedNames()
    {
        std::vector<Strain> strains;
        EXPECT_TRUE(Repository.ListStrains(strains));
        std::vector<std::string> names;
        for (const Strain& strain : strains)
            names.push_back(strain.Name);
        return names;
    }

    Rows StoredStrains() const
    {
        return QueryRows("SELECT ID,Name,Breeder,FloweringWeeks,Notes FROM Strains ORDER BY ID;");
    }
    Rows StrainsOfPlants() const { return QueryRows("SELECT Strain FROM Plants ORDER BY ID;"); }
};

TEST_F(StrainTest, CreateStoresEveryFieldInItsColumn)
{
    NewStrain("Thai");
    Strain genovese = Full("Genovese");
    genovese.ID = 99;
    ASSERT_TRUE(Repository.CreateStrain(genovese));
    EXPECT_EQ(genovese.ID, 2);
    EXPECT_EQ(StoredStrains().at(1), (Row{"2", "Genovese", "Aunt Rosa", "9", "Rare"}));

    Strain found;
    ASSERT_TRUE(Repository.GetStrain(2, found));
    EXPECT_EQ(found, genovese);
    std::vector<Strain> strains;
    ASSERT_TRUE(Repository.ListStrains(strains));
    ASSERT_EQ(strains.size(), 2U);
    EXPECT_EQ(strains[0], genovese);
}

TEST_F(StrainTest, UpdateOverwritesEveryFieldOfThatStrainOnly)
{
    NewStrain("Thai");
    NewStrain("Genovese");
    NewStrain("Lemon");
    ASSERT_TRUE(Repository.UpdateStrain(
        {.ID = 2, .Name = "Bush", .Breeder = "Uncle Joe", .FloweringWeeks = -3, .Notes = "Common"}));
    EXPECT_EQ(StoredStrains(), (Rows{{"1", "Thai", "Aunt Rosa", "9", "Rare"},
                                     {"2", "Bush", "Uncle Joe", "-3", "Common"},
                                     {"3", "Lemon", "Aunt Rosa", "9", "Rare"}}));
}

TEST_F(StrainTest, EachOperationRunsItsStatements)
{
    Strain strain = Full("Genovese");
    EXPECT_EQ(StatementsOf([&] { Repository.CreateStrain(strain); }), (Statements{InsertStrain}));
    EXPECT_EQ(StatementsOf([&] { Repository.GetStrain(strain.ID, strain); }), (Statements{GetOne}));
    std::vector<Strain> strains;
    EXPECT_EQ(StatementsOf([&] { Repository.ListStrains(strains); }), (Statements{ListAll}));
    StrainSummary summary;
    EXPECT_EQ(StatementsOf([&] { Repository.GetStrainSummary(strain.ID, summary); }), (Statements{Summarize}));
    strain.Notes = "The same name";
    EXPECT_EQ(StatementsOf([&] { Repository.UpdateStrain(strain); }),
              (Statements{GetName, SQL::Begin, UpdateStrain, SQL::Commit}));
    strain.Name = "genovese";
    EXPECT_EQ(StatementsOf([&] { Repository.UpdateStrain(strain); }),
              (Statements{GetName, SQL::Begin, UpdateStrain, Rename, SQL::Commit}));
    EXPECT_EQ(StatementsOf([&] { Repository.DeleteStrain(strain.ID); }), (Statements{InUse, DeleteStrain}));
    EXPECT_EQ(RowCount("Strains"), 0);
}

TEST_F(StrainTest, AListIsSortedByNameIgnoringCase)
{
    for (const char* name : {"gamma", "Beta", "alpha", "Éclair", "zeta"})
        NewStrain(name);
    EXPECT_EQ(ListedNames(), (std::vector<std::string>{"alpha", "Beta", "gamma", "zeta", "Éclair"}));
}

TEST_F(StrainTest, AListOfAnEmptyJournalEmptiesTheVector)
{
    std::vector<Strain> strains(3);
    EXPECT_TRUE(Repository.ListStrains(strains));
    EXPECT_TRUE(strains.empty());
    NewStrain("Genovese");
    strains.resize(3);
    EXPECT_TRUE(Repository.ListStrains(strains));
    EXPECT_EQ(strains.size(), 1U);
}

TEST_F(StrainTest, AListThatCannotBePreparedIsEmptyAndFalse)
{
    std::vector<Strain> strains(3);
    const CallFailure failure(SQLiteCall::Prepare, 1, SQLITE_NOMEM);
    EXPECT_FALSE(Repository.ListStrains(strains));
    EXPECT_TRUE(strains.empty());
}

TEST_F(StrainTest, AnErrorWhileReadingEndsTheListEarly)
{
    for (const char* name : {"D", "C", "B", "A"})
        NewStrain(name);
    const CallFailure failure(SQLiteCall::Step, 3, SQLITE_IOERR);
    EXPECT_EQ(ListedNames(), (std::vector<std::string>{"A", "B"}));
}

TEST_F(StrainTest, GetOfAnUnknownStrainLeavesTheRecordUnchanged)
{
    NewStrain("Genovese");
    Strain strain = Full("Before");
    for (const std::int64_t id : {std::int64_t{0}, std::int64_t{2}, std::int64_t{-1}, std::int64_t{1} + UINT_MAX + 1})
        EXPECT_FALSE(Repository.GetStrain(id, strain)) << id;
    for (const SQLiteCall call : {SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step})
    {
        const CallFailure failure(call, 1, SQLITE_IOERR);
        EXPECT_FALSE(Repository.GetStrain(1, strain));
        EXPECT_TRUE(failure.Happened());
    }
    EXPECT_EQ(strain, Full("Before"));
}

TEST_F(StrainTest, RowIDsAndWeeksOfEverySizeAreKept)
{
    for (const std::int64_t id :
         {std::numeric_limits<std::int64_t>::min(), std::int64_t{-1}, std::numeric_limits<std::int64_t>::max()})
        for (const int weeks : {INT_MIN, INT_MAX})
        {
            NewStrain("Genovese");
            RunSQL("UPDATE Strains SET ID=" + std::to_string(id) + ";");
            Strain strain = Full("Genovese");
            strain.ID = id;
            strain.FloweringWeeks = weeks;
            ASSERT_TRUE(Repository.UpdateStrain(strain));
            Strain found;
            EXPECT_TRUE(Repository.GetStrain(id, found));
            EXPECT_EQ(found, strain);
            StrainSummary summary;
            EXPECT_TRUE(Repository.GetStrainSummary(id, summary));
            EXPECT_EQ(summary.StrainID, id);
            EXPECT_TRUE(Repository.DeleteStrain(id));
            EXPECT_EQ(RowCount("Strains"), 0);
        }
}

TEST_F(StrainTest, AStrainWithoutANameIsRefusedAtOnce)
{
    Strain strain = NewStrain("Genovese");
    strain.Name.clear();
    const Strain before = strain;
    EXPECT_TRUE(RefusedWithoutACall([&] { return Repository.CreateStrain(strain); }));
    EXPECT_TRUE(RefusedWithoutACall([&] { return Repository.UpdateStrain(strain); }));
    EXPECT_EQ(strain, before);
}

TEST_F(StrainTest, AnUpdateWithoutARowIDIsRefusedAtOnce)
{
    NewStrain("Genovese");
    EXPECT_TRUE(RefusedWithoutACall([&] { return Repository.UpdateStrain(Full("Thai")); }));
}

TEST_F(StrainTest, ANameThatExistsIsRefused)
{
    NewStrain("Genovese");
    Strain second = Full("Genovese");
    second.ID = 77;
    EXPECT_FALSE(Repository.CreateStrain(second));
    EXPECT_STREQ(sqlite3_errmsg(Database.NativeHandle()), "UNIQUE constraint failed: Strains.Name");
    EXPECT_EQ(second.ID, 77);
    EXPECT_EQ(RowCount("Strains"), 1);

    Strain otherCase = Full("genovese");
    EXPECT_TRUE(Repository.CreateStrain(otherCase));
}

TEST_F(StrainTest, ARenameReachesEveryPlantOfTheStrainAndNoOther)
{
    for (const char* strain : {"Genovese", "Genovese", "genovese", "Genovese", "Thai", ""})
        NewPlant("A plant", strain);
    Strain genovese = Full("Classic");
    genovese.ID = 1;
    ASSERT_TRUE(Repository.UpdateStrain(genovese));
    EXPECT_EQ(StrainsOfPlants(), (Rows{{"Classic"}, {"Classic"}, {"genovese"}, {"Classic"}, {"Thai"}, {""}}));
    EXPECT_EQ(QueryRows("SELECT Name FROM Strains ORDER BY ID;"), (Rows{{"Classic"}, {"genovese"}, {"Thai"}}));
}

TEST_F(StrainTest, AChangeOfCaseIsARename)
{
    NewPlant("A plant", "Genovese");
    Strain genovese = Full("GENOVESE");
    genovese.ID = 1;
    ASSERT_TRUE(Repository.UpdateStrain(genovese));
    EXPECT_EQ(StrainsOfPlants(), (Rows{{"GENOVESE"}}));
}

TEST_F(StrainTest, ARenameToAnotherStrainsNameChangesNothing)
{
    NewPlant("A plant", "Genovese");
    NewPlant("Another plant", "Thai");
    const std::string before = Content();
    Strain genovese = Full("Thai");
    genovese.ID = 1;
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.UpdateStrain(genovese)); }),
              (Statements{GetName, SQL::Begin, UpdateStrain, SQL::Rollback}));
    EXPECT_EQ(Content(), before);
}

TEST_F(StrainTest, ARenameThatCannotReachThePlantsIsRolledBack)
{
    NewPlant("A plant", "Genovese");
    Strain genovese = Full("Classic");
    genovese.ID = 1;
    const std::string before = Content();
    const CallFailure failure(SQLiteCall::Step, 1, SQLITE_FULL, "UPDATE Plants");
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.UpdateStrain(genovese)); }),
              (Statements{GetName, SQL::Begin, UpdateStrain, Rename, SQL::Rollback}));
    EXPECT_EQ(Content(), before);
}

TEST_F(StrainTest, UpdateOfAnUnknownStrainEndsAtTheLookup)
{
    NewStrain("Genovese");
    Strain unknown = Full("Thai");
    unknown.ID = 2;
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.UpdateStrain(unknown)); }), (Statements{GetName}));
    EXPECT_EQ(QueryRows("SELECT Name FROM Strains;"), (Rows{{"Genovese"}}));
}

TEST_F(StrainTest, UpdateWhoseLookupFailsEndsThere)
{
    Strain genovese = NewStrain("Genovese");
    genovese.Name = "Thai";
    for (const SQLiteCall call : {SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step})
    {
        const CallFailure failure(call, 1, SQLITE_IOERR);
        EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.UpdateStrain(genovese)); }), (Statements{GetName}));
    }
}

TEST_F(StrainTest, AStrainInUseIsKept)
{
    Plant plant = NewPlant("A plant", "Genovese");
    NewStrain("Thai");
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.DeleteStrain(1)); }), (Statements{InUse}));
    EXPECT_EQ(RowCount("Strains"), 2);

    plant.Strain = "Thai";
    ASSERT_TRUE(Repository.UpdatePlant(plant));
    EXPECT_TRUE(Repository.DeleteStrain(1));
    EXPECT_EQ(QueryRows("SELECT Name FROM Strains;"), (Rows{{"Thai"}}));
}

TEST_F(StrainTest, APlantOfAnotherCaseDoesNotKeepAStrain)
{
    NewStrain("Genovese");
    NewPlant("A plant", "genovese");
    EXPECT_TRUE(Repository.DeleteStrain(1));
    EXPECT_EQ(QueryRows("SELECT Name FROM Strains;"), (Rows{{"genovese"}}));
    EXPECT_EQ(StrainsOfPlants(), (Rows{{"genovese"}}));
}

TEST_F(StrainTest, DeleteOfAnUnknownStrainSucceeds)
{
    NewStrain("Genovese");
    NewPlant("Without a strain");
    const std::string before = Content();
    for (const std::int64_t id : {0, 2, -1})
        EXPECT_EQ(StatementsOf([&] { EXPECT_TRUE(Repository.DeleteStrain(id)) << id; }),
                  (Statements{InUse, DeleteStrain}));
    EXPECT_EQ(Content(), before);
}

TEST_F(StrainTest, DeleteGoesAheadWhenTheSearchForItsPlantsFails)
{
    for (const SQLiteCall call : {SQLiteCall::Bind, SQLiteCall::Step})
    {
        NewPlant("A plant", "Genovese");
        const CallFailure failure(call, 1, SQLITE_IOERR);
        EXPECT_EQ(StatementsOf([&] { EXPECT_TRUE(Repository.DeleteStrain(1)); }), (Statements{InUse, DeleteStrain}));
        EXPECT_TRUE(failure.Happened());
        EXPECT_EQ(RowCount("Strains"), 0);
    }
}

TEST_F(StrainTest, DeleteFailsWhenTheSearchForItsPlantsCannotBePrepared)
{
    NewStrain("Genovese");
    const CallFailure failure(SQLiteCall::Prepare, 1, SQLITE_NOMEM);
    EXPECT_EQ(StatementsOf([&] { EXPECT_FALSE(Repository.DeleteStrain(1)); }), (Statements{InUse}));
    EXPECT_EQ(RowCount("Strains"), 1);
}

class StrainSummaryTest : public StrainTest
{
  protected:
    StrainSummaryTest() { Genovese = NewStrain("Genovese"); }

    Plant Grown(PlantStage stage)
    {
        Plant plant = NewPlant("A plant", "Genovese");
        plant.Stage = stage;
        EXPECT_TRUE(Repository.UpdatePlant(plant));
        return plant;
    }

    void Harvested(double dryWeight, double quality)
    {
        Plant plant = Grown(PlantStage::Dry);
        HarvestRecord record;
        record.DryWeightG = dryWeight;
        record.QualityRating = quality;
        EXPECT_TRUE(Repository.SaveHarvestRecord(plant, record));
    }

    StrainSummary Summary()
    {
        StrainSummary summary = Stale();
        EXPECT_TRUE(Repository.GetStrainSummary(Genovese.ID, summary));
        return summary;
    }

    // A summary whose every field must be overwritten.
    static StrainSummary Stale()
    {
        return {.StrainID = 90,
                .StrainName = "Stale",
                .TotalPlants = 91,
                .Seed = 92,
                .Clone = 93,
                .Veg = 94,
                .Flower = 95,
                .Dry = 96,
                .Cure = 97,
                .Harvested = 98,
                .Archived = 99,
                .HarvestCount = 100,
                .AverageDryWeightG = 101,
                .AverageQuality = 102};
    }

    Strain Genovese;
};

TEST_F(StrainSummaryTest, TheSummaryOfAStrainWithoutPlantsIsZero)
{
    NewPlant("Of another strain", "genovese");
    StrainSummary expected;
    expected.StrainID = 1;
    expected.StrainName = "Genovese";
    EXPECT_EQ(Summary(), expected);
}

TEST_F(StrainSummaryTest, TheSummaryCountsThePlantsOfEachStage)
{
    for (int stage = 0; stage < 8; ++stage)
        for (int plant = 0; plant <= stage; ++plant)
            Grown(static_cast<PlantStage>(stage));
    for (const char* strain : {"genovese", "", "Thai"})
        NewPlant("Of another strain", strain);
    EXPECT_EQ(Summary(), (StrainSummary{.StrainID = 1,
                                        .StrainName = "Genovese",
                                        .TotalPlants = 36,
                                        .Seed = 1,
                                        .Clone = 2,
                                        .Veg = 3,
                                        .Flower = 4,
                                        .Dry = 5,
                                        .Cure = 6,
                                        .Harvested = 7,
                                        .Archived = 8,
                                        .HarvestCount = 0,
                                        .AverageDryWeightG = 0,
                                        .AverageQuality = 0}));
}

TEST_F(StrainSummaryTest, TheSummaryAveragesTheEnteredValues)
{
    Harvested(100, 0);
    Harvested(0, 8);
    Harvested(50.5, 9);
    Harvested(0, 0);
    const StrainSummary summary = Summary();
    EXPECT_EQ(summary.TotalPlants, 4);
    EXPECT_EQ(summary.Harvested, 4);
    EXPECT_EQ(summary.HarvestCount, 4);
    EXPECT_EQ(summary.AverageDryWeightG, 75.25);
    EXPECT_EQ(summary.AverageQuality, 8.5);
}

TEST_F(StrainSummaryTest, TheSummaryCountsAHarvestThatWasNotWeighed)
{
    Grown(PlantStage::Veg);
    Grown(PlantStage::Veg);
    Harvested(0, 8);
    StrainSummary expected;
    expected.StrainID = 1;
    expected.StrainName = "Genovese";
    expected.TotalPlants = 3;
    expected.Veg = 2;
    expected.Harvested = 1;
    expected.HarvestCount = 1;
    expected.AverageQuality = 8;
    EXPECT_EQ(Summary(), expected);
}

TEST_F(StrainSummaryTest, TheSummaryCountsStagesAndHarvestsIndependently)
{
    Grown(PlantStage::Harvested);
    Harvested(10, 5);
    RunSQL("UPDATE Plants SET Stage='Archived' WHERE ID=2;");
    const StrainSummary summary = Summary();
    EXPECT_EQ(summary.Harvested, 1);
    EXPECT_EQ(summary.Archived, 1);
    EXPECT_EQ(summary.HarvestCount, 1);
}

TEST_F(StrainSummaryTest, TheSummaryOfAnUnknownStrainIsFalseAndEmpty)
{
    StrainSummary summary = Stale();
    EXPECT_FALSE(Repository.GetStrainSummary(2, summary));
    EXPECT_EQ(summary, StrainSummary());
}

TEST_F(StrainSummaryTest, AFailedSummaryIsEmpty)
{
    for (const SQLiteCall call : {SQLiteCall::Prepare, SQLiteCall::Bind, SQLiteCall::Step})
    {
        StrainSummary summary = Stale();
        const CallFailure failure(call, 1, SQLITE_IOERR);
        EXPECT_FALSE(Repository.GetStrainSummary(1, summary));
        EXPECT_TRUE(failure.Happened());
        EXPECT_EQ(summary, StrainSummary());
    }
}

} // namespace
