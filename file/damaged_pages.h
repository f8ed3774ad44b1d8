// The pages of a damaged file, and the payloads of their cells.
#pragma once

#include "damaged_file.h"
#include "page.h"
#include "record.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace plant_file
{

struct PageFormat
{
    std::size_t PageSize = 4096;
    std::size_t Reserved = 0; // bytes at the end of each page
    TextEncoding Encoding = TextEncoding::UTF8;
};

class DamagedPages
{
  public:
    DamagedPages(DamagedFile& file, const PageFormat& format);

    const PageFormat& Format() const { return Parameters; }
    PageNumber Count() const { return PageCount; }
    bool Has(PageNumber number) const { return number >= 1 && number <= PageCount; }
    // The page must exist.
    Page Read(PageNumber number);
    // The pages of the number in the header that the file does not have, or does not have whole.
    std::int64_t CountMissing();
    // The values of a cell; std::nullopt where an overflow page is missing or the values do not fit the payload.
    // `overflow` receives the numbers of these pages.
    std::optional<Values> ReadValues(const Page& page, const Cell& cell, std::vector<PageNumber>* overflow = nullptr);
    // Call it once for each row with overflow pages. Returns whether no earlier row has one of them.
    bool UseOverflow(const std::vector<PageNumber>& overflow);

  private:
    bool AppendOverflow(PageNumber number, std::size_t size, Bytes& payload, std::vector<PageNumber>* overflow);

    DamagedFile& File;
    PageFormat Parameters;
    PageNumber PageCount;
    std::int64_t RemainingOverflow; // limits the work: damaged cells can share a long chain
    std::vector<bool> UsedOverflow; // by page number
};

} // namespace plant_file
