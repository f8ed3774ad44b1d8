#include "command_line/parser.h"
#include "command_line/program.h"
#include "commands/commands.h"
#include "journal/session.h"
#include "journal/stored_names.h"
#include "refusal.h"
#include "terminal/console.h"
#include "terminal/printable.h"

#include <exception>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace
{

void AddCommands(CLI::App& program, Session& session)
{
    AddFlag(program, {"--file", "journal file", "FILE", Need::Optional, PathObjection}, session.File);
    AddSwitch(program, "--json", "print JSON", session.AsJSON);
    AddSwitch(program, "-q,--quiet", "after a change, print only the identifier of what was stored", session.Quiet);
    AddPlantCommands(program, session);
    AddTimelineCommand(program, session);
    AddStatusCommand(program, session);
    AddDueCommand(program, session);
    AddLogCommand(program, session);
    AddSearchCommand(program, session);
    AddTotalsCommand(program, session);
    AddCompareCommand(program, session);
    AddStrainCommands(program, session);
    AddFeedAndWater(program, session);
    AddCloneCommand(program, session);
    AddStepCommands(program, session);
    AddRecordCommands(program, session);
    AddFileCommands(program, session);
    AddReportCommand(program, session);
    AddExportCommand(program, session);
    AddImportCommand(program, session);
    AddUndoCommand(program, session);
}

// The flags in a command line, without their values.
TypedFlags FlagsIn(const std::vector<std::string>& arguments)
{
    TypedFlags flags;
    for (const std::string& argument : arguments)
        if (argument == "--")
            break;
        else if (argument.starts_with("--"))
            flags.insert(argument.substr(0, argument.find('=')));
    return flags;
}

// The session ends before the output is flushed: if no process reads it, that can end the process.
int RunCommand(const std::vector<std::string>& arguments)
{
    Session session;
    session.Flags = FlagsIn(arguments);
    return RunProgram(
        arguments, [&](CLI::App& program) { AddCommands(program, session); }, StoredNamesOf);
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        CatchInterrupts();
        const int status = RunCommand(StartConsole(argc, argv));
        if (!std::cout.flush())
            throw Refusal("the output cannot be written; write it to another place");
        return status;
    }
    catch (const std::exception& error)
    {
        std::cout.flush();
        std::istringstream lines(error.what());
        std::string line;
        std::getline(lines, line);
        std::cerr << "plantjournal: " << Printable(line) << '\n'; // it may contain texts of the journal
        while (std::getline(lines, line))
            std::cerr << Printable(line) << '\n';
        return 1;
    }
}
