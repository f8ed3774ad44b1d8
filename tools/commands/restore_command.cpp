#include "command_line/parser.h"
#include "commands/backup_comparison.h"
#include "commands/chosen_backup.h"
#include "commands/commands.h"
#include "commands/print.h"
#include "journal/backup_place.h"
#include "journal/file_result.h"
#include "journal/next_command.h"
#include "plant_file.h"
#include "record/text.h"
#include "refusal.h"
#include "system.h"
#include "terminal/console.h"
#include "terminal/printable.h"
#include "terminal/progress.h"
#include "terminal/prompt.h"

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

namespace
{

struct RestoreArguments
{
    BackUpChoice Choice;
    bool Confirmed = false;
};

void Ask(const BackUpComparison& comparison, const std::string& journal, const std::string& backUp)
{
    comparison.Print(std::cerr);
    if (comparison.ReplacesTheFile())
        std::cerr << "Close the programs that have it open first, or their changes are lost.\n";
    if (!Confirm("Restore " + Printable(journal) + " from " + Printable(backUp) + '?', "--yes"))
        throw Refusal("nothing was restored; answer y, or pass --yes");
    if (!comparison.IsUpToDate())
        throw Refusal(journal + ": it has changed since the question; nothing was restored; run the command again");
}

// What to do about a refused restoration.
std::string AdviceAfter(const std::string& error, const std::string& journal, const std::string& backUp)
{
    std::error_code ignored;
    if (Interrupted() || error == backUp + ": no such file") // it was removed since the question
        return "run the command again";
    if (error.ends_with("; try again"))
        return {};
    if (error.ends_with("database is locked"))
        return "try again when the other program has finished";
    if (error.ends_with("move it away first"))
        return std::filesystem::exists(plant_file::PathOfText(journal), ignored)
                   ? "move the journal with it, so that `plantjournal salvage` reads both; then run the command again"
                   : "then run the command again";
    if (error.ends_with("ends with a separator"))
        return "name a file";
    if (error.ends_with("are the same file"))
        return "name another backup, or another journal with --file";
    if (error.ends_with("a symbolic link to a file that does not exist"))
        return AdviceForBrokenLink;
    return error.starts_with(journal + ": reading the schema: not a plantjournal file")
               ? AdviceForForeign(journal)
               : "check the paths, the permissions and the free space of the disk";
}

PlantRestoration RestoreWithProgress(const std::string& journal, const std::string& backUp)
{
    Progress bar("Restoring");
    PlantRestoration restoration;
    const PlantFileResult result = RestorePlantDatabase(backUp, journal, restoration, ShownOn(bar));
    if (result)
        return restoration;
    throw Refusal(Joined({WithoutStop(result.Error),
                          restoration.KeptPath.empty() ? "" : "the former journal is also in " + restoration.KeptPath,
                          AdviceAfter(result.Error, journal, backUp)},
                         "; "));
}

void PrintRestored(const Session& session, const std::string& journal, const std::string& backUp,
                   const PlantRestoration& restoration, const BackUpComparison& comparison)
{
    if (restoration.MustReopen)
        std::cerr << "notice: " << Printable(journal) << ": programs that have it open must open it again\n";
    if (session.AsJSON)
    {
        JSON object = JSON::Object();
        object.Add("File", JSONOf(journal));
        object.Add("BackUp", JSONOf(backUp));
        object.Add("FormerFile", restoration.KeptPath.empty() ? JSON::Null() : JSONOf(restoration.KeptPath));
        object.Add("Tables", comparison.AsJSON());
        object.Add("LastDate", comparison.LastDates());
        object.Add("OpenPrograms", JSONOf(std::string(restoration.MustReopen ? "MustReopen" : "CanContinue")));
        return PrintJSON(object);
    }
    if (session.Quiet)
        return;
    std::cout << Printable("Restored " + journal + " from " + backUp) << '\n';
    if (!restoration.KeptPath.empty())
        std::cout << Printable("The former journal is " + restoration.KeptPath) << '\n';
}

void Restore(const Session& session, const RestoreArguments& arguments)
{
    const std::string journal = session.Path();
    const std::string backUp = ChosenBackUp(journal, arguments.Choice);
    if (const std::string reason = WhyNotGood(backUp); !reason.empty())
        throw Refusal(WithoutStop(reason) + "; nothing was changed; " + NextCommand("backup --list", journal) +
                      " lists the backups");
    std::string error;
    const BackUpComparison comparison(journal, backUp, error);
    if (!error.empty()) // refused before the question
        throw Refusal(WithoutStop(error) + "; " + AdviceAfter(error, journal, backUp));
    if (!arguments.Confirmed)
        Ask(comparison, journal, backUp);
    const PlantRestoration restoration = RestoreWithProgress(journal, backUp);
    if (arguments.Confirmed && !session.Quiet && !session.AsJSON)
        comparison.Print(std::cout);
    PrintRestored(session, journal, backUp, restoration, comparison);
}

} // namespace

void AddRestoreCommand(CLI::App& program, Session& session)
{
    auto wanted = std::make_shared<RestoreArguments>();
    CLI::App& command =
        AddCommand(program, "restore",
                   "Put a backup in the place of the journal, and keep a copy of the present journal, even if it is "
                   "damaged",
                   "restore\nrestore yesterday\nrestore \"2025-07-20 18:30\"\nrestore /media/stick/journal.db --yes",
                   [&session, wanted] { Restore(session, *wanted); });
    AddArgument(
        command, "BACKUP",
        "the backup file, or a date, or a date with a time, for the newest good backup of then or before; a file "
        "whose name is a date is the backup file; a name without a directory that is not a file here is one of "
        "the dated backups; without BACKUP, the newest good backup up to tomorrow",
        wanted->Choice.Wanted, Need::Optional);
    AddFlag(command,
            {"--from", "find the dated backups in or below DIR, as `backup --to DIR` keeps them", "DIR", Need::Optional,
             PathObjection},
            wanted->Choice.From);
    AddSwitch(command, "-y,--yes", "restore without asking", wanted->Confirmed);
}
