#include "support/fixed_time.h"

// Replaces the function of the C library in the test programs.
extern "C" std::time_t time(std::time_t* result) noexcept
{
    const std::time_t current = support::PresentTime();
    if (result != nullptr)
        *result = current;
    return current;
}
