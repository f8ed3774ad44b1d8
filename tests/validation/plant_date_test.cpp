// Reading dates and counting with them, compared with the calendar of the standard library.

#include "plant_validation.h"

#include <chrono>
#include <cstdio>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace
{

using namespace std::chrono;

std::string DateText(const year_month_day& date)
{
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return text;
}

constexpr year_month_day FirstDay = year(0) / January / 1;
constexpr year_month_day LastDay = year(9999) / December / 31;

TEST(PlantDateTest, TheThreeFormsAreRead)
{
    PlantDate date;
    EXPECT_TRUE(ReadPlantDate("2026", date));
    EXPECT_EQ(std::tuple(date.Year, date.Month, date.Day), std::tuple(2026, 0, 0));
    EXPECT_TRUE(ReadPlantDate("2026-12", date));
    EXPECT_EQ(std::tuple(date.Year, date.Month, date.Day), std::tuple(2026, 12, 0));
    EXPECT_TRUE(ReadPlantDate("2024-02-29", date));
    EXPECT_EQ(std::tuple(date.Year, date.Month, date.Day), std::tuple(2024, 2, 29));
}

TEST(PlantDateTest, OtherTextsAreNotDates)
{
    for (const char* text : {"",           "2025-02-29", "1900-02-29", "2026-13",    "2026-00",    "2026-01-00",
                             "2026-01-32", "2026-04-31", "2026-1-1",   "26",         "20260101",   "01.02.2026",
                             "2026-",      "2026-04-",   "2026/04",    "today",      " 2026",      "20265",
                             "-026",       "2026-0x",    "2026-04/01", "2026-01-1x", "2026-01-:1", "2026-01-01 "})
    {
        PlantDate date = {1, 2, 3};
        EXPECT_FALSE(ReadPlantDate(text, date)) << text;
        EXPECT_EQ(std::tuple(date.Year, date.Month, date.Day), std::tuple(1, 2, 3)) << text;
    }
    PlantDate date;
    EXPECT_FALSE(ReadPlantDate(std::string("2026\0", 5), date));
}

TEST(PlantDateTest, EveryDayOfTheCalendarIsRead)
{
    std::int64_t number = 0;
    for (sys_days day = FirstDay; day <= sys_days(LastDay); day += days(1), ++number)
    {
        const std::string text = DateText(day);
        PlantDate read;
        std::int64_t between = 0;
        ASSERT_TRUE(ReadPlantDate(text, read)) << text;
        ASSERT_TRUE(DaysBetweenPlantDates("0000-01-01", text, between)) << text;
        ASSERT_EQ(between, number) << text;
        ASSERT_EQ(PlantDatePlusDays("0000-01-01", number), text);
    }
    EXPECT_EQ(number, 3'652'425);
}

TEST(PlantDateTest, DaysAreAddedAndSubtracted)
{
    std::mt19937 random(1); // NOLINT(cert-msc51-cpp): the same days in every run
    const std::int64_t count = (sys_days(LastDay) - sys_days(FirstDay)).count();
    std::uniform_int_distribution<std::int64_t> any(0, count);
    for (int i = 0; i < 10'000; ++i)
    {
        const sys_days from = sys_days(FirstDay) + days(any(random));
        const sys_days to = sys_days(FirstDay) + days(any(random));
        std::int64_t between = 0;
        ASSERT_TRUE(DaysBetweenPlantDates(DateText(from), DateText(to), between));
        ASSERT_EQ(between, (to - from).count());
        ASSERT_EQ(PlantDatePlusDays(DateText(from), between), DateText(to));
    }
}

TEST(PlantDateTest, MonthsEndWithTheirLastDay)
{
    EXPECT_EQ(PlantDatePlusMonths("2026-03-31", -1), "2026-02-28");
    EXPECT_EQ(PlantDatePlusMonths("2024-03-31", -1), "2024-02-29");
    EXPECT_EQ(PlantDatePlusMonths("2026-07-31", -1), "2026-06-30");
    EXPECT_EQ(PlantDatePlusMonths("2026-01-15", -1), "2025-12-15");
    EXPECT_EQ(PlantDatePlusMonths("2025-12-15", 1), "2026-01-15");
    EXPECT_EQ(PlantDatePlusMonths("2026-03-31", 0), "2026-03-31");
    EXPECT_EQ(PlantDatePlusMonths("2024-02-29", -12), "2023-02-28");
    EXPECT_EQ(PlantDatePlusMonths("2026-03-31", -27), "2023-12-31");
}

TEST(PlantDateTest, DatesOutsideTheCalendarAreEmpty)
{
    EXPECT_EQ(PlantDatePlusDays("0000-01-01", -1), "");
    EXPECT_EQ(PlantDatePlusDays("9999-12-31", 1), "");
    EXPECT_EQ(PlantDatePlusDays("9999-12-31", INT64_MAX), "");
    EXPECT_EQ(PlantDatePlusDays("0000-01-01", INT64_MIN), "");
    EXPECT_EQ(PlantDatePlusMonths("0000-01-31", -1), "");
    EXPECT_EQ(PlantDatePlusMonths("9999-12-31", 1), "");
    EXPECT_EQ(PlantDatePlusMonths("9999-12-31", INT64_MAX), "");
    EXPECT_EQ(PlantDatePlusMonths("0000-01-31", INT64_MIN), "");
    EXPECT_EQ(PlantDatePlusMonths("9999-11-30", 1), "9999-12-30");
    EXPECT_EQ(PlantDatePlusMonths("0000-02-29", -1), "0000-01-29");
}

TEST(PlantDateTest, OnlyDaysAreCounted)
{
    for (const char* text : {"", "2026", "2026-05", "2026-02-30"})
    {
        std::int64_t between = 7;
        EXPECT_FALSE(DaysBetweenPlantDates(text, "2026-05-01", between));
        EXPECT_FALSE(DaysBetweenPlantDates("2026-05-01", text, between));
        EXPECT_EQ(between, 7);
        EXPECT_EQ(PlantDatePlusDays(text, 0), "");
        EXPECT_EQ(PlantDatePlusMonths(text, 0), "");
    }
}

TEST(PlantDateTest, DatesAreComparedInThePartsThatBothHave)
{
    for (const auto& [first, second] : {std::pair("2025", "2026"),
                                        {"2025-12", "2026"},
                                        {"2025-12-31", "2026"},
                                        {"2025", "2026-01-01"},
                                        {"2026-04", "2026-05"},
                                        {"2026-04", "2026-05-01"},
                                        {"2026-04-30", "2026-05"},
                                        {"2026-05-01", "2026-05-02"},
                                        {"2025-12-31", "2026-01-01"}})
    {
        EXPECT_TRUE(PlantDateIsBefore(first, second)) << first << ' ' << second;
        EXPECT_FALSE(PlantDateIsBefore(second, first)) << first << ' ' << second;
    }
    for (const auto& [first, second] : {std::pair("2026", "2026"),
                                        {"2026", "2026-05-01"},
                                        {"2026-05", "2026-05-31"},
                                        {"2026-05-01", "2026-05-01"},
                                        {"2026", "2026-12"},
                                        {"", "2026"},
                                        {"2025", "spring"}})
    {
        EXPECT_FALSE(PlantDateIsBefore(first, second)) << first << ' ' << second;
        EXPECT_FALSE(PlantDateIsBefore(second, first)) << first << ' ' << second;
    }
}

} // namespace
