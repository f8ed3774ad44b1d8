#pragma once

#include "session.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace CLI
{
class App;
}

// Each adds its commands to the program; they act once the whole command line has been read.
void AddPlantCommands(CLI::App& program, Session& session);
void AddStrainCommands(CLI::App& program, Session& session);
void AddRecordCommands(CLI::App& program, Session& session);
void AddFileCommands(CLI::App& program, Session& session);
void AddExportCommand(CLI::App& program, Session& session);
void AddImportCommand(CLI::App& program, Session& session);

// How a command is made. Few files see the package behind it: its headers take longer to read than all of ours.

// A group of commands, of which one has to follow.
CLI::App& AddGroup(CLI::App& program, const std::string& name, const std::string& purpose);

// A command that does `act`; the examples, one a line, begin after the program's name.
CLI::App& AddCommand(CLI::App& group, const std::string& name, const std::string& purpose, const std::string& examples,
                     std::function<void()> act);

enum class Need
{
    Required,
    Optional
};

// What stands without a flag.
void AddArgument(CLI::App& command, const std::string& name, const std::string& help, std::string& value,
                 Need need = Need::Required);
void AddArgument(CLI::App& command, const std::string& name, const std::string& help, std::int64_t& value);

// A flag with a value. What is wrong with a text, `Objection` tells; nothing, where it is empty.
struct Flag
{
    std::string Names;
    std::string Help;
    std::string Type;
    Need Needed = Need::Optional;
    std::function<std::string(const std::string&)> Objection = {};
};
void AddFlag(CLI::App& command, const Flag& flag, std::optional<std::string>& value);
// One without.
void AddSwitch(CLI::App& command, const std::string& names, const std::string& help, bool& value);

// What a command may be given besides the flags of fields. The options refer to it: keep it with the command.
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
// Asks unless told --yes; throws where the answer is not yes.
void ConfirmDeletion(const std::string& what, const Arguments& arguments);

// A mistake in the command line that only the command itself can see.
[[noreturn]] void RefuseUsage(const std::string& reason);
