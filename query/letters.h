// Upper and lower case.
#pragma once

#include <string>

namespace plant_query
{

// The text with lower case letters in place of the upper case ASCII letters.
std::string WithoutCase(std::string text);

} // namespace plant_query
