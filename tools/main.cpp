#include "commands.h"
#include "pages.h"

#include <algorithm>
#include <clocale>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace
{

constexpr const char* Purpose = "keep a plant journal: plants, care, harvests, photos, health and notes";

constexpr const char* Notes = R"(
The journal is the file that --file names, else PLANTJOURNAL_FILE, else journal.db under plantjournal in the XDG data
directory ($XDG_DATA_HOME, else ~/.local/share). A journal of an earlier version is backed up beside itself before it is
brought up to date.

A plant is named by its UUID, by a beginning of it, or by its name, as long as only one plant fits. Dates are today,
yesterday, YYYY-MM-DD, YYYY-MM or YYYY; an empty text clears a date. Names such as --stage flower may be written in any
letter case. --json prints records with the fields' own names; a text that is not UTF-8 is then an object with its bytes,
{"Hex": "..."}.

Colours are shown on a terminal only, and never where NO_COLOR is set. The status is 0 when done, 1 when refused or
failed, and 2 for a mistake in the command line.

Examples:
  plantjournal plant add Basil --strain Genovese --stage seed
  plantjournal feed Basil --product "Bloom A" --amount-ml 500 --ph 6.2
  plantjournal timeline Basil
  plantjournal backup /media/stick/journal.db
)";

void AddEverything(CLI::App& program, Session& session)
{
    program.set_version_flag("--version", "plantjournal " PLANTJOURNAL_VERSION);
    program.add_option("--file", session.File, "the journal")->type_name("FILE");
    program.add_flag("--json", session.AsJSON, "print JSON");
    program.require_subcommand(1);
    program.fallthrough();
    program.footer(Notes);
    AddPlantCommands(program, session);
    AddStrainCommands(program, session);
    AddRecordCommands(program, session);
    AddFileCommands(program, session);
    AddExportCommand(program, session);
    AddImportCommand(program, session);
}

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

int Run(const std::vector<std::string>& arguments)
{
    Session session;
    CLI::App program(Purpose, "plantjournal");
    AddEverything(program, session);
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

} // namespace

int main(int argc, char** argv)
{
    try
    {
        static_cast<void>(
            std::setlocale(LC_CTYPE, "C.UTF-8")); // the width of letters; the journal is UTF-8 wherever it is read
        CatchInterrupts();
        return Run({std::next(argv), std::next(argv, argc)});
    }
    catch (const std::exception& error)
    {
        std::cout.flush();
        std::istringstream lines(error.what());
        std::string line;
        std::getline(lines, line);
        std::cerr << "plantjournal: " << Printable(line) << '\n'; // it may hold texts of the journal
        while (std::getline(lines, line))
            std::cerr << Printable(line) << '\n';
        return 1;
    }
}
