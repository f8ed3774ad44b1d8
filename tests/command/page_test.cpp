// What is installed with the command: the completion of the shells and the manual page.

#include "support/command.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

using namespace support;

namespace
{

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

// The words that completion offers after these.
Words Offered(const std::string& offers)
{
    Words words;
    std::istringstream lines(offers);
    for (std::string line; std::getline(lines, line);)
        if (!line.starts_with('\t') && !line.ends_with('\t')) // names of files; values, which have no description
            words.push_back(line.substr(0, line.find('\t')));
    return words;
}

TEST_F(ManualTest, TheManualDescribesEveryCommandAndFlag)
{
    int flags = 0;
    const auto describes = [&](const Words& command)
    {
        std::string title = ".SS";
        for (const std::string& word : command)
            title += ' ' + word;
        const std::size_t begin = Page.find(title + '\n');
        ASSERT_NE(begin, std::string::npos) << title;
        EXPECT_EQ(Page.find(title + '\n', begin + 1), std::string::npos) << title;
        const std::string section = Page.substr(begin, Page.find("\n.S", begin + 1) - begin);
        Words line = command;
        line.insert(line.begin(), "complete");
        line.emplace_back("--");
        for (const std::string& flag : Offered(Done(line)))
            if (flag != "--file" && flag != "--json" && flag != "--quiet" && flag != "--version" && flag != "--help")
            {
                ++flags;
                EXPECT_NE(section.find(InRoff(flag)), std::string::npos) << title << flag;
            }
    };
    for (const std::string& name : Offered(Done({"complete", ""})))
    {
        if (name == "help")
            continue;
        const Words below = Offered(Done({"complete", name, ""}));
        for (const std::string& command : below)
            describes({name, command});
        if (below.empty())
            describes({name});
    }
    EXPECT_GT(flags, 100);
    for (const char* general : {R"(\-\-file)", R"(\-\-json)", R"(\-\-version)", R"(\-q,\-\-quiet)", R"(\-h,\-\-help)"})
        EXPECT_NE(Page.find("\\fB" + std::string(general) + "\\fR"), std::string::npos) << general;
}

TEST_F(ManualTest, TheManualDescribesArgumentsAndTypesOfValues)
{
    const char* const plantShow =
        ".SS plant show\n.B plantjournal plant show\nPLANT [OPTION...]\n.PP\nShow every field of a plant that was entered.\n"
        ".TP\n.I PLANT\n";
    for (
        const char* section :
        {".SH DESCRIPTION\nplantjournal keeps", "\n.ad l\n.SH NAME\nplantjournal \\- keep a plant journal: ",
         "creates the\nfile.\n.PP\n`plantjournal help` lists", plantShow, ".PP\n.nf\n  plantjournal plant show Basil\n",
         ".TP\n\\fB\\-\\-uuid\\fR \\fITEXT\\fR\npermanent identifier; generated if not given\n.TP\n",
         "\\fB\\-\\-stage\\fR \\fISTAGE\\fR\ngrowth stage: Seed, Clone, Veg, Flower, Dry, Cure, Harvested, Archived\n"})
        EXPECT_NE(Page.find(section), std::string::npos) << section;
}

TEST_F(ManualTest, TheManualHasTheHeadingsOfTheHelpAndTheLongNotes)
{
    std::size_t last = 0;
    for (const char* heading :
         {"NAME", "SYNOPSIS", "DESCRIPTION", "PLANTS", "VALUES", "OUTPUT", "OPTIONS OF EVERY COMMAND",
          "KEEP THE JOURNAL", "LOOK", "CORRECT AND COMPLETE", "LOOK AFTER THE FILE", "FILES", "ENVIRONMENT", "BACKUPS",
          "DAMAGED JOURNALS", "UNDO", "EXIT STATUS"})
    {
        const std::size_t found = Page.find(".SH " + std::string(heading) + '\n');
        ASSERT_NE(found, std::string::npos) << heading;
        EXPECT_GT(found, last) << heading;
        last = found;
    }
    for (const char* word :
         {"PLANTJOURNAL_FILE", "NO_COLOR", "XDG_DATA_HOME", "at least four characters", "exact name"})
        EXPECT_NE(Page.find(word), std::string::npos) << word;
}

TEST_F(ManualTest, TheManualDescribesTheWayFromADamagedJournalToANewOne)
{
    std::size_t last = Page.find(".SH DAMAGED JOURNALS\n");
    ASSERT_NE(last, std::string::npos);
    for (const char* step :
         {"`plantjournal restore` ", "`plantjournal salvage DAMAGED DESTINATION`", "Lost plant",
          "`plantjournal check --repair --file DESTINATION`", "`plantjournal restore DESTINATION`", ".SH "})
    {
        const std::size_t found = Page.find(InRoff(step), last + 1);
        ASSERT_NE(found, std::string::npos) << step;
        last = found;
    }
    EXPECT_EQ(Page.compare(last, 7, ".SH UNDO", 7), 0);
}

TEST_F(ManualTest, ThePagesNameTheDirectoriesOfEverySystem)
{
    const auto section = [&](const std::string& title)
    {
        const std::size_t begin = Page.find(".SH " + title + '\n');
        return Page.substr(begin, Page.find(".SH ", begin + 1) - begin);
    };
    const std::string readme = FileBytes(PLANTJOURNAL_SOURCE_DIR "/README.md");
    for (const Words& directories :
         {Words{"FILES", "$XDG_DATA_HOME", "~/.local/share"}, {"BACKUPS", "$XDG_STATE_HOME", "~/.local/state"}})
        for (const std::string& directory :
             {directories[1], directories[2], std::string("~/Library/Application Support"),
              std::string("%LOCALAPPDATA%")})
        {
            EXPECT_NE(readme.find('`' + directory + '`'), std::string::npos) << directory;
            EXPECT_NE(section(directories[0]).find(directory), std::string::npos) << directory;
        }
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
    for (const auto& [installed, source] : std::vector<std::pair<const char*, const char*>>{
             {"bash-completion/completions/plantjournal", "plantjournal.bash"},
             {"zsh/site-functions/_plantjournal", "plantjournal.zsh"},
             {"fish/vendor_completions.d/plantjournal.fish", "plantjournal.fish"}})
        EXPECT_EQ(FileBytes(usr + "/share/" + installed),
                  FileBytes(std::string(PLANTJOURNAL_SOURCE_DIR "/tools/command_line/") + source))
            << installed;
    EXPECT_FALSE(std::filesystem::exists(usr + "/include")); // headers are for developers
}

} // namespace
