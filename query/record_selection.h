// Reads the records of a set of plants between two dates.
#pragma once

#include "plants.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace plant_query
{

// Which records of a table to read. The arguments of the constructor must outlive it.
class RecordSelection
{
  public:
    // `plants` are those of `set`, of which two may have the same UUID up to a zero byte. `from` and `to` are as in
    // PlantActivityFilter.
    RecordSelection(const PlantSet& set, const std::vector<SetPlant>& plants, const std::string& from,
                    const std::string& to);

    // Whether a date limits the records.
    bool HasDates() const { return !From.empty() || AfterTo; }
    // Whether a record of this date is between the dates.
    bool IsBetween(const std::string& date) const;

    // Runs `select`, which ends before its conditions, and calls `read` with the rows of all plants, or of each plant
    // in turn. `read` takes all rows. `date` is the column of the date, `step` as in Statement.
    void Read(sqlite3* connection, const char* step, const std::string& select, const std::string& date,
              const std::function<void(Statement& rows)>& read) const;

  private:
    const std::string& From;
    std::optional<std::string> AfterTo;
    bool EveryPlant;
    std::vector<std::string_view> UUIDs; // sorted; each once
};

} // namespace plant_query
