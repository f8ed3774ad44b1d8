#pragma once

#include <iosfwd>
#include <string>
#include <vector>

struct Column
{
    std::string Heading;
    bool Right = false; // numbers are aligned to the right
};

using Row = std::vector<std::string>;

// Prints a table. On a terminal, its widest columns are cut so that each line fits.
void PrintTable(std::ostream& out, const std::vector<Column>& columns, const std::vector<Row>& rows);
