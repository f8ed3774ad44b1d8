// The style sheet of the page.
#pragma once

#include <string>

namespace plant_report
{

// The rules for the page around the charts.
std::string PageStyle();

} // namespace plant_report
