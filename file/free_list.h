// The pages of a file that are not in use. They may still have the bytes of deleted rows.
#pragma once

#include "damaged_pages.h"
#include "page.h"

#include <unordered_set>

namespace plant_file
{

// The pages of the free list. Where its beginning or a link is damaged, also all pages that pages of the list's form
// name.
std::unordered_set<PageNumber> FindFreePages(DamagedPages& pages);

} // namespace plant_file
