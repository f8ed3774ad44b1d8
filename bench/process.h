#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Runs a program to its end: its path and its arguments. It reads the file `input`, and its output is dropped. Throws
// std::runtime_error unless it succeeds.
void RunProgram(const std::vector<std::string>& words, const std::string& input = "/dev/null");

// Runs a program under callgrind, and returns how many instructions it took. `dump` is a file for callgrind.
std::int64_t CountInstructions(const std::vector<std::string>& words, const std::string& dump,
                               const std::string& input = "/dev/null");
