#pragma once

#include "plant_database.h"
#include "record/json.h"
#include "record/text.h"
#include "refusal.h"
#include "terminal/printable.h"
#include "terminal/table.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

// One run of the command on one journal.
class Session
{
  public:
    std::optional<std::string> File; // --file
    bool AsJSON = false;             // --json

    Session();

    // Where the journal lies.
    std::string Path() const;

    // Whether there is anything to open.
    bool Exists() const;

    // Opens the journal for reading, or for writing, which makes it where there is none. An older file is backed up
    // beside itself before it is brought up to date.
    PlantRepository& Read();
    PlantRepository& Write();

    sqlite3* Connection() const { return Database.NativeHandle(); }

    // The plant of this UUID, of a UUID that begins like this, or of this name; throws where it is not exactly one.
    Plant Find(const std::string& named);
    // The strain of this name.
    Strain FindStrain(const std::string& name);

    // Throws where an operation was not done; `what` could not be done.
    void Require(bool done, const std::string& what) const;

    template <typename Record> void Print(const std::vector<Record>& records) const;
    void Print(const JSON& json) const { std::cout << json.dump(2) << '\n'; }

  private:
    void Open(bool create);

    int LastError = 0; // SQLite's; an operation that had to be rolled back has lost it on its connection
    PlantDatabase Database;
    PlantRepository Repository{Database};
};

// How a plant is named in messages and in tables.
std::string NameOf(const Plant& plant);

// The columns of a record's table, and one line of it.
template <typename Record> std::vector<Column> ColumnsOf()
{
    std::vector<Column> columns;
    for (const Field<Record>& field : Describe<Record>().Fields)
        if (field.In == Shown::Always)
            columns.push_back({field.Name, IsNumber(field.Of.Get(Record()))});
    return columns;
}

template <typename Record> Row RowOf(const Record& record)
{
    Row row;
    for (const Field<Record>& field : Describe<Record>().Fields)
        if (field.In == Shown::Always)
            row.push_back(RoundedTextOf(field.Of.Get(record)));
    return row;
}

// Every field of one record, each on a line.
template <typename Record> std::vector<Row> LinesOf(const Record& record)
{
    std::vector<Row> lines;
    for (const Field<Record>& field : Describe<Record>().Fields)
        lines.push_back({field.Name, RoundedTextOf(field.Of.Get(record))});
    return lines;
}

template <typename Record> void Session::Print(const std::vector<Record>& records) const
{
    if (AsJSON)
        return Print(JSONOf(records));
    std::vector<Row> rows(records.size());
    std::transform(records.begin(), records.end(), rows.begin(), RowOf<Record>);
    PrintTable(std::cout, ColumnsOf<Record>(), rows);
}
