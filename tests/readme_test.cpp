#include "testing/scratch_directory.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

using namespace support;

namespace
{

TEST(ReadmeTest, TheFirstProgramIsTheExampleThatIsBuilt)
{
    const std::string readme = FileBytes(PLANTJOURNAL_SOURCE_DIR "/README.md");
    const std::string program = FileBytes(PLANTJOURNAL_SOURCE_DIR "/examples/first_program.cpp");
    EXPECT_NE(readme.find("```cpp\n" + program + "```\n"), std::string::npos);
}

TEST(ReadmeTest, TheFirstProgramStoresAFeeding)
{
    const ScratchDirectory scratch;
    const std::string run = "cd '" + scratch.File("") + "' && '" PLANTJOURNAL_FIRST_PROGRAM "' >out 2>&1";
    EXPECT_EQ(std::system(run.c_str()), 0);
    const std::string out = FileBytes(scratch.File("out"));
    EXPECT_EQ(out.substr(out.find(' ')), "  Feed  250 ml\n");
    EXPECT_TRUE(std::filesystem::exists(scratch.File("journal.db")));
}

TEST(ReadmeTest, ThePicturesAreThoseOfTheDemonstration)
{
    const ScratchDirectory scratch;
    const std::string run = "cd '" + scratch.File("") +
                            "' && '" PLANTJOURNAL_GREENHOUSE_SEASON "' season.db >out && '" +
                            PLANTJOURNAL_SEASON_PICTURES "' season.db .";
    ASSERT_EQ(std::system(run.c_str()), 0);
    const std::string readme = FileBytes(PLANTJOURNAL_SOURCE_DIR "/README.md");
    for (const std::string picture : {"water-and-feed.svg", "ec-and-ph.svg"})
    {
        EXPECT_NE(readme.find("](docs/season/" + picture + ')'), std::string::npos) << picture;
        EXPECT_EQ(FileBytes(scratch.File(picture)), FileBytes(PLANTJOURNAL_SOURCE_DIR "/docs/season/" + picture))
            << "run build/release/examples/season_pictures season.db docs/season";
    }
}

} // namespace
