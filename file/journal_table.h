// The tables of a journal, and the forms that their rows have in files of the current and earlier schemas.
#pragma once

#include "record.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <sqlite3.h>

namespace plant_file
{

struct TableColumn
{
    std::string Name;
    StorageClass Class = StorageClass::Text; // Text, Integer or Real
    bool MayBeNull = false;
    bool IsRowID = false; // stored as NULL
    Value Default;        // for rows that are older than the column
};

struct JournalTable
{
    std::string Name;
    std::vector<TableColumn> Columns;

    std::size_t IndexOf(const std::string& column) const; // Columns.size() where there is none
};

// Reads the tables of a journal, in the schema's order.
std::vector<JournalTable> ReadTables(sqlite3* journal);

// SQLite's own table, which lists all others.
JournalTable SchemaTable();

// The columns of stored rows, in their order, as positions in JournalTable::Columns. A row may be shorter: columns that
// a migration adds have no value in older rows.
struct RowForm
{
    std::vector<std::size_t> Columns;
    std::size_t Least = 0; // the number of values of the shortest row
};

// The forms in all schemas, the current one first.
std::vector<RowForm> FormsOf(const JournalTable& table);

// The form in a file with this definition of the table; std::nullopt where SQLite cannot read the definition, or where
// its columns are not those of a journal.
std::optional<RowForm> FormOfDefinition(const JournalTable& table, const std::string& definition);

// Whether the values have the number and the types of the form's columns.
bool Fits(const JournalTable& table, const RowForm& form, const Values& values);

// Whether they fit, and stored names and UUIDs are such. No row fits two tables of a journal in this way.
bool FitsOnly(const JournalTable& table, const RowForm& form, const Values& values);

// The number of values that are dates or empty, in columns of dates: the right form of a row has most of them.
int CountDates(const JournalTable& table, const RowForm& form, const Values& values);

// The values in the order of JournalTable::Columns, with defaults for those that the row does not have.
Values InOrder(const JournalTable& table, const RowForm& form, const Values& values);

} // namespace plant_file
