#include "page_rows.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace plant_file
{

namespace
{

// Keeps the most rows that ascend.
std::vector<PageRow> LongestAscent(std::vector<PageRow> rows)
{
    constexpr auto none = static_cast<std::size_t>(-1);
    std::vector<std::size_t> lasts; // by length: the row with the smallest row ID that ends an ascent
    std::vector<std::size_t> previous(rows.size(), none); // the row before each one in its ascent
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        const auto at = std::lower_bound(lasts.begin(), lasts.end(), rows[i].RowID,
                                         [&](std::size_t row, std::int64_t id) { return rows[row].RowID < id; });
        if (at != lasts.begin())
            previous[i] = *std::prev(at);
        if (at == lasts.end())
            lasts.push_back(i);
        else
            *at = i;
    }
    std::vector<PageRow> ascent;
    for (std::size_t i = lasts.empty() ? none : lasts.back(); i != none; i = previous[i])
        ascent.push_back(std::move(rows[i]));
    std::reverse(ascent.begin(), ascent.end());
    return ascent;
}

// The number of rows in the page's header; 0 where it cannot be right.
std::size_t CountInHeader(const Page& page)
{
    const std::size_t count = BigEndian16(page.Content, page.HeaderOffset() + 3);
    const std::size_t contentAt = BigEndian16(page.Content, page.HeaderOffset() + 5);
    const std::size_t end = contentAt == 0 ? MostPageSize : contentAt;
    return page.HeaderOffset() + 8 + 2 * count <= std::min(end, page.Usable) ? count : 0;
}

} // namespace

PageRows ReadPageRows(DamagedPages& pages, const Page& page, const JournalTable& table, const RowForm& form)
{
    PageRows result;
    std::vector<PageRow> rows;
    for (const std::optional<Cell>& cell : CellsOf(page))
    {
        std::optional<Values> values = cell ? pages.ReadValues(page, *cell) : std::nullopt;
        if (values && Fits(table, form, *values))
            rows.push_back({cell->RowID, std::move(*values)});
    }
    result.List = LongestAscent(std::move(rows));
    const std::size_t count = CountInHeader(page);
    result.Damaged = static_cast<std::int64_t>(count - std::min(count, result.List.size()));
    return result;
}

} // namespace plant_file
