#include "command_line/program.h"

#include "command_line/completion.h"
#include "command_line/help.h"
#include "command_line/manual_page.h"
#include "refusal.h"

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
            // An unknown word is the likelier mistake than the missing one.
            if (const std::vector<std::string> unknown = program.remaining(true); !unknown.empty())
                program.exit(CLI::ExtrasError(unknown));
            else
                program.exit(mistake);
            return 2;
        }
        catch (const CLI::ParseError& mistake) // also thrown for --help and --version
        {
            if (program.exit(mistake) != 0)
                return 2;
        }
    if (!std::cout.flush())
        throw Refusal("the output cannot be written");
    return 0;
}
