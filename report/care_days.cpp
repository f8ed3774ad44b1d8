#include "care_days.h"

#include "days.h"
#include "usual_days.h"
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

UsualCare UsualCareOf(const std::map<std::int64_t, CareCount>& care)
{
    UsualCare split;
    std::map<std::int64_t, std::int64_t> records;
    for (const auto& [day, count] : care)
        records[day] = count.Number();
    if (records.empty())
        return split;
    const DayRange usual = UsualDays(records);
    for (const auto& day : care)
        (usual.Holds(day.first) ? split.Usual : split.Far).insert(day);
    return split;
}

std::string FarCareSentence(const std::map<std::int64_t, CareCount>& far)
{
    std::int64_t number = 0;
    for (const auto& [day, count] : far)
        number += count.Number();
    return FarSentence(number, "feeding or watering", "feedings and waterings");
}

std::string CareLabel(const CareCount& care)
{
    return Counted(care.Feedings, "feeding", "feedings") + ", " + Counted(care.Waterings, "watering", "waterings");
}

} // namespace plant_report
