#include "journal/own_directory.h"

#include "refusal.h"
#include "system.h"

#include <string>
#include <system_error>

using namespace plant_file;

namespace
{

[[noreturn]] void FailToCreate(const std::filesystem::path& directory, const std::error_code& error)
{
    throw Refusal(TextOfPath(directory) + ": creating the directory: " + error.message() + "; check the permissions");
}

void SyncName(const std::filesystem::path& directory)
{
    const OpenedDirectory parent(directory.parent_path());
    if (!parent.IsOpen() || !parent.Sync())
        FailToCreate(directory, LastSystemError());
}

} // namespace

void CreateOwnDirectory(const std::filesystem::path& directory)
{
    std::filesystem::path created = directory.root_path();
    for (const std::filesystem::path& name : directory.relative_path())
    {
        created /= name;
        if (AddDirectory(created, Access::Owner))
        {
            SyncName(created);
            continue;
        }
        std::error_code error = LastSystemError();
        if (std::error_code ignored; std::filesystem::is_directory(created, ignored))
            continue;
        if (error == std::errc::file_exists)
            error = std::make_error_code(std::errc::not_a_directory);
        FailToCreate(created, error);
    }
}
