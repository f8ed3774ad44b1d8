#pragma once

#include <filesystem>

namespace support
{

constexpr bool OnWindows = std::filesystem::path::preferred_separator != '/';

// The system's words for a file that may not be used.
constexpr const char* AccessDenied =
    OnWindows
        ? "access is denied: another program may have the file open, or the file or its directory is write-protected"
        : "Permission denied";

} // namespace support
