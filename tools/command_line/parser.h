#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

// How commands, arguments and flags are declared. Only this directory includes the parser's own headers.

// Adds a group of commands. The command line must name one of them.
CLI::App& AddGroup(CLI::App& program, const std::string& name, const std::string& purpose);

// Adds a command that runs `act` once the whole command line has been read. The examples, one a line, leave out the
// program's name.
CLI::App& AddCommand(CLI::App& group, const std::string& name, const std::string& purpose, const std::string& examples,
                     std::function<void()> act);

// Lets a group run `act` where the command line names none of its commands. The arguments and flags for that are added
// to the group itself; with one of its commands they are an error.
void RunWithoutCommand(CLI::App& group, const std::string& examples, std::function<void()> act);

enum class Need
{
    Required,
    Optional
};

// Adds an argument without a flag. `value` must live as long as the command.
void AddArgument(CLI::App& command, const std::string& name, const std::string& help, std::string& value,
                 Need need = Need::Required);
void AddArgument(CLI::App& command, const std::string& name, const std::string& help, std::int64_t& value);
// The objection to an empty path.
std::string PathObjection(const std::string& text);
// Adds an argument that stands for any number of words.
void AddArguments(CLI::App& command, const std::string& name, const std::string& help, std::vector<std::string>& values,
                  Need need = Need::Required);

// Makes completion offer these words, too, for an argument of the command.
void OfferWords(CLI::App& command, const std::string& argument, const std::vector<std::string>& words);

// A flag with a value. `Objection` returns what is wrong with a text, or an empty text.
struct Flag
{
    std::string Names;
    std::string Help;
    std::string Type;
    Need Needed = Need::Optional;
    std::function<std::string(const std::string&)> Objection = {};
    std::string Default = {}; // described in the help
};
// `value` must live as long as the command.
void AddFlag(CLI::App& command, const Flag& flag, std::optional<std::string>& value);
// Adds a flag without a value. `value` must live as long as the command.
void AddSwitch(CLI::App& command, const std::string& names, const std::string& help, bool& value);

// Throws an error in the command line that only the command itself can detect; the exit status is 2.
[[noreturn]] void RefuseUsage(const std::string& reason);
