#include "page.h"

#include <algorithm>
#include <limits>

namespace plant_file
{

namespace
{

constexpr std::size_t LeafHeaderSize = 8;
constexpr std::size_t InteriorHeaderSize = 12;

bool IsInterior(const Page& page)
{
    return page.Is(PageType::InteriorIndex) || page.Is(PageType::InteriorTable);
}

std::size_t PointersBegin(const Page& page)
{
    return page.HeaderOffset() + (IsInterior(page) ? InteriorHeaderSize : LeafHeaderSize);
}

// Where the cell with this number begins; 0 where the pointer to it is damaged.
std::size_t CellPointer(const Page& page, std::size_t number)
{
    const std::size_t pointer = BigEndian16(page.Content, PointersBegin(page) + 2 * number);
    return pointer >= PointersBegin(page) && pointer + 4 <= page.Readable ? pointer : 0;
}

// Where the cells begin, as far as they are inside the page. Damaged pointers are 0.
std::vector<std::size_t> CellPointers(const Page& page)
{
    const std::size_t count = CountCells(page).Number;
    std::vector<std::size_t> pointers;
    for (std::size_t i = 0; i < count && PointersBegin(page) + 2 * i + 2 <= page.Usable; ++i)
        pointers.push_back(CellPointer(page, i));
    return pointers;
}

// Where the cells may begin: behind the pointers and the unused bytes.
std::size_t ContentBegin(const Page& page)
{
    const std::size_t begin = BigEndian16(page.Content, page.HeaderOffset() + 5);
    return begin == 0 ? MostPageSize : begin;
}

// The bytes of all cells: those behind ContentBegin() that are not free. std::nullopt where the header or the list of
// free blocks is damaged.
std::optional<std::size_t> SizeOfCells(const Page& page)
{
    constexpr std::size_t leastBlock = 4;
    std::size_t free = page.Content[page.HeaderOffset() + 7]; // in fragments that are too small for the list
    std::size_t end = ContentBegin(page);
    for (std::size_t block = BigEndian16(page.Content, page.HeaderOffset() + 1); block != 0;)
    {
        if (block < end || block + leastBlock > page.Usable)
            return std::nullopt;
        const std::size_t size = BigEndian16(page.Content, block + 2);
        free += size;
        end = block + std::max(size, leastBlock);
        block = BigEndian16(page.Content, block);
    }
    if (end > page.Usable || ContentBegin(page) + free > page.Usable)
        return std::nullopt;
    return page.Usable - ContentBegin(page) - free;
}

// How much of a payload of this size is in the cell: https://www.sqlite.org/fileformat2.html#cell_payload
std::size_t LocalSizeOf(std::size_t size, std::size_t usable, bool isTable)
{
    const std::size_t most = isTable ? usable - 35 : (usable - 12) * 64 / 255 - 23;
    if (size <= most)
        return size;
    const std::size_t least = (usable - 12) * 32 / 255 - 23;
    const std::size_t wanted = least + (size - least) % (usable - 4);
    return wanted <= most ? wanted : least;
}

std::optional<Cell> ReadCell(const Page& page, std::size_t at)
{
    const bool isTable = page.Is(PageType::LeafTable);
    if (at == 0)
        return std::nullopt;
    if (page.Is(PageType::InteriorIndex))
        at += 4; // the child
    Cell cell;
    const std::optional<std::int64_t> size = ReadVarint(page.Content, at, page.Usable);
    if (!size || *size <= 0 || *size > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    if (isTable)
    {
        const std::optional<std::int64_t> rowID = ReadVarint(page.Content, at, page.Usable);
        if (!rowID)
            return std::nullopt;
        cell.RowID = *rowID;
    }
    cell.Size = static_cast<std::size_t>(*size);
    cell.LocalAt = at;
    cell.LocalSize = LocalSizeOf(cell.Size, page.Usable, isTable);
    const bool overflows = cell.LocalSize < cell.Size;
    if (at + cell.LocalSize + (overflows ? 4 : 0) > page.Readable)
        return std::nullopt;
    if (overflows)
        cell.Overflow = BigEndian32(page.Content, at + cell.LocalSize);
    return cell;
}

// The bytes that a cell takes; std::nullopt where it does not fit the page.
std::optional<std::size_t> SizeOfCell(const Page& page, std::size_t at)
{
    constexpr std::size_t least = 4;
    std::size_t end = at + 4;
    if (page.Is(PageType::InteriorTable))
        return at != 0 && ReadVarint(page.Content, end, page.Readable) ? std::optional(end - at) : std::nullopt;
    const std::optional<Cell> cell = ReadCell(page, at);
    if (!cell)
        return std::nullopt;
    end = cell->LocalAt + cell->LocalSize + (cell->LocalSize < cell->Size ? 4 : 0);
    return std::max(end - at, least);
}

} // namespace

bool IsPageSize(std::uint32_t size)
{
    return size >= LeastPageSize && size <= MostPageSize && (size & (size - 1)) == 0;
}

std::uint32_t BigEndian16(const Bytes& bytes, std::size_t at)
{
    return static_cast<std::uint32_t>(bytes[at]) << 8U | bytes[at + 1];
}

std::uint32_t BigEndian32(const Bytes& bytes, std::size_t at)
{
    return BigEndian16(bytes, at) << 16U | BigEndian16(bytes, at + 2);
}

std::optional<std::int64_t> ReadVarint(const Bytes& bytes, std::size_t& at, std::size_t end)
{
    constexpr int mostBytes = 9; // of which the last has eight bits
    std::uint64_t number = 0;
    for (int i = 1; at < end; ++i)
    {
        const unsigned char byte = bytes[at++];
        if (i == mostBytes)
            return static_cast<std::int64_t>(number << 8U | byte);
        number = number << 7U | (byte & 0x7FU);
        if ((byte & 0x80U) == 0)
            return static_cast<std::int64_t>(number);
    }
    return std::nullopt;
}

CellCount CountCells(const Page& page)
{
    const std::size_t inHeader = BigEndian16(page.Content, page.HeaderOffset() + 3);
    const std::optional<std::size_t> wanted = SizeOfCells(page);
    if (!wanted)
        return {inHeader, false};
    // A cell has four bytes at least, so no two numbers of cells have the same size.
    std::size_t count = 0;
    for (std::size_t size = 0; size < *wanted; ++count)
    {
        const bool hasPointer = PointersBegin(page) + 2 * count + 2 <= ContentBegin(page);
        const std::optional<std::size_t> cell = hasPointer ? SizeOfCell(page, CellPointer(page, count)) : std::nullopt;
        if (!cell || size + *cell > *wanted)
            return {inHeader, false};
        size += *cell;
    }
    return {count, count == inHeader};
}

std::vector<std::optional<Cell>> CellsOf(const Page& page)
{
    std::vector<std::optional<Cell>> cells;
    for (const std::size_t pointer : CellPointers(page))
        cells.push_back(ReadCell(page, pointer));
    return cells;
}

Children ChildrenOf(const Page& page)
{
    Children children;
    const CellCount count = CountCells(page);
    // Page 1 has no cell where the rows of its only child do not fit behind the header of the file.
    children.IsWhole = count.IsRight && (count.Number != 0 || page.Number == 1);
    std::int64_t before = std::numeric_limits<std::int64_t>::min();
    for (const std::size_t pointer : CellPointers(page))
    {
        std::size_t at = pointer + 4;
        std::optional<std::int64_t> greatest = before;
        if (pointer != 0 && page.Is(PageType::InteriorTable))
            greatest = ReadVarint(page.Content, at, page.Readable);
        if (pointer == 0 || !greatest || *greatest < before)
        {
            children.IsWhole = false;
            continue;
        }
        before = *greatest;
        children.List.push_back({BigEndian32(page.Content, pointer), before});
    }
    children.List.push_back(
        {BigEndian32(page.Content, page.HeaderOffset() + 8), std::numeric_limits<std::int64_t>::max()});
    return children;
}

} // namespace plant_file
