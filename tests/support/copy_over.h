#pragma once

#include <filesystem>
#include <string>

namespace support
{

// Copies a file and replaces another one. On Windows, libstdc++'s copy_file() takes any two files for the same.
inline void CopyOver(const std::string& from, const std::string& to)
{
    std::filesystem::remove(to);
    std::filesystem::copy_file(from, to);
}

} // namespace support
