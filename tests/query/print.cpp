#include "query/print.h"

#include <iomanip>
#include <sstream>

namespace support
{

std::string Printed(const PlantActivity& activity)
{
    std::ostringstream text;
    text << activity.Date << ' ' << std::quoted(activity.Kind) << ' ' << std::quoted(activity.Text) << " of "
         << activity.PlantUUID << ' ' << std::quoted(activity.PlantName) << ", "
         << static_cast<std::int32_t>(activity.Record) << ' ' << activity.RowID;
    return text.str();
}

std::string Printed(const PlantCalendarDay& day)
{
    std::ostringstream text;
    text << day.Date << ' ' << std::quoted(day.Kind) << ' ' << day.Number;
    return text.str();
}

} // namespace support
