#include "record_selection.h"

#include "days.h"

#include <algorithm>

namespace plant_query
{

RecordSelection::RecordSelection(const PlantSet& set, const std::vector<SetPlant>& plants, const std::string& from,
                                 const std::string& to)
    : From(from), AfterTo(AfterDate(to)), EveryPlant(IsEveryPlant(set))
{
    for (const SetPlant& plant : plants)
        UUIDs.emplace_back(plant.UUID);
    std::sort(UUIDs.begin(), UUIDs.end());
    UUIDs.erase(std::unique(UUIDs.begin(), UUIDs.end()), UUIDs.end());
}

bool RecordSelection::IsBetween(const std::string& date) const
{
    return date >= From && (!AfterTo || date < *AfterTo);
}

void RecordSelection::Read(sqlite3* connection, const char* step, const std::string& select, const std::string& date,
                           const std::function<void(Statement& rows)>& read) const
{
    std::string sql = select + " WHERE " + date + ">=?1";
    if (AfterTo)
        sql += " AND " + date + "<?2";
    // The index of the records of a plant by date finds those between the dates.
    const bool searchesEachPlant = !EveryPlant || HasDates();
    if (searchesEachPlant)
        sql += " AND PlantUUID=?3";
    Statement rows(connection, step, sql);
    rows.Bind(1, From);
    if (AfterTo)
        rows.Bind(2, *AfterTo);
    if (!searchesEachPlant)
        return read(rows);
    for (const std::string_view uuid : UUIDs)
    {
        rows.Reset();
        rows.Bind(3, uuid);
        read(rows);
    }
}

} // namespace plant_query
