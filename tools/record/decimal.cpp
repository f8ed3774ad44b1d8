#include "record/decimal.h"

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace
{

bool IsDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

const char* AfterDigits(const char* at, const char* end)
{
    while (at != end && IsDigit(*at))
        ++at;
    return at;
}

// Compares without regard to case; `word` is in lower-case letters.
bool StartsWith(const char* at, const char* end, std::string_view word)
{
    if (static_cast<std::size_t>(end - at) < word.size())
        return false;
    for (const char expected : word)
        if (const char letter = *at++; letter != expected && letter != expected - 'a' + 'A')
            return false;
    return true;
}

// The end of the infinity or NaN that starts here; `at` if none does.
const char* AfterSpecial(const char* at, const char* end)
{
    for (const std::string_view word : {"infinity", "inf", "nan"})
        if (StartsWith(at, end, word))
            return at + word.size();
    return at;
}

// The end of the digits, the point and the exponent that start here; `at` if no number does.
const char* AfterNumber(const char* at, const char* end, const char*& point)
{
    const char* past = AfterDigits(at, end);
    bool hasDigits = past != at;
    point = past;
    if (past != end && *past == '.')
    {
        const char* const fraction = past + 1;
        past = AfterDigits(fraction, end);
        hasDigits = hasDigits || past != fraction;
    }
    if (!hasDigits)
        return at;
    if (past != end && (*past == 'e' || *past == 'E'))
    {
        const char* digits = past + 1;
        if (digits != end && (*digits == '+' || *digits == '-'))
            ++digits;
        if (digits != end && IsDigit(*digits))
            past = AfterDigits(digits, end);
    }
    return past;
}

template <typename Number, typename = void> struct HasFromChars : std::false_type
{
};
template <typename Number>
struct HasFromChars<Number, std::void_t<decltype(std::from_chars(nullptr, nullptr, std::declval<Number&>()))>>
    : std::true_type
{
};

template <typename Number> std::from_chars_result FromChars(const char* begin, const char* end, Number& out)
{
    if constexpr (HasFromChars<Number>::value)
        if (const std::from_chars_result result = std::from_chars(begin, end, out);
            result.ec != std::errc::result_out_of_range)
            return result;
    return DecimalByStrtod(begin, end, out); // std::from_chars does not report which numbers are near 0
}

} // namespace

std::from_chars_result DecimalFromChars(const char* begin, const char* end, double& out)
{
    return FromChars(begin, end, out);
}

std::from_chars_result DecimalByStrtod(const char* begin, const char* end, double& out)
{
    const char* const number = begin != end && *begin == '-' ? begin + 1 : begin;
    const char* past = AfterSpecial(number, end);
    const char* point = past;
    const bool isSpecial = past != number;
    if (!isSpecial)
        past = AfterNumber(number, end, point);
    if (past == number)
        return {begin, std::errc::invalid_argument};
    std::string text(begin, past);
    if (!isSpecial && point != past && *point == '.')
        text.replace(static_cast<std::size_t>(point - begin), 1, std::localeconv()->decimal_point);
    const double value = std::strtod(text.c_str(), nullptr);
    if (!isSpecial && std::isinf(value))
        return {past, std::errc::result_out_of_range};
    out = value;
    return {past, std::errc()};
}
