#include "care_days.h"

#include "days.h"
#include "words.h"

namespace plant_report
{

std::map<std::int64_t, CareCount> CareByDay(const std::vector<PlantCalendarDay>& days)
{
    std::map<std::int64_t, CareCount> care;
    for (const PlantCalendarDay& day : days)
    {
        const auto number = plant_query::DaysSinceEpoch(day.Date);
        if (!number || day.Number <= 0)
            continue;
        if (day.Kind == PlantCareActionName(PlantCareAction::Feed))
            care[*number].Feedings += day.Number;
        else if (day.Kind == PlantCareActionName(PlantCareAction::Water))
            care[*number].Waterings += day.Number;
    }
    return care;
}

std::string CareLabel(const CareCount& care)
{
    return Counted(care.Feedings, "feeding", "feedings") + ", " + Counted(care.Waterings, "watering", "waterings");
}

} // namespace plant_report
