#include "index_entries.h"

#include <unordered_set>
#include <vector>

namespace plant_file
{

bool ForEachIndexEntry(DamagedPages& pages, PageNumber root,
                       const std::function<void(const Values& values, std::int64_t rowID)>& read)
{
    bool isWhole = true;
    std::unordered_set<PageNumber> visited;
    std::vector<PageNumber> rest = {root};
    while (!rest.empty())
    {
        const PageNumber number = rest.back();
        rest.pop_back();
        const bool isNew = pages.Has(number) && visited.insert(number).second;
        const Page page = isNew ? pages.Read(number) : Page();
        if (!isNew || !(page.Is(PageType::LeafIndex) || page.Is(PageType::InteriorIndex)))
        {
            isWhole = false;
            continue;
        }
        const CellCount count = CountCells(page);
        const bool isEmptyIndex = number == root && page.Is(PageType::LeafIndex);
        isWhole = isWhole && count.IsRight && (count.Number != 0 || isEmptyIndex);
        for (const std::optional<Cell>& cell : CellsOf(page))
        {
            const std::optional<Values> values = cell ? pages.ReadValues(page, *cell) : std::nullopt;
            if (values && values->size() > 1 && values->back().Class == StorageClass::Integer)
                read(*values, values->back().Integer);
            else
                isWhole = false;
        }
        if (page.Is(PageType::LeafIndex))
            continue;
        for (const Child& child : ChildrenOf(page).List) // where one is missing, its cell is damaged, too
            rest.push_back(child.Number);
    }
    return isWhole;
}

} // namespace plant_file
