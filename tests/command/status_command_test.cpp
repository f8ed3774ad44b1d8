// How the plants are and which are due for care: `status` and `due`.

#include "command/basil_test.h"
#include "support/page.h"

using namespace support;

namespace
{

// A journal with plants in every state of care.
class StatusCommandTest : public TerminalTest
{
  protected:
    StatusCommandTest()
    {
        Around.Environment.emplace_back("NO_COLOR=1");
        Done({"plant", "add", "Basil", "--strain", "Genovese", "--tent", "South", "--seed-date", "44d", "--stage",
              "flower", "--flip-date", "23d"});
        Done({"plant", "add", "Chili", "--strain", "Cayenne", "--tent", "North", "--seed-date", "9d"});
        Done({"plant", "add", "Dill", "--strain", "Dukat", "--tent", "South"});
        Done({"plant", "add", "Elder", "--strain", "Haschberg", "--tent", "Süd"});
        Done({"plant", "add", "Fennel", "--strain", "Florence", "--stage", "harvested"});
        Done({"plant", "add", "Garlic", "--strain", "Purple", "--stage", "archived"});
        for (const char* date : {"8d", "5d"}) // every three days: due two days ago
            Done({"water", "Basil", "500ml", "--date", date});
        for (const char* date : {"4d", "2d"}) // due today
            Done({"feed", "Chili", "200ml", "--date", date});
        for (const char* date : {"4d", "today"}) // due in four days
            Done({"water", "Dill", "100ml", "--date", date});
    }

    void AddThrips() const
    {
        Done({"health", "add", "Basil", "Thrips", "--severity", "3", "--treatment", "soap", "--date", "3d"});
        Done({"health", "add", "Basil", "Mildew", "--severity", "1", "--date", "1d"});
        Done({"health", "add", "Basil", "Thrips", "--severity", "5", "--date", "31d"}); // long ago
    }

    // The first words of the lines of a table.
    Words FirstWords(const Words& words) const
    {
        Words first;
        for (const std::string& line : Lines(Done(words)))
            first.push_back(line.substr(0, line.find(' ')));
        return first;
    }

    static Words Names(const JSON& plants)
    {
        Words names;
        for (const JSON& plant : plants)
            names.push_back(plant.at("Plant"));
        return names;
    }
};

TEST_F(StatusCommandTest, StatusShowsGrowingPlantsTheMostOverdueFirst)
{
    AddThrips();
    EXPECT_EQ(Done({"status"}),
              "4 plants growing; 1 is due for care today, 1 is overdue.\n"
              "Plant  Stage        Age      Last fed  Last watered  Due          Health\n"
              "Basil  Flower 23 d  6 w 2 d            5 d ago       2 d overdue  Mildew (1 of 5), Thrips (3 of 5)\n"
              "Chili  Veg          9 d      2 d ago                 today\n"
              "Dill   Veg                             today         in 4 d\n"
              "Elder  Veg\n");
}

TEST_F(StatusCommandTest, TheFirstLineCountsDueAndOverduePlants)
{
    const auto first = [&](const Words& words) { return Lines(Done(words)).front(); };
    Done({"water", "Dill", "100ml", "--date", "4d"}); // another entry of the same day
    EXPECT_EQ(first({"status", "--tent", "South"}), "2 plants growing; 1 is overdue for care.");
    EXPECT_EQ(first({"status", "Dill", "Elder"}), "2 plants growing; none is due for care today.");
    EXPECT_EQ(first({"status", "Chili", "Fennel"}), "2 plants; 1 is due for care today.");
    Done({"water", "Elder", "1l", "--date", "8d"});
    Done({"water", "Elder", "1l", "--date", "5d"});
    Done({"plant", "delete", "Chili", "--yes"});
    EXPECT_EQ(first({"status"}), "3 plants growing; 2 are overdue for care.");
    Done({"plant", "delete", "Elder", "--yes"});
    Done({"plant", "delete", "Dill", "--yes"});
    EXPECT_EQ(first({"status"}), "1 plant growing; 1 is overdue for care.");
}

TEST_F(StatusCommandTest, StatusOptionsSelectPlantsInEveryStage)
{
    EXPECT_EQ(Names(Parsed({"status"})), (Words{"Basil", "Chili", "Dill", "Elder"}));
    EXPECT_EQ(Names(Parsed({"status", "--all"})), (Words{"Basil", "Chili", "Dill", "Fennel", "Elder", "Garlic"}));
    EXPECT_EQ(Names(Parsed({"status", "--stage", "archived"})), Words{"Garlic"});
    EXPECT_EQ(Names(Parsed({"status", "garlic", "Basil"})), (Words{"Basil", "Garlic"}));
    EXPECT_EQ(Names(Parsed({"status", "--tent", "SÜD"})), Words{"Elder"});
    EXPECT_EQ(Names(Parsed({"status", "--strain", "genovese", "--tent", "north"})), Words{});
    EXPECT_EQ(Done({"status", "--strain", "genovese", "--tent", "north"}),
              "No plants match the options; `plantjournal status --all` shows all plants.\n");
}

TEST_F(StatusCommandTest, StatusOfOnePlantIsADescription)
{
    AddThrips();
    const std::string five = Parsed({"status", "Basil"}).at(0).at("LastWaterDate");
    const std::string flip = Parsed({"status", "Basil"}).at(0).at("StageDate");
    const std::string due = Parsed({"status", "Basil"}).at(0).at("DueDate");
    EXPECT_EQ(Done({"status", "basil"}), "Plant           Basil\n"
                                         "Strain          Genovese\n"
                                         "Tent            South\n"
                                         "Stage           Flower for 23 d since " +
                                             flip +
                                             "\n"
                                             "Age             6 w 2 d\n"
                                             "Since the flip  23 d\n"
                                             "Last watered    5 d ago, on " +
                                             five +
                                             "\n"
                                             "Care            every 3 d\n"
                                             "Due             2 d overdue, on " +
                                             due +
                                             "\n"
                                             "Health          Mildew (1 of 5), yesterday\n"
                                             "                Thrips (3 of 5), 3 d ago: soap\n");
    EXPECT_EQ(Done({"status", "Elder"}), "Plant   Elder\nStrain  Haschberg\nTent    Süd\nStage   Veg\n");
}

TEST_F(StatusCommandTest, StatusFitsNarrowAndWideTerminals)
{
    AddThrips();
    const auto shown = [&](int columns) { return RunOnTerminal({"status"}, {}, columns).Out; };
    EXPECT_EQ(shown(60), "4 plants growing; 1 is due for care today, 1 is overdue.\n"
                         "Plant  Stage        Age      Due          Health\n"
                         "Basil  Flower 23 d  6 w 2 d  2 d overdue  Mildew (1 of 5), …\n"
                         "Chili  Veg          9 d      today\n"
                         "Dill   Veg                   in 4 d\n"
                         "Elder  Veg\n");
    EXPECT_TRUE(shown(50).starts_with("4 plants growing; 1 is due for care today, 1 is overdue.\n"
                                      "Plant  Stage        Due          Health\n"));
    for (const int columns : {60, 80, 200})
        for (const std::string& line : Lines(shown(columns)))
            EXPECT_LE(line.size(), static_cast<std::size_t>(columns) + 2) << line; // an ellipsis has three bytes
    EXPECT_NE(shown(80).find("Last fed"), std::string::npos);
    EXPECT_EQ(shown(200), Done({"status"}));
}

TEST_F(StatusCommandTest, StatusPrintsJSONAndCSVWithTheSameFields)
{
    AddThrips();
    const JSON basil = Parsed({"status", "Basil"}).at(0);
    ExpectFields(basil, {{"Plant", "Basil"},
                         {"Strain", "Genovese"},
                         {"Tent", "South"},
                         {"Stage", "Flower"},
                         {"StageDays", 23},
                         {"AgeDays", 44},
                         {"FlipDays", 23},
                         {"LastFeedDate", ""},
                         {"CareGapDays", 3.0},
                         {"DueInDays", -2}});
    EXPECT_EQ(basil.at("Health").size(), 2U);
    ExpectFields(basil.at("Health").at(0), {{"Issue", "Mildew"}, {"Severity", 1}});
    EXPECT_TRUE(Parsed({"status", "Elder"}).at(0).at("AgeDays").is_null());
    const std::vector<std::string> lines = Lines(Done({"status", "Basil", "--csv"}));
    ASSERT_EQ(lines.size(), 2U);
    std::string names;
    for (const auto& [name, value] : basil.items())
        names += (names.empty() ? "" : ",") + name;
    EXPECT_EQ(lines[0], names);
    EXPECT_TRUE(lines[1].ends_with(",-2,Mildew (1 of 5); Thrips (3 of 5)")) << lines[1];
    EXPECT_NE(Mistaken({"status", "--json", "--csv"}).find("--json and --csv exclude each other"), std::string::npos);
}

TEST_F(StatusCommandTest, StatusWithoutGrowingPlantsSaysWhatToDo)
{
    for (const char* name : {"Basil", "Chili", "Dill", "Elder"})
        Done({"plant", "edit", name, "--stage", "dry"});
    EXPECT_EQ(Done({"status"}), "No plants are growing; `plantjournal plant add NAME` adds one, `plantjournal status "
                                "--all` shows all plants.\n");
    EXPECT_EQ(Parsed({"status"}), JSON::array());
    EXPECT_EQ(Lines(Done({"status", "--csv"})).size(), 1U);
    EXPECT_EQ(Done({"due"}), "Nothing is due today. No growing plants match.\n");
}

TEST_F(StatusCommandTest, UnknownNamesAreRefusedWithTheNearest)
{
    EXPECT_NE(Refused({"status", "Bsail"}).find("did you mean \"Basil\"?"), std::string::npos);
    EXPECT_NE(Refused({"status", "--strain", "Genovse"}).find("no strain has this name; did you mean \"Genovese\"?"),
              std::string::npos);
    EXPECT_NE(Refused({"status", "--tent", "Attic"}).find("no tent has this name; `plantjournal plant list --all`"),
              std::string::npos);
    EXPECT_NE(Mistaken({"status", "--stage", "bloom"}).find("\"bloom\" is not one of Seed, "), std::string::npos);
    Done({"strain", "add", "Opal"}); // a strain without plants is known
    EXPECT_EQ(Done({"status", "--strain", "opal"}),
              "No plants match the options; `plantjournal status --all` shows all plants.\n");
}

TEST_F(StatusCommandTest, HostileNamesAreSafeForATerminal)
{
    Done({"plant", "edit", "Basil", "--name", "\x1B[2J\n<b>"});
    Done({"plant", "add", std::string(10'000, 'x')});
    Keep(
        [](PlantRepository& repository)
        {
            Plant nameless;
            nameless.UUID = "nameless";
            EXPECT_TRUE(repository.CreatePlant(nameless));
        });
    for (const Words& words : {Words{"status"}, {"status", "--all"}, {"due"}, {"log"}, {"totals", "--by", "plant"}})
        EXPECT_EQ(Done(words).find('\x1B'), std::string::npos);
    EXPECT_NE(Done({"status"}).find("\nnameless  "), std::string::npos); // a plant without a name
}

TEST_F(StatusCommandTest, PlantsWithOneNameAreShownWithTheirUUIDs)
{
    Done({"plant", "edit", "Elder", "--name", "Anise"});
    NoticesOf({"plant", "add", "ANISE", "--uuid", "a2"});
    EXPECT_NE(Done({"status"}).find("\nANISE (a2)"), std::string::npos);
    EXPECT_NE(Done({"status"}).find("\nAnise ("), std::string::npos);
}

TEST_F(StatusCommandTest, DueListsThePlantsThatAreDueTodayOrBefore)
{
    EXPECT_EQ(Done({"due"}), "Plant  Due          Tent   Last watered  Last fed  Usual care\n"
                             "Basil  2 d overdue  South  5 d ago                 every 3 d\n"
                             "Chili  today        North                2 d ago   every 2 d\n");
    EXPECT_EQ(Names(Parsed({"due"})), (Words{"Basil", "Chili"}));
    EXPECT_EQ(FirstWords({"due", "--within", "3d"}), (Words{"Plant", "Basil", "Chili"}));
    for (const char* days : {"4d", "4", "1w"})
        EXPECT_EQ(FirstWords({"due", "--within", days}), (Words{"Plant", "Basil", "Chili", "Dill"}));
    EXPECT_EQ(FirstWords({"due", "--tent", "north"}), (Words{"Plant", "Chili"}));
    EXPECT_EQ(Lines(Done({"due", "--csv"})).size(), 3U);
    EXPECT_EQ(RunOnTerminal({"due"}, {}, 40).Out, "Plant  Due          Tent   Last watered\n"
                                                  "Basil  2 d overdue  South  5 d ago\n"
                                                  "Chili  today        North\n");
}

TEST_F(StatusCommandTest, DueWithoutDuePlantsNamesTheNextOne)
{
    const std::string next = Parsed({"status", "Dill"}).at(0).at("DueDate");
    EXPECT_EQ(Done({"due", "Dill"}), "Nothing is due today. Next is Dill, in 4 d (" + next + ").\n");
    EXPECT_TRUE(Done({"due", "Dill", "--within", "2d"}).starts_with("Nothing is due until 20"));
    for (const char* date : {"5d", "2d"}) // due tomorrow
        Done({"water", "Fennel", "1l", "--date", date});
    Done({"plant", "edit", "Fennel", "--stage", "veg"});
    EXPECT_TRUE(Done({"due", "Dill", "Fennel"}).starts_with("Nothing is due today. Next is Fennel, tomorrow ("));
    EXPECT_EQ(Done({"due", "Elder"}),
              "Nothing is due today. A due date is known once a plant was fed or watered on two days.\n");
    EXPECT_EQ(Parsed({"due", "Elder"}), JSON::array());
    for (const char* days : {"soon", "", "d", "-1d", "3m", "99999d"})
        EXPECT_NE(Mistaken({"due", "--within", days}).find("is not a number of days; write it like 3d or 2w"),
                  std::string::npos)
            << days;
}

TEST_F(StatusCommandTest, PlantsOfEqualNamesAreShownWithTheirUUIDs)
{
    const std::string first = "Basil (" + Parsed({"status", "Basil"}).at(0).at("PlantUUID").get<std::string>() + ')';
    EXPECT_NE(NoticesOf({"plant", "add", "BASIL", "--uuid", "second"}), "");
    for (const char* date : {"8d", "5d"})
        Done({"water", "second", "500ml", "--date", date});
    for (const Words& words : {Words{"status"}, {"due"}, {"log"}, {"search", "ml"}, {"totals", "--by", "plant"}})
    {
        const std::string shown = Done(words);
        EXPECT_NE(shown.find(first + ' '), std::string::npos) << shown;
        EXPECT_NE(shown.find("BASIL (second) "), std::string::npos) << shown;
        EXPECT_NE(shown.find("Chili "), std::string::npos) << shown;
    }
    EXPECT_NE(Done({"status", "second"}).find("BASIL (second)\n"), std::string::npos);
}

TEST_F(StatusCommandTest, CareTomorrowIsCalledTomorrow)
{
    Done({"water", "Elder", "1l", "--date", "1d"});
    Done({"water", "Elder", "1l", "--date", "3d"});
    EXPECT_NE(Done({"status", "Elder"}).find("Due           tomorrow, on "), std::string::npos);
}

using NoPlantTest = CommandTest;

TEST_F(NoPlantTest, EveryAnswerOfAnEmptyJournalSaysWhatToDo)
{
    const std::string uuid = Stored({"plant", "add", "Basil"});
    Done({"plant", "delete", uuid, "--yes"});
    for (const Words& words : {Words{"status"}, {"due"}, {"log"}, {"search", "x"}, {"totals"}, {"compare", "x"}})
        EXPECT_EQ(Done(words), "No plants yet; `plantjournal plant add NAME` adds one.\n") << words.front();
    for (const Words& words : {Words{"status"}, {"due"}, {"log"}, {"search", "x"}, {"totals"}})
        EXPECT_EQ(Parsed(words), JSON::array()) << words.front();
}

TEST_F(NoPlantTest, AnAnswerDoesNotCreateAMissingJournal)
{
    for (const Words& words : {Words{"status"}, {"due"}, {"log"}, {"search", "x"}, {"totals"}, {"compare", "x"}})
        EXPECT_NE(Refused(words).find("no such journal; `plantjournal plant add NAME` creates one"), std::string::npos);
    EXPECT_EQ(Beside(), Words{});
}

} // namespace
