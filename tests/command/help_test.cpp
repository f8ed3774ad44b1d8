// The help: of the program, of its groups and of its commands.

#include "support/command.h"
#include "support/page.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <set>
#include <sstream>

using namespace support;

namespace
{

Words WordsOf(const std::string& path)
{
    std::istringstream text(path);
    Words words;
    for (std::string word; text >> word;)
        words.push_back(word);
    return words;
}

// The names in the first column under the headings of a help, by heading. Other lines have other indents.
std::vector<std::pair<std::string, std::vector<std::string>>> Sections(const std::string& help)
{
    std::vector<std::pair<std::string, std::vector<std::string>>> sections;
    for (const std::string& line : Lines(help))
    {
        if (!line.empty() && line.front() != ' ')
            sections.push_back({line, {}});
        else if (line.size() > 2 && line[2] != ' ' && !sections.empty())
            sections.back().second.push_back(line.substr(2, line.find("  ", 2) - 2));
    }
    return sections;
}

class HelpTest : public CommandTest
{
  protected:
    // The groups and commands that the program's help lists, by heading.
    std::vector<std::pair<std::string, std::vector<std::string>>> Headings() const
    {
        auto headings = Sections(Done({"help"}));
        std::erase_if(headings, [](const auto& section) { return section.second.empty(); });
        return headings;
    }

    // Visits every command of the program, also in groups, with its help.
    void ForEachCommand(const std::function<void(const std::string& path, const std::string& help)>& visit) const
    {
        std::set<std::string> visited;
        const auto visitOnce = [&](const std::string& path)
        {
            Words words = WordsOf(path);
            words.insert(words.begin(), "help");
            const std::string help = Done(words);
            if (visited.insert(path).second)
                visit(path, help);
            return help;
        };
        for (const auto& [heading, names] : Headings())
            for (const std::string& name : names)
                for (const auto& [section, below] : Sections(visitOnce(name)))
                    for (const std::string& command : section == "Commands" ? below : std::vector<std::string>{})
                        visitOnce(name + ' ' + command);
        EXPECT_GT(visited.size(), 45U);
    }
};

TEST_F(HelpTest, TheProgramAloneAndTheWordHelpPrintTheHelp)
{
    const std::string help = Done({});
    EXPECT_TRUE(help.starts_with("usage: plantjournal COMMAND")) << help;
    for (const Words& words : {Words{"help"}, {"--help"}, {"-h"}})
        EXPECT_EQ(Done(words), help);
    EXPECT_FALSE(std::filesystem::exists(Journal));
}

TEST_F(HelpTest, TheProgramsHelpIsGroupedAndFitsATerminal)
{
    const std::string help = Done({"help"});
    const std::vector<std::string> lines = Lines(help);
    EXPECT_LE(lines.size(), 50U);
    for (const std::string& line : lines)
        EXPECT_LE(line.size(), 80U) << line;
    std::vector<std::string> titles;
    for (const auto& [heading, names] : Headings())
        titles.push_back(heading);
    EXPECT_EQ(titles,
              (std::vector<std::string>{"Keep the journal", "Look", "Correct and complete", "Look after the file"}));
}

TEST_F(HelpTest, EveryCommandIsUnderAHeading)
{
    std::set<std::string> listed;
    for (const auto& [heading, names] : Headings())
        for (const std::string& name : names)
            EXPECT_TRUE(listed.insert(name).second) << name;
    listed.insert("help");
    for (const std::string& line : Lines(Done({"complete", ""})))
        EXPECT_TRUE(listed.contains(line.substr(0, line.find('\t')))) << line;
}

TEST_F(HelpTest, EveryCommandHasExamplesOfItsOwn)
{
    ForEachCommand(
        [&](const std::string& path, const std::string& help)
        {
            const std::size_t examples = help.find("\nExamples\n");
            ASSERT_NE(examples, std::string::npos) << path;
            const std::string name = "\n  plantjournal " + path;
            const std::string used = help.substr(examples);
            EXPECT_TRUE(used.find(name + ' ') != std::string::npos || used.find(name + '\n') != std::string::npos)
                << path;
        });
}

TEST_F(HelpTest, TheHelpOfACommandIsFoundInEveryWay)
{
    ForEachCommand(
        [&](const std::string& path, const std::string& help)
        {
            EXPECT_TRUE(help.starts_with("usage: plantjournal " + path)) << help;
            for (const char* word : {"help", "--help", "-h"})
            {
                Words words = WordsOf(path);
                words.emplace_back(word);
                EXPECT_EQ(Done(words), help) << path << ' ' << word;
            }
        });
    EXPECT_EQ(Done({"plant", "help", "add"}), Done({"plant", "add", "help"}));
    EXPECT_EQ(Done({"--json", "plant", "show", "Basil", "--help"}), Done({"help", "plant", "show"}));
    EXPECT_FALSE(std::filesystem::exists(Journal)); // `plant add help` adds no plant
}

TEST_F(HelpTest, TheWordHelpNamesAPlantOrStrainOfThisName)
{
    Done({"plant", "add", "--name", "help", "--uuid", "h1"});
    Done({"strain", "add", "--name", "Help"});
    EXPECT_EQ(Parsed({"plant", "show", "help"}).at("UUID"), "h1");
    EXPECT_EQ(Parsed({"strain", "show", "help"}).at("StrainName"), "Help");
    EXPECT_EQ(Parsed({"plant", "show", "--file", Journal, "help"}).at("UUID"), "h1");
    EXPECT_TRUE(Done({"plant", "show", "--help"}).starts_with("usage: "));
    EXPECT_TRUE(Done({"plant", "add", "help"}).starts_with("usage: "));
    EXPECT_TRUE(Done({"plant", "show", "help", "--file", "none.db"}).starts_with("usage: "));
}

TEST_F(HelpTest, HelpIsAnOrdinaryWordAmongOthers)
{
    Done({"plant", "add", "Basil", "--notes", "help"});
    EXPECT_EQ(Parsed({"plant", "show", "Basil"}).at("Notes"), "help");
    EXPECT_NE(Refused({"plant", "show", "--", "help"}).find("no plant has this name"), std::string::npos);
    Done({"plant", "add", "--", "help"});
    EXPECT_EQ(Parsed({"plant", "show", "help"}).at("Name"), "help");
}

TEST_F(HelpTest, TheHelpOfAnUnknownCommandNamesTheNearest)
{
    EXPECT_EQ(Mistaken({"help", "fed"}), "plantjournal: unknown command \"fed\"; did you mean feed?\n");
    EXPECT_EQ(Mistaken({"fed", "--help"}), "plantjournal: unknown command \"fed\"; did you mean feed?\n");
    EXPECT_EQ(Mistaken({"plant", "help", "shwo"}),
              "plantjournal: plant: unknown command \"shwo\"; did you mean show?\n");
    EXPECT_EQ(Mistaken({"help", "plant", "show", "Basil"}),
              "plantjournal: plant show: unexpected argument \"Basil\"; `plantjournal help plant show` describes the "
              "command\n");
}

TEST_F(HelpTest, HelpDescribesArgumentsOptionsAndTheirValues)
{
    const std::string help = Done({"help", "plant", "edit"});
    for (const char* part :
         {"usage: plantjournal plant edit PLANT [OPTION...]\n\nChange a plant.\n\nArguments\n  PLANT  ",
          "\n  --mother-plant-uuid, --mother PLANT\n", "\n  --flip-date DATE ",
          "growth stage: Seed, Clone, Veg, Flower", "--file", "--json", "--quiet", "--help"})
        EXPECT_NE(help.find(part), std::string::npos) << part << '\n' << help;
    EXPECT_NE(Done({"help", "plant", "delete"}).find("\n  -y, --yes "), std::string::npos);
    EXPECT_EQ(help.find("--version"), std::string::npos); // an option of the program alone
    const std::string group = Done({"help", "plant"});
    EXPECT_TRUE(group.starts_with("usage: plantjournal plant COMMAND [ARGUMENT...] [OPTION...]\n")) << group;
    EXPECT_EQ(group.find("plant list --stage"), std::string::npos); // only the first example of each command
    EXPECT_NE(Done({"help", "plant", "list"}).find("usage: plantjournal plant list [OPTION...]\n"), std::string::npos);
    EXPECT_NE(Done({"help", "care", "list"}).find("care list [PLANT] [OPTION...]\n"), std::string::npos);
}

TEST_F(HelpTest, EveryCommandThatTakesADateDescribesDates)
{
    std::size_t dated = 0;
    ForEachCommand(
        [&](const std::string& path, const std::string& help)
        {
            const bool takesDate =
                help.find(" DATE ") != std::string::npos || help.find(" DATE\n") != std::string::npos;
            const std::string forms =
                "\nDates: today, yesterday, tomorrow, a weekday, 3d, 2w or 1m ago, 2025-03-01,\n2025-03, 2025.\n";
            EXPECT_EQ(help.find(forms) != std::string::npos, takesDate) << path;
            dated += takesDate ? 1 : 0;
        });
    EXPECT_GT(dated, 20U);
}

TEST_F(HelpTest, SelectorsSelectByTheStateOfToday)
{
    for (const char* command : {"feed", "stage", "note", "transplant"})
    {
        const std::string help = Done({"help", command});
        for (const char* part :
             {"all plants that grow today, whatever --date is", "growing plants that are in this tent today"})
            EXPECT_NE(help.find(part), std::string::npos) << help;
    }
}

TEST_F(HelpTest, TheDefaultOfANewRecordIsDescribed)
{
    const auto expectInHelp = [this](const std::string& path, const std::string& part)
    {
        Words words = WordsOf("help " + path);
        std::string help;
        std::istringstream text(Done(words));
        for (std::string word; text >> word;)
            help += word + ' ';
        EXPECT_NE(help.find(part), std::string::npos) << help;
    };
    expectInHelp("plant add", "Harvested, Archived; the default is Veg ");
    expectInHelp("plant add", "Hermaphrodite; the default is Unknown ");
    expectInHelp("care add", "date of care; the default is today ");
    expectInHelp("photo add", "the default is that in the picture, or today ");
    for (const char* path : {"event add", "note add", "note", "care add"})
        expectInHelp(path, "; the default is ");
    EXPECT_EQ(Done({"help", "plant", "edit"}).find("the default"), std::string::npos);
}

TEST_F(HelpTest, TheVersionIsPrinted)
{
    EXPECT_EQ(Done({"--version"}), "plantjournal " PLANTJOURNAL_VERSION "\n");
}

TEST_F(HelpTest, OutsideATerminalHelpHasEightyColumns)
{
    ForEachCommand(
        [](const std::string& path, const std::string& help)
        {
            std::size_t longest = 0;
            for (const std::string& line : Lines(help.substr(0, help.find("\nExamples\n"))))
                longest = std::max(longest, line.size());
            EXPECT_LE(longest, 80U) << path;
        });
}

class HelpOnTerminalTest : public TerminalTest
{
  protected:
    // The longest line of the help on a terminal, without the examples.
    std::size_t LongestLine(const Words& words, int columns) const
    {
        Surroundings terminal = Around;
        terminal.Columns = columns;
        const ProgramResult outcome = RunningProgram(Line(words), terminal).End();
        EXPECT_EQ(outcome.Status, 0);
        std::size_t longest = 0;
        for (std::string line : Lines(outcome.Out.substr(0, outcome.Out.find("\nExamples"))))
        {
            line.erase(std::remove(line.begin(), line.end(), '\r'), line.end());
            longest = std::max(longest, line.size());
        }
        return longest;
    }
};

TEST_F(HelpOnTerminalTest, HelpFillsTheWidthOfTheTerminal)
{
    for (const Words& words : {Words{"help"}, {"plant", "edit", "--help"}, {"help", "import"}})
    {
        EXPECT_LE(LongestLine(words, 60), 60U);
        EXPECT_GT(LongestLine(words, 60), 45U);
        EXPECT_LE(LongestLine(words, 80), 80U);
        EXPECT_LE(LongestLine(words, 200), 200U);
    }
    EXPECT_GT(LongestLine({"plant", "edit", "--help"}, 200), 80U);
}

TEST_F(HelpOnTerminalTest, TheUsageIsIndentedWhereItIsWrapped)
{
    EXPECT_TRUE(RunOnTerminal({"help", "care", "add"}, {}, 40)
                    .Out.starts_with("usage: plantjournal care add PLANT\n       [OPTION...]\n"));
}

} // namespace
