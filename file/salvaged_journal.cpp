#include "salvaged_journal.h"

#include "plant_database.h"

#include <algorithm>

namespace plant_file
{

namespace
{

constexpr const char* Writing = "writing the new journal";
constexpr const char* DamagedUUID = "A UUID has a zero byte.";

// The row ID is parameter 1, and the other values follow in the order of the columns.
void BindRow(sqlite3* db, sqlite3_stmt* statement, const JournalTable& table, std::int64_t rowID, const Values& values)
{
    int result = sqlite3_bind_int64(statement, 1, rowID);
    for (int i = 0; i < static_cast<int>(values.size()) && result == SQLITE_OK; ++i)
    {
        const Value& value = values[static_cast<std::size_t>(i)];
        const int parameter = i + 2;
        if (table.Columns[static_cast<std::size_t>(i)].IsRowID)
            result = sqlite3_bind_int64(statement, parameter, rowID);
        else if (value.Class == StorageClass::Integer)
            result = sqlite3_bind_int64(statement, parameter, value.Integer);
        else if (value.Class == StorageClass::Real)
            result = sqlite3_bind_double(statement, parameter, value.Real);
        else if (value.Class == StorageClass::Text)
            result = sqlite3_bind_text64(statement, parameter, value.Text.data(), value.Text.size(), SQLITE_STATIC,
                                         SQLITE_UTF8);
        else
            result = sqlite3_bind_null(statement, parameter);
    }
    if (result != SQLITE_OK)
        FailWithErrorOf(db, Writing);
}

std::string InsertStatement(const JournalTable& table)
{
    std::string columns = "rowid";
    std::string parameters = "?1";
    for (std::size_t i = 0; i < table.Columns.size(); ++i)
        if (!table.Columns[i].IsRowID)
        {
            columns += ',' + table.Columns[i].Name;
            parameters += ",?" + std::to_string(i + 2);
        }
    return "INSERT INTO " + table.Name + '(' + columns + ") VALUES(" + parameters + ");";
}

// Whether the row with this row ID exists, and whether all its values are the same.
std::string CompareStatement(const JournalTable& table)
{
    std::string same = "1";
    for (std::size_t i = 0; i < table.Columns.size(); ++i)
        same += " AND " + table.Columns[i].Name + " IS ?" + std::to_string(i + 2);
    return "SELECT " + same + " FROM " + table.Name + " WHERE rowid=?1;";
}

// The library finds no row by such a UUID: it reads a text only up to a zero byte.
bool HasZeroByte(const Values& values, std::size_t column)
{
    return column < values.size() && values[column].Text.find('\0') != std::string::npos;
}

// The statements of a journal in memory, in the order of a new file.
void CreateSchema(sqlite3* db)
{
    PlantDatabase pattern;
    std::string error;
    if (!pattern.Open(":memory:", &error))
        Fail("creating a journal in memory", error);
    ForEachRow(pattern.NativeHandle(), Writing, "SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY rowid;",
               [&](sqlite3_stmt* row) { RunSQL(db, Writing, ColumnText(row, 0).c_str()); });
}

// Tables with a plant, which their rows name by its UUID.
constexpr const char* RecordsWithPlants =
    "SELECT PlantUUID FROM PlantEvents UNION SELECT PlantUUID FROM PlantCareEntries "
    "UNION SELECT PlantUUID FROM HarvestRecords UNION SELECT PlantUUID FROM PlantPhotos "
    "UNION SELECT PlantUUID FROM PlantHealthObservations UNION SELECT PlantUUID FROM PlantJournalEntries";

} // namespace

SalvagedJournal::SalvagedJournal(const std::filesystem::path& file, const std::vector<JournalTable>& tables)
    : Tables(tables), TableCounts(tables.size()), Journal(file, SQLITE_OPEN_READWRITE)
{
    sqlite3_progress_handler(Journal.Handle(), 0, nullptr, nullptr); // it limits the work on damaged files
    // An unfinished file is removed, and a finished one synced: neither needs SQLite's journal or syncs.
    Run("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA foreign_keys=OFF; BEGIN;");
    CreateSchema(Journal.Handle());
    Run("CREATE TEMP TABLE Lost(Number,ID,UUID,PRIMARY KEY(Number,ID)) WITHOUT ROWID;"
        "CREATE TEMP TABLE Refused(Number,ID,PRIMARY KEY(Number,ID)) WITHOUT ROWID;");
    for (const JournalTable& table : Tables)
    {
        Inserts.push_back(Prepare(InsertStatement(table)));
        LostInserts.push_back(Prepare(
            "INSERT INTO Lost SELECT ?1,?2,?3 WHERE NOT EXISTS(SELECT 1 FROM " + table.Name +
            " WHERE rowid=?2) ON CONFLICT(Number,ID) DO UPDATE SET UUID=excluded.UUID WHERE excluded.UUID<>'';"));
    }
}

SalvagedJournal::RowStatement SalvagedJournal::Prepare(const std::string& sql)
{
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(Journal.Handle(), sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK)
        FailWithErrorOf(Journal.Handle(), Writing);
    return {prepared, sqlite3_finalize};
}

void SalvagedJournal::Run(const char* sql)
{
    RunSQL(Journal.Handle(), Writing, sql);
}

std::int64_t SalvagedJournal::Number(const std::string& sql)
{
    std::int64_t number = 0;
    ForEachRow(Journal.Handle(), Writing, sql, [&](sqlite3_stmt* row) { number = sqlite3_column_int64(row, 0); });
    return number;
}

void SalvagedJournal::Add(std::size_t table, std::int64_t rowID, const Values& values)
{
    const std::size_t uuid = Tables[table].IndexOf("UUID");
    const std::size_t plant = Tables[table].IndexOf("PlantUUID");
    const bool isNamed = !HasZeroByte(values, uuid) && !HasZeroByte(values, plant);
    std::string reason = DamagedUUID;
    if (isNamed)
        reason = Insert(table, rowID, values);
    if (reason.empty())
        return;
    ++TableCounts[table].Refused[reason];
    Run(("INSERT OR IGNORE INTO Refused VALUES(" + std::to_string(table) + ',' + std::to_string(rowID) + ");").c_str());
    if (isNamed && uuid < values.size())
        AddLost(table, rowID, values[uuid].Text);
}

// Returns why the table does not allow the row; empty where it has the row now.
std::string SalvagedJournal::Insert(std::size_t table, std::int64_t rowID, const Values& values)
{
    sqlite3* db = Journal.Handle();
    sqlite3_stmt* insert = Inserts[table].get();
    BindRow(db, insert, Tables[table], rowID, values);
    const int result = sqlite3_step(insert);
    std::string reason;
    if (result == SQLITE_CONSTRAINT)
        reason = ReasonOfRefusal(table, rowID, values);
    else if (result != SQLITE_DONE)
        FailWithErrorOf(db, Writing);
    else
        ++TableCounts[table].Added;
    sqlite3_reset(insert);
    return reason;
}

// Empty where the table has the same row already.
std::string SalvagedJournal::ReasonOfRefusal(std::size_t table, std::int64_t rowID, const Values& values)
{
    sqlite3* db = Journal.Handle();
    const int code = sqlite3_extended_errcode(db);
    const std::string message = sqlite3_errmsg(db);
    const RowStatement compare = Prepare(CompareStatement(Tables[table]));
    BindRow(db, compare.get(), Tables[table], rowID, values);
    const int result = sqlite3_step(compare.get());
    if (result == SQLITE_ROW)
        return sqlite3_column_int(compare.get(), 0) != 0 ? "" : "A different row with the same row ID was kept.";
    if (result != SQLITE_DONE)
        FailWithErrorOf(db, Writing);
    if (code == SQLITE_CONSTRAINT_CHECK)
        return "A value is not one of those that its column allows.";
    if (code == SQLITE_CONSTRAINT_NOTNULL)
        return "A value is missing.";
    return "Another row has the same " + message.substr(message.rfind('.') + 1) + '.';
}

void SalvagedJournal::AddLost(std::size_t table, std::int64_t rowID, const std::string& uuid)
{
    sqlite3_stmt* insert = LostInserts[table].get();
    if (sqlite3_bind_int64(insert, 1, static_cast<std::int64_t>(table)) != SQLITE_OK ||
        sqlite3_bind_int64(insert, 2, rowID) != SQLITE_OK ||
        sqlite3_bind_text64(insert, 3, uuid.data(), uuid.size(), SQLITE_STATIC, SQLITE_UTF8) != SQLITE_OK ||
        sqlite3_step(insert) != SQLITE_DONE)
        FailWithErrorOf(Journal.Handle(), Writing);
    sqlite3_reset(insert);
}

void SalvagedJournal::AddDamaged(std::size_t table, std::int64_t rows, bool lostRowsAreKnown)
{
    TableCounts[table].IsDamaged = true;
    TableCounts[table].Damaged = rows;
    TableCounts[table].LostRowsAreKnown = lostRowsAreKnown;
}

std::size_t SalvagedJournal::NumberOf(const std::string& name) const
{
    const auto found =
        std::find_if(Tables.begin(), Tables.end(), [&](const JournalTable& table) { return table.Name == name; });
    return static_cast<std::size_t>(found - Tables.begin());
}

void SalvagedJournal::FindLostByLinks()
{
    const std::string plants = std::to_string(NumberOf("Plants"));
    const std::string events = std::to_string(NumberOf("PlantEvents"));
    Run(("INSERT OR IGNORE INTO Lost SELECT " + plants +
         ",MotherPlantID,'' FROM Plants WHERE MotherPlantID NOT IN (SELECT ID FROM Plants);"
         "INSERT OR IGNORE INTO Lost SELECT " +
         events +
         ",TimelineEventID,'' FROM (SELECT TimelineEventID FROM PlantCareEntries UNION SELECT TimelineEventID FROM "
         "HarvestRecords) WHERE TimelineEventID NOT IN (SELECT ID FROM PlantEvents);")
            .c_str());
}

// A plant whose row ID is known gets it, so that the links of its clones are kept. The others get new ones, after all
// links to unknown rows are cleared: no link may lead to them by chance.
void SalvagedJournal::AddPlaceholders(PlantSalvageReport& report)
{
    const std::string plants = std::to_string(NumberOf("Plants"));
    const std::string name = "'Lost plant '||substr(UUID,1,8)";
    const std::string countPlants = "SELECT count(*) FROM Plants;";
    const std::int64_t before = Number(countPlants);
    Run(("INSERT OR IGNORE INTO Plants(ID,UUID,Name) SELECT ID,UUID," + name + " FROM Lost WHERE Number=" + plants +
         " AND UUID<>'' AND (UUID IN (" + RecordsWithPlants + ") OR ID IN (SELECT MotherPlantID FROM Plants));")
            .c_str());
    ClearLinks(report);
    Run((std::string("INSERT INTO Plants(UUID,Name) SELECT UUID,") + name + " FROM (SELECT PlantUUID AS UUID FROM (" +
         RecordsWithPlants + ")) WHERE UUID NOT IN (SELECT UUID FROM Plants);")
            .c_str());
    report.PlaceholderPlants = Number(countPlants) - before;
}

void SalvagedJournal::ClearLinks(PlantSalvageReport& report)
{
    for (const char* sql :
         {"UPDATE Plants SET MotherPlantID=NULL WHERE MotherPlantID NOT IN (SELECT ID FROM Plants);",
          "UPDATE PlantCareEntries SET TimelineEventID=NULL WHERE TimelineEventID IS NOT NULL AND TimelineEventID NOT "
          "IN (SELECT ID FROM PlantEvents);", // NULL is not in a table without rows
          "UPDATE HarvestRecords SET TimelineEventID=NULL WHERE TimelineEventID IS NOT NULL AND TimelineEventID NOT IN "
          "(SELECT ID FROM PlantEvents);"})
    {
        Run(sql);
        report.ClearedLinks += sqlite3_changes(Journal.Handle());
    }
}

std::int64_t SalvagedJournal::LostRows(std::size_t table)
{
    const std::string lost = "SELECT count(*) FROM Lost WHERE Number=" + std::to_string(table) +
                             " AND NOT EXISTS(SELECT 1 FROM Refused r WHERE r.Number=Lost.Number AND r.ID=Lost.ID)";
    const std::string& name = Tables[table].Name;
    if (name == "Plants")
    {
        // A plant whose UUID alone is known may be one that was refused for its UUID, or whose row ID alone is known.
        const auto refused = TableCounts[table].Refused.find(DamagedUUID);
        const std::int64_t unnamed =
            Number(std::string("SELECT count(*) FROM (") + RecordsWithPlants +
                   ") WHERE PlantUUID NOT IN (SELECT UUID FROM Plants) AND PlantUUID NOT IN (SELECT UUID FROM Lost);") -
            (refused != TableCounts[table].Refused.end() ? refused->second : 0);
        return Number(lost + " AND UUID<>'';") + std::max(Number(lost + " AND UUID='';"), unnamed);
    }
    std::int64_t named = 0;
    if (name == "Strains" && TableCounts[table].IsDamaged)
        named = Number("SELECT count(DISTINCT Strain) FROM Plants WHERE Strain<>'' AND Strain NOT IN "
                       "(SELECT Name FROM Strains);");
    return std::max(Number(lost + ';'), named);
}

void SalvagedJournal::Finish(PlantSalvageReport& report)
{
    FindLostByLinks();
    for (std::size_t table = 0; table < Tables.size(); ++table)
    {
        const Counts& counts = TableCounts[table];
        PlantSalvageTable result;
        result.Name = Tables[table].Name;
        result.RowsRead = counts.Added;
        result.IsWhole = !counts.IsDamaged;
        const std::int64_t lost = std::max(LostRows(table), counts.LostRowsAreKnown ? 0 : counts.Damaged);
        if (lost != 0)
            result.Losses.push_back({counts.IsDamaged ? "They were damaged, or on damaged pages."
                                                      : "Other rows refer to them, but they are not in the file.",
                                     lost});
        for (const auto& [reason, rows] : counts.Refused)
            result.Losses.push_back({reason, rows});
        for (const PlantSalvageLoss& loss : result.Losses)
            result.RowsMissing += loss.Rows;
        report.Tables.push_back(std::move(result));
    }
    AddPlaceholders(report);
    Run("COMMIT;");
}

} // namespace plant_file
