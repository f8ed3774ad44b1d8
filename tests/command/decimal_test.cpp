// Numbers are read to the last bit, in each locale, with each standard library.

#include "record/decimal.h"
#include "support/comma_numbers.h"

#include <array>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

namespace
{

using Reader = std::from_chars_result (*)(const char*, const char*, double&);

std::uint64_t BitsOf(double number)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

double NumberWithBits(std::uint64_t bits)
{
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

class DecimalTest : public testing::TestWithParam<Reader>
{
  protected:
    // Reads the number at the beginning of the text. Expects that so many of its letters are read.
    static double Read(const std::string& text, std::size_t letters)
    {
        double number = -7;
        const std::from_chars_result result = GetParam()(text.data(), text.data() + text.size(), number);
        EXPECT_EQ(result.ec, std::errc()) << text;
        EXPECT_EQ(result.ptr, text.data() + letters) << text;
        return number;
    }

    static void ExpectEachBit(double number)
    {
        std::array<char, 1100> text{};
        for (const bool whole : {false, true})
        {
            const char* const end =
                whole ? std::to_chars(text.begin(), text.end(), number, std::chars_format::scientific, 800).ptr
                      : std::to_chars(text.begin(), text.end(), number).ptr;
            const std::string digits(std::as_const(text).begin(), end);
            ASSERT_EQ(BitsOf(Read(digits, digits.size())), BitsOf(number)) << digits;
        }
    }
};

INSTANTIATE_TEST_SUITE_P(BothReaders, DecimalTest, testing::Values(DecimalFromChars, DecimalByStrtod));

TEST_P(DecimalTest, EachFiniteNumberIsReadBackToTheLastBit)
{
    std::mt19937_64 bits(1); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same numbers in each run
    for (int i = 0; i < 20'000; ++i)
        if (const double number = NumberWithBits(bits()); std::isfinite(number))
            ExpectEachBit(number);
}

TEST_P(DecimalTest, DenormalsAreReadBackToTheLastBit)
{
    constexpr std::uint64_t firstNormal = std::uint64_t{1} << 52U;
    std::mt19937_64 bits(2); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same numbers in each run
    for (std::uint64_t denormal = 1; denormal < 200; ++denormal)
        ExpectEachBit(NumberWithBits(denormal));
    for (int i = 0; i < 2'000; ++i)
        ExpectEachBit(NumberWithBits(bits() % firstNormal));
    for (const std::uint64_t number : {firstNormal - 1, firstNormal, firstNormal + 1})
        ExpectEachBit(NumberWithBits(number));
}

// Half of the distance between two numbers, with a digit far to the right that decides.
TEST_P(DecimalTest, ALongTailOfDigitsDecidesTheLastBit)
{
    const std::string half = "9007199254740993"; // 2^53 + 1
    const std::string zeros(700, '0');
    for (const auto& [text, number] :
         {std::pair(half, 9007199254740992.0), std::pair(half + '.' + zeros + '1', 9007199254740994.0),
          std::pair("-" + half + '.' + zeros + "1e0", -9007199254740994.0)})
        EXPECT_EQ(BitsOf(Read(text, text.size())), BitsOf(number)) << text;
}

TEST_P(DecimalTest, TheLongestNumberAtTheBeginningIsRead)
{
    for (const auto& [text, number, letters] :
         {std::tuple("1.5", 1.5, 3), std::tuple(".5", 0.5, 2), std::tuple("5.", 5.0, 2), std::tuple("5.e3", 5e3, 4),
          std::tuple("-0", -0.0, 2), std::tuple("1e", 1.0, 1), std::tuple("1e+", 1.0, 1), std::tuple("1E+2x", 100.0, 4),
          std::tuple("1e-2", 0.01, 4), std::tuple("0x10", 0.0, 1), std::tuple("1,5", 1.0, 1),
          std::tuple("1.2.3", 1.2, 3), std::tuple("1 ", 1.0, 1), std::tuple("0e99999999999", 0.0, 13),
          std::tuple("0.00e5", 0.0, 6), std::tuple("1'000", 1.0, 1)})
        EXPECT_EQ(BitsOf(Read(text, static_cast<std::size_t>(letters))), BitsOf(number)) << text;
    EXPECT_EQ(Read("inf", 3), HUGE_VAL);
    EXPECT_EQ(Read("-Infinity", 9), -HUGE_VAL);
    EXPECT_EQ(Read("infin", 3), HUGE_VAL);
    EXPECT_TRUE(std::isnan(Read("NaN", 3)));
}

TEST_P(DecimalTest, OtherTextsLeaveTheNumberAsItIs)
{
    for (const auto& [text, reason] :
         {std::pair("", std::errc::invalid_argument), std::pair("-", std::errc::invalid_argument),
          std::pair(".", std::errc::invalid_argument), std::pair(".e1", std::errc::invalid_argument),
          std::pair("e1", std::errc::invalid_argument), std::pair("+1", std::errc::invalid_argument),
          std::pair(" 1", std::errc::invalid_argument), std::pair("--1", std::errc::invalid_argument),
          std::pair("in", std::errc::invalid_argument), std::pair("1e400", std::errc::result_out_of_range),
          std::pair("-1e400", std::errc::result_out_of_range)})
    {
        double number = -7;
        EXPECT_EQ(GetParam()(text, text + std::strlen(text), number).ec, reason) << text;
        EXPECT_EQ(number, -7) << text;
    }
}

TEST_P(DecimalTest, ANumberWhoseNearestDoubleIsZeroIsZero)
{
    const std::string zeros(400, '0');
    for (const std::string& text : {std::string("1e-400"), std::string("2e-324"), "0." + zeros + '1'})
    {
        EXPECT_EQ(BitsOf(Read(text, text.size())), BitsOf(0.0)) << text;
        EXPECT_EQ(BitsOf(Read('-' + text, text.size() + 1)), BitsOf(-0.0)) << text;
    }
    EXPECT_GT(Read("3e-324", 6), 0.0);
}

TEST_P(DecimalTest, OnlyTheGivenLettersAreRead)
{
    const std::string text = "12.75";
    double number = 0;
    EXPECT_EQ(GetParam()(text.data(), text.data() + 4, number).ptr, text.data() + 4);
    EXPECT_EQ(number, 12.7);
}

TEST_P(DecimalTest, TheLocaleOfTheProgramDoesNotMatter)
{
    const support::CommaNumbers locale;
    if (!locale.WhyNot().empty())
        GTEST_SKIP() << locale.WhyNot();
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    const double point = Read("1.5", 3);
    const double comma = Read("1,5", 1);
    EXPECT_EQ(point, 1.5);
    EXPECT_EQ(comma, 1.0);
}

} // namespace
