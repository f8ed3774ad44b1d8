#include "terminal/table.h"

#include "terminal/console.h"
#include "terminal/printable.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <ostream>

namespace
{

constexpr std::size_t Gap = 2;

// The columns of a table that are printed, and their widths.
struct PrintedColumn
{
    std::size_t Index;
    std::size_t Width;
    WhenNarrow Narrow;
};

bool Coloured()
{
    return OutputIsTerminal() && Environment("NO_COLOR").empty(); // https://no-color.org
}

std::size_t LineWidth(const std::vector<PrintedColumn>& columns)
{
    return std::accumulate(columns.begin(), columns.end(), Gap * (columns.size() - 1),
                           [](std::size_t sum, const PrintedColumn& column) { return sum + column.Width; });
}

bool CanBeCut(const PrintedColumn& column)
{
    return column.Narrow == WhenNarrow::Cut || column.Narrow == WhenNarrow::CutOrDrop;
}

bool CanBeDropped(const PrintedColumn& column)
{
    return column.Narrow == WhenNarrow::Drop || column.Narrow == WhenNarrow::CutOrDrop;
}

// Narrows the columns that are chosen, the widest first, but none to less than `least`. Returns whether a line fits.
bool Narrowed(std::vector<PrintedColumn>& columns, std::size_t limit, std::size_t least,
              bool (*chosen)(const PrintedColumn&))
{
    for (std::size_t total = LineWidth(columns); total > limit; --total)
    {
        PrintedColumn* widest = nullptr;
        for (PrintedColumn& column : columns)
            if (chosen(column) && column.Width > least && (widest == nullptr || column.Width > widest->Width))
                widest = &column;
        if (widest == nullptr)
            return false;
        --widest->Width;
    }
    return true;
}

void FitToWidth(std::vector<PrintedColumn>& columns, std::size_t limit)
{
    constexpr std::size_t worthReading = 16;
    constexpr std::size_t narrowest = 8;
    for (;;)
    {
        std::vector<PrintedColumn> narrowed = columns;
        if (Narrowed(narrowed, limit, worthReading, CanBeCut))
        {
            columns = narrowed;
            return;
        }
        const auto last = std::find_if(columns.rbegin(), columns.rend(), CanBeDropped);
        if (last == columns.rend())
            break;
        columns.erase(std::next(last).base());
    }
    // Whole texts that are still too wide overflow their column, so that the other lines fit.
    if (!Narrowed(columns, limit, narrowest, CanBeCut))
        Narrowed(columns, limit, narrowest, [](const PrintedColumn&) { return true; });
}

std::string Padded(const std::string& text, std::size_t width, bool right)
{
    const std::string blanks(width - std::min(width, Width(text)), ' ');
    return right ? blanks + text : text + blanks;
}

std::string Line(const Row& row, const std::vector<Column>& columns, const std::vector<PrintedColumn>& printed)
{
    std::string line;
    for (const PrintedColumn& column : printed)
    {
        const std::string& whole = row[column.Index];
        const std::string text = CanBeCut(column) ? CutToWidth(whole, column.Width) : whole;
        line += &column == &printed.front() ? "" : std::string(Gap, ' ');
        line += Padded(text, column.Width, columns[column.Index].Right);
    }
    return line.erase(line.find_last_not_of(' ') + 1);
}

} // namespace

void PrintTable(std::ostream& out, const std::vector<Column>& columns, const std::vector<Row>& rows)
{
    std::vector<Row> printable(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
        std::transform(rows[i].begin(), rows[i].end(), std::back_inserter(printable[i]), Printable);

    Row headings;
    std::vector<PrintedColumn> printed;
    for (std::size_t i = 0; i < columns.size(); ++i)
    {
        headings.push_back(columns[i].Heading);
        std::size_t width = 0;
        for (const Row& row : printable)
            width = std::max(width, Width(row[i]));
        if (width > 0)
            printed.push_back({i, std::max(width, Width(headings[i])), columns[i].Narrow});
    }
    if (OutputIsTerminal())
        FitToWidth(printed, TerminalWidth());

    const bool coloured = Coloured();
    out << (coloured ? "\x1B[1m" : "") << Line(headings, columns, printed) << '\n' << (coloured ? "\x1B[0m" : "");
    for (const Row& row : printable)
        out << Line(row, columns, printed) << '\n';
}
