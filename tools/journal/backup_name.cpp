#include "journal/backup_name.h"

#include "plant_database.h"
#include "system.h"

#include <filesystem>

std::string BackUpName(const std::string& path, const std::string& occasion)
{
    const std::string name = path + ".before-" + occasion + '-' + PlantEventCurrentDate();
    std::string free = name;
    for (int number = 2; std::filesystem::exists(std::filesystem::symlink_status(plant_file::PathOfText(free)));
         ++number)
        free = name + "-" + std::to_string(number);
    return free;
}
