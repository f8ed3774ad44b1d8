#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace support
{

// Replaces all bytes of a file.
void WriteBytes(const std::string& path, const std::string& bytes);

// Sets `size` bytes of a file to zero.
void Zero(const std::string& path, std::size_t offset, std::size_t size);

// A page of a journal, and what it is used for.
struct UsedPage
{
    std::size_t Number; // the first is 1
    std::string Name;   // of the table or index; sqlite_schema for the schema
    std::string Kind;   // internal, leaf or overflow
    std::string Path;   // from the root, as https://www.sqlite.org/dbstat.html describes it
    std::size_t Offset; // in the file
    std::size_t Size;
    std::size_t Cells;
};

// The pages that the tables and indexes of a whole journal use, in the order of the trees.
std::vector<UsedPage> UsedPages(const std::string& path);

} // namespace support
