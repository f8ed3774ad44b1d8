#include "support/fixed_time.h"

namespace support
{

namespace
{

__time64_t TimeOfTests(__time64_t* result)
{
    const __time64_t current = PresentTime();
    if (result != nullptr)
        *result = current;
    return current;
}

} // namespace

} // namespace support

// time() calls the function of the C library by this address.
extern "C"
{
    extern decltype(&support::TimeOfTests) __imp__time64;
    decltype(&support::TimeOfTests) __imp__time64 = support::TimeOfTests;
}
