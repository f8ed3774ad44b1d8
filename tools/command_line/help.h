#pragma once

#include <cstddef>
#include <string>

namespace CLI
{
class App;
}

// Returns the help of the program, of a group or of a command, in lines of at most `width` columns where words allow.
std::string HelpText(const CLI::App& app, std::size_t width);

// Returns the line that shows how to write the command: "usage: plantjournal plant show PLANT [OPTION...]".
std::string UsageLine(const CLI::App& app);
