// Tests of the style sheet of the page: its rules for screens, telephones and paper.

#include "plant_report.h"
#include "report/page_style.h"
#include "report/palette.h"

#include <map>
#include <string>

#include <gtest/gtest.h>

using namespace plant_report;

namespace
{

// The declarations of each selector, by the medium; the rules of every medium are those of "".
using Rules = std::map<std::string, std::map<std::string, std::string>>;

Rules RulesOf(const std::string& style)
{
    Rules rules;
    std::string medium;
    for (std::size_t begin = 0; begin < style.size();)
    {
        const std::size_t end = style.find_first_of("{}", begin);
        if (end == std::string::npos)
            break;
        std::string words = style.substr(begin, end - begin);
        while (!words.empty() && words.front() == '\n')
            words.erase(0, 1);
        begin = end + 1;
        if (style[end] == '}')
            medium.clear(); // the end of a medium: that of a rule is skipped below
        else if (words.rfind("@media", 0) == 0)
            medium = words;
        else
        {
            const std::size_t close = style.find('}', begin);
            rules[medium][words] += style.substr(begin, close - begin) + ";";
            begin = close + 1;
        }
    }
    return rules;
}

class PageStyleTest : public testing::Test
{
  protected:
    void ExpectRule(const std::string& medium, const std::string& selector, const std::string& declaration)
    {
        EXPECT_NE((";" + Style[medium][selector]).find(";" + declaration + ";"), std::string::npos)
            << medium << " " << selector << "{" << Style[medium][selector] << "} without " << declaration;
    }

    Rules Style = RulesOf(PageStyle());
};

constexpr const char* Dark = "@media screen and (prefers-color-scheme:dark)"; // paper is light
constexpr const char* Telephone = "@media screen and (max-width:46rem)";
constexpr const char* Paper = "@media print";

TEST_F(PageStyleTest, ThePageHasTheColoursOfThePalette)
{
    ExpectRule("", ":root", "color-scheme:light dark");
    for (const auto& [name, role] : {std::pair("--ink:", Role::Ink),
                                     {"--faint:", Role::Faint},
                                     {"--line:", Role::Line},
                                     {"--ground:", Role::Ground}})
    {
        ExpectRule("", ":root", name + std::string(ColourOf(role).Light));
        ExpectRule(Dark, ":root", name + std::string(ColourOf(role).Dark));
    }
}

TEST_F(PageStyleTest, OnlyTheseMediaHaveRulesOfTheirOwn)
{
    EXPECT_EQ(Style.size(), 4U);
    for (const char* medium : {"", Dark, Telephone, Paper})
        EXPECT_TRUE(Style.contains(medium)) << medium;
}

TEST_F(PageStyleTest, OneOfTheTwoPicturesIsShown)
{
    ExpectRule("", ".narrow", "display:none");
    ExpectRule(Telephone, ".narrow", "display:block");
    ExpectRule(Telephone, ".wide", "display:none");
    EXPECT_FALSE(Style[""].contains(".wide"));
}

TEST_F(PageStyleTest, NothingIsWiderThanThePage)
{
    ExpectRule("", "body", "overflow-wrap:anywhere");
    ExpectRule("", ".table", "overflow:auto");
    ExpectRule("", ".table", "max-height:24rem");
    ExpectRule("", ".plant-chart", "width:100%");
    ExpectRule("", ".plant-chart", "height:auto");
    ExpectRule("", ".photos img", "width:100%");
}

TEST_F(PageStyleTest, ATextKeepsItsDirectionAndItsLines)
{
    ExpectRule("", "h1,h2,p,li,td,dd,figcaption", "unicode-bidi:plaintext");
    ExpectRule("", "dd", "white-space:pre-line");
    ExpectRule("", ".history p", "white-space:pre-line");
}

TEST_F(PageStyleTest, TheFocusIsSeen)
{
    ExpectRule("", ":focus-visible", "outline:2px solid var(--ink)");
}

TEST_F(PageStyleTest, NumbersStandUnderEachOther)
{
    ExpectRule("", ".number", "text-align:right");
    ExpectRule("", ".number,.date", "font-variant-numeric:tabular-nums");
}

TEST_F(PageStyleTest, PaperHoldsAllFiguresAndCutsNone)
{
    ExpectRule(Paper, "@page", "margin:15mm");
    ExpectRule(Paper, "nav", "display:none");
    ExpectRule(Paper, ".picture,tr,.history li,.photos li", "break-inside:avoid");
    ExpectRule(Paper, "h2,h3,summary", "break-after:avoid");
    ExpectRule(Paper, "details::details-content", "display:block");
    ExpectRule(Paper, "details::details-content", "content-visibility:visible");
    ExpectRule(Paper, ".table", "overflow:visible");
    ExpectRule(Paper, ".table", "max-height:none");
    ExpectRule(Paper, ".two-columns", "columns:2");
    ExpectRule(Paper, ".three-columns", "columns:3");
    ExpectRule(Paper, "thead", "display:table-header-group");
    ExpectRule(Paper, "th,th.number,th.date", "position:static");
}

} // namespace
