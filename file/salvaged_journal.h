// The journal that a salvage writes.
#pragma once

#include "access.h"
#include "journal_table.h"
#include "plant_file.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <sqlite3.h>

namespace plant_file
{

// Writes the rows into a new journal and counts them. Rows of all tables are added first, then the names of lost rows;
// Finish() is the last call.
class SalvagedJournal
{
  public:
    // Makes the empty file a journal.
    SalvagedJournal(const std::filesystem::path& file, const std::vector<JournalTable>& tables);

    // Adds a row unless the table has it already or does not allow it. `values` are in the table's order.
    void Add(std::size_t table, std::int64_t rowID, const Values& values);
    // The row is not among those that were added. `uuid` is that of a plant; empty where it is unknown.
    void AddLost(std::size_t table, std::int64_t rowID, const std::string& uuid);
    // Rows with unknown row IDs were not added. Where all lost rows are known, they are among those.
    void AddDamaged(std::size_t table, std::int64_t rows, bool lostRowsAreKnown);
    // Adds the plants that other rows need, clears links to lost rows, and writes the report.
    void Finish(PlantSalvageReport& report);

  private:
    struct Counts
    {
        std::int64_t Added = 0;
        std::int64_t Damaged = 0;
        bool IsDamaged = false;
        bool LostRowsAreKnown = false;
        std::map<std::string, std::int64_t> Refused; // by the reason
    };

    using RowStatement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;
    RowStatement Prepare(const std::string& sql);
    std::string Insert(std::size_t table, std::int64_t rowID, const Values& values);
    std::string ReasonOfRefusal(std::size_t table, std::int64_t rowID, const Values& values);
    std::size_t NumberOf(const std::string& name) const;
    void FindLostByLinks();
    void AddPlaceholders(PlantSalvageReport& report);
    void ClearLinks(PlantSalvageReport& report);
    std::int64_t LostRows(std::size_t table);
    void Run(const char* sql);
    std::int64_t Number(const std::string& sql);

    const std::vector<JournalTable>& Tables;
    std::vector<Counts> TableCounts;
    Connection Journal;
    std::vector<RowStatement> Inserts; // by table
    std::vector<RowStatement> LostInserts;
};

} // namespace plant_file
