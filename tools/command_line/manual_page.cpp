#include "command_line/manual_page.h"

#include "command_line/structure.h"

#include <sstream>

namespace
{

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
    const CommandList commands = CommandsOf(command);
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
