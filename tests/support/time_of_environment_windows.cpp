// Replaces the clock of a program that tests run on chosen days: PLANTJOURNAL_TEST_TIME is the time, in seconds since
// 1970.

#include <cstdlib>
#include <ctime>

namespace
{

__time64_t TimeOfEnvironment(__time64_t* result)
{
    const char* const seconds = std::getenv("PLANTJOURNAL_TEST_TIME");
    const __time64_t current = seconds != nullptr ? std::strtoll(seconds, nullptr, 10) : 0;
    if (result != nullptr)
        *result = current;
    return current;
}

} // namespace

// time() calls the function of the C library by this address.
extern "C"
{
    extern decltype(&TimeOfEnvironment) __imp__time64;
    decltype(&TimeOfEnvironment) __imp__time64 = TimeOfEnvironment;
}
