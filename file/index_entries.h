// The entries of an index of a damaged file. They name rows that may be lost.
#pragma once

#include "damaged_pages.h"

#include <cstdint>
#include <functional>

namespace plant_file
{

// Calls `read` with the values and the row ID of each entry that the tree at `root` leads to.
// Returns whether the whole index could be read.
bool ForEachIndexEntry(DamagedPages& pages, PageNumber root,
                       const std::function<void(const Values& values, std::int64_t rowID)>& read);

} // namespace plant_file
