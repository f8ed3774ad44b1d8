#include "transfer/temporary_name.h"

#include "refusal.h"
#include "system.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <string_view>
#include <system_error>
#include <vector>

using namespace plant_file;

// The lock file of a temporary name, locked while this object lives.
class NameLock
{
  public:
    explicit NameLock(const std::string& name)
        : Path(PathOfText(name + std::string(Suffix))), File(Path, Opening::CreateOrOpen, Access::Everyone)
    {
        if (!File.IsOpen())
        {
            Error = LastSystemError();
            return;
        }
        const FileLock lock = File.TryLock();
        Locked = lock == FileLock::Held;
        Free = lock != FileLock::Taken && File.IsAt(Path); // another process may have removed it before it was locked
    }

    static constexpr std::string_view Suffix = ".lock";

    // Why the lock file cannot be opened, where it cannot.
    const std::error_code& OpenError() const { return Error; }
    // Whether no other process uses the name.
    bool IsFree() const { return Free; }
    // Whether other processes see that. Not every file system has such locks.
    bool IsLocked() const { return Free && Locked; }
    void RemoveFile() const
    {
        std::error_code ignored;
        std::filesystem::remove(Path, ignored);
    }

  private:
    std::filesystem::path Path;
    OpenedFile File;
    std::error_code Error;
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
    const std::filesystem::path directory = PathOfText(prefix).parent_path();
    const std::string begin = TextOfPath(PathOfText(prefix).filename());
    std::error_code ignored;
    std::filesystem::directory_iterator entry(directory.empty() ? std::filesystem::path(".") : directory, ignored);
    for (; entry != std::filesystem::directory_iterator(); entry.increment(ignored))
    {
        const std::string name = TextOfPath(entry->path().filename());
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
    return OpenedFile(path, Opening::ReadWrite, Access::Owner).IsLockedByAnother();
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
    for (std::int64_t number = ProcessNumber(); Lock == nullptr || !Lock->IsFree(); ++number)
    {
        Name = prefix + std::to_string(number);
        Lock = std::make_unique<NameLock>(Name);
        if (Lock->OpenError())
            throw Refusal(Name + ": creating: " + Lock->OpenError().message() +
                          "; nothing was changed; check that its directory exists and is writable");
    }
}

TemporaryName::~TemporaryName()
{
    std::error_code ignored;
    std::filesystem::remove_all(PathOfText(Name), ignored);
    std::filesystem::remove(PathOfText(Name + "-journal"), ignored);
    Lock->RemoveFile();
}
