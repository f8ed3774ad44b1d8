// Reads harvest records.
#pragma once

#include "reading.h"

#include <optional>
#include <string>

namespace plant_query
{

class HarvestReader
{
  public:
    explicit HarvestReader(sqlite3* connection);

    // The harvest record of the plant.
    std::optional<HarvestRecord> Of(const std::string& plantUUID);

  private:
    Statement Rows;
};

} // namespace plant_query
