#include "journal/file_result.h"

#include "journal/backup_place.h"
#include "journal/next_command.h"
#include "record/text.h"
#include "refusal.h"
#include "system.h"
#include "terminal/console.h"

#include <vector>

namespace
{

// Whether the error is damage that an inspection does not find: only an index is damaged, so the rows can be counted.
bool IsDamage(const std::string& error)
{
    return error.ends_with("is malformed") || error.find(": the journal is damaged: ") != std::string::npos;
}

bool HasBackUps(const std::string& path)
{
    try
    {
        std::vector<PlantBackUpFile> files;
        return ListPlantBackUps(path, BackUpDirectory(path), files) && !files.empty();
    }
    catch (const Refusal&) // the user has no state directory
    {
        return false;
    }
}

// What to do about a file that is not a journal that can be read; empty for one that can be.
std::string AdviceForJournal(const std::string& path)
{
    PlantFileInspection file;
    if (!InspectPlantDatabase(path, file))
        return "check the path and the permissions, or name another file with --file";
    switch (file.Kind)
    {
    case PlantFileKind::Missing:
    case PlantFileKind::Empty:
        return AdviceForMissing(path);
    case PlantFileKind::Foreign:
        return AdviceForForeign(path);
    case PlantFileKind::NotADatabase:
        return AdviceForNoDatabase(path);
    case PlantFileKind::Damaged:
        return AdviceForDamage(path);
    case PlantFileKind::Locked:
        return "try again when the other program has finished";
    case PlantFileKind::Interrupted:
        return NextCommand("plant list", path) + " opens it";
    case PlantFileKind::Current:
    case PlantFileKind::Older:
        break;
    }
    return {};
}

void Require(const PlantFileResult& result, const std::string& path, const std::string& consequence,
             const std::string& adviceForSound)
{
    if (result)
        return;
    const bool isTooLong = result.Error.ends_with("too long for SQLite");
    const std::string advice = Interrupted() ? "run the command again"
                               : isTooLong   ? "use a shorter path"
                                             : AdviceForJournal(path);
    std::string error = result.Error;
    if (error.ends_with('.')) // a sentence about the schema or the damage
        error.pop_back();
    const std::string adviceForReadable = IsDamage(error) ? AdviceForDamage(path) : adviceForSound;
    throw Refusal(Joined({error, consequence, advice.empty() ? adviceForReadable : advice}, "; "));
}

} // namespace

std::string AdviceForDamage(const std::string& path)
{
    return "restore a backup with " + NextCommand("restore", path) +
           ", or read what is left with `plantjournal salvage`";
}

std::string AdviceForNoDatabase(const std::string& path)
{
    return "if this is the damaged journal, " + NextCommand("restore", path) +
           " replaces it with a backup, and `plantjournal salvage` reads what is left; --file names another file";
}

std::string AdviceForForeign(const std::string& path)
{
    return "if this is the damaged journal, move it away and run " + NextCommand("restore", path) +
           ", or read what is left with `plantjournal salvage`; --file names another file";
}

std::string AdviceForMissing(const std::string& path)
{
    return (HasBackUps(path) ? NextCommand("restore", path) + " restores its newest backup, " : "") +
           NextCommand("plant add NAME", path) + " creates one, --file names another";
}

void RequireRead(const PlantFileResult& result, const std::string& path, const std::string& consequence)
{
    Require(result, path, consequence, "try again; if that fails, restore a backup");
}

void RequireBackUp(const PlantFileResult& result, const std::string& path, const std::string& consequence,
                   const std::string& advice)
{
    Require(result, path, consequence,
            advice.empty() ? "check that the backup's directory exists, is writable and has free space" : advice);
}

void RequireSalvage(const PlantFileResult& result, const std::string& damaged, const std::string& destination)
{
    if (result)
        return;
    std::error_code ignored;
    std::string advice = "check that the directory exists, is writable and has free space";
    PlantFileInspection file;
    if (Interrupted())
        advice = "run the command again";
    else if (result.Error.starts_with(damaged + ": ") && damaged != destination)
    {
        advice = "check the path, or name another file";
        if (InspectPlantSchema(damaged, file) && file.Kind == PlantFileKind::Locked)
            advice = "try again when the other program has finished";
    }
    else if (result.Error.ends_with("move it away first"))
        advice = "or name another destination";
    else if (std::filesystem::exists(std::filesystem::symlink_status(plant_file::PathOfText(destination), ignored)))
        advice = "name another destination";
    throw Refusal(result.Error + "; " + advice);
}
