#include "days.h"
#include "figures.h"
#include "harvests.h"
#include "plants.h"

#include <utility>

namespace plant_query
{

namespace
{

// A plant as it is compared. Numbers that are not known are 0.
struct PlantYield
{
    bool Harvested = false;
    std::string HarvestDate;
    double WetWeightG = 0;
    double DryWeightG = 0;
    double Quality = 0;
    double CareMl = 0; // read only for a plant with a dry weight
};

class YieldReader
{
  public:
    explicit YieldReader(sqlite3* connection);

    PlantYield Of(const SetPlant& plant);

  private:
    double CareMlOf(const std::string& plantUUID);

    HarvestReader Harvests;
    Statement Care;
};

YieldReader::YieldReader(sqlite3* connection)
    : Harvests(connection),
      Care(connection, "reading the care entries", "SELECT AmountMl FROM PlantCareEntries WHERE PlantUUID=?;")
{
}

PlantYield YieldReader::Of(const SetPlant& plant)
{
    PlantYield yield;
    yield.HarvestDate = plant.HarvestDate;
    const std::optional<HarvestRecord> record = Harvests.Of(plant.UUID);
    if (!record)
        return yield;
    yield.Harvested = true;
    if (!record->HarvestDate.empty())
        yield.HarvestDate = record->HarvestDate;
    yield.WetWeightG = record->WetWeightG;
    yield.DryWeightG = record->DryWeightG;
    yield.Quality = record->QualityRating;
    if (IsMeasured(yield.DryWeightG))
        yield.CareMl = CareMlOf(plant.UUID);
    return yield;
}

double YieldReader::CareMlOf(const std::string& plantUUID)
{
    Sum amounts;
    Care.Reset();
    Care.Bind(1, plantUUID);
    while (Care.Step())
        amounts.Add(Care.Number(0));
    return amounts.Total();
}

void AddSpan(Figures& days, const std::string& first, const std::string& last)
{
    const std::optional<std::int64_t> begin = DaysSinceEpoch(first);
    const std::optional<std::int64_t> end = DaysSinceEpoch(last);
    if (begin && end && *begin <= *end)
        days.Add(static_cast<double>(*end - *begin));
}

class ComparedPlants
{
  public:
    void Add(const SetPlant& plant, const PlantYield& yield);
    PlantComparison Result(const std::string& name) const;

  private:
    std::int64_t Plants = 0;
    std::int64_t Harvested = 0;
    Figures DaysFromSeed;
    Figures DaysFromClone;
    Figures DaysFromTransplant;
    Figures DaysFromFlip;
    Figures WetWeightG;
    Figures DryWeightG;
    Figures DryingLossPercent;
    Figures Quality;
    Figures MlPerGram;
};

void ComparedPlants::Add(const SetPlant& plant, const PlantYield& yield)
{
    ++Plants;
    Harvested += yield.Harvested ? 1 : 0;
    AddSpan(DaysFromSeed, plant.SeedDate, yield.HarvestDate);
    AddSpan(DaysFromClone, plant.CloneDate, yield.HarvestDate);
    AddSpan(DaysFromTransplant, plant.TransplantDate, yield.HarvestDate);
    AddSpan(DaysFromFlip, plant.FlipDate, yield.HarvestDate);
    WetWeightG.AddMeasured(yield.WetWeightG);
    DryWeightG.AddMeasured(yield.DryWeightG);
    Quality.AddMeasured(yield.Quality);
    if (IsMeasured(yield.WetWeightG) && IsMeasured(yield.DryWeightG))
        DryingLossPercent.Add(100 * (yield.WetWeightG - yield.DryWeightG) / yield.WetWeightG);
    if (IsMeasured(yield.CareMl))
        MlPerGram.Add(yield.CareMl / yield.DryWeightG);
}

PlantComparison ComparedPlants::Result(const std::string& name) const
{
    PlantComparison comparison;
    comparison.Name = name;
    comparison.Plants = Plants;
    comparison.Harvested = Harvested;
    comparison.DaysFromSeed = DaysFromSeed.Result();
    comparison.DaysFromClone = DaysFromClone.Result();
    comparison.DaysFromTransplant = DaysFromTransplant.Result();
    comparison.DaysFromFlip = DaysFromFlip.Result();
    comparison.WetWeightG = WetWeightG.Result();
    comparison.DryWeightG = DryWeightG.Result();
    comparison.DryingLossPercent = DryingLossPercent.Result();
    comparison.Quality = Quality.Result();
    comparison.MlPerGram = MlPerGram.Result();
    return comparison;
}

// Whether the harvest is in the time that the set asks for.
bool IsHarvestOf(const PlantComparedSet& set, const std::string& harvestDate)
{
    const std::optional<std::string> afterTo = AfterDate(set.To);
    if (set.From.empty() && set.To.empty())
        return true;
    return !harvestDate.empty() && harvestDate >= set.From && (!afterTo || harvestDate < *afterTo);
}

std::vector<PlantComparison> Compare(sqlite3* connection, const std::vector<PlantComparedSet>& sets)
{
    YieldReader yields(connection);
    std::vector<ComparedPlants> compared(sets.size());
    for (const SetPlant& plant : PlantsOf(connection, {}))
    {
        std::optional<PlantYield> yield; // read once, also for a plant in several sets
        for (std::size_t i = 0; i < sets.size(); ++i)
        {
            if (!IsIn(sets[i].Plants, plant))
                continue;
            if (!yield)
                yield = yields.Of(plant);
            if (IsHarvestOf(sets[i], yield->HarvestDate))
                compared[i].Add(plant, *yield);
        }
    }
    std::vector<PlantComparison> comparisons;
    for (std::size_t i = 0; i < sets.size(); ++i)
        comparisons.push_back(compared[i].Result(sets[i].Name));
    return comparisons;
}

} // namespace

} // namespace plant_query

PlantQueryResult QueryPlantComparison(PlantDatabase& database, const std::vector<PlantComparedSet>& sets,
                                      std::vector<PlantComparison>& out)
{
    return plant_query::Answer<std::vector<PlantComparison>>(
        database, out, [&](sqlite3* connection) { return plant_query::Compare(connection, sets); });
}
