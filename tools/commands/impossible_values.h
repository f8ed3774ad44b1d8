#pragma once

#include <string>

// Prints a notice for each impossible value in the journal at `path`, up to a limit. A journal that was salvaged can
// have such values: where a byte of the damaged file was changed, the changed value was stored.
void PrintImpossibleValues(const std::string& path);
