// Determines the kind of an open file.
#pragma once

#include "plant_file.h"

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

} // namespace plant_file
