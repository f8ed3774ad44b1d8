// `feed` and `water`: several plants at once, and amounts as people write them.

#include "command/basil_test.h"
#include "support/other_program.h"

using namespace support;

namespace
{

// Basil (Veg, tent Big), Chili (Seed, tent Big), Dill (Flower, tent Small), and one plant in each other stage.
class CareCommandTest : public BasilTest
{
  protected:
    CareCommandTest()
    {
        Done({"plant", "edit", "Basil", "--tent", "Big"});
        Done({"plant", "add", "Chili", "--uuid", "c1", "--strain", "Rocoto", "--stage", "seed", "--tent", "Big"});
        Done({"plant", "add", "Dill", "--uuid", "d1", "--strain", "Genovese", "--stage", "flower", "--tent", "Small"});
        Done({"plant", "add", "Ease", "--uuid", "e1", "--strain", "Rocoto", "--stage", "clone"});
        for (const char* stage : {"dry", "cure", "harvested", "archived"})
            Done({"plant", "add", stage, "--strain", "Genovese", "--stage", stage, "--tent", "Big"});
    }

    // The amounts in the care list of a plant, newest first.
    std::vector<double> Amounts(const std::string& plant) const
    {
        std::vector<double> amounts;
        for (const JSON& entry : Parsed({"care", "list", plant}))
            amounts.push_back(entry.at("AmountMl"));
        return amounts;
    }

    // The UUIDs of the plants that a command waters.
    Words Watered(Words words) const
    {
        words.insert(words.begin(), "water");
        Words plants;
        for (const JSON& entry : Parsed(words))
            plants.push_back(entry.at("PlantUUID"));
        std::sort(plants.begin(), plants.end());
        return plants;
    }
};

using Amounts = std::vector<double>;

TEST_F(CareCommandTest, SeveralPlantsAreWateredWithOneAmount)
{
    EXPECT_EQ(Done({"water", "Basil", "chili", "500ml"}),
              "Watered Basil: 500 ml (care 1)\nWatered Chili: 500 ml (care 2)\n");
    EXPECT_EQ(Amounts("Basil"), ::Amounts{500});
    EXPECT_EQ(Amounts("Chili"), ::Amounts{500});
    EXPECT_EQ(Parsed({"event", "list", "Chili"}).at(0).at("Type"), "Water");
}

TEST_F(CareCommandTest, ANumberNextToZeroIsZero)
{
    EXPECT_EQ(Parsed({"feed", "Basil", "500ml", "--ec", "1e-400"}).at("EC"), 0);
}

TEST_F(CareCommandTest, AFeedingIsReportedWithAllItsValues)
{
    EXPECT_EQ(Done({"feed", "Basil", "500ml", "--ec", "1.8", "--ph", "6.2"}),
              "Fed Basil: 500 ml, EC 1.80, pH 6.20 (care 1)\n");
    EXPECT_EQ(Done({"feed", "Basil", "--product", "Bloom A", "0.5l", "--ec", "1.234", "--runoff-ml", "20.5",
                    "--care-date", "2026-05-01"}),
              "Fed Basil on 2026-05-01: Bloom A, 500 ml, EC 1.23, runoff 20.5 ml (care 2)\n");
    EXPECT_EQ(Done({"feed", "Basil"}), "Fed Basil (care 3)\n");
}

TEST_F(CareCommandTest, AnAmountIsReadAsPeopleWriteIt)
{
    const std::vector<std::pair<Words, double>> amounts = {{{"500ml"}, 500},
                                                           {{"0.5l"}, 500},
                                                           {{"1.5L"}, 1500},
                                                           {{"2mL"}, 2},
                                                           {{"500", "ml"}, 500},
                                                           {{"500 ml"}, 500},
                                                           {{"1.005l"}, 1005},
                                                           {{".5l"}, 500},
                                                           {{"2", "L"}, 2000},
                                                           {{"0.25 l"}, 250},
                                                           {{"--amount", "500ml"}, 500},
                                                           {{"--amount=1.5 L"}, 1500},
                                                           {{"--amount-ml", "500"}, 500}};
    for (const auto& [words, amount] : amounts)
    {
        Words line = {"water", "Basil"};
        line.insert(line.end(), words.begin(), words.end());
        EXPECT_EQ(Parsed(line).at("AmountMl"), amount) << words.front();
    }
    EXPECT_EQ(Parsed({"water", "--ph", "6", "Basil", "--ec", "1", "500ml"}).at("AmountMl"), 500);
}

TEST_F(CareCommandTest, WhatIsNotAnAmountIsRefused)
{
    for (const char* text : {"500", "-500ml", "1,5l", "ml", "", "1.2.3l", "5e2ml", "half", "500ml each"})
        EXPECT_NE(Mistaken({"water", "Basil", "--amount=" + std::string(text)})
                      .find("is not an amount; write an amount like 500ml or 0.5l"),
                  std::string::npos)
            << text;
    EXPECT_NE(Mistaken({"water", "Basil", "1,5l"}).find("\"1,5l\" is not an amount"), std::string::npos);
    EXPECT_NE(Mistaken({"water", "Basil", "1" + std::string(400, '0') + "l"}).find("is not an amount"),
              std::string::npos);
    EXPECT_NE(Refused({"water", "500ml", "Basil"}).find("\"500ml\": no plant has this name"), std::string::npos);
    for (const Words& words :
         {Words{"feed", "Chili", "1/4l"}, {"water", "Basil", "Chili", "1litre"}, {"feed", "--all", "500xl"}})
        EXPECT_EQ(Mistaken(words), "plantjournal: " + words.front() + ": \"" + words.back() +
                                       "\" is not an amount; write an amount like 500ml or 0.5l\n");
    Done({"plant", "add", "7 Pot"});
    EXPECT_EQ(Done({"water", "Basil", "7 pot", "-q"}), "1\n2\n");
    EXPECT_NE(Refused({"water", "Basil", "7 Pots", "1l"}).find("\"7 Pots\": no plant has this name"),
              std::string::npos);
}

TEST_F(CareCommandTest, ANumberWithoutAUnitIsNotThePrefixOfAUUID)
{
    Done({"plant", "add", "Egg", "--uuid", "15001500-0000-4000-8000-000000000000"});
    EXPECT_NE(Mistaken({"water", "Basil", "1500"}).find("\"1500\" has no unit; write an amount like 1500ml"),
              std::string::npos);
    for (const Words& words : {Words{"water", "--all", "250"}, {"water", "250"}})
        EXPECT_EQ(Mistaken(words), "plantjournal: water: \"250\" has no unit; write an amount like 250ml\n");
    EXPECT_EQ(Done({"water", "1500"}), "Watered Egg (care 1)\n");
    EXPECT_EQ(Done({"water", "Basil", "1500", "--amount", "1l", "-q"}), "2\n3\n");
}

TEST_F(CareCommandTest, AnAmountIsGivenOnce)
{
    for (const Words& twice : {Words{"water", "Basil", "500ml", "--amount", "500ml"},
                               {"water", "Basil", "500ml", "--amount-ml", "500"},
                               {"water", "Basil", "--amount-ml", "500", "--amount", "500ml"}})
        EXPECT_NE(Mistaken(twice).find("the amount is given twice"), std::string::npos);
}

TEST_F(CareCommandTest, APlantNamedLikeAnAmountIsNamedExactly)
{
    Done({"plant", "add", "500ml", "--uuid", "f1"});
    EXPECT_EQ(Done({"water", "500ml"}), "Watered 500ml (care 1)\n");
    EXPECT_EQ(Done({"water", "500ml", "1l"}), "Watered 500ml: 1000 ml (care 2)\n");
    EXPECT_EQ(Done({"water", "Basil", "500ML"}), "Watered Basil: 500 ml (care 3)\n");
    EXPECT_EQ(Done({"water", "Basil", "500ml", "--amount", "2l", "-q"}), "4\n5\n");
    const ProgramResult both = Run({"water", "Basil", "500ml"});
    EXPECT_EQ(both.Out, "Watered Basil (care 6)\nWatered 500ml (care 7)\n");
    EXPECT_EQ(both.Error, "notice: 500ml: this names a plant, not the amount; --amount 500ml sets the amount\n");
}

TEST_F(CareCommandTest, SelectorsReachGrowingPlantsOnly)
{
    EXPECT_EQ(Watered({"--all"}), (Words{"b1", "c1", "d1", "e1"}));
    EXPECT_EQ(Watered({"--strain", "genovese"}), (Words{"b1", "d1"}));
    EXPECT_EQ(Watered({"--tent", "BIG", "0.5l"}), (Words{"b1", "c1"}));
    EXPECT_EQ(Watered({"--stage", "Flower"}), Words{"d1"});
    EXPECT_EQ(Watered({"--stage", "seed", "--strain", "Rocoto"}), Words{"c1"});
    EXPECT_EQ(Watered({"--strain", "Genovese", "--tent", "Big", "1l"}), Words{"b1"});
    for (const char* stage : {"dry", "Cure", "harvested", "archived"})
        EXPECT_NE(Mistaken({"water", "--stage", stage}).find("is not a stage of growing plants"), std::string::npos);
    EXPECT_NE(Refused({"water", "--tent", "Attic"}).find("no growing plant matches the options"), std::string::npos);
    EXPECT_NE(Mistaken({"water"}).find("no plant was named"), std::string::npos);
    EXPECT_NE(Mistaken({"water", "500ml"}).find("no plant was named"), std::string::npos);
}

TEST_F(CareCommandTest, AnUnknownTentOrStrainNamesTheNearest)
{
    EXPECT_EQ(Refused({"feed", "--tent", "Bigg"}),
              "plantjournal: no growing plant matches the options; did you mean --tent \"Big\"?\n");
    EXPECT_EQ(Refused({"feed", "--strain", "Genoveze", "--tent", "big"}),
              "plantjournal: no growing plant matches the options; did you mean --strain \"Genovese\"?\n");
    EXPECT_EQ(Refused({"feed", "--tent", "Attic"}), "plantjournal: no growing plant matches the options; `plantjournal "
                                                    "plant list` shows the plants\n");
}

TEST_F(CareCommandTest, TheWordAllWithoutDashesNamesTheOption)
{
    EXPECT_EQ(Refused({"water", "All", "100ml"}),
              "plantjournal: \"All\": no plant has this name or UUID; did you mean --all?\n");
    Done({"plant", "add", "ALL"});
    EXPECT_EQ(Done({"water", "all", "100ml"}), "Watered ALL: 100 ml (care 1)\n");
}

TEST_F(CareCommandTest, ANamedPlantIsReachedInAnyStage)
{
    EXPECT_EQ(Done({"water", "archived", "cure", "-q"}), "1\n2\n");
}

TEST_F(CareCommandTest, APlantNamedTwiceIsWateredOnce)
{
    EXPECT_EQ(Done({"water", "Basil", "basil", "b1", "1l"}), "Watered Basil: 1000 ml (care 1)\n");
    EXPECT_EQ(Watered({"Dill", "--tent", "Big", "--strain", "Genovese"}), (Words{"b1", "d1"}));
    EXPECT_EQ(Watered({"Basil", "--tent", "Big"}), (Words{"b1", "c1"}));
}

TEST_F(CareCommandTest, QuietPrintsRowIDsAndJSONTheRecords)
{
    EXPECT_EQ(Done({"feed", "Basil", "Chili", "-q"}), "1\n2\n");
    EXPECT_EQ(Done({"--quiet", "feed", "Basil"}), "3\n");
    const JSON one = Parsed({"feed", "Basil", "1l"});
    ExpectFields(one, {{"ID", 4}, {"PlantUUID", "b1"}, {"Action", "Feed"}, {"AmountMl", 1000.0}});
    const JSON two = Parsed({"feed", "Basil", "Chili"});
    ASSERT_EQ(two.size(), 2U);
    ExpectFields(two.at(1), {{"ID", 6}, {"PlantUUID", "c1"}});
    EXPECT_TRUE(Parsed({"feed", "--stage", "seed"}).is_array()); // also where one plant matches
}

TEST_F(CareCommandTest, AnUnknownPlantAmongSeveralStoresNothing)
{
    Done({"plant", "add", "Mint"});
    NoticesOf({"plant", "add", "Mint"});
    EXPECT_NE(Refused({"feed", "Basil", "Chilli", "500ml"}).find("\"Chilli\": no plant has this name"),
              std::string::npos);
    EXPECT_NE(Refused({"feed", "Basil", "Mint", "500ml"}).find("several plants match"), std::string::npos);
    EXPECT_NE(Mistaken({"feed", "Basil", "Chili", "--ph", "high"}).find("--ph"), std::string::npos);
}

TEST_F(CareCommandTest, AnotherProgramsLockStoresNothingAndSaysSo)
{
    const OtherProgram other(Journal, "BEGIN IMMEDIATE;");
    const std::string message = Refused({"water", "Basil", "Chili", "500ml"});
    EXPECT_NE(message.find("the care entry of Basil could not be stored"), std::string::npos) << message;
    EXPECT_NE(message.find("another program is writing to the journal, try again"), std::string::npos) << message;
    EXPECT_NE(message.find("\n  stored: nothing\n  not stored: Basil, Chili\n"), std::string::npos) << message;
    EXPECT_EQ(Refused({"water", "Basil"}).find("stored: nothing"), std::string::npos);
}

} // namespace
