#include "text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace plant_report
{

namespace
{

constexpr std::uint32_t Replacement = 0xFFFD;
constexpr std::string_view ReplacementText = "\xEF\xBF\xBD";
constexpr std::string_view Ellipsis = "\xE2\x80\xA6";

// A character of a text and the number of its bytes.
struct Character
{
    std::uint32_t Code;
    std::size_t Bytes;
};

// The character at the beginning of `text`, which is not empty. A byte that begins no character of UTF-8 counts as one
// replacement character.
Character FirstCharacter(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i])); };
    const std::uint32_t first = byte(0);
    if (first < 0x80)
        return {first, 1};
    const std::size_t bytes = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (first < 0xC2 || first > 0xF4 || text.size() < bytes)
        return {Replacement, 1};
    std::uint32_t code = first & (0xFFU >> (bytes + 1));
    for (std::size_t i = 1; i < bytes; ++i)
    {
        if ((byte(i) & 0xC0U) != 0x80)
            return {Replacement, 1};
        code = (code << 6U) | (byte(i) & 0x3FU);
    }
    constexpr std::array<std::uint32_t, 5> least = {0, 0, 0x80, 0x800, 0x10000}; // of a character with so many bytes
    if (code < least.at(bytes) || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return {Replacement, 1};
    return {code, bytes};
}

// Whether XML 1.0 and HTML can hold the character.
bool IsAllowed(std::uint32_t code)
{
    const bool isControl = (code < 0x20 && code != '\t' && code != '\n') || (code >= 0x7F && code <= 0x9F);
    const bool isNoncharacter = (code & 0xFFFEU) == 0xFFFE || (code >= 0xFDD0 && code <= 0xFDEF);
    return !isControl && !isNoncharacter;
}

bool IsBetween(std::uint32_t code, std::uint32_t first, std::uint32_t last)
{
    return code >= first && code <= last;
}

// Whether the character is drawn on or joined to the one before it: an accent, a variation selector, a skin tone, or
// the joiner of emoji.
bool ContinuesLetter(std::uint32_t code)
{
    return IsBetween(code, 0x300, 0x36F) || IsBetween(code, 0x591, 0x5BD) || IsBetween(code, 0x64B, 0x65F) ||
           IsBetween(code, 0x1AB0, 0x1AFF) || IsBetween(code, 0x20D0, 0x20FF) || code == 0x200D ||
           IsBetween(code, 0xFE00, 0xFE0F) || IsBetween(code, 0x1F3FB, 0x1F3FF) || IsBetween(code, 0xE0020, 0xE007F);
}

// The number of bytes of the letter at the beginning of `text`, with all that continues it. A letter has an end, even
// where a text piles up accents.
std::size_t LetterBytes(std::string_view text)
{
    constexpr int mostCharacters = 12;
    std::size_t bytes = 0;
    bool joined = false;
    for (int count = 0; bytes < text.size() && count < mostCharacters; ++count)
    {
        const Character next = FirstCharacter(text.substr(bytes));
        if (count > 0 && !joined && !ContinuesLetter(next.Code))
            break;
        joined = next.Code == 0x200D;
        bytes += next.Bytes;
    }
    return bytes;
}

// The width of a letter in a wide font without serifs, as a part of the letters' height.
double LetterWidth(std::uint32_t code)
{
    if (code >= 0x1100)
        return IsBetween(code, 0x1E00, 0x206F) ? 0.7 : 1.05; // Latin letters and punctuation; Asian letters and emoji
    if (code >= 0x80)
        return 0.7;
    constexpr std::string_view narrow = "!'(),-./:;I[]`fijlrt|";
    constexpr std::string_view wide = "%&@GMNOQW+<=>mw~";
    const char letter = static_cast<char>(code);
    if (narrow.find(letter) != std::string_view::npos)
        return 0.39;
    if (wide.find(letter) != std::string_view::npos)
        return 0.9;
    if (letter == ' ')
        return 0.33;
    return IsBetween(code, 'A', 'Z') ? 0.71 : 0.62;
}

// A direction that a name opens ends with the name: between FIRST STRONG ISOLATE and POP DIRECTIONAL ISOLATE.
std::string Isolated(const std::string& name)
{
    return std::string({'\xE2', '\x81', '\xA8'}).append(name).append({'\xE2', '\x81', '\xA9'});
}

// Whether the character belongs to a script that is written from right to left, or changes the direction.
bool HasDirection(std::uint32_t code)
{
    return IsBetween(code, 0x590, 0x8FF) || IsBetween(code, 0x200E, 0x200F) || IsBetween(code, 0x202A, 0x202E) ||
           IsBetween(code, 0x2066, 0x2069) || IsBetween(code, 0xFB1D, 0xFDFF) || IsBetween(code, 0xFE70, 0xFEFF) ||
           IsBetween(code, 0x10800, 0x10FFF) || IsBetween(code, 0x1E800, 0x1EFFF);
}

} // namespace

std::string Escaped(std::string_view text)
{
    std::string escaped;
    escaped.reserve(text.size());
    for (std::size_t i = 0; i < text.size();)
    {
        const Character next = FirstCharacter(text.substr(i));
        if (next.Code == '&')
            escaped += "&amp;";
        else if (next.Code == '<')
            escaped += "&lt;";
        else if (next.Code == '>')
            escaped += "&gt;";
        else if (next.Code == '"')
            escaped += "&quot;";
        else if (next.Code == '\'')
            escaped += "&#39;";
        else if (next.Code == '\r') // the end of a line is a line feed in XML
            escaped += text.substr(i + 1, 1) == "\n" ? "" : "\n";
        else if (next.Code == Replacement || !IsAllowed(next.Code))
            escaped += ReplacementText;
        else
            escaped += text.substr(i, next.Bytes);
        i += next.Bytes;
    }
    return escaped;
}

std::string NumberText(double value, int decimals)
{
    if (!std::isfinite(value))
        return "0";
    std::array<char, 400> digits{}; // the longest number has 309 digits before the point
    const std::to_chars_result end =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed, decimals);
    std::string text(digits.data(), end.ptr);
    if (text.find('.') != std::string::npos)
    {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.')
            text.pop_back();
    }
    return text == "-0" ? "0" : text;
}

std::string NumberLabel(double value, int decimals)
{
    std::string text = NumberText(value, decimals);
    const std::size_t firstDigit = text.front() == '-' ? 1 : 0;
    for (std::size_t i = std::min(text.find('.'), text.size()); i > firstDigit + 3;)
    {
        i -= 3;
        text.insert(i, 1, ',');
    }
    return text;
}

std::string Shortened(std::string_view text, std::size_t letters)
{
    std::size_t end = 0;       // of the letters seen
    std::size_t beforeEnd = 0; // of all but the last of them
    for (std::size_t count = 0; end < text.size(); ++count)
    {
        if (count == letters)
            return std::string(text.substr(0, beforeEnd)).append(Ellipsis);
        beforeEnd = end;
        end += LetterBytes(text.substr(end));
    }
    return std::string(text);
}

std::string NameInSentence(std::string_view name)
{
    std::string text = Shortened(name, 60);
    for (std::size_t i = 0; i < text.size();)
    {
        const Character next = FirstCharacter(std::string_view(text).substr(i));
        if (HasDirection(next.Code))
            return Isolated(text);
        i += next.Bytes;
    }
    return text;
}

double TextWidth(std::string_view text, double size)
{
    double width = 0;
    for (std::size_t i = 0; i < text.size();)
    {
        width += LetterWidth(FirstCharacter(text.substr(i)).Code) * size;
        i += LetterBytes(text.substr(i));
    }
    return width;
}

std::string Fitting(std::string_view text, double size, double widest)
{
    const double room = widest - TextWidth(Ellipsis, size);
    double width = 0;
    std::size_t fitting = 0; // bytes that fit together with an ellipsis
    for (std::size_t i = 0; i < text.size();)
    {
        width += LetterWidth(FirstCharacter(text.substr(i)).Code) * size;
        i += LetterBytes(text.substr(i));
        if (width <= room)
            fitting = i;
        if (width > widest)
            return std::string(text.substr(0, fitting)).append(Ellipsis);
    }
    return std::string(text);
}

} // namespace plant_report
