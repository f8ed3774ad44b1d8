#include "support/fixed_time.h"

#include <chrono>
#include <cstdlib>

namespace support
{

namespace
{

std::optional<std::time_t> now;

__time64_t TimeOfTests(__time64_t* result)
{
    const __time64_t current = now ? *now : std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    if (result != nullptr)
        *result = current;
    return current;
}

} // namespace

FixedTime::FixedTime(std::time_t secondsSince1970)
{
    now = secondsSince1970;
}

FixedTime::~FixedTime()
{
    now.reset();
}

TimeZone::TimeZone(const std::string& zone)
{
    if (const char* previous = std::getenv("TZ"))
        Previous = previous;
    _putenv_s("TZ", zone.c_str());
}

TimeZone::~TimeZone()
{
    if (Previous)
        _putenv_s("TZ", Previous->c_str());
    else
        _putenv_s("TZ", "");
}

} // namespace support

// time() calls the function of the C library by this address.
extern "C"
{
    extern decltype(&support::TimeOfTests) __imp__time64;
    decltype(&support::TimeOfTests) __imp__time64 = support::TimeOfTests;
}
