// The list of plants: its columns, its options, and the line about plants that it does not show.

#include "command/basil_test.h"
#include "support/page.h"

using namespace support;

namespace
{

std::string DaysAgo(int days)
{
    return std::to_string(days) + "d";
}

class PlantListTest : public TerminalTest
{
  protected:
    PlantListTest() { Around.Environment.emplace_back("NO_COLOR=1"); }

    void AddPlant(const Words& words) const
    {
        Words line = {"plant", "add"};
        line.insert(line.end(), words.begin(), words.end());
        Done(line);
    }

    // The names of the plants that the list with these options shows.
    Words Listed(const Words& options) const
    {
        Words words = {"plant", "list"};
        words.insert(words.end(), options.begin(), options.end());
        Words names;
        for (const JSON& plant : Parsed(words))
            names.push_back(plant.at("Name"));
        Words shown;
        for (const std::string& line : Lines(Done(words)))
            shown.push_back(line.substr(0, line.find(' ')));
        if (!names.empty())
        {
            EXPECT_EQ(shown.front(), "Name");
            shown.erase(shown.begin());
            EXPECT_EQ(shown, names); // a table and JSON of the same plants
        }
        return names;
    }

    // The text in a column of the only plant.
    std::string TextUnder(const std::string& heading) const
    {
        const std::vector<std::string> lines = Lines(Done({"plant", "list"}));
        const std::size_t begin = lines.at(0).find(heading);
        if (begin == std::string::npos)
            return "";
        const std::string rest = lines.at(1).substr(begin);
        return rest.substr(0, rest.find("  "));
    }
};

TEST_F(PlantListTest, TheListShowsNameStrainStageAgeLastCareAndTent)
{
    AddPlant({"Basil", "--uuid", "aaaa1111", "--strain", "Genovese", "--stage", "flower", "--seed-date", DaysAgo(44),
              "--tent", "South"});
    AddPlant({"Базилік", "--uuid", "bbbb2222", "--strain", "Roma", "--stage", "seed", "--seed-date", DaysAgo(5)});
    Done({"water", "Basil", "--care-date", DaysAgo(3)});
    EXPECT_EQ(Done({"plant", "list"}), "Name     Strain    Stage   Age      Last care        Tent   UUID\n"
                                       "Basil    Genovese  Flower  6 w 2 d  3 d ago (Water)  South  aaaa1111\n"
                                       "Базилік  Roma      Seed    5 d                              bbbb2222\n");
    EXPECT_EQ(RunOnTerminal({"plant", "list"}, {}, 60).Out,
              "Name     Strain    Stage   Age      Last care        Tent\n"
              "Basil    Genovese  Flower  6 w 2 d  3 d ago (Water)  South\n"
              "Базилік  Roma      Seed    5 d\n");
}

TEST_F(PlantListTest, TheAgeCountsFromSowingOrCloningToTheHarvest)
{
    AddPlant({"Basil", "--uuid", "b1"});
    EXPECT_EQ(TextUnder("Age"), "");
    const auto ageAfter = [&](const std::string& flag, const std::string& date)
    {
        EXPECT_EQ(Run({"plant", "edit", "b1", flag, date}).Status, 0); // with a notice of a date that is unlikely
        return TextUnder("Age");
    };
    EXPECT_EQ(ageAfter("--clone-date", DaysAgo(0)), "0 d");
    EXPECT_EQ(ageAfter("--clone-date", DaysAgo(13)), "13 d");
    EXPECT_EQ(ageAfter("--clone-date", DaysAgo(14)), "2 w");
    EXPECT_EQ(ageAfter("--clone-date", DaysAgo(400)), "57 w 1 d");
    EXPECT_EQ(ageAfter("--seed-date", DaysAgo(20)), "2 w 6 d"); // counts before the date of cloning
    EXPECT_EQ(ageAfter("--harvest-date", DaysAgo(10)), "10 d");
    EXPECT_EQ(ageAfter("--harvest-date", DaysAgo(30)), ""); // before sowing
    EXPECT_EQ(ageAfter("--harvest-date", "2026-01"), "");   // not a day
    EXPECT_EQ(ageAfter("--harvest-date", ""), "2 w 6 d");
    EXPECT_EQ(ageAfter("--seed-date", "2025"), "");
}

TEST_F(PlantListTest, TheLastCareIsThatOfTheNewestDate)
{
    AddPlant({"Basil", "--uuid", "b1"});
    EXPECT_EQ(TextUnder("Last care"), "");
    Done({"feed", "b1", "--care-date", "2025"});
    EXPECT_EQ(TextUnder("Last care"), "2025 (Feed)");
    Done({"feed", "b1", "--care-date", DaysAgo(40)});
    EXPECT_EQ(TextUnder("Last care"), "40 d ago (Feed)");
    Done({"feed", "b1", "--care-date", DaysAgo(1)});
    EXPECT_EQ(TextUnder("Last care"), "yesterday (Feed)");
    Done({"water", "b1", "--care-date", DaysAgo(2)});
    EXPECT_EQ(TextUnder("Last care"), "yesterday (Feed)"); // of an earlier date, though entered later
    Done({"water", "b1", "--care-date", DaysAgo(1)});
    EXPECT_EQ(TextUnder("Last care"), "yesterday (Water)"); // the last of two on one day
    Done({"feed", "b1", "--care-date", DaysAgo(0)});
    EXPECT_EQ(TextUnder("Last care"), "today (Feed)");
}

TEST_F(PlantListTest, EachPlantHasItsOwnLastCare)
{
    AddPlant({"Basil", "--uuid", "b1"});
    AddPlant({"Chili", "--uuid", "c1"});
    Done({"water", "Basil", "--care-date", DaysAgo(2)});
    Done({"feed", "Chili", "--care-date", DaysAgo(3)});
    EXPECT_EQ(Done({"plant", "list"}), "Name   Stage  Last care        UUID\n"
                                       "Basil  Veg    2 d ago (Water)  b1\n"
                                       "Chili  Veg    3 d ago (Feed)   c1\n");
}

TEST_F(PlantListTest, OptionsSelectByStageStrainAndTent)
{
    AddPlant({"Anise", "--strain", "Кріп", "--tent", "South", "--stage", "flower"});
    AddPlant({"Basil", "--strain", "Genovese", "--tent", "South", "--stage", "veg"});
    AddPlant({"Chili", "--strain", "Genovese", "--tent", "Süd", "--stage", "flower"});
    EXPECT_EQ(Listed({"--stage", "flower"}), (Words{"Chili", "Anise"}));
    EXPECT_EQ(Listed({"--strain", "GENOVESE"}), (Words{"Basil", "Chili"}));
    EXPECT_EQ(Listed({"--strain", "кРІП"}), Words{"Anise"}); // the case of any alphabet
    EXPECT_EQ(Listed({"--tent", "SÜD"}), Words{"Chili"});
    EXPECT_EQ(Listed({"--tent", "South", "--stage", "Flower"}), Words{"Anise"});
    EXPECT_EQ(Listed({"--tent", "Sou"}), Words{});
    EXPECT_NE(Mistaken({"plant", "list", "--stage", "bloom"}).find("\"bloom\" is not one of Seed, "),
              std::string::npos);
}

TEST_F(PlantListTest, ArchivedPlantsAreListedOnlyOnRequest)
{
    AddPlant({"Anise", "--stage", "archived", "--tent", "South"});
    AddPlant({"Basil", "--tent", "South"});
    AddPlant({"Chili", "--stage", "archived"});
    EXPECT_EQ(Listed({}), Words{"Basil"});
    EXPECT_EQ(Listed({"--all"}), (Words{"Anise", "Basil", "Chili"}));
    EXPECT_EQ(Listed({"--all", "--tent", "south"}), (Words{"Anise", "Basil"}));
    EXPECT_EQ(Listed({"--stage", "archived"}), (Words{"Anise", "Chili"}));
}

TEST_F(PlantListTest, OnATerminalTheListCountsArchivedPlants)
{
    AddPlant({"Anise", "--stage", "archived", "--tent", "South"});
    AddPlant({"Basil", "--tent", "South"});
    AddPlant({"Chili", "--stage", "archived"});
    const auto last = [&](const Words& words) { return Lines(RunOnTerminal(words, {}, 60).Out).back(); };
    EXPECT_EQ(last({"plant", "list"}), "2 archived plants are not shown; --all shows them.");
    EXPECT_EQ(last({"plant", "list", "--tent", "South"}), "1 archived plant is not shown; --all shows it.");
    EXPECT_TRUE(last({"plant", "list", "--all"}).starts_with("Chili  "));
    EXPECT_TRUE(Lines(Done({"plant", "list"})).back().starts_with("Basil  ")); // in a pipe, a table alone
}

TEST_F(PlantListTest, AListWithoutPlantsPrintsTheReason)
{
    AddPlant({"Basil", "--uuid", "b1"});
    EXPECT_EQ(Done({"plant", "list", "--tent", "x"}),
              "No plants match the options; `plantjournal plant list --all` shows all plants.\n");
    Done({"plant", "edit", "b1", "--stage", "archived"});
    EXPECT_EQ(Done({"plant", "list"}), "1 archived plant is not shown; --all shows it.\n");
    EXPECT_EQ(Parsed({"plant", "list"}), JSON::array());
    Done({"plant", "delete", "b1", "--yes"});
    for (const char* view : {"list", "tree"})
    {
        EXPECT_EQ(Done({"plant", view}), "No plants yet; `plantjournal plant add NAME` adds one.\n");
        EXPECT_EQ(Parsed({"plant", view}), JSON::array());
    }
}

} // namespace
