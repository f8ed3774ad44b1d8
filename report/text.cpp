#include "text.h"

#include <algorithm>
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
constexpr double LargestWithoutExponent = 1e9; // larger numbers are mistakes, and would have up to 309 digits
constexpr std::string_view Ellipsis = "\xE2\x80\xA6";

// A character of a text and the number of its bytes.
struct Character
{
    std::uint32_t Code;
    std::size_t Bytes;
};

// Whether XML 1.0 and HTML can hold the character.
bool IsAllowed(std::uint32_t code)
{
    const bool isControl =
        (code < 0x20 && code != '\t' && code != '\n' && code != '\r') || (code >= 0x7F && code <= 0x9F);
    const bool isNoncharacter = (code & 0xFFFEU) == 0xFFFE || (code >= 0xFDD0 && code <= 0xFDEF);
    return !isControl && !isNoncharacter;
}

// The character at the beginning of `text`, which is not empty. A byte that begins no character of UTF-8, and a
// character that is not allowed, count as a replacement character.
Character FirstCharacter(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i])); };
    const std::uint32_t first = byte(0);
    if (first < 0x80)
        return {IsAllowed(first) ? first : Replacement, 1};
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
    return {IsAllowed(code) ? code : Replacement, bytes};
}

bool IsBetween(std::uint32_t code, std::uint32_t first, std::uint32_t last)
{
    return code >= first && code <= last;
}

bool IsSkinTone(std::uint32_t code)
{
    return IsBetween(code, 0x1F3FB, 0x1F3FF);
}

// Whether the character is drawn on or joined to the one before it: an accent, a variation selector, a skin tone, or
// the joiner of emoji.
bool ContinuesLetter(std::uint32_t code)
{
    return IsBetween(code, 0x300, 0x36F) || IsBetween(code, 0x591, 0x5BD) || IsBetween(code, 0x64B, 0x65F) ||
           IsBetween(code, 0x1AB0, 0x1AFF) || IsBetween(code, 0x20D0, 0x20FF) || code == 0x200D ||
           IsBetween(code, 0xFE00, 0xFE0F) || IsSkinTone(code) || IsBetween(code, 0xE0020, 0xE007F);
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

// Characters that are about as wide as each other.
struct WidthRange
{
    std::uint32_t First;
    std::uint32_t Last;
    double Width; // of the widest of them, as a part of the letters' height
};

// From the fonts that browsers use for these scripts. The first range that holds a character counts.
constexpr std::array<WidthRange, 34> WidthRanges = {{
    {0xA9, 0xAE, 1.1},        // copyright and others
    {0xBC, 0xBE, 1.1},        // fractions
    {0xC6, 0xC6, 1.1},        // joined Latin letters
    {0xE6, 0xE6, 1.1},        // the same
    {0x152, 0x153, 1.1},      // the same
    {0x174, 0x174, 1.1},      // a W with an accent
    {0x180, 0x2FF, 1.45},     // rare Latin letters
    {0x416, 0x416, 1.1},      // wide Cyrillic letters
    {0x41C, 0x41C, 1.1},      // the same
    {0x424, 0x42B, 1.1},      // the same
    {0x42E, 0x42E, 1.1},      // the same
    {0x436, 0x436, 1.1},      // the same
    {0x448, 0x449, 1.1},      // the same
    {0x460, 0x58F, 1.25},     // rare Cyrillic letters, Armenian
    {0x80, 0x5FF, 0.88},      // other Latin, Greek and Cyrillic letters, Hebrew
    {0x600, 0x8FF, 1.25},     // Arabic and others
    {0xB80, 0xBFF, 2},        // Tamil
    {0xD00, 0xD7F, 2},        // Malayalam
    {0x900, 0x10FF, 1.3},     // other scripts of South Asia, Georgian
    {0x1100, 0x11FF, 1.05},   // Korean
    {0x1E00, 0x1EFF, 1},      // Vietnamese
    {0x1F00, 0x1FFF, 1.1},    // Greek with accents
    {0x1200, 0x1DFF, 1.65},   // other scripts
    {0x2030, 0x2031, 1.75},   // parts per thousand
    {0x2000, 0x206F, 1.05},   // punctuation
    {0x2E3A, 0x2E3B, 3},      // long dashes
    {0x2070, 0x2E7F, 1.45},   // signs
    {0xA000, 0xABFF, 1.4},    // other scripts
    {0xFDFA, 0xFDFD, 12},     // whole words in Arabic
    {0xFB00, 0xFEFF, 1.3},    // forms of Arabic letters
    {0x12000, 0x1254F, 8},    // cuneiform
    {0x13000, 0x143FF, 2},    // hieroglyphs
    {0x10000, 0x1FFFF, 1.4},  // emoji and others
    {0x2E80, 0x10FFFF, 1.05}, // Chinese, Japanese, Korean
}};

constexpr double EmojiWidth = 1.4;

// The width of a character in a wide font without serifs, as a part of the letters' height.
double CharacterWidth(std::uint32_t code)
{
    if (code >= 0x80)
        return std::find_if(WidthRanges.begin(), WidthRanges.end(),
                            [&](const WidthRange& range) { return IsBetween(code, range.First, range.Last); })
            ->Width;
    constexpr std::string_view narrow = "!'(),-./:;I[]`fijlrt|";
    constexpr std::string_view wide = "#&DGHMNOQU^+<=>w~";
    constexpr std::string_view widest = "%@Wm";
    const char letter = static_cast<char>(code);
    if (narrow.find(letter) != std::string_view::npos)
        return 0.42;
    if (wide.find(letter) != std::string_view::npos)
        return 0.9;
    if (widest.find(letter) != std::string_view::npos)
        return 1;
    if (letter == ' ')
        return 0.33;
    return IsBetween(code, 'A', 'Z') ? 0.71 : 0.64;
}

// The width of a letter. Where a font lacks a joined emoji, its parts are drawn one after the other.
double LetterWidth(std::string_view letter)
{
    constexpr std::uint32_t emojiSelector = 0xFE0F;
    double width = 0;
    for (std::size_t i = 0; i < letter.size();)
    {
        const Character next = FirstCharacter(letter.substr(i));
        if (i == 0 || !ContinuesLetter(next.Code) || IsSkinTone(next.Code))
            width += CharacterWidth(next.Code);
        else if (next.Code == emojiSelector)
            width = std::max(width, EmojiWidth);
        i += next.Bytes;
    }
    return width;
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
        else if (next.Code == Replacement)
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
    if (text == "-0")
        return "0";
    return text;
}

std::string NumberLabel(double value, int decimals)
{
    if (std::isfinite(value) && std::abs(value) > LargestWithoutExponent)
    {
        std::array<char, 16> digits{};
        return {digits.data(),
                std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::general, 3).ptr};
    }
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
        const std::string_view letter = text.substr(i, LetterBytes(text.substr(i)));
        width += LetterWidth(letter) * size;
        i += letter.size();
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
        const std::string_view letter = text.substr(i, LetterBytes(text.substr(i)));
        width += LetterWidth(letter) * size;
        i += letter.size();
        if (width <= room)
            fitting = i;
        if (width > widest)
            return std::string(text.substr(0, fitting)).append(Ellipsis);
    }
    return std::string(text);
}

} // namespace plant_report
