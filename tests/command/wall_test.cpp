// The packages that the command uses are included in one place each: their headers take seconds to compile. So is the
// operating system: the other files are the same on each.

#include "support/page.h"
#include "testing/scratch_directory.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace support;

namespace
{

using Names = std::vector<std::string>;

// The files in the directory that have such a line.
Names FilesWithLine(const std::string& directory, const std::function<bool(const std::string&)>& isSuch)
{
    const std::filesystem::path root = std::filesystem::path(PLANTJOURNAL_SOURCE_DIR) / directory;
    Names names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
    {
        if (!entry.is_regular_file())
            continue;
        const std::vector<std::string> lines = Lines(FileBytes(entry.path().string()));
        if (std::any_of(lines.begin(), lines.end(), isSuch))
            names.push_back(entry.path().lexically_relative(root).generic_string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The files of tools/ that include the header.
Names FilesThatInclude(const std::string& header)
{
    return FilesWithLine("tools", [&](const std::string& line)
                         { return line.starts_with("#include") && line.find(header) != std::string::npos; });
}

// Whether the line includes a header that only some systems have, or is a condition for one of them.
bool IsForOneSystem(const std::string& line)
{
    static const std::regex header(
        "\\s*#\\s*include\\s*<(sys/|unistd|fcntl|termios|signal|csignal|dirent|poll|pwd|spawn|"
        "pthread|windows|winioctl|shellapi|io\\.h|direct\\.h).*");
    static const std::regex condition("\\s*#\\s*(if|ifdef|ifndef|elif)\\b.*(WIN32|WIN64|MINGW|MSC_VER|linux|APPLE|unix|"
                                      "POSIX|GNU_SOURCE|GLIBC).*");
    return std::regex_match(line, header) || std::regex_match(line, condition);
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

TEST(WallTest, OnlyTheFilesForOneSystemContainCodeForIt)
{
    EXPECT_EQ(FilesWithLine("tools", IsForOneSystem),
              (Names{"terminal/console_posix.cpp", "terminal/console_windows.cpp"}));
    EXPECT_EQ(FilesWithLine("file", IsForOneSystem),
              (Names{"plant_file.h", "system_posix.cpp", "system_windows.cpp", "system_windows_errors.cpp",
                     "system_windows_names.cpp"}));                          // the header marks the exports
    EXPECT_EQ(FilesWithLine("bench", IsForOneSystem), Names{"process.cpp"}); // measures other programs
    EXPECT_EQ(FilesWithLine("examples", IsForOneSystem), Names());
    EXPECT_EQ(FilesWithLine("testing", IsForOneSystem), Names());
    for (const std::string library : {"query", "report", "validation", "watch"})
        EXPECT_EQ(FilesWithLine(library, IsForOneSystem).size(), 1U) << library; // the header likewise
}

TEST(WallTest, TheHeaderThatIncludesCLI11StaysInItsDirectory)
{
    for (const std::string& name : FilesThatInclude("structure.h"))
        EXPECT_TRUE(name.starts_with("command_line/")) << name;
}

} // namespace
