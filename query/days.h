// The days of the calendar as numbers, and the limits of dates as texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace plant_query
{

// The number of days from 1970-01-01 to the day `YYYY-MM-DD`; no value for any other text.
std::optional<std::int64_t> DaysSinceEpoch(std::string_view date);

// The reverse of DaysSinceEpoch().
std::string DayText(std::int64_t daysSinceEpoch);

// The Monday of the day's week.
std::int64_t MondayOf(std::int64_t daysSinceEpoch);

// The first day of the day's month.
std::int64_t FirstOfMonth(std::int64_t daysSinceEpoch);

// The least text that is greater than `last` and every text that begins with it, in the order of bytes. No value where
// every text that is greater begins with it.
std::optional<std::string> AfterDate(std::string last);

} // namespace plant_query
