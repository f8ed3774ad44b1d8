// Tests of what a page reads: the periods that it sums by, the stages and the families.

#include "report/family_trees.h"
#include "report/page_data.h"
#include "report/report_page.h"

#include <string>
#include <tuple>
#include <vector>

using namespace plant_report;
using namespace support;

namespace
{

class PageDataTest : public ReportTest
{
  protected:
    PageData Data() { return ReadPageData(Database, Options); }

    // Waters a plant on each of so many days.
    void Water(const Plant& plant, int days)
    {
        RunSQL("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i+1<" + std::to_string(days) +
               ") INSERT INTO PlantCareEntries(PlantUUID,CareDate,Action,AmountMl) SELECT '" + plant.UUID +
               "',date('2020-01-01','+'||i||' days'),'Water',100 FROM n;");
    }

    // "Basil 0, Cutting 1": the names and generations.
    std::string Trees()
    {
        std::string text;
        for (const PlantRelative& relative : Data().Lineage)
            text += (text.empty() ? "" : ", ") + relative.Name + " " + std::to_string(relative.Generation);
        return text;
    }
};

TEST_F(PageDataTest, AmountsAreSummedByDayThenWeekThenMonth)
{
    const Plant basil = Sown("Basil");
    Water(basil, 32); // 31 days between the first and the last
    EXPECT_EQ(Data().AmountPeriod, PlantPeriod::Day);
    EXPECT_EQ(Data().Waterings.size(), 32U);
    EXPECT_TRUE(Data().Feedings.empty());
    Care(basil, "2020-02-02", PlantCareAction::Feed);
    EXPECT_EQ(Data().AmountPeriod, PlantPeriod::Week);
    EXPECT_EQ(Data().Feedings.at(0).Period, "2020-01-27");
    Care(basil, "2023-01-03");
    EXPECT_EQ(Data().AmountPeriod, PlantPeriod::Week);
    Care(basil, "2023-01-04");
    EXPECT_EQ(Data().AmountPeriod, PlantPeriod::Month);
    EXPECT_EQ(Data().Waterings.at(0).Period, "2020-01");
}

TEST_F(PageDataTest, OnlyCareBetweenTheDatesIsSummed)
{
    const Plant basil = Sown("Basil");
    for (const char* date : {"2025-03-01", "2025-03-02", "2025-03-03", "2025-03-04"})
    {
        Care(basil, date, PlantCareAction::Water, 500, 1.5);
        Care(basil, date, PlantCareAction::Feed);
    }
    Options.From = "2025-03-02";
    Options.To = "2025-03-03";
    const PageData data = Data();
    for (const std::vector<PlantTotal>* totals : {&data.Measurements, &data.Waterings, &data.Feedings})
    {
        ASSERT_EQ(totals->size(), 2U);
        EXPECT_EQ(totals->at(0).Period, "2025-03-02");
        EXPECT_EQ(totals->at(1).Period, "2025-03-03");
    }
}

TEST_F(PageDataTest, MeasurementsAreSummedUntilTheyCanBeRead)
{
    const Plant basil = Sown("Basil");
    Sown("Mint");
    Water(basil, 201); // 200 days of two plants
    EXPECT_EQ(Data().MeasurementPeriod, PlantPeriod::Day);
    Care(basil, "2020-07-20");
    EXPECT_EQ(Data().MeasurementPeriod, PlantPeriod::Week);
    Care(basil, "2023-11-01");
    EXPECT_EQ(Data().MeasurementPeriod, PlantPeriod::Week);
    Care(basil, "2023-11-02");
    EXPECT_EQ(Data().MeasurementPeriod, PlantPeriod::Month);
}

TEST_F(PageDataTest, MeasurementsOfManyPlantsAreSummedByStrain)
{
    for (int i = 1; i <= 12; ++i)
        Care(Sown("P" + std::to_string(i), i % 2 == 0 ? "Even" : "Odd"), "2025-03-02");
    EXPECT_EQ(Data().Measurements.size(), 12U);
    Care(Sown("P13", "Odd"), "2025-03-02");
    const PageData data = Data();
    ASSERT_EQ(data.Measurements.size(), 2U);
    EXPECT_EQ(data.Measurements[0].Name, "Even");
    EXPECT_EQ(data.Measurements[1].Waterings, 7);
}

TEST_F(PageDataTest, TheStrainsThatAreDrawnDecideTheirPeriod)
{
    for (int i = 1; i <= 13; ++i)
        Sown("P" + std::to_string(i), i % 2 == 0 ? "Even" : "Odd");
    Water(Sown("Q", "Odd"), 201); // 200 days of two strains
    EXPECT_EQ(Data().MeasurementPeriod, PlantPeriod::Day);
    Sown("R", "Third");
    EXPECT_EQ(Data().MeasurementPeriod, PlantPeriod::Week);
}

TEST_F(PageDataTest, TheEndOfAPlantIsItsLastCare)
{
    Plant basil = Sown("Basil");
    basil.Stage = PlantStage::Archived;
    ASSERT_TRUE(Repository.UpdatePlant(basil));
    Care(basil, "2025-05-01");
    Care(basil, "2025-04-01", PlantCareAction::Feed);
    EXPECT_EQ(Data().Stages.at(0).To, "2025-05-01");
    Care(basil, "2025-06-01", PlantCareAction::Feed);
    EXPECT_EQ(Data().Stages.at(0).To, "2025-06-01");
}

TEST_F(PageDataTest, AGrowingPlantIsDrawnUntilTodayOrTheLastDate)
{
    Sown("Basil");
    EXPECT_EQ(Data().Stages.at(0).To, "2025-12-31");
    Options.To = "2025-06-01";
    EXPECT_EQ(Data().Stages.at(0).To, "2025-06-01");
    Options.To = "2026-06-01";
    EXPECT_EQ(Data().Stages.at(0).To, "2025-12-31");
    Options.To = "2025-06";
    EXPECT_EQ(Data().Stages.at(0).To, "2025-06-30");
    Options.To = "2025";
    EXPECT_EQ(Data().Stages.at(0).To, "2025-12-31");
}

TEST_F(PageDataTest, ADateWithoutADayIsTheWholeYearOrMonth)
{
    const auto stage = [this](const char* from, const char* to)
    {
        Options.From = from;
        Options.To = to;
        const PageData data = Data();
        return data.Stages.empty() ? std::string() : data.Stages.at(0).From + " " + data.Stages.at(0).To;
    };
    Sown("Basil");
    EXPECT_EQ(stage("", ""), "2025-03-01 2025-12-31");
    EXPECT_EQ(stage("2025", "2025"), "2025-03-01 2025-12-31");
    EXPECT_EQ(stage("2025-04", "2025-04"), "2025-04-01 2025-04-30");
    EXPECT_EQ(stage("2025-04-02", "2025-04-03"), "2025-04-02 2025-04-03");
    EXPECT_EQ(stage("spring", "2025-04-03"), "2025-03-01 2025-04-03");
    EXPECT_EQ(stage("2026", ""), "");
    EXPECT_EQ(stage("2025-12-31", ""), "2025-12-31 2025-12-31");
    EXPECT_EQ(stage("", "2025-03-01"), "2025-03-01 2025-03-01");
    EXPECT_EQ(stage("", "2025-02"), "");
    EXPECT_EQ(stage("", "2024"), "");
}

TEST_F(PageDataTest, OnlyPlantsOfEverySetAreRead)
{
    const auto names = [this]
    {
        std::string text;
        for (const Plant& plant : Data().Plants)
            text += plant.Name + " ";
        return text;
    };
    for (const auto& [name, strain, tent] :
         {std::tuple("A", "Thai", "South"), {"B", "Thai", "North"}, {"C", "Lime", "South"}})
    {
        Plant plant = Sown(name, strain);
        plant.Tent = tent;
        ASSERT_TRUE(Repository.UpdatePlant(plant));
    }
    EXPECT_EQ(names(), "C A B ");
    Options.Plants.Tents = {"South"};
    EXPECT_EQ(names(), "C A ");
    Options.Plants.Strains = {"Thai"};
    EXPECT_EQ(names(), "A ");
    Options.Plants.Stages = {PlantStage::Flower};
    EXPECT_EQ(names(), "");
}

TEST_F(PageDataTest, FamiliesAreTreesWithSiblingsByName)
{
    const Plant basil = NewPlant("Basil");
    const Plant mint = NewPlant("Mint");
    const Plant second = NewPlant("B2", "", basil.UUID);
    const Plant first = NewPlant("B1", "", basil.UUID);
    const Plant grandchild = NewPlant("B11", "", first.UUID);
    NewPlant("M1", "", mint.UUID);
    NewPlant("Alone");
    EXPECT_EQ(Trees(), "Basil 0, B1 1, B11 2, B2 1, Mint 0, M1 1");
    Options.Plants.UUIDs = {first.UUID, second.UUID};
    EXPECT_EQ(Trees(), "");
    Options.Plants.UUIDs = {first.UUID};
    EXPECT_EQ(Trees(), "Basil 0, B1 1, B11 2");
    Options.Plants.UUIDs = {basil.UUID};
    EXPECT_EQ(Trees(), "Basil 0, B1 1, B11 2, B2 1");
    Options.Plants.UUIDs = {grandchild.UUID};
    EXPECT_EQ(Trees(), "Basil 0, B1 1, B11 2");
    Options.Plants.UUIDs = {first.UUID, grandchild.UUID};
    EXPECT_EQ(Trees(), "B1 0, B11 1") << "their mother is not among the plants";
}

TEST_F(PageDataTest, APlantWithoutFamilyHasNoTree)
{
    NewPlant("Alone");
    EXPECT_EQ(Trees(), "");
}

TEST_F(PageDataTest, ACycleHasNoTree)
{
    const Plant basil = NewPlant("Basil");
    const Plant mint = NewPlant("Mint", "", basil.UUID);
    RunSQL("UPDATE Plants SET MotherPlantID=" + std::to_string(mint.ID) + " WHERE ID=" + std::to_string(basil.ID) +
           ";");
    EXPECT_EQ(Trees(), "");
}

TEST_F(PageDataTest, RelativesHaveTheirHarvests)
{
    Plant basil = NewPlant("Basil");
    NewPlant("Cutting", "", basil.UUID);
    HarvestRecord harvest;
    harvest.DryWeightG = 50;
    ASSERT_TRUE(Repository.SaveHarvestRecord(basil, harvest));
    const std::vector<PlantRelative> trees = Data().Lineage;
    ASSERT_TRUE(trees.at(0).Harvest);
    EXPECT_EQ(trees.at(0).Harvest->DryWeightG, 50);
    EXPECT_FALSE(trees.at(1).Harvest);
}

TEST_F(PageDataTest, HealthIsReadOldestFirst)
{
    const Plant basil = NewPlant("Basil");
    const Plant mint = NewPlant("Mint");
    for (const auto& [plant, date] : {std::pair(basil, "2025-04-01"), {mint, "2025-03-01"}, {basil, "2025-05-01"}})
    {
        PlantHealthObservation observation;
        observation.PlantUUID = plant.UUID;
        observation.ObservationDate = date;
        observation.Issue = "Mites";
        ASSERT_TRUE(Repository.CreatePlantHealthObservation(observation));
    }
    std::string dates;
    for (const PlantHealth& health : Data().Health)
        dates += health.PlantName + health.Observation.ObservationDate.substr(4) + " ";
    EXPECT_EQ(dates, "Mint-03-01 Basil-04-01 Basil-05-01 ");
}

} // namespace
