// The schema of a file, compared with that of a new journal.
#pragma once

#include "plant_file.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sqlite3.h>

namespace plant_file
{

constexpr const char* ReadingSchema = "reading the schema";

struct SchemaComparison
{
    PlantFileKind Kind = PlantFileKind::Foreign;                          // or Empty, Current, Older
    std::vector<std::string> Steps;                                       // of the migration, in its order
    std::vector<std::string> Reasons;                                     // why it is foreign
    std::vector<std::pair<std::string, std::vector<std::string>>> Tables; // those of a journal, with their columns
    std::string EventTable;           // its definition, where the migration does not rebuild it
    bool EventTypesUnchecked = false; // where that definition differs from a new journal's

    bool HasTable(std::string_view table) const;
    bool HasColumn(std::string_view table, std::string_view column) const;
};

// Reads no row of a table. Call it in a ReadTransaction.
SchemaComparison CompareSchema(sqlite3* db);

// Fails where a file of this kind is not a journal.
void RequireJournal(PlantFileKind kind, const std::vector<std::string>& reasons);

} // namespace plant_file
