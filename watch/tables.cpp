#include "tables.h"

#include <algorithm>
#include <cstring>

#include <sqlite3.h>

namespace plant_watch
{

const Table* FindTable(const char* schema, const char* name) noexcept
{
    if (std::strcmp(schema, "main") != 0)
        return nullptr;
    const auto* found = std::find_if(Tables.begin(), Tables.end(),
                                     [name](const Table& table) { return sqlite3_stricmp(table.Name, name) == 0; });
    return found == Tables.end() ? nullptr : found;
}

} // namespace plant_watch
