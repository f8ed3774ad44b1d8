#include "record/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <string_view>
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

const char* NameOf(PlantStage value)
{
    return PlantStageName(value);
}
const char* NameOf(PlantSex value)
{
    return PlantSexName(value);
}
const char* NameOf(PlantEventType value)
{
    return PlantEventTypeName(value);
}
const char* NameOf(PlantCareAction value)
{
    return PlantCareActionName(value);
}
const char* NameOf(PlantJournalType value)
{
    return PlantJournalTypeName(value);
}

// All values of an enumeration, by their numbers; a number beyond the end is named as one that was there already.
template <Enumeration Type> std::vector<std::string> AllNames()
{
    std::vector<std::string> names;
    for (int number = 0;; ++number)
    {
        const std::string name = NameOf(static_cast<Type>(number));
        if (std::find(names.begin(), names.end(), name) != names.end())
            return names;
        names.push_back(name);
    }
}

template <typename Number> void Parse(const std::string& text, Number& out)
{
    constexpr const char* what = std::is_floating_point_v<Number> ? "number" : "whole number";
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, out);
    if (result.ec == std::errc::result_out_of_range)
        throw BadValue(Quoted(text) + " is too large");
    if (result.ec != std::errc() || result.ptr != end || std::isnan(static_cast<double>(out)))
        throw BadValue(Quoted(text) + " is not a " + what);
}

void Parse(const std::string& text, std::string& out)
{
    out = text;
}

template <Enumeration Type> void Parse(const std::string& text, Type& out)
{
    const std::vector<std::string> names = AllNames<Type>();
    const auto name =
        std::find_if(names.begin(), names.end(), [&](const std::string& known) { return SameLetters(known, text); });
    if (name == names.end())
        throw BadValue(Quoted(text) + " is none of " + Joined(names, ", "));
    out = static_cast<Type>(std::distance(names.begin(), name));
}

template <typename Number> std::string Text(Number value)
{
    std::array<char, 32> text{};
    const std::to_chars_result result = std::to_chars(text.begin(), text.end(), value);
    return {text.begin(), result.ptr};
}

std::string Text(const std::string& value)
{
    return value;
}

template <Enumeration Type> std::string Text(Type value)
{
    return NameOf(value);
}

} // namespace

bool SameLetters(const std::string& left, const std::string& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return LowerLetter(a) == LowerLetter(b); });
}

bool IsDigits(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](char letter) { return letter >= '0' && letter <= '9'; });
}

std::string Quoted(const std::string& text)
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

std::string TextOf(const View& value)
{
    return std::visit([](const auto* of) { return Text(*of); }, value);
}

std::string RoundedTextOf(const View& value)
{
    const double* const* const number = std::get_if<const double*>(&value);
    if (number == nullptr || std::fabs(**number) < 0.01 || std::fabs(**number) > 1e9)
        return TextOf(value);
    const double rounded = std::round(**number * 100) / 100;
    return TextOf(&rounded);
}

void Set(const Cell& value, const std::string& text)
{
    std::visit([&](auto* of) { Parse(text, *of); }, value);
}

bool IsNumber(const View& value)
{
    return std::visit([](const auto* of) { return std::is_arithmetic_v<std::decay_t<decltype(*of)>>; }, value);
}

std::vector<std::string> NamesOf(const View& value)
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

bool IsInfinite(const View& value)
{
    const double* const* const number = std::get_if<const double*>(&value);
    return number != nullptr && std::isinf(**number);
}
