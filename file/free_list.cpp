#include "free_list.h"

#include <optional>
#include <vector>

namespace plant_file
{

namespace
{

using FreePages = std::unordered_set<PageNumber>;

// A page of the list: https://www.sqlite.org/fileformat2.html#the_freelist
struct Trunk
{
    PageNumber Next = 0;
    std::vector<PageNumber> Leaves;
};

std::optional<Trunk> ReadTrunk(const DamagedPages& pages, const Page& page)
{
    constexpr std::size_t firstLeafAt = 8;
    Trunk trunk;
    trunk.Next = BigEndian32(page.Content, 0);
    const std::uint32_t count = BigEndian32(page.Content, 4);
    if ((trunk.Next != 0 && !pages.Has(trunk.Next)) || firstLeafAt + 4 * std::uint64_t{count} > page.Readable)
        return std::nullopt;
    for (std::size_t i = 0; i < count; ++i)
    {
        const PageNumber leaf = BigEndian32(page.Content, firstLeafAt + 4 * i);
        if (leaf < 2 || !pages.Has(leaf))
            return std::nullopt;
        trunk.Leaves.push_back(leaf);
    }
    return trunk;
}

// Whether the whole list could be followed.
bool FollowList(DamagedPages& pages, FreePages& found)
{
    const Page first = pages.Read(1);
    const std::size_t count = BigEndian32(first.Content, 36);
    for (PageNumber next = BigEndian32(first.Content, 32); next != 0;)
    {
        if (!pages.Has(next) || found.count(next) != 0)
            return false;
        const std::optional<Trunk> trunk = ReadTrunk(pages, pages.Read(next));
        if (!trunk)
            return false;
        found.insert(next);
        found.insert(trunk->Leaves.begin(), trunk->Leaves.end());
        next = trunk->Next;
    }
    return found.size() == count && first.Content[0] == 'S'; // the header begins with the name of the format
}

} // namespace

FreeList FindFreePages(DamagedPages& pages)
{
    FreeList list;
    list.IsWhole = FollowList(pages, list.Pages);
    if (list.IsWhole)
        return list;
    for (PageNumber number = 2; pages.Has(number); ++number)
        if (const std::optional<Trunk> trunk = ReadTrunk(pages, pages.Read(number)))
            list.Pages.insert(trunk->Leaves.begin(), trunk->Leaves.end());
    return list;
}

} // namespace plant_file
