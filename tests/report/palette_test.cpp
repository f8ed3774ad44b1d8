// Tests of the colours: who sees them, and where.

#include "report/palette.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace plant_report;

namespace
{

constexpr int Roles = static_cast<int>(Role::Count4) + 1;
using Colour = std::array<double, 3>;
using Matrix = std::array<Colour, 3>;

// What people see who see all colours, or do not see red, green or blue: G. M. Machado, M. M. Oliveira and
// L. A. F. Fernandes, "A Physiologically-based Model for Simulation of Color Vision Deficiency", 2009, severity 1.
constexpr std::array<Matrix, 4> Sights = {{
    {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
    {{{0.152286, 1.052583, -0.204868}, {0.114503, 0.786281, 0.099216}, {-0.003882, -0.048116, 1.051998}}},
    {{{0.367322, 0.860646, -0.227968}, {0.280085, 0.672501, 0.047413}, {-0.011820, 0.042940, 0.968881}}},
    {{{1.255528, -0.076749, -0.178779}, {-0.078411, 0.930809, 0.147602}, {0.004733, 0.691367, 0.303900}}},
}};

Colour Linear(const std::string& hex)
{
    Colour colour{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        const double value = std::stoi(hex.substr(1 + 2 * i, 2), nullptr, 16) / 255.0;
        colour[i] = value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    }
    return colour;
}

Colour SeenBy(const Matrix& sight, const Colour& colour)
{
    Colour seen{};
    for (std::size_t i = 0; i < 3; ++i)
        seen[i] = std::clamp(sight[i][0] * colour[0] + sight[i][1] * colour[1] + sight[i][2] * colour[2], 0.0, 1.0);
    return seen;
}

// The CIELAB values of a linear colour, for daylight.
Colour Lab(const Colour& c)
{
    const auto f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116; };
    const double x = f((0.4124 * c[0] + 0.3576 * c[1] + 0.1805 * c[2]) / 0.9505);
    const double y = f(0.2126 * c[0] + 0.7152 * c[1] + 0.0722 * c[2]);
    const double z = f((0.0193 * c[0] + 0.1192 * c[1] + 0.9505 * c[2]) / 1.089);
    return {116 * y - 16, 500 * (x - y), 200 * (y - z)};
}

// The least difference that anybody sees between the colours.
double Difference(const std::string& a, const std::string& b)
{
    double least = 1000;
    for (const Matrix& sight : Sights)
    {
        const Colour x = Lab(SeenBy(sight, Linear(a)));
        const Colour y = Lab(SeenBy(sight, Linear(b)));
        least = std::min(least, std::hypot(x[0] - y[0], x[1] - y[1], x[2] - y[2]));
    }
    return least;
}

// The contrast of WCAG 2: 4.5 is enough for words, 3 for marks.
double Contrast(const std::string& a, const std::string& b)
{
    const auto luminance = [](const Colour& c) { return 0.2126 * c[0] + 0.7152 * c[1] + 0.0722 * c[2]; };
    const double x = luminance(Linear(a)) + 0.05;
    const double y = luminance(Linear(b)) + 0.05;
    return std::max(x, y) / std::min(x, y);
}

// The colours of a role, light and dark.
std::array<std::string, 2> Both(Role role)
{
    return {ColourOf(role).Light, ColourOf(role).Dark};
}

std::vector<Role> From(Role first, Role last)
{
    std::vector<Role> roles;
    for (int i = static_cast<int>(first); i <= static_cast<int>(last); ++i)
        roles.push_back(static_cast<Role>(i));
    return roles;
}

TEST(PaletteTest, EachRoleHasAClassOfItsOwn)
{
    std::set<std::string> classes;
    for (int i = 0; i < Roles; ++i)
    {
        const RoleColour& colour = ColourOf(static_cast<Role>(i));
        EXPECT_EQ(colour.Which, static_cast<Role>(i));
        EXPECT_TRUE(classes.insert(colour.Class).second) << colour.Class;
    }
}

TEST(PaletteTest, ComparedColoursDifferForTheColourBlind)
{
    for (const std::vector<Role>& group :
         {From(Role::Water, Role::Feed), From(Role::EC, Role::PH), From(Role::Seed, Role::Archived),
          From(Role::Severity1, Role::Severity5), From(Role::Count1, Role::Count4)})
        for (std::size_t i = 0; i < group.size(); ++i)
            for (std::size_t j = 0; j < i; ++j)
                for (const std::size_t theme : {0U, 1U})
                    EXPECT_GE(Difference(Both(group[i])[theme], Both(group[j])[theme]), 12)
                        << ColourOf(group[i]).Class << " and " << ColourOf(group[j]).Class << " of theme " << theme;
}

TEST(PaletteTest, WordsCanBeReadOnTheGroundAndOnBarsOfStages)
{
    for (const std::size_t theme : {0U, 1U})
    {
        EXPECT_GE(Contrast(Both(Role::Ink)[theme], Both(Role::Ground)[theme]), 7);
        EXPECT_GE(Contrast(Both(Role::Faint)[theme], Both(Role::Ground)[theme]), 4.5);
        for (const Role stage : From(Role::Seed, Role::Archived))
            EXPECT_GE(Contrast(Both(Role::Ink)[theme], Both(stage)[theme]), 4.5) << ColourOf(stage).Class;
    }
}

TEST(PaletteTest, MarksCanBeSeenOnTheGround)
{
    for (const Role role : From(Role::Water, Role::Mean))
        for (const std::size_t theme : {0U, 1U})
            EXPECT_GE(Contrast(Both(role)[theme], Both(Role::Ground)[theme]), 3) << ColourOf(role).Class;
}

TEST(PaletteTest, MoreIsAlwaysFurtherFromTheGround)
{
    for (const std::vector<Role>& group : {From(Role::Severity1, Role::Severity5), From(Role::Count1, Role::Count4)})
        for (std::size_t i = 1; i < group.size(); ++i)
            for (const std::size_t theme : {0U, 1U})
                EXPECT_GT(Contrast(Both(group[i])[theme], Both(Role::Ground)[theme]),
                          Contrast(Both(group[i - 1])[theme], Both(Role::Ground)[theme]))
                    << ColourOf(group[i]).Class << " of theme " << theme;
}

TEST(PaletteTest, TheStyleColoursEachClassOnceInLightAndOnceInDark)
{
    const std::string style = PaletteStyle();
    const std::size_t dark = style.find("@media screen and (prefers-color-scheme:dark){");
    ASSERT_NE(dark, std::string::npos);
    for (int i = 0; i < Roles; ++i)
    {
        const RoleColour& colour = ColourOf(static_cast<Role>(i));
        const std::string selector = std::string(".plant-chart .") + colour.Class + "{--colour:";
        const std::size_t first = style.find(selector + colour.Light + "}");
        const std::size_t second = style.find(selector + colour.Dark + "}", dark);
        EXPECT_LT(first, dark) << colour.Class;
        EXPECT_NE(second, std::string::npos) << colour.Class;
    }
    EXPECT_EQ(std::count(style.begin(), style.end(), '{'), std::count(style.begin(), style.end(), '}'));
}

TEST(PaletteTest, TheStyleFillsShapesAndStrokesLines)
{
    const std::string style = PaletteStyle();
    EXPECT_NE(style.find(".plant-chart :is(rect,circle,path,text){fill:var(--colour)}"), std::string::npos);
    EXPECT_NE(style.find(".plant-chart :is(line,polyline){stroke:var(--colour)}"), std::string::npos);
}

} // namespace
