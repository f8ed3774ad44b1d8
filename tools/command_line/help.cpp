#include "command_line/help.h"

#include "command_line/help_texts.h"
#include "command_line/structure.h"
#include "record/text.h"
#include "terminal/printable.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <utility>

namespace
{

using Entries = std::vector<std::pair<std::string, std::string>>; // names and their descriptions

// Breaks a text into lines, the first of which begins at the column `begin` and the others after `indent` blanks.
std::string Wrapped(const std::string& text, std::size_t begin, std::size_t indent, std::size_t width)
{
    std::string wrapped;
    std::size_t column = begin;
    std::istringstream words(text);
    for (std::string word; words >> word; column += Width(word))
    {
        if (column > begin && column + 1 + Width(word) > width)
        {
            wrapped += '\n' + std::string(indent, ' ');
            begin = column = indent;
        }
        else if (column > begin)
        {
            wrapped += ' ';
            ++column;
        }
        wrapped += word;
    }
    return wrapped;
}

std::string WrappedUsage(const CLI::App& app, std::size_t width)
{
    constexpr std::size_t indent = 7; // of what follows "usage: "
    return Wrapped(UsageLine(app), 0, indent, width);
}

// Writes a heading and two columns. A name that is too long has its description on the next lines.
void WriteEntries(std::ostream& out, const std::string& heading, const Entries& entries, std::size_t width)
{
    constexpr std::size_t indent = 2;
    constexpr std::size_t gap = 2;
    constexpr std::size_t widest = 26;
    if (entries.empty())
        return;
    std::size_t names = 0;
    for (const auto& [name, description] : entries)
        if (name.size() <= widest)
            names = std::max(names, name.size());
    const std::size_t column = indent + names + gap;
    out << '\n' << heading << '\n';
    for (const auto& [name, description] : entries)
    {
        out << std::string(indent, ' ') << name;
        if (name.size() > names)
            out << '\n' << std::string(column, ' ');
        else
            out << std::string(column - indent - name.size(), ' ');
        out << Wrapped(description, column, column, width) << '\n';
    }
}

std::string FlagEntry(const CLI::Option& flag)
{
    std::string names;
    for (const std::string& name : flag.get_snames())
        names += "-" + name + ", ";
    for (const std::string& name : flag.get_lnames())
        names += "--" + name + ", ";
    names.resize(names.size() - 2);
    return flag.get_expected_max() > 0 ? names + ' ' + ValueName(flag) : names;
}

Entries FlagEntries(const CLI::App& app)
{
    Entries entries;
    for (const CLI::Option* flag : FlagsOf(app))
        entries.emplace_back(FlagEntry(*flag), DescriptionOf(*flag));
    return entries;
}

// The first part of a description.
std::string FirstPart(const CLI::App& command, const char* separators)
{
    return command.get_description().substr(0, command.get_description().find_first_of(separators));
}

// The commands under a heading of the program's help. A group is described with those of its commands that are under
// no heading.
Entries EntriesUnderHeading(const CommandList& commands, const std::set<const CLI::App*>& underHeadings)
{
    Entries entries;
    for (const CLI::App* command : commands)
    {
        std::vector<std::string> names;
        for (const CLI::App* below : CommandsOf(*command))
            if (!underHeadings.contains(below))
                names.push_back(below->get_name());
        entries.emplace_back(PathOf(*command), names.empty()
                                                   ? FirstPart(*command, ";")
                                                   : FirstPart(*command, ";:,") + " (" + Joined(names, ", ") + ')');
    }
    return entries;
}

Entries CommandEntries(const CLI::App& group)
{
    Entries entries;
    for (const CLI::App* command : CommandsOf(group))
        entries.emplace_back(command->get_name(), FirstPart(*command, ";"));
    return entries;
}

void WriteCommandsUnderHeadings(std::ostream& out, const CLI::App& program, std::size_t width)
{
    const auto headings = CommandsUnderHeadings(program);
    const std::set<const CLI::App*> underHeadings = Listed(headings);
    for (const auto& [title, commands] : headings)
        WriteEntries(out, title, EntriesUnderHeading(commands, underHeadings), width);
}

void WriteExamples(std::ostream& out, const CLI::App& app)
{
    out << "\nExamples\n";
    std::istringstream examples(ExamplesOf(app));
    for (std::string line; std::getline(examples, line);)
        out << "  plantjournal " << line << '\n';
}

// The sentence about the options of the program to which the command belongs.
std::string OptionsOfEveryCommand(const CLI::App& app)
{
    const CLI::App* program = &app;
    while (program->get_parent() != nullptr)
        program = program->get_parent();
    std::string options;
    for (const CLI::Option* flag : FlagsOf(*program))
        if (!flag->check_lname("version"))
            options += "--" + flag->get_lnames().front() + ", ";
    return "Every command also takes " + options + "and --help.";
}

std::string ProgramHelp(const CLI::App& program, std::size_t width)
{
    std::ostringstream out;
    out << WrappedUsage(program, width) << '\n';
    WriteCommandsUnderHeadings(out, program, width);
    out << '\n'
        << Wrapped(OptionsOfEveryCommand(program), 0, 0, width) << '\n'
        << Wrapped("`plantjournal plant add NAME` adds the first plant. `plantjournal help COMMAND` describes a "
                   "command, `man plantjournal` everything.",
                   0, 0, width)
        << '\n';
    return out.str();
}

bool TakesDate(const CLI::App& app)
{
    const OptionList options = OptionsOf(app);
    return std::any_of(options.begin(), options.end(),
                       [](const CLI::Option* option) { return option->get_type_name() == "DATE"; });
}

} // namespace

std::string UsageLine(const CLI::App& app)
{
    std::string line = "usage: " + CommandLineOf(app);
    if (app.get_parent() == nullptr)
        return line + " COMMAND [ARGUMENT...] [OPTION...]";
    if (IsGroup(app))
        return line + " COMMAND [ARGUMENT...] [OPTION...]";
    for (const CLI::Option* argument : ArgumentsOf(app))
    {
        const std::string name = ArgumentName(*argument) + (argument->get_items_expected_max() > 1 ? "..." : "");
        line += argument->get_required() ? ' ' + name : " [" + name + ']';
    }
    for (const CLI::Option* flag : FlagsOf(app))
        if (flag->get_required())
            line += " --" + flag->get_lnames().front() + ' ' + ValueName(*flag);
    return line + " [OPTION...]";
}

std::string HelpText(const CLI::App& app, std::size_t width)
{
    if (app.get_parent() == nullptr)
        return ProgramHelp(app, width);
    std::ostringstream out;
    out << WrappedUsage(app, width) << "\n\n" << Wrapped(app.get_description() + '.', 0, 0, width) << '\n';
    Entries arguments;
    for (const CLI::Option* argument : ArgumentsOf(app))
        arguments.emplace_back(ArgumentName(*argument), DescriptionOf(*argument));
    WriteEntries(out, "Arguments", arguments, width);
    WriteEntries(out, "Commands", CommandEntries(app), width);
    WriteEntries(out, "Options", FlagEntries(app), width);
    if (TakesDate(app))
        out << '\n' << Wrapped(DateForms, 0, 0, width) << '\n';
    WriteExamples(out, app);
    out << '\n' << Wrapped(OptionsOfEveryCommand(app), 0, 0, width) << '\n';
    return out.str();
}
