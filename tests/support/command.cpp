#include "support/command.h"

#include "support/basil_journal.h"
#include "support/pseudo_terminal.h"
#include "testing/plain_connection.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <utility>

namespace support
{

CommandTest::CommandTest()
{
    Around.Directory = Scratch.File("");
    Around.Environment = NeededEnvironment();
    Around.Environment.push_back("HOME=" + Scratch.File("home"));
    Around.Environment.push_back("XDG_DATA_HOME=" + Scratch.File("data"));
    Around.Environment.push_back("LOCALAPPDATA=" + Scratch.File("data")); // on Windows
}

void CommandTest::TearDown()
{
    if (!std::filesystem::exists(Journal))
        return;
    Around.AsUser = false;
    if (Sound)
    {
        const ProgramResult check = Run({"check", "--file", Journal});
        EXPECT_EQ(check.Status, 0) << check.Error;
        EXPECT_EQ(check.Out, "No problems found.\n");
    }
    EXPECT_EQ(Beside(), Left);
}

Words CommandTest::Line(const Words& words)
{
    Words line = {PLANTJOURNAL_COMMAND};
    line.insert(line.end(), words.begin(), words.end());
    return line;
}

ProgramResult CommandTest::Run(const Words& words, const std::string& input) const
{
    ProgramResult result = RunningProgram(Line(words), Around, input).End();
    if (OnWindows) // the paths of the files of a directory have a backslash
        result.Error = std::regex_replace(result.Error, std::regex(R"(\\(?=[A-Z][A-Za-z]*\.csv))"), "/");
    return result;
}

ProgramResult CommandTest::RunOnTerminal(const Words& words, const std::string& typed, int columns) const
{
    Surroundings terminal = Around;
    terminal.Columns = columns;
    return RunningProgram(Line(words), terminal, typed).End();
}

std::string CommandTest::Done(const Words& words, const std::string& input) const
{
    const ProgramResult outcome = Run(words, input);
    EXPECT_EQ(outcome.Status, 0);
    EXPECT_EQ(outcome.Error, "");
    return outcome.Out;
}

std::string CommandTest::DoneLine(const Words& words) const
{
    std::string line = Done(words);
    EXPECT_TRUE(line.ends_with('\n')) << line;
    line.erase(line.find_last_not_of('\n') + 1);
    return line;
}

std::string CommandTest::NoticesOf(const Words& words) const
{
    const ProgramResult outcome = Run(words);
    EXPECT_EQ(outcome.Status, 0) << outcome.Error;
    return outcome.Error;
}

std::string CommandTest::Stored(Words words) const
{
    words.emplace_back("--quiet");
    return DoneLine(words);
}

JSON CommandTest::Parsed(Words words) const
{
    words.emplace_back("--json");
    return JSON::parse(Done(words));
}

std::string CommandTest::Refused(const Words& words, const std::string& input) const
{
    return RefusedWith(1, words, input);
}

std::string CommandTest::Mistaken(const Words& words) const
{
    return RefusedWith(2, words, {});
}

std::string CommandTest::RefusedWith(int status, const Words& words, const std::string& input) const
{
    const auto state = [this]
    { return std::pair(Beside(), std::filesystem::is_regular_file(Journal) ? FileBytes(Journal) : std::string()); };
    const auto before = state();
    const ProgramResult outcome = Run(words, input);
    EXPECT_EQ(outcome.Status, status);
    EXPECT_EQ(outcome.Out, "");
    EXPECT_NE(outcome.Error, "");
    EXPECT_TRUE(state() == before) << "something was changed";
    return outcome.Error;
}

void CommandTest::SetVariable(const std::string& name, const std::string& value)
{
    RemoveVariable(name);
    Around.Environment.push_back(name + '=' + value);
}

void CommandTest::RemoveVariable(const std::string& name)
{
    std::erase_if(Around.Environment, [&](const std::string& variable) { return variable.starts_with(name + '='); });
}

void CommandTest::Write(const std::string& name, const std::string& bytes) const
{
    const std::filesystem::path path = Scratch.File(name);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    ASSERT_TRUE(file << bytes);
}

std::vector<std::string> CommandTest::Beside() const
{
    std::vector<std::string> names;
    const std::filesystem::path directory = std::filesystem::path(Journal).parent_path();
    if (std::filesystem::is_directory(directory))
        for (const auto& entry : std::filesystem::directory_iterator(directory))
            if (!OnWindows || (entry.path().filename() != "undo" && entry.path().filename() != "backups"))
                names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string CommandTest::Content() const
{
    return support::Content(PlainConnection(Journal).NativeHandle());
}

void CommandTest::Keep(const std::function<void(PlantRepository&)>& work) const
{
    PlantDatabase database;
    std::string error;
    ASSERT_TRUE(database.Open(Journal, &error)) << error;
    PlantRepository repository(database);
    work(repository);
}

void CommandTest::KeepEverything() const
{
    Write("basil.jpg", "a picture");
    Keep([this](PlantRepository& repository) { StoreBasilJournal(repository, Scratch.File("basil.jpg")); });
}

void CommandTest::SkipWithoutTerminal()
{
    if (const std::string reason = WhyNoPseudoTerminal(); !reason.empty())
        GTEST_SKIP() << reason;
}

} // namespace support
