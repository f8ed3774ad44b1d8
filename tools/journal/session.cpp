#include "journal/session.h"

#include "journal/backup_name.h"
#include "journal/backup_place.h"
#include "journal/file_result.h"
#include "journal/path.h"
#include "journal/sql.h"
#include "plant_file.h"
#include "record/text.h"
#include "refusal.h"
#include "terminal/printable.h"

#include <iostream>

namespace
{

// Reads every row only where the rows decide whether the journal can be used.
PlantFileInspection InspectForOpening(const std::string& path)
{
    PlantFileInspection file;
    PlantFileResult result = InspectPlantSchema(path, file);
    if (result && (file.Kind == PlantFileKind::Older || file.EventTypesUnchecked))
        result = InspectPlantDatabase(path, file);
    RequireRead(result, path);
    return file;
}

void BackUpBeforeMigration(const std::string& path)
{
    const std::string backUp = BackUpName(path, "update");
    RequireBackUp(BackUpPlantDatabase(path, backUp), path, "a journal is not migrated without a backup");
    std::cerr << path << ": earlier schema; backed up as " << backUp << ", now migrating\n";
}

} // namespace

void PrintNoUndo(const std::string& reason)
{
    std::cerr << "notice: `undo` cannot roll back this change: " << Printable(reason) << '\n';
}

Session::Session()
{
    RememberSQLErrors();
}

Session::~Session()
{
    try
    {
        if (Recording)
            Recording->Save(Summaries);
    }
    catch (const std::exception& error)
    {
        PrintNoUndo(error.what());
    }
    try
    {
        if (!Summaries.empty())
            OfferBackUp(Path());
    }
    catch (const std::exception&)
    {
        // Without a state directory, the age of the last backup is not known.
    }
}

std::string Session::Path() const
{
    return JournalPath(File);
}

bool Session::Exists() const
{
    const PlantFileKind kind = InspectForOpening(Path()).Kind;
    return kind != PlantFileKind::Missing && kind != PlantFileKind::Empty;
}

PlantRepository& Session::Read()
{
    Open(false);
    return Repository;
}

PlantDatabase& Session::ReadDatabase()
{
    Open(false);
    return Database;
}

PlantRepository& Session::Write()
{
    Open(true);
    if (!Recording)
        Recording.emplace(Connection(), Path());
    return Repository;
}

void Session::Open(bool create)
{
    if (Database.IsOpen())
        return;
    const std::string path = Path();
    const PlantFileInspection file = InspectForOpening(path);
    switch (file.Kind)
    {
    case PlantFileKind::Missing:
    case PlantFileKind::Empty:
        if (!create)
            throw Refusal(path + ": no such journal; " + AdviceForMissing(path));
        break;
    case PlantFileKind::Older:
        BackUpBeforeMigration(path);
        break;
    case PlantFileKind::Foreign:
        throw Refusal(path + ": not a plantjournal file, or one of a newer version (" + Joined(file.Reasons, "; ") +
                      "); it was not changed; " + AdviceForForeign(path));
    case PlantFileKind::NotADatabase:
        throw Refusal(path + ": not an SQLite database; it was not changed; " + AdviceForNoDatabase(path));
    case PlantFileKind::Damaged:
        throw Refusal(path + ": damaged (" + Joined(file.Reasons, "; ") + "); " + AdviceForDamage(path));
    case PlantFileKind::Locked:
        throw Refusal(path + ": another program is writing to it; try again when it has finished");
    case PlantFileKind::Current:
    case PlantFileKind::Interrupted:
        break;
    }
    std::string error;
    if (!Database.Open(path, &error))
        throw Refusal(path + ": opening: " + error + "; `plantjournal info` describes the file");
}

void Session::SaveCopyForUndo(const std::string& copy) const
{
    try
    {
        if (Recording)
            Recording->SaveCopy(Summaries, copy);
    }
    catch (const std::exception& error)
    {
        PrintNoUndo(error.what());
    }
}

void Session::Require(bool done, const std::string& what, const std::string& advice) const
{
    if (done)
        return;
    const SQLError error = LastSQLError(Connection());
    std::string message = Path() + ": " + what;
    if (error.Known)
        message += ": " + error.Message;
    throw Refusal(Joined({message, AdviceAfter(error, advice)}, "; "));
}

void Session::RequireList(bool done, const std::string& what) const
{
    Require(done && !ReadingFailed(Connection()), what);
}

void Session::RequireAnswer(const PlantQueryResult& result) const
{
    if (!result)
        throw Refusal(Joined({Path() + ": " + result.Error,
                              AdviceAfter(LastSQLError(Connection()), "try again; if that fails, restore a backup")},
                             "; "));
}
