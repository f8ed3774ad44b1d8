// What the command answers to words that it does not know, and to words that are missing.

#include "support/command.h"
#include "support/page.h"

using namespace support;

namespace
{

class NearestWordTest : public CommandTest
{
  protected:
    // The message of a mistake in the command line, without the program's name.
    std::string Answer(const Words& words) const
    {
        const std::string message = Mistaken(words);
        const std::string name = "plantjournal: ";
        EXPECT_TRUE(message.starts_with(name)) << message;
        return message.substr(name.size());
    }
};

TEST_F(NearestWordTest, AnUnknownCommandNamesTheNearest)
{
    EXPECT_EQ(Answer({"fed", "Basil"}), "unknown command \"fed\"; did you mean feed?\n");
    EXPECT_EQ(Answer({"timline", "Basil"}), "unknown command \"timline\"; did you mean timeline?\n");
    EXPECT_EQ(Answer({"exprot", "x.json"}), "unknown command \"exprot\"; did you mean export?\n");
    EXPECT_EQ(Answer({"WATER", "Basil"}), "unknown command \"WATER\"; did you mean water?\n");
    EXPECT_EQ(Answer({"plant", "dupli", "Basil"}), "plant: unknown command \"dupli\"; did you mean duplicate?\n");
    EXPECT_EQ(Answer({"list"}), "unknown command \"list\"; did you mean plant list?\n");
}

TEST_F(NearestWordTest, SeveralNearWordsAreAllNamed)
{
    EXPECT_EQ(Answer({"plant", "adit"}), "plant: unknown command \"adit\"; did you mean edit?\n");
    EXPECT_EQ(Answer({"harvest", "add", "Basil", "--weight", "5"}),
              "harvest add: unknown option \"--weight\"; did you mean --wet-weight-g or --dry-weight-g?\n");
    EXPECT_EQ(Answer({"ttrain", "lst"}), "unknown command \"ttrain\"; did you mean strain or train?\n");
    EXPECT_EQ(Answer({"plant", "edit", "Basil", "--height", "5"}),
              "plant edit: unknown option \"--height\"; did you mean --flip-height-cm or --final-height-cm?\n");
}

TEST_F(NearestWordTest, AWordWithoutANearOneIsAnsweredWithTheList)
{
    EXPECT_EQ(Answer({"zzz"}), "unknown command \"zzz\"; `plantjournal help` lists the commands\n");
    EXPECT_EQ(Answer({"plant", "show", "Basil", "--zzz"}),
              "plant show: unknown option \"--zzz\"; `plantjournal help plant show` lists the options\n");
    EXPECT_EQ(Answer({"--zzz"}), "unknown option \"--zzz\"; `plantjournal help` lists the options\n");
    EXPECT_EQ(Answer({"harvest", "add", "Basil", "--weigh", "5"}), // neither a word of --wet-weight-g nor its beginning
              "harvest add: unknown option \"--weigh\"; `plantjournal help harvest add` lists the options\n");
    EXPECT_EQ(Answer({"-"}), "unknown command \"-\"; `plantjournal help` lists the commands\n");
    EXPECT_EQ(Answer({"-x"}), "unknown option \"-x\"; `plantjournal help` lists the options\n");
}

TEST_F(NearestWordTest, AGroupWithoutItsCommandNamesItsCommandAdd)
{
    EXPECT_EQ(Answer({"harvest", "Basil 1", "--wet-weight-g", "210"}),
              "harvest: unknown command \"Basil 1\"; did you mean \"harvest add\"?\n");
    for (const char* group : {"plant", "strain", "care", "event", "photo", "health"})
        EXPECT_EQ(Answer({group, "Basil 1"}),
                  std::string(group) + ": unknown command \"Basil 1\"; did you mean \"" + group + " add\"?\n");
    EXPECT_EQ(Answer({"harvest", "lst"}), "harvest: unknown command \"lst\"; did you mean list?\n");
}

TEST_F(NearestWordTest, AnUnknownOptionNamesTheNearest)
{
    for (const char* option : {"--amout-ml", "--amuont-ml", "--Amount-ML", "--amount"})
        EXPECT_NE(Answer({"care", "add", "Basil", option, "5"})
                      .find(std::string("unknown option \"") + option + "\"; did you mean --amount-ml?\n"),
                  std::string::npos)
            << option;
    EXPECT_EQ(Answer({"care", "add", "Basil", "--amout-ml=5"}),
              "care add: unknown option \"--amout-ml\"; did you mean --amount-ml?\n");
    EXPECT_EQ(Answer({"plant", "list", "--jsno"}), "plant list: unknown option \"--jsno\"; did you mean --json?\n");
    EXPECT_EQ(Answer({"--flie", "x.db", "plant", "list"}),
              "plant list: unknown option \"--flie\"; did you mean --file?\n");
}

TEST_F(NearestWordTest, EachUnknownWordIsAnsweredInItsOrder)
{
    EXPECT_EQ(Answer({"care", "add", "Basil", "--prodct", "X", "--ph", "5", "--amout-ml", "5"}),
              "care add: unknown option \"--prodct\"; did you mean --product?\n"
              "plantjournal: care add: unknown option \"--amout-ml\"; did you mean --amount-ml?\n");
    EXPECT_EQ(Answer({"plnat", "lst", "--jsno"}), "unknown command \"plnat\"; did you mean plant?\n"
                                                  "plantjournal: plant: unknown command \"lst\"; did you mean list?\n"
                                                  "plantjournal: plant list: unknown option \"--jsno\"; did you mean "
                                                  "--json?\n");
    EXPECT_EQ(Answer({"plnat", "list", "--jsno"}), "unknown command \"plnat\"; did you mean plant?\n"
                                                   "plantjournal: plant list: unknown option \"--jsno\"; did you mean "
                                                   "--json?\n");
    EXPECT_EQ(Answer({"plnat", "--flie=x.db", "lst"}), "unknown command \"plnat\"; did you mean plant?\n"
                                                       "plantjournal: plant: unknown option \"--flie\"; did you mean "
                                                       "--file?\n"
                                                       "plantjournal: plant: unknown command \"lst\"; did you mean "
                                                       "list?\n");
    EXPECT_EQ(Answer({"plnat", "--jsno", "lst"}), "unknown command \"plnat\"; did you mean plant?\n"
                                                  "plantjournal: plant: unknown option \"--jsno\"; did you mean "
                                                  "--json?\n"
                                                  "plantjournal: plant: unknown command \"lst\"; did you mean "
                                                  "list?\n");
    EXPECT_EQ(Answer({"plnat", "--zzz", "5", "lst"}), "unknown command \"plnat\"; did you mean plant?\n"
                                                      "plantjournal: plant: unknown option \"--zzz\"; `plantjournal "
                                                      "help plant` lists the options\n"
                                                      "plantjournal: plant: unknown command \"lst\"; did you mean "
                                                      "list?\n");
    EXPECT_EQ(Answer({"zzz", "lst", "--jsno"}), "unknown command \"zzz\"; `plantjournal help` lists the commands\n");
}

TEST_F(NearestWordTest, AnOptionBeforeItsCommandBelongsAfterIt)
{
    EXPECT_EQ(Answer({"--newest", "5", "care", "list"}),
              "care list: \"--newest\" is an option of the command; write it after \"care list\"\n");
}

TEST_F(NearestWordTest, AnArgumentTooManyIsAnsweredWithTheUsage)
{
    EXPECT_EQ(Answer({"plant", "tree", "Basil", "Mint", "--json", "Rue"}),
              "plant tree: unexpected argument \"Mint\"; usage: plantjournal plant tree [PLANT] [OPTION...]\n"
              "plantjournal: plant tree: unexpected argument \"Rue\"; usage: plantjournal plant tree [PLANT] "
              "[OPTION...]\n");
}

TEST_F(NearestWordTest, MissingWordsAreNamedWithTheUsage)
{
    EXPECT_EQ(Answer({"plant", "show"}), "plant show: PLANT is missing; `plantjournal help plant show` shows examples\n"
                                         "usage: plantjournal plant show PLANT [OPTION...]\n");
    EXPECT_EQ(Answer({"care", "delete"}),
              "care delete: PLANT, ID are missing; `plantjournal help care delete` shows examples\n"
              "usage: plantjournal care delete PLANT ID [OPTION...]\n");
    EXPECT_EQ(Answer({"care", "delete", "Basil"}).find("care delete: ID is missing; "), 0U);
    EXPECT_EQ(Answer({"plant"}), "plant: a command is missing; `plantjournal help plant` describes list, show, add, "
                                 "edit, delete, duplicate, tree\n");
    EXPECT_EQ(Answer({"--json"}), "a command is missing; `plantjournal help` describes them\n");
}

TEST_F(NearestWordTest, AnOptionWithoutItsValueSaysWhatItTakes)
{
    EXPECT_EQ(Answer({"care", "add", "Basil", "--amount-ml"}),
              "care add: --amount-ml has no value; write --amount-ml NUMBER\n");
    EXPECT_EQ(Answer({"plant", "add", "Basil", "--stage"}), "plant add: --stage has no value; write --stage STAGE\n");
    EXPECT_EQ(Answer({"plant", "list", "--json=x"}), "plant list: --json takes no value; write only --json\n");
    EXPECT_EQ(Answer({"care", "add", "Basil", "--ec", "1", "--ec", "2"}),
              "care add: --ec is given more than once; give it once\n");
}

TEST_F(NearestWordTest, AWrongValueNamesTheOptionAsItWasTyped)
{
    Done({"plant", "add", "Basil"});
    const auto beginsWith = [this](const Words& words, const std::string& begin)
    {
        const std::string answer = Answer(words);
        EXPECT_TRUE(answer.starts_with(begin)) << answer;
    };
    beginsWith({"feed", "Basil", "--date", "soon"}, "feed: --date: \"soon\" is not a date; ");
    beginsWith({"feed", "Basil", "--date=soon"}, "feed: --date: \"soon\" is not a date; ");
    beginsWith({"feed", "Basil", "--care-date", "soon"}, "feed: --care-date: \"soon\" is not a date; ");
    beginsWith({"feed", "Basil", "--date", "3d", "--date", "2d"}, "feed: --date is given more than once; ");
    beginsWith({"feed", "Basil", "--date"}, "feed: --date has no value; write --date DATE");
    beginsWith({"transplant", "Basil", "--pot-size"}, "transplant: --pot-size has no value; write --pot-size TEXT");
    beginsWith({"plant", "add", "--name", ""}, "plant add: --name: the text is empty");
}

TEST_F(NearestWordTest, AnUnknownValueNamesTheNearest)
{
    EXPECT_EQ(
        Answer({"plant", "add", "Basil", "--stage", "flwer"}),
        "plant add: --stage: \"flwer\" is not one of Seed, Clone, Veg, Flower, Dry, Cure, Harvested, Archived; did "
        "you mean Flower?\n");
    EXPECT_EQ(Answer({"plant", "add", "Basil", "--sex", "zzz"}),
              "plant add: --sex: \"zzz\" is not one of Unknown, Female, Male, Hermaphrodite; `plantjournal help plant "
              "add` describes the values\n");
    EXPECT_EQ(Answer({"care", "edit", "Basil", "one", "--ec", "1"}),
              "care edit: ID: \"one\" is not a whole number; `plantjournal help care edit` describes the values\n");
    EXPECT_EQ(Answer({"care", "add", "Basil", "--ec", "1e999"}).find("care add: --ec: \"1e999\" is too large; "), 0U);
    EXPECT_EQ(Answer({"care", "add", "Basil", "--ec=-1e999"}).find("care add: --ec: \"-1e999\" is too small; "), 0U);
}

TEST_F(NearestWordTest, ALongFormOfAValueNamesTheValue)
{
    Done({"plant", "add", "Basil"});
    for (const auto& [word, stage] : {std::pair{"vegetative", "Veg"}, {"flowering", "Flower"}, {"seedling", "Seed"}})
        EXPECT_EQ(Answer({"stage", "--all", word}),
                  "stage: \"" + std::string(word) +
                      "\" is not one of Seed, Clone, Veg, Flower, Dry, Cure, Harvested, Archived; did you mean " +
                      stage + "?\n");
    EXPECT_NE(Answer({"stage", "--all", "zzz"}).find("Archived; write the stage after the plants\n"),
              std::string::npos);
}

TEST_F(NearestWordTest, AnUnknownPlantOrStrainNamesTheNearest)
{
    for (const char* name : {"Basil 1", "Basil 2", "Süßkirsche", "Thai", "Базилік"})
        Done({"plant", "add", name, "--strain", "Genovese"});
    const auto answer = [this](const std::string& name) { return Refused({"plant", "show", name}); };
    EXPECT_EQ(answer("Susskirche"), "plantjournal: \"Susskirche\": no plant has this name or UUID; did you mean "
                                    "\"Süßkirsche\"?\n");
    EXPECT_NE(answer("Базидік").find("did you mean \"Базилік\"?"), std::string::npos);
    EXPECT_EQ(answer("Базидом").find("did you mean"), std::string::npos); // three of seven letters differ
    EXPECT_EQ(answer("Bsail 1"),
              "plantjournal: \"Bsail 1\": no plant has this name or UUID; did you mean \"Basil 1\"?\n");
    EXPECT_EQ(answer("Basil"),
              "plantjournal: \"Basil\": no plant has this name or UUID; did you mean \"Basil 1\" or \"Basil 2\"?\n");
    EXPECT_EQ(answer("Rosemary"), "plantjournal: \"Rosemary\": no plant has this name or UUID; `plantjournal plant "
                                  "list` shows all plants\n");
    EXPECT_EQ(Refused({"strain", "show", "Genoveze"}),
              "plantjournal: \"Genoveze\": no strain has this name; did you mean \"Genovese\"?\n");
    EXPECT_EQ(Refused({"strain", "show", "Opal"}),
              "plantjournal: \"Opal\": no strain has this name; `plantjournal strain list` shows all strains\n");
}

TEST_F(NearestWordTest, AtMostThreeNearNamesAreNamed)
{
    for (const char* name : {"Basil 1", "Basil 2", "Basil 3", "Basil 4"})
        Done({"plant", "add", name});
    EXPECT_EQ(Refused({"plant", "show", "Basil"}),
              "plantjournal: \"Basil\": no plant has this name or UUID; did you mean \"Basil 1\", \"Basil 2\" or "
              "\"Basil 3\"?\n");
}

TEST_F(NearestWordTest, TheNearestOfSeveralNamesAreNamed)
{
    for (const char* name : {"Basil 1", "Bazil", "Tomate", "Sbasil Basil"})
        Done({"plant", "add", name});
    const auto answer = [this](const std::string& name) { return Refused({"plant", "show", name}); };
    EXPECT_NE(answer("Basil").find("did you mean \"Basil 1\", \"Bazil\" or \"Sbasil Basil\"?"), std::string::npos);
    EXPECT_NE(answer("Tomoti").find("did you mean \"Tomate\"?"), std::string::npos); // two of six letters differ
    NoticesOf({"plant", "add", "Básil"});
    EXPECT_NE(answer("Basil").find("did you mean \"Básil\"?"), std::string::npos); // only the accent differs
}

TEST_F(NearestWordTest, AWordOfALongerNameIsNear)
{
    Done({"plant", "add", "Thai Bo 12"});
    EXPECT_NE(Refused({"plant", "show", "bo"}).find("did you mean \"Thai Bo 12\"?"), std::string::npos);
    EXPECT_EQ(Refused({"plant", "show", "t"}).find("did you mean"), std::string::npos); // one letter
    EXPECT_EQ(Refused({"plant", "show", "hai"}).find("did you mean"), std::string::npos);
}

TEST_F(NearestWordTest, TheAnswerIsSafeForATerminal)
{
    EXPECT_EQ(Answer({"\x1B[2J"}).find('\x1B'), std::string::npos);
}

} // namespace
