// Makes whole copies of journals, for backups and for their rotation.
#pragma once

#include "access.h"
#include "part_file.h"
#include "plant_file.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include <sqlite3.h>

namespace plant_file
{

// Fails unless the open file is a journal whose rows can be read.
void RequireJournalIn(sqlite3* db);

// Copies all pages of a file to another, in one transaction, even while other processes write to the source. Until the
// end of its scope, the destination can be locked.
class PageCopy
{
  public:
    PageCopy(sqlite3* source, sqlite3* destination, std::string step);

    // Locks the destination against all other connections. Its bytes stay as they are.
    void LockDestination() const;
    // The number of pages of the source. Call it after LockDestination().
    std::int64_t PageCount() const { return sqlite3_backup_pagecount(BackUp.get()); }
    // Copies the source as it is at one moment.
    void Run(const PlantBackUpProgress& progress) const;

  private:
    std::string Step;
    std::unique_ptr<sqlite3_backup, int (*)(sqlite3_backup*)> BackUp;
};

// Copies a file to an empty one, which is not synced.
void CopyToNewFile(sqlite3* source, const std::filesystem::path& file, const std::string& step,
                   const PlantBackUpProgress& progress);

// Fails where the copy is damaged: it must not replace a good one. A copy with unusual rows is good, since SQLite
// checks no CHECK on reading.
void RequireSoundCopy(const std::filesystem::path& file);

// Fails where a file exists that SQLite would apply to one with this name.
void RequireNoLog(const std::filesystem::path& file);

// Fails where the canonical path is that of a symbolic link: its target does not exist, so a new file would not be the
// target, but take the place of the link.
void RequireNoBrokenLink(const std::filesystem::path& file);

std::filesystem::perms PermissionsOf(const std::filesystem::path& file);

// A journal that is open to be copied. An interrupted write in it has been rolled back.
class CopySource
{
  public:
    explicit CopySource(const std::string& path);

    const std::filesystem::path& Path() const { return File; }
    // Makes the unfinished copy whole: copies the journal to it, checks the copy and syncs it.
    void CopyTo(PartFile& part, const PlantBackUpProgress& progress) const;

  private:
    std::string GivenPath; // for the messages
    std::filesystem::path File;
    Connection Journal;
    std::filesystem::perms Permissions;
};

// Creates the directory and those above it, and syncs their names.
void CreateSyncedDirectory(const std::filesystem::path& directory);

// Gives a whole copy its name, and syncs the directory. False, with nothing changed, where the destination exists and
// the mode is Keep.
bool MoveIntoPlace(const std::filesystem::path& copy, const std::filesystem::path& destination, PlantBackUpMode mode);

} // namespace plant_file
