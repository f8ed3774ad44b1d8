#include "support/fixed_time.h"

#include <chrono>
#include <cstdlib>

namespace support
{

namespace
{

std::optional<std::time_t> now;

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
    setenv("TZ", zone.c_str(), 1);
}

TimeZone::~TimeZone()
{
    if (Previous)
        setenv("TZ", Previous->c_str(), 1);
    else
        unsetenv("TZ");
}

} // namespace support

// Replaces the function of the C library in the test programs.
extern "C" std::time_t time(std::time_t* result) noexcept
{
    const std::time_t current =
        support::now ? *support::now : std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    if (result != nullptr)
        *result = current;
    return current;
}
