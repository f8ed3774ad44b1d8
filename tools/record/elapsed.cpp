#include "record/elapsed.h"

#include "plant_validation.h"
#include "record/text.h"

namespace
{

constexpr std::int64_t DaysOfWeek = 7;

// The number of days from one date to the other. Negative, too, where one of them is not a day of the calendar.
std::int64_t DaysBetween(const std::string& from, const std::string& until)
{
    std::int64_t days = -1;
    static_cast<void>(DaysBetweenPlantDates(from, until, days));
    return days;
}

} // namespace

std::string AgeText(const std::string& from, const std::string& until)
{
    const std::int64_t days = DaysBetween(from, until);
    return days < 0 ? "" : AgeText(days);
}

std::string AgeText(std::int64_t days)
{
    if (days < 2 * DaysOfWeek)
        return std::to_string(days) + " d";
    const std::int64_t rest = days % DaysOfWeek;
    return Joined({std::to_string(days / DaysOfWeek) + " w", rest > 0 ? std::to_string(rest) + " d" : ""}, " ");
}

std::string AgoText(const std::string& date, const std::string& today)
{
    const std::int64_t days = DaysBetween(date, today);
    if (days < 0)
        return date;
    return days == 0 ? "today" : days == 1 ? "yesterday" : std::to_string(days) + " d ago";
}

std::string DueText(const std::string& date, const std::string& today)
{
    std::int64_t days = 0;
    if (!DaysBetweenPlantDates(today, date, days))
        return date;
    if (days < 0)
        return std::to_string(-days) + " d overdue";
    return days == 0 ? "today" : days == 1 ? "tomorrow" : "in " + std::to_string(days) + " d";
}
