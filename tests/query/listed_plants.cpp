#include "query/listed_plants.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <iomanip>
#include <regex>
#include <sstream>
#include <tuple>

#include <gtest/gtest.h>

namespace support
{

std::vector<ListedPlant> ListPlants(PlantDatabase& database)
{
    PlantRepository repository(database);
    std::vector<Plant> plants;
    EXPECT_TRUE(repository.ListPlants(plants));
    std::vector<ListedPlant> listed;
    for (const Plant& plant : plants)
    {
        ListedPlant& next = listed.emplace_back();
        next.Record = plant;
        EXPECT_TRUE(repository.ListPlantEvents(plant.UUID, next.Events));
        EXPECT_TRUE(repository.ListPlantCareEntries(plant.UUID, next.Care));
        EXPECT_TRUE(repository.ListPlantHealthObservations(plant.UUID, next.Observations));
        HarvestRecord harvest;
        if (repository.GetHarvestRecord(plant.UUID, harvest))
            next.Harvest = harvest;
    }
    std::sort(listed.begin(), listed.end(),
              [](const ListedPlant& left, const ListedPlant& right)
              {
                  return std::make_tuple(Lower(left.Record.Strain), Lower(left.Record.Name), left.Record.ID) <
                         std::make_tuple(Lower(right.Record.Strain), Lower(right.Record.Name), right.Record.ID);
              });
    return listed;
}

bool IsOf(const PlantSet& set, const Plant& plant)
{
    const auto isIn = [](const auto& list, const auto& value)
    { return list.empty() || std::count(list.begin(), list.end(), value) > 0; };
    return isIn(set.UUIDs, plant.UUID) && isIn(set.Strains, plant.Strain) && isIn(set.Tents, plant.Tent) &&
           isIn(set.Stages, plant.Stage);
}

bool IsUpTo(const std::string& date, const std::string& last)
{
    return date <= last || date.starts_with(last);
}

std::optional<int> DayOf(const std::string& date)
{
    static const std::regex form("([0-9]{4})-([0-9]{2})-([0-9]{2})");
    std::smatch parts;
    if (!std::regex_match(date, parts, form))
        return std::nullopt;
    const auto number = [&](std::size_t part) { return static_cast<unsigned>(std::stoul(parts[part])); };
    const std::chrono::year_month_day day{std::chrono::year{static_cast<int>(number(1))}, std::chrono::month{number(2)},
                                          std::chrono::day{number(3)}};
    if (!day.ok())
        return std::nullopt;
    return std::chrono::sys_days(day).time_since_epoch().count();
}

std::string DateOf(int day)
{
    const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{day}}};
    std::ostringstream text;
    text << std::setfill('0') << std::setw(4) << static_cast<int>(date.year()) << '-' << std::setw(2)
         << static_cast<unsigned>(date.month()) << '-' << std::setw(2) << static_cast<unsigned>(date.day());
    return text.str();
}

std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

} // namespace support
