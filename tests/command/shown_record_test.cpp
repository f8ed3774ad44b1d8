// Records in the words of a person, lists without records, and the plant's name in JSON.

#include "command/basil_test.h"
#include "support/page.h"

using namespace support;

namespace
{

const std::string Kinds[] = {"care", "event", "harvest", "photo", "health", "note"};

class ShownRecordTest : public BasilTest
{
  protected:
    ShownRecordTest()
    {
        Write("data/plantjournal/basil.jpg", "a picture");
        Left = {"basil.jpg", "journal.db"};
    }

    void AddARecordOfEachKind() const
    {
        Done({"care", "add", "Basil", "--care-date", "2026-05-02", "--action", "feed", "--product", "Bloom A",
              "--amount-ml", "500", "--ec", "1.8", "--ph", "6.25", "--runoff-ml", "20", "--notes", "slow"});
        Done({"harvest", "add", "Basil", "--harvest-date", "2026-07-01", "--wet-weight-g", "4100", "--dry-weight-g",
              "920.3", "--quality-rating", "8.5", "--seed-yield", "12", "--cure-outcome", "good", "--notes", "dry"});
        Done(
            {"photo", "add", "Basil", "data/plantjournal/basil.jpg", "--photo-date", "2026-05-03", "--caption", "low"});
        Done({"health", "add", "Basil", "thrips", "--observation-date", "2026-05-04", "--severity", "3", "--treatment",
              "soap", "--notes", "few"});
        Done({"note", "add", "Basil", "six leaves", "--entry-date", "2026-05-05"});
    }
};

TEST_F(ShownRecordTest, RecordsAreListedInWordsWithUnits)
{
    AddARecordOfEachKind();
    EXPECT_EQ(Done({"care", "list", "Basil"}), "ID  Date        Action  Product  Amount   EC    pH  Runoff  Notes\n"
                                               " 1  2026-05-02  Feed    Bloom A  500 ml  1.8  6.25   20 ml  slow\n");
    EXPECT_EQ(Done({"harvest", "list", "Basil"}), "Date        Wet weight  Dry weight    Quality  Seeds  Cure  Notes\n"
                                                  "2026-07-01      4100 g     920.3 g  8.5 of 10     12  good  dry\n");
    EXPECT_EQ(Done({"photo", "list", "Basil"}), "ID  Date        File       Caption\n"
                                                " 1  2026-05-03  basil.jpg  low\n");
    EXPECT_EQ(Done({"health", "list", "Basil"}), "ID  Date        Issue   Severity  Treatment  Notes\n"
                                                 " 1  2026-05-04  thrips    3 of 5  soap       few\n");
    EXPECT_EQ(Done({"note", "list", "Basil"}), "ID  Date        Type         Details\n"
                                               " 1  2026-05-05  Observation  six leaves\n");
    EXPECT_EQ(Done({"event", "list", "Basil", "--newest", "1"})
                  .find("ID  Date        Type     Details\n"
                        " 2  2026-07-01  Harvest  "),
              0U);
    EXPECT_EQ(Done({"harvest", "list"}), "Plant  Date        Wet weight  Dry weight    Quality  Seeds  Cure  Notes\n"
                                         "Basil  2026-07-01      4100 g     920.3 g  8.5 of 10     12  good  dry\n");
}

TEST_F(ShownRecordTest, WhatWasNotEnteredIsLeftOut)
{
    Done({"water", "Basil", "--care-date", "2026-05-02"});
    EXPECT_EQ(Done({"care", "list"}), "Plant  ID  Date        Action\n"
                                      "Basil   1  2026-05-02  Water\n");
    Done({"feed", "Basil", "--care-date", "2026-05-03", "--ph", "6"});
    EXPECT_EQ(Done({"care", "list", "Basil"}), "ID  Date        Action  pH\n"
                                               " 2  2026-05-03  Feed     6\n"
                                               " 1  2026-05-02  Water\n");
    EXPECT_EQ(Done({"plant", "show", "Basil"}), "UUID    b1\n"
                                                "Name    Basil\n"
                                                "Strain  Genovese\n"
                                                "Stage   Veg\n");
    EXPECT_EQ(Done({"strain", "list"}), "Name\nGenovese\n");
}

TEST_F(ShownRecordTest, APlantIsShownInWords)
{
    Done({"plant",        "add",
          "Базилік",      "--uuid",
          "c1",           "--strain",
          "Genovese",     "--mother",
          "Basil",        "--stage",
          "clone",        "--sex",
          "female",       "--tent",
          "South",        "--pot-size",
          "11 l",         "--medium",
          "coco",         "--seed-date",
          "2026-02",      "--flip-height-cm",
          "42.5",         "--final-height-cm",
          "90",           "--clone-date",
          "2026-03-01",   "--transplant-date",
          "2026-03-12",   "--flip-date",
          "2026-04-20",   "--harvest-date",
          "2026-07-01",   "--notes",
          "by the window"});
    EXPECT_EQ(Done({"plant", "show", "c1"}), "UUID            c1\n"
                                             "Name            Базилік\n"
                                             "Strain          Genovese\n"
                                             "Mother          Basil\n"
                                             "Stage           Clone\n"
                                             "Sex             Female\n"
                                             "Tent            South\n"
                                             "Pot size        11 l\n"
                                             "Medium          coco\n"
                                             "Sown            2026-02\n"
                                             "Height at flip  42.5 cm\n"
                                             "Final height    90 cm\n"
                                             "Cloned          2026-03-01\n"
                                             "Transplanted    2026-03-12\n"
                                             "Flipped         2026-04-20\n"
                                             "Harvested       2026-07-01\n"
                                             "Notes           by the window\n");
}

TEST_F(ShownRecordTest, TheMotherOfAPlantIsShownByHerName)
{
    Done({"plant", "add", "Thai"});
    Done({"plant", "add", "Cutting", "--mother", "Thai"});
    EXPECT_NE(Done({"plant", "show", "Cutting"}).find("\nMother  Thai\n"), std::string::npos);
}

TEST_F(ShownRecordTest, AStrainWithoutPlantsHasCountsOfZero)
{
    Done({"strain", "add", "Roma"});
    EXPECT_EQ(Done({"strain", "show", "Roma"}), "Strain    Roma\n"
                                                "Plants    0\n"
                                                "Harvests  0\n");
}

class ShownOnTerminalTest : public ShownRecordTest
{
  protected:
    void SetUp() override { SkipWithoutTerminal(); }
};

TEST_F(ShownOnTerminalTest, ALongTextIsWrappedBetweenWords)
{
    Done({"plant", "edit", "Basil", "--notes",
          "Ein großer Topf 紅紅紅紅 am Fenster, dem das Licht von Süden genügt.\n\nSecond " + std::string(70, 'x')});
    EXPECT_TRUE(RunOnTerminal({"plant", "show", "Basil"}, {}, 60)
                    .Out.ends_with("Notes   Ein großer Topf 紅紅紅紅 am Fenster, dem das Licht\n"
                                   "        von Süden genügt.\n"
                                   "\n"
                                   "        Second\n"
                                   "        " +
                                   std::string(70, 'x') + "\n"));
    EXPECT_TRUE(RunOnTerminal({"plant", "show", "Basil"}, {}, 200)
                    .Out.ends_with("Notes   Ein großer Topf 紅紅紅紅 am Fenster, dem das Licht von Süden genügt.\n"
                                   "\n"
                                   "        Second " +
                                   std::string(70, 'x') + "\n"));
    EXPECT_NE(Done({"plant", "show", "Basil"}).find("Licht von Süden genügt.\n"), std::string::npos);
}

TEST_F(ShownOnTerminalTest, ANarrowTextHasSixteenColumns)
{
    Done({"plant", "edit", "Basil", "--notes", std::string(20, 'x') + " one two three four five"});
    EXPECT_TRUE(RunOnTerminal({"plant", "show", "Basil"}, {}, 10)
                    .Out.ends_with("Notes   " + std::string(20, 'x') + "\n        one two three\n        four five\n"));
}

TEST_F(ShownRecordTest, AShownTextIsSafeForATerminal)
{
    Done({"plant", "edit", "Basil", "--notes", "\x1B[2J"});
    EXPECT_EQ(Done({"plant", "show", "Basil"}).find('\x1B'), std::string::npos);
}

TEST_F(ShownRecordTest, SmallAndLargeNumbersAreNotRounded)
{
    const auto shown = [&](const std::string& height)
    {
        EXPECT_EQ(Run({"plant", "edit", "Basil", "--final-height-cm", height}).Status, 0);
        const std::string plant = Done({"plant", "show", "Basil"});
        return plant.substr(plant.find("Final height  ") + 14);
    };
    EXPECT_EQ(shown("0.0054"), "0.0054 cm\n");
    EXPECT_EQ(shown("0.054"), "0.05 cm\n");
    EXPECT_EQ(shown("0.056"), "0.06 cm\n");
    EXPECT_EQ(shown("999999999.126"), "999999999.13 cm\n");
    EXPECT_EQ(shown("1234567890.126"), "1234567890.126 cm\n");
}

TEST_F(ShownRecordTest, AnInspectionIsShownInWords)
{
    Done({"note", "add", "Basil", "six leaves", "--entry-date", "2026-05-05"});
    EXPECT_EQ(Done({"info"}), "File                 " + Journal + "\n" +
                                  "Kind                 journal, current schema\n"
                                  "Size                 " +
                                  std::to_string(FileBytes(Journal).size()) + " bytes\n" +
                                  "First date           2026-05-05\n"
                                  "Last date            2026-05-05\n"
                                  "Strains              1\n"
                                  "Plants               1\n"
                                  "Timeline events      0\n"
                                  "Care entries         0\n"
                                  "Harvest records      0\n"
                                  "Photos               0\n"
                                  "Health observations  0\n"
                                  "Journal entries      1\n");
    EXPECT_NE(Done({"info", "--file", "none.db"}).find("Kind  no such file yet\n"), std::string::npos);
    Write("text.db", "a text, which is not a database at all");
    EXPECT_NE(Done({"info", "--file", "text.db"}).find("not an SQLite database\n"), std::string::npos);
}

// ---- Lists without records

TEST_F(ShownRecordTest, AnEmptyListPrintsOneSentence)
{
    const std::pair<std::string, std::string> plurals[] = {
        {"care", "care entries"}, {"event", "timeline events"},      {"harvest", "harvest records"},
        {"photo", "photos"},      {"health", "health observations"}, {"note", "journal entries"}};
    for (const auto& [kind, plural] : plurals)
    {
        const std::string rest = plural + " yet; `plantjournal " + kind + " add PLANT` adds one.\n";
        EXPECT_EQ(Done({kind, "list"}), "No " + rest);
        EXPECT_EQ(Done({kind, "list", "basil"}), "Basil: no " + rest);
        EXPECT_EQ(Parsed({kind, "list"}), JSON::array());
        EXPECT_EQ(Parsed({kind, "list", "Basil"}), JSON::array());
    }
    Done({"plant", "edit", "Basil", "--strain", ""});
    Done({"strain", "delete", "Genovese", "--yes"});
    EXPECT_EQ(Done({"strain", "list"}), "No strains yet; `plantjournal strain add NAME` adds one.\n");
    EXPECT_EQ(Parsed({"strain", "list"}), JSON::array());
    Done({"note", "list", "--newest", "90"});
    for (const char* count : {"0", "00", "-1", "x"})
        EXPECT_NE(Mistaken({"note", "list", "--newest", count}).find("write a whole number above 0"),
                  std::string::npos);
}

TEST_F(ShownRecordTest, ACheckWithoutFindingsPrintsOneSentence)
{
    EXPECT_EQ(Done({"check"}), "No problems found.\n");
    EXPECT_EQ(Parsed({"check"}), JSON::array());
}

TEST_F(ShownOnTerminalTest, ACheckWithoutFindingsPrintsOneSentence)
{
    EXPECT_EQ(RunOnTerminal({"check"}).Out, "No problems found.\n");
}

// ---- The plant's name in JSON

TEST_F(ShownRecordTest, JSONOfARecordHasTheNameOfItsPlant)
{
    Done({"plant", "edit", "b1", "--name", "Базилік"});
    const std::vector<Words> additions = {{"care"},
                                          {"event", "tied down"},
                                          {"harvest", "--dry-weight-g", "9"},
                                          {"photo", "data/plantjournal/basil.jpg"},
                                          {"health", "thrips"},
                                          {"note", "six leaves"}};
    for (const Words& addition : additions)
    {
        Words add = {addition[0], "add", "b1"};
        add.insert(add.end(), addition.begin() + 1, addition.end());
        const JSON added = Parsed(add);
        EXPECT_EQ(added.at("Plant"), "Базилік");
        Words edit = {addition[0], "edit", "b1"};
        if (addition[0] != "harvest")
            edit.push_back(std::to_string(added.at("ID").get<int>()));
        edit.push_back(addition[0] == "event" || addition[0] == "note" ? "--details=x"
                       : addition[0] == "photo"                        ? "--caption=x"
                                                                       : "--notes=x");
        EXPECT_EQ(Parsed(edit).at("Plant"), "Базилік");
        for (const Words& list : {Words{addition[0], "list"}, {addition[0], "list", "b1"}})
            EXPECT_EQ(Parsed(list).at(0).at("Plant"), "Базилік");
    }
    for (const JSON& item : Parsed({"timeline", "b1"}))
        EXPECT_EQ(item.at("Plant"), "Базилік");
    EXPECT_EQ(Done({"export", "-"}).find("\"Plant\":"), std::string::npos);
    EXPECT_FALSE(Basil().contains("Plant"));
}

} // namespace
