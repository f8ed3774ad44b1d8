#include "part_file.h"

#include "access.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace plant_file
{

namespace
{

constexpr std::string_view PartSuffix = ".part-";
constexpr std::string_view RandomSuffix = "XXXXXX"; // replaced by mkostemp
constexpr std::string_view CopySuffix = "-copy";

std::string CopyOf(const std::string& lock)
{
    return lock + std::string(CopySuffix);
}

// Whether the file still has a name. False if it cannot be examined.
bool HasName(int descriptor)
{
    struct stat status = {};
    fstat(descriptor, &status);
    return status.st_nlink > 0;
}

// Whether the file is an empty regular file, like a lock file. False if it cannot be examined.
bool IsEmptyFile(const std::string& path)
{
    struct stat status = {};
    lstat(path.c_str(), &status);
    return S_ISREG(status.st_mode) && status.st_size == 0;
}

bool IsLockName(std::string_view name, std::string_view beginning)
{
    return name.size() == beginning.size() + RandomSuffix.size() && name.substr(0, beginning.size()) == beginning &&
           std::all_of(name.begin() + beginning.size(), name.end(),
                       [](unsigned char c) { return std::isalnum(c) != 0; });
}

// Removes a lock file that no process has locked, and its copy. The owner may be alive in two cases. Either it has
// created the file but not locked it yet: then it finds the file removed and creates another. Or it has finished since
// the directory was read: then the file has no name, and the names may belong to other files by now.
void RemoveUnlessLocked(const std::string& lock)
{
    const FileDescriptor descriptor(OpenFile(lock, O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
    if (flock(descriptor.Get(), LOCK_EX | LOCK_NB) != 0 || !HasName(descriptor.Get()))
        return;
    unlink(CopyOf(lock).c_str()); // first, so that a kill between the two leaves the lock file for the next backup
    unlink(lock.c_str());
}

// Files that cannot be listed or removed stay.
void RemoveOrphans(const std::filesystem::path& destination)
{
    const std::string beginning = destination.filename().native() + std::string(PartSuffix);
    const std::filesystem::path parent = destination.parent_path();
    // Not std::filesystem::directory_iterator: libstdc++'s ends the program where memory runs out.
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(parent.c_str()), closedir);
    if (directory == nullptr)
        return;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread has this directory stream
    while (const dirent* entry = readdir(directory.get()))
        if (IsLockName(entry->d_name, beginning))
            if (const std::string lock = parent / entry->d_name; IsEmptyFile(lock))
                RemoveUnlessLocked(lock);
}

// False where another backup has locked or removed the file, between its creation and this call. A file system may
// have no such locks: the file then stays unlocked, and no other backup can lock and remove it either.
bool LockNewFile(int descriptor)
{
    const bool isTaken = flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    return !isTaken && HasName(descriptor);
}

} // namespace

int OpenFile(const std::string& path, int flags)
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): the system has no other form of it
    return open(path.c_str(), flags | O_CLOEXEC, S_IRUSR | S_IWUSR);
}

FileDescriptor::~FileDescriptor()
{
    Replace(-1);
}

bool FileDescriptor::Replace(int number)
{
    const int previous = std::exchange(Number, number);
    int result = 0;
    if (previous != -1)
        result = close(previous);
    return result == 0;
}

PartFile::PartFile() : LockDescriptor(-1), CopyDescriptor(-1) {}

PartFile::PartFile(const std::filesystem::path& destination) : PartFile()
{
    constexpr const char* step = "creating a temporary file";
    RemoveOrphans(destination);
    do
    {
        Lock = destination.native() + std::string(PartSuffix) + std::string(RandomSuffix);
        LockDescriptor.Replace(mkostemp(Lock.data(), O_CLOEXEC));
        RequireSystemCall(LockDescriptor.Get() != -1, step);
    } while (!LockNewFile(LockDescriptor.Get()));
    std::string copy = CopyOf(Lock);
    CopyDescriptor.Replace(OpenFile(copy, O_RDWR | O_CREAT | O_EXCL));
    RequireSystemCall(CopyDescriptor.Get() != -1, step);
    Copy = std::move(copy);
}

PartFile::~PartFile()
{
    CopyDescriptor.Replace(-1);
    unlink(Copy.c_str());
    if (LockDescriptor.Get() != -1)
        unlink(Lock.c_str()); // while it is locked, so that no other backup takes it for an orphan
}

void PartFile::Finish(mode_t permissions)
{
    constexpr const char* step = "syncing the copy";
    RequireSystemCall(fchmod(CopyDescriptor.Get(), permissions) == 0, step);
    RequireSystemCall(fsync(CopyDescriptor.Get()) == 0, step);
    RequireSystemCall(CopyDescriptor.Replace(-1), step);
}

} // namespace plant_file
