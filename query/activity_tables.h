// The tables whose rows are activities: how they are read, and the kind and text of a row.
#pragma once

#include "reading.h"

#include <array>
#include <string>
#include <vector>

namespace plant_query
{

struct ActivityTable
{
    PlantActivityRecord Record;
    const char* Step;                    // in an error
    const char* Select;                  // the row ID, the plant's UUID, the date, and what Kind and Text need
    const char* Date;                    // the column of the date
    std::vector<std::string> (*Kinds)(); // all that Kind returns
    std::string (*Kind)(const Statement& row);
    std::string (*Text)(const PlantRepository& repository, const Statement& row);
};

// The events come first.
const std::array<ActivityTable, 6>& ActivityTables();

} // namespace plant_query
