#include "support/file_recorder.h"

#include <cerrno>
#include <cstdarg>
#include <filesystem>
#include <utility>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace support
{

namespace
{

thread_local FileRecorder* recorder = nullptr;

// Where the open file is now. The path of a removed file ends with " (deleted)".
std::string PathOf(int file)
{
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file)).string();
}

template <typename Result, typename... Arguments> Result CallSystem(const char* name, Arguments... arguments)
{
    return reinterpret_cast<Result (*)(Arguments...)>(dlsym(RTLD_NEXT, name))(arguments...);
}

// Records a call that has succeeded. Leaves errno as it is.
template <typename Result, typename Record> Result Recorded(Result result, const Record& record)
{
    const int error = errno;
    if (recorder != nullptr && result != -1)
        record(*recorder, result);
    errno = error;
    return result;
}

// Opens a file with the system's function of this name. A call that can create the file has its permissions, too.
int OpenRecorded(const char* function, const char* name, int flags, va_list arguments)
{
    if ((flags & O_CREAT) == 0)
        return CallSystem<int>(function, name, flags);
    const int file = CallSystem<int>(function, name, flags, va_arg(arguments, mode_t));
    return Recorded(file, [&](FileRecorder& to, int) { to.Created(name); });
}

} // namespace

FileRecorder::FileRecorder(const std::string& directory) : Root(std::filesystem::canonical(directory).string())
{
    recorder = this;
}

FileRecorder::~FileRecorder()
{
    recorder = nullptr;
}

bool FileRecorder::IsInIt(const std::string& path) const
{
    return (path == Root || path.starts_with(Root + '/')) && !path.ends_with(" (deleted)");
}

std::string FileRecorder::NameOf(const std::string& path) const
{
    return path == Root ? std::string() : path.substr(Root.size() + 1);
}

void FileRecorder::Add(const char* call, std::function<bool(SimulatedDisk&)> repeat)
{
    Recorded.push_back({call, std::move(repeat)});
}

void FileRecorder::Linked(const char* from, const char* to)
{
    if (IsInIt(from) && IsInIt(to))
        Add("link",
            [first = NameOf(from), second = NameOf(to)](SimulatedDisk& disk) { return disk.Link(first, second); });
}

void FileRecorder::Renamed(const char* from, const char* to)
{
    if (IsInIt(from) && IsInIt(to))
        Add("rename",
            [first = NameOf(from), second = NameOf(to)](SimulatedDisk& disk) { return disk.Rename(first, second); });
}

void FileRecorder::Synced(int file)
{
    const std::string path = PathOf(file);
    if (!IsInIt(path))
        return;
    const std::string name = NameOf(path);
    if (std::filesystem::is_directory(path))
        Add("sync of a directory", [name](SimulatedDisk& disk) { return disk.SyncDirectory(name); });
    else
        Add("sync", [name](SimulatedDisk& disk) { return disk.Sync(disk.Open(name)); });
}

void FileRecorder::Created(const char* name)
{
    if (IsInIt(name))
        Add("creation", [created = NameOf(name)](SimulatedDisk& disk) { return disk.Open(created) != 0; });
}

void FileRecorder::Removed(const char* name)
{
    if (IsInIt(name))
        Add("removal", [removed = NameOf(name)](SimulatedDisk& disk) { return disk.Unlink(removed); });
}

void FileRecorder::AddedDirectory(const char* name)
{
    if (IsInIt(name))
        Add("new directory", [added = NameOf(name)](SimulatedDisk& disk) { return disk.AddDirectory(added); });
}

void FileRecorder::Wrote(int file, const void* bytes, std::size_t count, std::size_t offset)
{
    const std::string path = PathOf(file);
    if (IsInIt(path))
        Add("write", [name = NameOf(path), text = std::string(static_cast<const char*>(bytes), count),
                      offset](SimulatedDisk& disk) { return disk.Write(disk.Open(name), offset, text); });
}

void FileRecorder::Truncated(int file, std::size_t size)
{
    const std::string path = PathOf(file);
    if (IsInIt(path))
        Add("truncation",
            [name = NameOf(path), size](SimulatedDisk& disk) { return disk.Truncate(disk.Open(name), size); });
}

} // namespace support

using support::CallSystem;
using support::FileRecorder;
using support::OpenRecorded;
using support::Recorded;

extern "C"
{
    // SQLite and the library call the functions that end with 64 where the system has them.

    int open(const char* name, int flags, ...)
    {
        va_list arguments;
        va_start(arguments, flags);
        const int file = OpenRecorded("open", name, flags, arguments);
        va_end(arguments);
        return file;
    }

    int open64(const char* name, int flags, ...)
    {
        va_list arguments;
        va_start(arguments, flags);
        const int file = OpenRecorded("open64", name, flags, arguments);
        va_end(arguments);
        return file;
    }

    int unlink(const char* name) noexcept
    {
        const int result = CallSystem<int>("unlink", name);
        return Recorded(result, [&](FileRecorder& to, int) { to.Removed(name); });
    }

    int fdatasync(int file)
    {
        return Recorded(CallSystem<int>("fdatasync", file), [&](FileRecorder& to, int) { to.Synced(file); });
    }

    int ftruncate64(int file, off64_t size) noexcept
    {
        const int result = CallSystem<int>("ftruncate64", file, size);
        return Recorded(result, [&](FileRecorder& to, int) { to.Truncated(file, static_cast<std::size_t>(size)); });
    }

    ssize_t write(int file, const void* bytes, size_t count)
    {
        const off_t offset = support::recorder != nullptr ? lseek(file, 0, SEEK_CUR) : -1; // -1: a pipe
        const auto written = CallSystem<ssize_t>("write", file, bytes, count);
        const auto record = [&](FileRecorder& to, ssize_t size)
        {
            if (offset != -1)
                to.Wrote(file, bytes, static_cast<std::size_t>(size), static_cast<std::size_t>(offset));
        };
        return Recorded(written, record);
    }

    ssize_t pwrite64(int file, const void* bytes, size_t count, off64_t offset)
    {
        const auto written = CallSystem<ssize_t>("pwrite64", file, bytes, count, offset);
        const auto record = [&](FileRecorder& to, ssize_t size)
        { to.Wrote(file, bytes, static_cast<std::size_t>(size), static_cast<std::size_t>(offset)); };
        return Recorded(written, record);
    }
}
