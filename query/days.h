// The days of the calendar as numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace plant_query
{

// The number of days from 1970-01-01 to the day `YYYY-MM-DD`; no value for any other text.
std::optional<std::int64_t> DaysSinceEpoch(const std::string& date);

// The reverse of DaysSinceEpoch().
std::string DayText(std::int64_t daysSinceEpoch);

// The Monday of the day's week.
std::int64_t MondayOf(std::int64_t daysSinceEpoch);

} // namespace plant_query
