#include "support/chosen_day.h"

#include <ctime>
#include <iomanip>
#include <sstream>

namespace support
{

Surroundings OnDay(const std::string& day, Surroundings around)
{
    std::tm noon{};
    std::istringstream(day) >> std::get_time(&noon, "%Y-%m-%d");
    noon.tm_hour = 12;
    around.Environment.push_back("PLANTJOURNAL_TEST_TIME=" + std::to_string(timegm(&noon)));
    around.Environment.emplace_back("TZ=UTC0");
    return around;
}

} // namespace support
