#include "activities.h"

#include "activity_tables.h"
#include "days.h"
#include "letters.h"
#include "plants.h"

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

// Orders the dates of one plant; 0 for all other activities.
std::ptrdiff_t NumberOfOwnDate(const PlantActivity& activity)
{
    if (activity.Record != PlantActivityRecord::Plant)
        return 0;
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
    void ReadTable(const ActivityTable& table);
    void AddRows(const ActivityTable& table, Statement& rows);
    void RemoveOwnedEvents();
    void MarkOwnedEvents(const char* step, const char* table,
                         const std::unordered_map<std::int64_t, std::size_t>& events, std::vector<bool>& owned);
    void AddOwnDates();
    // Runs `add` for the rows of all plants at once, or of each plant of the set. The UUID is parameter 3.
    template <typename Add> void ForPlants(Statement& rows, const Add& add);

    PlantDatabase& Database;
    const PlantActivityFilter& Filter;
    ActivityTexts Texts;
    std::optional<std::string> AfterTo;
    bool EveryPlant;
    std::vector<SetPlant> Plants;
    std::unordered_map<std::string_view, const SetPlant*> PlantsByUUID;
    std::vector<PlantActivity> Found;
};

ActivityReader::ActivityReader(PlantDatabase& database, const PlantActivityFilter& filter, ActivityTexts texts)
    : Database(database), Filter(filter), Texts(texts), AfterTo(AfterDate(filter.To)),
      EveryPlant(IsEveryPlant(filter.Plants)), Plants(PlantsOf(database.NativeHandle(), filter.Plants))
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
            ReadTable(table);
        if (table.Record == PlantActivityRecord::Event)
            RemoveOwnedEvents();
    }
    AddOwnDates();
    return std::move(Found);
}

template <typename Add> void ActivityReader::ForPlants(Statement& rows, const Add& add)
{
    if (EveryPlant)
        return add();
    for (const SetPlant& plant : Plants)
    {
        rows.Reset();
        rows.Bind(3, plant.UUID);
        add();
    }
}

void ActivityReader::ReadTable(const ActivityTable& table)
{
    std::string sql = std::string(table.Select) + " WHERE " + table.Date + ">=?1";
    if (AfterTo)
        sql += std::string(" AND ") + table.Date + "<?2";
    if (!EveryPlant)
        sql += " AND PlantUUID=?3";
    Statement rows(Database.NativeHandle(), table.Step, sql);
    rows.Bind(1, Filter.From);
    if (AfterTo)
        rows.Bind(2, *AfterTo);
    ForPlants(rows, [&] { AddRows(table, rows); });
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
            activity.Text = table.Text(repository, rows);
        activity.PlantUUID = plant->second->UUID;
        activity.PlantName = plant->second->Name;
        activity.Record = table.Record;
        activity.RowID = rows.Integer(0);
        Found.push_back(std::move(activity));
    }
}

// No index finds the owner of an event, so the owners of all events are read at once.
void ActivityReader::RemoveOwnedEvents()
{
    if (Found.empty()) // only events were read before
        return;
    std::unordered_map<std::int64_t, std::size_t> events;
    for (std::size_t i = 0; i < Found.size(); ++i)
        events.emplace(Found[i].RowID, i);
    std::vector<bool> owned(Found.size());
    MarkOwnedEvents("reading the events of care entries", "PlantCareEntries", events, owned);
    MarkOwnedEvents("reading the events of harvest records", "HarvestRecords", events, owned);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < Found.size(); ++i)
        if (!owned[i])
            std::swap(Found[kept++], Found[i]);
    Found.resize(kept);
}

void ActivityReader::MarkOwnedEvents(const char* step, const char* table,
                                     const std::unordered_map<std::int64_t, std::size_t>& events,
                                     std::vector<bool>& owned)
{
    const auto [first, last] = std::minmax_element(Found.begin(), Found.end(),
                                                   [](const PlantActivity& left, const PlantActivity& right)
                                                   { return left.RowID < right.RowID; });
    Statement rows(Database.NativeHandle(), step,
                   std::string("SELECT TimelineEventID,PlantUUID FROM ") + table +
                       " WHERE TimelineEventID BETWEEN ?1 AND ?2" + (EveryPlant ? "" : " AND PlantUUID=?3"));
    rows.Bind(1, first->RowID);
    rows.Bind(2, last->RowID);
    ForPlants(rows,
              [&]
              {
                  while (rows.Step())
                  {
                      const auto event = events.find(rows.Integer(0));
                      if (event != events.end() && Found[event->second].PlantUUID == rows.WholeView(1))
                          owned[event->second] = true;
                  }
              });
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
            const bool isBetween = date >= Filter.From && (!AfterTo || date < *AfterTo);
            if (!date.empty() && isBetween && Fits(Filter.Kinds, kind) && known.count({plant.UUID, kind, date}) == 0)
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

using SortKey = std::tuple<std::string_view, PlantActivityRecord, std::int64_t, std::ptrdiff_t>;

SortKey SortKeyOf(const PlantActivity& activity)
{
    return {activity.Date, activity.Record, activity.RowID, NumberOfOwnDate(activity)};
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
    const auto isNewer = [](const PlantActivity& left, const PlantActivity& right)
    { return SortKeyOf(left) > SortKeyOf(right); };
    std::sort(activities.begin(), activities.end(), isNewer);
}

} // namespace plant_query
