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

// The format in the header; std::nullopt where the header is damaged, as far as that can be seen.
std::optional<PageFormat> FormatInHeader(DamagedFile& file)
{
    constexpr std::string_view magic = "SQLite format 3"; // with a zero byte at the end
    constexpr std::size_t leastUsable = 480;
    Bytes header(FileHeaderSize);
    file.Read(0, header);
    const std::uint32_t stored = BigEndian16(header, 16);
    const std::uint32_t size = stored == 1 ? MostPageSize : stored;
    const std::uint32_t encoding = BigEndian32(header, 56);
    const std::int64_t bytes = static_cast<std::int64_t>(BigEndian32(header, 28)) * size; // the number of pages
    PageFormat format;
    format.PageSize = size;
    format.Reserved = header[20];
    format.Encoding = static_cast<TextEncoding>(encoding);
    const bool isWhole = std::equal(magic.begin(), magic.end(), header.begin()) && IsPageSize(size) && encoding >= 1 &&
                         encoding <= Encodings.size() && size - format.Reserved >= leastUsable && bytes == file.Size();
    return isWhole ? std::optional(format) : std::nullopt;
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
    const std::optional<PageFormat> inHeader = FormatInHeader(file);
    if (inHeader)
    {
        if (inHeader->Reserved == 0 && CountRows(file, *inHeader, tables, 1) != 0)
            return inHeader;
        candidates.push_back(*inHeader);
    }
    for (std::uint32_t size = LeastPageSize; size <= MostPageSize; size *= 2)
        for (const TextEncoding encoding : Encodings)
            candidates.push_back({size, 0, encoding});
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
