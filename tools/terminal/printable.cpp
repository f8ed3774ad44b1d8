#include "terminal/printable.h"

#include "record/letters.h"

namespace
{

constexpr const char* Unprintable = "\xEF\xBF\xBD"; // U+FFFD

} // namespace

std::string Printable(const std::string& text)
{
    std::string printable;
    for (const Letter& letter : LettersOf(text))
        if (letter.Bytes == "\n" || letter.Bytes == "\t" || letter.Bytes == "\r")
            printable += ' ';
        else if (letter.Printable)
            printable += letter.Bytes;
        else
            printable += Unprintable;
    return printable;
}

std::size_t Width(const std::string& text)
{
    std::size_t width = 0;
    for (const Letter& letter : LettersOf(text))
        width += letter.Width;
    return width;
}

std::string CutToWidth(const std::string& text, std::size_t width)
{
    if (Width(text) <= width)
        return text;
    std::string cut;
    std::size_t used = 1; // the ellipsis
    for (const Letter& letter : LettersOf(text))
    {
        if ((used += letter.Width) > width)
            break;
        cut += letter.Bytes;
    }
    return cut + "…";
}
