// Runs the commands of docs/growers-guide.md in order, and compares their output with the page.

#include "support/chosen_day.h"
#include "support/command.h"
#include "support/page.h"

#include <filesystem>
#include <regex>

using namespace support;

namespace
{

const std::string Page = "docs/growers-guide.md";
const std::string Prompt = "[y/N] ";

// A command of the page.
struct Step
{
    std::string Day; // in the heading of its section
    std::string Line;
    std::string Printed; // with the answer to the prompt
};

std::vector<Step> Steps()
{
    const std::regex heading(R"(## .* \((\d{4}-\d{2}-\d{2})\))");
    std::vector<Step> steps;
    std::string day;
    bool inSession = false;
    for (const std::string& line : Lines(PageText(Page)))
    {
        std::smatch match;
        if (line.starts_with("```"))
            inSession = line == "```text";
        else if (inSession && line.starts_with("$ "))
            steps.push_back({day, line.substr(2), {}});
        else if (inSession)
            steps.back().Printed += line + '\n';
        else if (std::regex_match(line, match, heading))
            day = match[1];
    }
    return steps;
}

// New plants get random UUIDs.
std::string WithoutUUIDs(std::string text)
{
    text = std::regex_replace(text, std::regex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"), "UUID");
    return std::regex_replace(text, std::regex("  [0-9a-f]{4,8}\n"), "  UUID\n"); // shortened, at the end of a table
}

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

class GrowersGuideTest : public TerminalTest
{
  protected:
    GrowersGuideTest()
    {
        Journal = Scratch.File("home/.local/share/plantjournal/journal.db");
        std::filesystem::create_directories(Scratch.File("home/stick"));
        std::filesystem::create_directories(Scratch.File("bin"));
        std::filesystem::create_symlink(PLANTJOURNAL_ON_A_DAY, Scratch.File("bin/plantjournal"));
        std::erase_if(Around.Environment, [](const std::string& variable)
                      { return variable.starts_with("PATH=") || variable.starts_with("XDG_DATA_HOME="); });
        Around.Environment.push_back("PATH=" + Scratch.File("bin") + ":/usr/bin:/bin");
        Around.Environment.emplace_back("NO_COLOR=1");
        Around.Directory = Scratch.File("home");
        Around.Columns = 80;
        WriteFilesOfThePage();
    }

    // The spreadsheet on the page, and a picture without a date of its own.
    void WriteFilesOfThePage() const
    {
        const std::vector<std::string> sheets = CodeBlocks(Page, "csv");
        ASSERT_EQ(sheets.size(), 1U);
        Write("home/season/PlantCareEntries.csv", sheets[0]);
        Write("home/Pictures/basil.jpg", "\xFF\xD8\xFF\xD9");
    }

    // Runs a command of the page, with its answers to prompts.
    std::string Output(const Step& step) const
    {
        RunningProgram shell({"sh", "-c", step.Line}, OnDay(step.Day, Around));
        std::string answer;
        if (const std::size_t prompt = step.Printed.find(Prompt); prompt != std::string::npos)
        {
            const std::size_t begin = prompt + Prompt.size();
            answer = step.Printed.substr(begin, step.Printed.find('\n', begin) + 1 - begin);
            EXPECT_TRUE(shell.Await(Prompt)) << step.Line;
            shell.Type(answer);
        }
        const ProgramResult outcome = shell.End();
        EXPECT_EQ(outcome.Status, 0) << step.Line;
        std::string printed = Replaced(outcome.Out, Scratch.File("home"), "/home/ana");
        // The page says that it leaves these notices out.
        printed = std::regex_replace(printed, std::regex("notice: \\S+: no backup for \\d+ days; [^\n]+\n"), "");
        return Replaced(printed, Prompt, Prompt + answer); // this terminal does not show what is typed
    }
};

TEST_F(GrowersGuideTest, TheCommandsPrintTheOutputOnThePage)
{
    const std::vector<Step> steps = Steps();
    EXPECT_GT(steps.size(), 40U);
    for (const Step& step : steps)
        EXPECT_EQ(WithoutUUIDs(Output(step)), WithoutUUIDs(step.Printed)) << step.Day << " $ " << step.Line;
}

TEST_F(GrowersGuideTest, TheCommandsOfTheReadmeSucceed)
{
    std::filesystem::create_directory(Scratch.File("stick"));
    int commands = 0;
    for (const std::string& block : CodeBlocks("README.md", "sh"))
        if (block.find("\nplantjournal ") != std::string::npos)
            for (const std::string& line : Lines(block))
            {
                const std::string answered = line.starts_with("plantjournal undo") ? Prompt + "y\n" : "";
                Output({"2025-05-01", Replaced(line, "/media", Scratch.File("")), answered});
                ++commands;
            }
    EXPECT_GT(commands, 10);
}

TEST_F(GrowersGuideTest, ThePageInstallsTheCommandAsTheReadmeDoes)
{
    const std::vector<std::string> blocks = CodeBlocks(Page, "sh");
    ASSERT_EQ(blocks.size(), 1U);
    EXPECT_NE(PageText("README.md").find("```sh\n" + blocks[0] + "```\n"), std::string::npos);
}

} // namespace
