// The colours of the roles, as data: the attributes of marks and the style sheet of the page are made of it.
#pragma once

#include "svg.h"

#include <array>

namespace plant_report
{

struct RoleColour
{
    Role Which;
    const char* Class; // the class of the style sheet
    const char* Light;
    const char* Dark;
};

// One for each role, in the order of `Role`. The colours of marks can be told apart by the colour-blind.
const RoleColour& ColourOf(Role role);

// The rules that colour the classes within a chart: light on paper, light or dark on a screen.
std::string PaletteStyle();

} // namespace plant_report
