#include "commands/plant_statuses.h"

#include "commands/selection.h"
#include "plant_validation.h"

#include <algorithm>
#include <cmath>

namespace
{

ExactValue HealthOf(const PlantStatus& plant)
{
    ExactValue value{JSON::Array(), {}};
    std::vector<std::string> texts;
    for (const PlantHealthObservation& seen : plant.Health)
    {
        value.InJSON.Add(RecordJSON(seen));
        texts.push_back(HealthText(seen));
    }
    value.InCSV = Joined(texts, "; ");
    return value;
}

} // namespace

std::vector<PlantStatus> FindStatuses(Session& session, const std::vector<Plant>& plants,
                                      const PlantSetOptions& options)
{
    PlantSet set = PlantSetOf(session, plants, options);
    if (!options.All && !options.NamesPlants())
        LimitStages(set, IsGrowing);
    std::vector<PlantStatus> statuses;
    session.RequireAnswer(QueryPlantStatus(session.ReadDatabase(), set, PlantEventCurrentDate(), statuses));
    std::stable_sort(statuses.begin(), statuses.end(),
                     [](const PlantStatus& left, const PlantStatus& right)
                     {
                         if (left.DueDate.empty() || right.DueDate.empty())
                             return !left.DueDate.empty() && right.DueDate.empty();
                         return left.DueDate < right.DueDate;
                     });
    return statuses;
}

std::optional<std::int64_t> DaysUntilDue(const PlantStatus& plant)
{
    std::int64_t days = 0;
    if (!DaysBetweenPlantDates(PlantEventCurrentDate(), plant.DueDate, days))
        return {};
    return days;
}

std::string HealthText(const PlantHealthObservation& seen)
{
    return seen.Issue + " (" + std::to_string(seen.Severity) + " of 5)";
}

std::string RhythmText(const PlantStatus& plant)
{
    if (!plant.CareGapDays)
        return {};
    const double rounded = std::round(*plant.CareGapDays * 10) / 10;
    return "every " + RoundedTextOf(&rounded) + " d";
}

std::vector<AnswerField<PlantStatus>> StatusFields()
{
    return {{"PlantUUID", [](const PlantStatus& plant) { return Exact(plant.PlantUUID); }},
            {"Plant", [](const PlantStatus& plant) { return Exact(plant.Name); }},
            {"Strain", [](const PlantStatus& plant) { return Exact(plant.Strain); }},
            {"Tent", [](const PlantStatus& plant) { return Exact(plant.Tent); }},
            {"Stage", [](const PlantStatus& plant) { return Exact(TextOf(&plant.Stage)); }},
            {"StageDate", [](const PlantStatus& plant) { return Exact(plant.StageDate); }},
            {"StageDays", [](const PlantStatus& plant) { return Exact(plant.StageDays); }},
            {"AgeDays", [](const PlantStatus& plant) { return Exact(plant.AgeDays); }},
            {"FlipDays", [](const PlantStatus& plant) { return Exact(plant.FlipDays); }},
            {"LastFeedDate", [](const PlantStatus& plant) { return Exact(plant.LastFeedDate); }},
            {"LastWaterDate", [](const PlantStatus& plant) { return Exact(plant.LastWaterDate); }},
            {"CareGapDays", [](const PlantStatus& plant) { return Exact(plant.CareGapDays); }},
            {"DueDate", [](const PlantStatus& plant) { return Exact(plant.DueDate); }},
            {"DueInDays", [](const PlantStatus& plant) { return Exact(DaysUntilDue(plant)); }},
            {"Health", HealthOf}};
}
