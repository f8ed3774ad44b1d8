// The errors of Windows in words.
#include "system.h"

#include <algorithm>
#include <array>
#include <cwctype>
#include <iterator>

#include <windows.h>

namespace plant_file
{

namespace
{

struct KnownError
{
    DWORD Code;
    std::errc Condition;
    const char* Words; // none: those of the condition
};

constexpr KnownError KnownErrors[] = {
    {ERROR_FILE_NOT_FOUND, std::errc::no_such_file_or_directory, nullptr},
    {ERROR_PATH_NOT_FOUND, std::errc::no_such_file_or_directory, nullptr},
    {ERROR_BAD_NETPATH, std::errc::no_such_file_or_directory, nullptr},
    {ERROR_ALREADY_EXISTS, std::errc::file_exists, nullptr},
    {ERROR_FILE_EXISTS, std::errc::file_exists, nullptr},
    {ERROR_DIRECTORY, std::errc::not_a_directory, nullptr},
    {ERROR_DISK_FULL, std::errc::no_space_on_device, nullptr},
    {ERROR_HANDLE_DISK_FULL, std::errc::no_space_on_device, nullptr},
    {ERROR_IO_DEVICE, std::errc::io_error, nullptr},
    {ERROR_WRITE_PROTECT, std::errc::read_only_file_system, nullptr},
    {ERROR_FILENAME_EXCED_RANGE, std::errc::filename_too_long, nullptr},
    {ERROR_CANT_RESOLVE_FILENAME, std::errc::too_many_symbolic_link_levels, nullptr},
    {ERROR_INVALID_NAME, std::errc::invalid_argument, "Windows does not allow this file name"},
    {ERROR_ACCESS_DENIED, std::errc::permission_denied,
     "access is denied: another program may have the file open, or the file or its directory is write-protected"},
    {ERROR_SHARING_VIOLATION, std::errc::device_or_resource_busy, "another program has the file open; close it there"},
    {ERROR_LOCK_VIOLATION, std::errc::device_or_resource_busy, "another program has locked the file; close it there"},
};

const KnownError* FindError(int code)
{
    const auto* const found =
        std::find_if(std::begin(KnownErrors), std::end(KnownErrors),
                     [&](const KnownError& known) { return known.Code == static_cast<DWORD>(code); });
    return found == std::end(KnownErrors) ? nullptr : found;
}

std::string SystemWords(int code)
{
    std::array<wchar_t, 512> words = {};
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        static_cast<DWORD>(code), 0, words.data(), words.size(), nullptr);
    std::wstring_view text(words.data(), length);
    while (!text.empty() && (std::iswspace(text.back()) != 0 || text.back() == L'.'))
        text.remove_suffix(1);
    return text.empty() ? "error " + std::to_string(code) + " of Windows" : TextOfPath(text);
}

// Libstdc++'s own category for the system has the words of the program's code page.
class WindowsErrors : public std::error_category
{
  public:
    const char* name() const noexcept override { return "Windows"; }

    std::string message(int code) const override
    {
        const KnownError* const known = FindError(code);
        if (known == nullptr)
            return SystemWords(code);
        return known->Words != nullptr ? known->Words : std::make_error_code(known->Condition).message();
    }

    std::error_condition default_error_condition(int code) const noexcept override
    {
        const KnownError* const known = FindError(code);
        return known == nullptr ? std::error_condition(code, *this) : std::make_error_condition(known->Condition);
    }
};

} // namespace

std::error_code LastSystemError()
{
    const auto code = static_cast<int>(GetLastError()); // first: the construction of `errors` changes it
    static const WindowsErrors errors;
    return {code, errors};
}

} // namespace plant_file
