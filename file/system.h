// What this library and the command need of the operating system. The files system_*.cpp implement it. Of the source
// files, only they and tools/terminal/console_*.cpp contain code for one system.
//
// A function that returns false has failed, and LastSystemError() has the reason until the next call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace plant_file
{

std::error_code LastSystemError();

// ---- Paths

// Every path outside this interface is UTF-8. On Windows, the prefix \\?\ is removed.
std::filesystem::path PathOfText(const std::string& text);
std::string TextOfPath(const std::filesystem::path& path);

// The path without symbolic links, "." and "..", and on Windows in the case of letters that the disk has. The parts
// that do not exist stay as they are.
std::filesystem::path CanonicalPath(const std::filesystem::path& path);

// Calls `fail` with the reason where the system cannot have a file of that name, although it may find one.
void RequirePossibleName(const std::filesystem::path& path,
                         void (*fail)(const std::string& step, const std::string& reason));

// ---- Files

enum class Opening
{
    Read,            // an existing file
    ReadWrite,       // an existing file
    CreateNew,       // fails where the name exists
    CreateOrOpen,    //
    CreateOrTruncate //
};

// Who may use a new file or directory.
enum class Access
{
    Owner,
    Everyone // less what the user has excluded, as by umask
};

enum class FileLock
{
    Held,
    Taken,      // another descriptor holds the lock
    Unavailable // the file is not open, or the file system has no such locks
};

// An open file, closed at the end of its scope. A child process does not inherit it. Opening does not follow a symbolic
// link in the last part of a path, and does not wait for the other end of a pipe.
class OpenedFile
{
  public:
    OpenedFile() = default;
    OpenedFile(const std::filesystem::path& path, Opening opening, Access access);
    ~OpenedFile() { Close(); }
    OpenedFile(OpenedFile&& other) noexcept;
    OpenedFile& operator=(OpenedFile&& other) noexcept;
    OpenedFile(const OpenedFile&) = delete;
    OpenedFile& operator=(const OpenedFile&) = delete;

    // Creates a file that only its owner may use. `path` receives six random letters or digits at its end.
    static OpenedFile CreateTemporary(std::filesystem::path& path);

    bool IsOpen() const { return Number != None; }
    // True also where no file is open.
    bool Close();
    // Returns once the contents are on the disk.
    bool Sync() const;
    bool SetPermissions(std::filesystem::perms permissions) const;
    // Locks the file against other descriptors, until this one is closed. Does not wait.
    FileLock TryLock() const;
    // Whether the file is still the one at `path`. False where either cannot be examined.
    bool IsAt(const std::filesystem::path& path) const;
    // Whether a descriptor of another process holds a lock of any kind.
    bool IsLockedByAnother() const;
    // The number of bytes that were read, 0 at the end of the file; nothing after a failure.
    std::optional<std::size_t> Read(char* bytes, std::size_t most) const;
    // The number of bytes that were written, 0 where a signal arrived first; nothing after a failure.
    std::optional<std::size_t> Write(std::string_view bytes) const;

  private:
    static constexpr std::intptr_t None = -1;

    std::intptr_t Number = None; // of a file descriptor; on Windows a handle
};

// ---- Directories

class DirectoryStream;

// An open directory.
class OpenedDirectory
{
  public:
    explicit OpenedDirectory(const std::filesystem::path& path);
    ~OpenedDirectory();
    OpenedDirectory(const OpenedDirectory&) = delete;
    OpenedDirectory& operator=(const OpenedDirectory&) = delete;

    bool IsOpen() const;
    // The name of the next file in it, empty after the last one; nothing after a failure. Unlike
    // std::filesystem::directory_iterator, it throws std::bad_alloc where memory runs out: libstdc++'s ends the
    // program.
    std::optional<std::filesystem::path> NextName() const;
    // Returns once the names in it are on the disk.
    bool Sync() const;

  private:
    std::unique_ptr<DirectoryStream> Stream;
};

// Fails where the name exists.
bool AddDirectory(const std::filesystem::path& path, Access access);

// ---- Names

// Replaces a file at `destination`.
bool RenameReplacing(const std::filesystem::path& from, const std::filesystem::path& destination);

// Replaces a file that this program has open. `close` closes it: before the call where the system cannot replace an
// open file, otherwise after it. It is not called where the system failed first.
bool RenameReplacingOpen(const std::filesystem::path& from, const std::filesystem::path& destination,
                         const std::function<void()>& close);

// Fails where `destination` exists. `from` may be a file or a directory; a file may keep its earlier name, too.
bool RenameWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& destination);

// Removes a file, even if it is read-only. Whether the call removed the file: false where no file has the name, for
// another process may have removed it meanwhile. Nothing after a failure.
std::optional<bool> RemoveFile(const std::filesystem::path& path);

// The size of a regular file. Nothing where the path names another kind of file, or a link, or cannot be examined.
std::optional<std::int64_t> SizeOfRegularFile(const std::filesystem::path& path);

// A number that no other process of this system has at the same time.
std::int64_t ProcessNumber();

// ---- Time

// Writes the time in the time zone that the user has set by now.
void ToLocalTime(std::time_t moment, std::tm& local);

} // namespace plant_file
