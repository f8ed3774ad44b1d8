#pragma once

#include "plant_file.h"

#include "support/backup_test.h"
#include "support/fixed_time.h"
#include "support/on_windows.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace support
{

// A journal and a directory for its dated backups, which does not exist at first.
class RotationTest : public BackUpTest
{
  protected:
    // The seconds since 1970 of a local time, such as "2026-05-01 14:03:07".
    static std::time_t LocalTime(const std::string& text)
    {
        std::tm local = {};
        std::istringstream(text) >> std::get_time(&local, "%Y-%m-%d %H:%M:%S");
        local.tm_isdst = -1;
        return std::mktime(&local);
    }

    // Makes a backup at a local time, and returns the error.
    std::string RotateAt(const std::string& time, const PlantBackUpPolicy& policy = {})
    {
        const FixedTime now(LocalTime(time));
        return Rotate(policy);
    }
    std::string Rotate(const PlantBackUpPolicy& policy = {})
    {
        const std::string error = RotatePlantBackUps(Path, Place, policy, Rotation).Error;
        if (OnWindows) // the library joins paths by a backslash
        {
            Rotation.Path = WithSlash(Rotation.Path);
            std::transform(Rotation.Dropped.begin(), Rotation.Dropped.end(), Rotation.Dropped.begin(), WithSlash);
        }
        return error;
    }

    // The path with a slash before its last part.
    static std::string WithSlash(std::string path)
    {
        if (const std::size_t last = path.rfind('\\'); last != std::string::npos)
            path[last] = '/';
        return path;
    }

    // Writes a file into the directory.
    void Put(const std::string& name) const
    {
        std::filesystem::create_directories(Place);
        std::ofstream(Place + '/' + name) << name;
    }
    // The names of all files in the directory.
    Names There() const
    {
        Names names;
        if (std::filesystem::exists(Place))
            for (const auto& entry : std::filesystem::directory_iterator(Place))
                names.insert(entry.path().filename().string());
        return names;
    }
    // The backups in the directory that are whole journals.
    int GoodBackUps() const
    {
        std::vector<PlantBackUpFile> files;
        EXPECT_EQ(ListPlantBackUps(Path, Place, files).Error, "");
        int good = 0;
        for (const PlantBackUpFile& file : files)
        {
            PlantFileInspection found;
            good += InspectPlantDatabase(file.Path, found) && found.Kind == PlantFileKind::Current ? 1 : 0;
        }
        return good;
    }

    std::string Place = Scratch.File("backups");
    PlantBackUpRotation Rotation;
};

} // namespace support
