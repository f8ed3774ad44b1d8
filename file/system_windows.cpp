// Windows 10 and later. The permissions of a file come from its directory; only the read-only attribute is a file's
// own.
#include "system.h"

#include <algorithm>
#include <random>
#include <utility>

#include <windows.h>

namespace plant_file
{

namespace
{

bool IsSymbolicLink(const std::filesystem::path& path)
{
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(path.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return false;
    FindClose(search);
    return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && found.dwReserved0 == IO_REPARSE_TAG_SYMLINK;
}

HANDLE HandleOf(std::intptr_t number)
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the header has no type of Windows, so it keeps a handle as a number
    return reinterpret_cast<HANDLE>(number);
}

// Other programs may read, write, rename and remove the file meanwhile, as on other systems.
std::intptr_t OpenHandle(const std::filesystem::path& path, DWORD access, DWORD disposition)
{
    if (disposition != CREATE_NEW && IsSymbolicLink(path))
    {
        SetLastError(ERROR_CANT_RESOLVE_FILENAME);
        return -1;
    }
    return reinterpret_cast<std::intptr_t>(CreateFileW(path.c_str(), access,
                                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                                       disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

std::intptr_t OpenHandle(const std::filesystem::path& path, Opening opening)
{
    switch (opening)
    {
    case Opening::Read:
        return OpenHandle(path, GENERIC_READ, OPEN_EXISTING);
    case Opening::ReadWrite:
        return OpenHandle(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
    case Opening::CreateNew:
        return OpenHandle(path, GENERIC_READ | GENERIC_WRITE, CREATE_NEW);
    case Opening::CreateOrOpen:
        return OpenHandle(path, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
    case Opening::CreateOrTruncate:
        return OpenHandle(path, GENERIC_WRITE, CREATE_ALWAYS);
    }
    return -1;
}

bool LockBytes(HANDLE file, DWORD low, DWORD high)
{
    OVERLAPPED begin = {};
    return LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, low, high, &begin) != 0;
}

std::wstring RandomSuffix()
{
    constexpr std::wstring_view letters = L"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    std::random_device source;
    std::uniform_int_distribution<std::size_t> choice(0, letters.size() - 1);
    std::wstring text(6, L' ');
    std::generate(text.begin(), text.end(), [&] { return letters[choice(source)]; });
    return text;
}

// DeleteFileW refuses a read-only file, and other systems do not.
bool DeleteReadOnly(const std::filesystem::path& path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) == 0 ||
        SetFileAttributesW(path.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY)) == 0)
    {
        SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }
    if (DeleteFileW(path.c_str()) != 0)
        return true;
    const DWORD error = GetLastError();
    SetFileAttributesW(path.c_str(), attributes);
    SetLastError(error);
    return false;
}

// For a path below a file, Windows reports that the path does not exist.
bool LeadsThroughFile(std::filesystem::path path)
{
    for (; path.has_relative_path(); path = path.parent_path())
        if (const DWORD found = GetFileAttributesW(path.c_str()); found != INVALID_FILE_ATTRIBUTES)
            return (found & FILE_ATTRIBUTE_DIRECTORY) == 0;
    return false;
}

DWORD MostAtOnce(std::size_t bytes)
{
    constexpr std::size_t most = 0x40000000;
    return static_cast<DWORD>(std::min(bytes, most));
}

} // namespace

OpenedFile::OpenedFile(const std::filesystem::path& path, Opening opening, Access /*access*/)
    : Number(OpenHandle(path, opening))
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
    constexpr int most = 100;
    OpenedFile file;
    std::filesystem::path name;
    for (int attempt = 0; attempt < most; ++attempt)
    {
        name = path;
        name += RandomSuffix();
        file.Number = OpenHandle(name, Opening::CreateNew);
        if (file.IsOpen() || LastSystemError() != std::errc::file_exists)
            break;
    }
    path = std::move(name);
    return file;
}

bool OpenedFile::Close()
{
    const std::intptr_t number = std::exchange(Number, None);
    return number == None || CloseHandle(HandleOf(number)) != 0;
}

bool OpenedFile::Sync() const
{
    return FlushFileBuffers(HandleOf(Number)) != 0;
}

bool OpenedFile::SetPermissions(std::filesystem::perms permissions) const
{
    FILE_BASIC_INFO info = {};
    if ((permissions & std::filesystem::perms::owner_write) != std::filesystem::perms::none)
        return true;
    info.FileAttributes = FILE_ATTRIBUTE_READONLY;
    return SetFileInformationByHandle(HandleOf(Number), FileBasicInfo, &info, sizeof info) != 0;
}

FileLock OpenedFile::TryLock() const
{
    if (LockBytes(HandleOf(Number), 1, 0))
        return FileLock::Held;
    const DWORD error = GetLastError();
    return error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING ? FileLock::Taken : FileLock::Unavailable;
}

bool OpenedFile::IsAt(const std::filesystem::path& path) const
{
    FILE_STANDARD_INFO standard = {};
    if (GetFileInformationByHandleEx(HandleOf(Number), FileStandardInfo, &standard, sizeof standard) == 0 ||
        standard.DeletePending != 0)
        return false;
    OpenedFile present;
    present.Number = OpenHandle(path, 0, OPEN_EXISTING);
    BY_HANDLE_FILE_INFORMATION here = {};
    BY_HANDLE_FILE_INFORMATION there = {};
    return GetFileInformationByHandle(HandleOf(Number), &here) != 0 &&
           GetFileInformationByHandle(HandleOf(present.Number), &there) != 0 &&
           here.dwVolumeSerialNumber == there.dwVolumeSerialNumber && here.nFileIndexLow == there.nFileIndexLow &&
           here.nFileIndexHigh == there.nFileIndexHigh;
}

bool OpenedFile::IsLockedByAnother() const
{
    return IsOpen() && !LockBytes(HandleOf(Number), MAXDWORD, MAXDWORD) && GetLastError() == ERROR_LOCK_VIOLATION;
}

std::optional<std::size_t> OpenedFile::Read(char* bytes, std::size_t most) const
{
    DWORD count = 0;
    if (ReadFile(HandleOf(Number), bytes, MostAtOnce(most), &count, nullptr) == 0)
        return std::nullopt;
    return count;
}

std::optional<std::size_t> OpenedFile::Write(std::string_view bytes) const
{
    DWORD count = 0;
    if (WriteFile(HandleOf(Number), bytes.data(), MostAtOnce(bytes.size()), &count, nullptr) == 0)
        return std::nullopt;
    return count;
}

class DirectoryStream
{
  public:
    explicit DirectoryStream(const std::filesystem::path& path)
        : Search(FindFirstFileW((path / L"*").c_str(), &Found)), HasName(Search != INVALID_HANDLE_VALUE)
    {
        if (const DWORD error = GetLastError(); !HasName)
        {
            IsEmpty = error == ERROR_FILE_NOT_FOUND; // in the root of a drive not even "." is found
            SetLastError(LeadsThroughFile(path) ? ERROR_DIRECTORY : error);
        }
    }
    ~DirectoryStream()
    {
        if (Search != INVALID_HANDLE_VALUE)
            FindClose(Search);
    }
    DirectoryStream(const DirectoryStream&) = delete;
    DirectoryStream& operator=(const DirectoryStream&) = delete;

    WIN32_FIND_DATAW Found = {};
    const HANDLE Search;
    bool HasName; // in Found, which NextName() has not returned yet
    bool IsEmpty = false;
};

OpenedDirectory::OpenedDirectory(const std::filesystem::path& path) : Stream(std::make_unique<DirectoryStream>(path)) {}

OpenedDirectory::~OpenedDirectory() = default;

bool OpenedDirectory::IsOpen() const
{
    return Stream->Search != INVALID_HANDLE_VALUE || Stream->IsEmpty;
}

std::optional<std::filesystem::path> OpenedDirectory::NextName() const
{
    if (Stream->IsEmpty)
        return std::filesystem::path();
    if (std::exchange(Stream->HasName, false) || FindNextFileW(Stream->Search, &Stream->Found) != 0)
        return Stream->Found.cFileName;
    return GetLastError() == ERROR_NO_MORE_FILES ? std::optional<std::filesystem::path>(std::in_place) : std::nullopt;
}

bool OpenedDirectory::Sync() const
{
    return true; // MOVEFILE_WRITE_THROUGH has done it
}

bool AddDirectory(const std::filesystem::path& path, Access /*access*/)
{
    return CreateDirectoryW(path.c_str(), nullptr) != 0;
}

bool RenameReplacing(const std::filesystem::path& from, const std::filesystem::path& destination)
{
    return MoveFileExW(from.c_str(), destination.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

bool RenameReplacingOpen(const std::filesystem::path& from, const std::filesystem::path& destination,
                         const std::function<void()>& close)
{
    close(); // SQLite opens its files so that no other call can replace them
    return RenameReplacing(from, destination);
}

bool RenameWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& destination)
{
    return MoveFileExW(from.c_str(), destination.c_str(), MOVEFILE_WRITE_THROUGH) != 0;
}

std::optional<bool> RemoveFile(const std::filesystem::path& path)
{
    if (DeleteFileW(path.c_str()) != 0 || (GetLastError() == ERROR_ACCESS_DENIED && DeleteReadOnly(path)))
        return true;
    return LastSystemError() == std::errc::no_such_file_or_directory ? std::optional(false) : std::nullopt;
}

std::optional<std::int64_t> SizeOfRegularFile(const std::filesystem::path& path)
{
    WIN32_FILE_ATTRIBUTE_DATA found = {};
    if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &found) == 0 ||
        (found.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) != 0)
        return std::nullopt;
    return static_cast<std::int64_t>(found.nFileSizeHigh) << 32 | found.nFileSizeLow;
}

void ToLocalTime(std::time_t moment, std::tm& local)
{
    _tzset();
    localtime_s(&local, &moment);
}

std::int64_t ProcessNumber()
{
    return GetCurrentProcessId();
}

} // namespace plant_file
