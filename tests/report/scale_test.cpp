// Tests of the scales of pictures.

#include "report/scale.h"

#include "query/days.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace plant_report;

namespace
{

using Labels = std::vector<std::string>;

template <typename Scale> Labels LabelsOf(const Scale& scale)
{
    Labels labels;
    for (const Tick& tick : scale.Ticks())
        labels.push_back(tick.Label);
    return labels;
}

std::int64_t DayOf(const std::string& date)
{
    return plant_query::DaysSinceEpoch(date).value();
}

Labels DayLabels(const std::string& first, const std::string& last, double length)
{
    return LabelsOf(DayScale(DayOf(first), DayOf(last), 0, length));
}

TEST(ScaleTest, NumbersHaveRoundTicksAroundTheValues)
{
    EXPECT_EQ(LabelsOf(NumberScale(0, 940, 0, 100)), (Labels{"0", "200", "400", "600", "800", "1,000"}));
    EXPECT_EQ(LabelsOf(NumberScale(5.6, 6.4, 0, 100)), (Labels{"5.6", "5.8", "6.0", "6.2", "6.4"}));
    EXPECT_EQ(LabelsOf(NumberScale(0.02, 0.03, 0, 100, 2)), (Labels{"0.020", "0.025", "0.030"}));
    EXPECT_EQ(LabelsOf(NumberScale(-3, 12, 0, 100, 3)), (Labels{"-5", "0", "5", "10", "15"}));
    EXPECT_EQ(LabelsOf(NumberScale(0, 9.5e6, 0, 100, 1)), (Labels{"0", "10,000,000"}));
}

TEST(ScaleTest, NumbersArePlacedBetweenTheEnds)
{
    const NumberScale scale(0, 940, 200, 100);
    EXPECT_DOUBLE_EQ(scale(0), 200);
    EXPECT_DOUBLE_EQ(scale(1000), 100);
    EXPECT_DOUBLE_EQ(scale(250), 175);
}

TEST(ScaleTest, EqualNumbersGetARangeAroundThem)
{
    EXPECT_EQ(LabelsOf(NumberScale(0, 0, 0, 100, 1)), (Labels{"0.0", "0.5"}));
    const NumberScale scale(6.2, 6.2, 0, 100);
    EXPECT_GT(scale(6.2), 20);
    EXPECT_LT(scale(6.2), 80);
    const NumberScale negative(-4, -4, 0, 100);
    EXPECT_GT(negative(-4), 20);
    EXPECT_LT(negative(-4), 80);
}

TEST(ScaleTest, TheEndsMayBeGivenInEitherOrder)
{
    EXPECT_EQ(LabelsOf(NumberScale(940, 0, 0, 100)), LabelsOf(NumberScale(0, 940, 0, 100)));
}

TEST(ScaleTest, OddNumbersHaveAPlaceAtAnEnd)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const NumberScale scale(0, 10, 0, 100);
    EXPECT_DOUBLE_EQ(scale(-5), 0);
    EXPECT_DOUBLE_EQ(scale(infinity), 100);
    EXPECT_DOUBLE_EQ(scale(std::nan("")), 0);
    for (const double odd : {infinity, -infinity, std::nan(""), 1e300, -1e300, 1e-300, 1e15})
    {
        const NumberScale wide(0, odd, 0, 100);
        EXPECT_GE(wide.Ticks().size(), 2U) << odd;
        EXPECT_LE(wide.Ticks().size(), 12U) << odd;
        EXPECT_TRUE(wide(odd) >= 0 && wide(odd) <= 100) << odd;
        EXPECT_LE(NumberScale(odd, odd, 0, 100).Ticks().size(), 12U) << odd;
    }
    EXPECT_LE(NumberScale(1e15, 1e15 - 1, 0, 100).Ticks().size(), 12U);
    const NumberScale end(1e300, 1e300, 0, 100);
    for (std::size_t i = 1; i < end.Ticks().size(); ++i)
        EXPECT_GT(end(end.Ticks()[i].Value), end(end.Ticks()[i - 1].Value)) << end.Ticks()[i].Label;
}

TEST(ScaleTest, ANumberScaleHasAtLeastOneStep)
{
    EXPECT_EQ(LabelsOf(NumberScale(0, 3, 0, 100, 0)), (Labels{"0", "5"}));
}

TEST(ScaleTest, AWeekHasATickEveryDayWhereThereIsRoom)
{
    EXPECT_EQ(DayLabels("2025-03-03", "2025-03-10", 700),
              (Labels{"3 Mar 2025", "4 Mar", "5 Mar", "6 Mar", "7 Mar", "8 Mar", "9 Mar", "10 Mar"}));
    EXPECT_EQ(DayLabels("2025-03-03", "2025-03-10", 300), (Labels{"4 Mar 2025", "6 Mar", "8 Mar", "10 Mar"}));
}

TEST(ScaleTest, WeeksHaveTicksOnMondays)
{
    EXPECT_EQ(DayLabels("2025-03-01", "2025-03-31", 300),
              (Labels{"3 Mar 2025", "10 Mar", "17 Mar", "24 Mar", "31 Mar"}));
    EXPECT_EQ(DayLabels("2024-12-25", "2025-02-10", 300), (Labels{"30 Dec", "13 Jan 2025", "27 Jan", "10 Feb"}));
}

TEST(ScaleTest, MonthsHaveTicksOnTheirFirstDay)
{
    EXPECT_EQ(DayLabels("2024-11-20", "2025-03-20", 300), (Labels{"Dec", "Jan 2025", "Feb", "Mar"}));
    EXPECT_EQ(DayLabels("2024-11-20", "2025-11-20", 300), (Labels{"Jan 2025", "Apr", "Jul", "Oct"}));
    const DayScale scale(DayOf("2024-11-20"), DayOf("2025-03-20"), 0, 300);
    EXPECT_DOUBLE_EQ(scale.Ticks().front().Value, static_cast<double>(DayOf("2024-12-01")));
}

TEST(ScaleTest, YearsHaveTicksOnTheirFirstDay)
{
    EXPECT_EQ(DayLabels("2015-06-01", "2025-06-01", 720),
              (Labels{"2016", "2017", "2018", "2019", "2020", "2021", "2022", "2023", "2024", "2025"}));
    EXPECT_EQ(DayLabels("2015-06-01", "2025-06-01", 300), (Labels{"2016", "2018", "2020", "2022", "2024"}));
    EXPECT_EQ(DayLabels("0000-01-01", "9999-12-31", 720).back(), "9000");
}

TEST(ScaleTest, ShortTimesBecomeAWeek)
{
    const DayScale scale(DayOf("2025-03-03"), DayOf("2025-03-03"), 100, 800);
    EXPECT_DOUBLE_EQ(scale(static_cast<double>(DayOf("2025-03-03"))), 100);
    EXPECT_DOUBLE_EQ(scale(static_cast<double>(DayOf("2025-03-04"))), 200);
    EXPECT_EQ(scale.Ticks().size(), 8U);
}

TEST(ScaleTest, DaysOutsideHaveAPlaceAtAnEnd)
{
    const DayScale scale(0, 10, 100, 800);
    EXPECT_DOUBLE_EQ(scale(-1), 100);
    EXPECT_DOUBLE_EQ(scale(11), 800);
}

TEST(ScaleTest, EveryTimeHasTwoTicksThatDoNotOverlap)
{
    for (const double length : {40.0, 260.0, 640.0, 1500.0})
        for (std::int64_t days = 1; days < 3'700'000; days += 1 + days / 5)
            for (const std::int64_t first : {-719'528, 0, 20'000})
            {
                const std::int64_t last = std::min<std::int64_t>(first + days, DayOf("9999-12-31"));
                const DayScale scale(first, last, 0, length);
                ASSERT_GE(scale.Ticks().size(), 2U) << first << " " << days << " " << length;
                for (std::size_t i = 1; i < scale.Ticks().size(); ++i)
                    ASSERT_GE(scale(scale.Ticks()[i].Value) - scale(scale.Ticks()[i - 1].Value), length < 100 ? 30 : 47)
                        << first << " " << days << " " << length;
            }
}

} // namespace
