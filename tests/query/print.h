// Prints answers, so that tests compare whole answers and show where two differ. Numbers are rounded to 12 digits: sums
// in another order may differ after them.
#pragma once

#include "plant_query.h"

#include <string>
#include <vector>

namespace support
{

std::string Printed(const PlantActivity& activity);
std::string Printed(const PlantCalendarDay& day);
std::string Printed(const PlantFigures& figures);
std::string Printed(const PlantStatus& status);
std::string Printed(const PlantTotal& total);
std::string Printed(const PlantComparison& comparison);
std::string Printed(const PlantRelative& relative);
std::string Printed(const PlantLineage& lineage);

// One line for each record.
template <typename Record> std::string Printed(const std::vector<Record>& records)
{
    std::string text;
    for (const Record& record : records)
        text += Printed(record) + '\n';
    return text;
}

} // namespace support
