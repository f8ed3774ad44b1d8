// The packages that the command uses are included in one place each: their headers take seconds to compile.

#include "support/page.h"
#include "testing/scratch_directory.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace support;

namespace
{

using Names = std::vector<std::string>;

// The files of tools/ that include the header.
Names FilesThatInclude(const std::string& header)
{
    const std::filesystem::path tools = PLANTJOURNAL_SOURCE_DIR "/tools";
    Names names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(tools))
    {
        if (!entry.is_regular_file())
            continue;
        const std::vector<std::string> lines = Lines(FileBytes(entry.path()));
        if (std::any_of(lines.begin(), lines.end(),
                        [&](const std::string& line)
                        { return line.starts_with("#include") && line.find(header) != std::string::npos; }))
            names.push_back(entry.path().lexically_relative(tools).string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(WallTest, OnlyTheCommandLineIncludesCLI11)
{
    const Names names = FilesThatInclude("CLI/");
    EXPECT_FALSE(names.empty());
    for (const std::string& name : names)
        EXPECT_TRUE(name.starts_with("command_line/")) << name;
}

TEST(WallTest, OnlyTheJSONFilesIncludeTheJSONLibrary)
{
    EXPECT_EQ(FilesThatInclude("utf8proc"), (Names{"record/letters.cpp"}));
    EXPECT_EQ(FilesThatInclude("nlohmann/"), (Names{"record/json.cpp", "transfer/json_source.cpp"}));
}

TEST(WallTest, OnlyOneFileIncludesLibexif)
{
    EXPECT_EQ(FilesThatInclude("libexif/"), Names{"record/photo_file.cpp"});
}

TEST(WallTest, OnlyOneFileIncludesTheLibrariesForPictures)
{
    EXPECT_EQ(FilesThatInclude("stb"), Names{"record/picture.cpp"});
}

TEST(WallTest, OnlyTwoFilesIncludeSQLite)
{
    EXPECT_EQ(FilesThatInclude("sqlite3.h"), (Names{"journal/change_set.cpp", "journal/sql.cpp"}));
}

TEST(WallTest, TheHeaderThatIncludesCLI11StaysInItsDirectory)
{
    for (const std::string& name : FilesThatInclude("structure.h"))
        EXPECT_TRUE(name.starts_with("command_line/")) << name;
}

} // namespace
