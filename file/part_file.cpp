#include "part_file.h"

#include "access.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace plant_file
{

namespace
{

constexpr std::string_view PartSuffix = ".part-";
constexpr std::string_view CopySuffix = "-copy";
constexpr std::size_t RandomLetters = 6;

std::filesystem::path CopyOf(std::filesystem::path lock)
{
    lock += CopySuffix;
    return lock;
}

bool IsLockName(std::string_view name, std::string_view beginning)
{
    constexpr std::string_view letters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    return name.size() == beginning.size() + RandomLetters && name.substr(0, beginning.size()) == beginning &&
           name.find_first_not_of(letters, beginning.size()) == std::string_view::npos;
}

// Removes a lock file that no process has locked, and its copy. The owner may be alive in two cases. Either it has
// created the file but not locked it yet: then it finds the file removed and creates another. Or it has finished since
// the directory was read: then the file has no name, and the names may belong to other files by now.
void RemoveUnlessLocked(const std::filesystem::path& lock)
{
    const OpenedFile file(lock, Opening::Read, Access::Owner);
    if (file.TryLock() != FileLock::Held || !file.IsAt(lock))
        return;
    RemoveFile(CopyOf(lock)); // first, so that a kill between the two leaves the lock file for the next backup
    RemoveFile(lock);
}

// False where another backup has locked or removed the file, between its creation and this call. A file system may
// have no such locks: the file then stays unlocked, and no other backup can lock and remove it either.
bool LockNewFile(const OpenedFile& file, const std::filesystem::path& path)
{
    return file.TryLock() != FileLock::Taken && file.IsAt(path);
}

// Removes a copy without a lock file, as a power loss can leave it. The lock file is created first, so that no other
// backup uses the names meanwhile.
void RemoveWithoutLock(const std::filesystem::path& lock)
{
    const std::filesystem::path copy = CopyOf(lock);
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(copy, ignored)))
        return;
    const OpenedFile file(lock, Opening::CreateNew, Access::Owner);
    if (!file.IsOpen() || !LockNewFile(file, lock))
        return;
    RemoveFile(copy);
    RemoveFile(lock);
}

// Files that cannot be listed or removed stay.
void RemoveOrphans(const std::filesystem::path& destination)
{
    const std::string beginning = TextOfPath(destination.filename()) + std::string(PartSuffix);
    const std::filesystem::path parent = destination.parent_path();
    const OpenedDirectory directory(parent);
    if (!directory.IsOpen())
        return;
    for (auto name = directory.NextName(); name && !name->empty(); name = directory.NextName())
    {
        std::string text = TextOfPath(*name);
        if (IsLockName(text, beginning))
        {
            if (const std::filesystem::path lock = parent / *name; SizeOfRegularFile(lock) == 0)
                RemoveUnlessLocked(lock);
        }
        else if (text.size() > CopySuffix.size() &&
                 text.compare(text.size() - CopySuffix.size(), CopySuffix.size(), CopySuffix) == 0)
        {
            text.resize(text.size() - CopySuffix.size());
            if (IsLockName(text, beginning))
                RemoveWithoutLock(parent / PathOfText(text));
        }
    }
}

} // namespace

PartFile::PartFile(const std::filesystem::path& destination) : PartFile()
{
    constexpr const char* step = "creating a temporary file";
    RemoveOrphans(destination);
    do
    {
        Lock = destination;
        Lock += PartSuffix;
        LockFile = OpenedFile::CreateTemporary(Lock);
        RequireSystemCall(LockFile.IsOpen(), step);
    } while (!LockNewFile(LockFile, Lock));
    std::filesystem::path copy = CopyOf(Lock);
    CopyFile = OpenedFile(copy, Opening::CreateNew, Access::Owner);
    RequireSystemCall(CopyFile.IsOpen(), step);
    Copy = std::move(copy);
}

PartFile::~PartFile()
{
    CopyFile.Close();
    RemoveFile(Copy);
    if (LockFile.IsOpen())
        RemoveFile(Lock); // while it is locked, so that no other backup takes it for an orphan
}

void PartFile::Finish(std::filesystem::perms permissions)
{
    constexpr const char* step = "syncing the copy";
    RequireSystemCall(CopyFile.SetPermissions(permissions), step);
    RequireSystemCall(CopyFile.Sync(), step);
    RequireSystemCall(CopyFile.Close(), step);
}

} // namespace plant_file
