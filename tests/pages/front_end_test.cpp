// Compares the code of docs/front-end.md with examples/front_end.cpp, and runs the program.

#include "plant_database.h"
#include "support/other_program.h"
#include "support/page.h"
#include "support/program.h"
#include "testing/old_files.h"
#include "testing/plain_connection.h"
#include "testing/scratch_directory.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>

#include <gtest/gtest.h>

using namespace support;

namespace
{

const std::string FrontEndPage = "docs/front-end.md";
const std::string FrontEndSource = PLANTJOURNAL_SOURCE_DIR "/examples/front_end.cpp";

class FrontEndPageTest : public testing::Test
{
  protected:
    void CreateBasil() const
    {
        PlantDatabase database;
        Plant basil;
        basil.Name = "Basil";
        ASSERT_TRUE(database.Open(Path));
        ASSERT_TRUE(PlantRepository(database).CreatePlant(basil));
    }

    std::unique_ptr<RunningProgram> Start() const
    {
        Surroundings terminal;
        terminal.Directory = Scratch.File("");
        terminal.Columns = 120;
        return std::make_unique<RunningProgram>(Words{PLANTJOURNAL_FRONT_END, Path}, terminal);
    }

    // Runs a session of the page: types the lines that begin with `> `, and expects the others, each after the one
    // before. The day on the page stands for today.
    static void ExpectSession(RunningProgram& program, std::string session)
    {
        session = std::regex_replace(session, std::regex("2024-05-06"), PlantEventCurrentDate());
        for (const std::string& line : Lines(session))
            if (line.starts_with("> "))
                program.Type(line.substr(2) + "\n");
            else
                EXPECT_TRUE(program.Await(line)) << line;
    }

    static void Quit(RunningProgram& program)
    {
        program.Type("quit\n");
        EXPECT_EQ(program.End().Status, 0);
    }

    // Starts the program with a file that it does not open. Returns its output.
    std::string RefusedFile() const
    {
        const ProgramResult result = Start()->End();
        EXPECT_EQ(result.Status, 1);
        return result.Out;
    }

    ScratchDirectory Scratch;
    const std::string Path = Scratch.File("journal.db");
};

TEST_F(FrontEndPageTest, TheCodeOfThePageIsThatOfTheExample)
{
    std::vector<std::string> blocks = CodeBlocks(FrontEndPage, "cpp");
    EXPECT_GE(blocks.size(), 8U);
    std::vector<std::string> regions;
    const std::string source = FileBytes(FrontEndSource);
    const std::regex name("// \\[(\\w+)\\]");
    for (std::sregex_iterator found(source.begin(), source.end(), name); found != std::sregex_iterator(); ++found)
        if ((*found)[1] != "end")
            regions.push_back(Region(FrontEndSource, (*found)[1]));
    std::sort(blocks.begin(), blocks.end());
    std::sort(regions.begin(), regions.end());
    EXPECT_EQ(blocks, regions);
}

TEST_F(FrontEndPageTest, TheSessionsOfThePageRunAsItShows)
{
    CreateBasil();
    const std::vector<std::string> sessions = CodeBlocks(FrontEndPage, "text");
    ASSERT_EQ(sessions.size(), 2U);
    const auto program = Start();
    ASSERT_TRUE(program->Await("Basil: Veg, fed"));
    ExpectSession(*program, sessions[0]);
    // Another program holds the lock until the second session stores again.
    const std::size_t again = sessions[1].find("> again");
    OtherProgram other(Path, "BEGIN IMMEDIATE;");
    ExpectSession(*program, sessions[1].substr(0, again));
    other.Finish();
    ExpectSession(*program, sessions[1].substr(again));
    Quit(*program);
    const PlainConnection journal(Path);
    EXPECT_EQ(journal.QueryRows("SELECT AmountMl FROM PlantCareEntries ORDER BY ID;"), (Rows{{"500.0"}, {"300.0"}}));
}

TEST_F(FrontEndPageTest, TheWindowAnswersWhileAnotherHoldsTheLock)
{
    CreateBasil();
    const auto program = Start();
    ASSERT_TRUE(program->Await("Basil: Veg, fed"));
    OtherProgram other(Path, "BEGIN IMMEDIATE;");
    program->Type("feed Basil 300\n");
    ASSERT_TRUE(program->Await("Saving..."));
    const auto begin = std::chrono::steady_clock::now();
    program->Type("stages\n");
    EXPECT_TRUE(program->Await("Harvested Archived"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    other.Finish();
    EXPECT_TRUE(program->Await("Saved."));
    Quit(*program);
}

TEST_F(FrontEndPageTest, AChangeOfAnotherProgramAppearsByItself)
{
    CreateBasil();
    const auto program = Start();
    ASSERT_TRUE(program->Await("Basil: Veg, fed"));
    const auto begin = std::chrono::steady_clock::now();
    PlainConnection(Path).RunSQL("INSERT INTO Plants(UUID,Name,Stage) VALUES('another','Mint','Flower');");
    EXPECT_TRUE(program->Await("Mint: Flower"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5)); // a quarter, on a machine at rest
    Quit(*program);
}

TEST_F(FrontEndPageTest, TheJobsThatWaitAreCompletedAtTheEnd)
{
    CreateBasil();
    const auto program = Start();
    ASSERT_TRUE(program->Await("Basil: Veg, fed"));
    OtherProgram other(Path, "BEGIN IMMEDIATE;");
    program->Type("feed Basil 300\nfeed Basil 400\nquit\n");
    ASSERT_TRUE(program->Await("Saving..."));
    other.Finish();
    const ProgramResult result = program->End();
    EXPECT_EQ(result.Status, 0);
    EXPECT_NE(result.Out.find("Saved."), result.Out.rfind("Saved.")) << result.Out;
    EXPECT_EQ(PlainConnection(Path).Value("SELECT count(*) FROM PlantCareEntries;"), "2");
}

TEST_F(FrontEndPageTest, AMissingFileIsCreated)
{
    const auto program = Start();
    program->Type("help\n");
    EXPECT_TRUE(program->Await("feed PLANT ML"));
    Quit(*program);
    EXPECT_EQ(PlainConnection(Path).Value("SELECT count(*) FROM Plants;"), "0");
}

TEST_F(FrontEndPageTest, AFileThatIsNoJournalIsNotOpened)
{
    std::ofstream(Path) << "a text that is long enough to be read as the beginning of a file";
    const std::string before = FileBytes(Path);
    EXPECT_NE(RefusedFile().find("journal.db: NotADatabase"), std::string::npos);
    EXPECT_EQ(FileBytes(Path), before);
    std::filesystem::remove(Path);
    PlainConnection(Path).RunSQL("CREATE TABLE Other(Column);");
    EXPECT_NE(RefusedFile().find("journal.db: Foreign"), std::string::npos);
    std::filesystem::remove(Path);
    std::filesystem::create_directory(Path);
    EXPECT_NE(RefusedFile().find("journal.db: not a regular file"), std::string::npos);
}

TEST_F(FrontEndPageTest, AnOlderFileIsBackedUpBeforeItsMigration)
{
    const OldFile& old = OldFiles().front();
    WriteOldFile(Path, old);
    const auto content = [&](const std::string& path) { return Content(PlainConnection(path).NativeHandle()); };
    const std::string before = content(Path);
    {
        const auto program = Start();
        program->Type("help\n");
        EXPECT_TRUE(program->Await("feed PLANT ML"));
        Quit(*program);
    }
    EXPECT_EQ(content(Path + ".backup"), before);
    EXPECT_NE(content(Path), before);
    // The next migration does not replace the backup.
    std::filesystem::remove(Path);
    WriteOldFile(Path, old);
    EXPECT_NE(RefusedFile().find("journal.db.backup"), std::string::npos);
    EXPECT_EQ(content(Path), before);
}

} // namespace
