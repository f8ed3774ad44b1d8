#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

// What a program consists of, for help, the manual page, completion and messages.

using CommandList = std::vector<const CLI::App*>;
using OptionList = std::vector<const CLI::Option*>;

CommandList CommandsOf(const CLI::App& app);
// The command of this name in the group; null where there is none.
const CLI::App* CommandNamed(const CLI::App& group, const std::string& name);
// The commands under the headings of the help. A command that no heading names is under "More commands".
using Headings = std::vector<std::pair<std::string, CommandList>>;
Headings CommandsUnderHeadings(const CLI::App& program);
// All commands that are under a heading.
std::set<const CLI::App*> Listed(const Headings& headings);
// The innermost command that the parser has found in the command line.
const CLI::App& ParsedCommand(const CLI::App& program);
// Whether the command line must name one of the commands in it.
bool IsGroup(const CLI::App& app);
// The names of the command and of its groups, without the program's: "plant add". Empty for the program.
std::string PathOf(const CLI::App& app);
// How a command line begins that runs the command: "plantjournal plant add".
std::string CommandLineOf(const CLI::App& app);
// The examples of the command, one a line, without the program's name.
std::string ExamplesOf(const CLI::App& app);

OptionList OptionsOf(const CLI::App& app);
// The arguments, in their order.
OptionList ArgumentsOf(const CLI::App& app);
// The options with a name that begins with a dash, apart from --help. One that is also an argument is left out.
OptionList FlagsOf(const CLI::App& app);
// The long names of all options of the command and of the program, with their dashes.
std::vector<std::string> FlagNames(const CLI::App& app, const CLI::App& program);

// A text in capital letters; other letters than a to z stay.
std::string UpperCase(std::string text);
// How help and messages name an argument: "PLANT", or "FILE-PATH" for one that also has the flag --file-path.
std::string ArgumentName(const CLI::Option& argument);
// What stands for the value of a flag: its type, or the flag's own name where the type lists all values.
std::string ValueName(const CLI::Option& option);
// All values that the option accepts; empty where they cannot be listed.
std::vector<std::string> ValuesOf(const CLI::Option& option);
// The description, with all values that the option accepts, and its default.
std::string DescriptionOf(const CLI::Option& option);
