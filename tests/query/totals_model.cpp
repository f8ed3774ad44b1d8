#include "query/models.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace support
{

namespace
{

std::string PeriodModel(PlantPeriod period, const std::string& date)
{
    const std::optional<int> day = DayOf(date);
    if (!day || period == PlantPeriod::All)
        return {};
    if (period == PlantPeriod::Month)
        return date.substr(0, 7);
    if (period == PlantPeriod::Day)
        return date;
    int monday = *DayOf("2000-01-03");
    while (monday > *day)
        monday -= 7;
    while (monday + 7 <= *day)
        monday += 7;
    return DateOf(monday);
}

std::pair<std::string, std::string> KeyAndName(PlantTotalGroup group, const Plant& plant, const PlantCareEntry& entry)
{
    switch (group)
    {
    case PlantTotalGroup::Plant:
        return {plant.UUID, plant.Name};
    case PlantTotalGroup::Strain:
        return {plant.Strain, plant.Strain};
    case PlantTotalGroup::Tent:
        return {plant.Tent, plant.Tent};
    case PlantTotalGroup::Product:
        return {entry.Product, entry.Product};
    default:
        return {};
    }
}

struct Entries
{
    std::string Name;
    std::vector<PlantCareEntry> Care;

    std::vector<double> All(double PlantCareEntry::*number) const
    {
        std::vector<double> values;
        for (const PlantCareEntry& entry : Care)
            values.push_back(entry.*number);
        return values;
    }
    double SumOf(double PlantCareEntry::*number) const
    {
        long double sum = 0;
        for (const double value : All(number))
            sum += static_cast<long double>(value);
        return static_cast<double>(sum);
    }
    std::int64_t Count(PlantCareAction action) const
    {
        return std::count_if(Care.begin(), Care.end(), [&](const auto& entry) { return entry.Action == action; });
    }
};

} // namespace

std::vector<PlantTotal> TotalModel(const std::vector<ListedPlant>& plants, const PlantTotalFilter& filter)
{
    std::map<std::tuple<std::string, std::string, std::string>, Entries> rows; // by period, name and key
    for (const ListedPlant& plant : plants)
        for (const PlantCareEntry& entry : plant.Care)
        {
            const auto& actions = filter.Actions;
            if (!IsOf(filter.Plants, plant.Record) || entry.CareDate < filter.From ||
                !(filter.To.empty() || IsUpTo(entry.CareDate, filter.To)) ||
                !(actions.empty() || std::count(actions.begin(), actions.end(), entry.Action) > 0))
                continue;
            const auto [key, name] = KeyAndName(filter.Group, plant.Record, entry);
            Entries& row = rows[{PeriodModel(filter.Period, entry.CareDate), Lower(name), key}];
            row.Name = name;
            row.Care.push_back(entry);
        }
    std::vector<PlantTotal> totals;
    for (const auto& [place, row] : rows)
    {
        PlantTotal& total = totals.emplace_back();
        total.Period = std::get<0>(place);
        total.Key = std::get<2>(place);
        total.Name = row.Name;
        total.Feedings = row.Count(PlantCareAction::Feed);
        total.Waterings = row.Count(PlantCareAction::Water);
        total.AmountMl = row.SumOf(&PlantCareEntry::AmountMl);
        total.RunoffMl = row.SumOf(&PlantCareEntry::RunoffMl);
        total.EC = FiguresModel(Entered(row.All(&PlantCareEntry::EC)));
        total.PH = FiguresModel(Entered(row.All(&PlantCareEntry::PH)));
    }
    return totals;
}

} // namespace support
