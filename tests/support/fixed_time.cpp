#include "support/fixed_time.h"

#include <chrono>
#include <optional>

namespace support
{

namespace
{

std::optional<std::time_t> fixedTime;

} // namespace

FixedTime::FixedTime(std::time_t secondsSince1970)
{
    fixedTime = secondsSince1970;
}

FixedTime::~FixedTime()
{
    fixedTime.reset();
}

std::time_t PresentTime()
{
    return fixedTime ? *fixedTime : std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

} // namespace support
