#pragma once

#include <cstddef>
#include <string>

// Returns the text on one line, safe for a terminal: line ends and tabs become blanks, what cannot be printed becomes
// U+FFFD.
std::string Printable(const std::string& text);

// How many columns of a terminal a text takes.
std::size_t Width(const std::string& text);

// Cuts a printable text to a width; a cut text ends with an ellipsis.
std::string CutToWidth(const std::string& text, std::size_t width);
