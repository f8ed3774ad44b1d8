#pragma once

#include "command_line/parser.h"

#include <cstdint>
#include <string>

// The arguments of a command, apart from the flags of fields. Must live as long as the command, since the parser keeps
// references to them.
struct Arguments
{
    std::string Plant;
    std::string Name;
    std::int64_t ID = 0;
    std::optional<std::string> Stage; // of the plant after the deletion of its harvest record
    bool Unweighed = false;
    bool Yes = false;
};

// Adds --date, which cannot be empty. `date` must live as long as the command.
void AddDate(CLI::App& command, const std::string& what, std::optional<std::string>& date);
// Adds another flag for a date, likewise.
void AddDateFlag(CLI::App& command, const std::string& names, const std::string& help,
                 std::optional<std::string>& date);
// The date that was given, or today.
std::string DateOrToday(const std::optional<std::string>& date);

// Adds --stage, which accepts every stage. `stage` must live as long as the command.
void AddStageFlag(CLI::App& command, const std::string& help, std::optional<std::string>& stage);
// Adds --newest. `newest` must live as long as the command.
void AddNewest(CLI::App& command, const std::string& help, std::optional<std::string>& newest);
// The number that was given; a number that is larger than any list without one.
std::int64_t NumberFrom(const std::optional<std::string>& newest);

void AddPlantArgument(CLI::App& command, Arguments& arguments, Need need = Need::Required);
