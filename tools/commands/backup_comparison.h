#pragma once

#include "plant_file.h"
#include "record/json.h"

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

// Whether the rows of the file can be read.
bool IsJournal(const PlantFileInspection& file);

// The damage that SQLite finds in a journal whose rows can be read, or why it cannot be checked; empty for a good one.
std::string DamageIn(const std::string& path);

// What a restoration changes: the tables of the journal that is there and of the backup.
class BackUpComparison
{
  public:
    // The journal may be missing, or damaged so that nothing can be read. The backup is a good one. `error` is why the
    // journal cannot be replaced, as RestorePlantDatabase() reports it; empty where nothing is known to prevent it.
    BackUpComparison(std::string journal, const std::string& backUp, std::string& error);

    void Print(std::ostream& out) const;
    // Whether the journal is replaced by another file, so that the programs that have it open keep the former one.
    bool ReplacesTheFile() const;
    // Whether no program has changed the journal since the comparison.
    bool IsUpToDate() const;
    JSON AsJSON() const;
    JSON LastDates() const;

  private:
    std::vector<std::string> TableNames() const;
    std::optional<std::int64_t> RowsNow(const std::string& table) const;
    std::int64_t RowsThen(const std::string& table) const;
    std::string Change(const std::string& table) const;

    std::string Journal;
    std::string Header; // of the journal's file
    PlantFileInspection Now;
    PlantFileInspection Then;
};
