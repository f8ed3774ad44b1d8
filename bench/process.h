#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The files that a program reads as standard input and writes as standard output.
struct Streams
{
    std::string Input = "/dev/null";
    std::string Output = "/dev/null";
};

// Runs a program to its end: its path and its arguments. Throws std::runtime_error unless it succeeds.
void RunProgram(const std::vector<std::string>& words, const Streams& streams = {});

// Runs a program under callgrind, and returns how many instructions it took. `dump` is a file for callgrind.
std::int64_t CountInstructions(const std::vector<std::string>& words, const std::string& dump,
                               const Streams& streams = {});

// The same, but counts only what the program runs between CALLGRIND_START_INSTRUMENTATION and
// CALLGRIND_STOP_INSTRUMENTATION.
std::int64_t CountMarkedInstructions(const std::vector<std::string>& words, const std::string& dump);
