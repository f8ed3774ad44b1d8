#include "owned_events.h"

#include <cstddef>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

namespace plant_query
{

namespace
{

struct OwnerTable
{
    const char* Step; // in an error
    const char* Select;
    const char* Date; // the column of the date
};

constexpr OwnerTable OwnerTables[] = {
    {"reading the events of care entries", "SELECT TimelineEventID,PlantUUID FROM PlantCareEntries", "CareDate"},
    {"reading the events of harvest records", "SELECT TimelineEventID,PlantUUID FROM HarvestRecords", "HarvestDate"}};

class OwnedEvents
{
  public:
    OwnedEvents(sqlite3* connection, const RecordSelection& selection, std::vector<PlantActivity>& events);

    // Marks the events that a row of the table owns.
    void MarkBy(const OwnerTable& table);
    // Removes the events that are marked.
    void Remove();

  private:
    void MarkByRows(Statement& rows);

    sqlite3* Connection;
    const RecordSelection& Selection;
    std::vector<PlantActivity>& Events;
    std::unordered_map<std::int64_t, std::size_t> Numbers; // by row ID
    std::vector<bool> Owned;
};

OwnedEvents::OwnedEvents(sqlite3* connection, const RecordSelection& selection, std::vector<PlantActivity>& events)
    : Connection(connection), Selection(selection), Events(events), Owned(events.size())
{
    for (std::size_t i = 0; i < Events.size(); ++i)
        Numbers.emplace(Events[i].RowID, i);
}

// No index finds the owner of an event. It usually has the date of the event, so the owners between the dates are read
// first. Then only a few plants remain of which all owners are read.
void OwnedEvents::MarkBy(const OwnerTable& table)
{
    Selection.Read(Connection, table.Step, table.Select, table.Date, [&](Statement& rows) { MarkByRows(rows); });
    if (!Selection.HasDates())
        return;
    std::set<std::string> plants;
    for (std::size_t i = 0; i < Events.size(); ++i)
        if (!Owned[i])
            plants.insert(Events[i].PlantUUID);
    Statement rows(Connection, table.Step, std::string(table.Select) + " WHERE PlantUUID=?");
    for (const std::string& plant : plants)
    {
        rows.Reset();
        rows.Bind(1, plant);
        MarkByRows(rows);
    }
}

void OwnedEvents::MarkByRows(Statement& rows)
{
    while (rows.Step())
    {
        const auto event = rows.IsNull(0) ? Numbers.end() : Numbers.find(rows.Integer(0));
        if (event != Numbers.end() && Events[event->second].PlantUUID == rows.WholeView(1))
            Owned[event->second] = true;
    }
}

void OwnedEvents::Remove()
{
    std::size_t kept = 0;
    for (std::size_t i = 0; i < Events.size(); ++i)
        if (!Owned[i])
            std::swap(Events[kept++], Events[i]);
    Events.resize(kept);
}

} // namespace

void RemoveOwnedEvents(sqlite3* connection, const RecordSelection& selection, std::vector<PlantActivity>& events)
{
    if (events.empty())
        return;
    OwnedEvents owned(connection, selection, events);
    for (const OwnerTable& table : OwnerTables)
        owned.MarkBy(table);
    owned.Remove();
}

} // namespace plant_query
