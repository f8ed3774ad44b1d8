#include "journal.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

#include <sqlite3.h>

namespace
{

constexpr double ChartWidth = 480; // pixels

// The answer of a query. Throws its error.
template <typename Answer> Answer Ask(const auto& query, PlantDatabase& database, const auto&... arguments)
{
    Answer answer;
    if (const PlantQueryResult result = query(database, arguments..., answer); !result)
        throw std::runtime_error(result.Error);
    return answer;
}

// What an operation of the repository reads. It returns true for a list that ended early, and false where nothing was
// found, so only SQLite's code shows an error.
template <typename Answer>
Answer Read(bool (PlantRepository::*operation)(const std::string&, Answer&), PlantDatabase& database,
            const std::string& uuid)
{
    Answer answer;
    PlantRepository repository(database);
    (repository.*operation)(uuid, answer);
    if (sqlite3_errcode(database.NativeHandle()) != SQLITE_OK)
        throw std::runtime_error(std::string("reading the plant: ") + sqlite3_errmsg(database.NativeHandle()));
    return answer;
}

std::vector<PlantTotal> ReadWeeks(PlantDatabase& database, const std::string& uuid,
                                  const std::vector<PlantCareAction>& actions)
{
    PlantTotalFilter filter;
    filter.Plants.UUIDs = {uuid};
    filter.Actions = actions;
    filter.Group = PlantTotalGroup::Plant;
    filter.Period = PlantPeriod::Week;
    return Ask<std::vector<PlantTotal>>(QueryPlantTotals, database, filter);
}

std::vector<PlantChart> DrawCharts(PlantDatabase& database, const Plant& plant)
{
    const auto waterings = ReadWeeks(database, plant.UUID, {PlantCareAction::Water});
    const auto feedings = ReadWeeks(database, plant.UUID, {PlantCareAction::Feed});
    const auto measurements = ReadWeeks(database, plant.UUID, {});
    PlantActivityFilter care;
    care.Plants.UUIDs = {plant.UUID};
    care.Kinds = {PlantCareActionName(PlantCareAction::Feed), PlantCareActionName(PlantCareAction::Water)};
    const auto days = Ask<std::vector<PlantCalendarDay>>(QueryPlantCalendar, database, care);
    const auto observations = Read(&PlantRepository::ListPlantHealthObservations, database, plant.UUID);
    std::vector<PlantHealth> health;
    std::transform(observations.rbegin(), observations.rend(), std::back_inserter(health), // oldest first
                   [&](const PlantHealthObservation& observation) {
                       return PlantHealth{plant.Name, observation};
                   });

    std::vector<PlantChart> charts = {DrawPlantMeasurements(measurements, PlantPeriod::Week, ChartWidth),
                                      DrawPlantCareAmounts(waterings, feedings, PlantPeriod::Week, ChartWidth),
                                      DrawPlantCareCalendar(days, ChartWidth), DrawPlantHealth(health, ChartWidth)};
    std::erase_if(charts, [](const PlantChart& chart) { return chart.SVG.empty(); });
    return charts;
}

bool Create(PlantDatabase& database, FormRecord& record)
{
    PlantRepository repository(database);
    Plant plant;
    const Overloaded create{
        [&](PlantCareEntry& entry) { return repository.CreatePlantCareEntry(entry); },
        [&](PlantJournalEntry& entry) { return repository.CreatePlantJournalEntry(entry); },
        [&](PlantHealthObservation& observation) { return repository.CreatePlantHealthObservation(observation); },
        [&](HarvestRecord& harvest)
        { return repository.GetPlant(harvest.PlantUUID, plant) && repository.SaveHarvestRecord(plant, harvest); }};
    return std::visit(create, record);
}

} // namespace

JournalView ReadJournal(PlantDatabase& database, const std::string& selected)
try
{
    JournalView view;
    view.Plants = Ask<std::vector<PlantStatus>>(QueryPlantStatus, database, PlantSet(), PlantEventCurrentDate());
    view.Selected = Read(&PlantRepository::GetPlant, database, selected);
    if (view.Selected.UUID.empty())
        return view; // no plant is selected, or another program has deleted it
    view.Timeline = Ask<std::vector<PlantActivity>>(QueryPlantTimeline, database, selected);
    view.Photos = Read(&PlantRepository::ListPlantPhotos, database, selected);
    view.Charts = DrawCharts(database, view.Selected);
    return view;
}
catch (const std::runtime_error& failure)
{
    JournalView view;
    view.Error = std::string("The journal cannot be read now: ") + failure.what();
    return view;
}

StoreResult StoreRecord(PlantDatabase& database, const FormRecord& record)
{
    StoreResult result;
    const auto validate = [&](const auto& form) { return Validate(form, database, result.Problems).Error; };
    result.Reason = std::visit(validate, record);
    if (!result.Reason.empty() || PreventStoring(result.Problems))
        return result;
    FormRecord stored = record; // `Explain` needs the record as it was before
    result.Stored = Create(database, stored);
    if (!result.Stored)
        result.Reason = std::visit([&](const auto& form) { return Explain(database, form); }, record);
    return result;
}

bool PreventStoring(const std::vector<PlantProblem>& problems)
{
    return std::any_of(problems.begin(), problems.end(),
                       [](const PlantProblem& problem) { return problem.Kind != PlantProblemKind::Unlikely; });
}
