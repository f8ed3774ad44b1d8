#pragma once

#include <string>
#include <vector>

namespace CLI
{
class App;
}

// Returns the completions of the last word. The other words are the command line before it.
std::vector<std::string> Completions(const CLI::App& program, std::vector<std::string> words);
