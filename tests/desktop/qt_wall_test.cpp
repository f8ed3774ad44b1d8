// Qt stays in the window and its tests. The worker of the window must not need it.

#include "testing/scratch_directory.h"

#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

using namespace support;

namespace
{

// The source files that include a header of Qt, except those of the libraries that the benchmarks compare.
std::set<std::string> FilesThatIncludeQt()
{
    static const std::regex include("(^|\n)#include [<\"]Q[A-Zt]");
    const std::filesystem::path project = PLANTJOURNAL_SOURCE_DIR;
    std::set<std::string> names;
    for (const auto& directory : std::filesystem::directory_iterator(project))
    {
        const std::string name = directory.path().filename().string();
        if (!directory.is_directory() || name.starts_with('.') || name == "build" || name == "bench")
            continue;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(directory))
            if (entry.is_regular_file() && (entry.path().extension() == ".h" || entry.path().extension() == ".cpp") &&
                std::regex_search(FileBytes(entry.path().string()), include))
                names.insert(entry.path().lexically_relative(project).generic_string());
    }
    return names;
}

TEST(QtWallTest, OnlyTheWindowAndItsTestsIncludeQt)
{
    const std::set<std::string> names = FilesThatIncludeQt();
    EXPECT_TRUE(names.contains("examples/desktop/main_window.cpp"));
    for (const std::string& name : names)
        EXPECT_TRUE(name.starts_with("examples/desktop/") || name.starts_with("tests/desktop/")) << name;
}

TEST(QtWallTest, TheWorkerIncludesNoQt)
{
    const std::set<std::string> names = FilesThatIncludeQt();
    for (const char* file : {"journal", "worker"})
        for (const char* extension : {".h", ".cpp"})
            EXPECT_FALSE(names.contains(std::string("examples/desktop/") + file + extension)) << file << extension;
}

} // namespace
