#include "journal/session.h"

#include "plant_file.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <sqlite3.h>

namespace
{

std::string Environment(const char* name)
{
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

// A name beside `path` that nothing has yet.
std::string BackUpName(const std::string& path)
{
    const std::string name = path + ".before-update-" + PlantEventCurrentDate();
    std::string free = name;
    for (int number = 2; std::filesystem::exists(std::filesystem::symlink_status(free)); ++number)
        free = name + "-" + std::to_string(number);
    return free;
}

PlantFileInspection Inspected(const std::string& path)
{
    PlantFileInspection file;
    if (const PlantFileResult result = InspectPlantDatabase(path, file); !result)
        throw Refusal(result.Error);
    return file;
}

// SQLite tells its log of every error, whatever becomes of it: https://www.sqlite.org/errlog.html
void KeepError(void* kept, int code, const char*)
{
    if (const int kind = code & 0xFF;
        kind != SQLITE_ERROR && kind != SQLITE_NOTICE && kind != SQLITE_WARNING && kind != SQLITE_SCHEMA)
        *static_cast<int*>(kept) = kind;
}

} // namespace

Session::Session()
{
    sqlite3_config(SQLITE_CONFIG_LOG, KeepError, &LastError);
}

std::string Session::Path() const
{
    if (File && !File->empty())
        return *File;
    if (std::string file = Environment("PLANTJOURNAL_FILE"); !file.empty())
        return file;
    // The base directories of freedesktop.org: a relative path is to be ignored.
    std::filesystem::path data = Environment("XDG_DATA_HOME");
    if (data.is_relative())
    {
        const std::string home = Environment("HOME");
        if (home.empty())
            throw Refusal("there is no home directory to look for the journal in; name the journal by --file");
        data = std::filesystem::path(home) / ".local" / "share";
    }
    return (data / "plantjournal" / "journal.db").string();
}

bool Session::Exists() const
{
    const PlantFileKind kind = Inspected(Path()).Kind;
    return kind != PlantFileKind::Missing && kind != PlantFileKind::Empty;
}

PlantRepository& Session::Read()
{
    Open(false);
    return Repository;
}

PlantRepository& Session::Write()
{
    Open(true);
    return Repository;
}

void Session::Open(bool create)
{
    if (Database.IsOpen())
        return;
    const std::string path = Path();
    const PlantFileInspection file = Inspected(path);
    switch (file.Kind)
    {
    case PlantFileKind::Missing:
    case PlantFileKind::Empty:
        if (!create)
            throw Refusal(path + ": there is no journal yet; `plantjournal plant add NAME` begins one, --file names "
                                 "another");
        break;
    case PlantFileKind::Older:
    {
        const std::string backUp = BackUpName(path);
        if (const PlantFileResult result = BackUpPlantDatabase(path, backUp); !result)
            throw Refusal(result.Error + "; without a backup the older journal is not brought up to date");
        std::cerr << path << ": an older journal; backed up as " << backUp << " and brought up to date\n";
        break;
    }
    case PlantFileKind::Foreign:
        throw Refusal(path + ": no journal of ours, or a newer one than this version knows (" +
                      Joined(file.Reasons, "; ") + "); it is left alone");
    case PlantFileKind::NotADatabase:
        throw Refusal(path + ": no journal, something else; it is left alone");
    case PlantFileKind::Damaged:
        throw Refusal(path + ": damaged (" + Joined(file.Reasons, "; ") + "); go back to a backup");
    case PlantFileKind::Locked:
        throw Refusal(path + ": another program is writing to it; try again when it is done");
    case PlantFileKind::Current:
    case PlantFileKind::Interrupted:
        break;
    }
    std::string error;
    if (!Database.Open(path, &error))
        throw Refusal(path + ": opening: " + error);
}

Plant Session::Find(const std::string& named)
{
    std::vector<Plant> plants;
    Require(Read().ListPlants(plants), "the plants cannot be listed");
    const auto keep = [&](const auto& fits)
    {
        std::vector<Plant> found;
        std::copy_if(plants.begin(), plants.end(), std::back_inserter(found), fits);
        return found;
    };
    std::vector<Plant> found = keep([&](const Plant& plant) { return plant.UUID == named; });
    if (found.empty() && !named.empty())
        found = keep([&](const Plant& plant) { return plant.Name == named || plant.UUID.starts_with(named); });
    if (found.size() == 1)
        return found.front();

    const bool none = found.empty();
    if (none) // perhaps it was meant a little differently
        found = keep([&](const Plant& plant) { return !named.empty() && SameLetters(plant.Name, named); });
    std::string message = none ? std::string("no plant is named ") + Quoted(Printable(named)) + ", nor has it as a UUID"
                               : Quoted(Printable(named)) + " may be any of several plants";
    message += found.empty() ? "; `plantjournal plant list` shows all" : "; name one of these by its UUID:";
    for (const Plant& plant : found)
        message += "\n  " + Printable(plant.UUID + "  " + NameOf(plant) + "  " + plant.Strain);
    throw Refusal(message);
}

Strain Session::FindStrain(const std::string& name)
{
    std::vector<Strain> strains;
    Require(Read().ListStrains(strains), "the strains cannot be listed");
    for (Strain& strain : strains)
        if (strain.Name == name)
            return std::move(strain);
    std::string message = "no strain is named " + Quoted(Printable(name)) + "; there are:";
    for (const Strain& strain : strains)
        message += "\n  " + Printable(strain.Name);
    throw Refusal(strains.empty() ? "there is no strain yet; `plantjournal strain add NAME` adds one" : message);
}

void Session::Require(bool done, const std::string& what) const
{
    if (done)
        return;
    int code = sqlite3_errcode(Connection());
    std::string reason = sqlite3_errmsg(Connection());
    const auto silent = [&] { return code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE; };
    // After an operation of several steps the error is the rollback's: none, or that SQLite had rolled back itself. Of
    // all that makes it do so, a full disk alone is not in its log.
    const bool rolledBack = reason.starts_with("cannot rollback");
    if (silent() || rolledBack)
    {
        code = rolledBack && LastError == SQLITE_OK ? SQLITE_FULL : LastError;
        reason = sqlite3_errstr(code);
    }
    std::string message = Path() + ": " + what;
    if (!silent())
        message += ": " + reason;
    if (sqlite3_extended_errcode(Connection()) == SQLITE_CONSTRAINT_UNIQUE)
        message += "; there is one already, so it has to be another";
    if (code == SQLITE_BUSY)
        message += "; another program is writing, try again when it is done";
    if (code == SQLITE_READONLY)
        message += "; make the file writable, or copy it";
    throw Refusal(message);
}

std::string NameOf(const Plant& plant)
{
    return plant.Name.empty() ? plant.UUID : plant.Name;
}
