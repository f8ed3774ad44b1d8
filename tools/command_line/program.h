#pragma once

#include <functional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

// Runs the command that the arguments name; `addCommands` declares all of them. Returns the exit status: 0, or 2 for a
// mistake in the command line. Passes on what a command throws.
int RunProgram(const std::vector<std::string>& arguments, const std::function<void(CLI::App&)>& addCommands);
