// Tests of the words and periods of the charts.

#include "report/words.h"

#include "query/days.h"

#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

using namespace plant_report;

namespace
{

std::string Next(const std::string& first, PlantPeriod period)
{
    return plant_query::DayText(NextPeriod(*plant_query::DaysSinceEpoch(first), period));
}

TEST(WordsTest, APeriodEndsWhereTheNextBegins)
{
    EXPECT_EQ(Next("2024-02-29", PlantPeriod::Day), "2024-03-01");
    EXPECT_EQ(Next("2024-12-30", PlantPeriod::Week), "2025-01-06");
    for (const auto& [first, next] : {std::pair("2025-01-01", "2025-02-01"),
                                      {"2025-02-01", "2025-03-01"},
                                      {"2025-04-01", "2025-05-01"},
                                      {"2025-07-01", "2025-08-01"},
                                      {"2025-12-01", "2026-01-01"}})
        EXPECT_EQ(Next(first, PlantPeriod::Month), next);
}

TEST(WordsTest, APeriodIsWrittenAndReadAlike)
{
    const std::int64_t day = *plant_query::DaysSinceEpoch("2025-03-01");
    EXPECT_EQ(PeriodText(day, PlantPeriod::Day), "2025-03-01");
    EXPECT_EQ(PeriodText(day, PlantPeriod::Week), "2025-03-01");
    EXPECT_EQ(PeriodText(day, PlantPeriod::Month), "2025-03");
    EXPECT_EQ(FirstDayOf("2025-03-01"), day);
    EXPECT_EQ(FirstDayOf("2025-03"), day);
    for (const char* text : {"", "2025", "2025-13", "2025-03-", "2025-02-29", "week 12"})
        EXPECT_FALSE(FirstDayOf(text)) << text;
}

TEST(WordsTest, NumbersAgreeWithTheirNouns)
{
    EXPECT_EQ(Counted(std::int64_t{0}, "day", "days"), "0 days");
    EXPECT_EQ(Counted(std::int64_t{1}, "day", "days"), "1 day");
    EXPECT_EQ(Counted(std::size_t{1234}, "day", "days"), "1,234 days");
}

TEST(WordsTest, DaysAreNamedAsPeopleWriteThem)
{
    const std::int64_t day = *plant_query::DaysSinceEpoch("2025-03-09");
    EXPECT_EQ(DayLabel(day), "9 Mar 2025");
    EXPECT_EQ(DaysLabel(day, day), "on 9 Mar 2025");
    EXPECT_EQ(DaysLabel(day, day + 30), "from 9 Mar 2025 to 8 Apr 2025");
}

TEST(WordsTest, ANumberIsEnteredIfItIsPositiveAndFinite)
{
    EXPECT_TRUE(IsEntered(0.01));
    for (const double number : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()})
        EXPECT_FALSE(IsEntered(number)) << number;
    EXPECT_EQ(EnteredLabel(0), "");
    EXPECT_EQ(EnteredLabel(1.5), "1.5");
}

TEST(WordsTest, ALongNameIsCut)
{
    EXPECT_EQ(ShownName("Basil", "(no name)"), "Basil");
    EXPECT_EQ(ShownName("", "(no name)"), "(no name)");
    EXPECT_EQ(ShownName(std::string(10'000, 'a'), ""), std::string(199, 'a') + "\xE2\x80\xA6");
}

} // namespace
