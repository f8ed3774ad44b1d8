// Without the preupdate hook: the families of each row. SQLite calls the update hook for every row, except for two
// kinds: rows that REPLACE removes, whose table has a call for the row that replaces them; and all rows of a table that
// neither has a foreign key nor is the target of one, where a DELETE without WHERE drops them.
#include "row_hook.h"

namespace plant_watch
{

const bool RowHook::FindsPlants = false;

RowHook::RowHook(sqlite3* connection, Transactions& transactions) : Connection(connection), Into(transactions)
{
    const auto hook = [](void* self, int operation, const char* schema, const char* name, sqlite3_int64) noexcept
    {
        if (const Table* table = FindTable(schema, name))
            static_cast<RowHook*>(self)->AddRow(*table, operation);
    };
    sqlite3_update_hook(connection, hook, this);
}

RowHook::~RowHook()
{
    sqlite3_update_hook(Connection, nullptr, nullptr);
}

void RowHook::AddUnreported(sqlite3* connection, ChangeSet& changes) noexcept
{
    int foreignKeys = 0;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): SQLite has no other function for it
    sqlite3_db_config(connection, SQLITE_DBCONFIG_ENABLE_FKEY, -1, &foreignKeys);
    if (foreignKeys == 0)
        changes.AddEverything();
    else
        changes.Add(PlantRecordFamily::Strain); // the one table without foreign keys
}

void RowHook::AddRow(const Table& table, int /*operation*/) noexcept
{
    ChangeSet& changes = Into.Current();
    changes.Add(table.Family);
    if (table.PlantColumn != nullptr)
        changes.AddAnyPlant();
}

} // namespace plant_watch
