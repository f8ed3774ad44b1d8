#include "command_line/program.h"

#include "command_line/completion.h"
#include "command_line/help.h"
#include "command_line/manual_page.h"

#include <algorithm>
#include <iostream>

#include <CLI/CLI.hpp>

namespace
{

// The parser takes the arguments in reverse order. It reads the value of `--tent=` from the next argument, so an empty
// argument is added.
std::vector<std::string> ParserOrder(const std::vector<std::string>& arguments)
{
    std::vector<std::string> ordered;
    for (const std::string& argument : arguments)
        if (argument.starts_with("--") && argument.find('=') == argument.size() - 1)
            ordered.insert(ordered.end(), {argument.substr(0, argument.size() - 1), ""});
        else
            ordered.push_back(argument);
    std::reverse(ordered.begin(), ordered.end());
    return ordered;
}

// Prints the words that the parser does not know, in the order of the command line. False where it knows all of them.
bool RefuseUnknownWords(const CLI::App& program)
{
    const std::vector<std::string> unknown = program.remaining(true);
    if (unknown.empty())
        return false;
    std::string message = "unknown command or argument:";
    for (const std::string& word : unknown)
        message += ' ' + word;
    program.exit(CLI::ParseError(message, CLI::ExitCodes::ExtrasError));
    return true;
}

} // namespace

int RunProgram(const std::vector<std::string>& arguments, const std::function<void(CLI::App&)>& addCommands)
{
    CLI::App program(Purpose, "plantjournal");
    program.set_version_flag("--version", "plantjournal " PLANTJOURNAL_VERSION);
    program.require_subcommand(1);
    program.fallthrough();
    program.footer(Notes);
    addCommands(program);
    // These two words are for the build and for the shell, so help does not list them.
    if (!arguments.empty() && arguments.front() == "manual-page")
        std::cout << ManualPage(program);
    else if (!arguments.empty() && arguments.front() == "complete")
        for (const std::string& word : Completions(program, {arguments.begin() + 1, arguments.end()}))
            std::cout << word << '\n';
    else
        try
        {
            program.parse(ParserOrder(arguments));
        }
        catch (const CLI::RequiredError& mistake)
        {
            // An unknown word is a more likely mistake than a missing word.
            if (!RefuseUnknownWords(program))
                program.exit(mistake);
            return 2;
        }
        catch (const CLI::ExtrasError&)
        {
            RefuseUnknownWords(program);
            return 2;
        }
        catch (const CLI::ParseError& mistake) // also thrown for --help and --version
        {
            if (program.exit(mistake) != 0)
                return 2;
        }
    return 0;
}
