// Harvests: their weights, and the plant after a deletion.

#include "command/basil_test.h"

using namespace support;

namespace
{

using HarvestCommandTest = BasilTest;

TEST_F(HarvestCommandTest, AHarvestWithoutAWeightIsRefusedWithoutATerminal)
{
    EXPECT_EQ(Refused({"harvest", "add", "Basil"}),
              "plantjournal: the harvest has no weight; give --wet-weight-g, --dry-weight-g or --unweighed\n");
}

TEST_F(HarvestCommandTest, UnweighedStoresAHarvestWithoutAWeight)
{
    EXPECT_EQ(Done({"harvest", "add", "Basil", "--unweighed"}), "Harvested Basil: not weighed\n");
    ExpectFields(Parsed({"harvest", "list", "Basil"}).at(0), {{"WetWeightG", 0.0}, {"DryWeightG", 0.0}});
}

TEST_F(HarvestCommandTest, UnweighedWithAWeightIsAMistake)
{
    for (const char* weight : {"--wet-weight-g", "--dry-weight-g"})
        EXPECT_NE(Mistaken({"harvest", "add", "Basil", "--unweighed", weight, "5"}).find("--unweighed contradicts"),
                  std::string::npos);
}

TEST_F(HarvestCommandTest, AWeightIsReadAsPeopleWriteIt)
{
    Done({"harvest", "add", "Basil", "--wet", "210g", "--dry", "31"});
    ExpectFields(Parsed({"harvest", "list", "Basil"}).at(0), {{"WetWeightG", 210.0}, {"DryWeightG", 31.0}});
    for (const auto& [text, grams] :
         {std::pair{"0.21kg", 210.0}, {"0.105 KG", 105.0}, {"96.5 g", 96.5}, {"12G", 12.0}, {"0", 0.0}})
        EXPECT_EQ(Parsed({"harvest", "edit", "Basil", "--dry", text}).at("DryWeightG"), grams) << text;
    for (const char* text : {"g", "kg", "1,5kg", "2 pg", "1e2e3g"})
        EXPECT_EQ(Mistaken({"harvest", "edit", "Basil", "--wet", text}),
                  "plantjournal: harvest edit: --wet: \"" + std::string(text) +
                      "\" is not a weight; write it like 210, 210g or 0.21kg\n");
}

TEST_F(HarvestCommandTest, OneWeightIsEnough)
{
    EXPECT_EQ(Done({"harvest", "add", "Basil", "--wet-weight-g", "410"}), "Harvested Basil: wet weight 410 g\n");
    Done({"plant", "add", "Mint"});
    EXPECT_EQ(Done({"harvest", "add", "Mint", "--dry-weight-g", "0"}), "Harvested Mint: not weighed\n");
}

TEST_F(HarvestCommandTest, DeletingAHarvestReportsThatStageAndDateStay)
{
    Done({"harvest", "add", "Basil", "--harvest-date", "2026-07-01", "--wet-weight-g", "410"});
    EXPECT_EQ(Done({"harvest", "delete", "Basil", "--yes"}),
              "Deleted the harvest record of Basil on 2026-07-01: wet weight 410 g; "
              "stage Harvested and harvest date 2026-07-01 stay\n");
    ExpectFields(Basil(), {{"Stage", "Harvested"}, {"HarvestDate", "2026-07-01"}});
    EXPECT_EQ(Parsed({"event", "list", "Basil"}), JSON::array());
}

TEST_F(HarvestCommandTest, DeletingAHarvestWithAStageSetsItAndClearsTheDate)
{
    Done({"plant", "edit", "Basil", "--flip-date", "2026-05-01", "--tent", "South"});
    Done({"harvest", "add", "Basil", "--harvest-date", "2026-07-01", "--wet-weight-g", "410"});
    JSON expected = Basil();
    expected.update({{"Stage", "Flower"}, {"HarvestDate", ""}});
    EXPECT_EQ(Done({"harvest", "delete", "Basil", "--stage", "flower", "--yes"}),
              "Deleted the harvest record of Basil on 2026-07-01: wet weight 410 g; "
              "stage Flower, harvest date cleared\n");
    EXPECT_EQ(Basil(), expected); // also the flip date stays
    EXPECT_EQ(Parsed({"harvest", "list", "Basil"}), JSON::array());
    EXPECT_EQ(Parsed({"event", "list", "Basil"}), JSON::array());
}

TEST_F(HarvestCommandTest, ADeletionThatCannotSetTheStageDeletesNothing)
{
    Done({"harvest", "add", "Basil", "--wet-weight-g", "410"});
    EXPECT_NE(Mistaken({"harvest", "delete", "Basil", "--stage", "ripe", "--yes"}).find("is not one of"),
              std::string::npos);
    EXPECT_NE(Mistaken({"harvest", "delete", "Basil", "--stage", "harvested", "--yes"}).find("without this option"),
              std::string::npos);
}

TEST_F(HarvestCommandTest, AnEditThatMovesThePlantReportsItsStage)
{
    Done({"harvest", "add", "Basil", "--wet-weight-g", "410"});
    EXPECT_EQ(Done({"harvest", "edit", "Basil", "--dry-weight-g", "96.5"}),
              "Changed the harvest record of Basil: dry weight 96.5 g\n");
    Done({"plant", "edit", "Basil", "--stage", "cure"});
    EXPECT_EQ(Done({"harvest", "edit", "Basil", "--quality-rating", "8"}),
              "Changed the harvest record of Basil: quality 8 of 10; stage Harvested\n");
}

TEST_F(HarvestCommandTest, UndoRestoresTheRecordTheStageAndTheDate)
{
    Done({"harvest", "add", "Basil", "--harvest-date", "2026-07-01", "--wet-weight-g", "410"});
    const std::string before = Content();
    Done({"harvest", "delete", "Basil", "--stage", "flower", "--yes"});
    EXPECT_NE(Content(), before);
    Done({"undo", "--yes"});
    EXPECT_EQ(Content(), before);
}

class HarvestOnTerminalTest : public BasilTest
{
  protected:
    void SetUp() override { SkipWithoutTerminal(); }
};

TEST_F(HarvestOnTerminalTest, TheWeightsAreAskedFor)
{
    const std::string shown = RunOnTerminal({"harvest", "add", "Basil"}, "410\n96.5 g\n").Out;
    EXPECT_NE(shown.find("Wet weight in g, empty if not weighed:"), std::string::npos) << shown;
    EXPECT_NE(shown.find("Dry weight in g, empty if not weighed:"), std::string::npos) << shown;
    EXPECT_NE(shown.find("Harvested Basil: wet weight 410 g, dry weight 96.5 g"), std::string::npos) << shown;
}

TEST_F(HarvestOnTerminalTest, AnEmptyAnswerMeansNotWeighed)
{
    EXPECT_NE(RunOnTerminal({"harvest", "add", "Basil"}, "\n96.5\n").Out.find("Harvested Basil: dry weight 96.5 g"),
              std::string::npos);
    Done({"plant", "add", "Mint"});
    EXPECT_NE(RunOnTerminal({"harvest", "add", "Mint"}, "\n\n").Out.find("Harvested Mint: not weighed"),
              std::string::npos);
}

TEST_F(HarvestOnTerminalTest, AWrongAnswerIsAskedForAgain)
{
    const std::string shown = RunOnTerminal({"harvest", "add", "Basil"}, "much\n-3\ninf\n410\n\n").Out;
    EXPECT_NE(shown.find("\"much\" is not a weight; write a number such as 96.5"), std::string::npos) << shown;
    EXPECT_NE(shown.find("\"-3\" is not a weight"), std::string::npos) << shown;
    EXPECT_NE(shown.find("\"inf\" is not a weight"), std::string::npos) << shown;
    EXPECT_NE(shown.find("Harvested Basil: wet weight 410 g"), std::string::npos) << shown;
}

TEST_F(HarvestOnTerminalTest, NothingIsStoredWhereTheQuestionIsInterrupted)
{
    Surroundings terminal = Around;
    terminal.Columns = 80;
    RunningProgram program(Line({"harvest", "add", "Basil"}), terminal);
    ASSERT_TRUE(program.Await("Wet weight"));
    program.Type("410\n");
    ASSERT_TRUE(program.Await("Dry weight"));
    program.Type("\x03");
    const ProgramResult outcome = program.End();
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Out.find("nothing was stored"), std::string::npos) << outcome.Out;
    EXPECT_EQ(Parsed({"harvest", "list", "Basil"}), JSON::array());
}

TEST_F(HarvestOnTerminalTest, AGivenWeightOrUnweighedIsNotAskedFor)
{
    EXPECT_EQ(RunOnTerminal({"harvest", "add", "Basil", "--unweighed"}).Out.find("Wet weight in g"), std::string::npos);
    Done({"plant", "add", "Mint"});
    EXPECT_EQ(RunOnTerminal({"harvest", "add", "Mint", "--dry-weight-g", "5"}).Out.find("Wet weight in g"),
              std::string::npos);
}

TEST_F(HarvestOnTerminalTest, TheQuestionOfADeletionShowsWhatBecomesOfThePlant)
{
    Done({"harvest", "add", "Basil", "--harvest-date", "2026-07-01", "--unweighed"});
    EXPECT_NE(RunOnTerminal({"harvest", "delete", "Basil"}, "n\n")
                  .Out.find("Delete the harvest record of Basil on 2026-07-01; "
                            "stage Harvested and harvest date 2026-07-01 stay? [y/N] "),
              std::string::npos);
    EXPECT_EQ(Parsed({"harvest", "list", "Basil"}).size(), 1U);
}

} // namespace
