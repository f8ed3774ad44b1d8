// The hook that SQLite calls for each row that changes. preupdate_hook.cpp and update_hook.cpp define it; the build
// takes one of them.
#pragma once

#include "tables.h"
#include "transactions.h"

#include <array>

#include <sqlite3.h>

namespace plant_watch
{

class RowHook
{
  public:
    // Whether the hook finds the plant of a row.
    static const bool FindsPlants;

    // Throws a Failure or std::bad_alloc.
    RowHook(sqlite3* connection, Transactions& transactions);
    ~RowHook();
    RowHook(const RowHook&) = delete;
    RowHook& operator=(const RowHook&) = delete;

    // Adds what a transaction may have changed without a call of the hook.
    static void AddUnreported(sqlite3* connection, ChangeSet& changes) noexcept;

  private:
    void AddRow(const Table& table, int operation) noexcept;

    sqlite3* Connection;
    Transactions& Into;
    // For each table, the number of its `PlantColumn`. The update hook does not use it.
    [[maybe_unused]] std::array<int, Tables.size()> PlantColumns{};
};

} // namespace plant_watch
