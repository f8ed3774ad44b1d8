// With the preupdate hook: the families and plants of each row.
#include "row_hook.h"
#include "statement.h"

#include <cstddef>
#include <string>

namespace plant_watch
{
namespace
{

using ReadColumn = int (*)(sqlite3*, int, sqlite3_value**);

void AddPlant(ChangeSet& changes, sqlite3* connection, int column, ReadColumn read) noexcept
{
    sqlite3_value* value = nullptr;
    const unsigned char* uuid = read(connection, column, &value) == SQLITE_OK ? sqlite3_value_text(value) : nullptr;
    if (uuid != nullptr)
        changes.AddPlant(reinterpret_cast<const char*>(uuid));
    else
        changes.AddAnyPlant();
}

// A prepared `DELETE FROM Strains` drops the rows without a call of the hook if it was prepared without one. Setting a
// flag, even to its present value, makes SQLite prepare all statements again.
void ExpirePreparedStatements(sqlite3* connection)
{
    const int foreignKeys = Statement(connection, "PRAGMA foreign_keys;").Value();
    Statement(connection, "PRAGMA foreign_keys=" + std::to_string(foreignKeys) + ";").Run();
}

} // namespace

const bool RowHook::FindsPlants = true;

RowHook::RowHook(sqlite3* connection, Transactions& transactions) : Connection(connection), Into(transactions)
{
    for (std::size_t number = 0; number < Tables.size(); ++number)
        if (const Table& table = Tables[number]; table.PlantColumn != nullptr)
            PlantColumns[number] =
                Statement(connection, std::string("SELECT * FROM main.") + table.Name + ";").Column(table.PlantColumn);
    ExpirePreparedStatements(connection);
    const auto hook = [](void* self, sqlite3*, int operation, const char* schema, const char* name, sqlite3_int64,
                         sqlite3_int64) noexcept
    {
        if (const Table* table = FindTable(schema, name))
            static_cast<RowHook*>(self)->AddRow(*table, operation);
    };
    sqlite3_preupdate_hook(connection, hook, this);
}

RowHook::~RowHook()
{
    sqlite3_preupdate_hook(Connection, nullptr, nullptr);
}

void RowHook::AddUnreported(sqlite3* /*connection*/, ChangeSet& /*changes*/) noexcept
{
    // SQLite calls the hook for every row.
}

void RowHook::AddRow(const Table& table, int operation) noexcept
{
    ChangeSet& changes = Into.Current();
    changes.Add(table.Family);
    if (table.PlantColumn == nullptr)
        return;
    const int column = PlantColumns[static_cast<std::size_t>(table.Family)];
    if (operation != SQLITE_INSERT)
        AddPlant(changes, Connection, column, sqlite3_preupdate_old);
    if (operation != SQLITE_DELETE)
        AddPlant(changes, Connection, column, sqlite3_preupdate_new);
}

} // namespace plant_watch
