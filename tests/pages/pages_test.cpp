// Tests that apply to every page.

#include "support/page.h"
#include "testing/scratch_directory.h"

#include <filesystem>
#include <regex>

#include <gtest/gtest.h>

using namespace support;

namespace
{

// Returns all pages, as paths relative to the project.
std::vector<std::string> Pages()
{
    std::vector<std::string> pages;
    for (const std::string directory : {"", "docs/", ".github/ISSUE_TEMPLATE/"})
        for (const auto& entry : std::filesystem::directory_iterator(PLANTJOURNAL_SOURCE_DIR "/" + directory))
            if (entry.path().extension() == ".md")
                pages.push_back(directory + entry.path().filename().string());
    return pages;
}

// A lambda looks like a link.
std::string WithoutCode(const std::string& text)
{
    std::string kept;
    bool inCode = false;
    for (const std::string& line : Lines(text))
    {
        inCode = inCode != line.starts_with("```");
        if (!inCode)
            kept += line + '\n';
    }
    return kept;
}

TEST(PagesTest, EveryLinkInTheProjectRefersToAFile)
{
    const std::regex link(R"(\]\(([^)#:]+)\))");
    int links = 0;
    for (const std::string& page : Pages())
    {
        const std::string text = WithoutCode(PageText(page));
        const auto directory = std::filesystem::path(PLANTJOURNAL_SOURCE_DIR "/" + page).parent_path();
        for (std::sregex_iterator match(text.begin(), text.end(), link), end; match != end; ++match, ++links)
            EXPECT_TRUE(std::filesystem::exists(directory / (*match)[1].str())) << page << ": " << (*match)[1];
    }
    EXPECT_GT(links, 30);
}

TEST(PagesTest, EveryPathInContributingExists)
{
    const std::string text = PageText("CONTRIBUTING.md");
    const std::regex path(
        "`((src|file|query|report|validation|watch|tools|examples|testing|tests|bench|docs|cmake)/[a-z_/.]*)`");
    int paths = 0;
    for (std::sregex_iterator match(text.begin(), text.end(), path), end; match != end; ++match, ++paths)
        EXPECT_TRUE(std::filesystem::exists(PLANTJOURNAL_SOURCE_DIR "/" + (*match)[1].str())) << (*match)[1];
    EXPECT_GT(paths, 30);
}

TEST(PagesTest, TheReadmeLinksToEveryPage)
{
    const std::string first = PageText("README.md");
    for (const std::string& page : Pages())
    {
        if (page != "README.md" && !page.starts_with("."))
        {
            EXPECT_NE(first.find("](" + page + ")"), std::string::npos) << page;
        }
    }
}

} // namespace
