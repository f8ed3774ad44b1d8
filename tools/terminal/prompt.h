#pragma once

#include <optional>
#include <string>

// Asks a question on the terminal. Returns no answer where the input ends or Ctrl-C is pressed.
std::optional<std::string> Ask(const std::string& question);

// Asks a yes-or-no question on the terminal. Throws Refusal where standard input is not a terminal; its message names
// `flag`, which answers yes.
bool Confirm(const std::string& question, const std::string& flag);
