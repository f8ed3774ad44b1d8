#pragma once

#include <filesystem>
#include <string>

namespace support
{

constexpr bool OnWindows = std::filesystem::path::preferred_separator != '/';

// The path of a file of the directory, as the library and the command print it.
inline std::string PathIn(const std::string& directory, const std::string& name)
{
    return (std::filesystem::path(directory) / name).make_preferred().string();
}

// The variable that names the directory of what a program keeps between its runs, and the one without which a user has
// no directories. On Windows it also names the directory of journals.
constexpr const char* StateVariable = OnWindows ? "LOCALAPPDATA" : "XDG_STATE_HOME";
constexpr const char* HomeVariable = OnWindows ? "LOCALAPPDATA" : "HOME";

// The system's words for a file that may not be used.
constexpr const char* AccessDenied =
    OnWindows
        ? "access is denied: another program may have the file open, or the file or its directory is write-protected"
        : "Permission denied";

} // namespace support
