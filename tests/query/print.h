// Prints answers, so that tests compare whole answers and show where two differ.
#pragma once

#include "plant_query.h"

#include <string>
#include <vector>

namespace support
{

std::string Printed(const PlantActivity& activity);
std::string Printed(const PlantCalendarDay& day);

// One line for each record.
template <typename Record> std::string Printed(const std::vector<Record>& records)
{
    std::string text;
    for (const Record& record : records)
        text += Printed(record) + '\n';
    return text;
}

} // namespace support
