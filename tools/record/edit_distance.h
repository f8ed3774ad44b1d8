#pragma once

#include <cstddef>
#include <string>

// The least number of letters to insert, remove, replace or exchange with their neighbour that turns one text into the
// other. Letters may be of any alphabet.
std::size_t EditDistance(const std::string& left, const std::string& right);
