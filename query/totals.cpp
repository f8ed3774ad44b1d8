#include "days.h"
#include "figures.h"
#include "letters.h"
#include "record_selection.h"

#include <algorithm>
#include <functional>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace plant_query
{

namespace
{

struct CareSums
{
    std::int64_t Feedings = 0;
    std::int64_t Waterings = 0;
    Sum AmountMl;
    Sum RunoffMl;
    Figures EC;
    Figures PH;
};

struct CareGroup
{
    std::string Key;
    std::string Name;
    // By the first day of the period; no day stands for all time, and for the dates that are not days.
    std::map<std::optional<std::int64_t>, CareSums> Periods;
};

std::optional<std::int64_t> FirstDayOf(PlantPeriod period, std::string_view date)
{
    const std::optional<std::int64_t> day = DaysSinceEpoch(date);
    if (day && period == PlantPeriod::Week)
        return MondayOf(*day);
    if (day && period == PlantPeriod::Month)
        return FirstOfMonth(*day);
    return day;
}

std::string PeriodText(PlantPeriod period, std::optional<std::int64_t> firstDay)
{
    if (!firstDay)
        return {};
    const std::string day = DayText(*firstDay);
    return period == PlantPeriod::Month ? day.substr(0, day.rfind('-')) : day;
}

// Adds up the care entries of the plants. Leaves out the entries of other plants.
class CareTotals
{
  public:
    CareTotals(const PlantTotalFilter& filter, const std::vector<SetPlant>& plants);

    void Read(sqlite3* connection);
    std::vector<PlantTotal> Rows() const;

  private:
    std::size_t GroupOf(const SetPlant& plant);
    std::size_t GroupNamed(std::string_view name);
    void AddEntries(Statement& rows);

    const PlantTotalFilter& Filter;
    const std::vector<SetPlant>& Plants;
    std::unordered_map<std::string_view, std::size_t> PlantGroups; // by UUID
    std::vector<CareGroup> Groups;
    std::map<std::string, std::size_t, std::less<>> GroupNumbers; // by name
};

CareTotals::CareTotals(const PlantTotalFilter& filter, const std::vector<SetPlant>& plants)
    : Filter(filter), Plants(plants)
{
    for (const SetPlant& plant : plants)
        PlantGroups.emplace(plant.UUID, GroupOf(plant));
}

std::size_t CareTotals::GroupOf(const SetPlant& plant)
{
    switch (Filter.Group)
    {
    case PlantTotalGroup::Plant:
        Groups.push_back({plant.UUID, plant.Name, {}});
        return Groups.size() - 1;
    case PlantTotalGroup::Strain:
        return GroupNamed(plant.Strain);
    case PlantTotalGroup::Tent:
        return GroupNamed(plant.Tent);
    default: // one group, or the product, which each entry has
        return GroupNamed({});
    }
}

std::size_t CareTotals::GroupNamed(std::string_view name)
{
    const auto known = GroupNumbers.find(name);
    if (known != GroupNumbers.end())
        return known->second;
    GroupNumbers.emplace(name, Groups.size());
    Groups.push_back({std::string(name), std::string(name), {}});
    return Groups.size() - 1;
}

void CareTotals::Read(sqlite3* connection)
{
    RecordSelection(Filter.Plants, Plants, Filter.From, Filter.To)
        .Read(connection, "reading the care entries",
              "SELECT PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,RunoffMl FROM PlantCareEntries", "CareDate",
              [this](Statement& rows) { AddEntries(rows); });
}

void CareTotals::AddEntries(Statement& rows)
{
    const std::string_view feeding = PlantCareActionName(PlantCareAction::Feed);
    while (rows.Step())
    {
        const auto plant = PlantGroups.find(rows.WholeView(0));
        const bool isFeeding = rows.View(2) == feeding;
        const PlantCareAction action = isFeeding ? PlantCareAction::Feed : PlantCareAction::Water;
        if (plant == PlantGroups.end() || !Fits(Filter.Actions, action))
            continue;
        const std::size_t group = Filter.Group == PlantTotalGroup::Product ? GroupNamed(rows.View(3)) : plant->second;
        std::optional<std::int64_t> firstDay;
        if (Filter.Period != PlantPeriod::All)
            firstDay = FirstDayOf(Filter.Period, rows.View(1));
        CareSums& sums = Groups[group].Periods[firstDay];
        ++(isFeeding ? sums.Feedings : sums.Waterings);
        sums.AmountMl.Add(rows.Number(4));
        sums.EC.AddMeasured(rows.Number(5));
        sums.PH.AddMeasured(rows.Number(6));
        sums.RunoffMl.Add(rows.Number(7));
    }
}

std::vector<PlantTotal> CareTotals::Rows() const
{
    std::vector<PlantTotal> totals;
    for (const CareGroup& group : Groups)
        for (const auto& [firstDay, sums] : group.Periods)
        {
            PlantTotal total;
            total.Period = PeriodText(Filter.Period, firstDay);
            total.Key = group.Key;
            total.Name = group.Name;
            total.Feedings = sums.Feedings;
            total.Waterings = sums.Waterings;
            total.AmountMl = sums.AmountMl.Total();
            total.RunoffMl = sums.RunoffMl.Total();
            total.EC = sums.EC.Result();
            total.PH = sums.PH.Result();
            totals.push_back(std::move(total));
        }
    std::sort(totals.begin(), totals.end(),
              [](const PlantTotal& left, const PlantTotal& right)
              {
                  return std::make_tuple(left.Period, WithoutCase(left.Name), left.Key) <
                         std::make_tuple(right.Period, WithoutCase(right.Name), right.Key);
              });
    return totals;
}

} // namespace

} // namespace plant_query

PlantQueryResult QueryPlantTotals(PlantDatabase& database, const PlantTotalFilter& filter, std::vector<PlantTotal>& out)
{
    return plant_query::Answer<std::vector<PlantTotal>>(database, out,
                                                        [&](sqlite3* connection)
                                                        {
                                                            const std::vector<plant_query::SetPlant> plants =
                                                                plant_query::PlantsOf(connection, filter.Plants);
                                                            plant_query::CareTotals totals(filter, plants);
                                                            totals.Read(connection);
                                                            return totals.Rows();
                                                        });
}
