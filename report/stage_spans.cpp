#include "stage_spans.h"

#include "days.h"

#include <algorithm>
#include <array>
#include <optional>

namespace plant_report
{

namespace
{

struct StageBegin
{
    std::int64_t Day;
    PlantStage Stage;
};

bool IsYoung(PlantStage stage)
{
    return stage == PlantStage::Seed || stage == PlantStage::Clone;
}

// Whether the plant's record or its events show that it was cut as a clone then; mothers have events of this type, too.
bool WasCut(const Plant& plant, const PlantActivity& activity, bool isFirst)
{
    return plant.CloneDate.empty() ? isFirst && !plant.MotherPlantUUID.empty() : activity.Date == plant.CloneDate;
}

// The date on which a stage begins that only one date begins: the plant's own, or else that of the newest event.
std::string OnlyDate(const std::string& own, const char* kind, const std::vector<PlantActivity>& activities)
{
    if (!own.empty())
        return own;
    const auto newest = std::find_if(activities.rbegin(), activities.rend(),
                                     [&](const PlantActivity& activity) { return activity.Kind == kind; });
    return newest == activities.rend() ? std::string() : newest->Date;
}

// What begins the stages of a plant.
struct StageDates
{
    std::string Flip;
    std::string Harvest;
    bool HasVegEvent;
};

StageDates DatesOf(const Plant& plant, const std::vector<PlantActivity>& activities)
{
    const bool hasVegEvent =
        std::any_of(activities.begin(), activities.end(),
                    [](const PlantActivity& activity) { return activity.Kind == "Stage" && activity.Text == "Veg"; });
    return {OnlyDate(plant.FlipDate, "Flip", activities), OnlyDate(plant.HarvestDate, "Harvest", activities),
            hasVegEvent};
}

// The stage that begins with the activity, after the stages that have begun before.
std::optional<PlantStage> StageBegunBy(const Plant& plant, const StageDates& dates, const PlantActivity& activity,
                                       const std::vector<StageBegin>& before)
{
    if (activity.Kind == "Sown")
        return PlantStage::Seed;
    if (activity.Kind == "Clone" && WasCut(plant, activity, before.empty()))
        return PlantStage::Clone;
    if (activity.Kind == "Transplant" && !dates.HasVegEvent && (before.empty() || IsYoung(before.back().Stage)))
        return PlantStage::Veg;
    if (activity.Kind == "Flip" && activity.Date == dates.Flip)
        return PlantStage::Flower;
    if (activity.Kind == "Harvest" && activity.Date == dates.Harvest)
        return PlantStage::Harvested;
    if (activity.Kind == "Stage")
        if (const PlantStage stage = PlantStageFromName(activity.Text); activity.Text == PlantStageName(stage))
            return stage;
    return std::nullopt;
}

std::vector<StageBegin> BeginsOf(const Plant& plant, const std::vector<PlantActivity>& activities)
{
    const StageDates dates = DatesOf(plant, activities);
    std::vector<StageBegin> begins;
    for (const PlantActivity& activity : activities)
    {
        const std::optional<std::int64_t> day = plant_query::DaysSinceEpoch(activity.Date);
        if (!day)
            continue;
        const std::optional<PlantStage> stage = StageBegunBy(plant, dates, activity, begins);
        if (!stage || (!begins.empty() && begins.back().Stage == *stage))
            continue;
        if (!begins.empty() && begins.back().Day == *day)
            begins.back().Stage = *stage; // a stage of no day
        else
            begins.push_back({*day, *stage});
    }
    return begins;
}

// The last day of the last stage that has begun. Changes the stage where the plant's present one is a later name of it.
std::int64_t EndOfLast(PlantStage present, StageBegin& last, std::int64_t lastCare, std::int64_t lastDay)
{
    if (present == PlantStage::Veg && IsYoung(last.Stage))
        last.Stage = PlantStage::Veg;
    const bool isOver = present == PlantStage::Harvested || present == PlantStage::Archived;
    const bool isKnown = last.Stage == present;
    if (isOver)
        return isKnown ? last.Day : std::clamp(lastCare, last.Day, std::max(last.Day, lastDay));
    return std::max(last.Day, lastDay);
}

} // namespace

std::vector<std::string> KindsOfStages()
{
    constexpr std::array<const char*, 6> kinds = {"Sown", "Clone", "Transplant", "Flip", "Harvest", "Stage"};
    return {kinds.begin(), kinds.end()};
}

std::vector<PlantStageSpan> StageSpansOf(const Plant& plant, const std::vector<PlantActivity>& activities,
                                         std::int64_t lastCare, std::int64_t lastDay)
{
    std::vector<StageBegin> begins = BeginsOf(plant, activities);
    std::vector<PlantStageSpan> spans;
    if (begins.empty())
        return spans;
    const std::int64_t end = EndOfLast(plant.Stage, begins.back(), lastCare, lastDay);
    for (std::size_t i = 0; i < begins.size(); ++i)
        spans.push_back({plant.Name, begins[i].Stage, plant_query::DayText(begins[i].Day),
                         plant_query::DayText(i + 1 < begins.size() ? begins[i + 1].Day : end)});
    return spans;
}

} // namespace plant_report
