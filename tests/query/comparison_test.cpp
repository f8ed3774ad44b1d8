#include "query/query_test.h"

#include <limits>

using namespace support;

namespace
{

class ComparisonTest : public QueryTest
{
  protected:
    using Comparisons = std::vector<PlantComparison>;

    Plant PlantOf(const std::string& strain, const std::string& seedDate = {})
    {
        Plant plant = NewPlant("Basil", strain);
        plant.SeedDate = seedDate;
        EXPECT_TRUE(Repository.UpdatePlant(plant));
        return plant;
    }

    void Harvest(Plant plant, const std::string& date, double wet = 0, double dry = 0, double quality = 0)
    {
        HarvestRecord record;
        record.HarvestDate = date;
        record.WetWeightG = wet;
        record.DryWeightG = dry;
        record.QualityRating = quality;
        EXPECT_TRUE(Repository.SaveHarvestRecord(plant, record));
    }

    void Water(const Plant& plant, double ml)
    {
        PlantCareEntry entry;
        entry.CareDate = "2025-06-01";
        entry.AmountMl = ml;
        Stored(entry, plant, &PlantRepository::CreatePlantCareEntry);
    }

    PlantComparison CompareAll()
    {
        return AnswerOf<Comparisons>(QueryPlantComparison, std::vector<PlantComparedSet>(1)).at(0);
    }
};

void ExpectFigures(const PlantFigures& figures, const PlantFigures& expected)
{
    EXPECT_EQ(Printed(figures), Printed(expected));
}

TEST_F(ComparisonTest, ASetCanBeLimitedToTheHarvestsOfATime)
{
    Plant unweighed = PlantOf("Mint"); // harvested without a record
    unweighed.HarvestDate = "2025-07-01 08:00";
    EXPECT_TRUE(Repository.UpdatePlant(unweighed));
    Harvest(PlantOf("Mint"), "2025-06-30");
    PlantOf("Mint"); // grows
    const auto number = [&](const std::string& from, const std::string& to)
    {
        const PlantComparedSet set = {"", {}, from, to};
        return AnswerOf<Comparisons>(QueryPlantComparison, std::vector<PlantComparedSet>{set}).at(0).Plants;
    };
    EXPECT_EQ(number("", ""), 3);
    EXPECT_EQ(number("2025-06-30", ""), 2);
    EXPECT_EQ(number("2025-07", ""), 1);
    EXPECT_EQ(number("", "2025-07-01"), 2);
    EXPECT_EQ(number("", "2025-06"), 1);
    EXPECT_EQ(number("2025-07-02", ""), 0);
    EXPECT_EQ(number("2025", "2025"), 2);
}

TEST_F(ComparisonTest, EachSetHasAComparisonInTheOrderGiven)
{
    EXPECT_TRUE(AnswerOf<Comparisons>(QueryPlantComparison, std::vector<PlantComparedSet>{}).empty());
    const Plant basil = PlantOf("Genovese");
    PlantOf("Mint");
    Harvest(basil, "2025-06-01");
    const std::vector<PlantComparedSet> sets = {{"m", {{}, {"Mint"}, {}, {}}},
                                                {"b", {{}, {"Genovese"}, {}, {}}},
                                                {"", {}},
                                                {"none", {{"unknown"}, {}, {}, {}}},
                                                {"b", {{basil.UUID}, {}, {}, {PlantStage::Harvested}}}};
    const Comparisons comparisons = AnswerOf<Comparisons>(QueryPlantComparison, sets);
    std::string text;
    for (const PlantComparison& comparison : comparisons)
        text += comparison.Name + ' ' + std::to_string(comparison.Plants) + ' ' + std::to_string(comparison.Harvested) +
                '\n';
    EXPECT_EQ(text, "m 1 0\nb 1 1\n 2 1\nnone 0 0\nb 1 1\n");
}

TEST_F(ComparisonTest, WeightsAndQualityCountIfTheyAreAboveZero)
{
    Harvest(PlantOf("A"), "2025-06-01", 100, 20, 8);
    Harvest(PlantOf("A"), "2025-06-01", 50, 15, 0);
    Harvest(PlantOf("A"), "2025-06-01", -1, 0, -2);
    Harvest(PlantOf("A"), "2025-06-01", std::numeric_limits<double>::infinity(),
            std::numeric_limits<double>::infinity(), 9);
    const PlantComparison comparison = CompareAll();
    EXPECT_EQ(comparison.Harvested, 4);
    ExpectFigures(comparison.WetWeightG, {2, 75, 50, 100});
    ExpectFigures(comparison.DryWeightG, {2, 17.5, 15, 20});
    ExpectFigures(comparison.Quality, {2, 8.5, 8, 9});
    ExpectFigures(comparison.DryingLossPercent, {2, 75, 70, 80});
}

TEST_F(ComparisonTest, TheLossNeedsBothWeights)
{
    Harvest(PlantOf("A"), "2025-06-01", 100, 0);
    Harvest(PlantOf("A"), "2025-06-01", 0, 20);
    ExpectFigures(CompareAll().DryingLossPercent, {});
    Harvest(PlantOf("A"), "2025-06-01", 20, 20);
    Harvest(PlantOf("A"), "2025-06-01", 20, 25);
    ExpectFigures(CompareAll().DryingLossPercent, {2, -12.5, -25, 0});
}

TEST_F(ComparisonTest, DaysAreCountedFromEachDateToTheHarvest)
{
    Plant plant = PlantOf("A", "2025-01-01");
    plant.CloneDate = "2025-01-02";
    plant.TransplantDate = "2025-01-03";
    plant.FlipDate = "2025-01-04";
    EXPECT_TRUE(Repository.UpdatePlant(plant));
    Harvest(plant, "2025-01-31");
    PlantOf("A", "2025-01-01"); // not harvested
    const PlantComparison comparison = CompareAll();
    ExpectFigures(comparison.DaysFromSeed, {1, 30, 30, 30});
    ExpectFigures(comparison.DaysFromClone, {1, 29, 29, 29});
    ExpectFigures(comparison.DaysFromTransplant, {1, 28, 28, 28});
    ExpectFigures(comparison.DaysFromFlip, {1, 27, 27, 27});
}

TEST_F(ComparisonTest, ASpanNeedsTwoDaysInTheirOrder)
{
    Harvest(PlantOf("A", "2025-01-01"), "2025-01-01");
    Harvest(PlantOf("A", "2025-01-01"), "2025-01-05");
    Harvest(PlantOf("A", "2025-01-06"), "2025-01-05");
    Harvest(PlantOf("A", "2025-01"), "2025-01-05");
    Harvest(PlantOf("A", ""), "2025-01-05");
    Harvest(PlantOf("A", "2025-01-01"), "zz");
    ExpectFigures(CompareAll().DaysFromSeed, {2, 2, 0, 4});
}

TEST_F(ComparisonTest, TheHarvestIsThatOfTheRecordElseThePlants)
{
    Plant plant = PlantOf("A", "2025-01-01");
    plant.HarvestDate = "2025-01-11";
    EXPECT_TRUE(Repository.UpdatePlant(plant));
    ExpectFigures(CompareAll().DaysFromSeed, {1, 10, 10, 10});
    EXPECT_EQ(CompareAll().Harvested, 0);
    Harvest(plant, "2025-01-06");
    EXPECT_TRUE(Repository.UpdatePlant(plant)); // its own date again
    ExpectFigures(CompareAll().DaysFromSeed, {1, 5, 5, 5});
    RunSQL("UPDATE HarvestRecords SET HarvestDate='';");
    ExpectFigures(CompareAll().DaysFromSeed, {1, 10, 10, 10});
    RunSQL("UPDATE HarvestRecords SET HarvestDate='zz';");
    ExpectFigures(CompareAll().DaysFromSeed, {});
}

TEST_F(ComparisonTest, CareIsDividedByTheDryWeight)
{
    const Plant first = PlantOf("A");
    Water(first, 300);
    Water(first, 700);
    Harvest(first, "2025-06-01", 0, 10);
    const Plant second = PlantOf("A");
    Water(second, 100);
    Harvest(second, "2025-06-01", 0, 2);
    Harvest(PlantOf("A"), "2025-06-01", 0, 10); // without care
    const Plant third = PlantOf("A");
    Water(third, 100);
    Harvest(third, "2025-06-01", 50, 0);
    Water(PlantOf("A"), 100);
    ExpectFigures(CompareAll().MlPerGram, {2, 75, 50, 100});
    const std::vector<PlantComparedSet> twice(2);
    for (const PlantComparison& comparison : AnswerOf<Comparisons>(QueryPlantComparison, twice))
        ExpectFigures(comparison.MlPerGram, {2, 75, 50, 100});
}

TEST_F(ComparisonTest, AnArgumentMayBeATextOfTheOldAnswer)
{
    Comparisons out(1);
    out[0].Name = "every plant";
    PlantOf("A");
    const std::vector<PlantComparedSet> sets = {{out[0].Name, {}}};
    ASSERT_TRUE(QueryPlantComparison(Database, sets, out));
    EXPECT_EQ(out.at(0).Name, "every plant");
    EXPECT_EQ(out.at(0).Plants, 1);
}

} // namespace
