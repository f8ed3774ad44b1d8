#pragma once

#include <cerrno>
#include <system_error>

namespace support
{

// Throws the error of the system call that has just failed.
inline void RequireCall(bool done, const char* call)
{
    if (!done)
        throw std::system_error(errno, std::generic_category(), call);
}

} // namespace support
