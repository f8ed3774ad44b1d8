#pragma once

#include "command_line/parser.h"

#include <cstdint>
#include <optional>
#include <string>

// What a command may be given besides the flags of fields. The parser refers to it: keep it with the command.
struct Arguments
{
    std::string Plant;
    std::string Name;
    std::int64_t ID = 0;
    std::optional<std::string> Newest; // of a list, how many
    bool Yes = false;
};

void AddPlantArgument(CLI::App& command, Arguments& arguments, Need need = Need::Required);
void AddYes(CLI::App& command, Arguments& arguments);

// Asks whether to delete, unless --yes was given. Throws Refusal where the answer is not yes.
void ConfirmDeletion(const std::string& what, const Arguments& arguments);
