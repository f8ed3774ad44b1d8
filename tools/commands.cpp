#include "commands.h"

#include <sstream>
#include <utility>

#include <CLI/CLI.hpp>

CLI::App& AddGroup(CLI::App& program, const std::string& name, const std::string& purpose)
{
    CLI::App& group = *program.add_subcommand(name, purpose);
    group.require_subcommand(1);
    return group;
}

CLI::App& AddCommand(CLI::App& group, const std::string& name, const std::string& purpose, const std::string& examples,
                     std::function<void()> act)
{
    std::string footer = "\nExamples:\n";
    std::istringstream lines(examples);
    for (std::string line; std::getline(lines, line);)
        footer += "  plantjournal " + line + '\n';
    CLI::App& command = *group.add_subcommand(name, purpose);
    command.footer(footer + "\nEverywhere: --file FILE, --json; see plantjournal --help");
    command.callback(std::move(act));
    return command;
}

void AddArgument(CLI::App& command, const std::string& name, const std::string& help, std::string& value, Need need)
{
    command.add_option(name, value, help)->required(need == Need::Required)->type_name("");
}

void AddArgument(CLI::App& command, const std::string& name, const std::string& help, std::int64_t& value)
{
    command.add_option(name, value, help)->required()->type_name("");
}

void AddFlag(CLI::App& command, const Flag& flag, std::optional<std::string>& value)
{
    CLI::Option& option = *command.add_option(flag.Names, value, flag.Help);
    option.type_name(flag.Type)->required(flag.Needed == Need::Required);
    if (flag.Objection)
        option.check(flag.Objection);
}

void AddSwitch(CLI::App& command, const std::string& names, const std::string& help, bool& value)
{
    command.add_flag(names, value, help);
}

void AddPlantArgument(CLI::App& command, Arguments& arguments, Need need)
{
    AddArgument(command, "PLANT", "the plant: its UUID, the beginning of it, or its name; only one may fit",
                arguments.Plant, need);
}

void AddYes(CLI::App& command, Arguments& arguments)
{
    AddSwitch(command, "-y,--yes", "do not ask", arguments.Yes);
}

void ConfirmDeletion(const std::string& what, const Arguments& arguments)
{
    if (!arguments.Yes && !Confirm("Delete " + Printable(what) + "?", "--yes"))
        throw Refusal("nothing was deleted");
}

void RefuseUsage(const std::string& reason)
{
    throw CLI::ValidationError(reason);
}
