#include "command_line/structure.h"

#include "command_line/help_texts.h"
#include "record/text.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <sstream>

namespace
{

template <typename Wanted> OptionList Filtered(const CLI::App& app, const Wanted& wanted)
{
    OptionList options = OptionsOf(app);
    options.erase(
        std::remove_if(options.begin(), options.end(), [&](const CLI::Option* option) { return !wanted(*option); }),
        options.end());
    return options;
}

} // namespace

CommandList CommandsOf(const CLI::App& app)
{
    return app.get_subcommands([](const CLI::App*) { return true; });
}

const CLI::App* CommandNamed(const CLI::App& group, const std::string& name)
{
    const CommandList commands = CommandsOf(group);
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const CLI::App* command) { return command->get_name() == name; });
    return found == commands.end() ? nullptr : *found;
}

std::set<const CLI::App*> Listed(const Headings& headings)
{
    std::set<const CLI::App*> listed;
    for (const auto& [title, commands] : headings)
        listed.insert(commands.begin(), commands.end());
    return listed;
}

Headings CommandsUnderHeadings(const CLI::App& program)
{
    Headings headings;
    for (const HelpHeading& heading : HelpHeadings())
    {
        CommandList& commands = headings.emplace_back(heading.Title, CommandList{}).second;
        for (const std::string& path : heading.Commands)
        {
            const CLI::App* command = &program;
            std::istringstream words(path);
            for (std::string word; command != nullptr && words >> word;)
                command = CommandNamed(*command, word);
            if (command != nullptr)
                commands.push_back(command);
        }
    }
    const std::set<const CLI::App*> listed = Listed(headings);
    CommandList& others = headings.emplace_back("More commands", CommandList{}).second;
    for (const CLI::App* command : CommandsOf(program))
        if (!listed.contains(command))
            others.push_back(command);
    std::erase_if(headings, [](const auto& heading) { return heading.second.empty(); });
    return headings;
}

const CLI::App& ParsedCommand(const CLI::App& program)
{
    const CLI::App* app = &program;
    while (!app->get_subcommands().empty())
        app = app->get_subcommands().front();
    return *app;
}

bool IsGroup(const CLI::App& app)
{
    return app.get_require_subcommand_min() > 0;
}

std::string PathOf(const CLI::App& app)
{
    std::string path;
    for (const CLI::App* part = &app; part->get_parent() != nullptr; part = part->get_parent())
        path = Joined({part->get_name(), path}, " ");
    return path;
}

std::string CommandLineOf(const CLI::App& app)
{
    return Joined({"plantjournal", PathOf(app)}, " ");
}

std::string ExamplesOf(const CLI::App& app)
{
    if (!IsGroup(app) || app.get_parent() == nullptr)
        return app.get_footer();
    std::string examples; // of a group: the first of each command
    for (const CLI::App* command : CommandsOf(app))
        examples += command->get_footer().substr(0, command->get_footer().find('\n')) + '\n';
    return examples;
}

OptionList OptionsOf(const CLI::App& app)
{
    // The filter makes CLI11 list every option; without one it also needs a non-const program.
    return app.get_options([](const CLI::Option*) { return true; });
}

OptionList ArgumentsOf(const CLI::App& app)
{
    return Filtered(app, [](const CLI::Option& option) { return option.get_positional(); });
}

OptionList FlagsOf(const CLI::App& app)
{
    return Filtered(app,
                    [](const CLI::Option& option) { return !option.get_positional() && !option.check_lname("help"); });
}

std::vector<std::string> FlagNames(const CLI::App& app, const CLI::App& program)
{
    std::vector<std::string> names;
    for (const CLI::App* of : CommandList{&app, &program})
        for (const CLI::Option* option : OptionsOf(*of))
            for (const std::string& name : option->get_lnames())
                if (const std::string flag = "--" + name; std::find(names.begin(), names.end(), flag) == names.end())
                    names.push_back(flag);
    return names;
}

std::string UpperCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

std::string ArgumentName(const CLI::Option& argument)
{
    return argument.get_lnames().empty() ? argument.get_name() : UpperCase(argument.get_lnames().front());
}

std::string ValueName(const CLI::Option& option)
{
    return ValuesOf(option).empty() ? option.get_type_name() : UpperCase(option.get_lnames().front());
}

std::vector<std::string> ValuesOf(const CLI::Option& option)
{
    std::vector<std::string> values;
    std::istringstream type(option.get_type_name());
    for (std::string value; std::getline(type, value, '|');)
        values.push_back(value);
    return values.size() > 1 ? values : std::vector<std::string>{};
}

std::string DescriptionOf(const CLI::Option& option)
{
    const bool hasFlag = !option.get_lnames().empty(); // the description of another argument names its values
    const std::vector<std::string> values = hasFlag ? ValuesOf(option) : std::vector<std::string>{};
    const std::string flag = option.get_positional() && hasFlag ? " (or --" + option.get_lnames().front() + ')' : "";
    return option.get_description() + flag + (values.empty() ? "" : ": ") + Joined(values, ", ") +
           (option.get_default_str().empty() ? "" : "; the default is " + option.get_default_str());
}
