#include "command_line/parser.h"

#include "record/text.h"

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
    CLI::App& command = *group.add_subcommand(name, purpose);
    command.footer(examples);
    command.callback(std::move(act));
    return command;
}

void RunWithoutCommand(CLI::App& group, const std::string& examples, std::function<void()> act)
{
    group.require_subcommand(0, 1);
    group.footer(examples);
    // Runs before any command does. The parser passes words that a command does not know on to its group.
    group.parse_complete_callback(
        [&group]
        {
            if (group.get_subcommands().empty())
                return;
            for (const CLI::Option* option : group.get_options())
                if (option->count() > 0)
                    RefuseUsage(option->get_positional() ? "unexpected argument " + InQuotes(option->results().back())
                                                         : "unexpected option " + InQuotes(option->get_name()));
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
    CLI::Option& option = *command.add_option(name, value, help)->required(need == Need::Required)->type_name("");
    if (need == Need::Optional)
        option.check(PathObjection); // an empty text stands for an argument that was not given
}

std::string PathObjection(const std::string& text)
{
    return text.empty() ? "the text is empty; give a path" : "";
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

void OfferWords(CLI::App& command, const std::string& argument, const std::vector<std::string>& words)
{
    command.get_option(argument)->type_name(argument + '|' + Joined(words, "|"));
}

void AddFlag(CLI::App& command, const Flag& flag, std::optional<std::string>& value)
{
    CLI::Option& option = *command.add_option(flag.Names, value, flag.Help);
    option.type_name(flag.Type)->required(flag.Needed == Need::Required);
    option.default_str(flag.Default);
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
