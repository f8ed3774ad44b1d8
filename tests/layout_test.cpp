// Checks the limits for the length of source files. clang-tidy checks the length of functions.

#include "testing/scratch_directory.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>

#include <gtest/gtest.h>

using namespace support;

namespace
{

TEST(LayoutTest, NoFileOutsideTheLibraryIsTooLong)
{
    const std::set<std::string> extensions = {".cmake", ".cpp", ".h", ".js", ".py", ".sh", ".txt"};
    int files = 0;
    for (const std::string directory : {"file", "query", "report", "validation", "watch", "tools", "examples",
                                        "testing", "tests", "bench", "docs", "cmake"})
    {
        const std::filesystem::path root = PLANTJOURNAL_SOURCE_DIR "/" + directory;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
        {
            const std::string path = entry.path().generic_string();
            if (!entry.is_regular_file() || !extensions.contains(entry.path().extension().string()) ||
                path.find("/data/") != std::string::npos)
                continue;
            const std::string text = FileBytes(path);
            const auto lines = std::count(text.begin(), text.end(), '\n');
            EXPECT_LE(lines, directory == "tests" ? 600 : 400) << path << ": split it by content";
            ++files;
        }
    }
    EXPECT_GT(files, 100);
}

} // namespace
