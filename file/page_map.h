// Which page of a damaged file has rows of which table.
#pragma once

#include "damaged_pages.h"
#include "free_list.h"
#include "journal_table.h"

#include <cstdint>
#include <limits>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace plant_file
{

struct RowIDRange
{
    std::int64_t First = std::numeric_limits<std::int64_t>::min();
    std::int64_t Last = std::numeric_limits<std::int64_t>::max();

    bool Contains(std::int64_t rowID) const { return rowID >= First && rowID <= Last; }
};

// A table whose pages are searched.
struct MappedTable
{
    JournalTable Table;
    std::vector<RowForm> Forms;   // those that its rows may have
    std::vector<RowIDRange> Gaps; // the row IDs of pages that the table's tree does not lead to
};

// A page belongs to a table in one of two cases. Either the tree of the table leads to it, and its rows have the form
// of the table. Or no tree leads to it, it is not in the free list, its rows have the form of the table and of no other
// one, and the tree of the table has a gap where one of its row IDs would be. So a table without damage has exactly
// the rows of its tree.
//
// A page is doubtful if it may have deleted rows: a page with row IDs out of the range that the tree gives it, a page
// to which both the tree and the free list lead, a page to which no tree leads while the free list is not whole or
// only ExpectRows() found the gap, and a page that DistrustShallowLeaves() finds.
class PageMap
{
  public:
    PageMap(DamagedPages& pages, std::vector<MappedTable>& tables, FreeList free)
        : Pages(pages), Tables(tables), Free(std::move(free))
    {
    }

    // Follows the tree of a table.
    void FollowTree(std::size_t table, PageNumber root);
    // All leaves of a whole tree are at the same depth. A root is shallow if it is a leaf: it can be one in a small
    // table, or a leaf that was copied over the root.
    bool HasShallowLeaves(std::size_t table) const;
    // Makes the shallow leaves doubtful, and expects rows of the table anywhere.
    void DistrustShallowLeaves(std::size_t table);
    // Expects these rows of the table on pages that no tree leads to. An index of the table names them.
    void ExpectRows(std::size_t table, const std::vector<std::int64_t>& rowIDs);
    // Assigns pages that no tree leads to. Call it after all trees were followed.
    void AssignOrphans();
    // The pages of a table in the order of the file, first those that are not doubtful.
    std::vector<PageNumber> LeavesOf(std::size_t table) const;
    // Whether a page that LeavesOf() returns is doubtful.
    bool IsDoubtful(PageNumber leaf) const { return Leaves.at(leaf).IsDoubtful; }

  private:
    struct Claim
    {
        std::size_t Table;
        RowIDRange Range;
        bool IsInRange; // whether a row ID of the page is in the range
        bool IsDoubtful;
        int Depth; // the root has 0
    };

    void ClaimLeaf(std::size_t table, const Page& page, const RowIDRange& range, int depth);
    // The depth of the deepest leaf, at least 1.
    int DeepestLeafOf(std::size_t table) const;
    // The only table that the rows of the page fit; Tables.size() where there is none.
    std::size_t OwnerOf(const Page& page);
    bool HasRowOf(std::size_t table, const Page& page);

    DamagedPages& Pages;
    std::vector<MappedTable>& Tables;
    FreeList Free;
    std::unordered_set<PageNumber> Interiors;
    std::unordered_map<PageNumber, Claim> Leaves;
    std::unordered_set<std::size_t> Expecting; // tables with gaps that only ExpectRows() found
};

} // namespace plant_file
