#pragma once

#include <filesystem>

namespace support
{

constexpr bool OnWindows = std::filesystem::path::preferred_separator != '/';

} // namespace support
