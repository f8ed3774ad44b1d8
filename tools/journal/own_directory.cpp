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

bool IsDirectory(const std::filesystem::path& path)
{
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

void Create(const std::filesystem::path& directory)
{
    // Opened first, so that no new directory is left in one that cannot be listed and synced.
    const OpenedDirectory parent(directory.parent_path());
    if (!parent.IsOpen())
        FailToCreate(directory, LastSystemError());
    if (!AddDirectory(directory, Access::Owner))
    {
        const std::error_code error = LastSystemError();
        if (IsDirectory(directory)) // another process has created it
            return;
        const bool isFile = error == std::errc::file_exists;
        FailToCreate(directory, isFile ? std::make_error_code(std::errc::not_a_directory) : error);
    }
    if (!parent.Sync())
        FailToCreate(directory, LastSystemError());
}

} // namespace

void CreateOwnDirectory(const std::filesystem::path& directory)
{
    std::filesystem::path created = directory.root_path();
    for (const std::filesystem::path& name : directory.relative_path())
    {
        created /= name;
        if (!IsDirectory(created))
            Create(created);
    }
}
