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

// As the parser takes them, from the last to the first. It would look for the value of `--tent=` in the next word.
std::vector<std::string> Turned(const std::vector<std::string>& arguments)
{
    std::vector<std::string> turned;
    for (const std::string& argument : arguments)
        if (argument.starts_with("--") && argument.find('=') == argument.size() - 1)
            turned.insert(turned.end(), {argument.substr(0, argument.size() - 1), ""});
        else
            turned.push_back(argument);
    std::reverse(turned.begin(), turned.end());
    return turned;
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
    // For the build and for the shell, and so not among the commands.
    if (!arguments.empty() && arguments.front() == "manual-page")
        std::cout << ManualPage(program);
    else if (!arguments.empty() && arguments.front() == "complete")
        for (const std::string& word : Completions(program, {arguments.begin() + 1, arguments.end()}))
            std::cout << word << '\n';
    else
        try
        {
            program.parse(Turned(arguments));
        }
        catch (const CLI::RequiredError& mistake)
        {
            // A word that nobody knows is the mistake, not the want of what it may have been meant for.
            if (const std::vector<std::string> unknown = program.remaining(true); !unknown.empty())
                program.exit(CLI::ExtrasError(unknown));
            else
                program.exit(mistake);
            return 2;
        }
        catch (const CLI::ParseError& mistake) // help and the version, too
        {
            if (program.exit(mistake) != 0)
                return 2;
        }
    if (!std::cout.flush())
        throw Refusal("the output cannot be written");
    return 0;
}
