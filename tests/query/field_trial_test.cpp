// The answers about the two field trials in examples/data/variety-trials. ORIGIN.md in that directory describes how a
// row of the tables becomes a plant. The figures were counted in the tables, or computed from them in another language.

#include "query/query_test.h"

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

using namespace support;

namespace
{

using Comparisons = std::vector<PlantComparison>;
using TableRow = std::map<std::string, std::string>; // by the heading; a missing value is NA

std::vector<TableRow> Table(const std::string& file)
{
    std::ifstream lines(PLANTJOURNAL_SOURCE_DIR "/examples/data/variety-trials/" + file);
    const auto cells = [](const std::string& line)
    {
        std::istringstream words(line);
        std::vector<std::string> texts;
        for (std::string word; words >> word;)
            texts.push_back(word);
        return texts;
    };
    std::string line;
    std::getline(lines, line);
    const std::vector<std::string> headings = cells(line);
    std::vector<TableRow> rows;
    while (std::getline(lines, line))
        for (std::size_t i = 0; const std::string& cell : cells(line))
            (i == 0 ? rows.emplace_back() : rows.back())[headings.at(i)] = cell, ++i;
    return rows;
}

class FieldTrialTest : public QueryTest
{
  protected:
    void StoreWheatTrial()
    {
        RunSQL("PRAGMA synchronous=OFF;"); // hundreds of transactions
        for (const TableRow& row : Table("stroup.nin.txt"))
            StoreWheat(row);
    }

    void StoreSoybeanTrial()
    {
        RunSQL("PRAGMA synchronous=OFF;");
        for (const TableRow& row : Table("australia.soybean.txt"))
            StoreSoybean(row);
    }

    void StoreWheat(const TableRow& row)
    {
        const std::string yield = row.at("yield");
        Plant plant;
        plant.Name = row.at("gen") + " c" + row.at("col") + 'r' + row.at("row");
        plant.Strain = row.at("gen");
        plant.Tent = "Alliance";
        plant.Stage = yield == "NA" ? PlantStage::Archived : PlantStage::Veg;
        ASSERT_TRUE(Repository.CreatePlant(plant));
        if (yield != "NA")
            StoreHarvest(plant, "1989", std::stod(yield));
    }

    void StoreSoybean(const TableRow& row)
    {
        Plant plant;
        plant.Name = row.at("env") + ' ' + row.at("gen");
        plant.Strain = row.at("gen");
        plant.Tent = row.at("loc");
        ASSERT_TRUE(Repository.CreatePlant(plant));
        PlantHealthObservation lodging;
        lodging.ObservationDate = row.at("year");
        lodging.Issue = "Lodging";
        lodging.Severity = static_cast<int>(std::floor(std::stod(row.at("lodging")) + 0.5));
        lodging.Notes = "score " + row.at("lodging");
        Stored(lodging, plant, &PlantRepository::CreatePlantHealthObservation);
        StoreHarvest(plant, row.at("year"), std::stod(row.at("yield")) * 100);
    }

    void StoreHarvest(Plant plant, const std::string& date, double dryWeightG)
    {
        HarvestRecord record;
        record.PlantUUID = plant.UUID;
        record.HarvestDate = date;
        record.DryWeightG = dryWeightG;
        ASSERT_TRUE(Repository.SaveHarvestRecord(plant, record));
    }

    Comparisons Compared(const std::vector<PlantComparedSet>& sets)
    {
        return AnswerOf<Comparisons>(QueryPlantComparison, sets);
    }

    static PlantComparedSet StrainSet(const std::string& strain) { return {strain, {{}, {strain}, {}, {}}}; }
    static PlantComparedSet TentSet(const std::string& tent) { return {tent, {{}, {}, {tent}, {}}}; }

    static void ExpectDryWeights(const PlantComparison& set, std::int64_t number, double mean, double least,
                                 double most)
    {
        EXPECT_EQ(set.Harvested, number) << set.Name;
        EXPECT_EQ(set.DryWeightG.Number, number) << set.Name;
        EXPECT_NEAR(set.DryWeightG.Mean, mean, 1e-4) << set.Name;
        EXPECT_NEAR(set.DryWeightG.Least, least, 1e-9) << set.Name;
        EXPECT_NEAR(set.DryWeightG.Most, most, 1e-9) << set.Name;
        EXPECT_EQ(set.DaysFromSeed.Number + set.WetWeightG.Number + set.MlPerGram.Number, 0) << set.Name;
    }

    template <typename Out> std::int64_t CountOf(const Out& answer) { return static_cast<std::int64_t>(answer.size()); }
};

// The column `yield` of stroup.nin.txt: 242 rows, 18 of them without a yield, all of these named Lancer.
TEST_F(FieldTrialTest, TheComparisonOfWheatHasTheYieldsOfTheTable)
{
    StoreWheatTrial();
    const Comparisons compared = Compared(
        {StrainSet("Lancer"), StrainSet("Brule"), StrainSet("NE83404"), TentSet("Alliance"), StrainSet("lancer")});
    EXPECT_EQ(compared[0].Plants, 22);
    ExpectDryWeights(compared[0], 4, 28.5625, 28.1, 29.25);
    ExpectDryWeights(compared[1], 4, 26.075, 3.7, 40.9);
    ExpectDryWeights(compared[2], 4, 27.3875, 17.5, 32.8);
    EXPECT_EQ(compared[3].Plants, 242);
    ExpectDryWeights(compared[3], 224, 25.5270, 1.05, 42);
    EXPECT_EQ(compared[4].Plants, 0) << "letters must match exactly";
}

TEST_F(FieldTrialTest, TheOtherAnswersAboutWheatAreTheHarvestsAlone)
{
    StoreWheatTrial();
    const auto days = AnswerOf<std::vector<PlantCalendarDay>>(QueryPlantCalendar, PlantActivityFilter{});
    ASSERT_EQ(days.size(), 1U);
    EXPECT_EQ(Printed(days[0]), "1989 \"Harvest\" 224");
    PlantActivityFilter filter;
    filter.Plants.Strains = {"Lancer"};
    EXPECT_EQ(CountOf(AnswerOf<std::vector<PlantActivity>>(QueryPlantActivity, filter)), 4);
    filter.From = "1989-01-01"; // later than the year alone
    EXPECT_EQ(CountOf(AnswerOf<std::vector<PlantActivity>>(QueryPlantActivity, filter)), 0);
    EXPECT_EQ(CountOf(AnswerOf<std::vector<PlantTotal>>(QueryPlantTotals, PlantTotalFilter{})), 0) << "no care";
    PlantSet harvested;
    harvested.Stages = {PlantStage::Harvested};
    const auto statuses = AnswerOf<std::vector<PlantStatus>>(QueryPlantStatus, harvested, std::string("1989-08-01"));
    ASSERT_EQ(statuses.size(), 224U);
    EXPECT_EQ(statuses[0].StageDate, "1989");
    EXPECT_EQ(statuses[0].StageDays, std::nullopt) << "a year is not a day";
    PlantLineage lineage;
    EXPECT_TRUE(QueryPlantLineage(Database, statuses[0].PlantUUID, lineage));
    EXPECT_TRUE(lineage.Ancestors.empty() && lineage.Descendants.empty());
}

// The column `yield` of australia.soybean.txt, in tonnes per hectare, times 100.
TEST_F(FieldTrialTest, TheComparisonOfSoybeansHasTheYieldsOfTheTable)
{
    StoreSoybeanTrial();
    const Comparisons compared = Compared({StrainSet("G01"),
                                           StrainSet("G02"),
                                           StrainSet("G58"),
                                           TentSet("Lawes"),
                                           TentSet("RedlandBay"),
                                           {"Nambour G58", {{}, {"G58"}, {"Nambour"}, {}}}});
    EXPECT_EQ(compared[0].Plants, 8); // two years at four places
    ExpectDryWeights(compared[0], 8, 191.3, 77.8, 278.8);
    ExpectDryWeights(compared[1], 8, 201.9375, 108.7, 261.8);
    ExpectDryWeights(compared[2], 8, 153.8125, 28.2, 266.7);
    EXPECT_EQ(compared[3].Plants, 116); // 58 genotypes in two years
    ExpectDryWeights(compared[3], 116, 237.3914, 58.6, 438.1);
    ExpectDryWeights(compared[4], 116, 171.5172, 36.5, 412.6);
    ExpectDryWeights(compared[5], 2, 80.8, 28.2, 133.4); // 0.282 and 1.334 tonnes
}

// The column `lodging`: 10 of 464 scores are rounded to 5, 9 of them in 1970; 22 scores are 3.5.
TEST_F(FieldTrialTest, TheObservationsOfSoybeansAreFoundByTheirScores)
{
    StoreSoybeanTrial();
    const auto days = AnswerOf<std::vector<PlantCalendarDay>>(QueryPlantCalendar, PlantActivityFilter{});
    ASSERT_EQ(days.size(), 4U);
    EXPECT_EQ(Printed(days[0]), "1970 \"Harvest\" 232");
    EXPECT_EQ(Printed(days[3]), "1971 \"Health\" 232");
    PlantActivityFilter worst;
    worst.Text = "lodging (5 of 5)";
    EXPECT_EQ(CountOf(AnswerOf<std::vector<PlantActivity>>(QueryPlantActivity, worst)), 10);
    worst.To = "1970";
    EXPECT_EQ(CountOf(AnswerOf<std::vector<PlantActivity>>(QueryPlantActivity, worst)), 9);
    PlantActivityFilter halves;
    halves.Text = "score 3.5";
    EXPECT_EQ(CountOf(AnswerOf<std::vector<PlantActivity>>(QueryPlantActivity, halves)), 22);
    PlantSet first; // row 1: L70 G01, lodging 4.25
    first.Strains = {"G01"};
    first.Tents = {"Lawes"};
    const auto statuses = AnswerOf<std::vector<PlantStatus>>(QueryPlantStatus, first, std::string("1970-01-15"));
    ASSERT_EQ(statuses.size(), 2U);
    ASSERT_EQ(statuses[0].Health.size(), 1U) << "as a text, 1970 is between 1969-12-17 and 1970-01-15";
    EXPECT_EQ(statuses[0].Health[0].Severity, 4);
    EXPECT_EQ(statuses[0].Health[0].Notes, "score 4.25");
    EXPECT_TRUE(statuses[1].Health.empty()) << "observed in 1971";
    const auto timeline = AnswerOf<std::vector<PlantActivity>>(QueryPlantTimeline, statuses[1].PlantUUID);
    ASSERT_EQ(timeline.size(), 2U);
    EXPECT_EQ(timeline[0].Text, "Lodging (3 of 5) | score 2.5") << "a half is rounded upwards";
    EXPECT_EQ(timeline[1].Text, "Wet 0.0 g | Dry 278.8 g");
}

} // namespace
