#pragma once

#include <filesystem>
#include <string>

namespace support
{

// The path of a text in UTF-8. On Windows, the constructor of a path takes another encoding.
inline std::filesystem::path UTF8Path(const std::string& text)
{
    return std::u8string(text.begin(), text.end());
}

} // namespace support
