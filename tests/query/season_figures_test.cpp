// The answers about the season of tomatoes in examples/data/tomato-2019. The figures were counted in the CSV files, or
// computed from them in another language. ORIGIN.md in that directory describes how a row becomes a record. The
// comments name the file and the column of each figure.

#include "query/query_test.h"
#include "support/program.h"

#include <map>

using namespace support;

namespace
{

using Activities = std::vector<PlantActivity>;

class SeasonFiguresTest : public QueryTest
{
  protected:
    SeasonFiguresTest()
    {
        Database.Close();
        const std::string path = Scratch.File("season.db");
        EXPECT_EQ(RunProgram({PLANTJOURNAL_GREENHOUSE_SEASON, path}).Status, 0);
        EXPECT_TRUE(Database.Open(path));
        EXPECT_TRUE(Repository.ListPlants(Plants));
    }

    std::string UUIDOf(const std::string& name) const
    {
        for (const Plant& plant : Plants)
            if (plant.Name == name)
                return plant.UUID;
        return {};
    }

    static std::map<std::string, int> Kinds(const Activities& activities)
    {
        std::map<std::string, int> kinds;
        for (const PlantActivity& activity : activities)
            ++kinds[activity.Kind];
        return kinds;
    }

    PlantStatus StatusOf(const std::string& name, const std::string& today)
    {
        PlantSet set;
        set.UUIDs = {UUIDOf(name)};
        return AnswerOf<std::vector<PlantStatus>>(QueryPlantStatus, set, today).at(0);
    }

    static void ExpectFigures(const PlantFigures& figures, std::int64_t number, double mean, double least, double most)
    {
        constexpr double rounding = 0.00005; // the expected figures have four digits after the decimal point
        EXPECT_EQ(figures.Number, number);
        EXPECT_NEAR(figures.Mean, mean, rounding);
        EXPECT_NEAR(figures.Least, least, rounding);
        EXPECT_NEAR(figures.Most, most, rounding);
    }

    std::vector<Plant> Plants;
};

// Production.csv has 24 rows. Resources.csv has 164 rows with irrigation in column 6, 19 of them before the first row
// of LabAnalysis.csv, 2020-01-06. CropParameters.csv has 19 rows with a measurement, TomQuality.csv has 8.
TEST_F(SeasonFiguresTest, TheTimelineHasARecordForEachRowOfTheFiles)
{
    const Activities timeline = AnswerOf<Activities>(QueryPlantTimeline, UUIDOf("Reference"));
    EXPECT_EQ(timeline.size(), 217U);
    EXPECT_EQ(Kinds(timeline), (std::map<std::string, int>{{"Feed", 145},
                                                           {"Harvest", 25}, // 24 rows and the harvest record
                                                           {"Milestone", 8},
                                                           {"Observation", 19},
                                                           {"Transplant", 1}, // the first day of Resources.csv
                                                           {"Water", 19}}));
    // The last day is 43980 in all files. The first row of Production.csv is dated 43510, a year too early.
    EXPECT_EQ(timeline.front().Date, "2020-05-29");
    EXPECT_EQ(timeline.back().Date, "2019-02-14");
    EXPECT_EQ(timeline.back().Text, "Class A 0.32 kg/m2, class B 0.0000 kg/m2");
    EXPECT_EQ(timeline[timeline.size() - 2].Kind, "Transplant");
    EXPECT_EQ(timeline[timeline.size() - 3].Date, "2019-12-16") << "watered on the day of transplanting";
}

// Rows of the six Resources.csv and CropParameters.csv with the day numbers 43864 to 43870.
TEST_F(SeasonFiguresTest, AWeekHasAFeedingADayAndOneObservation)
{
    PlantActivityFilter week;
    week.From = "2020-02-03";
    week.To = "2020-02-09";
    EXPECT_EQ(Kinds(AnswerOf<Activities>(QueryPlantActivity, week)),
              (std::map<std::string, int>{{"Feed", 42}, {"Observation", 6}}));
    week.Plants.UUIDs = {UUIDOf("Digilog")};
    week.AtMost = 3;
    EXPECT_EQ(AnswerOf<Activities>(QueryPlantActivity, week).back().Date, "2020-02-07");
    PlantActivityFilter brix; // a milestone for each of the 8 rows of the six TomQuality.csv
    brix.Text = "bRIX";
    EXPECT_EQ(Kinds(AnswerOf<Activities>(QueryPlantActivity, brix)), (std::map<std::string, int>{{"Milestone", 48}}));
}

TEST_F(SeasonFiguresTest, TheStatusAfterTheHarvestIsThatOfTheLastDay)
{
    const PlantStatus status = StatusOf("IUACAAS", "2020-06-09");
    EXPECT_EQ(status.StageDate, "2020-05-29"); // the last row of Production.csv
    EXPECT_EQ(status.StageDays, 11);           // 2 days in May, 9 in June
    EXPECT_EQ(status.AgeDays, std::nullopt) << "no date of sowing or cutting is known";
    EXPECT_EQ(status.LastFeedDate, "2020-05-29");
    EXPECT_EQ(status.LastWaterDate, "2020-01-05") << "the day before the first row of LabAnalysis.csv";
    EXPECT_EQ(status.CareGapDays, 1);
    EXPECT_EQ(status.DueDate, "") << "a harvested plant";
}

// The first days with irrigation in Resources.csv: AICU 43815, 43819, 43820; Digilog 43819, 43822, 43823;
// Reference 43815, 43818, 43819.
TEST_F(SeasonFiguresTest, TheRhythmOfTheFirstDaysIsTheMedianGap)
{
    RunSQL("UPDATE Plants SET Stage='Veg',HarvestDate='',SeedDate='2019-12-01';");
    const PlantStatus aicu = StatusOf("AICU", "2019-12-21");
    EXPECT_EQ(aicu.CareGapDays, 2.5); // gaps of 4 days and 1 day
    EXPECT_EQ(aicu.LastWaterDate, "2019-12-21");
    EXPECT_EQ(aicu.DueDate, "2019-12-24"); // 3 days later
    EXPECT_EQ(aicu.LastFeedDate, "");
    EXPECT_EQ(aicu.AgeDays, 20);
    const PlantStatus digilog = StatusOf("Digilog", "2019-12-24");
    EXPECT_EQ(digilog.CareGapDays, 2); // 3 days and 1 day
    EXPECT_EQ(digilog.DueDate, "2019-12-26");
    EXPECT_EQ(StatusOf("Reference", "2019-12-20").DueDate, "2019-12-22"); // 3 days and 1 day
    EXPECT_EQ(StatusOf("Digilog", "2019-12-22").CareGapDays, std::nullopt) << "one day of care";
}

// Columns 6 and 7 of Resources.csv, each times 1000 and divided by column 6 of CropParameters.csv; columns 2 and 3 of
// LabAnalysis.csv for the days from its first row on.
TEST_F(SeasonFiguresTest, TheTotalsOfTheMonthsAreThoseOfTheFiles)
{
    struct Month
    {
        const char* Period;
        std::int64_t Feedings, Waterings;
        double AmountMl, RunoffMl, EC, PH;
    };
    constexpr Month months[] = {{"2019-12", 0, 71, 54410.583194, 16319.108669, 0, 0},
                                {"2020-01", 156, 30, 274975.278388, 76927.910977, 4.165385, 5.170513},
                                {"2020-02", 174, 0, 407635.916972, 146014.102564, 3.818391, 5.000575},
                                {"2020-03", 186, 0, 570981.647131, 204569.330669, 3.727419, 5.248387},
                                {"2020-04", 180, 0, 772531.783883, 319823.931624, 3.275556, 5.698889},
                                {"2020-05", 174, 0, 611033.304249, 211516.544567, 3.455172, 5.662069}};
    PlantTotalFilter filter;
    filter.Group = PlantTotalGroup::Strain;
    filter.Period = PlantPeriod::Month;
    const auto totals = AnswerOf<std::vector<PlantTotal>>(QueryPlantTotals, filter);
    ASSERT_EQ(totals.size(), std::size(months));
    for (std::size_t i = 0; i < totals.size(); ++i)
    {
        SCOPED_TRACE(months[i].Period);
        EXPECT_EQ(totals[i].Period, months[i].Period);
        EXPECT_EQ(totals[i].Key, "Axiany");
        EXPECT_EQ(totals[i].Feedings, months[i].Feedings);
        EXPECT_EQ(totals[i].Waterings, months[i].Waterings);
        EXPECT_NEAR(totals[i].AmountMl, months[i].AmountMl, 1e-6);
        EXPECT_NEAR(totals[i].RunoffMl, months[i].RunoffMl, 1e-6);
        EXPECT_EQ(totals[i].EC.Number, months[i].Feedings) << "0 means not entered";
        EXPECT_NEAR(totals[i].EC.Mean, months[i].EC, 1e-6);
        EXPECT_NEAR(totals[i].PH.Mean, months[i].PH, 1e-6);
    }
    ExpectFigures(totals[1].EC, 156, 4.1654, 3.7, 5.1);
    ExpectFigures(totals[4].PH, 180, 5.6989, 4.3, 6.4);
}

TEST_F(SeasonFiguresTest, TheTotalsOfAPlantAreThoseOfItsFile)
{
    PlantTotalFilter filter;
    filter.Group = PlantTotalGroup::Plant;
    const auto totals = AnswerOf<std::vector<PlantTotal>>(QueryPlantTotals, filter);
    ASSERT_EQ(totals.size(), 6U);
    EXPECT_EQ(totals.front().Name, "AICU");
    EXPECT_NEAR(totals.front().AmountMl, 307'500, 1e-6); // 553.5 litres a square metre, 1.8 plants
    EXPECT_EQ(totals.front().Waterings, 18);
    EXPECT_EQ(totals.front().Feedings, 145);
    filter.Group = PlantTotalGroup::Product;
    const auto products = AnswerOf<std::vector<PlantTotal>>(QueryPlantTotals, filter);
    ASSERT_EQ(products.size(), 2U);
    EXPECT_EQ(products[0].Waterings, 101) << "without a product";
    EXPECT_EQ(products[1].Key, "Nutrient solution");
    EXPECT_EQ(products[1].Feedings, 870);
}

// Wet weight: the sum of columns 2 and 3 of Production.csv times 1000, divided by the plants a square metre. Dry
// weight: that times the mean of column 8 of TomQuality.csv. Quality: the mean of column 2 of TomQuality.csv.
TEST_F(SeasonFiguresTest, TheComparisonIsThatOfTheHarvests)
{
    const std::vector<PlantComparedSet> sets = {{"Axiany", {{}, {"Axiany"}, {}, {}}},
                                                {"AICU and Digilog", {{UUIDOf("AICU"), UUIDOf("Digilog")}, {}, {}, {}}},
                                                {"Roma", {{}, {"Roma"}, {}, {}}}};
    const auto compared = AnswerOf<std::vector<PlantComparison>>(QueryPlantComparison, sets);
    ASSERT_EQ(compared.size(), 3U);
    EXPECT_EQ(compared[0].Plants, 6);
    EXPECT_EQ(compared[0].Harvested, 6);
    ExpectFigures(compared[0].DaysFromTransplant, 6, 165, 165, 165); // 43815 to 43980
    ExpectFigures(compared[0].DaysFromSeed, 0, 0, 0, 0);
    ExpectFigures(compared[0].WetWeightG, 6, 8555.8432, 6911.3846, 10933.2462);
    ExpectFigures(compared[0].DryWeightG, 6, 777.4193, 625.2499, 1034.6495);
    ExpectFigures(compared[0].DryingLossPercent, 6, 90.9361, 90.5367, 91.0667);
    ExpectFigures(compared[0].Quality, 6, 7.6271, 7.4625, 7.8);
    ExpectFigures(compared[0].MlPerGram, 6, 579.2539, 450.2831, 710.7558);
    EXPECT_EQ(compared[1].Plants, 2);
    ExpectFigures(compared[1].DryWeightG, 2, 858.7766, 682.9037, 1034.6495);
    EXPECT_EQ(compared[2].Plants, 0);
}

TEST_F(SeasonFiguresTest, TheLineageHasTheHarvestsOfTheSeason)
{
    PlantLineage none;
    EXPECT_TRUE(QueryPlantLineage(Database, UUIDOf("AICU"), none));
    EXPECT_TRUE(none.Ancestors.empty() && none.Descendants.empty()) << "no plant of the season has a mother";
    RunSQL("UPDATE Plants SET MotherPlantID=(SELECT ID FROM Plants WHERE Name='AICU') WHERE Name='Digilog';");
    RunSQL("UPDATE Plants SET MotherPlantID=(SELECT ID FROM Plants WHERE Name='Digilog') WHERE Name='Reference';");
    PlantLineage lineage;
    EXPECT_TRUE(QueryPlantLineage(Database, UUIDOf("Digilog"), lineage));
    ASSERT_EQ(lineage.Ancestors.size(), 1U);
    EXPECT_EQ(lineage.Ancestors[0].Name, "AICU");
    EXPECT_NEAR(lineage.Ancestors[0].Harvest.value().WetWeightG, 7644.4444, 0.0001); // 13.76 kg and 1.8 plants
    ASSERT_EQ(lineage.Descendants.size(), 1U);
    EXPECT_EQ(lineage.Descendants[0].Name, "Reference");
    EXPECT_EQ(lineage.Descendants[0].Harvest.value().HarvestDate, "2020-05-29");
    EXPECT_NEAR(lineage.Descendants[0].Harvest.value().QualityRating, 7.4625, 1e-9); // the flavours add up to 597
}

TEST_F(SeasonFiguresTest, TheCalendarCountsTheRowsOfADay)
{
    std::map<std::string, std::map<std::string, std::int64_t>> days;
    std::int64_t all = 0;
    for (const auto& day : AnswerOf<std::vector<PlantCalendarDay>>(QueryPlantCalendar, PlantActivityFilter{}))
    {
        days[day.Date][day.Kind] = day.Number;
        all += day.Number;
    }
    EXPECT_EQ(all, 1'285); // 216, 214, 212, 212, 217 and 214 of the six plants
    using Counts = std::map<std::string, std::int64_t>;
    EXPECT_EQ(days["2019-12-16"], (Counts{{"Transplant", 6}, {"Water", 2}})); // only AICU and Reference irrigate
    EXPECT_EQ(days["2020-02-05"], (Counts{{"Feed", 6}, {"Observation", 6}}));
    EXPECT_EQ(days["2020-04-29"], (Counts{{"Feed", 6}, {"Harvest", 6}, {"Milestone", 6}, {"Observation", 6}}));
    EXPECT_EQ(days["2020-05-29"], (Counts{{"Feed", 6}, {"Harvest", 12}, {"Milestone", 6}})) << "pickings and records";
}

} // namespace
