#include "damaged_pages.h"

#include <algorithm>

namespace plant_file
{

namespace
{

PageNumber CountPages(std::int64_t bytes, std::size_t pageSize)
{
    constexpr std::int64_t most = 0xFFFFFFFE; // of SQLite
    const auto size = static_cast<std::int64_t>(pageSize);
    return static_cast<PageNumber>(std::min(most, (bytes + size - 1) / size));
}

} // namespace

DamagedPages::DamagedPages(DamagedFile& file, const PageFormat& format)
    : File(file), Parameters(format), PageCount(CountPages(file.Size(), format.PageSize)),
      RemainingOverflow(std::int64_t{20} * PageCount + 10'000), UsedOverflow(std::size_t{PageCount} + 1)
{
}

Page DamagedPages::Read(PageNumber number)
{
    constexpr std::size_t mostHeader = 12; // of an interior page
    Page page;
    page.Number = number;
    page.Usable = Parameters.PageSize - Parameters.Reserved;
    page.Content.resize(Parameters.PageSize);
    const std::int64_t offset = static_cast<std::int64_t>(number - 1) * static_cast<std::int64_t>(Parameters.PageSize);
    page.Readable = std::min(page.Usable, File.Read(offset, page.Content));
    if (page.Readable < page.HeaderOffset() + mostHeader)
        page.Content.assign(page.Content.size(), 0);
    return page;
}

std::int64_t DamagedPages::CountMissing()
{
    const std::int64_t inHeader = PageCountInHeader(Read(1).Content);
    const std::int64_t count = PageCount;
    std::int64_t missing = std::max<std::int64_t>(0, inHeader - count);
    // The rollback journal may have some of those that are behind the end of the file.
    const std::int64_t firstCut = File.SizeBeforeRollback() / static_cast<std::int64_t>(Parameters.PageSize) + 1;
    for (std::int64_t number = firstCut; number <= std::min(count, inHeader); ++number)
    {
        const Page page = Read(static_cast<PageNumber>(number));
        missing += page.Readable < page.Usable ? 1 : 0;
    }
    return missing;
}

// An overflow page begins with the number of the next one. The last one has 0 there. A page of zeros is damage: each
// has dozens of bytes of the row, and texts and numbers have no such runs of zeros.
bool DamagedPages::AppendOverflow(PageNumber number, std::size_t size, Bytes& payload,
                                  std::vector<PageNumber>* overflow)
{
    constexpr std::size_t linkSize = 4;
    while (size > 0)
    {
        if (!Has(number) || --RemainingOverflow < 0)
            return false;
        const Page page = Read(number);
        const std::size_t here = std::min(size, page.Usable - linkSize);
        if (linkSize + here > page.Readable)
            return false;
        const auto begin = page.Content.begin() + linkSize;
        const auto end = begin + static_cast<std::ptrdiff_t>(here);
        if (std::all_of(begin, end, [](unsigned char byte) { return byte == 0; }))
            return false;
        payload.insert(payload.end(), begin, end);
        if (overflow != nullptr)
            overflow->push_back(number);
        size -= here;
        number = BigEndian32(page.Content, 0);
    }
    return number == 0;
}

bool DamagedPages::UseOverflow(const std::vector<PageNumber>& overflow)
{
    bool isNew = true;
    for (const PageNumber number : overflow)
    {
        isNew = isNew && !UsedOverflow[number];
        UsedOverflow[number] = true;
    }
    return isNew;
}

std::optional<Values> DamagedPages::ReadValues(const Page& page, const Cell& cell, std::vector<PageNumber>* overflow)
{
    if (static_cast<std::int64_t>(cell.Size) > File.Size())
        return std::nullopt;
    const auto local = page.Content.begin() + static_cast<std::ptrdiff_t>(cell.LocalAt);
    Bytes payload(local, local + static_cast<std::ptrdiff_t>(cell.LocalSize));
    if (cell.Overflow != 0 && !AppendOverflow(cell.Overflow, cell.Size - cell.LocalSize, payload, overflow))
        return std::nullopt;
    if (payload.size() != cell.Size) // it has to overflow, but the link is 0
        return std::nullopt;
    return ReadRecord(payload, Parameters.Encoding);
}

} // namespace plant_file
