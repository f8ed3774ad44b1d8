// Determines the kind of an open file.
#pragma once

#include "plant_file.h"

#include <cstdint>
#include <optional>

#include <sqlite3.h>

namespace plant_file
{

enum class InspectionExtent : std::int32_t
{
    Schema,
    Rows // and the schema
};

// Fills in all but the size. Call it in a ReadTransaction.
PlantFileInspection InspectConnection(sqlite3* db, InspectionExtent extent);

// The kind of a file that SQLite failed to read; none where the failure says nothing about the file.
std::optional<PlantFileKind> KindOfUnreadableFile(int code);

} // namespace plant_file
