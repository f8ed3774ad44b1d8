#include "page.h"

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

// Where the cells begin, as far as they are inside the page. Damaged pointers are 0.
std::vector<std::size_t> CellPointers(const Page& page)
{
    const std::size_t begin = page.HeaderOffset() + (IsInterior(page) ? InteriorHeaderSize : LeafHeaderSize);
    const std::size_t count = BigEndian16(page.Content, page.HeaderOffset() + 3);
    std::vector<std::size_t> pointers;
    for (std::size_t i = 0; i < count && begin + 2 * i + 2 <= page.Usable; ++i)
    {
        const std::size_t pointer = BigEndian16(page.Content, begin + 2 * i);
        const bool isInside = pointer >= begin && pointer + 4 <= page.Readable;
        pointers.push_back(isInside ? pointer : 0);
    }
    return pointers;
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
