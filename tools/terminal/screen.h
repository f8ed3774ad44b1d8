#pragma once

#include <cstddef>

// The terminal that standard output may be.

bool OutputIsTerminal();

// How many columns it has; 80 where that is not known.
std::size_t TerminalWidth();
