#include "page_rows.h"

#include <algorithm>
#include <iterator>
#include <map>
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

// The parts of a page that rows were read from.
class ReadParts
{
  public:
    // Whether no byte of the cell was read.
    bool HasNone(const Cell& cell) const
    {
        const auto after = Ends.lower_bound(cell.LocalAt + cell.LocalSize);
        return after == Ends.begin() || std::prev(after)->second <= cell.LocalAt;
    }
    void Add(const Cell& cell) { Ends.emplace(cell.LocalAt, cell.LocalAt + cell.LocalSize); }

  private:
    std::map<std::size_t, std::size_t> Ends; // by the beginning
};

// The number of rows of the page; 0 where it cannot be right.
std::size_t PossibleCount(const Page& page, const CellCount& count)
{
    const std::size_t contentAt = BigEndian16(page.Content, page.HeaderOffset() + 5);
    const std::size_t end = contentAt == 0 ? MostPageSize : contentAt;
    return page.HeaderOffset() + 8 + 2 * count.Number <= std::min(end, page.Usable) ? count.Number : 0;
}

} // namespace

PageRows ReadPageRows(DamagedPages& pages, const Page& page, const JournalTable& table, const RowForm& form)
{
    PageRows result;
    std::vector<PageRow> rows;
    ReadParts parts;
    bool sharesNone = true; // of its overflow pages with another row
    for (const std::optional<Cell>& cell : CellsOf(page))
    {
        if (!cell || !parts.HasNone(*cell))
            continue;
        std::vector<PageNumber> overflow;
        std::optional<Values> values = pages.ReadValues(page, *cell, &overflow);
        if (!values || !Fits(table, form, *values))
            continue;
        if (!pages.UseOverflow(overflow))
            sharesNone = false;
        parts.Add(*cell);
        rows.push_back({cell->RowID, std::move(*values)});
    }
    result.List = LongestAscent(std::move(rows));
    const CellCount cells = CountCells(page);
    const std::size_t count = PossibleCount(page, cells);
    result.Damaged = static_cast<std::int64_t>(count - std::min(count, result.List.size()));
    result.IsWhole = cells.IsRight && result.Damaged == 0 && sharesNone;
    return result;
}

} // namespace plant_file
