#include "journal_table.h"

#include "access.h"
#include "plant.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <utility>

namespace plant_file
{

namespace
{

// The columns that migrations add, in the order of the schemas.
constexpr std::array<std::string_view, 5> LaterColumns = {"SeedDate", "FlipHeightCm", "FinalHeightCm", "Sex",
                                                          "SeedYield"};

constexpr const char* SchemaName = "sqlite_schema";

bool IsLater(const TableColumn& column)
{
    return std::find(LaterColumns.begin(), LaterColumns.end(), column.Name) != LaterColumns.end();
}

// A default as the schema has it: a number, or a text in quotes.
Value DefaultValue(const std::string& text)
{
    Value value;
    if (text.empty())
        return value;
    if (text.front() == '\'')
    {
        value.Class = StorageClass::Text;
        value.Text = text.substr(1, text.size() - 2);
        return value;
    }
    value.Class = StorageClass::Integer;
    value.Integer = std::stoll(text);
    return value;
}

template <typename Enum>
bool IsName(const std::string& text, Enum (*fromName)(const std::string&), const char* (*nameOf)(Enum))
{
    return nameOf(fromName(text)) == text;
}

bool IsSchemaType(const std::string& text)
{
    return text == "table" || text == "index"; // a journal has no views and triggers
}

// Whether a text can be in a column with this name. Most columns admit any text.
bool IsPossible(const std::string& table, const std::string& column, const std::string& text)
{
    if (column == "UUID" || column == "PlantUUID")
        return !text.empty();
    if (column == "Stage")
        return IsName(text, PlantStageFromName, PlantStageName);
    if (column == "Sex")
        return IsName(text, PlantSexFromName, PlantSexName);
    if (column == "EventType")
        return IsName(text, PlantEventTypeFromName, PlantEventTypeName);
    if (column == "Action")
        return IsName(text, PlantCareActionFromName, PlantCareActionName);
    if (column == "Type")
        return IsName(text, PlantJournalTypeFromName, PlantJournalTypeName);
    return table != SchemaName || column != "type" || IsSchemaType(text);
}

bool IsDateOrEmpty(const std::string& text)
{
    return text.empty() || (text.size() == 10 && text[4] == '-' && text[7] == '-');
}

bool FitsColumn(const TableColumn& column, const Value& value)
{
    const bool isNumber = value.Class == StorageClass::Integer || value.Class == StorageClass::Real;
    if (column.IsRowID || value.Class == StorageClass::Null)
        return value.Class == StorageClass::Null && (column.IsRowID || column.MayBeNull);
    return column.Class == StorageClass::Text ? value.IsText() : isNumber;
}

} // namespace

std::size_t JournalTable::IndexOf(const std::string& column) const
{
    const auto found =
        std::find_if(Columns.begin(), Columns.end(), [&](const TableColumn& each) { return each.Name == column; });
    return static_cast<std::size_t>(found - Columns.begin());
}

std::vector<JournalTable> ReadTables(sqlite3* journal)
{
    constexpr const char* step = "reading the schema of a new journal";
    std::vector<JournalTable> tables;
    ForEachRow(journal, step, "SELECT name FROM sqlite_master WHERE type='table' ORDER BY rowid;",
               [&](sqlite3_stmt* row) { tables.emplace_back().Name = ColumnText(row, 0); });
    for (JournalTable& table : tables)
        ForEachRow(journal, step, "PRAGMA table_info(" + table.Name + ");",
                   [&](sqlite3_stmt* row)
                   {
                       TableColumn column;
                       column.Name = ColumnText(row, 1);
                       const std::string type = ColumnText(row, 2);
                       if (type != "TEXT")
                           column.Class = type == "REAL" ? StorageClass::Real : StorageClass::Integer;
                       column.IsRowID = type == "INTEGER" && sqlite3_column_int(row, 5) != 0;
                       column.MayBeNull = sqlite3_column_int(row, 3) == 0;
                       column.Default = DefaultValue(ColumnText(row, 4));
                       table.Columns.push_back(std::move(column));
                   });
    return tables;
}

JournalTable SchemaTable()
{
    JournalTable table;
    table.Name = SchemaName;
    for (const char* name : {"type", "name", "tbl_name", "rootpage", "sql"})
        table.Columns.emplace_back().Name = name;
    table.Columns[3].Class = StorageClass::Integer;
    table.Columns[4].MayBeNull = true;
    return table;
}

// A file that was created with the first `known` of the later columns has the others at the end.
std::vector<RowForm> FormsOf(const JournalTable& table)
{
    std::vector<std::size_t> later;
    for (const std::string_view name : LaterColumns)
        if (const std::size_t at = table.IndexOf(std::string(name)); at < table.Columns.size())
            later.push_back(at);
    std::vector<RowForm> forms;
    for (std::size_t known = later.size() + 1; known-- > 0;)
    {
        const auto added = later.begin() + static_cast<std::ptrdiff_t>(known);
        RowForm form;
        for (std::size_t at = 0; at < table.Columns.size(); ++at)
            if (std::find(added, later.end(), at) == later.end())
                form.Columns.push_back(at);
        form.Least = form.Columns.size();
        form.Columns.insert(form.Columns.end(), added, later.end());
        forms.push_back(std::move(form));
    }
    return forms;
}

std::optional<RowForm> FormOfDefinition(const JournalTable& table, const std::string& definition)
{
    constexpr const char* step = "reading a definition";
    constexpr std::string_view beginning = "CREATE TABLE ";
    if (definition.compare(0, beginning.size(), beginning) != 0) // no other statement may run
        return std::nullopt;
    sqlite3* opened = nullptr;
    const int result = sqlite3_open(":memory:", &opened);
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> scratch(opened, sqlite3_close_v2);
    if (result != SQLITE_OK)
        FailWithErrorOf(opened, step);
    // The definition may be damaged, or hostile: no statement of it may run for long.
    sqlite3_progress_handler(
        opened, 100'000, [](void*) { return 1; }, nullptr);
    RowForm form;
    try
    {
        ForEachRow(opened, step, definition, [](sqlite3_stmt*) {});
        ForEachRow(opened, step, "PRAGMA table_info(" + table.Name + ");",
                   [&](sqlite3_stmt* row) { form.Columns.push_back(table.IndexOf(ColumnText(row, 1))); });
    }
    catch (const Failure& failure)
    {
        if (failure.Code == SQLITE_NOMEM)
            throw;
        return std::nullopt;
    }
    form.Least = form.Columns.size();
    const auto isKnown = [&](std::size_t column) { return column < table.Columns.size(); };
    const std::size_t leastOfAll = FormsOf(table).back().Least;
    if (!std::all_of(form.Columns.begin(), form.Columns.end(), isKnown) || form.Least < leastOfAll)
        return std::nullopt;
    while (IsLater(table.Columns[form.Columns[form.Least - 1]])) // there are others, too
        --form.Least;
    return form;
}

bool Fits(const JournalTable& table, const RowForm& form, const Values& values)
{
    if (values.size() < form.Least || values.size() > form.Columns.size())
        return false;
    for (std::size_t i = 0; i < values.size(); ++i)
        if (!FitsColumn(table.Columns[form.Columns[i]], values[i]))
            return false;
    return true;
}

bool FitsOnly(const JournalTable& table, const RowForm& form, const Values& values)
{
    if (!Fits(table, form, values))
        return false;
    for (std::size_t i = 0; i < values.size(); ++i)
        if (values[i].IsText() && !IsPossible(table.Name, table.Columns[form.Columns[i]].Name, values[i].Text))
            return false;
    return true;
}

int CountDates(const JournalTable& table, const RowForm& form, const Values& values)
{
    int dates = 0;
    for (std::size_t i = 0; i < values.size(); ++i)
        if (IsDateOrEmpty(values[i].Text))
        {
            const std::string& name = table.Columns[form.Columns[i]].Name;
            dates += name.size() > 4 && name.compare(name.size() - 4, 4, "Date") == 0 ? 1 : 0;
        }
    return dates;
}

Values InOrder(const JournalTable& table, const RowForm& form, const Values& values)
{
    Values ordered;
    for (const TableColumn& column : table.Columns)
        ordered.push_back(column.Default);
    for (std::size_t i = 0; i < values.size(); ++i)
        ordered[form.Columns[i]] = values[i];
    return ordered;
}

} // namespace plant_file
