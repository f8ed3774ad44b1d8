#include "inspect.h"

#include "access.h"
#include "plant_database.h"
#include "schema.h"

#include <algorithm>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

namespace plant_file
{

namespace
{

bool IsEventType(const std::string& name)
{
    return PlantEventTypeName(PlantEventTypeFromName(name)) == name;
}

// The event types that a newer version may have added: those in quotes in the table's definition, and those in rows.
std::set<std::string> UnknownEventTypes(sqlite3* db, const std::string& definition, InspectionExtent extent)
{
    std::set<std::string> types;
    std::istringstream pieces(definition);
    std::string piece;
    for (bool quoted = false; std::getline(pieces, piece, '\''); quoted = !quoted)
        if (quoted && !piece.empty() && !IsEventType(piece))
            types.insert(piece);
    if (extent == InspectionExtent::Schema)
        return types;
    ForEachRow(db, "reading PlantEvents", "SELECT DISTINCT EventType FROM PlantEvents;",
               [&](sqlite3_stmt* row)
               {
                   if (const std::string type = ColumnText(row, 0); !IsEventType(type))
                       types.insert(type);
               });
    return types;
}

void ReadRowsAndDates(sqlite3* db, const std::string& table, const std::vector<std::string>& columns,
                      PlantFileInspection& found)
{
    constexpr std::string_view suffix = "Date";
    std::string sql = "SELECT COUNT(1)"; // COUNT(*) would not end where the table's pages form a cycle
    for (const std::string& column : columns)
        if (column.size() > suffix.size() && column.compare(column.size() - suffix.size(), suffix.size(), suffix) == 0)
            sql.append(",MIN(NULLIF(").append(column).append(",'')),MAX(").append(column).append(")");
    sql += " FROM " + table + " NOT INDEXED;"; // an index may be readable where its table is not
    ForEachRow(db, "reading " + table, sql,
               [&](sqlite3_stmt* row)
               {
                   PlantFileTable& counted = found.Tables.emplace_back();
                   counted.Name = table;
                   counted.Rows = sqlite3_column_int64(row, 0);
                   for (int column = 1; column < sqlite3_column_count(row); ++column)
                   {
                       const std::string date = ColumnText(row, column);
                       if (!date.empty() && (found.FirstDate.empty() || date < found.FirstDate))
                           found.FirstDate = date;
                       found.LastDate = std::max(found.LastDate, date);
                   }
               });
}

PlantFileInspection InspectFile(const std::filesystem::path& file, InspectionExtent extent)
{
    try
    {
        const Connection connection(file, SQLITE_OPEN_READONLY);
        const ReadTransaction reading(connection.Handle(), ReadingSchema);
        return InspectConnection(connection.Handle(), extent);
    }
    catch (const Failure& failure)
    {
        const std::optional<PlantFileKind> kind = KindOfUnreadableFile(failure.Code);
        if (!kind)
            throw;
        PlantFileInspection found;
        found.Kind = *kind;
        if (*kind == PlantFileKind::Damaged)
            found.Reasons.push_back(failure.Step + ": " + failure.Reason + '.');
        return found;
    }
}

PlantFileResult Inspect(const std::string& path, InspectionExtent extent, PlantFileInspection& out)
{
    PlantFileInspection found;
    const auto inspect = [&]
    {
        const std::filesystem::path file = AbsolutePath(path);
        const std::int64_t bytes = FileSize(file);
        if (bytes > 0)
            found = InspectFile(file, extent);
        else if (bytes == 0)
            found.Kind = PlantFileKind::Empty;
        found.Bytes = std::max<std::int64_t>(bytes, 0);
    };
    PlantFileResult result = Attempt(path, inspect);
    out = std::move(found);
    return result;
}

} // namespace

std::optional<PlantFileKind> KindOfUnreadableFile(int code)
{
    switch (code)
    {
    case SQLITE_BUSY:
        return PlantFileKind::Locked;
    case SQLITE_READONLY:
        return PlantFileKind::Interrupted;
    case SQLITE_NOTADB:
        return PlantFileKind::NotADatabase;
    case SQLITE_CORRUPT:
    case SQLITE_ERROR:     // a format or a schema that this SQLite does not understand
    case SQLITE_INTERRUPT: // by the progress handler of Connection
        return PlantFileKind::Damaged;
    default:
        return std::nullopt;
    }
}

PlantFileInspection InspectConnection(sqlite3* db, InspectionExtent extent)
{
    PlantFileInspection found;
    SchemaComparison schema = CompareSchema(db);
    if (schema.Reasons.empty() && !schema.EventTable.empty())
        for (const std::string& type : UnknownEventTypes(db, schema.EventTable, extent))
            schema.Reasons.push_back("The event type " + QuotedExcerpt(type) + " is unknown to this version.");
    found.Kind = schema.Reasons.empty() ? schema.Kind : PlantFileKind::Foreign;
    found.Reasons = std::move(schema.Reasons);
    if (found.Kind == PlantFileKind::Older)
        found.Steps = std::move(schema.Steps);
    if (found.Kind != PlantFileKind::Older && found.Kind != PlantFileKind::Current)
        return found;
    found.EventTypesUnchecked = schema.EventTypesUnchecked;
    if (extent == InspectionExtent::Rows)
        for (const auto& [table, columns] : schema.Tables)
            ReadRowsAndDates(db, table, columns, found);
    return found;
}

} // namespace plant_file

PlantFileResult InspectPlantDatabase(const std::string& path, PlantFileInspection& out)
{
    return plant_file::Inspect(path, plant_file::InspectionExtent::Rows, out);
}

PlantFileResult InspectPlantSchema(const std::string& path, PlantFileInspection& out)
{
    return plant_file::Inspect(path, plant_file::InspectionExtent::Schema, out);
}
