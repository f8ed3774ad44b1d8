#pragma once

#include "support/program.h"

#include <string>

namespace support
{

// Surroundings in which plantjournal_on_a_day takes `day`, such as "2025-03-01", for today.
Surroundings OnDay(const std::string& day, Surroundings around);

} // namespace support
