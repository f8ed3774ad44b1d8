#pragma once

#include <optional>
#include <string>
#include <vector>

// Returns the names that the journal holds for a type of value: PLANT, STRAIN, TENT or STRAIN-OR-PLANT. `file` is the
// value of --file. Empty for other types, and where the journal cannot be read at once. For completion: neither
// creates, migrates nor locks a file, does not wait and reports no error.
std::vector<std::string> StoredNamesOf(const std::string& type, const std::optional<std::string>& file);
