#pragma once

#include <string>
#include <vector>

namespace CLI
{
class App;
}

// Returns what can stand in place of the last of `words`, which may be incomplete; the other words come before it.
std::vector<std::string> Completions(const CLI::App& program, std::vector<std::string> words);
