// The tables and rows of a damaged journal.
#pragma once

#include "damaged_file.h"
#include "damaged_pages.h"
#include "page_map.h"
#include "salvaged_journal.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace plant_file
{

class DamagedJournal
{
  public:
    // Finds the pages of the tables. Fails where no table or row of a journal is in the file.
    DamagedJournal(const std::filesystem::path& path, const std::vector<JournalTable>& tables,
                   const PlantBackUpProgress& progress);

    // Adds all rows, and the lost ones as far as they are known.
    void CopyTo(SalvagedJournal& journal);
    const DamagedFile& File() const { return Bytes; }
    std::int64_t CountMissingPages() { return Pages->CountMissing(); }

  private:
    using RowIDs = std::unordered_set<std::int64_t>;
    // A table or an index of the file.
    struct SchemaEntry
    {
        std::string Type;
        std::string Name;
        std::string Table;
        PageNumber Root = 0;
    };

    bool ReadSchema();
    void AddSchemaEntry(const Values& values);
    void FollowTables(bool schemaIsWhole);
    void CompareWithIndexes(std::size_t table);
    bool LacksRows(std::size_t table);
    // Calls `read` with the row ID of each row on the pages of the table.
    void ForEachRowID(std::size_t table, const std::function<void(std::int64_t rowID)>& read);
    void ChooseForm(std::size_t table);
    void CopyTable(std::size_t table, SalvagedJournal& journal);
    std::optional<RowIDs> IndexedRows(std::size_t table, const RowIDs& copied);
    bool AddEntriesOfIndexes(std::size_t table, SalvagedJournal& journal);

    DamagedFile Bytes;
    std::vector<MappedTable> Tables; // those of a journal, then SQLite's own
    std::optional<DamagedPages> Pages;
    std::optional<PageMap> Map;
    std::vector<SchemaEntry> Schema;
    bool HasOldEvents = false; // whether a migration would convert the events
};

} // namespace plant_file
