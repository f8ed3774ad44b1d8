#include "pages.h"

#include "values.h"

#include <algorithm>
#include <set>
#include <sstream>

namespace
{

using Apps = std::vector<const CLI::App*>;
using Options = std::vector<const CLI::Option*>;

Apps CommandsOf(const CLI::App& app)
{
    return app.get_subcommands([](const CLI::App*) { return true; });
}

// Without the argument that --help and its like are elsewhere.
Options OptionsOf(const CLI::App& app)
{
    return app.get_options([](const CLI::Option*) { return true; });
}

// ---- The manual page

// A text as roff takes it for nothing but text.
std::string Plain(const std::string& text)
{
    std::string plain;
    for (const char letter : text)
    {
        if (letter == '\\')
            plain += "\\e";
        else if (letter == '-')
            plain += "\\-";
        else if (letter == '|')
            plain += "|\\:"; // where a long list of names may go on in the next line
        else if ((letter == '.' || letter == '\'') && (plain.empty() || plain.back() == '\n'))
            plain += std::string("\\&") + letter;
        else
            plain += letter;
    }
    return plain;
}

void WriteOptions(std::ostream& page, const CLI::App& app, bool withHelp)
{
    for (const CLI::Option* option : OptionsOf(app))
    {
        if (option->get_positional() ? option->get_lnames().empty() : false)
            page << ".TP\n.I " << Plain(option->get_name()) << '\n';
        else if (!withHelp && option->check_lname("help"))
            continue;
        else
        {
            page << ".TP\n.B " << Plain(option->get_name(false, true)) << '\n';
            if (option->get_expected_max() > 0)
                page << ".I " << Plain(option->get_type_name()) << '\n';
        }
        page << Plain(option->get_description()) << '\n';
    }
}

// NOLINTNEXTLINE(misc-no-recursion): commands have groups, and groups commands
void WriteCommand(std::ostream& page, const CLI::App& command, const std::string& name)
{
    const Apps commands = CommandsOf(command);
    for (const CLI::App* below : commands)
        WriteCommand(page, *below, name + ' ' + below->get_name());
    if (!commands.empty())
        return;
    page << ".SS " << Plain(name) << '\n' << Plain(command.get_description()) << ".\n";
    WriteOptions(page, command, false);
    page << ".PP\n.nf\n";
    std::istringstream footer(command.get_footer());
    for (std::string line; std::getline(footer, line);)
        if (line.starts_with("  "))
            page << Plain(line) << '\n';
    page << ".fi\n";
}

// ---- Completion

const CLI::Option* FlagThatAsks(const std::string& word, const Apps& apps)
{
    for (const CLI::App* app : apps)
        for (const CLI::Option* option : OptionsOf(*app))
            if (word.starts_with("--") && option->check_name(word) && option->get_expected_max() > 0)
                return option;
    return nullptr;
}

// A command and the program that it belongs to may be the same.
std::set<std::string> Candidates(const std::string& begun, const CLI::Option* asked, const Apps& apps)
{
    std::set<std::string> candidates;
    if (asked != nullptr)
    {
        const std::string type = asked->get_type_name();
        std::istringstream choices(type == "DATE" ? "today|yesterday" : type);
        if (type == "DATE" || type.find('|') != std::string::npos)
            for (std::string choice; std::getline(choices, choice, '|');)
                candidates.insert(choice);
    }
    else if (begun.starts_with("-"))
    {
        for (const CLI::App* app : apps)
            for (const CLI::Option* option : OptionsOf(*app))
                for (const std::string& name : option->get_lnames())
                    candidates.insert("--" + name);
    }
    else
        for (const CLI::App* command : CommandsOf(*apps.front()))
            candidates.insert(command->get_name());
    return candidates;
}

} // namespace

std::string ManualPage(const CLI::App& program)
{
    std::ostringstream page;
    page << ".TH PLANTJOURNAL 1 \"\" \"plantjournal " PLANTJOURNAL_VERSION "\"\n"
         << ".ad l\n" // lists of names leave too few gaps to be spread
         << ".SH NAME\nplantjournal \\- " << Plain(program.get_description()) << '\n'
         << ".SH SYNOPSIS\n.B plantjournal\n[\\fIOPTION\\fR...] \\fICOMMAND\\fR [\\fIARGUMENT\\fR...]\n"
         << ".SH OPTIONS\n";
    WriteOptions(page, program, true);
    page << ".SH COMMANDS\n";
    for (const CLI::App* command : CommandsOf(program))
        WriteCommand(page, *command, command->get_name());
    page << ".SH NOTES\n" << Plain(program.get_footer()) << '\n';
    return page.str();
}

std::vector<std::string> Completions(const CLI::App& program, std::vector<std::string> words)
{
    // The shell cuts --flag=value in three, and --flag= in two, of which the second has the value's place.
    if (!words.empty() && words.back() == "=")
        words.back().clear();
    words.erase(std::remove(words.begin(), words.end(), "="), words.end());
    const std::string begun = words.empty() ? "" : words.back();
    const CLI::App* app = &program;
    const CLI::Option* asked = nullptr; // the flag whose value is to come
    for (std::size_t i = 0; i + 1 < words.size(); ++i)
    {
        const bool isValue = asked != nullptr;
        asked = isValue ? nullptr : FlagThatAsks(words[i], {app, &program});
        if (isValue)
            continue;
        for (const CLI::App* command : CommandsOf(*app))
            if (command->get_name() == words[i])
                app = command;
    }

    std::vector<std::string> fitting;
    for (const std::string& candidate : Candidates(begun, asked, {app, &program}))
        if (SameLetters(candidate.substr(0, begun.size()), begun))
            fitting.push_back(candidate);
    return fitting;
}
