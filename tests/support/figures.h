#pragma once

#include <cstdint>
#include <string>

namespace support
{

// Adds to a named count, which the program prints with the seed when its tests have ended. Returns the sum. Not for
// several threads.
std::uint64_t AddToFigure(const std::string& figure, std::uint64_t number = 1);

} // namespace support
