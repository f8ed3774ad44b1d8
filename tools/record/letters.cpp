#include "record/letters.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include <utf8proc.h>

namespace
{

constexpr utf8proc_int32_t ZeroWidthNonJoiner = 0x200C;
constexpr utf8proc_int32_t ZeroWidthJoiner = 0x200D;

bool IsPrintable(utf8proc_int32_t codepoint)
{
    switch (utf8proc_category(codepoint))
    {
    case UTF8PROC_CATEGORY_CC: // control characters
    case UTF8PROC_CATEGORY_CS: // halves of UTF-16 pairs
    case UTF8PROC_CATEGORY_CN: // not assigned
    case UTF8PROC_CATEGORY_ZL: // line separators
    case UTF8PROC_CATEGORY_ZP: // paragraph separators
        return false;
    case UTF8PROC_CATEGORY_CF: // invisible, and some of them reorder the line; scripts and emoji need the two joiners
        return codepoint == ZeroWidthJoiner || codepoint == ZeroWidthNonJoiner || utf8proc_charwidth(codepoint) > 0;
    default:
        return true;
    }
}

std::string Mapped(const std::string& text, unsigned options)
{
    utf8proc_uint8_t* mapped = nullptr;
    const utf8proc_ssize_t size = utf8proc_map(
        reinterpret_cast<const utf8proc_uint8_t*>(text.data()), static_cast<utf8proc_ssize_t>(text.size()), &mapped,
        static_cast<utf8proc_option_t>(options | UTF8PROC_COMPOSE | UTF8PROC_STABLE | UTF8PROC_CASEFOLD));
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owned(mapped, &std::free);
    return size < 0 ? text : std::string(reinterpret_cast<const char*>(mapped), static_cast<std::size_t>(size));
}

} // namespace

std::vector<Letter> LettersOf(std::string_view text)
{
    constexpr std::size_t widest = 2; // terminals show emoji that are joined, and flags, as one picture of two columns
    std::vector<Letter> letters;
    utf8proc_int32_t last = 0;
    utf8proc_int32_t state = 0; // of the search for the end of a letter
    for (std::size_t at = 0; at < text.size();)
    {
        utf8proc_int32_t codepoint = 0;
        const utf8proc_ssize_t length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(&text[at]),
                                                         static_cast<utf8proc_ssize_t>(text.size() - at), &codepoint);
        const bool printable = length > 0 && IsPrintable(codepoint);
        const std::size_t bytes = length > 0 ? static_cast<std::size_t>(length) : 1;
        const std::size_t width = printable ? static_cast<std::size_t>(utf8proc_charwidth(codepoint)) : 1;
        if (printable && !letters.empty() && letters.back().Printable &&
            !utf8proc_grapheme_break_stateful(last, codepoint, &state))
        {
            Letter& letter = letters.back();
            letter.Bytes = text.substr(at - letter.Bytes.size(), letter.Bytes.size() + bytes);
            letter.Width = std::min(letter.Width + width, widest);
        }
        else
        {
            letters.push_back({text.substr(at, bytes), width, printable});
            state = 0;
        }
        last = codepoint;
        at += bytes;
    }
    return letters;
}

std::string WithoutCase(const std::string& text)
{
    return Mapped(text, 0);
}

std::string WithoutCaseAndAccents(const std::string& text)
{
    return Mapped(text, UTF8PROC_STRIPMARK);
}
