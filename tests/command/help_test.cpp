// The help of the commands.

#include "support/command.h"
#include "support/page.h"

#include <filesystem>
#include <functional>

using namespace support;

namespace
{

class CommandHelpTest : public CommandTest
{
  protected:
    // Visits a command and all below it, with their help.
    // NOLINTNEXTLINE(misc-no-recursion): commands have groups, and groups commands
    void ForEachCommand(const std::function<void(const Words& command, const std::string& help, bool group)>& visit,
                        const Words& command = {}) const
    {
        Words words = command;
        words.emplace_back("--help");
        const std::string help = Done(words);
        const std::size_t list = help.find("\nSubcommands:\n");
        visit(command, help, list != std::string::npos);
        if (list == std::string::npos)
            return;
        for (const std::string& line : Lines(help.substr(list + 14)))
        {
            if (!line.starts_with("  "))
                break;
            Words below = command;
            below.push_back(line.substr(2, line.find(' ', 2) - 2));
            ForEachCommand(visit, below);
        }
    }
};

TEST_F(CommandHelpTest, EveryCommandHasHelpWithItsExamples)
{
    std::vector<std::string> names;
    ForEachCommand(
        [&](const Words& command, const std::string& help, bool group)
        {
            std::string name = "plantjournal";
            for (const std::string& word : command)
                name += ' ' + word;
            const std::size_t examples = help.find("Examples:\n  plantjournal ");
            EXPECT_NE(examples, std::string::npos) << name;
            if (group)
                return;
            const std::string used = help.substr(std::min(examples, help.size()));
            EXPECT_TRUE(used.find("  " + name + ' ') != std::string::npos ||
                        used.find("  " + name + '\n') != std::string::npos)
                << name;
            names.push_back(name.substr(name.find(' ') + 1));
        });
    std::vector<std::string> expected = {
        "plant list",    "plant show", "plant add",   "plant edit",  "plant delete", "plant duplicate",
        "plant tree",    "timeline",   "strain list", "strain show", "strain add",   "strain edit",
        "strain delete", "feed",       "water",       "clone",       "stage",        "transplant",
        "top",           "train",      "defoliate",   "archive"};
    for (const char* family : {"care", "event", "harvest", "photo", "health", "note"})
        for (const char* operation : {"list", "add", "edit", "delete"})
            expected.push_back(std::string(family) + ' ' + operation);
    expected.insert(expected.end(), {"info", "check", "backup", "export", "import", "undo"});
    EXPECT_EQ(names, expected);
}

TEST_F(CommandHelpTest, TheVersionIsPrinted)
{
    EXPECT_EQ(Done({"--version"}), "plantjournal " PLANTJOURNAL_VERSION "\n");
}

TEST_F(CommandHelpTest, HelpCreatesNoJournal)
{
    Done({"--help"});
    Done({"plant", "add", "--help"});
    EXPECT_FALSE(std::filesystem::exists(Journal));
}

} // namespace
