#include "command_line/parser.h"
#include "commands/commands.h"
#include "commands/inspected_file.h"
#include "commands/outcome.h"
#include "commands/print.h"
#include "journal/backup_place.h"
#include "journal/file_result.h"
#include "journal/next_command.h"
#include "journal/own_directory.h"
#include "plant_file.h"
#include "record/elapsed.h"
#include "refusal.h"
#include "system.h"
#include "terminal/console.h"
#include "terminal/printable.h"
#include "terminal/progress.h"

#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

using plant_file::PathOfText;

namespace
{

struct BackUpArguments
{
    std::string Destination;
    std::optional<std::string> To;
    bool Overwrite = false;
    bool List = false;
};

// True also for a symbolic link to a file that does not exist.
bool Exists(const std::string& path)
{
    std::error_code ignored;
    return std::filesystem::exists(std::filesystem::symlink_status(PathOfText(path), ignored));
}

// Whether --overwrite is what a backup of `source` to `destination` lacks.
bool CanReplace(const std::string& source, const std::string& destination)
{
    PlantFileInspection file;
    std::error_code ignored;
    return InspectPlantSchema(source, file) &&
           (file.Kind == PlantFileKind::Current || file.Kind == PlantFileKind::Older) &&
           std::filesystem::is_regular_file(PathOfText(destination), ignored) &&
           !std::filesystem::equivalent(PathOfText(source), PathOfText(destination), ignored);
}

// What to do about a destination that the backup refused.
std::string AdviceForDestination(const std::string& destination)
{
    if (Exists(destination + "-journal") || Exists(destination + "-wal")) // the error says to move it away
        return "or name another destination";
    return Exists(destination) ? "name another destination" : "";
}

void BackUpWithProgress(const std::string& source, const std::string& destination, bool overwrite)
{
    Progress bar("Backing up");
    const PlantFileResult result = BackUpPlantDatabase(source, destination, ShownOn(bar),
                                                       overwrite ? PlantBackUpMode::Overwrite : PlantBackUpMode::Keep);
    if (!result && !overwrite && CanReplace(source, destination))
        throw Refusal(destination + " exists; --overwrite replaces it");
    RequireBackUp(result, source, {}, AdviceForDestination(destination));
}

void PrintBackUpJSON(const PlantBackUpRotation& rotation)
{
    JSON object = JSON::Object();
    object.Add("BackUp", JSONOf(rotation.Path));
    object.Add("Removed", JSONOf(rotation.Dropped));
    PrintJSON(object);
}

void BackUpTo(const Session& session, const std::string& destination, bool overwrite)
{
    const std::string source = session.Path();
    BackUpWithProgress(source, destination, overwrite);
    RememberBackUp(source);
    if (session.AsJSON)
        return PrintBackUpJSON({destination, {}});
    ReportCopy(session, "Backed up " + source + " to " + destination);
}

PlantBackUpRotation Rotate(const std::string& source, const std::string& directory)
{
    Progress bar("Backing up");
    PlantBackUpRotation rotation;
    const PlantFileResult result = RotatePlantBackUps(source, directory, {}, rotation, ShownOn(bar));
    if (!rotation.Path.empty())
        RememberBackUp(source);
    if (!result && !rotation.Path.empty())
        throw Refusal(result.Error + "; the new backup " + rotation.Path +
                      " is complete; check the permissions, and whether a program has an older backup open");
    RequireBackUp(result, source);
    return rotation;
}

void BackUpByDate(const Session& session, const std::string& directory)
{
    const std::string source = session.Path();
    const PlantBackUpRotation rotation = Rotate(source, directory);
    if (session.AsJSON)
        return PrintBackUpJSON(rotation);
    const std::size_t removed = rotation.Dropped.size();
    std::cout << (session.Quiet ? Printable(rotation.Path)
                                : Printable("Backed up " + source + " to " + rotation.Path) +
                                      (removed == 0   ? ""
                                       : removed == 1 ? "; removed 1 older backup"
                                                      : "; removed " + std::to_string(removed) + " older backups"))
              << '\n';
}

void ListBackUps(const Session& session, const std::string& directory)
{
    const std::string source = session.Path();
    std::vector<PlantBackUpFile> files;
    if (const PlantFileResult result = ListPlantBackUps(source, directory, files); !result)
        throw Refusal(result.Error + "; check the path and the permissions");
    JSON array = JSON::Array();
    std::vector<Row> rows;
    for (const PlantBackUpFile& file : files)
    {
        PlantFileInspection found;
        const PlantFileResult read = InspectPlantDatabase(file.Path, found);
        found.Bytes = file.Bytes;
        JSON object = JSON::Object();
        object.Add("Time", JSONOf(file.Time));
        object.AddFieldsOf(InspectionJSON(file.Path, found));
        if (!read)
            object.Add("Kind", JSON::Null());
        object.Add("Error", JSONOf(read.Error));
        array.Add(std::move(object));
        rows.push_back({file.Time, AgoText(file.Time.substr(0, 10), PlantEventCurrentDate()),
                        std::to_string(file.Bytes), read ? ContentInWords(found) : read.Error, file.Path});
    }
    if (session.AsJSON)
        PrintJSON(array);
    else if (rows.empty())
        std::cout << Printable(Joined({"No backups", OthersOfThisName(directory)}, "; ")) << "; "
                  << Printable(NextCommand("backup", session.Path())) << " makes one.\n";
    else
        PrintTable(std::cout,
                   {{"Made", WhenNarrow::Keep},
                    {"Age", WhenNarrow::Keep},
                    {"Bytes", WhenNarrow::Drop, true},
                    {"Content", WhenNarrow::Cut},
                    {"File", WhenNarrow::Drop}},
                   rows);
}

void RunBackUp(const Session& session, const BackUpArguments& arguments)
{
    if (!arguments.Destination.empty() && (arguments.To || arguments.List))
        RefuseUsage("DESTINATION does not go with --to or --list");
    if (arguments.Destination.empty() && arguments.Overwrite)
        RefuseUsage("--overwrite needs a DESTINATION");
    if (!arguments.Destination.empty())
        return BackUpTo(session, arguments.Destination, arguments.Overwrite);
    const std::string place = arguments.To.value_or("");
    if (arguments.List)
        return ListBackUps(session, BackUpsToRead(session.Path(), place));
    const std::string directory = BackUpDirectory(session.Path(), place);
    if (!arguments.To && Exists(session.Path()))
        CreateOwnDirectory(PathOfText(directory));
    BackUpByDate(session, directory);
}

} // namespace

void AddBackUpCommand(CLI::App& program, Session& session)
{
    auto wanted = std::make_shared<BackUpArguments>();
    CLI::App& command = AddCommand(program, "backup", "Back up the journal, even while other programs use it",
                                   "backup\nbackup --list\nbackup --to /media/stick\nbackup /media/stick/journal.db",
                                   [&session, wanted] { RunBackUp(session, *wanted); });
    AddArgument(command, "DESTINATION",
                "the backup file to write; without it, the backup is named by date and time, and older ones are "
                "removed: the newest of each of 7 days, 4 weeks and 12 months stays",
                wanted->Destination, Need::Optional);
    AddFlag(command,
            {"--to", "keep the dated backups in a directory below DIR instead of the state directory", "DIR",
             Need::Optional, PathObjection},
            wanted->To);
    AddSwitch(command, "--overwrite", "replace DESTINATION if it exists", wanted->Overwrite);
    AddSwitch(command, "--list", "list the dated backups: their age, size and content", wanted->List);
}
