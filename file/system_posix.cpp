// POSIX 2008, and what Linux and macOS have in addition where they have it.
#include "system.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
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

// NOLINTBEGIN(cppcoreguidelines-pro-type-vararg): the system has no other form of open and fcntl

// In the order of Opening.
constexpr std::array<int, 5> OpenFlags = {O_RDONLY | O_NONBLOCK, O_RDWR, O_RDWR | O_CREAT | O_EXCL, O_RDWR | O_CREAT,
                                          O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK};

int OpenDescriptor(const std::filesystem::path& path, Opening opening, Access access)
{
    constexpr mode_t owner = S_IRUSR | S_IWUSR;
    constexpr mode_t everyone = owner | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    const int flags = OpenFlags.at(static_cast<std::size_t>(opening)) | O_CLOEXEC | O_NOFOLLOW;
    return open(path.c_str(), flags, access == Access::Owner ? owner : everyone);
}

int CreateTemporaryDescriptor(char* name)
{
#ifdef _GNU_SOURCE
    return mkostemp(name, O_CLOEXEC);
#else
    const int descriptor = mkstemp(name);
    if (descriptor != -1)
        fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    return descriptor;
#endif
}

bool SyncDescriptor(int descriptor)
{
#ifdef F_FULLFSYNC // on macOS, fsync leaves the bytes in the cache of the disk
    if (fcntl(descriptor, F_FULLFSYNC) == 0)
        return true;
#endif
    return fsync(descriptor) == 0; // also where the file system has no F_FULLFSYNC
}

// NOLINTEND(cppcoreguidelines-pro-type-vararg)

bool RenameDirectoryWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& destination)
{
    // Where another process creates the name between the two calls, only an empty directory is replaced.
    struct stat present = {};
    if (lstat(destination.c_str(), &present) == 0)
        errno = EEXIST;
    return errno == ENOENT && std::rename(from.c_str(), destination.c_str()) == 0;
}

} // namespace

std::error_code LastSystemError()
{
    return {errno, std::generic_category()};
}

std::filesystem::path PathOfText(const std::string& text)
{
    return text;
}

std::string TextOfPath(const std::filesystem::path& path)
{
    return path.native();
}

std::filesystem::path CanonicalPath(const std::filesystem::path& path)
{
    return std::filesystem::weakly_canonical(path);
}

void RequirePossibleName(const std::filesystem::path& /*path*/,
                         void (* /*fail*/)(const std::string& step, const std::string& reason))
{
    // The system itself refuses each name that it cannot have.
}

OpenedFile::OpenedFile(const std::filesystem::path& path, Opening opening, Access access)
    : Number(OpenDescriptor(path, opening, access))
{
}

OpenedFile::OpenedFile(OpenedFile&& other) noexcept : Number(std::exchange(other.Number, None)) {}

OpenedFile& OpenedFile::operator=(OpenedFile&& other) noexcept
{
    if (this != &other)
    {
        Close();
        Number = std::exchange(other.Number, None);
    }
    return *this;
}

OpenedFile OpenedFile::CreateTemporary(std::filesystem::path& path)
{
    OpenedFile file;
    std::string name = path.native() + "XXXXXX";
    file.Number = CreateTemporaryDescriptor(name.data());
    try
    {
        path = name;
    }
    catch (...) // out of memory: a path is parsed
    {
        unlink(name.c_str());
        throw;
    }
    return file;
}

bool OpenedFile::Close()
{
    const std::intptr_t number = std::exchange(Number, None);
    return number == None || close(static_cast<int>(number)) == 0;
}

bool OpenedFile::Sync() const
{
    return SyncDescriptor(static_cast<int>(Number));
}

bool OpenedFile::SetPermissions(std::filesystem::perms permissions) const
{
    return fchmod(static_cast<int>(Number), static_cast<mode_t>(permissions)) == 0;
}

FileLock OpenedFile::TryLock() const
{
    if (flock(static_cast<int>(Number), LOCK_EX | LOCK_NB) == 0)
        return FileLock::Held;
    return errno == EWOULDBLOCK ? FileLock::Taken : FileLock::Unavailable;
}

bool OpenedFile::IsAt(const std::filesystem::path& path) const
{
    struct stat opened = {};
    struct stat present = {};
    return fstat(static_cast<int>(Number), &opened) == 0 && lstat(path.c_str(), &present) == 0 &&
           opened.st_dev == present.st_dev && opened.st_ino == present.st_ino;
}

bool OpenedFile::IsLockedByAnother() const
{
    if (!IsOpen())
        return false;
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET; // with a length of 0: the whole file
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): the system has no other form of it
    const bool hasRange = fcntl(static_cast<int>(Number), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    return hasRange || TryLock() == FileLock::Taken;
}

std::optional<std::size_t> OpenedFile::Read(char* bytes, std::size_t most) const
{
    ssize_t count = -1;
    do
        count = read(static_cast<int>(Number), bytes, most);
    while (count < 0 && errno == EINTR);
    return count < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(count));
}

std::optional<std::size_t> OpenedFile::Write(std::string_view bytes) const
{
    const ssize_t count = write(static_cast<int>(Number), bytes.data(), bytes.size());
    if (count < 0)
        return errno == EINTR ? std::optional<std::size_t>(0) : std::nullopt;
    return static_cast<std::size_t>(count);
}

class DirectoryStream
{
  public:
    explicit DirectoryStream(const std::filesystem::path& path) : Opened(opendir(path.c_str())) {}
    ~DirectoryStream()
    {
        if (Opened != nullptr)
            closedir(Opened);
    }
    DirectoryStream(const DirectoryStream&) = delete;
    DirectoryStream& operator=(const DirectoryStream&) = delete;

    DIR* const Opened;
};

OpenedDirectory::OpenedDirectory(const std::filesystem::path& path) : Stream(std::make_unique<DirectoryStream>(path)) {}

OpenedDirectory::~OpenedDirectory() = default;

bool OpenedDirectory::IsOpen() const
{
    return Stream->Opened != nullptr;
}

std::optional<std::filesystem::path> OpenedDirectory::NextName() const
{
    errno = 0; // the end of the directory does not change it
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread has this directory stream
    if (const dirent* const entry = readdir(Stream->Opened))
        return entry->d_name;
    return errno == 0 ? std::optional<std::filesystem::path>(std::in_place) : std::nullopt;
}

bool OpenedDirectory::Sync() const
{
    return SyncDescriptor(dirfd(Stream->Opened));
}

bool AddDirectory(const std::filesystem::path& path, Access access)
{
    return mkdir(path.c_str(), access == Access::Owner ? S_IRWXU : S_IRWXU | S_IRWXG | S_IRWXO) == 0;
}

bool RenameReplacing(const std::filesystem::path& from, const std::filesystem::path& destination)
{
    return std::rename(from.c_str(), destination.c_str()) == 0;
}

bool RenameReplacingOpen(const std::filesystem::path& from, const std::filesystem::path& destination,
                         const std::function<void()>& close)
{
    if (!RenameReplacing(from, destination))
        return false;
    close();
    return true;
}

bool RenameWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& destination)
{
    std::error_code ignored;
    if (std::filesystem::is_directory(from, ignored))
        return RenameDirectoryWithoutReplacing(from, destination);
    if (link(from.c_str(), destination.c_str()) == 0)
        return true;
    // Some file systems have no hard links. There an empty file, which must not exist yet, reserves the name.
    const OpenedFile reserved(destination, Opening::CreateNew, Access::Owner);
    if (!reserved.IsOpen())
        return false;
    if (std::rename(from.c_str(), destination.c_str()) == 0)
        return true;
    const int error = errno;
    unlink(destination.c_str());
    errno = error;
    return false;
}

std::optional<bool> RemoveFile(const std::filesystem::path& path)
{
    if (std::remove(path.c_str()) == 0)
        return true;
    return errno == ENOENT ? std::optional(false) : std::nullopt;
}

std::optional<std::int64_t> SizeOfRegularFile(const std::filesystem::path& path)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return status.st_size;
}

std::int64_t ProcessNumber()
{
    return getpid();
}

void ToLocalTime(std::time_t moment, std::tm& local)
{
    tzset();
    localtime_r(&moment, &local);
}

} // namespace plant_file
