#include "journal/file_result.h"

#include "record/text.h"
#include "refusal.h"
#include "system.h"
#include "terminal/console.h"

namespace
{

// Whether the error is damage that an inspection does not find: only an index is damaged, so the rows can be counted.
bool IsDamage(const std::string& error)
{
    return error.ends_with("is malformed") || error.find(": the journal is damaged: ") != std::string::npos;
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
        return "`plantjournal plant add NAME` creates a journal, --file names another";
    case PlantFileKind::Foreign:
        return AdviceForForeign;
    case PlantFileKind::NotADatabase:
        return AdviceForNoDatabase;
    case PlantFileKind::Damaged:
        return AdviceForDamage;
    case PlantFileKind::Locked:
        return "try again when the other program has finished";
    case PlantFileKind::Interrupted:
        return "`plantjournal plant list` opens it";
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
    const std::string adviceForReadable = IsDamage(error) ? AdviceForDamage : adviceForSound;
    throw Refusal(Joined({error, consequence, advice.empty() ? adviceForReadable : advice}, "; "));
}

} // namespace

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
