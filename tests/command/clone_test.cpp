// `clone`: new plants from a mother plant.

#include "command/basil_test.h"

using namespace support;

namespace
{

class CloneTest : public BasilTest
{
  protected:
    // The names of all plants with a mother, sorted.
    Words Clones() const
    {
        Words names;
        for (const JSON& plant : Parsed({"plant", "list"}))
            if (!plant.at("MotherPlantUUID").get<std::string>().empty())
                names.push_back(plant.at("Name"));
        std::sort(names.begin(), names.end());
        return names;
    }
};

TEST_F(CloneTest, AClonesFieldsAreThoseOfItsMother)
{
    Done({"plant", "edit", "Basil", "--medium", "coco", "--tent", "Big", "--pot-size", "11 l", "--sex", "female",
          "--seed-date", "2026-01-01", "--notes", "tall"});
    Done({"clone", "Basil"});
    const JSON clone = Parsed({"plant", "show", "Basil clone 1"});
    ExpectFields(clone, {{"Strain", "Genovese"},
                         {"Medium", "coco"},
                         {"Tent", "Big"},
                         {"Stage", "Clone"},
                         {"CloneDate", PlantEventCurrentDate()},
                         {"MotherPlantUUID", "b1"},
                         {"PotSize", ""},
                         {"Sex", "Unknown"},
                         {"SeedDate", ""},
                         {"Notes", ""}});
}

TEST_F(CloneTest, BothTimelinesHaveACloneEvent)
{
    const JSON before = Basil();
    Done({"clone", "Basil", "Bee", "--date", "2026-05-01"});
    const JSON mothers = Parsed({"event", "list", "Basil"});
    const JSON clones = Parsed({"event", "list", "Bee"});
    ASSERT_EQ(mothers.size(), 1U);
    ASSERT_EQ(clones.size(), 1U);
    ExpectFields(mothers.at(0), {{"Type", "Clone"}, {"EventDate", "2026-05-01"}, {"Details", "new clone: Bee"}});
    ExpectFields(clones.at(0), {{"Type", "Clone"}, {"EventDate", "2026-05-01"}, {"Details", "clone of Basil"}});
    EXPECT_EQ(Parsed({"plant", "show", "Bee"}).at("CloneDate"), "2026-05-01");
    EXPECT_EQ(Basil(), before);
}

TEST_F(CloneTest, SeveralClonesAreNumberedAfterTheExistingOnes)
{
    Done({"clone", "Basil"});
    Done({"clone", "basil", "--count", "2"});
    EXPECT_EQ(Clones(), (Words{"Basil clone 1", "Basil clone 2", "Basil clone 3"}));
    Done({"plant", "delete", "Basil clone 1", "--yes"});
    Done({"plant", "add", "BASIL CLONE 9"});
    for (const char* other :
         {"Basil clone", "Basil clone x", "Basil clone 12b", "Basil clone 99999999999", "Basilclone 50"})
        Done({"plant", "add", other});
    Done({"clone", "Basil"});
    EXPECT_EQ(Clones(), (Words{"Basil clone 10", "Basil clone 2", "Basil clone 3"}));
    Done({"clone", "Basil", "Tray", "--count", "3"});
    EXPECT_EQ(Clones().size(), 6U);
    EXPECT_EQ(Parsed({"plant", "show", "Tray 3"}).at("MotherPlantUUID"), "b1");
    Done({"clone", "Basil", "Tray", "--count", "1"});
    EXPECT_EQ(Parsed({"plant", "show", "Tray 4"}).at("Stage"), "Clone");
}

TEST_F(CloneTest, AMotherWithoutANameHasNumberedClones)
{
    Keep(
        [](PlantRepository& repository)
        {
            Plant plant;
            plant.UUID = "nameless";
            EXPECT_TRUE(repository.CreatePlant(plant));
        });
    Done({"clone", "nameless"});
    EXPECT_EQ(Clones(), Words{"clone 1"});
    EXPECT_EQ(Parsed({"event", "list", "clone 1"}).at(0).at("Details"), "clone of nameless");
}

TEST_F(CloneTest, ANameInUseIsRefused)
{
    Done({"plant", "add", "Chili"});
    EXPECT_EQ(Refused({"clone", "Basil", "chili"}),
              "plantjournal: \"chili\": the plant Chili already has this name; choose another name for the clone\n");
    EXPECT_NE(Mistaken({"clone", "Basil", ""}).find("the name is empty"), std::string::npos);
}

TEST_F(CloneTest, ANameOfDigitsOnlyIsRefused)
{
    EXPECT_EQ(Mistaken({"clone", "Basil", "2"}),
              "plantjournal: clone: NAME: \"2\" is not the name of a clone; did you mean --count 2?\n");
    Done({"clone", "Basil", "2b"});
}

TEST_F(CloneTest, ANameLikeAnotherOneIsNoticed)
{
    const ProgramResult outcome = Run({"clone", "Basil", "Bazil"});
    EXPECT_EQ(outcome.Status, 0);
    EXPECT_TRUE(outcome.Error.starts_with("notice: plant \"Bazil\": differs from the plant \"Basil\" in one letter; "))
        << outcome.Error;
}

TEST_F(CloneTest, ACountIsFrom1To1000)
{
    for (const char* count : {"0", "-1", "1001", "many", "", "1.5", "99999999999999999999"})
        EXPECT_NE(Mistaken({"clone", "Basil", "--count=" + std::string(count)}).find("is not a number of plants"),
                  std::string::npos)
            << count;
    EXPECT_EQ(Parsed({"clone", "Basil", "--count", "1000"}).size(), 1000U);
}

TEST_F(CloneTest, EachCloneIsReported)
{
    const std::string line = DoneLine({"clone", "Basil", "Bee", "--date", "2026-05-01"});
    const std::string uuid = Parsed({"plant", "show", "Bee"}).at("UUID");
    EXPECT_EQ(line, "Cloned Basil as Bee on 2026-05-01 (" + uuid + ")");
    const std::string two = Done({"clone", "Basil", "--count", "2", "-q"});
    EXPECT_EQ(two, Parsed({"plant", "show", "Basil clone 1"}).at("UUID").get<std::string>() + '\n' +
                       Parsed({"plant", "show", "Basil clone 2"}).at("UUID").get<std::string>() + '\n');
    ExpectFields(Parsed({"clone", "Basil"}), {{"Name", "Basil clone 3"}, {"Stage", "Clone"}});
    EXPECT_EQ(Parsed({"clone", "Basil", "--count", "1"}).at(0).at("Name"), "Basil clone 4");
}

} // namespace
