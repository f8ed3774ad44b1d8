#include "command_line/manual_page.h"

#include "command_line/help.h"
#include "command_line/help_texts.h"
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
        else if ((letter == '.' || letter == '\'') && (escaped.empty() || escaped.back() == '\n'))
            escaped += std::string("\\&") + letter;
        else
            escaped += letter;
    }
    return escaped;
}

void WriteArguments(std::ostream& page, const CLI::App& command)
{
    for (const CLI::Option* argument : ArgumentsOf(command))
        page << ".TP\n.I " << Escaped(ArgumentName(*argument)) << '\n' << Escaped(DescriptionOf(*argument)) << '\n';
}

void WriteFlags(std::ostream& page, const OptionList& flags)
{
    for (const CLI::Option* flag : flags)
    {
        page << ".TP\n\\fB" << Escaped(flag->get_name(false, true)) << "\\fR";
        if (flag->get_expected_max() > 0)
            page << " \\fI" << Escaped(ValueName(*flag)) << "\\fR";
        page << '\n' << Escaped(DescriptionOf(*flag)) << '\n';
    }
}

// NOLINTNEXTLINE(misc-no-recursion): commands have groups, and groups commands
void WriteCommand(std::ostream& page, const CLI::App& command, const std::set<const CLI::App*>& underHeadings)
{
    if (!IsGroup(command))
    {
        const std::string usage = UsageLine(command);
        page << ".SS " << Escaped(PathOf(command)) << "\n.B " << Escaped(CommandLineOf(command)) << "\n"
             << Escaped(usage.substr(usage.find(CommandLineOf(command)) + CommandLineOf(command).size() + 1))
             << "\n.PP\n"
             << Escaped(command.get_description()) << ".\n";
        WriteArguments(page, command);
        WriteFlags(page, FlagsOf(command));
        page << ".PP\n.nf\n";
        std::istringstream examples(ExamplesOf(command));
        for (std::string line; std::getline(examples, line);)
            page << "  plantjournal " << Escaped(line) << '\n';
        page << ".fi\n";
    }
    for (const CLI::App* below : CommandsOf(command))
        if (!underHeadings.contains(below))
            WriteCommand(page, *below, underHeadings);
}

void WriteSection(std::ostream& page, const ManualSection& section)
{
    page << ".SH " << section.Title << '\n';
    std::istringstream lines(section.Text);
    std::string line;
    std::getline(lines, line); // the text begins on the next line
    while (std::getline(lines, line))
        page << (line.empty() ? ".PP" : Escaped(line)) << '\n';
}

} // namespace

std::string ManualPage(const CLI::App& program)
{
    std::ostringstream page;
    page << ".TH PLANTJOURNAL 1 \"\" \"plantjournal " PLANTJOURNAL_VERSION "\"\n"
         << ".ad l\n" // justified lines of long names would have wide gaps
         << ".SH NAME\nplantjournal \\- " << Escaped(program.get_description()) << '\n'
         << ".SH SYNOPSIS\n.B plantjournal\n\\fICOMMAND\\fR [\\fIARGUMENT\\fR...] [\\fIOPTION\\fR...]\n.br\n"
         << ".B plantjournal help\n[\\fICOMMAND\\fR]\n";
    for (const ManualSection& section : SectionsBeforeCommands)
        WriteSection(page, section);
    page << ".SH OPTIONS OF EVERY COMMAND\n";
    WriteFlags(page, FlagsOf(program));
    page << ".TP\n\\fB\\-h,\\-\\-help\\fR\ndescribe the command\n";
    const auto headings = CommandsUnderHeadings(program);
    const std::set<const CLI::App*> underHeadings = Listed(headings);
    for (const auto& [title, commands] : headings)
    {
        page << ".SH " << UpperCase(title) << '\n';
        for (const CLI::App* command : commands)
            WriteCommand(page, *command, underHeadings);
    }
    for (const ManualSection& section : SectionsAfterCommands)
        WriteSection(page, section);
    return page.str();
}
