#include "terminal/printable.h"

#include <cwchar>
#include <string_view>
#include <vector>

namespace
{

struct Letter
{
    std::string_view Bytes;
    std::size_t Width;
};

constexpr std::string_view Unprintable = "\xEF\xBF\xBD"; // U+FFFD

// Cuts a text into the letters that a terminal shows. The program's locale is UTF-8.
std::vector<Letter> Letters(std::string_view text)
{
    std::vector<Letter> letters;
    std::mbstate_t state{};
    while (!text.empty())
    {
        wchar_t letter = 0;
        const std::size_t length = std::mbrtowc(&letter, text.data(), text.size(), &state);
        if (length == 0 || length > text.size()) // a zero byte, or not UTF-8
        {
            letters.push_back({Unprintable, 1});
            text.remove_prefix(1);
            state = {};
            continue;
        }
        const int width = wcwidth(letter);
        if (letter == L'\n' || letter == L'\t' || letter == L'\r')
            letters.push_back({" ", 1});
        else if (width < 0)
            letters.push_back({Unprintable, 1});
        else
            letters.push_back({text.substr(0, length), static_cast<std::size_t>(width)});
        text.remove_prefix(length);
    }
    return letters;
}

} // namespace

std::string Printable(const std::string& text)
{
    std::string printable;
    for (const Letter& letter : Letters(text))
        printable += letter.Bytes;
    return printable;
}

std::size_t Width(const std::string& text)
{
    std::size_t width = 0;
    for (const Letter& letter : Letters(text))
        width += letter.Width;
    return width;
}

std::string CutToWidth(const std::string& text, std::size_t width)
{
    if (Width(text) <= width)
        return text;
    std::string cut;
    std::size_t used = 1; // the ellipsis
    for (const Letter& letter : Letters(text))
    {
        if ((used += letter.Width) > width)
            break;
        cut += letter.Bytes;
    }
    return cut + "…";
}
