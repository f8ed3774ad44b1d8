#include "transfer/temporary_name.h"

#include "journal/file_descriptor.h"
#include "refusal.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <string_view>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

// The lock file of a temporary name, locked while this object lives.
class NameLock
{
  public:
    explicit NameLock(const std::string& name)
        : Path(name + std::string(Suffix)),
          File(open(Path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666)) // less the umask
    {
        if (!File.IsOpen())
        {
            Error = errno;
            return;
        }
        Locked = flock(File.Number, LOCK_EX | LOCK_NB) == 0;
        const bool isTaken = !Locked && errno == EWOULDBLOCK;
        struct stat opened = {};
        struct stat present = {};
        const bool isPresent = fstat(File.Number, &opened) == 0 && lstat(Path.c_str(), &present) == 0 &&
                               opened.st_dev == present.st_dev && opened.st_ino == present.st_ino;
        Free = !isTaken && isPresent; // another process may have removed the file before this one locked it
    }

    static constexpr std::string_view Suffix = ".lock";

    // The error number of the system if the lock file cannot be opened, otherwise 0.
    int OpenError() const { return Error; }
    // Whether no other process uses the name.
    bool IsFree() const { return Free; }
    // Whether other processes see that. Not every file system has such locks.
    bool IsLocked() const { return Free && Locked; }
    void RemoveFile() const { unlink(Path.c_str()); }

  private:
    std::string Path;
    FileDescriptor File;
    int Error = 0;
    bool Locked = false;
    bool Free = false;
};

namespace
{

struct LeftFiles
{
    bool HasLockFile = false;
    std::vector<std::filesystem::path> Files; // without the lock file
};

// Whether SQLite or BackUpPlantDatabase() appends `suffix` to the name of a file.
bool IsKnownSuffix(std::string_view suffix)
{
    constexpr std::string_view part = ".part-";
    constexpr std::string_view copy = "-copy";
    constexpr std::string_view letters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr std::size_t count = 6;
    if (!suffix.starts_with(part))
        return suffix.empty() || suffix == "-journal";
    if (suffix.ends_with(copy))
        suffix.remove_suffix(copy.size());
    suffix.remove_prefix(std::min(part.size(), suffix.size()));
    return suffix.size() == count && suffix.find_first_not_of(letters) == std::string_view::npos;
}

// Returns the files whose names consist of the prefix, a number and a known suffix, by the name without the suffix.
std::map<std::string, LeftFiles> FindLeftFiles(const std::string& prefix)
{
    std::map<std::string, LeftFiles> found;
    const std::string directory = std::filesystem::path(prefix).parent_path().string();
    const std::string begin = std::filesystem::path(prefix).filename().string();
    std::error_code ignored;
    std::filesystem::directory_iterator entry(directory.empty() ? "." : directory, ignored);
    for (; entry != std::filesystem::directory_iterator(); entry.increment(ignored))
    {
        const std::string name = entry->path().filename().string();
        const std::size_t after = std::min(name.find_first_not_of("0123456789", begin.size()), name.size());
        if (!name.starts_with(begin) || after == begin.size())
            continue;
        const std::string suffix = name.substr(after);
        const std::string number = name.substr(begin.size(), after - begin.size());
        if (suffix == NameLock::Suffix)
            found[prefix + number].HasLockFile = true;
        else if (IsKnownSuffix(suffix))
            found[prefix + number].Files.push_back(entry->path());
    }
    return found;
}

bool IsRegularFile(const std::filesystem::path& path)
{
    std::error_code ignored;
    return std::filesystem::is_regular_file(std::filesystem::symlink_status(path, ignored));
}

// Whether another process has a lock of either kind on the file. Earlier versions made no lock file.
bool IsLockedByAnother(const std::filesystem::path& path)
{
    if (!IsRegularFile(path))
        return false;
    const FileDescriptor file(open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW));
    if (!file.IsOpen())
        return false;
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET; // with a length of 0: the whole file
    return (flock(file.Number, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) ||
           (fcntl(file.Number, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK);
}

void RemoveUnusedFiles(const std::string& name, const LeftFiles& left)
{
    const NameLock lock(name);
    if (!lock.IsFree())
        return;
    if (lock.IsLocked() && std::none_of(left.Files.begin(), left.Files.end(), IsLockedByAnother))
        for (const std::filesystem::path& file : left.Files)
        {
            std::error_code ignored;
            if (left.HasLockFile || IsRegularFile(file)) // with a lock file, it may be the directory of an export
                std::filesystem::remove_all(file, ignored);
        }
    lock.RemoveFile();
}

} // namespace

TemporaryName::TemporaryName(const std::string& prefix)
{
    for (const auto& [name, left] : FindLeftFiles(prefix))
        RemoveUnusedFiles(name, left);
    for (pid_t number = getpid(); Lock == nullptr || !Lock->IsFree(); ++number)
    {
        Name = prefix + std::to_string(number);
        Lock = std::make_unique<NameLock>(Name);
        if (Lock->OpenError() != 0)
            throw Refusal(Name + ": creating: " + std::strerror(Lock->OpenError()) +
                          "; nothing was changed; check that its directory exists and is writable");
    }
}

TemporaryName::~TemporaryName()
{
    std::error_code ignored;
    std::filesystem::remove_all(Name, ignored);
    std::filesystem::remove(Name + "-journal", ignored);
    Lock->RemoveFile();
}
