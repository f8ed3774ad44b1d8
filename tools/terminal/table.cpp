#include "terminal/table.h"

#include "terminal/printable.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <ostream>

#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

std::size_t TerminalWidth()
{
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

bool Coloured()
{
    const char* const noColour = std::getenv("NO_COLOR"); // https://no-color.org
    return isatty(STDOUT_FILENO) == 1 && (noColour == nullptr || *noColour == '\0');
}

std::string Padded(const std::string& text, std::size_t width, bool right)
{
    const std::string blanks(width - std::min(width, Width(text)), ' ');
    return right ? blanks + text : text + blanks;
}

void PrintRow(std::ostream& out, const Row& row, const std::vector<Column>& columns,
              const std::vector<std::size_t>& widths)
{
    std::string line;
    for (std::size_t i = 0; i < columns.size(); ++i)
        line += (i > 0 ? "  " : "") + Padded(CutToWidth(row[i], widths[i]), widths[i], columns[i].Right);
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
}

} // namespace

void PrintTable(std::ostream& out, const std::vector<Column>& columns, const std::vector<Row>& rows)
{
    constexpr std::size_t gap = 2;
    constexpr std::size_t narrowest = 5;
    std::vector<Row> printable = {{}};
    for (const Column& column : columns)
        printable.front().push_back(column.Heading);
    for (const Row& row : rows)
        std::transform(row.begin(), row.end(), std::back_inserter(printable.emplace_back()), Printable);

    std::vector<std::size_t> widths(columns.size());
    for (const Row& row : printable)
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], Width(row[i]));
    if (isatty(STDOUT_FILENO) == 1)
    {
        std::size_t total = gap * (widths.size() - 1);
        for (const std::size_t width : widths)
            total += width;
        for (const std::size_t limit = TerminalWidth(); total > limit; --total) // cut the widest column
        {
            const auto widest = std::max_element(widths.begin(), widths.end());
            if (*widest <= narrowest)
                break;
            --*widest;
        }
    }

    const bool coloured = Coloured();
    for (std::size_t i = 0; i < printable.size(); ++i)
    {
        if (i == 0 && coloured)
            out << "\x1B[1m";
        PrintRow(out, printable[i], columns, widths);
        if (i == 0 && coloured)
            out << "\x1B[0m" << std::flush;
    }
}
