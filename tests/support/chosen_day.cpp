#include "support/chosen_day.h"

#include <chrono>
#include <sstream>

namespace support
{

Surroundings OnDay(const std::string& day, Surroundings around)
{
    int year = 0;
    unsigned month = 0;
    unsigned dayOfMonth = 0;
    char hyphen = 0;
    std::istringstream(day) >> year >> hyphen >> month >> hyphen >> dayOfMonth;
    const std::chrono::sys_seconds noon =
        std::chrono::sys_days(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(dayOfMonth)) +
        std::chrono::hours(12);
    around.Environment.push_back("PLANTJOURNAL_TEST_TIME=" + std::to_string(noon.time_since_epoch().count()));
    around.Environment.emplace_back("TZ=UTC0");
    return around;
}

} // namespace support
