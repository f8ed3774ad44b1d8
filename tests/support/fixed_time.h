#pragma once

#include <ctime>

namespace support
{

// While in scope, the system time of the process is fixed. Only one at a time.
class FixedTime
{
  public:
    explicit FixedTime(std::time_t secondsSince1970);
    ~FixedTime();
    FixedTime(const FixedTime&) = delete;
    FixedTime& operator=(const FixedTime&) = delete;
};

} // namespace support
