#pragma once

#include "transfer/imported.h"

#include <cstdint>
#include <functional>
#include <string>

template <typename Record> struct AddedRows
{
    std::int64_t Count = 0;
};
using AddedCounts = Tables<AddedRows>;

// Adds the imported rows to the journal at `path`, a copy that is discarded after a failure. Creates the
// strains of the plants if the source has no table of strains, and the events of care entries and harvest records if
// it has no table of events. Calls `onRow` before each row.
// Returns how many rows each table gained. Throws Refusal.
AddedCounts AddRows(const std::string& path, ImportedTables& tables, const std::function<void()>& onRow);
