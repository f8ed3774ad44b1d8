#pragma once

#include "command_line/completion.h"

#include <functional>
#include <string>
#include <vector>

// Runs the command that the arguments name; `addCommands` declares all of them. `stored` returns names for completion
// and for `COMMAND help`. Returns the exit status: 0, or 2 for a mistake in the command line. Passes on what a command
// throws.
int RunProgram(const std::vector<std::string>& arguments, const std::function<void(CLI::App&)>& addCommands,
               const StoredNames& stored);
