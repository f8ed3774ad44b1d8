#include "query/models.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace support
{

namespace
{

std::optional<std::int64_t> DaysFrom(const std::string& first, const std::string& last)
{
    const auto from = DayOf(first);
    const auto to = DayOf(last);
    return from && to && *from <= *to ? std::optional<std::int64_t>(*to - *from) : std::nullopt;
}

std::string StageDateModel(const ListedPlant& plant, const std::string& today)
{
    const Plant& p = plant.Record;
    const std::map<PlantStage, std::string> own = {{PlantStage::Seed, p.SeedDate},
                                                   {PlantStage::Clone, p.CloneDate},
                                                   {PlantStage::Flower, p.FlipDate},
                                                   {PlantStage::Dry, p.HarvestDate},
                                                   {PlantStage::Harvested, p.HarvestDate}};
    if (own.count(p.Stage) > 0 && !own.at(p.Stage).empty())
        return own.at(p.Stage);
    const std::set<std::pair<PlantStage, PlantEventType>> begins = {{PlantStage::Flower, PlantEventType::Flip},
                                                                    {PlantStage::Clone, PlantEventType::Clone},
                                                                    {PlantStage::Dry, PlantEventType::Harvest},
                                                                    {PlantStage::Harvested, PlantEventType::Harvest}};
    for (const PlantEvent& event : plant.Events)
        if (IsUpTo(event.EventDate, today) && !event.EventDate.empty() &&
            (begins.count({p.Stage, event.Type}) > 0 ||
             (event.Type == PlantEventType::Stage && event.Details == PlantStageName(p.Stage))))
            return event.EventDate;
    return {};
}

std::string FlipDateModel(const ListedPlant& plant, const std::string& today)
{
    if (!plant.Record.FlipDate.empty())
        return plant.Record.FlipDate;
    for (const PlantEvent& event : plant.Events)
        if (IsUpTo(event.EventDate, today) && event.Type == PlantEventType::Flip)
            return event.EventDate;
    return {};
}

void AddCareModel(const ListedPlant& plant, const std::string& today, PlantStatus& status)
{
    std::set<int> days;
    for (const PlantCareEntry& entry : plant.Care)
    {
        if (!IsUpTo(entry.CareDate, today))
            continue;
        std::string& last = entry.Action == PlantCareAction::Feed ? status.LastFeedDate : status.LastWaterDate;
        last = std::max(last, entry.CareDate);
        if (DayOf(entry.CareDate))
            days.insert(*DayOf(entry.CareDate));
    }
    while (days.size() > 6)
        days.erase(days.begin());
    if (days.size() < 2)
        return;
    std::multiset<double> gaps;
    for (auto day = std::next(days.begin()); day != days.end(); ++day)
        gaps.insert(*day - *std::prev(day));
    while (gaps.size() > 2)
    {
        gaps.erase(gaps.begin());
        gaps.erase(std::prev(gaps.end()));
    }
    status.CareGapDays = (*gaps.begin() + *gaps.rbegin()) / 2;
    if (std::set{PlantStage::Seed, PlantStage::Clone, PlantStage::Veg, PlantStage::Flower}.count(status.Stage) > 0)
        status.DueDate = DateOf(static_cast<int>(std::ceil(*days.rbegin() + *status.CareGapDays)));
}

} // namespace

std::vector<PlantStatus> StatusModel(const std::vector<ListedPlant>& plants, const PlantSet& set,
                                     const std::string& today)
{
    std::vector<PlantStatus> statuses;
    for (const ListedPlant& plant : plants)
    {
        const Plant& p = plant.Record;
        if (!IsOf(set, p))
            continue;
        PlantStatus& status = statuses.emplace_back();
        status.PlantUUID = p.UUID;
        status.Name = p.Name;
        status.Strain = p.Strain;
        status.Tent = p.Tent;
        status.Stage = p.Stage;
        std::string end = today;
        if (!p.HarvestDate.empty() && !(DayOf(p.HarvestDate) && p.HarvestDate > today))
            end = p.HarvestDate;
        status.AgeDays = DaysFrom(p.SeedDate.empty() ? p.CloneDate : p.SeedDate, end);
        status.StageDate = StageDateModel(plant, today);
        status.StageDays = DaysFrom(status.StageDate, today);
        status.FlipDays = DaysFrom(FlipDateModel(plant, today), end);
        AddCareModel(plant, today, status);
        std::set<std::string> issues;
        for (const PlantHealthObservation& observation : plant.Observations)
            if (observation.ObservationDate >= DateOf(*DayOf(today) - 29) &&
                IsUpTo(observation.ObservationDate, today) && issues.insert(Lower(observation.Issue)).second)
                status.Health.push_back(observation);
    }
    return statuses;
}

} // namespace support
