#pragma once

#include "command_line/structure.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

// What the words of a command line stand for, also of one that is unfinished or wrong.
struct Reading
{
    const CLI::App* Command = nullptr;                // the innermost command that is named
    std::vector<std::string> Arguments;               // the words after it that are neither flags nor their values
    std::map<const CLI::Option*, std::string> Values; // of the flags
    const CLI::Option* Awaiting = nullptr;            // the flag whose value comes next
    bool OptionsEnded = false;                        // by the word --
    bool AsksForHelp = false;                         // by -h or --help
    bool HasOwnFlags = false;                         // flags other than those of every command
};

// Reads the words that follow the program's name.
Reading Read(const CLI::App& program, const std::vector<std::string>& words);

// The argument that comes after those that were read; null where the command takes no more.
const CLI::Option* NextArgument(const Reading& reading);

// The value of --file; a shell that completes has not yet expanded its ~.
std::optional<std::string> FileIn(const Reading& reading);
