#include "activities.h"

#include "activity_tables.h"
#include "letters.h"
#include "owned_events.h"
#include "plants.h"
#include "record_selection.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <set>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace plant_query
{

namespace
{

struct OwnDate
{
    const char* Kind;
    std::string SetPlant::*Date;
};

// In the order in which they follow each other in a plant's life.
constexpr std::array<OwnDate, 5> OwnDates = {{{"Sown", &SetPlant::SeedDate},
                                              {"Clone", &SetPlant::CloneDate},
                                              {"Transplant", &SetPlant::TransplantDate},
                                              {"Flip", &SetPlant::FlipDate},
                                              {"Harvest", &SetPlant::HarvestDate}}};

// Orders the dates of one plant. Equal for two activities of the same row.
std::ptrdiff_t NumberOfOwnDate(const PlantActivity& activity)
{
    return std::find_if(OwnDates.begin(), OwnDates.end(),
                        [&](const OwnDate& own) { return activity.Kind == own.Kind; }) -
           OwnDates.begin();
}

// Reads the activities of the plants between the dates that are of the wanted kinds.
class ActivityReader
{
  public:
    ActivityReader(PlantDatabase& database, const PlantActivityFilter& filter, ActivityTexts texts);

    std::vector<PlantActivity> Read();

  private:
    void AddRows(const ActivityTable& table, Statement& rows);
    void AddOwnDates();

    PlantDatabase& Database;
    const PlantActivityFilter& Filter;
    ActivityTexts Texts;
    std::vector<SetPlant> Plants;
    RecordSelection Selection;
    std::unordered_map<std::string_view, const SetPlant*> PlantsByUUID;
    std::vector<PlantActivity> Found;
};

ActivityReader::ActivityReader(PlantDatabase& database, const PlantActivityFilter& filter, ActivityTexts texts)
    : Database(database), Filter(filter), Texts(texts), Plants(PlantsOf(database.NativeHandle(), filter.Plants)),
      Selection(filter.Plants, Plants, filter.From, filter.To)
{
    for (const SetPlant& plant : Plants)
        PlantsByUUID.emplace(plant.UUID, &plant);
}

std::vector<PlantActivity> ActivityReader::Read()
{
    for (const ActivityTable& table : ActivityTables())
    {
        const auto isWanted = [&](const std::string& kind) { return Fits(Filter.Kinds, kind); };
        const std::vector<std::string> kinds = table.Kinds();
        if (std::any_of(kinds.begin(), kinds.end(), isWanted))
            Selection.Read(Database.NativeHandle(), table.Step, table.Select, table.Date,
                           [&](Statement& rows) { AddRows(table, rows); });
        if (table.Record == PlantActivityRecord::Event)
            RemoveOwnedEvents(Database.NativeHandle(), Selection, Found); // only events were read before
    }
    AddOwnDates();
    return std::move(Found);
}

void ActivityReader::AddRows(const ActivityTable& table, Statement& rows)
{
    const PlantRepository repository(Database);
    while (rows.Step())
    {
        const auto plant = PlantsByUUID.find(rows.WholeView(1));
        PlantActivity activity;
        activity.Kind = table.Kind(rows);
        if (plant == PlantsByUUID.end() || !Fits(Filter.Kinds, activity.Kind))
            continue;
        activity.Date = rows.Text(2);
        if (Texts == ActivityTexts::Read)
        {
            activity.Text = table.Text(repository, rows);
            activity.PlantName = plant->second->Name;
        }
        activity.PlantUUID = plant->second->UUID;
        activity.Record = table.Record;
        activity.RowID = rows.Integer(0);
        Found.push_back(std::move(activity));
    }
}

void ActivityReader::AddOwnDates()
{
    std::set<std::tuple<std::string_view, std::string_view, std::string_view>> known; // plant, kind, date
    for (const PlantActivity& activity : Found)
        if (activity.Record <= PlantActivityRecord::HarvestRecord)
            known.emplace(activity.PlantUUID, activity.Kind, activity.Date);
    std::vector<PlantActivity> added;
    for (const SetPlant& plant : Plants)
        for (const OwnDate& own : OwnDates)
        {
            const std::string& date = plant.*own.Date;
            const std::string kind = own.Kind;
            if (!date.empty() && Selection.IsBetween(date) && Fits(Filter.Kinds, kind) &&
                known.count({plant.UUID, kind, date}) == 0)
                added.push_back({date, kind, "", plant.UUID, plant.Name, PlantActivityRecord::Plant, plant.ID});
        }
    Found.insert(Found.end(), std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
}

void KeepThoseWithText(const PlantActivityFilter& filter, std::vector<PlantActivity>& activities)
{
    const auto fold = [&](const std::string& text)
    {
        if (filter.Fold)
            return filter.Fold(text);
        return WithoutCase(text);
    };
    const std::string wanted = fold(filter.Text);
    const auto contains = [&](const std::string& text) { return fold(text).find(wanted) != std::string::npos; };
    const auto isUnfit = [&](const PlantActivity& activity)
    { return !contains(activity.Kind) && !contains(activity.Text); };
    activities.erase(std::remove_if(activities.begin(), activities.end(), isUnfit), activities.end());
}

bool IsNewer(const PlantActivity& left, const PlantActivity& right)
{
    if (const int order = left.Date.compare(right.Date); order != 0)
        return order > 0;
    if (left.Record != right.Record)
        return left.Record > right.Record;
    if (left.RowID != right.RowID)
        return left.RowID > right.RowID;
    return NumberOfOwnDate(left) > NumberOfOwnDate(right);
}

} // namespace

std::vector<PlantActivity> SelectedActivities(PlantDatabase& database, const PlantActivityFilter& filter,
                                              ActivityTexts texts)
{
    const bool hasText = !filter.Text.empty();
    ActivityReader reader(database, filter, hasText ? ActivityTexts::Read : texts);
    std::vector<PlantActivity> activities = reader.Read();
    if (hasText)
        KeepThoseWithText(filter, activities);
    return activities;
}

void SortNewestFirst(std::vector<PlantActivity>& activities)
{
    std::vector<PlantActivity*> order; // cheaper to move than activities
    order.reserve(activities.size());
    for (PlantActivity& activity : activities)
        order.push_back(&activity);
    std::sort(order.begin(), order.end(),
              [](const PlantActivity* left, const PlantActivity* right) { return IsNewer(*left, *right); });
    std::vector<PlantActivity> sorted;
    sorted.reserve(order.size());
    for (PlantActivity* const activity : order)
        sorted.push_back(std::move(*activity));
    activities = std::move(sorted);
}

} // namespace plant_query
