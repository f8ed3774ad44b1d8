#include "page_map.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace plant_file
{

namespace
{

// A page of a tree, and the row IDs that it can have.
struct Branch
{
    PageNumber Number;
    RowIDRange Range;
    int Depth;
};

void PushChildren(const Children& children, const Branch& parent, std::vector<Branch>& branches)
{
    RowIDRange rest = parent.Range;
    const auto begin = static_cast<std::ptrdiff_t>(branches.size());
    for (const Child& child : children.List)
    {
        branches.push_back({child.Number, {rest.First, std::min(rest.Last, child.Greatest)}, parent.Depth + 1});
        if (child.Greatest >= rest.First && child.Greatest < std::numeric_limits<std::int64_t>::max())
            rest.First = child.Greatest + 1;
    }
    std::reverse(branches.begin() + begin, branches.end()); // the last is followed first
}

bool HasRowIn(const RowIDRange& range, const Page& page)
{
    const std::vector<std::optional<Cell>> cells = CellsOf(page);
    return std::any_of(cells.begin(), cells.end(),
                       [&](const std::optional<Cell>& cell) { return cell && range.Contains(cell->RowID); });
}

// Sorts ranges and joins those that overlap.
void Merge(std::vector<RowIDRange>& ranges)
{
    std::sort(ranges.begin(), ranges.end(),
              [](const RowIDRange& left, const RowIDRange& right) { return left.First < right.First; });
    std::vector<RowIDRange> merged;
    for (const RowIDRange& range : ranges)
        if (merged.empty() || range.First > merged.back().Last)
            merged.push_back(range);
        else
            merged.back().Last = std::max(merged.back().Last, range.Last);
    ranges = std::move(merged);
}

// The ranges are merged.
bool HasRowInAGap(const std::vector<RowIDRange>& gaps, const Page& page)
{
    const auto isInAGap = [&](const std::optional<Cell>& cell)
    {
        if (!cell)
            return false;
        const auto after = std::upper_bound(gaps.begin(), gaps.end(), cell->RowID,
                                            [](std::int64_t id, const RowIDRange& gap) { return id < gap.First; });
        return after != gaps.begin() && std::prev(after)->Contains(cell->RowID);
    };
    const std::vector<std::optional<Cell>> cells = CellsOf(page);
    return std::any_of(cells.begin(), cells.end(), isInAGap);
}

} // namespace

void PageMap::FollowTree(std::size_t table, PageNumber root)
{
    std::vector<Branch> branches = {{root, {}, 0}};
    std::vector<RowIDRange>& gaps = Tables[table].Gaps;
    while (!branches.empty())
    {
        const Branch branch = branches.back();
        branches.pop_back();
        if (!Pages.Has(branch.Number))
        {
            gaps.push_back(branch.Range);
            continue;
        }
        const Page page = Pages.Read(branch.Number);
        if (page.Is(PageType::LeafTable))
            ClaimLeaf(table, page, branch.Range, branch.Depth);
        else if (page.Is(PageType::InteriorTable) && Interiors.insert(branch.Number).second)
        {
            const Children children = ChildrenOf(page);
            if (!children.IsWhole)
                gaps.push_back(branch.Range);
            PushChildren(children, branch, branches);
        }
        else
            gaps.push_back(branch.Range);
    }
}

void PageMap::ClaimLeaf(std::size_t table, const Page& page, const RowIDRange& range, int depth)
{
    const std::size_t owner = OwnerOf(page);
    const bool isEmpty = CellsOf(page).empty();
    const bool isLost = isEmpty && depth > 0; // SQLite keeps no empty leaf but a root
    const bool isInRange = isEmpty || HasRowIn(range, page);
    const bool fits = owner == table || (owner == Tables.size() && (isEmpty || HasRowOf(table, page)));
    const bool isFree = Free.Pages.count(page.Number) != 0;
    // A damaged link may lead to any page: one with row IDs out of its range is used if nothing else uses it.
    if (!fits || isLost || (!isInRange && isFree))
    {
        Tables[table].Gaps.push_back(range);
        return;
    }
    const bool isDoubtful = !isInRange || isFree;
    if (isDoubtful) // where the link is wrong, the page with the rows of the range is somewhere else
        Tables[table].Gaps.push_back(range);
    const Claim claim{table, range, isInRange, isDoubtful, depth};
    const auto [found, isNew] = Leaves.emplace(page.Number, claim);
    if (isNew)
        return;
    Claim rejected = claim;
    if (isInRange && !found->second.IsInRange)
        std::swap(found->second, rejected);
    Tables[rejected.Table].Gaps.push_back(rejected.Range);
}

std::size_t PageMap::OwnerOf(const Page& page)
{
    for (const std::optional<Cell>& cell : CellsOf(page))
    {
        const std::optional<Values> values = cell ? Pages.ReadValues(page, *cell) : std::nullopt;
        if (!values)
            continue;
        for (std::size_t table = 0; table < Tables.size(); ++table)
            for (const RowForm& form : Tables[table].Forms)
                if (FitsOnly(Tables[table].Table, form, *values))
                    return table;
    }
    return Tables.size();
}

bool PageMap::HasRowOf(std::size_t table, const Page& page)
{
    for (const std::optional<Cell>& cell : CellsOf(page))
        if (const std::optional<Values> values = cell ? Pages.ReadValues(page, *cell) : std::nullopt)
            for (const RowForm& form : Tables[table].Forms)
                if (Fits(Tables[table].Table, form, *values))
                    return true;
    return false;
}

int PageMap::DeepestLeafOf(std::size_t table) const
{
    int deepest = 1;
    for (const auto& [number, claim] : Leaves)
        if (claim.Table == table)
            deepest = std::max(deepest, claim.Depth);
    return deepest;
}

bool PageMap::HasShallowLeaves(std::size_t table) const
{
    const int deepest = DeepestLeafOf(table);
    return std::any_of(Leaves.begin(), Leaves.end(),
                       [&](const auto& leaf) { return leaf.second.Table == table && leaf.second.Depth < deepest; });
}

void PageMap::DistrustShallowLeaves(std::size_t table)
{
    const int deepest = DeepestLeafOf(table);
    for (auto& [number, claim] : Leaves)
        if (claim.Table == table && claim.Depth < deepest)
            claim.IsDoubtful = true;
    Tables[table].Gaps.emplace_back();
}

void PageMap::ExpectRows(std::size_t table, const std::vector<std::int64_t>& rowIDs)
{
    if (Tables[table].Gaps.empty()) // nothing but the index shows that rows are lost
        Expecting.insert(table);
    for (const std::int64_t rowID : rowIDs)
        Tables[table].Gaps.push_back({rowID, rowID});
}

void PageMap::AssignOrphans()
{
    for (MappedTable& table : Tables)
        Merge(table.Gaps);
    for (PageNumber number = 1; Pages.Has(number); ++number)
    {
        if (Leaves.count(number) != 0 || Free.Pages.count(number) != 0)
            continue;
        const Page page = Pages.Read(number);
        const std::size_t owner = page.Is(PageType::LeafTable) ? OwnerOf(page) : Tables.size();
        if (owner < Tables.size() && HasRowInAGap(Tables[owner].Gaps, page))
            Leaves.emplace(number, Claim{owner, {}, true, !Free.IsWhole || Expecting.count(owner) != 0, 0});
    }
}

std::vector<PageNumber> PageMap::LeavesOf(std::size_t table) const
{
    std::vector<PageNumber> pages;
    for (const auto& [number, claim] : Leaves)
        if (claim.Table == table)
            pages.push_back(number);
    std::sort(pages.begin(), pages.end(),
              [&](PageNumber left, PageNumber right)
              { return std::pair(IsDoubtful(left), left) < std::pair(IsDoubtful(right), right); });
    return pages;
}

} // namespace plant_file
