#pragma once

#include "plant_file.h"
#include "record/json.h"

#include <string>

// How commands describe a file that was inspected.

// "journal, current schema"
const char* KindInWords(PlantFileKind kind);

// "3 plants, 120 other records, last date 2025-07-20"; for a file that is not a journal, its kind.
std::string ContentInWords(const PlantFileInspection& file);

JSON InspectionJSON(const std::string& path, const PlantFileInspection& file);
