#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

// What is made from the commands themselves, and so cannot differ from them.

// The manual page, in the language of man(7).
std::string ManualPage(const CLI::App& program);

// What may stand in the place of the last of `words`, which may be begun; the others come before it.
std::vector<std::string> Completions(const CLI::App& program, std::vector<std::string> words);
