// Tables on terminals of several widths and in a pipe.

#include "support/command.h"
#include "support/page.h"

#include <algorithm>

using namespace support;

namespace
{

// How many columns of a terminal a text of this file takes: two for the letters 紅, 韓 and 🌿, none for the combining
// diaeresis and the two joiners.
std::size_t WidthOf(const std::string& text)
{
    std::size_t width = 0;
    const auto at = [&](std::size_t i, const char* letter)
    { return text.compare(i, std::string(letter).size(), letter) == 0; };
    for (std::size_t i = 0; i < text.size(); ++i)
        if ((text[i] & '\xC0') != '\x80' && !at(i, "\xCC\x88") && !at(i, "\xE2\x80\x8C") && !at(i, "\xE2\x80\x8D"))
            width += at(i, "紅") || at(i, "韓") || at(i, "🌿") ? 2U : 1U;
    return width;
}

class TableTest : public TerminalTest
{
  protected:
    TableTest() { Around.Environment.emplace_back("NO_COLOR=1"); }

    // The lines of a command's output on a terminal, or in a pipe for no columns.
    std::vector<std::string> LinesAt(int columns, const Words& words) const
    {
        const ProgramResult shown = columns == 0 ? Run(words) : RunOnTerminal(words, {}, columns);
        EXPECT_EQ(shown.Status, 0) << shown.Out << shown.Error;
        return Lines(shown.Out);
    }

    void AddPlants(const std::vector<Plant>& plants) const
    {
        Keep(
            [&](PlantRepository& repository)
            {
                for (Plant plant : plants)
                    EXPECT_TRUE(repository.CreatePlant(plant));
            });
    }
};

Plant PlantNamed(const std::string& name, const std::string& uuid = {}, const std::string& strain = {})
{
    Plant plant;
    plant.Name = name;
    plant.UUID = uuid;
    plant.Strain = strain;
    return plant;
}

const Words NamesOfManyAlphabets = {"Süßkirsche", "紅韓",   "u\xCC\x88mlaut",  "Базилік",
                                    "قرنفل",      "🌿 Mint", "می\xE2\x80\x8Cخک"};

TEST_F(TableTest, TablesAlignLettersOfAnyWidth)
{
    for (const std::string& name : NamesOfManyAlphabets)
    {
        Plant plant = PlantNamed(name);
        plant.Tent = "here";
        AddPlants({plant});
    }
    for (const int columns : {0, 60, 80, 200})
    {
        const std::vector<std::string> lines = LinesAt(columns, {"plant", "list"});
        ASSERT_EQ(lines.size(), NamesOfManyAlphabets.size() + 1);
        const std::size_t tent = WidthOf(lines[0].substr(0, lines[0].find("Tent")));
        for (std::size_t i = 1; i < lines.size(); ++i)
        {
            EXPECT_EQ(WidthOf(lines[i].substr(0, lines[i].find("here"))), tent) << lines[i];
            EXPECT_FALSE(lines[i].ends_with(' '));
        }
    }
}

TEST_F(TableTest, AJoinedEmojiAndAFlagTakeTwoColumns)
{
    // A farmer, a rainbow flag, a skin tone, a flag of a country, two of them, and a heart on fire.
    for (const char* emoji :
         {"👩\xE2\x80\x8D🌾", "🏳\xEF\xB8\x8F\xE2\x80\x8D🌈", "👍🏽", "🇩🇪", "🇩🇪🇫🇷", "❤\xEF\xB8\x8F\xE2\x80\x8D🔥"})
    {
        AddPlants({PlantNamed("Basil", "b1", "here"), PlantNamed(emoji, "e1", "here")});
        const std::string blanks(std::string(emoji) == "🇩🇪🇫🇷" ? 3 : 5, ' ');
        EXPECT_TRUE(LinesAt(80, {"plant", "list"}).at(2).starts_with(emoji + blanks + "here    Veg")) << emoji;
        for (const char* uuid : {"b1", "e1"})
            Done({"plant", "delete", uuid, "--yes"});
    }
}

TEST_F(TableTest, AJoinedEmojiIsNotCutApart)
{
    const std::string farmer = "👩\xE2\x80\x8D🌾";
    Done({"plant", "add", "Basil"});
    Done({"note", "add", "Basil", "nine " + farmer + farmer + farmer, "--entry-date", "2026-05-01"});
    EXPECT_EQ(LinesAt(26, {"note", "list", "Basil"}).at(1), " 1  2026-05-01  nine " + farmer + farmer + "…");
    EXPECT_EQ(LinesAt(25, {"note", "list", "Basil"}).at(1), " 1  2026-05-01  nine " + farmer + "…");
}

TEST_F(TableTest, NumbersAreAlignedToTheRight)
{
    Done({"plant", "add", "Basil"});
    Done({"feed", "Basil", "--amount-ml", "5"});
    Done({"feed", "Basil", "--amount-ml", "12500"});
    const std::vector<std::string> lines = Lines(Done({"care", "list", "Basil"}));
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].find("Amount") + 6, lines[1].size());
    EXPECT_TRUE(lines[1].ends_with("Feed    12500 ml"));
    EXPECT_TRUE(lines[2].ends_with("Feed        5 ml"));
}

TEST_F(TableTest, LinesFitTheTerminal)
{
    KeepEverything();
    Done({"note", "add", "Basil", std::string(500, 'x')});
    Done({"feed", "Basil", "--product", "A product with a rather long name", "--notes", std::string(300, 'y')});
    for (const int columns : {60, 80, 200})
        for (const Words& words : {Words{"plant", "list"},
                                   {"plant", "show", "Basil"},
                                   {"strain", "list"},
                                   {"care", "list"},
                                   {"event", "list", "Basil"},
                                   {"harvest", "list"},
                                   {"health", "list"},
                                   {"note", "list"},
                                   {"timeline", "Basil"}})
            for (const std::string& line : LinesAt(columns, words))
                EXPECT_LE(WidthOf(line), static_cast<std::size_t>(columns)) << line;
}

TEST_F(TableTest, AColumnIsDroppedRatherThanANameCut)
{
    Plant plant = PlantNamed("Базилік у великому горщику біля вікна", "aaaa1111", "Genovese");
    plant.Tent = "South window";
    AddPlants({plant, PlantNamed("紅韓", "bbbb2222", "Roma")});
    const auto headings = [&](int columns) { return LinesAt(columns, {"plant", "list"}).at(0); };
    const std::string name = "Name                                   ";
    EXPECT_EQ(headings(200), name + "Strain    Stage  Tent          UUID");
    EXPECT_EQ(headings(80), name + "Strain    Stage  Tent          UUID");
    EXPECT_EQ(headings(60), name + "Strain    Stage");
    EXPECT_EQ(headings(54), name + "Strain    Stage"); // exactly
    EXPECT_EQ(headings(53), name + "Strain");
    EXPECT_EQ(headings(46), "Name");
    EXPECT_EQ(headings(30), "Name");
    EXPECT_EQ(LinesAt(46, {"plant", "list"}).at(1), plant.Name);
}

TEST_F(TableTest, ANameWiderThanTheTerminalIsStillWhole)
{
    const std::string longName = "Basil" + std::string(70, '!');
    AddPlants({PlantNamed("Mint", "bbbb2222"), PlantNamed(longName, "aaaa1111")});
    for (const char* name : {"Mint", longName.c_str()})
        Done({"note", "add", name, std::string(80, 'x'), "--entry-date", "2026-05-01"});
    const std::vector<std::string> lines = LinesAt(60, {"note", "list"});
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(lines[1].starts_with(longName + "   2  2026-05-01  xxxxxxx…")) << lines[1];
    EXPECT_EQ(WidthOf(lines[2]), 60U) << lines[2]; // the other lines fit
    EXPECT_TRUE(lines[2].starts_with("Mint  "));
}

TEST_F(TableTest, FreeTextIsCutBeforeAColumnIsDropped)
{
    Done({"plant", "add", "Basil"});
    Done({"care", "add", "Basil", "--care-date", "2026-05-01", "--product", "Bloom A", "--amount-ml", "500", "--ec",
          "1.8", "--ph", "6.2", "--notes", "紅紅紅 " + std::string(100, 'n')});
    EXPECT_EQ(
        LinesAt(80, {"care", "list", "Basil"}),
        (std::vector<std::string>{"ID  Date        Action  Product  Amount   EC   pH  Notes",
                                  " 1  2026-05-01  Water   Bloom A  500 ml  1.8  6.2  紅紅紅 nnnnnnnnnnnnnnnnnnnnn…"}));
    EXPECT_EQ(LinesAt(60, {"care", "list", "Basil"}),
              (std::vector<std::string>{"ID  Date        Action  Product  Amount   EC   pH",
                                        " 1  2026-05-01  Water   Bloom A  500 ml  1.8  6.2"}));
    EXPECT_EQ(LinesAt(47, {"care", "list", "Basil"}).at(0), "ID  Date        Action  Product  Amount   EC");
    EXPECT_TRUE(LinesAt(200, {"care", "list", "Basil"}).at(1).ends_with("n" + std::string(99, 'n')));
}

TEST_F(TableTest, TheTextOfARecordIsCutButNotDropped)
{
    Done({"plant", "add", "Basil"});
    Done({"note", "add", "Basil", "Four new pairs of leaves since Monday", "--entry-date", "2026-05-01"});
    EXPECT_EQ(LinesAt(60, {"note", "list", "Basil"}).at(1),
              " 1  2026-05-01  Observation  Four new pairs of leaves since…");
    EXPECT_EQ(LinesAt(45, {"note", "list", "Basil"}).at(1), " 1  2026-05-01  Observation  Four new pairs …");
    EXPECT_EQ(LinesAt(44, {"note", "list", "Basil"}).at(1), " 1  2026-05-01  Four new pairs of leaves si…");
    EXPECT_EQ(LinesAt(40, {"note", "list", "Basil"}).at(1), " 1  2026-05-01  Four new pairs of leave…");
    EXPECT_EQ(LinesAt(20, {"note", "list", "Basil"}).at(1), " 1  2026-05-01  Four ne…"); // eight letters at least
}

TEST_F(TableTest, EmptyColumnsAreLeftOut)
{
    AddPlants({PlantNamed("Basil", "aaaa1111", "Genovese"), PlantNamed("Mint", "bbbb2222")});
    for (const int columns : {0, 60, 80, 200})
    {
        const std::string uuid = columns == 0 ? "aaaa1111" : "aaaa";
        const std::vector<std::string> lines = LinesAt(columns, {"plant", "list"});
        EXPECT_EQ(lines.at(0), "Name   Strain    Stage  UUID");
        EXPECT_EQ(lines.at(2), "Basil  Genovese  Veg    " + uuid);
    }
}

TEST_F(TableTest, AnUnknownWidthIsTakenAsEighty)
{
    Done({"plant", "add", "Basil"});
    Done({"event", "add", "Basil", std::string(500, 'x')});
    Surroundings terminal = Around;
    terminal.Columns = 80;
    const Words line = {"sh", "-c", "stty cols 0 && exec \"$0\" event list", PLANTJOURNAL_COMMAND};
    EXPECT_EQ(RunningProgram(line, terminal).End().Out, RunOnTerminal({"event", "list"}).Out);
}

TEST_F(TableTest, TablesInAPipeAreWhole)
{
    const std::string name = "The one with the very long name, by the window, in the sun: " + std::string(60, 'x');
    AddPlants({PlantNamed(name, "0b0b0b0b-0000-4000-8000-000000000001", "Genovese Gigante of the second generation")});
    Done({"event", "add", name, std::string(500, 'y')});
    EXPECT_TRUE(
        Lines(Done({"plant", "list"})).at(1).starts_with(name + "  Genovese Gigante of the second generation  Veg  "));
    EXPECT_NE(Done({"plant", "list"}).find("0b0b0b0b-0000-4000-8000-000000000001"), std::string::npos);
    EXPECT_NE(Done({"event", "list"}).find(std::string(500, 'y')), std::string::npos);
}

// ---- UUIDs

TEST_F(TableTest, AShortUUIDNamesItsPlant)
{
    const Words uuids = {"abcdef01-1", "abcdef02-2", "abcd",   "12345678-3", "b1",       "éé34é678",
                         "éé34é699",   "wxyz",       "wxyz-1", "deadbeef",   "FEEDBACK", "üüber1"};
    for (const std::string& uuid : uuids)
        AddPlants({PlantNamed("Plant " + uuid, uuid)});
    AddPlants({PlantNamed("1234", "99999999"), PlantNamed("DEAD", "88888888"),
               PlantNamed("feed", "77777777")}); // names that no prefix may be equal to
    const Words expected = {"abcdef01", "abcdef02", "abcd",  "12345", "b1",    "éé34é67",
                            "éé34é69",  "wxyz",     "wxyz-", "deadb", "FEEDB", "üübe"};
    const std::vector<std::string> lines = LinesAt(80, {"plant", "list"});
    for (std::size_t i = 0; i < uuids.size(); ++i)
    {
        const auto line =
            std::find_if(lines.begin(), lines.end(),
                         [&](const std::string& text) { return text.starts_with("Plant " + uuids[i] + " "); });
        ASSERT_NE(line, lines.end());
        EXPECT_TRUE(line->ends_with("  " + expected[i])) << *line;
        EXPECT_EQ(Parsed({"plant", "show", expected[i]}).at("UUID"), uuids[i]);
    }
}

TEST_F(TableTest, AShortUUIDIsUniqueAmongPlantsThatAreNotListed)
{
    AddPlants({PlantNamed("Basil", "abcdef01-1", "Genovese"), PlantNamed("Mint", "abcdef02-2")});
    EXPECT_TRUE(LinesAt(80, {"plant", "list", "--strain", "Genovese"}).at(1).ends_with("  abcdef01"));
}

TEST_F(TableTest, APlantWithoutANameIsShownByItsUUID)
{
    AddPlants({PlantNamed("", "abcdef01-1"), PlantNamed("Basil", "bbbb0000-2")});
    Done({"note", "add", "abcdef01-1", "seen", "--entry-date", "2026-05-01"});
    EXPECT_EQ(LinesAt(80, {"note", "list"}).at(1), "abcd    1  2026-05-01  Observation  seen");
    EXPECT_EQ(LinesAt(0, {"note", "list"}).at(1), "abcdef01-1   1  2026-05-01  Observation  seen");
    EXPECT_NE(LinesAt(10, {"plant", "list"}).at(0).find("UUID"), std::string::npos); // nothing else names the plant
}

TEST_F(TableTest, TheUUIDsAreKeptWhereNamesAreNotUnique)
{
    AddPlants({PlantNamed("Basil", "aaaa1111", "Genovese"), PlantNamed("BASIL", "bbbb2222", "Genovese")});
    EXPECT_EQ(LinesAt(20, {"plant", "list"}).at(0), "Name   UUID");
    EXPECT_EQ(LinesAt(80, {"plant", "list"}).at(0), "Name   Strain    Stage  UUID");
    Done({"plant", "edit", "bbbb2222", "--tent", "South"});
    EXPECT_EQ(LinesAt(20, {"plant", "list", "--tent", "South"}).at(0), "Name   UUID"); // the other one is not listed
    Done({"plant", "edit", "aaaa1111", "--name", "Mint"});
    EXPECT_EQ(LinesAt(20, {"plant", "list"}).at(0), "Name   Strain"); // a name of each plant is enough
}

// ---- Letters that are not shown

TEST_F(TableTest, InvisibleLettersNeitherReorderNorMisalignALine)
{
    for (const char* invisible :
         {"\xE2\x80\xAE", "\xE2\x80\x8F", "\xE2\x81\xA6", "\xD8\x9C", "\xE2\x80\x8B", "\xEF\xBB\xBF", "\xE2\x80\xA8"})
        AddPlants({PlantNamed("ba" + std::string(invisible) + "sil", {}, "here")});
    for (const std::string& line : LinesAt(80, {"plant", "list"}))
        EXPECT_TRUE(line.starts_with("Name    Strain  ") || line.starts_with("ba\xEF\xBF\xBDsil  here    ")) << line;
}

} // namespace
