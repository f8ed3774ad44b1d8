#include "commands/arguments.h"

#include "record/dates.h"
#include "record/text.h"

namespace
{

std::string DateObjection(const std::string& text)
{
    try
    {
        return DateFrom(text).empty() ? "the date is empty" : "";
    }
    catch (const BadValue& bad)
    {
        return bad.what();
    }
}

} // namespace

void AddDate(CLI::App& command, const std::string& what, std::optional<std::string>& date)
{
    AddFlag(command, {"--date", what + "; the default is today", "DATE", Need::Optional, DateObjection}, date);
}

std::string DateOrToday(const std::optional<std::string>& date)
{
    return DateFrom(date.value_or("today"));
}

void AddPlantArgument(CLI::App& command, Arguments& arguments, Need need)
{
    AddArgument(command, "PLANT", "UUID, prefix of the UUID, or name; must match exactly one plant", arguments.Plant,
                need);
}
