// The current date.

#include "plant.h"
#include "support/fixed_time.h"

#include <chrono>
#include <cstdint>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

using namespace support;

namespace
{

TEST(CurrentDateTest, TheCurrentDateIsToday)
{
    const TimeZone utc("XXX0");
    const auto today = []
    {
        const auto now = std::chrono::system_clock::from_time_t(std::time(nullptr));
        const std::chrono::year_month_day date(std::chrono::floor<std::chrono::days>(now));
        std::ostringstream text;
        text << static_cast<int>(date.year()) << std::setfill('0') << '-' << std::setw(2)
             << static_cast<unsigned>(date.month()) << '-' << std::setw(2) << static_cast<unsigned>(date.day());
        return text.str();
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

TEST(CurrentDateTest, TheCurrentDateFollowsSummerTime)
{
    const TimeZone there("XXX0YYY-1,0/0,365/25"); // all year
    const FixedTime then(946'771'199);
    EXPECT_EQ(PlantEventCurrentDate(), "2000-01-02");
}

TEST(CurrentDateTest, TheCurrentDateOfTheYear9999HasAllDigits)
{
    constexpr std::int64_t last = 253'402'300'799;
    if (static_cast<std::time_t>(last) != last)
        GTEST_SKIP() << "a time_t of 32 bits ends in 2038";
    const TimeZone there("XXX0");
    const FixedTime then(static_cast<std::time_t>(last));
    EXPECT_EQ(PlantEventCurrentDate(), "9999-12-31");
}

} // namespace
