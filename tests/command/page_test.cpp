// What is installed with the command: the completion for bash and the manual page.

#include "support/command.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

using namespace support;

namespace
{

// ---- Completion

class CompletionTest : public CommandTest
{
  protected:
    // What bash offers to complete the last of these words. Bash splits `--flag=value` at the sign.
    Words Offered(const Words& words) const
    {
        Words line = {"bash", "-c",
                      "source '" PLANTJOURNAL_SOURCE_DIR "/tools/command_line/plantjournal.bash'; COMP_WORDS=(\"$@\"); "
                      "COMP_CWORD=$(($#-1)); _plantjournal; printf '%s\\n' \"${COMPREPLY[@]}\"",
                      "bash"};
        for (const std::string& word : Line(words))
            line.push_back(word);
        const ProgramResult outcome = RunningProgram(line, Around).End();
        EXPECT_EQ(outcome.Status, 0);
        EXPECT_EQ(outcome.Error, "");
        Words offered;
        std::istringstream lines(outcome.Out);
        for (std::string offer; std::getline(lines, offer);)
            if (!offer.empty())
                offered.push_back(offer);
        return offered;
    }
};

TEST_F(CompletionTest, CompletionOffersCommands)
{
    EXPECT_EQ(Offered({""}),
              (Words{"archive", "backup",  "care",     "check",  "clone", "defoliate",  "event", "export",
                     "feed",    "harvest", "health",   "import", "info",  "note",       "photo", "plant",
                     "stage",   "strain",  "timeline", "top",    "train", "transplant", "undo",  "water"}));
    EXPECT_EQ(Offered({"p"}), (Words{"photo", "plant"}));
    EXPECT_EQ(Offered({"plant", ""}), (Words{"add", "delete", "duplicate", "edit", "list", "show", "tree"}));
    EXPECT_EQ(Offered({"--json", "plant", "du"}), Words{"duplicate"});
    EXPECT_EQ(Offered({"--file", "plant", "plant", "du"}), Words{"duplicate"}); // the first `plant` is a file name
    EXPECT_EQ(Offered({"--file", "plant", "ti"}), Words{"timeline"});
    EXPECT_EQ(Offered({"plant", "--file", "list", "du"}), Words{"duplicate"}); // `list` is a file name
}

TEST_F(CompletionTest, CompletionOffersFlags)
{
    EXPECT_EQ(Offered({"plant", "add", "--s"}), (Words{"--seed-date", "--sex", "--stage", "--strain"}));
    EXPECT_EQ(Offered({"feed", "Basil", "--amount-ml", "5", "--e"}), Words{"--ec"});
    EXPECT_EQ(Offered({"strain", "list", "-"}), (Words{"--file", "--help", "--json", "--quiet", "--version"}));
    EXPECT_EQ(Offered({"plant", "edit", "PLANT", "--te"}), Words{"--tent"}); // a plant named like the argument
    EXPECT_EQ(Offered({"plant", "edit", "Basil", "--mo"}), (Words{"--mother", "--mother-plant-uuid"}));
    EXPECT_EQ(Offered({"care", "list", "--"}),
              (Words{"--file", "--help", "--json", "--newest", "--quiet", "--version"}));
    EXPECT_EQ(Offered({"plant", "add", "--name", "--stage", "--te"}), Words{"--tent"}); // `--stage` is the plant's name
}

TEST_F(CompletionTest, CompletionOffersNamesInAnyLetterCase)
{
    const Words stages = {"Archived", "Clone", "Cure", "Dry", "Flower", "Harvested", "Seed", "Veg"};
    EXPECT_EQ(Offered({"plant", "add", "--stage", ""}), stages);
    EXPECT_EQ(Offered({"plant", "add", "--stage", "c"}), (Words{"Clone", "Cure"}));
    EXPECT_EQ(Offered({"plant", "add", "--stage", "FL"}), Words{"Flower"});
    EXPECT_EQ(Offered({"note", "add", "Basil", "--type", "m"}), Words{"Milestone"});
    EXPECT_EQ(Offered({"care", "add", "Basil", "--action", ""}), (Words{"Feed", "Water"}));
    EXPECT_EQ(Offered({"plant", "edit", "Basil", "--stage", "="}), stages);
    EXPECT_EQ(Offered({"plant", "edit", "Basil", "--stage", "=", "fl"}), Words{"Flower"});
    EXPECT_EQ(Offered({"event", "add", "Basil", "--type", "ls"}), Words{"LST\\ Trained"});
}

TEST_F(CompletionTest, CompletionOffersTheWordsForDates)
{
    for (const char* flag : {"--care-date", "--date"})
        EXPECT_EQ(Offered({"feed", "Basil", flag, ""}),
                  (Words{"friday", "monday", "saturday", "sunday", "thursday", "today", "tomorrow", "tuesday",
                         "wednesday", "yesterday"}));
    EXPECT_EQ(Offered({"feed", "Basil", "--care-date", "=", "y"}), Words{"yesterday"});
}

TEST_F(CompletionTest, CompletionLeavesFileNamesToTheShell)
{
    for (const Words& words :
         {Words{"import", ""}, {"--file", ""}, {"photo", "add", "Basil", "b"}, {"feed", "Basil", "--ec", ""}})
        EXPECT_EQ(Offered(words), Words{});
    EXPECT_NE(FileBytes(PLANTJOURNAL_SOURCE_DIR "/tools/command_line/plantjournal.bash").find("complete -o default -F"),
              std::string::npos);
}

using InteractiveCompletionTest = TerminalTest;

TEST_F(InteractiveCompletionTest, CompletionWorksInAnInteractiveShell)
{
    Surroundings terminal = Around;
    terminal.Columns = 80;
    terminal.Environment.insert(terminal.Environment.end(), {"TERM=dumb", "PS1=ready:", "INPUTRC=/dev/null"});
    RunningProgram shell({"bash", "--norc", "--noprofile", "-i"}, terminal);
    // A function replaces the command and prints its arguments.
    shell.Type(
        "bind 'set bell-style none'; source '" PLANTJOURNAL_SOURCE_DIR
        "/tools/command_line/plantjournal.bash'; plantjournal() { if [[ $1 == complete ]]; then '" PLANTJOURNAL_COMMAND
        "' \"$@\"; else printf '<%s>' \"$@\"; echo end; fi; }; echo on''ward\n");
    ASSERT_TRUE(shell.Await("onward"));
    shell.Type("plantjournal eve\tadd Basil --ty\tls\tdetails\n");
    ASSERT_TRUE(shell.Await(">end"));
    shell.Type("plantjournal pla\ted\tBasil --stage=fl\t\n");
    shell.Type("exit\n");
    const std::string shown = shell.End().Out;
    EXPECT_NE(shown.find("<event><add><Basil><--type><LST Trained><details>end"), std::string::npos) << shown;
    EXPECT_NE(shown.find("<plant><edit><Basil><--stage=Flower>end"), std::string::npos) << shown;
}

// ---- The manual page

class ManualTest : public CommandTest
{
  protected:
    // The warnings of a program that formats the page; "not installed" where the system does not have it.
    std::string Warnings(const Words& words) const
    {
        const ProgramResult outcome = RunningProgram(words, Around).End();
        if (outcome.Status == 127)
            return "not installed";
        EXPECT_EQ(outcome.Status, 0);
        return outcome.Error;
    }

    const std::string Page = FileBytes(PLANTJOURNAL_MANUAL);
};

// A text as the page spells it.
std::string InRoff(const std::string& text)
{
    std::string roff;
    for (const char letter : text)
        roff += letter == '-' ? std::string("\\-") : std::string(1, letter);
    return roff;
}

TEST_F(ManualTest, TheManualDescribesEveryCommandAndFlag)
{
    const std::vector<Words> groups = {{},          {"plant"}, {"strain"}, {"care"}, {"event"},
                                       {"harvest"}, {"photo"}, {"health"}, {"note"}};
    int flags = 0;
    for (const Words& group : groups)
    {
        Words line = group;
        line.emplace_back("--help");
        std::istringstream help(Done(line));
        std::string text;
        while (std::getline(help, text) && text != "Subcommands:")
        {
        }
        while (std::getline(help, text) && text.starts_with("  "))
        {
            const std::string command = text.substr(2, text.find(' ', 2) - 2);
            if (group.empty() && std::find(groups.begin(), groups.end(), Words{command}) != groups.end())
                continue;
            const std::string title = ".SS " + (group.empty() ? "" : group[0] + ' ') + command + '\n';
            const std::size_t begin = Page.find(title);
            ASSERT_NE(begin, std::string::npos) << title;
            const std::string section = Page.substr(begin, Page.find("\n.S", begin + 1) - begin);
            Words below = group;
            below.insert(below.end(), {command, "--help"});
            std::istringstream of(Done(below));
            for (std::string flag; std::getline(of, flag);)
                if (flag.starts_with("  -") && !flag.starts_with("  -h,--help"))
                {
                    ++flags;
                    const std::string name = flag.substr(2, flag.find(' ', 2) - 2);
                    EXPECT_NE(section.find("\\fB" + InRoff(name) + "\\fR"), std::string::npos) << title << name;
                }
        }
    }
    EXPECT_GT(flags, 100);
    for (const char* general : {R"(\-\-file)", R"(\-\-json)", R"(\-\-version)", R"(\-h,\-\-help)"})
        EXPECT_NE(Page.find("\\fB" + std::string(general) + "\\fR"), std::string::npos) << general;
}

TEST_F(ManualTest, TheManualDescribesArgumentsAndTypesOfValues)
{
    for (const char* section :
         {".SS plant show\nShow every field of a plant that was entered.\n"
          ".TP\n.I PLANT\nUUID, prefix of the UUID, or name; must match exactly one plant\n"
          ".PP\n.nf\n  plantjournal plant show Basil\n",
          ".SS plant add\nAdd a plant.\n"
          ".TP\n\\fB\\-\\-uuid\\fR \\fITEXT\\fR\npermanent identifier; generated if not given\n.TP\n"})
        EXPECT_NE(Page.find(section), std::string::npos) << section;
}

TEST_F(ManualTest, TheManualHasExamplesAndNotes)
{
    EXPECT_NE(Page.find("plantjournal plant add Basil \\-\\-strain Genovese"), std::string::npos);
    EXPECT_NE(Page.find("PLANTJOURNAL_FILE"), std::string::npos);
    EXPECT_NE(Page.find("NO_COLOR"), std::string::npos);
}

TEST_F(ManualTest, TheManualIsFormattedWithoutWarnings)
{
    for (const char* width : {"50", "80", "132"})
    {
        Around.Environment.push_back("MANWIDTH=" + std::string(width));
        const std::string man = Warnings({"man", "-l", "--warnings", PLANTJOURNAL_MANUAL});
        EXPECT_TRUE(man.empty() || man == "not installed") << man;
        Around.Environment.pop_back();
    }
    const std::string groff = Warnings({"groff", "-ww", "-man", "-Tutf8", "-z", PLANTJOURNAL_MANUAL});
    if (groff == "not installed")
        GTEST_SKIP() << "groff is not installed";
    EXPECT_EQ(groff, "");
}

// ---- Installation

using InstallationTest = CommandTest;

TEST_F(InstallationTest, InstallingBringsTheCommandManualAndCompletion)
{
    const std::string usr = Scratch.File("usr");
    const Words line = {"cmake", "--install", PLANTJOURNAL_BINARY_DIR, "--component", "Runtime", "--prefix", usr};
    const ProgramResult install = RunningProgram(line, Around).End();
    ASSERT_EQ(install.Status, 0) << install.Error;
    EXPECT_EQ(RunningProgram({usr + "/bin/plantjournal", "--version"}, Around).End().Out,
              "plantjournal " PLANTJOURNAL_VERSION "\n");
    EXPECT_EQ(FileBytes(usr + "/share/man/man1/plantjournal.1"), FileBytes(PLANTJOURNAL_MANUAL));
    EXPECT_EQ(FileBytes(usr + "/share/bash-completion/completions/plantjournal"),
              FileBytes(PLANTJOURNAL_SOURCE_DIR "/tools/command_line/plantjournal.bash"));
    EXPECT_FALSE(std::filesystem::exists(usr + "/include")); // headers are for developers
}

} // namespace
