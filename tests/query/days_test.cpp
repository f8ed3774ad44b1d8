#include "query/days.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

using namespace plant_query;

namespace
{

TEST(DaysTest, EveryDayHasTheNumberAfterTheDayBefore)
{
    std::int64_t days = DaysSinceEpoch("1600-01-01").value();
    for (int year = 1600; year <= 2099; ++year)
        for (int month = 1; month <= 12; ++month)
            for (int day = 1; day <= 31; ++day)
            {
                std::string text = std::to_string(100'000'000 + year * 10'000 + month * 100 + day).substr(1);
                text.insert(6, "-").insert(4, "-");
                const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
                const bool isShort = month == 4 || month == 6 || month == 9 || month == 11;
                const int length = month == 2 ? (leap ? 29 : 28) : (isShort ? 30 : 31);
                ASSERT_EQ(DaysSinceEpoch(text).has_value(), day <= length) << text;
                if (day > length)
                    continue;
                ASSERT_EQ(DaysSinceEpoch(text), days) << text;
                ASSERT_EQ(DayText(days), text);
                ++days;
            }
}

TEST(DaysTest, TheDaysAreCountedFromTheEpoch)
{
    for (const auto& [date, days] : {std::pair("1970-01-01", 0), std::pair("0000-01-01", -719'528),
                                     std::pair("0000-02-29", -719'469), std::pair("9999-12-31", 2'932'896)})
    {
        EXPECT_EQ(DaysSinceEpoch(date), days);
        EXPECT_EQ(DayText(days), date);
    }
}

TEST(DaysTest, OtherTextsAreNoDays)
{
    for (const char* text :
         {"", "2025", "2025-02", "2025-02-30", "2025-00-10", "2025-13-01", "2025-01-00", "2025/01/01", "2025-01-01 ",
          "25-01-01", "zz", "+025-01-01", "2025-1 -01", "2025-01-0x", "2025-01:01", "20:5-01-01"})
        EXPECT_EQ(DaysSinceEpoch(text), std::nullopt) << text;
    EXPECT_EQ(DaysSinceEpoch(std::string("2025-01-0\0", 10)), std::nullopt);
}

TEST(DaysTest, AWeekBeginsOnItsMonday)
{
    const auto monday = [](const char* date) { return DayText(MondayOf(DaysSinceEpoch(date).value())); };
    EXPECT_EQ(monday("2025-03-02"), "2025-02-24");
    EXPECT_EQ(monday("2025-03-03"), "2025-03-03");
    EXPECT_EQ(monday("2025-03-09"), "2025-03-03");
    EXPECT_EQ(monday("2025-03-10"), "2025-03-10");
    EXPECT_EQ(monday("1969-12-31"), "1969-12-29");
    EXPECT_EQ(monday("1900-01-01"), "1900-01-01");
}

TEST(DaysTest, TheTextAfterADateIsTheLeastOfThoseAfterIt)
{
    EXPECT_EQ(AfterDate("2025-03-09"), "2025-03-0:");
    EXPECT_EQ(AfterDate("2025-03"), "2025-04");
    EXPECT_EQ(AfterDate("2025\xFF\xFF"), "2026");
    EXPECT_EQ(AfterDate("2025\x7F"), "2025\x80");
    EXPECT_EQ(AfterDate(std::string("2025\0", 5)), "2025\x01");
    EXPECT_EQ(AfterDate("\xFF\xFF"), std::nullopt);
    EXPECT_EQ(AfterDate(""), std::nullopt);
}

} // namespace
