// The names of the backups that a rotation makes: `2026-05-01-140307-journal.db` is a backup of journal.db, made on
// 1 May 2026 at 14:03:07, local time. A second one in the same second is `2026-05-01-140307_02-journal.db`.
#pragma once

#include "plant_file.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace plant_file
{

// A moment of the local time, to the second.
struct BackUpMoment
{
    int Year = 0;  // 1 to 9999
    int Month = 0; // 1 to 12
    int Day = 0;
    int Hour = 0;
    int Minute = 0;
    int Second = 0;
    int Number = 1; // of the backup within its second

    // Days since 0001-01-01, a Monday.
    int DayNumber() const;
    // Such as `2026-05-01 14:03:07`.
    std::string Text() const;
};

BackUpMoment PresentMoment();

// The name of a file that is not yet taken in the directory.
std::filesystem::path FreeBackUpPath(const std::filesystem::path& directory, const std::string& journal);

// The name of a copy of a journal from before a restoration, next to it, which no file has:
// `journal.db.before-restore-2026-05-01`, or with `-2` after it.
std::filesystem::path FreePathBeforeRestore(const std::filesystem::path& journal);

// Nothing where the name is not one that FreeBackUpPath() makes for a journal of this name.
std::optional<BackUpMoment> MomentOfName(const std::string& name, const std::string& journal);

// A backup that a rotation made.
struct DatedBackUp
{
    std::filesystem::path Path;
    std::string Name; // of the file: the names of two backups of one journal compare as their moments do
    BackUpMoment Moment;
    std::int64_t Bytes = 0;
};

// The backups of a journal of this name in a directory, the newest first. None where the directory does not exist.
std::vector<DatedBackUp> DatedBackUps(const std::filesystem::path& directory, const std::string& journal);

// The part of the journal's path that is in the names of its backups.
std::string JournalNameOf(const std::string& journal);

} // namespace plant_file
