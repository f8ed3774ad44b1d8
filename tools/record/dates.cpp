#include "record/dates.h"

#include "plant.h"
#include "record/text.h"

#include <chrono>
#include <ctime>
#include <iomanip>
#include <sstream>

namespace
{

std::string Yesterday()
{
    std::tm day{};
    std::istringstream(PlantEventCurrentDate()) >> std::get_time(&day, "%Y-%m-%d");
    --day.tm_mday;
    day.tm_hour = 12; // daylight saving time does not move noon to another day
    day.tm_isdst = -1;
    static_cast<void>(std::mktime(&day));
    std::ostringstream text;
    text << std::put_time(&day, "%Y-%m-%d");
    return text.str();
}

} // namespace

bool IsDate(const std::string& text)
{
    const bool hasMonth = text.size() >= 7;
    const bool hasDay = text.size() == 10;
    if ((text.size() != 4 && text.size() != 7 && !hasDay) || (hasMonth && text[4] != '-') ||
        (hasDay && text[7] != '-') || !IsDigits(text.substr(0, 4)))
        return false;
    const std::string month = hasMonth ? text.substr(5, 2) : "01";
    const std::string day = hasDay ? text.substr(8, 2) : "01";
    return IsDigits(month) && IsDigits(day) &&
           std::chrono::year_month_day(std::chrono::year(std::stoi(text.substr(0, 4))),
                                       std::chrono::month(static_cast<unsigned>(std::stoi(month))),
                                       std::chrono::day(static_cast<unsigned>(std::stoi(day))))
               .ok();
}

std::string DateFrom(const std::string& text)
{
    if (text == "today")
        return PlantEventCurrentDate();
    if (text == "yesterday")
        return Yesterday();
    if (!text.empty() && !IsDate(text))
        throw BadValue(InQuotes(text) + " is not a date; write today, yesterday, YYYY-MM-DD, YYYY-MM or YYYY");
    return text;
}
