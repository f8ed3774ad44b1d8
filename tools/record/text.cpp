#include "record/text.h"

#include "plant_validation.h"
#include "record/decimal.h"
#include "record/nearest.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <system_error>
#include <type_traits>

namespace
{

char LowerLetter(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

template <typename Type>
concept Enumeration = std::is_enum_v<Type>;

// All values of an enumeration, which its argument only selects.
const auto& ValuesLike(PlantStage /*any*/)
{
    return PlantStages;
}
const auto& ValuesLike(PlantSex /*any*/)
{
    return PlantSexes;
}
const auto& ValuesLike(PlantEventType /*any*/)
{
    return PlantEventTypes;
}
const auto& ValuesLike(PlantCareAction /*any*/)
{
    return PlantCareActions;
}
const auto& ValuesLike(PlantJournalType /*any*/)
{
    return PlantJournalTypes;
}

const char* EnumerationName(PlantStage value)
{
    return PlantStageName(value);
}
const char* EnumerationName(PlantSex value)
{
    return PlantSexName(value);
}
const char* EnumerationName(PlantEventType value)
{
    return PlantEventTypeName(value);
}
const char* EnumerationName(PlantCareAction value)
{
    return PlantCareActionName(value);
}
const char* EnumerationName(PlantJournalType value)
{
    return PlantJournalTypeName(value);
}

// Returns the names of all values, in their order.
template <Enumeration Type> std::vector<std::string> AllNames()
{
    const auto& values = ValuesLike(Type{});
    std::vector<std::string> names;
    names.reserve(values.size());
    for (const Type value : values)
        names.emplace_back(EnumerationName(value));
    return names;
}

std::from_chars_result ReadNumber(const char* begin, const char* end, double& out)
{
    return DecimalFromChars(begin, end, out);
}

template <std::integral Number> std::from_chars_result ReadNumber(const char* begin, const char* end, Number& out)
{
    return std::from_chars(begin, end, out);
}

template <typename Number> void ParseInto(const std::string& text, Number& out)
{
    constexpr const char* what = std::is_floating_point_v<Number> ? "number" : "whole number";
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = ReadNumber(text.data(), end, out);
    if (result.ec == std::errc::result_out_of_range)
        throw BadValue(InQuotes(text) + (text.front() == '-' ? " is too small" : " is too large"));
    if (std::is_floating_point_v<Number> && result.ec == std::errc() && result.ptr != end && *result.ptr == ',' &&
        result.ptr + 1 != end && IsDigits({result.ptr + 1, end}))
        throw BadValue(InQuotes(text) + " is not a number; write a decimal point, not a comma");
    if (result.ec != std::errc() || result.ptr != end || std::isnan(static_cast<double>(out)))
        throw BadValue(InQuotes(text) + " is not a " + what);
}

void ParseInto(const std::string& text, std::string& out)
{
    out = text;
}

template <Enumeration Type> void ParseInto(const std::string& text, Type& out)
{
    static const std::vector<std::string> names = AllNames<Type>();
    const auto name = std::find_if(names.begin(), names.end(),
                                   [&](const std::string& known) { return EqualIgnoringCase(known, text); });
    if (name == names.end())
        throw BadValue(
            Joined({InQuotes(text) + " is not one of " + Joined(names, ", "), DidYouMean(Nearest(text, names))}, "; "));
    out = ValuesLike(Type{}).at(static_cast<std::size_t>(std::distance(names.begin(), name)));
}

template <typename Number> std::string PlainText(Number value)
{
    std::array<char, 32> text{};
    const std::to_chars_result result = std::to_chars(text.begin(), text.end(), value);
    return {text.begin(), result.ptr};
}

std::string PlainText(const std::string& value)
{
    return value;
}

template <Enumeration Type> std::string PlainText(Type value)
{
    return EnumerationName(value);
}

} // namespace

bool EqualIgnoringCase(const std::string& left, const std::string& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return LowerLetter(a) == LowerLetter(b); });
}

bool IsDigits(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](char letter) { return letter >= '0' && letter <= '9'; });
}

std::string InQuotes(const std::string& text)
{
    std::string quoted = "\"";
    quoted += text;
    return quoted += '"';
}

std::string Joined(const std::vector<std::string>& texts, const std::string& separator)
{
    std::string joined;
    for (const std::string& text : texts)
        if (!text.empty())
            joined += (joined.empty() ? "" : separator) + text;
    return joined;
}

std::string WithoutStop(std::string sentence)
{
    if (sentence.ends_with('.'))
        sentence.pop_back();
    return sentence;
}

std::string TextOf(const ConstValueRef& value)
{
    return std::visit([](const auto* of) { return PlainText(*of); }, value);
}

std::string TextWithoutExponent(const ConstValueRef& value)
{
    const double* const* const number = std::get_if<const double*>(&value);
    if (number == nullptr || std::fabs(**number) < 1e-6 || std::fabs(**number) >= 1e15)
        return TextOf(value);
    std::array<char, 32> text{};
    const std::to_chars_result result = std::to_chars(text.begin(), text.end(), **number, std::chars_format::fixed);
    return {text.begin(), result.ptr};
}

std::string RoundedTextOf(const ConstValueRef& value)
{
    const double* const* const number = std::get_if<const double*>(&value);
    if (number == nullptr || std::fabs(**number) < 0.01 || std::fabs(**number) > 1e9)
        return TextWithoutExponent(value);
    const double rounded = std::round(**number * 100) / 100;
    return TextWithoutExponent(&rounded);
}

std::string ShownText(const ConstValueRef& value, Use used, const std::string& unit)
{
    const bool entered = std::visit(
        [&](const auto* of)
        {
            using Type = std::decay_t<decltype(*of)>;
            if constexpr (std::is_arithmetic_v<Type>)
                return *of != 0 || used == Use::Count;
            else if constexpr (std::is_same_v<Type, PlantSex>)
                return *of != PlantSex::Unknown;
            return true;
        },
        value);
    return entered ? Joined({RoundedTextOf(value), unit}, " ") : "";
}

void ParseValue(const std::string& text, const ValueRef& out)
{
    std::visit([&](auto* value) { ParseInto(text, *value); }, out);
}

bool IsNumber(const ConstValueRef& value)
{
    return std::visit([](const auto* of) { return std::is_arithmetic_v<std::decay_t<decltype(*of)>>; }, value);
}

std::vector<std::string> EnumerationNames(const ConstValueRef& value)
{
    return std::visit(
        [](const auto* of) -> std::vector<std::string>
        {
            if constexpr (Enumeration<std::decay_t<decltype(*of)>>)
                return AllNames<std::decay_t<decltype(*of)>>();
            return {};
        },
        value);
}

bool IsInfinite(const ConstValueRef& value)
{
    const double* const* const number = std::get_if<const double*>(&value);
    return number != nullptr && std::isinf(**number);
}
