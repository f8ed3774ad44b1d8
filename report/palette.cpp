#include "palette.h"

#include <cstddef>

namespace plant_report
{

namespace
{

// Colours that are compared with each other differ by 12 or more in CIELAB, also for people who do not see red, green
// or blue. Words within a bar of a stage can be read on it. The blue and the orange are near those of Okabe and Ito.
constexpr std::array<RoleColour, 27> RoleColours = {{
    {Role::Ink, "ink", "#1f2328", "#e8eaed"},
    {Role::Faint, "faint", "#59626c", "#a3adb8"},
    {Role::Line, "line", "#d5dae0", "#3b444d"},
    {Role::Ground, "ground", "#ffffff", "#15191d"},
    {Role::Water, "water", "#0072b2", "#56b4e9"},
    {Role::Feed, "feed", "#c75000", "#f0a04b"},
    {Role::EC, "ec", "#7b4ea3", "#c79be8"},
    {Role::PH, "ph", "#00795a", "#3fc79a"},
    {Role::Mark, "mark", "#3d5a80", "#9db9d9"},
    {Role::Mean, "mean", "#1f2328", "#e8eaed"},
    {Role::Seed, "seed", "#fee37f", "#7b6504"},
    {Role::Clone, "clone", "#e39b3d", "#5e2c00"},
    {Role::Veg, "veg", "#74e09f", "#317440"},
    {Role::Flower, "flower", "#bc77a6", "#96408f"},
    {Role::Dry, "dry", "#8dbeee", "#4842b2"},
    {Role::Cure, "cure", "#9d8c77", "#392920"},
    {Role::Harvested, "harvested", "#bdbeba", "#585c5e"},
    {Role::Archived, "archived", "#cee9fe", "#1f2e43"},
    {Role::Severity1, "severity1", "#f3d969", "#5b4d1d"},
    {Role::Severity2, "severity2", "#eda73c", "#8a651a"},
    {Role::Severity3, "severity3", "#df7326", "#c47c26"},
    {Role::Severity4, "severity4", "#bd3a22", "#f29a78"},
    {Role::Severity5, "severity5", "#741717", "#ffc9b8"},
    {Role::Count1, "count1", "#b4dfca", "#1d4436"},
    {Role::Count2, "count2", "#74bf9f", "#2f7259"},
    {Role::Count3, "count3", "#2f9170", "#43a984"},
    {Role::Count4, "count4", "#11654a", "#8fe3c0"},
}};

// The rules that give each class its colour.
std::string Rules(const char* RoleColour::*colour)
{
    std::string rules;
    for (const RoleColour& role : RoleColours)
        rules += std::string(".plant-chart .") + role.Class + "{--colour:" + role.*colour + "}\n";
    return rules;
}

} // namespace

const RoleColour& ColourOf(Role role)
{
    return RoleColours.at(static_cast<std::size_t>(role));
}

std::string PaletteStyle()
{
    return ".plant-chart :is(rect,circle,path,text){fill:var(--colour)}\n"
           ".plant-chart :is(line,polyline){stroke:var(--colour)}\n" +
           Rules(&RoleColour::Light) + "@media screen and (prefers-color-scheme:dark){\n" + Rules(&RoleColour::Dark) +
           "}\n";
}

} // namespace plant_report
