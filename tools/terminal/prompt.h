#pragma once

#include <string>

// Asks a yes-or-no question on the terminal. Throws Refusal where standard input is not a terminal; its message names
// `flag`, which answers yes.
bool Confirm(const std::string& question, const std::string& flag);
