// The pages of a file that are not in use. They may still have the bytes of deleted rows.
#pragma once

#include "damaged_pages.h"
#include "page.h"

#include <unordered_set>

namespace plant_file
{

struct FreeList
{
    std::unordered_set<PageNumber> Pages;
    bool IsWhole = false; // whether the list could be followed to its end, and has the number of pages in the header
};

// The pages of the free list. Where the list is not whole, also all pages that pages of the list's form name.
FreeList FindFreePages(DamagedPages& pages);

} // namespace plant_file
