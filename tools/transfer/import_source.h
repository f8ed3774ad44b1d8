#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

// What an import is read from, before anybody has asked what its values mean.

// A file, kept whole so that any place in it can be named.
struct Source
{
    std::string Name;
    std::string Bytes;
    std::vector<std::size_t> Lines; // where each begins

    // `name:line:column`, the column in bytes, from 1.
    std::string Place(std::size_t offset) const;
};

struct RawCell
{
    std::string Field;
    std::string Text;
    std::size_t Offset;
};

struct RawRow
{
    std::size_t Offset;
    std::vector<RawCell> Cells;
};

struct RawTable
{
    std::string Name;
    std::shared_ptr<const Source> From;
    std::vector<RawRow> Rows;
};

// Messages, each of which begins with its place.
using Problems = std::vector<std::string>;

// Reads a file of JSON, or the CSV files of a directory. What cannot be read is left out and told in `problems`.
std::vector<RawTable> ReadTables(const std::string& path, Problems& problems);
