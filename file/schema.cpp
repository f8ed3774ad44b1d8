#include "schema.h"
#include "system.h"

#include "access.h"
#include "plant_database.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace plant_file
{

namespace
{

// A table, index, view or trigger, as SQLite lists it.
struct SchemaObject
{
    std::string Type;
    std::string Name;
    std::string Table;
    std::string Definition;

    bool operator==(const SchemaObject& other) const
    {
        return Type == other.Type && Name == other.Name && Table == other.Table;
    }
};

using SchemaObjects = std::vector<SchemaObject>;

// The columns that the migration adds where they are missing.
using ColumnOfTable = std::pair<std::string_view, std::string_view>;
constexpr std::array<ColumnOfTable, 5> AddedColumns = {{
    {"Plants", "SeedDate"},
    {"Plants", "FlipHeightCm"},
    {"Plants", "FinalHeightCm"},
    {"Plants", "Sex"},
    {"HarvestRecords", "SeedYield"},
}};

template <typename Range, typename Value> bool Contains(const Range& range, const Value& value)
{
    return std::find(range.begin(), range.end(), value) != range.end();
}

SchemaObjects ReadObjects(sqlite3* db)
{
    SchemaObjects objects;
    ForEachRow(db, ReadingSchema,
               "SELECT CASE WHEN type='table' AND rootpage=0 THEN 'virtual table' ELSE type END,name,tbl_name,sql "
               "FROM sqlite_master WHERE name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY rowid;",
               [&](sqlite3_stmt* row) {
                   objects.push_back({ColumnText(row, 0), ColumnText(row, 1), ColumnText(row, 2), ColumnText(row, 3)});
               });
    return objects;
}

std::vector<std::string> ReadColumns(sqlite3* db, const std::string& table)
{
    std::vector<std::string> columns;
    ForEachRow(db, ReadingSchema, "PRAGMA table_info(" + table + ");",
               [&](sqlite3_stmt* row) { columns.push_back(ColumnText(row, 1)); });
    return columns;
}

SchemaObjects::const_iterator FindEventTable(const SchemaObjects& objects)
{
    return std::find_if(objects.begin(), objects.end(),
                        [](const SchemaObject& object) { return object.Name == "PlantEvents"; });
}

// The part of a table's definition after its name. A migration leaves the name of the event table in quotes.
std::string ColumnsAndConstraints(const std::string& definition)
{
    return definition.substr(std::min(definition.find('('), definition.size()));
}

// A write-ahead log is a setting in two bytes of the file's header. They are read here since asking SQLite for the
// setting would create the log's files: https://www.sqlite.org/fileformat.html#file_format_version_numbers
bool UsesWriteAheadLog(sqlite3* db)
{
    sqlite3_file* file = nullptr;
    sqlite3_file_control(db, nullptr, SQLITE_FCNTL_FILE_POINTER, &file);
    std::array<char, 2> versions{};
    file->pMethods->xRead(file, versions.data(), 2, 18); // reading the schema reports a failing read
    const std::string log = std::string(sqlite3_db_filename(db, "main")) + "-wal";
    bool exists = false;
    WithPathErrors([&] { exists = std::filesystem::exists(PathOfText(log)); });
    return exists || Contains(versions, 2);
}

void CompareTables(sqlite3* db, const SchemaObjects& objects, sqlite3* journal, const SchemaObjects& expected,
                   SchemaComparison& result)
{
    for (const SchemaObject& table : expected)
    {
        if (table.Type != "table")
            continue;
        if (!Contains(objects, table))
        {
            result.Steps.push_back("create table " + table.Name);
            continue;
        }
        std::vector<std::string> columns = ReadColumns(db, table.Name);
        const std::vector<std::string> known = ReadColumns(journal, table.Name);
        for (const std::string& column : columns)
            if (!Contains(known, column))
                result.Reasons.push_back("The column " + QuotedExcerpt(column) + " of " + table.Name +
                                         " is not part of a journal.");
        for (const std::string& column : known)
            if (!Contains(columns, column) && !Contains(AddedColumns, ColumnOfTable(table.Name, column)))
                result.Reasons.push_back("The table " + table.Name + " has no column " + column + '.');
        result.Tables.emplace_back(table.Name, std::move(columns));
    }
}

// The steps after those that create tables.
void CompareColumnsAndIndexes(const SchemaObjects& objects, const SchemaObjects& expected, SchemaComparison& result)
{
    for (const auto& [table, column] : AddedColumns)
        if (result.HasTable(table) && !result.HasColumn(table, column))
            result.Steps.push_back("add column " + std::string(table) + '.' + std::string(column));
    const auto events = FindEventTable(objects);
    const bool rebuilt = events != objects.end() && events->Definition.find("'LST Trained'") == std::string::npos;
    if (rebuilt)
        result.Steps.emplace_back("rebuild table PlantEvents");
    else if (events != objects.end())
    {
        result.EventTable = events->Definition;
        result.EventTypesUnchecked =
            ColumnsAndConstraints(events->Definition) != ColumnsAndConstraints(FindEventTable(expected)->Definition);
    }
    for (const SchemaObject& index : expected)
        if (index.Type == "index" && (!Contains(objects, index) || (rebuilt && index.Table == "PlantEvents")))
            result.Steps.push_back("create index " + index.Name);
}

} // namespace

bool SchemaComparison::HasTable(std::string_view table) const
{
    return std::any_of(Tables.begin(), Tables.end(), [&](const auto& each) { return each.first == table; });
}

bool SchemaComparison::HasColumn(std::string_view table, std::string_view column) const
{
    return std::any_of(Tables.begin(), Tables.end(),
                       [&](const auto& each) { return each.first == table && Contains(each.second, column); });
}

SchemaComparison CompareSchema(sqlite3* db)
{
    SchemaComparison result;
    if (UsesWriteAheadLog(db))
    {
        result.Reasons.emplace_back("The file uses a write-ahead log; a journal never does.");
        return result;
    }
    PlantDatabase journal;
    std::string error;
    if (!journal.Open(":memory:", &error))
        Fail("creating a journal in memory for comparison", error);
    const SchemaObjects expected = ReadObjects(journal.NativeHandle());
    const SchemaObjects objects = ReadObjects(db);
    for (const SchemaObject& object : objects)
        if (!Contains(expected, object))
            result.Reasons.push_back("The " + object.Type + ' ' + QuotedExcerpt(object.Name) +
                                     " is not part of a journal.");
    CompareTables(db, objects, journal.NativeHandle(), expected, result);
    CompareColumnsAndIndexes(objects, expected, result);
    if (!result.Reasons.empty())
        result.Kind = PlantFileKind::Foreign;
    else if (objects.empty())
        result.Kind = PlantFileKind::Empty;
    else
        result.Kind = result.Steps.empty() ? PlantFileKind::Current : PlantFileKind::Older;
    return result;
}

void RequireJournal(PlantFileKind kind, const std::vector<std::string>& reasons)
{
    if (kind == PlantFileKind::Empty)
        Fail(ReadingSchema, "not a plantjournal file: it has no tables");
    if (kind == PlantFileKind::Foreign)
        Fail(ReadingSchema, "not a plantjournal file: " + reasons.front());
}

} // namespace plant_file
