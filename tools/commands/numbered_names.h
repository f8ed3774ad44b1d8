#pragma once

#include "command_line/parser.h"
#include "plant_database.h"

#include <optional>
#include <string>
#include <vector>

// The names of several new plants: Basil 1, Basil 2.

// Adds --count, the number of new plants. `count` must live as long as the command.
void AddCount(CLI::App& command, const std::string& help, std::optional<std::string>& count);

// Returns `count` names `stem NUMBER`, one where `count` is not set. The first number is the one after the highest that
// such a name of `plants` has, regardless of case.
std::vector<std::string> NumberedNames(const std::vector<Plant>& plants, const std::string& stem,
                                       const std::optional<std::string>& count);
