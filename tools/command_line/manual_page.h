#pragma once

#include <string>

namespace CLI
{
class App;
}

// Returns the manual page of the program, in the language of man(7).
std::string ManualPage(const CLI::App& program);
