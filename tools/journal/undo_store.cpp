#include "journal/undo_store.h"

#include "journal/file_descriptor.h"
#include "journal/path.h"
#include "refusal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

[[noreturn]] void Fail(const std::string& path, const std::string& step)
{
    throw Refusal(path + ": " + step + ": " + std::strerror(errno) +
                  "; check the permissions and the free space of the disk");
}

std::string CanonicalPath(const std::string& journal)
{
    std::error_code error;
    const std::filesystem::path path = std::filesystem::canonical(journal, error);
    if (error)
        throw Refusal(journal + ": " + error.message() + "; check the path");
    return path.string();
}

void WriteSynced(const std::string& path, std::string_view bytes)
{
    const FileDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file.IsOpen())
        Fail(path, "creating");
    while (!bytes.empty())
    {
        const ssize_t written = write(file.Number, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            Fail(path, "writing");
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    if (fsync(file.Number) != 0)
        Fail(path, "syncing");
}

// Returns nothing where the file does not exist.
std::optional<std::string> ReadFile(const std::string& path)
{
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file.IsOpen() && (errno == ENOENT || errno == ENOTDIR))
        return std::nullopt;
    if (!file.IsOpen())
        Fail(path, "opening");
    std::string bytes;
    std::array<char, 65536> part = {};
    for (ssize_t count = 1; count != 0;)
    {
        count = read(file.Number, part.data(), part.size());
        if (count < 0 && errno != EINTR)
            Fail(path, "reading");
        bytes.append(part.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return bytes;
}

void Rename(const std::string& from, const std::string& destination)
{
    if (std::rename(from.c_str(), destination.c_str()) != 0)
        Fail(from, "renaming");
}

} // namespace

UndoStore::UndoStore(const std::string& journal)
    : CanonicalJournal(CanonicalPath(journal)), Directory(UndoPath() / StableHash(CanonicalJournal))
{
}

std::string UndoStore::TemporaryPrefix() const
{
    CreateDirectory();
    return (Directory / "copy.db-").string();
}

std::optional<UndoRecord> UndoStore::Load() const
{
    const std::optional<std::string> bytes = ReadFile(RecordPath());
    if (!bytes)
        return std::nullopt;
    UndoRecord record = Decoded(*bytes, RecordPath());
    if (record.Journal != CanonicalJournal)
        throw Refusal(RecordPath() + ": the stored undo step belongs to the journal " + record.Journal +
                      "; nothing was changed; name that journal with --file");
    return record;
}

void UndoStore::Save(const UndoRecord& record, const std::string& copy) const
{
    CreateDirectory();
    const std::string part = RecordPath() + ".part"; // no other process writes to it: the journal is locked
    WriteSynced(part, Encoded(record));
    if (!copy.empty())
        Rename(copy, CopyPath());
    Rename(part, RecordPath());
    SyncDirectory();
    if (copy.empty())
        unlink(CopyPath().c_str());
}

void UndoStore::Remove() const
{
    unlink(RecordPath().c_str());
    unlink(CopyPath().c_str());
}

void UndoStore::CreateDirectory() const
{
    std::filesystem::path created;
    for (const std::filesystem::path& name : Directory)
    {
        created /= name;
        const int error = mkdir(created.c_str(), 0700) == 0 ? 0 : errno;
        if (std::error_code ignored; error != 0 && !std::filesystem::is_directory(created, ignored))
            throw Refusal(created.string() + ": creating the directory: " +
                          std::strerror(error == EEXIST ? ENOTDIR : error) + "; check the permissions");
    }
}

void UndoStore::SyncDirectory() const
{
    const FileDescriptor directory(open(Directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!directory.IsOpen() || fsync(directory.Number) != 0)
        Fail(Directory.string(), "syncing the directory");
}
