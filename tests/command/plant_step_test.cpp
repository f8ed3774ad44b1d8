// `stage`, `archive`, `transplant`, `top`, `train` and `defoliate`: a step of one or several plants, with its event.

#include "command/basil_test.h"
#include "support/other_program.h"
#include "testing/plain_connection.h"

using namespace support;

namespace
{

// Basil (Veg, tent Big), Chili (Seed, tent Big) and Dill (Flower, tent Small).
class PlantStepTest : public BasilTest
{
  protected:
    PlantStepTest()
    {
        Done({"plant", "edit", "Basil", "--tent", "Big"});
        Done({"plant", "add", "Chili", "--uuid", "c1", "--strain", "Rocoto", "--stage", "seed", "--tent", "Big"});
        Done({"plant", "add", "Dill", "--uuid", "d1", "--stage", "flower", "--tent", "Small"});
    }

    JSON Shown(const std::string& plant) const { return Parsed({"plant", "show", plant}); }
    JSON Events(const std::string& plant) const { return Parsed({"event", "list", plant}); }

    // Compares the only event of a plant.
    void ExpectEvent(const std::string& plant, const std::string& type, const std::string& details,
                     const std::string& date = PlantEventCurrentDate()) const
    {
        const JSON events = Events(plant);
        ASSERT_EQ(events.size(), 1U) << plant;
        ExpectFields(events.at(0), {{"Type", type}, {"Details", details}, {"EventDate", date}});
    }
    // Whether the command changes these fields of the plant, and no other.
    void ExpectChange(const Words& words, const std::string& plant, const JSON& fields) const
    {
        JSON expected = Shown(plant);
        expected.update(fields);
        Done(words);
        EXPECT_EQ(Shown(plant), expected);
    }
};

// ---- Stages

TEST_F(PlantStepTest, AMoveToAStageSetsItAndStoresItsName)
{
    int event = 1;
    for (const char* stage : {"Seed", "Clone", "Dry", "Cure", "Archived", "Veg"})
    {
        JSON expected = Basil();
        expected["Stage"] = stage;
        const std::string text = stage;
        EXPECT_EQ(Done({"stage", "basil", text}), (text == "Archived" ? "Archived Basil" : "Moved Basil to " + text) +
                                                      " (event " + std::to_string(event++) + ")\n");
        EXPECT_EQ(Basil(), expected);
        ExpectFields(Events("Basil").at(0),
                     {{"Type", "Stage"}, {"Details", stage}, {"EventDate", PlantEventCurrentDate()}});
    }
}

TEST_F(PlantStepTest, AMoveToFlowerIsAFlip)
{
    ExpectChange({"stage", "Basil", "FLOWER"}, "Basil", {{"Stage", "Flower"}, {"FlipDate", PlantEventCurrentDate()}});
    ExpectEvent("Basil", "Flip", "");
    EXPECT_EQ(Done({"stage", "Chili", "flower", "--date", "2026-05"}), "Moved Chili to Flower on 2026-05 (event 2)\n");
    ExpectFields(Shown("Chili"), {{"Stage", "Flower"}, {"FlipDate", "2026-05"}});
    ExpectEvent("Chili", "Flip", "", "2026-05");
}

TEST_F(PlantStepTest, SeveralPlantsMoveTogether)
{
    EXPECT_EQ(Done({"stage", "Chili", "Dill", "clone", "--date", "2026-05-02"}),
              "Moved Chili to Clone on 2026-05-02 (event 1)\nMoved Dill to Clone on 2026-05-02 (event 2)\n");
    ExpectEvent("Dill", "Stage", "Clone", "2026-05-02");
    EXPECT_EQ(Done({"stage", "--tent", "big", "flower", "-q"}), "3\n4\n"); // in the order of plant list
    EXPECT_EQ(Shown("Chili").at("Stage"), "Flower");
    EXPECT_EQ(Shown("Dill").at("Stage"), "Clone");
    EXPECT_EQ(Parsed({"stage", "--stage", "clone", "veg"}).at(0).at("PlantUUID"), "d1");
    EXPECT_NE(Mistaken({"stage", "--stage", "dry", "veg"}).find("is not a stage of growing plants"), std::string::npos);
}

TEST_F(PlantStepTest, AStageThatIsReachedAlreadyStoresNothing)
{
    const std::string before = Content();
    const ProgramResult outcome = Run({"stage", "Dill", "Flower"});
    EXPECT_EQ(outcome.Status, 0);
    EXPECT_EQ(outcome.Out, "");
    EXPECT_EQ(outcome.Error, "notice: Dill: the plant is already in the stage Flower; nothing was stored\n");
    EXPECT_EQ(Content(), before);
    EXPECT_EQ(JSON::parse(Run({"stage", "Dill", "Basil", "flower", "--json"}).Out).size(), 1U);
    EXPECT_EQ(Events("Dill").size(), 0U);
}

TEST_F(PlantStepTest, AStageHarvestedPointsToTheHarvest)
{
    EXPECT_NE(Mistaken({"stage", "Basil", "harvested"}).find("`plantjournal harvest add PLANT` adds one"),
              std::string::npos);
}

TEST_F(PlantStepTest, TheLastWordOfStageIsTheStage)
{
    EXPECT_NE(Mistaken({"stage", "Basil"}).find("\"Basil\" is not one of Seed, Clone, Veg"), std::string::npos);
    EXPECT_NE(Mistaken({"stage"}).find("the stage is missing"), std::string::npos);
    EXPECT_NE(Mistaken({"stage", "veg"}).find("no plant was named"), std::string::npos);
    Done({"plant", "add", "Flower", "--uuid", "f1"});
    Done({"stage", "Flower", "seed"});
    EXPECT_EQ(Shown("f1").at("Stage"), "Seed");
    EXPECT_EQ(Basil().at("Stage"), "Veg");
}

TEST_F(PlantStepTest, AnArchivedPlantKeepsItsRecords)
{
    Done({"feed", "Basil", "500ml"});
    ExpectChange({"archive", "Basil", "--date", "2026-05-01"}, "Basil", {{"Stage", "Archived"}});
    EXPECT_EQ(Parsed({"care", "list", "Basil"}).size(), 1U);
    ExpectFields(Events("Basil").at(1), {{"Type", "Stage"}, {"Details", "Archived"}, {"EventDate", "2026-05-01"}});
    EXPECT_EQ(Done({"archive", "--tent", "Small"}), "Archived Dill (event 3)\n");
    EXPECT_NE(Run({"archive", "Dill"}).Error.find("notice: Dill: the plant is already in the stage Archived"),
              std::string::npos);
    EXPECT_EQ(Done({"archive", "--all"}), "Archived Chili (event 4)\n");
}

// ---- `plant edit --stage`

TEST_F(PlantStepTest, AnEditedStageStoresItsEvent)
{
    ExpectChange({"plant", "edit", "Basil", "--stage", "dry", "--tent", "Attic"}, "Basil",
                 {{"Stage", "Dry"}, {"Tent", "Attic"}});
    ExpectEvent("Basil", "Stage", "Dry");
    Done({"plant", "edit", "Basil", "--stage", "dry"});
    Done({"plant", "edit", "Basil", "--tent", "Cellar"});
    ExpectEvent("Basil", "Stage", "Dry");
}

TEST_F(PlantStepTest, AnEditToFlowerIsAFlipOnTheFlipDate)
{
    ExpectChange({"plant", "edit", "Basil", "--stage", "flower"}, "Basil",
                 {{"Stage", "Flower"}, {"FlipDate", PlantEventCurrentDate()}});
    ExpectEvent("Basil", "Flip", "");
    ExpectChange({"plant", "edit", "Chili", "--stage", "flower", "--flip-date", "2026-05-01"}, "Chili",
                 {{"Stage", "Flower"}, {"FlipDate", "2026-05-01"}});
    ExpectEvent("Chili", "Flip", "", "2026-05-01");
    Done({"plant", "add", "Egg"});
    ExpectChange({"plant", "edit", "Egg", "--stage", "flower", "--flip-date="}, "Egg", {{"Stage", "Flower"}});
    ExpectEvent("Egg", "Flip", "");
    Done({"plant", "add", "Fig", "--flip-date", "2026-05-01"});
    ExpectChange({"plant", "edit", "Fig", "--stage", "dry", "--flip-date", "2026-04-01"}, "Fig",
                 {{"Stage", "Dry"}, {"FlipDate", "2026-04-01"}});
    ExpectEvent("Fig", "Stage", "Dry");
}

// ---- Transplants

TEST_F(PlantStepTest, ATransplantSetsThePotTheMediumTheTentAndTheDate)
{
    ExpectChange(
        {"transplant", "Basil", "--pot", "11 l", "--medium", "coco", "--to-tent", "Small", "--date", "2026-05-03"},
        "Basil", {{"PotSize", "11 l"}, {"Medium", "coco"}, {"Tent", "Small"}, {"TransplantDate", "2026-05-03"}});
    ExpectEvent("Basil", "Transplant", "into 11 l, coco, tent Small", "2026-05-03");
    ExpectChange({"transplant", "Basil"}, "Basil", {{"TransplantDate", PlantEventCurrentDate()}});
    EXPECT_EQ(Events("Basil").at(0).at("Details"), "");
    ExpectChange({"transplant", "Basil", "--pot-size", "20 l"}, "Basil", {{"PotSize", "20 l"}});
}

TEST_F(PlantStepTest, ATransplantIsReportedWithItsPot)
{
    EXPECT_EQ(Done({"transplant", "Basil", "Chili", "--pot", "11 l"}),
              "Transplanted Basil into 11 l (event 1)\nTransplanted Chili into 11 l (event 2)\n");
    EXPECT_EQ(Done({"transplant", "Basil"}), "Transplanted Basil (event 3)\n");
    EXPECT_EQ(Done({"transplant", "Basil", "--medium", "soil", "--details", "root bound", "--date", "2026-05-03"}),
              "Transplanted Basil into soil on 2026-05-03: root bound (event 4)\n");
    EXPECT_EQ(Events("Basil").at(2).at("Details"), "into soil; root bound");
}

TEST_F(PlantStepTest, TheTentOfATransplantSelectsAndToTentMoves)
{
    EXPECT_EQ(Done({"transplant", "--tent", "Big", "--to-tent", "Attic", "-q"}), "1\n2\n");
    EXPECT_EQ(Basil().at("Tent"), "Attic");
    EXPECT_EQ(Shown("Dill").at("Tent"), "Small");
    EXPECT_NE(Mistaken({"transplant", "Basil", "--tent", "Small"}).find("--to-tent moves the plants that you name"),
              std::string::npos);
}

// ---- Topping, training, defoliation

TEST_F(PlantStepTest, ATransplantFromAnEmptyTentNamesToTent)
{
    const std::string message = Refused({"transplant", "--strain", "Genovese", "--tent", "Attic"});
    EXPECT_NE(message.find("no growing plant matches the options; "), std::string::npos) << message;
    EXPECT_NE(message.find("--tent selects the plants in a tent; --to-tent moves them to another."), std::string::npos)
        << message;
    EXPECT_EQ(Refused({"transplant", "--strain", "Rue"}).find("--to-tent"), std::string::npos);
}

TEST_F(PlantStepTest, EachTrainingHasItsTypeOfEvent)
{
    const std::string before = Shown("Basil").dump();
    int event = 1;
    for (const auto& [command, done, type] :
         std::vector<std::array<const char*, 3>>{{"top", "Topped", "Topped"},
                                                 {"train", "Trained", "LST Trained"},
                                                 {"defoliate", "Defoliated", "Defoliated"}})
    {
        EXPECT_EQ(Done({command, "Basil", "--details", "the fifth node", "--date", "2026-05-04"}),
                  done + std::string(" Basil on 2026-05-04: the fifth node (event ") + std::to_string(event++) + ")\n");
        ExpectFields(Events("Basil").at(0),
                     {{"Type", type}, {"Details", "the fifth node"}, {"EventDate", "2026-05-04"}});
        EXPECT_EQ(Done({command, "Chili", "--stage", "flower", "-q"}),
                  std::to_string(event) + "\n" + std::to_string(event + 1) + "\n");
        event += 2;
        ExpectFields(Events("Dill").at(0), {{"Type", type}, {"Details", ""}, {"EventDate", PlantEventCurrentDate()}});
    }
    EXPECT_EQ(Shown("Basil").dump(), before);
}

// ---- All steps

const std::vector<Words> StepCommands = {{"stage", "Basil", "Chili", "flower"},
                                         {"archive", "Basil", "Chili"},
                                         {"transplant", "Basil", "Chili", "--pot", "11 l"},
                                         {"top", "Basil", "Chili"},
                                         {"train", "Basil", "Chili"},
                                         {"defoliate", "Basil", "Chili"},
                                         {"note", "Basil", "Chili", "four leaves"},
                                         {"clone", "Basil", "--count", "2"},
                                         {"plant", "edit", "Basil", "--stage", "flower"}};

TEST_F(PlantStepTest, AStepIsUndoneWhole)
{
    for (const Words& words : StepCommands)
    {
        const std::string before = Content();
        Done(words);
        EXPECT_NE(Content(), before) << words.front();
        Done({"undo", "--yes"});
        EXPECT_EQ(Content(), before) << words.front();
    }
}

TEST_F(PlantStepTest, AnUnknownPlantOrDateChangesNoPlant)
{
    for (Words words : StepCommands)
    {
        Words unknownDate = words;
        unknownDate.insert(unknownDate.end(), {"--date", "someday"});
        Mistaken(unknownDate);
        if (words.at(2) != "Chili")
            continue;
        words.at(2) = "Chilli";
        EXPECT_NE(Refused(words).find("\"Chilli\": no plant has this name"), std::string::npos) << words.front();
    }
    Mistaken({"top", "Basil", "--date="});
}

TEST_F(PlantStepTest, AnotherProgramsLockChangesNothing)
{
    const OtherProgram other(Journal, "BEGIN IMMEDIATE;");
    for (const Words& words : {StepCommands[0], StepCommands[6], StepCommands[7], StepCommands[8]})
        EXPECT_NE(Refused(words).find("another program is writing to the journal, try again when"), std::string::npos)
            << words.front();
}

TEST_F(PlantStepTest, TheRecordWithJSONIsTheEvent)
{
    const JSON one = Parsed({"stage", "Basil", "flower"});
    ExpectFields(one, {{"ID", 1}, {"PlantUUID", "b1"}, {"Type", "Flip"}});
    const JSON several = Parsed({"top", "Basil", "Chili"});
    ASSERT_EQ(several.size(), 2U);
    ExpectFields(several.at(1), {{"ID", 3}, {"PlantUUID", "c1"}, {"Type", "Topped"}});
    EXPECT_TRUE(Parsed({"train", "--stage", "seed"}).is_array());
}

TEST_F(PlantStepTest, AnUnlikelyDateIsNoticed)
{
    const ProgramResult outcome = Run({"top", "Basil", "Chili", "--date", "9999"});
    EXPECT_EQ(outcome.Status, 0);
    EXPECT_EQ(outcome.Error, "notice: event of Basil and 1 more: --date \"9999\": the date is in the future\n");
    EXPECT_NE(Run({"clone", "Basil", "--date", "9999"}).Error.find("--date \"9999\": the date is in the future"),
              std::string::npos);
    EXPECT_NE(Run({"note", "Basil", "text", "--date", "9999"}).Error.find("--date \"9999\": the date is in the future"),
              std::string::npos);
}

} // namespace
