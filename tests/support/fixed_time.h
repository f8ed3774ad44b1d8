#pragma once

#include <ctime>
#include <optional>
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

// Sets the time zone in the environment while in scope. Does not call tzset.
class TimeZone
{
  public:
    explicit TimeZone(const std::string& zone);
    ~TimeZone();
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

  private:
    std::optional<std::string> Previous;
};

} // namespace support
