// The rows of a page of a damaged file.
#pragma once

#include "damaged_pages.h"
#include "journal_table.h"

#include <cstdint>
#include <vector>

namespace plant_file
{

struct PageRow
{
    std::int64_t RowID;
    Values Stored; // in the order of the stored form
};

struct PageRows
{
    std::vector<PageRow> List;
    std::int64_t Damaged = 0; // rows that cannot be read
    bool IsWhole = true;      // whether no damage was found in the page
};

// Reads the rows that have the form, and whose row IDs ascend: a row ID that is out of order is damaged. No two rows
// share a byte of the page. Call it once for each page: two rows with the same overflow page are damage. Both are
// returned, since either may be the one whose link is wrong.
PageRows ReadPageRows(DamagedPages& pages, const Page& page, const JournalTable& table, const RowForm& form);

} // namespace plant_file
