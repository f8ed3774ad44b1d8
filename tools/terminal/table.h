#pragma once

#include <iosfwd>
#include <string>
#include <vector>

// What happens to a column where the table is wider than the terminal.
enum class WhenNarrow
{
    Keep,     // nothing: its texts stay whole, even where the lines are then too wide
    Drop,     // it is left out
    Cut,      // its texts are cut
    CutOrDrop // its texts are cut, or it is left out where that is not enough
};

struct Column
{
    std::string Heading;
    WhenNarrow Narrow = WhenNarrow::Drop;
    bool Right = false; // numbers are aligned to the right
};

using Row = std::vector<std::string>;

// Prints a table without its empty columns. On a terminal, texts are cut so that each line fits, and where that is not
// enough, columns are left out, the last one first.
void PrintTable(std::ostream& out, const std::vector<Column>& columns, const std::vector<Row>& rows);
