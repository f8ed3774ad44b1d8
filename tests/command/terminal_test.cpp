// Questions, tables, colours and progress, on a terminal and in a pipe.

#include "support/command.h"
#include "support/page.h"

#include <chrono>
#include <thread>

using namespace support;

namespace
{

// How many columns of a terminal a text of this file takes: its letters, of which 韓 and 紅 are wide.
std::size_t WidthOf(const std::string& text)
{
    std::size_t width = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
        width += (text[i] & '\xC0') == '\x80'                                     ? 0U
                 : text.compare(i, 3, "韓") == 0 || text.compare(i, 3, "紅") == 0 ? 2U
                                                                                  : 1U;
    return width;
}

// Texts that are wider than a terminal.
void StoreWideTexts(PlantRepository& repository)
{
    Plant plant;
    plant.Name = "The one with the very long name, by the window, in the sun: 紅紅紅紅紅紅紅紅紅紅紅紅紅紅紅紅紅紅紅紅";
    plant.Strain = "Genovese Gigante of the second generation, from our own seeds";
    plant.Tent = "South";
    EXPECT_TRUE(repository.CreatePlant(plant));
    PlantEvent event = {0, plant.UUID, "2026-05-01", PlantEventType::Note, std::string(500, 'x')};
    EXPECT_TRUE(repository.CreatePlantEvent(event));
}

using TableTest = CommandTest;

TEST_F(TableTest, TablesAlignLettersOfAnyWidth)
{
    Keep(
        [](PlantRepository& repository)
        {
            for (const char* name :
                 {"Süßkirsche", "紅韓", "u\xCC\x88mlaut", "plain"}) // the third with a combining mark
            {
                Plant plant;
                plant.Name = name;
                plant.Tent = "here";
                EXPECT_TRUE(repository.CreatePlant(plant));
            }
        });
    const std::vector<std::string> lines = Lines(Done({"plant", "list"}));
    ASSERT_EQ(lines.size(), 5U);
    const std::size_t tent = WidthOf(lines[0].substr(0, lines[0].find("Tent")));
    for (std::size_t i = 1; i < lines.size(); ++i)
    {
        const std::size_t marks = lines[i].find("\xCC\x88") == std::string::npos ? 0 : 1;
        EXPECT_EQ(WidthOf(lines[i].substr(0, lines[i].find("here"))) - marks, tent) << lines[i];
        EXPECT_FALSE(lines[i].ends_with(' '));
    }
}

TEST_F(TableTest, NumbersAreAlignedToTheRight)
{
    Done({"plant", "add", "Basil"});
    Done({"feed", "Basil", "--amount-ml", "5"});
    Done({"feed", "Basil", "--amount-ml", "12500"});
    const std::vector<std::string> lines = Lines(Done({"care", "list", "Basil"}));
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].find("AmountMl") + 8, lines[1].find("12500") + 5);
    EXPECT_EQ(lines[1].find("12500") + 5, lines[2].find("       5  ") + 8);
}

TEST_F(TableTest, TablesInAPipeAreNotCut)
{
    Keep(StoreWideTexts);
    const ProgramResult piped = Run({"plant", "list"});
    EXPECT_NE(piped.Out.find("紅  Genovese Gigante of the second generation, from our own seeds  "), std::string::npos);
    EXPECT_NE(Done({"event", "list"}).find(std::string(500, 'x')), std::string::npos);
}

using CommandOnTerminalTest = TerminalTest;

TEST_F(CommandOnTerminalTest, ADeletionAsksAndNeedsYes)
{
    KeepEverything();
    const std::string before = Content();
    const ProgramResult no = RunOnTerminal({"plant", "delete", "Basil"}, "n\n");
    EXPECT_EQ(no.Status, 1);
    EXPECT_NE(no.Out.find("Delete the plant Basil and all its records? [y/N] "), std::string::npos);
    EXPECT_NE(no.Out.find("nothing was deleted"), std::string::npos);
    EXPECT_EQ(RunOnTerminal({"plant", "delete", "Basil"}, "\n").Status, 1);
    EXPECT_EQ(RunOnTerminal({"plant", "delete", "Basil"}, "\x04").Status, 1); // the end of the input
    EXPECT_EQ(Content(), before);

    for (const char* yes : {"y\n", "yes\n", "Y\n"})
    {
        Done({"water", "Basil"});
        const std::string id = std::to_string(Parsed({"care", "list", "Basil"}).at(0).at("ID").get<int>());
        EXPECT_EQ(RunOnTerminal({"care", "delete", "Basil", id}, yes).Status, 0);
    }
    EXPECT_EQ(Content(), before);
}

TEST_F(CommandOnTerminalTest, CtrlCAtAQuestionDeletesNothing)
{
    KeepEverything();
    const std::string before = Content();
    Surroundings terminal = Around;
    terminal.Columns = 80;
    RunningProgram program(Line({"plant", "delete", "Basil"}), terminal);
    ASSERT_TRUE(program.Await("[y/N] "));
    program.Type("\x03");
    const ProgramResult outcome = program.End();
    EXPECT_EQ(outcome.Status, 1);
    EXPECT_NE(outcome.Out.find("nothing was deleted"), std::string::npos);
    EXPECT_EQ(Content(), before);
}

TEST_F(CommandOnTerminalTest, TablesFitATerminal)
{
    Keep(StoreWideTexts);
    const std::string uuid = Parsed({"plant", "list"}).at(0).at("UUID");
    Around.Environment.emplace_back("NO_COLOR=1");
    for (const Words& words : {Words{"plant", "list"},
                               {"event", "list"},
                               {"plant", "show", uuid},
                               {"strain", "list"},
                               {"info"},
                               {"timeline", uuid}})
    {
        const ProgramResult shown = RunOnTerminal(words);
        EXPECT_EQ(shown.Status, 0);
        for (const std::string& line : Lines(shown.Out))
            EXPECT_LE(WidthOf(line), 80U) << line;
    }
    EXPECT_NE(RunOnTerminal({"plant", "list"}).Out.find("…"), std::string::npos);
}

TEST_F(CommandOnTerminalTest, TheWidthOfTheTerminalLimitsATable)
{
    Keep(StoreWideTexts);
    Around.Environment.emplace_back("NO_COLOR=1");
    const auto list = [this](const std::string& columns)
    {
        Surroundings terminal = Around;
        terminal.Columns = 80;
        const Words line = {"sh", "-c", "stty cols " + columns + " && exec \"$0\" event list", PLANTJOURNAL_COMMAND};
        return RunningProgram(line, terminal).End().Out;
    };
    EXPECT_EQ(list("0"), list("80")); // 0 stands for an unknown width
    for (const std::string& line : Lines(list("60")))
        EXPECT_LE(WidthOf(line), 60U) << line;
    EXPECT_EQ(Lines(list("10")).at(0), "Plant  ID  Even…  Type  Deta…"); // a column keeps five letters
}

TEST_F(CommandOnTerminalTest, TheQuestionOfADeletionShowsTheRecord)
{
    Done({"plant", "add", "Basil"});
    const std::string id = Stored({"feed", "Basil", "--care-date", "2026-05-02", "--amount-ml", "500"});
    EXPECT_NE(RunOnTerminal({"care", "delete", "Basil", id}, "n\n")
                  .Out.find("Delete care entry " + id + " of Basil on 2026-05-02: Feed, 500 ml? [y/N] "),
              std::string::npos);
}

TEST_F(CommandOnTerminalTest, ColourIsUsedOnATerminalWithoutNoColor)
{
    KeepEverything();
    const std::string bold = "\x1B[1m";
    EXPECT_EQ(Done({"plant", "list"}).find('\x1B'), std::string::npos);
    const std::string list = RunOnTerminal({"plant", "list"}).Out;
    EXPECT_TRUE(list.starts_with(bold + "UUID"));
    EXPECT_EQ(list.find("\x1B[0m"), list.find('\n') + 1); // bold ends after the headings
    EXPECT_EQ(RunOnTerminal({"plant", "list", "--json"}).Out.find('\x1B'), std::string::npos);
    Around.Environment.emplace_back("NO_COLOR="); // means nothing while it is empty
    EXPECT_TRUE(RunOnTerminal({"plant", "list"}).Out.starts_with(bold));
    Around.Environment.back() = "NO_COLOR=1";
    EXPECT_EQ(RunOnTerminal({"plant", "list"}).Out.find('\x1B'), std::string::npos);
}

TEST_F(CommandOnTerminalTest, TextsReachTheTerminalWithoutControlCharacters)
{
    Keep(
        [](PlantRepository& repository)
        {
            Plant plant;
            plant.Name = "red \x1B[31m\x07 and \xC2\x9B"
                         "2J, broken \xFF, two\nlines";
            plant.Strain = "\x1B]0;title\x07";
            EXPECT_TRUE(repository.CreatePlant(plant));
            PlantEvent event = {0, plant.UUID, "\x1B[2J", PlantEventType::Note, "\x1B[2J\r"};
            EXPECT_TRUE(repository.CreatePlantEvent(event));
            PlantCareEntry care;
            care.PlantUUID = plant.UUID;
            care.Notes = "\x1B[2J";
            EXPECT_TRUE(repository.CreatePlantCareEntry(care));
        });
    const std::string uuid = Parsed({"plant", "list"}).at(0).at("UUID");
    const std::string care = std::to_string(Parsed({"care", "list"}).at(0).at("ID").get<int>());
    Around.Environment.emplace_back("NO_COLOR=1");
    for (const Words& words : {Words{"plant", "list"},
                               {"plant", "show", uuid},
                               {"plant", "tree"},
                               {"timeline", uuid},
                               {"event", "list"},
                               {"care", "list", uuid},
                               {"strain", "list"},
                               {"strain", "show", "\x1B]0;title\x07"},
                               {"strain", "show", "\x1B"},
                               {"plant", "show", "\x1B"},
                               {"care", "edit", uuid, "99", "--ec", "1"},
                               {"harvest", "edit", uuid, "--notes", "x"},
                               {"care", "delete", uuid, care},
                               {"plant", "delete", uuid},
                               {"info"},
                               {"plant", "list", "--json"},
                               {"timeline", uuid, "--json"}})
    {
        const std::string shown = RunOnTerminal(words, "n\n").Out;
        for (const char* part : {"\x1B", "\x07", "\xC2\x9B", "\xFF", "\r"})
            EXPECT_EQ(shown.find(part), std::string::npos) << words.at(0) << ' ' << words.at(words.size() > 1 ? 1 : 0);
    }
    EXPECT_NE(Done({"plant", "list"}).find("two lines"), std::string::npos);
}

TEST_F(CommandOnTerminalTest, LongWorkShowsAProgressBarOnATerminal)
{
    KeepEverything();
    EXPECT_EQ(RunOnTerminal({"backup", "quick.db"}).Out, "");
    for (const int columns : {80, 0})
    {
        // The backup waits for the lock, for a second at least.
        OtherProgram other(Journal, "BEGIN EXCLUSIVE;");
        Surroundings around = Around;
        around.Columns = columns;
        RunningProgram program(Line({"backup", "slow" + std::to_string(columns) + ".db"}), around);
        std::this_thread::sleep_for(std::chrono::milliseconds(1300));
        other.Finish();
        const ProgramResult outcome = program.End();
        EXPECT_EQ(outcome.Status, 0) << outcome.Out << outcome.Error;
        const std::string shown = outcome.Out + outcome.Error;
        if (columns == 0)
            EXPECT_EQ(shown, "");
        else
        {
            EXPECT_NE(shown.find("\rBacking up [##"), std::string::npos) << shown;
            EXPECT_TRUE(shown.ends_with("\r\x1B[K")) << shown;
        }
    }
}

} // namespace
