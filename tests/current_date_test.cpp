// The current date.

#include "plant.h"
#include "support/fixed_time.h"

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include <gtest/gtest.h>

using namespace support;

namespace
{

// Sets the time zone in the environment while in scope. Does not call tzset.
class TimeZone
{
  public:
    explicit TimeZone(const char* zone)
    {
        if (const char* previous = std::getenv("TZ"))
            Previous = previous;
        setenv("TZ", zone, 1);
    }
    ~TimeZone()
    {
        if (Previous)
            setenv("TZ", Previous->c_str(), 1);
        else
            unsetenv("TZ");
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

  private:
    std::optional<std::string> Previous;
};

TEST(CurrentDateTest, TheCurrentDateIsToday)
{
    const TimeZone utc("XXX0");
    const auto today = []
    {
        const std::time_t now = std::time(nullptr);
        std::tm parts{};
        gmtime_r(&now, &parts);
        char date[16];
        return std::string(date, std::strftime(date, sizeof date, "%Y-%m-%d", &parts));
    };
    std::string before;
    std::string date;
    do // repeat if midnight passed between the calls
    {
        before = today();
        date = PlantEventCurrentDate();
    } while (before != today());
    EXPECT_EQ(date, before);
}

TEST(CurrentDateTest, TheCurrentDateIsALocalDateWithAllDigits)
{
    constexpr std::time_t hour = 3'600;
    constexpr std::time_t day = 24 * hour;
    constexpr std::time_t newYear = 10'957 * day; // 2000-01-01 in UTC
    const struct
    {
        const char* Zone;
        std::int64_t Time;
        const char* Date;
    } moments[] = {
        {"XXX0", 0, "1970-01-01"},
        {"XXX0", newYear - 1, "1999-12-31"},
        {"XXX0", newYear, "2000-01-01"},
        {"XXX-1", newYear - hour, "2000-01-01"},
        {"XXX-1", newYear - hour - 1, "1999-12-31"},
        {"XXX-14", newYear + 10 * hour, "2000-01-02"},
        {"XXX12", newYear + 12 * hour - 1, "1999-12-31"},
        {"XXX0", newYear + 59 * day, "2000-02-29"},
        {"XXX0YYY-1,0/0,365/25", newYear + day - 1, "2000-01-02"}, // summer time all year
        {"XXX0", 253'402'300'799, "9999-12-31"},
    };
    for (const auto& [zone, time, date] : moments)
    {
        const auto systemTime = static_cast<std::time_t>(time);
        if (systemTime != time)
            continue; // a time_t of 32 bits ends in 2038
        const TimeZone there(zone);
        const FixedTime then(systemTime);
        EXPECT_EQ(PlantEventCurrentDate(), date) << zone << ' ' << time;
    }
}

} // namespace
