// Builds the program of docs/tutorial.md at every step, and compares its output with the page.

#include "plant.h"
#include "support/page.h"
#include "testing/plain_connection.h"
#include "testing/scratch_directory.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

using namespace support;

namespace
{

const std::string TutorialPage = "docs/tutorial.md";

std::string InsertedBefore(std::string program, const std::string& place, const std::string& block)
{
    const std::size_t position = program.find(place);
    EXPECT_NE(position, std::string::npos) << place;
    return program.insert(position, block);
}

// The program after each block of the page.
std::vector<std::string> Steps()
{
    std::vector<std::string> steps;
    for (const std::string& block : CodeBlocks(TutorialPage, "cpp"))
        if (steps.empty())
            steps.push_back(block);
        else if (block.starts_with("    commands["))
            steps.push_back(InsertedBefore(steps.back(), "\n    std::string line;", block));
        else
            steps.push_back(InsertedBefore(steps.back(), "} // namespace", block + '\n'));
    return steps;
}

// Returns the output of the program for a session on the page. The day on the page stands for today.
std::string Printed(const std::string& session)
{
    std::istringstream lines(session);
    std::string printed;
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("> "))
            printed += "> ";
        else if (!line.starts_with("$ "))
            printed += line + '\n';
    if (session.find("> ") != std::string::npos)
        printed += "> "; // the prompt at the end of the input
    const std::string day = "2024-05-06";
    for (std::size_t at = 0; (at = printed.find(day, at)) != std::string::npos;)
        printed.replace(at, day.size(), PlantEventCurrentDate());
    return printed;
}

class TutorialTest : public testing::Test
{
  protected:
    // Runs a command line in the scratch directory. Returns its output.
    std::string Run(const std::string& line, const std::string& input = {}) const
    {
        std::ofstream(Scratch.File("in")) << input;
        const std::string out = Scratch.File("out");
        Status = std::system(("cd '" + Scratch.File("") + "' && " + line + " <in >out 2>&1").c_str());
        return FileBytes(out);
    }

    std::string RunSession(const std::string& program, const std::string& session) const
    {
        std::istringstream lines(session);
        std::string call = program;
        std::string input;
        for (std::string line; std::getline(lines, line);)
            if (line.starts_with("> "))
                input += line.substr(2) + '\n';
            else if (line.starts_with("$ ./garden"))
                call += line.substr(10);
        return Run(call, input);
    }

    // Runs all sessions of the page in order on one journal.
    void ExpectSessions(const std::string& program) const
    {
        for (const std::string& session : CodeBlocks(TutorialPage, "text"))
        {
            std::unique_ptr<PlainConnection> other;
            if (session.find("locked: ") != std::string::npos)
            {
                other = std::make_unique<PlainConnection>(Scratch.File("garden.db"));
                other->RunSQL("BEGIN IMMEDIATE;");
            }
            const std::string expected = Printed(session);
            const std::string printed = RunSession(program, session);
            if (expected == Printed(session)) // not if midnight passed in between
            {
                EXPECT_EQ(printed, expected);
            }
        }
    }

    ScratchDirectory Scratch;
    mutable int Status = 0;
};

TEST_F(TutorialTest, TheBlocksOfThePageMakeUpTheExample)
{
    ASSERT_FALSE(Steps().empty());
    EXPECT_EQ(Steps().back(), FileBytes(PLANTJOURNAL_SOURCE_DIR "/examples/tutorial.cpp"));
}

TEST_F(TutorialTest, TheProgramCompilesAtEveryStep)
{
    for (const std::string& step : Steps())
    {
        std::ofstream(Scratch.File("garden.cpp")) << step;
        const std::string output =
            Run("c++ -std=c++17 -fsyntax-only -I'" PLANTJOURNAL_SOURCE_DIR "/src' -I'" PLANTJOURNAL_SOURCE_DIR
                "/query' -I'" PLANTJOURNAL_SOURCE_DIR "/validation' garden.cpp");
        EXPECT_EQ(Status, 0) << step << output;
    }
}

TEST_F(TutorialTest, TheProgramPrintsTheSessionsOfThePage)
{
    ExpectSessions(PLANTJOURNAL_TUTORIAL);
}

TEST_F(TutorialTest, TheCommandOfThePageBuildsTheProgram)
{
    const std::vector<std::string> commands = CodeBlocks(TutorialPage, "sh");
    ASSERT_EQ(commands.size(), 1);
    std::filesystem::create_directory_symlink(PLANTJOURNAL_SOURCE_DIR, Scratch.File("plantjournal"));
    std::ofstream(Scratch.File("garden.cpp")) << Steps().back();
    EXPECT_EQ(Run("{ " + commands[0] + "}"), "> ");
    EXPECT_EQ(Status, 0);
    ExpectSessions("./garden");
}

} // namespace
