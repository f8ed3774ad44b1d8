// The commands that answer questions, on a season of tomatoes and on a field trial of wheat. The figures were computed
// from an export by another program.

#include "command/basil_test.h"

#include <filesystem>

using namespace support;

namespace
{

class TomatoSeasonTest : public CommandTest
{
  protected:
    TomatoSeasonTest()
    {
        Done({"plant", "delete", Stored({"plant", "add", "x"}), "--yes"}); // creates the directory
        std::filesystem::remove(Journal);
        EXPECT_EQ(RunningProgram({PLANTJOURNAL_BINARY_DIR "/examples/greenhouse_season", Journal,
                                  PLANTJOURNAL_SOURCE_DIR "/examples/data/tomato-2019"},
                                 Around)
                      .End()
                      .Status,
                  0);
    }
};

TEST_F(TomatoSeasonTest, TheTotalsOfAMonthAreThoseOfItsCareEntries)
{
    EXPECT_EQ(Done({"totals", "--from", "2020-02", "--to", "2020-02"}),
              "Feedings  Waterings   Amount  Run-off  Mean EC  Mean pH\n"
              "     174          0  407.6 l    146 l     3.82     5.00\n");
    const JSON month = Parsed({"totals", "--from", "2020-02", "--to", "2020-02"}).at(0);
    EXPECT_NEAR(month.at("AmountMl").get<double>(), 407635.917, 0.001);
    EXPECT_NEAR(month.at("RunoffMl").get<double>(), 146014.103, 0.001);
    EXPECT_NEAR(month.at("ECMean").get<double>(), 3.81839, 0.00001);
    EXPECT_NEAR(month.at("PHMean").get<double>(), 5.00057, 0.00001);
    EXPECT_NEAR(Parsed({"totals"}).at(0).at("AmountMl").get<double>(), 2691568.514, 0.001);
}

TEST_F(TomatoSeasonTest, TheComparisonIsThatOfTheHarvests)
{
    EXPECT_EQ(Done({"compare", "axiany"}), "                             Axiany\n"
                                           "Plants                       6\n"
                                           "Harvested                    6\n"
                                           "Days from transplanting      165 (6 plants)\n"
                                           "Wet weight                   8555.8 g (6911.4 to 10933.2, 6 plants)\n"
                                           "Dry weight                   777.4 g (625.2 to 1034.6, 6 plants)\n"
                                           "Loss on drying               90.9 % (90.5 to 91.1, 6 plants)\n"
                                           "Quality (of 10)              7.6 (7.5 to 7.8, 6 plants)\n"
                                           "Water and feed per dry gram  579.3 ml (450.3 to 710.8, 6 plants)\n");
}

TEST_F(TomatoSeasonTest, TheLogAndTheSearchFindEveryRecord)
{
    EXPECT_EQ(Parsed({"log", "--from", "2019", "--kind", "feed,water"}).size(), 971U);
    EXPECT_EQ(Parsed({"search", "BRIX"}).size(), Parsed({"log", "--from", "2019", "--text", "brix"}).size());
    EXPECT_EQ(Parsed({"log", "Reference", "--from", "2019"}).size(), Parsed({"timeline", "Reference"}).size());
    EXPECT_EQ(Done({"status"}), "No plants are growing; `plantjournal plant add NAME` adds one, `plantjournal status "
                                "--all` shows all plants.\n");
}

using WheatAnswersTest = CommandTest;

TEST_F(WheatAnswersTest, TheComparisonOfCultivarsIsThatOfTheTrial)
{
    const std::string table = PLANTJOURNAL_SOURCE_DIR "/examples/data/variety-trials/stroup.nin.txt";
    ASSERT_EQ(RunningProgram({PLANTJOURNAL_WHEAT_TRIAL, table, "wheat"}, Around).End().Status, 0);
    Done({"import", "wheat"});
    EXPECT_EQ(Done({"compare", "lancer", "Brule"}), // archived plots are those without a yield
              "            Lancer                           Brule\n"
              "Plants      22                               4\n"
              "Harvested   4                                4\n"
              "Dry weight  28.6 g (28.1 to 29.3, 4 plants)  26.1 g (3.7 to 40.9, 4 plants)\n");
    ExpectFields(Parsed({"compare", "Lancer"}).at(0),
                 {{"DryWeightGMean", 28.5625}, {"DryWeightGLeast", 28.1}, {"DryWeightGMost", 29.25}});
}

} // namespace
