#include "command_line/program.h"

#include "command_line/help.h"
#include "command_line/help_texts.h"
#include "command_line/manual_page.h"
#include "command_line/mistakes.h"
#include "command_line/reading.h"
#include "record/letters.h"
#include "terminal/console.h"
#include "terminal/printable.h"

#include <algorithm>
#include <iostream>
#include <sstream>

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

// Whether the word `help`, the only one after a command, can name what the command works on.
bool HelpIsAName(const Reading& line, const StoredNames& stored)
{
    Reading before = line;
    before.Arguments.clear();
    const CLI::Option* argument = NextArgument(before);
    if (argument == nullptr || !argument->get_lnames().empty())
        return false;
    const std::vector<std::string> names = stored(argument->get_name(), FileIn(line));
    return std::any_of(names.begin(), names.end(), [](const std::string& name) { return WithoutCase(name) == "help"; });
}

// The command that the arguments ask to describe; null where they run a command. Throws Mistake.
const CLI::App* CommandToHelpWith(const CLI::App& program, const std::vector<std::string>& arguments,
                                  const StoredNames& stored)
{
    const Reading line = Read(program, arguments);
    const bool inGroup = IsGroup(*line.Command);
    if (arguments.empty())
        return &program;
    if (inGroup && !line.Arguments.empty() && line.Arguments.front() == "help")
        return &CommandToDescribe(*line.Command, {line.Arguments.begin() + 1, line.Arguments.end()});
    if (line.Arguments.size() == 2 && line.Arguments.front() == "help" && !HelpIsAName(line, stored))
        if (const CLI::App* command = CommandNamed(*line.Command, line.Arguments.back()); command != nullptr)
            return command; // of a group that also runs without a command
    if (line.AsksForHelp)
        return inGroup ? &CommandToDescribe(*line.Command, line.Arguments) : line.Command;
    if (line.Arguments == std::vector<std::string>{"help"} && !line.HasOwnFlags && !line.OptionsEnded &&
        !HelpIsAName(line, stored))
        return line.Command;
    return nullptr;
}

// Runs the command line. Throws Mistake.
void Run(CLI::App& program, const std::vector<std::string>& arguments, const StoredNames& stored)
{
    if (const CLI::App* command = CommandToHelpWith(program, arguments, stored); command != nullptr)
    {
        std::cout << HelpText(*command, TerminalWidth());
        return;
    }
    try
    {
        program.parse(ParserOrder(arguments));
    }
    catch (const CLI::CallForVersion& version)
    {
        std::cout << version.what() << '\n';
    }
    catch (const CLI::ParseError& mistake)
    {
        // An unknown word is a more likely mistake than a missing word, or than a value that takes its place.
        const std::string unknown = DescribeUnknownWords(program);
        throw Mistake(unknown.empty() ? DescribeMistake(program, mistake, arguments) : unknown);
    }
}

void PrintOffers(const std::vector<Offer>& offers)
{
    for (const Offer& offer : offers)
        std::cout << offer.Word << '\t' << (offer.Word.empty() ? "files" : offer.Description) << '\n';
}

} // namespace

int RunProgram(const std::vector<std::string>& arguments, const std::function<void(CLI::App&)>& addCommands,
               const StoredNames& stored)
{
    CLI::App program(Purpose, "plantjournal");
    program.set_version_flag("--version", "plantjournal " PLANTJOURNAL_VERSION, "print the version");
    program.set_help_flag("-h,--help", "describe the command");
    program.require_subcommand(1);
    program.fallthrough();
    addCommands(program);
    try
    {
        // These two words are for the build and for the shell, so help does not list them.
        if (!arguments.empty() && arguments.front() == "manual-page")
            std::cout << ManualPage(program);
        else if (!arguments.empty() && arguments.front() == "complete")
            PrintOffers(Offers(program, {arguments.begin() + 1, arguments.end()}, stored));
        else
            Run(program, arguments, stored);
    }
    catch (const Mistake& mistake)
    {
        std::istringstream lines(mistake.what());
        for (std::string line; std::getline(lines, line);)
            std::cerr << (line.starts_with("usage: ") ? "" : "plantjournal: ") << Printable(line) << '\n';
        return 2;
    }
    return 0;
}
