// The care of each day, for the calendar of care and the comparison of years.
#pragma once

#include "plant_report.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace plant_report
{

struct CareCount
{
    std::int64_t Feedings = 0;
    std::int64_t Waterings = 0;
    std::int64_t Number() const { return Feedings + Waterings; }
};

// Care without and with dates that are years away from the others; see UsualDays().
struct UsualCare
{
    std::map<std::int64_t, CareCount> Usual;
    std::map<std::int64_t, CareCount> Far;
};

UsualCare UsualCareOf(const std::map<std::int64_t, CareCount>& care);

// " 3 feedings and waterings are not drawn ..."; empty where no care is far.
std::string FarCareSentence(const std::map<std::int64_t, CareCount>& far);

// Feedings and waterings by day, counted from 1970-01-01. Other kinds, and dates that are not days, are left out.
std::map<std::int64_t, CareCount> CareByDay(const std::vector<PlantCalendarDay>& days);

// "3 feedings, 1 watering"
std::string CareLabel(const CareCount& care);

} // namespace plant_report
