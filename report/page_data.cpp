#include "page_data.h"

#include "days.h"
#include "family_trees.h"
#include "read.h"
#include "stage_spans.h"
#include "usual_days.h"
#include "words.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <unordered_map>

namespace plant_report
{

namespace
{

using ActivitiesByPlant = std::unordered_map<std::string, std::vector<PlantActivity>>;

template <typename Value> bool IsOneOf(const std::vector<Value>& wanted, const Value& value)
{
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), value) != wanted.end();
}

bool IsInSet(const PlantSet& set, const Plant& plant)
{
    return IsOneOf(set.UUIDs, plant.UUID) && IsOneOf(set.Strains, plant.Strain) && IsOneOf(set.Tents, plant.Tent) &&
           IsOneOf(set.Stages, plant.Stage);
}

PlantActivityFilter FilterOf(const PlantReportOptions& options)
{
    PlantActivityFilter filter;
    filter.Plants = options.Plants;
    filter.From = options.From;
    filter.To = options.To;
    return filter;
}

void ReadPlants(PlantDatabase& database, const PlantReportOptions& options, PageData& data)
{
    PlantRepository repository(database);
    RequireRead(repository.ListPlants(data.Plants), database.NativeHandle(), "reading the plants");
    data.Plants.erase(std::remove_if(data.Plants.begin(), data.Plants.end(),
                                     [&](const Plant& plant) { return !IsInSet(options.Plants, plant); }),
                      data.Plants.end());
    for (const Plant& plant : data.Plants)
        data.NameOf.emplace(plant.UUID, plant.Name);
}

void ReadCalendar(PlantDatabase& database, const PlantReportOptions& options, PageData& data)
{
    std::vector<PlantCalendarDay> days;
    RequireAnswer(QueryPlantCalendar(database, FilterOf(options), days));
    for (PlantCalendarDay& day : days)
    {
        data.Entries += day.Number;
        const auto number = plant_query::DaysSinceEpoch(day.Date);
        if (!number)
            continue;
        data.Days = {data.Days.value_or(std::pair(*number, *number)).first, *number};
        if (day.Kind == PlantCareActionName(PlantCareAction::Feed) ||
            day.Kind == PlantCareActionName(PlantCareAction::Water))
            data.Care.push_back(std::move(day));
    }
}

// The last day on which each plant was fed or watered.
std::unordered_map<std::string, std::int64_t> LastCareDays(PlantDatabase& database, const PlantReportOptions& options)
{
    std::vector<PlantStatus> plants;
    RequireAnswer(QueryPlantStatus(database, options.Plants, options.Today, plants));
    std::unordered_map<std::string, std::int64_t> days;
    for (const PlantStatus& plant : plants)
        for (const auto date : {&PlantStatus::LastFeedDate, &PlantStatus::LastWaterDate})
            if (const auto day = plant_query::DaysSinceEpoch(plant.*date))
            {
                std::int64_t& last = days.emplace(plant.PlantUUID, *day).first->second;
                last = std::max(last, *day);
            }
    return days;
}

constexpr std::size_t YearDigits = 4;
constexpr std::size_t MonthDigits = 7;

// The first and the last day of a date such as `2025-03`; no value for a text that is neither year, month nor day.
std::optional<std::int64_t> FirstDayOfDate(std::string date)
{
    if (date.size() == YearDigits)
        date += "-01";
    return FirstDayOf(date);
}

std::optional<std::int64_t> LastDayOfDate(std::string date)
{
    if (date.size() == YearDigits)
        date += "-12";
    std::optional<std::int64_t> day = FirstDayOf(date);
    if (day && date.size() == MonthDigits)
        day = NextPeriod(*day, PlantPeriod::Month) - 1;
    return day;
}

// Leaves out what is not between the dates of the page.
void LimitSpans(const PlantReportOptions& options, std::vector<PlantStageSpan>& spans)
{
    const std::optional<std::int64_t> firstDay = FirstDayOfDate(options.From);
    const std::optional<std::int64_t> lastDay = LastDayOfDate(options.To);
    const std::string first = firstDay ? plant_query::DayText(*firstDay) : std::string();
    const std::string last = lastDay ? plant_query::DayText(*lastDay) : std::string();
    spans.erase(std::remove_if(spans.begin(), spans.end(),
                               [&](const PlantStageSpan& span)
                               { return span.To < first || (lastDay && span.From > last); }),
                spans.end());
    for (PlantStageSpan& span : spans)
    {
        span.From = std::max(span.From, first);
        if (lastDay)
            span.To = std::min(span.To, last);
    }
}

void ReadStages(PlantDatabase& database, const PlantReportOptions& options, PageData& data)
{
    PlantActivityFilter filter; // of any date: a stage may begin before the page and end after it
    filter.Plants = options.Plants;
    filter.Kinds = KindsOfStages();
    filter.Order = PlantActivityOrder::OldestFirst;
    std::vector<PlantActivity> activities;
    RequireAnswer(QueryPlantActivity(database, filter, activities));
    ActivitiesByPlant ofPlant;
    for (PlantActivity& activity : activities)
        ofPlant[activity.PlantUUID].push_back(std::move(activity));

    const auto lastCare = LastCareDays(database, options);
    const std::int64_t today = plant_query::DaysSinceEpoch(options.Today).value_or(0);
    for (const Plant& plant : data.Plants)
    {
        const auto care = lastCare.find(plant.UUID);
        std::vector<PlantStageSpan> spans =
            StageSpansOf(plant, ofPlant[plant.UUID], care == lastCare.end() ? INT64_MIN : care->second, today);
        LimitSpans(options, spans);
        std::move(spans.begin(), spans.end(), std::back_inserter(data.Stages));
    }
}

// The length of time between the first and the last care, of those that are drawn.
std::int64_t DaysOfCare(const PageData& data)
{
    std::map<std::int64_t, std::int64_t> numbers;
    for (const PlantCalendarDay& day : data.Care)
        numbers[plant_query::DaysSinceEpoch(day.Date).value_or(0)] += day.Number;
    if (numbers.empty())
        return 0;
    const DayRange usual = UsualDays(numbers);
    return usual.Last - usual.First;
}

// The number of plants or strains that the measurements are drawn of.
std::size_t MeasuredNames(const PageData& data, PlantTotalGroup group)
{
    if (group == PlantTotalGroup::Plant)
        return data.Plants.size();
    std::set<std::string> strains;
    for (const Plant& plant : data.Plants)
        strains.insert(plant.Strain);
    return strains.size();
}

// The shortest period with which a picture and its table hold what a person can read.
PlantPeriod ReadablePeriod(std::int64_t days, std::size_t names)
{
    constexpr std::int64_t mostValues = 400;
    const std::int64_t values = days * static_cast<std::int64_t>(names);
    if (values <= mostValues)
        return PlantPeriod::Day;
    return values <= 7 * mostValues ? PlantPeriod::Week : PlantPeriod::Month;
}

void ReadTotals(PlantDatabase& database, const PlantReportOptions& options, PageData& data)
{
    constexpr std::int64_t mostDaysByDay = 31;
    constexpr std::int64_t mostDaysByWeek = 1098; // three years
    constexpr std::size_t mostPlants = 12;
    const std::int64_t days = DaysOfCare(data);
    const PlantTotalGroup group = data.Plants.size() <= mostPlants ? PlantTotalGroup::Plant : PlantTotalGroup::Strain;
    data.MeasurementPeriod = ReadablePeriod(days, MeasuredNames(data, group));
    data.AmountPeriod = days <= mostDaysByDay    ? PlantPeriod::Day
                        : days <= mostDaysByWeek ? PlantPeriod::Week
                                                 : PlantPeriod::Month;

    PlantTotalFilter filter;
    filter.Plants = options.Plants;
    filter.From = options.From;
    filter.To = options.To;
    filter.Group = group;
    filter.Period = data.MeasurementPeriod;
    RequireAnswer(QueryPlantTotals(database, filter, data.Measurements));
    filter.Group = PlantTotalGroup::All;
    filter.Period = data.AmountPeriod;
    filter.Actions = {PlantCareAction::Water};
    RequireAnswer(QueryPlantTotals(database, filter, data.Waterings));
    filter.Actions = {PlantCareAction::Feed};
    RequireAnswer(QueryPlantTotals(database, filter, data.Feedings));
}

// The records that are read plant by plant.
void ReadRecords(PlantDatabase& database, const PlantReportOptions& options, PageData& data)
{
    PlantRepository repository(database);
    sqlite3* connection = database.NativeHandle();
    std::vector<PlantHealthObservation> health;
    std::vector<PlantPhoto> photos;
    for (const Plant& plant : data.Plants)
    {
        if (const auto harvest = ReadHarvestRecord(database, plant.UUID);
            harvest && IsBetweenDates(options, harvest->HarvestDate))
            data.Harvests.push_back({plant.Name, plant.Strain, *harvest});
        RequireRead(repository.ListPlantHealthObservations(plant.UUID, health), connection,
                    "reading the health observations");
        for (PlantHealthObservation& observation : health)
            if (IsBetweenDates(options, observation.ObservationDate))
                data.Health.push_back({plant.Name, std::move(observation)});
        RequireRead(repository.ListPlantPhotos(plant.UUID, photos), connection, "reading the photos");
        for (PlantPhoto& photo : photos)
            if (IsBetweenDates(options, photo.PhotoDate))
                data.Photos.push_back(std::move(photo));
    }
    std::stable_sort(data.Health.begin(), data.Health.end(),
                     [](const PlantHealth& a, const PlantHealth& b)
                     { return a.Observation.ObservationDate < b.Observation.ObservationDate; });
    std::stable_sort(data.Photos.begin(), data.Photos.end(),
                     [](const PlantPhoto& a, const PlantPhoto& b) { return a.PhotoDate > b.PhotoDate; });
}

} // namespace

bool IsBetweenDates(const PlantReportOptions& options, const std::string& date)
{
    return date >= options.From &&
           (options.To.empty() || date <= options.To || date.compare(0, options.To.size(), options.To) == 0);
}

PageData ReadPageData(PlantDatabase& database, const PlantReportOptions& options)
{
    PageData data;
    ReadPlants(database, options, data);
    if (data.Plants.empty())
        return data;
    ReadCalendar(database, options, data);
    ReadStages(database, options, data);
    ReadTotals(database, options, data);
    ReadRecords(database, options, data);
    data.Lineage = ReadFamilyTrees(database, data.Plants);
    return data;
}

} // namespace plant_report
