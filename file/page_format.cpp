#include "page_format.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

namespace plant_file
{

namespace
{

constexpr std::array<TextEncoding, 3> Encodings = {TextEncoding::UTF8, TextEncoding::UTF16LittleEndian,
                                                   TextEncoding::UTF16BigEndian};

struct HeaderFormat
{
    PageFormat Format;
    bool IsCertain = false; // no other field of the header contradicts it
};

// The format in the header; std::nullopt where it is not possible.
std::optional<HeaderFormat> FormatInHeader(DamagedFile& file)
{
    constexpr std::string_view magic = "SQLite format 3"; // with a zero byte at the end
    constexpr std::size_t leastUsable = 480;
    Bytes header(FileHeaderSize);
    file.Read(0, header);
    const std::uint32_t stored = BigEndian16(header, 16);
    const std::uint32_t size = stored == 1 ? MostPageSize : stored;
    const std::uint32_t encoding = BigEndian32(header, 56);
    const std::int64_t bytes = static_cast<std::int64_t>(BigEndian32(header, 28)) * size; // the number of pages
    const std::size_t reserved = header[20];
    if (!IsPageSize(size) || encoding < 1 || encoding > Encodings.size() || size - reserved < leastUsable)
        return std::nullopt;
    const bool isCertain = std::equal(magic.begin(), magic.end(), header.begin()) && bytes == file.Size();
    return HeaderFormat{{size, reserved, static_cast<TextEncoding>(encoding)}, isCertain};
}

// The number of reserved bytes in pages of this size: SQLite puts the first cell of a page before them.
std::size_t FindReserved(DamagedFile& file, std::size_t pageSize)
{
    std::array<std::int64_t, 256> pagesWith{}; // by the number of bytes behind the last cell
    DamagedPages pages(file, {pageSize, 0, TextEncoding::UTF8});
    for (PageNumber number = 1; pages.Has(number); ++number)
    {
        const Page page = pages.Read(number);
        if (!page.Is(PageType::LeafTable))
            continue;
        std::size_t end = 0;
        for (const std::optional<Cell>& cell : CellsOf(page))
            if (cell && cell->LocalSize == cell->Size) // it is not known how much of a longer one is here
                end = std::max(end, cell->LocalAt + cell->LocalSize);
        if (pageSize - end < pagesWith.size())
            ++pagesWith[pageSize - end];
    }
    return static_cast<std::size_t>(std::max_element(pagesWith.begin(), pagesWith.end()) - pagesWith.begin());
}

bool IsRowOfAny(const std::vector<MappedTable>& tables, const Values& values)
{
    for (const MappedTable& table : tables)
        for (const RowForm& form : table.Forms)
            if (FitsOnly(table.Table, form, values))
                return true;
    return false;
}

// The number of rows, up to `most`, that can be read in this format.
std::int64_t CountRows(DamagedFile& file, const PageFormat& format, const std::vector<MappedTable>& tables,
                       std::int64_t most)
{
    DamagedPages pages(file, format);
    std::int64_t rows = 0;
    for (PageNumber number = 1; pages.Has(number) && rows < most; ++number)
    {
        const Page page = pages.Read(number);
        if (!page.Is(PageType::LeafTable))
            continue;
        for (const std::optional<Cell>& cell : CellsOf(page))
            if (const std::optional<Values> values = cell ? pages.ReadValues(page, *cell) : std::nullopt)
                rows += IsRowOfAny(tables, *values) ? 1 : 0;
    }
    return rows;
}

} // namespace

std::optional<PageFormat> FindPageFormat(DamagedFile& file, const std::vector<MappedTable>& tables)
{
    constexpr std::int64_t all = std::numeric_limits<std::int64_t>::max();
    std::vector<PageFormat> candidates;
    if (const std::optional<HeaderFormat> inHeader = FormatInHeader(file))
    {
        // Names in the schema show that the encoding is right.
        if (inHeader->IsCertain && inHeader->Format.Reserved == 0 &&
            CountRows(file, inHeader->Format, {tables.back()}, 1) != 0)
            return inHeader->Format;
        candidates.push_back(inHeader->Format);
    }
    for (std::uint32_t size = LeastPageSize; size <= MostPageSize; size *= 2)
    {
        const std::size_t reserved = FindReserved(file, size);
        for (const TextEncoding encoding : Encodings)
        {
            candidates.push_back({size, 0, encoding});
            if (reserved != 0)
                candidates.push_back({size, reserved, encoding});
        }
    }
    std::optional<PageFormat> best;
    std::int64_t bestRows = 0;
    for (const PageFormat& candidate : candidates)
    {
        const std::int64_t rows = CountRows(file, candidate, tables, all);
        if (rows > bestRows)
        {
            best = candidate;
            bestRows = rows;
        }
    }
    return best;
}

} // namespace plant_file
