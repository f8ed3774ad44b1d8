// The pages of a database file: https://www.sqlite.org/fileformat2.html#b_tree_pages
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace plant_file
{

using Bytes = std::vector<unsigned char>;
using PageNumber = std::uint32_t; // the first page is 1

constexpr std::uint32_t LeastPageSize = 512;
constexpr std::uint32_t MostPageSize = 65536;
constexpr std::size_t FileHeaderSize = 100; // at the beginning of page 1

bool IsPageSize(std::uint32_t size);

// These require that the bytes exist.
std::uint32_t BigEndian16(const Bytes& bytes, std::size_t at);
std::uint32_t BigEndian32(const Bytes& bytes, std::size_t at);

// Reads a number of one to nine bytes before `end` and moves `at` behind it.
std::optional<std::int64_t> ReadVarint(const Bytes& bytes, std::size_t& at, std::size_t end);

enum class PageType : unsigned char
{
    InteriorIndex = 2,
    InteriorTable = 5,
    LeafIndex = 10,
    LeafTable = 13
};

struct Page
{
    PageNumber Number = 0;
    std::size_t Usable = 0;   // bytes without the reserved ones at the end
    std::size_t Readable = 0; // of the usable bytes: the others are behind the end of the file, and zeros here
    Bytes Content;

    std::size_t HeaderOffset() const { return Number == 1 ? FileHeaderSize : 0; }
    bool Is(PageType type) const { return Content[HeaderOffset()] == static_cast<unsigned char>(type); }
};

// A cell with a payload: a row of a table, or an entry of an index.
struct Cell
{
    std::int64_t RowID = 0; // of a table
    std::size_t Size = 0;   // of the payload
    std::size_t LocalAt = 0;
    std::size_t LocalSize = 0;
    PageNumber Overflow = 0; // the page with the rest; 0 for none
};

// The number of cells of a page of a tree.
struct CellCount
{
    std::size_t Number = 0;
    // Whether this number is in the page's header, and the cells and the free space fill the page.
    bool IsRight = false;
};

// Where the number in the header is wrong, and a different number of cells fills the page, it is that number.
CellCount CountCells(const Page& page);

// The cells of a page of a table's leaves or of an index. A cell that does not fit the page is std::nullopt.
std::vector<std::optional<Cell>> CellsOf(const Page& page);

// A child of an interior page, and the greatest row ID that it can have.
struct Child
{
    PageNumber Number = 0;
    std::int64_t Greatest = 0;
};

struct Children
{
    std::vector<Child> List; // in order; the last has the greatest row ID that exists
    bool IsWhole = true;     // no damage was found: in the cells, in their number, and in the order of the row IDs
};

// The children of an interior page of a table or an index. `Greatest` is set for tables only.
Children ChildrenOf(const Page& page);

} // namespace plant_file
