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

std::string StageObjection(const std::string& text)
{
    try
    {
        PlantStage stage{};
        ParseValue(text, &stage);
        return {};
    }
    catch (const BadValue& bad)
    {
        return bad.what();
    }
}

std::string NewestObjection(const std::string& text)
{
    const bool valid = IsDigits(text) && text.find_first_not_of('0') != std::string::npos;
    return valid ? "" : InQuotes(text) + " is not a number of records; write a whole number above 0";
}

} // namespace

void AddDate(CLI::App& command, const std::string& what, std::optional<std::string>& date)
{
    AddDateFlag(command, "--date", what + "; the default is today", date);
}

void AddDateFlag(CLI::App& command, const std::string& names, const std::string& help, std::optional<std::string>& date)
{
    AddFlag(command, {names, help, "DATE", Need::Optional, DateObjection}, date);
}

std::string DateOrToday(const std::optional<std::string>& date)
{
    return DateFrom(date.value_or("today"));
}

void AddStageFlag(CLI::App& command, const std::string& help, std::optional<std::string>& stage)
{
    const PlantStage anyStage{};
    AddFlag(command, {"--stage", help, Joined(EnumerationNames(&anyStage), "|"), Need::Optional, StageObjection},
            stage);
}

void AddNewest(CLI::App& command, const std::string& help, std::optional<std::string>& newest)
{
    AddFlag(command, {"--newest", help, "NUMBER", Need::Optional, NewestObjection}, newest);
}

std::int64_t NumberFrom(const std::optional<std::string>& newest)
{
    std::int64_t number = INT64_MAX;
    if (newest)
        ParseValue(*newest, &number);
    return number;
}

void AddPlantArgument(CLI::App& command, Arguments& arguments, Need need)
{
    AddArgument(command, "PLANT", "UUID, prefix of the UUID, or name; must match exactly one plant", arguments.Plant,
                need);
}
