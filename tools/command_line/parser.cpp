#include "command_line/parser.h"

#include <sstream>
#include <utility>

#include <CLI/CLI.hpp>

CLI::App& AddGroup(CLI::App& program, const std::string& name, const std::string& purpose)
{
    CLI::App& group = *program.add_subcommand(name, purpose);
    group.require_subcommand(1);
    return group;
}

namespace
{

std::string ExamplesFooter(const std::string& examples)
{
    std::string footer = "\nExamples:\n";
    std::istringstream lines(examples);
    for (std::string line; std::getline(lines, line);)
        footer += "  plantjournal " + line + '\n';
    return footer + "\nEvery command accepts --file FILE and --json; see plantjournal --help";
}

} // namespace

CLI::App& AddCommand(CLI::App& group, const std::string& name, const std::string& purpose, const std::string& examples,
                     std::function<void()> act)
{
    CLI::App& command = *group.add_subcommand(name, purpose);
    command.footer(ExamplesFooter(examples));
    command.callback(std::move(act));
    return command;
}

void RunWithoutCommand(CLI::App& group, const std::string& examples, std::function<void()> act)
{
    group.require_subcommand(0, 1);
    group.footer(ExamplesFooter(examples));
    // Runs before any command does. The parser passes words that a command does not know on to its group.
    group.parse_complete_callback(
        [&group]
        {
            if (group.get_subcommands().empty())
                return;
            const std::string command = group.get_name() + ' ' + group.get_subcommands().front()->get_name();
            for (const CLI::Option* option : group.get_options())
                if (option->count() > 0)
                    RefuseUsage("unknown argument of `" + command +
                                "`: " + (option->get_positional() ? option->results().back() : option->get_name()));
        });
    group.callback(
        [&group, act = std::move(act)]
        {
            if (group.get_subcommands().empty())
                act();
        });
}

void AddArgument(CLI::App& command, const std::string& name, const std::string& help, std::string& value, Need need)
{
    command.add_option(name, value, help)->required(need == Need::Required)->type_name("");
}

void AddArgument(CLI::App& command, const std::string& name, const std::string& help, std::int64_t& value)
{
    command.add_option(name, value, help)
        ->required()
        ->type_name("")
        ->check(
            [](const std::string& text) {
                return CLI::TypeValidator<std::int64_t>("")(text).empty() ? ""
                                                                          : '"' + text + "\" is not a whole number";
            });
}

void AddArguments(CLI::App& command, const std::string& name, const std::string& help, std::vector<std::string>& values,
                  Need need)
{
    command.add_option(name, values, help)->required(need == Need::Required)->type_name("");
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

void RefuseUsage(const std::string& reason)
{
    throw CLI::ValidationError(reason);
}
