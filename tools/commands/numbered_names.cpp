#include "commands/numbered_names.h"

#include "record/letters.h"
#include "record/text.h"

#include <algorithm>

namespace
{

constexpr std::int64_t MostPlants = 1000; // a larger number is more likely a mistake than a wish

std::int64_t CountFrom(const std::string& text)
{
    std::int64_t count = 0;
    try
    {
        ParseValue(text, &count);
    }
    catch (const BadValue&)
    {
        return 0;
    }
    return count;
}

std::string CountObjection(const std::string& text)
{
    const std::int64_t count = CountFrom(text);
    return count >= 1 && count <= MostPlants
               ? ""
               : InQuotes(text) + " is not a number of plants; write one from 1 to " + std::to_string(MostPlants);
}

std::int64_t NextNumber(const std::vector<Plant>& plants, const std::string& stem)
{
    constexpr std::size_t mostDigits = 9;
    const std::string start = WithoutCase(stem) + ' ';
    std::int64_t highest = 0;
    for (const Plant& plant : plants)
    {
        const std::string name = WithoutCase(plant.Name);
        if (!name.starts_with(start) || name.size() == start.size() || name.size() > start.size() + mostDigits ||
            !IsDigits(name.substr(start.size())))
            continue;
        std::int64_t number = 0;
        ParseValue(name.substr(start.size()), &number);
        highest = std::max(highest, number);
    }
    return highest + 1;
}

} // namespace

void AddCount(CLI::App& command, const std::string& help, std::optional<std::string>& count)
{
    AddFlag(command, {"--count", help, "NUMBER", Need::Optional, CountObjection}, count);
}

std::vector<std::string> NumberedNames(const std::vector<Plant>& plants, const std::string& stem,
                                       const std::optional<std::string>& count)
{
    const std::int64_t first = NextNumber(plants, stem);
    std::vector<std::string> names;
    for (std::int64_t i = 0; i < CountFrom(count.value_or("1")); ++i)
        names.push_back(stem + ' ' + std::to_string(first + i));
    return names;
}
