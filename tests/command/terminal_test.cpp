// Questions, colours and progress, on a terminal and in a pipe.

#include "support/command.h"

#include <chrono>
#include <thread>

using namespace support;

namespace
{

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
    EXPECT_TRUE(list.starts_with(bold + "Name"));
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
    EXPECT_EQ(RunOnTerminal({"backup", "quick.db"}).Out, "Backed up " + Journal + " to quick.db\n");
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
        const std::string line = "Backed up " + Journal + " to slow" + std::to_string(columns) + ".db\n";
        if (columns == 0)
            EXPECT_EQ(shown, line);
        else
        {
            EXPECT_NE(shown.find("\rBacking up [##"), std::string::npos) << shown;
            EXPECT_NE(shown.find("\r\x1B[K" + line), std::string::npos) << shown;
        }
    }
}

} // namespace
