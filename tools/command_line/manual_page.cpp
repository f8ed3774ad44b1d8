#include "command_line/manual_page.h"

#include "command_line/structure.h"

#include <sstream>

namespace
{

// Escapes a text for roff.
std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char letter : text)
    {
        if (letter == '\\')
            escaped += "\\e";
        else if (letter == '-')
            escaped += "\\-";
        else if (letter == '|')
            escaped += "|\\:"; // a line may break here
        else if ((letter == '.' || letter == '\'') && (escaped.empty() || escaped.back() == '\n'))
            escaped += std::string("\\&") + letter;
        else
            escaped += letter;
    }
    return escaped;
}

void WriteOptions(std::ostream& page, const CLI::App& app, bool withHelp)
{
    for (const CLI::Option* option : OptionsOf(app))
    {
        if (option->get_positional() ? option->get_lnames().empty() : false)
            page << ".TP\n.I " << Escaped(option->get_name()) << '\n';
        else if (!withHelp && option->check_lname("help"))
            continue;
        else
        {
            page << ".TP\n\\fB" << Escaped(option->get_name(false, true)) << "\\fR";
            if (option->get_expected_max() > 0)
                page << " \\fI" << Escaped(option->get_type_name()) << "\\fR";
            page << '\n';
        }
        page << Escaped(option->get_description()) << '\n';
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
    page << ".SS " << Escaped(name) << '\n' << Escaped(command.get_description()) << ".\n";
    WriteOptions(page, command, false);
    page << ".PP\n.nf\n";
    std::istringstream footer(command.get_footer());
    for (std::string line; std::getline(footer, line);)
        if (line.starts_with("  "))
            page << Escaped(line) << '\n';
    page << ".fi\n";
}

} // namespace

std::string ManualPage(const CLI::App& program)
{
    std::ostringstream page;
    page << ".TH PLANTJOURNAL 1 \"\" \"plantjournal " PLANTJOURNAL_VERSION "\"\n"
         << ".ad l\n" // justified lines of long names would have wide gaps
         << ".SH NAME\nplantjournal \\- " << Escaped(program.get_description()) << '\n'
         << ".SH SYNOPSIS\n.B plantjournal\n[\\fIOPTION\\fR...] \\fICOMMAND\\fR [\\fIARGUMENT\\fR...]\n"
         << ".SH OPTIONS\n";
    WriteOptions(page, program, true);
    page << ".SH COMMANDS\n";
    for (const CLI::App* command : CommandsOf(program))
        WriteCommand(page, *command, command->get_name());
    page << ".SH NOTES\n" << Escaped(program.get_footer()) << '\n';
    return page.str();
}
