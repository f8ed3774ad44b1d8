#include "record/dates.h"

#include "plant_validation.h"
#include "record/text.h"

#include <charconv>
#include <cstdint>
#include <system_error>

namespace
{

// Returns the last day with the name of a weekday; empty for any other word.
std::string LastWeekday(const std::string& word, const std::string& today)
{
    constexpr std::size_t monday = 3; // the days from here on are in the order of the week
    for (std::size_t i = monday; i < DateWords.size(); ++i)
    {
        const std::string name = DateWords.at(i);
        if (!EqualIgnoringCase(word, name) && !EqualIgnoringCase(word, name.substr(0, 3)))
            continue;
        std::int64_t days = 0;
        // Any Monday serves to count from.
        static_cast<void>(DaysBetweenPlantDates("0001-01-01", today, days));
        const std::int64_t sinceWeekday = ((days - static_cast<std::int64_t>(i - monday)) % 7 + 7) % 7;
        return PlantDatePlusDays(today, -sinceWeekday);
    }
    return {};
}

// Returns the day for a text such as `3d`; empty for any other text.
std::string TimeAgo(const std::string& text, const std::string& today)
{
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end - 1 || text.front() == '-' || number > 100'000'000)
        return {};
    switch (text.back())
    {
    case 'd':
        return PlantDatePlusDays(today, -number);
    case 'w':
        return PlantDatePlusDays(today, -7 * number);
    case 'm':
        return PlantDatePlusMonths(today, -number);
    default:
        return {};
    }
}

} // namespace

std::string DateFrom(const std::string& text, const std::string& today)
{
    PlantDate read;
    if (text.empty() || ReadPlantDate(text, read))
        return text;
    if (EqualIgnoringCase(text, "today"))
        return today;
    if (EqualIgnoringCase(text, "yesterday"))
        return PlantDatePlusDays(today, -1);
    if (EqualIgnoringCase(text, "tomorrow"))
        return PlantDatePlusDays(today, 1);
    for (const std::string& date : {LastWeekday(text, today), TimeAgo(text, today)})
        if (!date.empty())
            return date;
    throw BadValue(InQuotes(text) +
                   " is not a date; write today, yesterday, tomorrow, a weekday, 3d, 2w or 1m (so long ago), "
                   "YYYY-MM-DD, YYYY-MM or YYYY");
}

std::string DateFrom(const std::string& text)
{
    return DateFrom(text, PlantEventCurrentDate());
}
