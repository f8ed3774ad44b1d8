#include "access.h"
#include "back_up.h"
#include "back_up_name.h"
#include "part_file.h"
#include "plant_file.h"
#include "system.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace plant_file
{

namespace
{

std::filesystem::path ExistingDirectory(const std::string& directory)
{
    std::filesystem::path path;
    WithPathErrors([&] { path = CanonicalPath(AbsolutePath(directory)); });
    CreateSyncedDirectory(path);
    return path;
}

// Gives the copy the name of the present moment. Another rotation can take the same name at the same time.
std::filesystem::path MoveToDatedName(const PartFile& part, const std::filesystem::path& directory,
                                      const std::string& journal)
{
    for (;;)
    {
        std::filesystem::path path = FreeBackUpPath(directory, journal);
        if (MoveIntoPlace(part.CopyPath(), path, PlantBackUpMode::Keep))
            return path;
    }
}

using PeriodOf = std::int64_t (*)(const BackUpMoment&);

// Adds the newest backup of each of the last `most` periods that have one. An empty file is only a name that was
// reserved where the file system has no hard links.
void AddNewest(const std::vector<DatedBackUp>& newestFirst, std::int32_t most, PeriodOf periodOf,
               std::set<std::string>& names)
{
    std::int64_t last = -1;
    for (const DatedBackUp& backUp : newestFirst)
    {
        const std::int64_t period = periodOf(backUp.Moment);
        if (period == last || backUp.Bytes == 0)
            continue;
        if (--most < 0)
            return;
        last = period;
        names.insert(backUp.Name);
    }
}

// The backups that the policy does not keep, of those that are older than `newest`.
std::vector<DatedBackUp> ExpiredBackUps(std::vector<DatedBackUp> backUps, const std::string& newest,
                                        const PlantBackUpPolicy& policy)
{
    const auto isOlder = [&](const DatedBackUp& backUp) { return backUp.Name <= newest; };
    backUps.erase(backUps.begin(), std::find_if(backUps.begin(), backUps.end(), isOlder));
    std::set<std::string> kept;
    kept.insert(newest);
    AddNewest(
        backUps, policy.Days, [](const BackUpMoment& moment) { return std::int64_t{moment.DayNumber()}; }, kept);
    AddNewest(
        backUps, policy.Weeks, [](const BackUpMoment& moment) { return std::int64_t{moment.DayNumber() / 7}; }, kept);
    AddNewest(
        backUps, policy.Months,
        [](const BackUpMoment& moment) { return std::int64_t{moment.Year * 12 + moment.Month}; }, kept);
    backUps.erase(std::remove_if(backUps.begin(), backUps.end(),
                                 [&](const DatedBackUp& backUp) { return kept.count(backUp.Name) != 0; }),
                  backUps.end());
    return backUps;
}

void RequireCounts(const PlantBackUpPolicy& policy)
{
    if (policy.Days < 0 || policy.Weeks < 0 || policy.Months < 0)
        Fail("", "the policy has a negative number");
}

// Tries to remove all of them, and reports the first failure.
void Remove(const std::vector<DatedBackUp>& backUps, std::vector<std::string>& removed)
{
    std::optional<Failure> failed;
    for (const DatedBackUp& backUp : backUps)
    {
        const std::optional<bool> done = RemoveFile(backUp.Path);
        if (!done && !failed)
            failed = Failure{SQLITE_OK, "removing " + backUp.Name, LastSystemError().message()};
        else if (done == true) // false if another rotation has removed it
            removed.push_back(TextOfPath(backUp.Path));
    }
    if (failed)
        throw Failure(*failed);
}

} // namespace

} // namespace plant_file

PlantFileResult RotatePlantBackUps(const std::string& journal, const std::string& directory,
                                   const PlantBackUpPolicy& policy, PlantBackUpRotation& out,
                                   const PlantBackUpProgress& progress)
{
    using namespace plant_file;
    PlantBackUpRotation rotation;
    std::optional<CopySource> source;
    std::string name;
    const auto openJournal = [&]
    {
        source.emplace(journal);
        name = JournalNameOf(journal);
    };
    const auto rotate = [&]
    {
        RequireCounts(policy);
        const std::filesystem::path place = ExistingDirectory(directory);
        PartFile part(
            place / PathOfText(name)); // one name for all of them, so that each rotation removes what a killed one left
        source->CopyTo(part, progress);
        const std::filesystem::path made = MoveToDatedName(part, place, name);
        rotation.Path = TextOfPath(made);
        Remove(ExpiredBackUps(DatedBackUps(place, name), TextOfPath(made.filename()), policy), rotation.Dropped);
    };
    PlantFileResult result = Attempt(journal, openJournal);
    if (result)
        result = Attempt(directory, rotate);
    out = std::move(rotation);
    return result;
}

PlantFileResult ListPlantBackUps(const std::string& journal, const std::string& directory,
                                 std::vector<PlantBackUpFile>& out)
{
    using namespace plant_file;
    std::vector<PlantBackUpFile> files;
    const auto list = [&]
    {
        for (const DatedBackUp& backUp : DatedBackUps(AbsolutePath(directory), JournalNameOf(journal)))
        {
            PlantBackUpFile& file = files.emplace_back();
            file.Path = TextOfPath(backUp.Path);
            file.Time = backUp.Moment.Text();
            file.Bytes = backUp.Bytes;
        }
    };
    PlantFileResult result = Attempt(directory, list);
    out = std::move(files);
    return result;
}
