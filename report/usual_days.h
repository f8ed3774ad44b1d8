// The days of a chart without those of a mistyped year, such as 1925 or 2205, which would leave no room for the others.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace plant_report
{

struct DayRange
{
    std::int64_t First = 0; // counted from 1970-01-01
    std::int64_t Last = 0;

    bool Holds(std::int64_t day) const { return day >= First && day <= Last; }
};

// The days around which most records are. Days before or after a gap that is longer than five years, and longer than
// the time of all others, are not part of them. Of several ranges with as many records, the latest.
//
// @param records  The number of records of each day. At least one day.
DayRange UsualDays(const std::map<std::int64_t, std::int64_t>& records);

// A sentence, after a space, that reports how many records are not drawn because of their dates; empty for 0. `one` and
// `many` name a record.
std::string FarSentence(std::int64_t number, const char* one, const char* many);

} // namespace plant_report
