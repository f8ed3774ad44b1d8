#include "query/models.h"

#include <algorithm>
#include <limits>
#include <set>

namespace support
{

namespace
{

std::vector<double> Spans(const std::vector<const ListedPlant*>& plants, std::string Plant::*begin)
{
    std::vector<double> spans;
    for (const ListedPlant* plant : plants)
    {
        const std::string date = plant->Harvest ? plant->Harvest->HarvestDate : "";
        const auto first = DayOf(plant->Record.*begin);
        const auto last = DayOf(date.empty() ? plant->Record.HarvestDate : date);
        if (first && last && *first <= *last)
            spans.push_back(*last - *first);
    }
    return spans;
}

bool IsHarvestedBetween(const ListedPlant& plant, const std::string& from, const std::string& to)
{
    std::string date = plant.Harvest ? plant.Harvest->HarvestDate : "";
    if (date.empty())
        date = plant.Record.HarvestDate;
    const bool isAsked = !from.empty() || !to.empty();
    return !isAsked || (!date.empty() && date >= from && (to.empty() || IsUpTo(date, to)));
}

double CareModel(const ListedPlant& plant)
{
    long double sum = 0;
    for (const PlantCareEntry& entry : plant.Care)
        sum += static_cast<long double>(entry.AmountMl);
    return static_cast<double>(sum);
}

PlantRelative RelativeModel(const ListedPlant& plant, std::int64_t generation)
{
    return {plant.Record.UUID,  plant.Record.Name, plant.Record.Strain, plant.Record.MotherPlantUUID,
            plant.Record.Stage, generation,        plant.Harvest};
}

void AddDescendants(const std::vector<ListedPlant>& byName, const std::string& mother, std::int64_t generation,
                    const std::set<std::string>& ancestors, std::set<std::string>& visited,
                    std::vector<PlantRelative>& out)
{
    for (const ListedPlant& plant : byName)
    {
        if (plant.Record.MotherPlantUUID != mother || !visited.insert(plant.Record.UUID).second)
            continue;
        if (ancestors.count(plant.Record.UUID) == 0)
            out.push_back(RelativeModel(plant, generation));
        AddDescendants(byName, plant.Record.UUID, generation + 1, ancestors, visited, out);
    }
}

} // namespace

PlantFigures FiguresModel(const std::vector<double>& values)
{
    if (values.empty())
        return {};
    long double sum = 0;
    for (const double value : values)
        sum += static_cast<long double>(value);
    return {static_cast<std::int64_t>(values.size()),
            static_cast<double>(sum / static_cast<long double>(values.size())),
            *std::min_element(values.begin(), values.end()), *std::max_element(values.begin(), values.end())};
}

std::vector<double> Entered(const std::vector<double>& values)
{
    std::vector<double> entered;
    for (const double value : values)
        if (value > 0 && value <= std::numeric_limits<double>::max())
            entered.push_back(value);
    return entered;
}

std::vector<PlantComparison> ComparisonModel(const std::vector<ListedPlant>& plants,
                                             const std::vector<PlantComparedSet>& sets)
{
    std::vector<PlantComparison> comparisons;
    for (const PlantComparedSet& set : sets)
    {
        std::vector<const ListedPlant*> chosen;
        for (const ListedPlant& plant : plants)
            if (IsOf(set.Plants, plant.Record) && IsHarvestedBetween(plant, set.From, set.To))
                chosen.push_back(&plant);
        std::vector<double> wet;
        std::vector<double> dry;
        std::vector<double> loss;
        std::vector<double> quality;
        std::vector<double> mlPerGram;
        for (const ListedPlant* plant : chosen)
        {
            const HarvestRecord harvest = plant->Harvest.value_or(HarvestRecord{});
            wet.push_back(harvest.WetWeightG);
            dry.push_back(harvest.DryWeightG);
            quality.push_back(harvest.QualityRating);
            if (Entered({wet.back(), dry.back()}).size() == 2)
                loss.push_back((1 - dry.back() / wet.back()) * 100);
            if (Entered({CareModel(*plant), dry.back()}).size() == 2)
                mlPerGram.push_back(CareModel(*plant) / dry.back());
        }
        PlantComparison& comparison = comparisons.emplace_back();
        comparison.Name = set.Name;
        comparison.Plants = static_cast<std::int64_t>(chosen.size());
        comparison.Harvested = std::count_if(chosen.begin(), chosen.end(),
                                             [](const ListedPlant* plant) { return plant->Harvest.has_value(); });
        comparison.DaysFromSeed = FiguresModel(Spans(chosen, &Plant::SeedDate));
        comparison.DaysFromClone = FiguresModel(Spans(chosen, &Plant::CloneDate));
        comparison.DaysFromTransplant = FiguresModel(Spans(chosen, &Plant::TransplantDate));
        comparison.DaysFromFlip = FiguresModel(Spans(chosen, &Plant::FlipDate));
        comparison.WetWeightG = FiguresModel(Entered(wet));
        comparison.DryWeightG = FiguresModel(Entered(dry));
        comparison.DryingLossPercent = FiguresModel(loss);
        comparison.Quality = FiguresModel(Entered(quality));
        comparison.MlPerGram = FiguresModel(mlPerGram);
    }
    return comparisons;
}

PlantLineage LineageModel(const std::vector<ListedPlant>& plants, const std::string& plantUUID)
{
    std::vector<ListedPlant> byName = plants;
    std::sort(byName.begin(), byName.end(),
              [](const ListedPlant& left, const ListedPlant& right)
              {
                  return std::make_pair(Lower(left.Record.Name), left.Record.ID) <
                         std::make_pair(Lower(right.Record.Name), right.Record.ID);
              });
    const auto find = [&](const std::string& uuid)
    {
        return std::find_if(byName.begin(), byName.end(),
                            [&](const ListedPlant& plant) { return plant.Record.UUID == uuid; });
    };
    PlantLineage lineage;
    std::set<std::string> ancestors;
    auto plant = find(plantUUID);
    if (plant == byName.end())
        return lineage;
    ancestors.insert(plantUUID);
    for (plant = find(plant->Record.MotherPlantUUID);
         plant != byName.end() && ancestors.insert(plant->Record.UUID).second;
         plant = find(plant->Record.MotherPlantUUID))
        lineage.Ancestors.push_back(RelativeModel(*plant, -static_cast<std::int64_t>(ancestors.size()) + 1));
    std::set<std::string> visited = {plantUUID};
    AddDescendants(byName, plantUUID, 1, ancestors, visited, lineage.Descendants);
    return lineage;
}

} // namespace support
