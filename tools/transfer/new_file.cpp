#include "transfer/new_file.h"

#include "journal/file_descriptor.h"
#include "refusal.h"
#include "terminal/interrupt.h"
#include "transfer/temporary_name.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

[[noreturn]] void FailToWrite(const std::filesystem::path& path, const std::string& step)
{
    throw Refusal(path.string() + ": " + step + ": " + std::strerror(errno) +
                  "; nothing was written; check the destination, or name another");
}

} // namespace

void WriteFile(const std::filesystem::path& path, const std::string& bytes)
{
    constexpr mode_t everyone = 0666; // less the umask
    const FileDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, everyone));
    if (!file.IsOpen())
        FailToWrite(path, "creating");
    for (std::size_t written = 0; written < bytes.size();)
    {
        const ssize_t count = write(file.Number, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno != EINTR)
            FailToWrite(path, "writing");
        written += count > 0 ? static_cast<std::size_t>(count) : 0;
        StopIfInterrupted();
    }
    if (fsync(file.Number) != 0)
        FailToWrite(path, "syncing");
}

void MakeDirectory(const std::filesystem::path& path)
{
    constexpr mode_t everyone = 0777; // less the umask
    if (mkdir(path.c_str(), everyone) != 0)
        FailToWrite(path, "creating");
}

void WriteAtomically(const std::string& destination, Existing existing,
                     const std::function<void(const std::filesystem::path&)>& write)
{
    std::error_code ignored; // a destination that cannot be examined cannot be written either
    if (existing == Existing::Keep && std::filesystem::exists(std::filesystem::symlink_status(destination, ignored)))
        throw Refusal(destination + ": already exists; nothing was written; name another destination");
    const TemporaryName partial(destination + ".partial-");
    write(partial.Path());
    // Without the flag, what another process created meanwhile is replaced.
    const unsigned flags = existing == Existing::Keep ? RENAME_NOREPLACE : 0;
    if (renameat2(AT_FDCWD, partial.Path().c_str(), AT_FDCWD, destination.c_str(), flags) != 0)
        FailToWrite(destination, "renaming");
}
