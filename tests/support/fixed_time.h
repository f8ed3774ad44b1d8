#pragma once

#include <ctime>

namespace support
{

// What the system tells the process as the time while in scope: always this. One at a time.
class FixedTime
{
  public:
    explicit FixedTime(std::time_t secondsSince1970);
    ~FixedTime();
    FixedTime(const FixedTime&) = delete;
    FixedTime& operator=(const FixedTime&) = delete;
};

} // namespace support
