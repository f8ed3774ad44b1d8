#pragma once

#include "support/environment.h"

#include <ctime>
#include <string>

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

// The fixed time, or that of the system.
std::time_t PresentTime();

// Sets the time zone in the environment while in scope. Does not call tzset.
class TimeZone
{
  public:
    explicit TimeZone(const std::string& zone) : Variable("TZ", zone) {}

  private:
    EnvironmentVariable Variable;
};

} // namespace support
