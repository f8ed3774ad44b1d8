// Replaces the clock of a program that tests run on chosen days: PLANTJOURNAL_TEST_TIME is the time, in seconds since
// 1970.

#include <cstdlib>
#include <ctime>

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the C library has a reserved name
extern "C" std::time_t time(std::time_t* result) noexcept
{
    const char* const seconds = std::getenv("PLANTJOURNAL_TEST_TIME");
    const std::time_t current = seconds != nullptr ? static_cast<std::time_t>(std::strtoll(seconds, nullptr, 10)) : 0;
    if (result != nullptr)
        *result = current;
    return current;
}
