#pragma once

// The bars of the benchmarks: the most that a figure may be. The benchmarks compare with them what they measure, and a
// test compares the figures in docs/performance.md with them.
namespace bars
{

struct Bar
{
    const char* Operation;
    double Most;
};

// Instructions of the library for each instruction of the baseline, which is bare SQLite.
inline constexpr Bar InstructionRatios[] = {
    {"create a plant, 1,000", 1.01},      {"create a clone, 1,000", 0.96},       {"list events, 10", 0.99},
    {"list events, 1,000", 0.955},        {"list plants, 1,000", 0.985},         {"get a plant, 1,000", 0.985},
    {"create a care entry, 1,000", 0.98}, {"update a care entry, 1,000", 0.98},  {"delete a care entry, 1,000", 1.005},
    {"save a new harvest, 1,000", 0.99},  {"save a harvest again, 1,000", 0.99}, {"strain summary, 1,000", 1.002},
};

// Instructions of the library.
inline constexpr Bar Instructions[] = {
    {"create a UUID", 1150},
};

// Allocations of the library for each record that a list returns, where the records' texts are short.
inline constexpr Bar AllocationsPerRecord[] = {
    {"list events, 1,000", 2},
    {"list plants, 1,000", 3.5},
};

// Instructions of the command on a journal with 1,000 plants and 200,000 care entries, for each instruction on one with
// the same plants and no care entry.
inline constexpr Bar CommandGrowth[] = {
    {"strain list", 1.2},
    {"feed", 1.2},
    {"plant show", 1.2},
};

// Time of the command, and its instructions, for those of SQLite's shell when it imports the same file.
inline constexpr Bar ImportTimes[] = {
    {"import 200,000 care entries, time", 3},
};
inline constexpr Bar ImportInstructions[] = {
    {"import 20,000 care entries, instructions", 3},
};

// Instructions of a write with a watcher, for each instruction of the write without.
inline constexpr Bar WatchRatios[] = {
    {"create a care entry, watching families", 1.01},
    {"create a care entry, watching plants", 1.04},
};

// Instructions of an answer of query/ that reads its records with one statement, after the plants, for each instruction
// of the baseline.
inline constexpr Bar AnswerRatios[] = {
    {"totals by month, 20,000 care entries", 0.9},
    {"totals by product, 20,000 care entries", 1.02},
    {"activity, 1,000 photos", 0.95},
};

// Instructions of a program that prints an answer of query/, for each instruction of SQLite's shell when it prints the
// same rows from one statement, on a journal with 1,000 plants and 200,000 care entries.
inline constexpr Bar ShellRatios[] = {
    {"activity of a week", 2.2},
    {"status of 20 plants", 1},
    {"totals by month", 0.6},
};

} // namespace bars
