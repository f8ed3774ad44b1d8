#pragma once

#include "plant_database.h"

#include <string>

namespace support
{

// Stores a journal without findings and with rows in every table: two plants, Basil and its clone Cutting. `photoPath`
// names an existing file.
void StoreBasilJournal(PlantRepository& repository, const std::string& photoPath);

} // namespace support
