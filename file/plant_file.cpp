#include "plant_file.h"

#include "plant_database.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <new>
#include <set>
#include <sstream>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>

#include <dirent.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

// ---------------------------------------------------------------------------------------------------------------------
// Names

namespace
{

constexpr const char* FileKindNames[] = {"Missing", "Empty",        "Current", "Older", "Interrupted",
                                         "Foreign", "NotADatabase", "Damaged", "Locked"};
constexpr const char* FindingKindNames[] = {"Damage",       "ForeignKey",      "UnknownName",   "Severity",
                                            "LineageCycle", "MissingMother",   "MissingStrain", "MissingEvent",
                                            "EventDiffers", "MissingPhotoFile"};

template <typename Enum, std::size_t Count> const char* NameOf(const char* const (&names)[Count], Enum value)
{
    const auto number = static_cast<std::size_t>(value); // a negative one becomes larger than any
    return names[number < Count ? number : 0];
}

} // namespace

const char* PlantFileKindName(PlantFileKind kind)
{
    return NameOf(FileKindNames, kind);
}

const char* PlantFindingKindName(PlantFindingKind kind)
{
    return NameOf(FindingKindNames, kind);
}

// ---------------------------------------------------------------------------------------------------------------------
// Failures, files and statements

namespace
{

// Why a call ends early. It never leaves this file: the functions of the header make it their result.
struct Failure
{
    int Code; // SQLite's
    std::string Step;
    std::string Reason;
};

[[noreturn]] void Fail(const std::string& step, const std::string& reason)
{
    throw Failure{SQLITE_OK, step, reason};
}

[[noreturn]] void Fail(sqlite3* db, const std::string& step)
{
    const int code = sqlite3_errcode(db);
    if (code == SQLITE_READONLY) // nothing here writes but SQLite, to take back what a dead writer left behind
        throw Failure{code, step, "its last writer died amid a write, which the next opening takes back"};
    if (code == SQLITE_INTERRUPT) // by Connection, out of patience
        throw Failure{code, step, "it takes far longer than a sound file of its size"};
    throw Failure{code, step, sqlite3_errmsg(db)};
}

// The system's calls: they leave their reason in errno.
void Require(bool done, const char* step)
{
    if (!done)
        Fail(step, std::generic_category().message(errno));
}

// Makes a failure of <filesystem> one of ours. No call-back runs in it: what that throws is its own.
void WithFiles(const std::function<void()>& work)
{
    std::error_code error;
    try
    {
        return work();
    }
    catch (const std::filesystem::filesystem_error& failure)
    {
        error = failure.code();
    }
    Fail("finding it", error.message());
}

PlantFileResult Attempt(const std::string& file, const std::function<void()>& work)
{
    PlantFileResult result;
    try
    {
        work();
    }
    catch (const Failure& failure)
    {
        result.Error = file + ": " + failure.Step + ": " + failure.Reason;
    }
    return result;
}

// An absolute path can be no URI and nothing else that has a meaning to SQLite.
std::filesystem::path FileAt(const std::string& path)
{
    if (path.empty() || path.find('\0') != std::string::npos)
        Fail("finding it", "a path that is empty or holds a zero byte names no file");
    return std::filesystem::absolute(std::filesystem::path(path));
}

constexpr std::int64_t NoFile = -1;

std::int64_t SizeOf(const std::filesystem::path& file)
{
    const std::filesystem::file_status status = std::filesystem::status(file);
    if (!std::filesystem::exists(status))
        return NoFile;
    if (!std::filesystem::is_regular_file(status)) // to open a pipe would be to wait for its other end
        Fail("finding it", "it is no regular file");
    return static_cast<std::int64_t>(std::filesystem::file_size(file));
}

struct Closer
{
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    void operator()(sqlite3_backup* backup) const { sqlite3_backup_finish(backup); }
    void operator()(DIR* directory) const { closedir(directory); }
};

void Execute(sqlite3* db, const std::string& step, const char* sql)
{
    if (sqlite3_exec(db, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        Fail(db, step);
}

template <typename Read> void ForEach(sqlite3* db, const std::string& step, const std::string& sql, const Read& read)
{
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &raw, nullptr) != SQLITE_OK)
        Fail(db, step);
    const std::unique_ptr<sqlite3_stmt, Closer> statement(raw);
    int result = SQLITE_OK;
    while ((result = sqlite3_step(raw)) == SQLITE_ROW)
        read(raw);
    if (result != SQLITE_DONE)
        Fail(db, step);
}

// A text whole, beyond a zero byte, too: events were composed of whole texts.
std::string Text(sqlite3_stmt* row, int column)
{
    const unsigned char* text = sqlite3_column_text(row, column);
    if (text != nullptr)
        return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(sqlite3_column_bytes(row, column))};
    if (sqlite3_errcode(sqlite3_db_handle(row)) == SQLITE_NOMEM) // otherwise it is a NULL
        throw std::bad_alloc();
    return {};
}

// A stored text within a sentence: on one line and of bounded length.
std::string Quoted(std::string text)
{
    constexpr std::size_t enough = 80;
    if (text.size() > enough)
    {
        std::size_t end = enough;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) // amid a character
            --end;
        text.resize(end);
        text += "...";
    }
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, '?');
    return '"' + text + '"';
}

// A connection to a file that is there. Nobody here opens the file but SQLite: closing it would drop the locks that
// other connections of the program hold on it, https://www.sqlite.org/howtocorrupt.html section 2.2
struct Connection
{
    sqlite3* DB = nullptr;
    std::int64_t Patience = 0;

    Connection(const std::filesystem::path& file, int flags) : Connection()
    {
        std::int64_t bytes = 0;
        WithFiles([&] { bytes = SizeOf(file); });
        if (bytes == NoFile)
            Fail("finding it", "there is no such file");
        if (sqlite3_open_v2(file.c_str(), &DB, flags, nullptr) != SQLITE_OK)
            Fail(DB, "opening");
        sqlite3_busy_timeout(DB, 2500);
        // Some twenty times what a sound file takes, but not endless: the pages of a damaged one may lead in circles.
        Patience = 10'000 + bytes / 100;
        sqlite3_progress_handler(
            DB, 1000, [](void* connection) { return --static_cast<Connection*>(connection)->Patience < 0 ? 1 : 0; },
            this);
        // https://www.sqlite.org/security.html
        Execute(DB, "opening", "PRAGMA trusted_schema=OFF; PRAGMA cell_size_check=ON;");
    }
    ~Connection() { sqlite3_close_v2(DB); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

  private:
    Connection() = default; // once this is done, the destructor runs even where the rest fails
};

// ---------------------------------------------------------------------------------------------------------------------
// What a file is

// All that a file holds but rows, as SQLite lists it.
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

constexpr const char* ReadingSchema = "reading the schema";

// The columns that opening adds where they are missing.
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

std::vector<SchemaObject> Objects(sqlite3* db)
{
    std::vector<SchemaObject> objects;
    ForEach(db, ReadingSchema,
            "SELECT CASE WHEN type='table' AND rootpage=0 THEN 'virtual table' ELSE type END,name,tbl_name,sql "
            "FROM sqlite_master WHERE name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY rowid;",
            [&](sqlite3_stmt* row) {
                objects.push_back({Text(row, 0), Text(row, 1), Text(row, 2), Text(row, 3)});
            });
    return objects;
}

std::vector<std::string> Columns(sqlite3* db, const std::string& table)
{
    std::vector<std::string> columns;
    ForEach(db, ReadingSchema, "PRAGMA table_info(" + table + ");",
            [&](sqlite3_stmt* row) { columns.push_back(Text(row, 1)); });
    return columns;
}

bool IsEventType(const std::string& name)
{
    return PlantEventTypeName(PlantEventTypeFromName(name)) == name;
}

// A write-ahead log is a setting that the file keeps, in two bytes of its header, and no journal of ours has it. Asking
// SQLite about it would make the log's files: https://www.sqlite.org/fileformat.html#file_format_version_numbers
bool KeepsWriteAheadLog(sqlite3* db)
{
    sqlite3_file* file = nullptr;
    sqlite3_file_control(db, nullptr, SQLITE_FCNTL_FILE_POINTER, &file);
    std::array<char, 2> versions{};
    file->pMethods->xRead(file, versions.data(), 2, 18); // what cannot be read will be missed soon enough
    const std::filesystem::path log = std::string(sqlite3_db_filename(db, "main")) + "-wal";
    return Contains(versions, 2) || std::filesystem::exists(log);
}

// A file held against a new journal.
struct Comparison
{
    PlantFileKind Kind = PlantFileKind::Foreign; // or Empty, Current, Older
    std::vector<std::string> Steps;
    std::vector<std::string> Reasons;
    std::vector<std::pair<std::string, std::vector<std::string>>> Tables; // ours that it has, with their columns
    std::string EventTable;                                               // its definition, where opening leaves it
    bool EventTypesUnchecked = false; // where that definition differs from a new journal's

    bool HasTable(std::string_view table) const
    {
        return std::any_of(Tables.begin(), Tables.end(), [&](const auto& each) { return each.first == table; });
    }
    bool HasColumn(std::string_view table, std::string_view column) const
    {
        return std::any_of(Tables.begin(), Tables.end(),
                           [&](const auto& each) { return each.first == table && Contains(each.second, column); });
    }
};

void CompareTables(sqlite3* db, const std::vector<SchemaObject>& theirs, sqlite3* journal,
                   const std::vector<SchemaObject>& ours, Comparison& result)
{
    for (const SchemaObject& table : ours)
    {
        if (table.Type != "table")
            continue;
        if (!Contains(theirs, table))
        {
            result.Steps.push_back("create table " + table.Name);
            continue;
        }
        std::vector<std::string> columns = Columns(db, table.Name);
        const std::vector<std::string> known = Columns(journal, table.Name);
        for (const std::string& column : columns)
            if (!Contains(known, column))
                result.Reasons.push_back("The column " + Quoted(column) + " of " + table.Name + " is not ours.");
        for (const std::string& column : known)
            if (!Contains(columns, column) && !Contains(AddedColumns, ColumnOfTable(table.Name, column)))
                result.Reasons.push_back("The table " + table.Name + " has no column " + column + '.');
        result.Tables.emplace_back(table.Name, std::move(columns));
    }
}

// A table's columns and constraints. Opening leaves the table's name in quotes where it rebuilt the table.
std::string ColumnsAndConstraints(const std::string& definition)
{
    return definition.substr(std::min(definition.find('('), definition.size()));
}

// Begins the transaction in which the file is read.
Comparison Compare(sqlite3* db)
{
    Comparison result;
    if (KeepsWriteAheadLog(db))
    {
        result.Reasons.emplace_back("The file keeps a write-ahead log, which no journal does.");
        return result;
    }
    PlantDatabase journal;
    std::string error;
    if (!journal.Open(":memory:", &error))
        Fail("making a journal to compare it with", error);
    const std::vector<SchemaObject> ours = Objects(journal.NativeHandle());

    Execute(db, ReadingSchema, "BEGIN;");
    const std::vector<SchemaObject> theirs = Objects(db);
    for (const SchemaObject& object : theirs)
        if (!Contains(ours, object))
            result.Reasons.push_back("The " + object.Type + ' ' + Quoted(object.Name) + " is not ours.");

    // What opening does, in its order.
    CompareTables(db, theirs, journal.NativeHandle(), ours, result);
    for (const auto& [table, column] : AddedColumns)
        if (result.HasTable(table) && !result.HasColumn(table, column))
            result.Steps.push_back("add column " + std::string(table) + '.' + std::string(column));
    const auto events = std::find_if(theirs.begin(), theirs.end(),
                                     [](const SchemaObject& object) { return object.Name == "PlantEvents"; });
    const bool rebuilt = events != theirs.end() && events->Definition.find("'LST Trained'") == std::string::npos;
    if (rebuilt)
        result.Steps.emplace_back("rebuild table PlantEvents");
    else if (events != theirs.end())
    {
        const auto checked = std::find_if(ours.begin(), ours.end(),
                                          [](const SchemaObject& object) { return object.Name == "PlantEvents"; });
        result.EventTable = events->Definition;
        result.EventTypesUnchecked =
            ColumnsAndConstraints(events->Definition) != ColumnsAndConstraints(checked->Definition);
    }
    for (const SchemaObject& index : ours)
        if (index.Type == "index" && (!Contains(theirs, index) || (rebuilt && index.Table == "PlantEvents")))
            result.Steps.push_back("create index " + index.Name);

    if (result.Reasons.empty())
        result.Kind = theirs.empty()         ? PlantFileKind::Empty
                      : result.Steps.empty() ? PlantFileKind::Current
                                             : PlantFileKind::Older;
    return result;
}

// What an inspection reads.
enum class Extent : std::int32_t
{
    Schema,
    Rows // and the schema
};

// The event types in a definition's list and in the rows that this version does not know, as a newer one may have them.
std::set<std::string> UnknownEventTypes(sqlite3* db, const std::string& definition, Extent extent)
{
    std::set<std::string> types;
    std::istringstream pieces(definition);
    std::string piece;
    for (bool quoted = false; std::getline(pieces, piece, '\''); quoted = !quoted)
        if (quoted && !piece.empty() && !IsEventType(piece))
            types.insert(piece);
    if (extent == Extent::Schema)
        return types;
    ForEach(db, "reading PlantEvents", "SELECT DISTINCT EventType FROM PlantEvents;",
            [&](sqlite3_stmt* row)
            {
                if (const std::string type = Text(row, 0); !IsEventType(type))
                    types.insert(type);
            });
    return types;
}

void Count(sqlite3* db, const std::string& table, const std::vector<std::string>& columns, PlantFileInspection& found)
{
    constexpr std::string_view suffix = "Date";
    std::string sql = "SELECT COUNT(1)"; // COUNT(*) would run through pages in circles without looking up
    for (const std::string& column : columns)
        if (column.size() > suffix.size() && column.compare(column.size() - suffix.size(), suffix.size(), suffix) == 0)
            sql.append(",MIN(NULLIF(").append(column).append(",'')),MAX(").append(column).append(")");
    sql += " FROM " + table + " NOT INDEXED;"; // an index may be whole where its table is not
    ForEach(db, "reading " + table, sql,
            [&](sqlite3_stmt* row)
            {
                PlantFileTable& counted = found.Tables.emplace_back();
                counted.Name = table;
                counted.Rows = sqlite3_column_int64(row, 0);
                for (int column = 1; column < sqlite3_column_count(row); ++column)
                {
                    const std::string date = Text(row, column);
                    if (!date.empty() && (found.FirstDate.empty() || date < found.FirstDate))
                        found.FirstDate = date;
                    found.LastDate = std::max(found.LastDate, date);
                }
            });
}

void Look(sqlite3* db, Extent extent, PlantFileInspection& found)
{
    Comparison schema = Compare(db);
    if (schema.Reasons.empty() && !schema.EventTable.empty())
        for (const std::string& type : UnknownEventTypes(db, schema.EventTable, extent))
            schema.Reasons.push_back("The event type " + Quoted(type) + " is not ours.");
    found.Kind = schema.Reasons.empty() ? schema.Kind : PlantFileKind::Foreign;
    found.Reasons = std::move(schema.Reasons);
    if (found.Kind == PlantFileKind::Older)
        found.Steps = std::move(schema.Steps);
    if (found.Kind != PlantFileKind::Older && found.Kind != PlantFileKind::Current)
        return;
    found.EventTypesUnchecked = schema.EventTypesUnchecked;
    if (extent == Extent::Rows)
        for (const auto& [table, columns] : schema.Tables)
            Count(db, table, columns, found);
}

// What a file is whose reading failed, as the handler of that knows it.
PlantFileKind KindOf(const Failure& failure)
{
    switch (failure.Code)
    {
    case SQLITE_BUSY:
        return PlantFileKind::Locked;
    case SQLITE_READONLY:
        return PlantFileKind::Interrupted;
    case SQLITE_NOTADB:
        return PlantFileKind::NotADatabase;
    case SQLITE_CORRUPT:
    case SQLITE_ERROR:     // a format or a schema that this SQLite does not understand
    case SQLITE_INTERRUPT: // out of patience
        return PlantFileKind::Damaged;
    default:
        throw;
    }
}

PlantFileResult Inspect(const std::string& path, Extent extent, PlantFileInspection& out)
{
    PlantFileInspection found;
    const auto inspect = [&]
    {
        const std::filesystem::path file = FileAt(path);
        const std::int64_t bytes = SizeOf(file);
        try
        {
            if (bytes > 0)
                Look(Connection(file, SQLITE_OPEN_READONLY).DB, extent, found);
            else if (bytes == 0)
                found.Kind = PlantFileKind::Empty;
        }
        catch (const Failure& failure)
        {
            found = {};
            found.Kind = KindOf(failure);
            if (found.Kind == PlantFileKind::Damaged)
                found.Reasons.push_back(failure.Step + ": " + failure.Reason + '.');
        }
        found.Bytes = std::max<std::int64_t>(bytes, 0);
    };
    PlantFileResult result = Attempt(path, [&] { WithFiles(inspect); });
    out = result ? std::move(found) : PlantFileInspection();
    return result;
}

} // namespace

PlantFileResult InspectPlantDatabase(const std::string& path, PlantFileInspection& out)
{
    return Inspect(path, Extent::Rows, out);
}

PlantFileResult InspectPlantSchema(const std::string& path, PlantFileInspection& out)
{
    return Inspect(path, Extent::Schema, out);
}

// ---------------------------------------------------------------------------------------------------------------------
// What is wrong in a journal

namespace
{

void RequireJournal(PlantFileKind kind, const std::vector<std::string>& reasons)
{
    if (kind == PlantFileKind::Empty)
        Fail(ReadingSchema, "it is no journal, it has no table");
    if (kind == PlantFileKind::Foreign)
        Fail(ReadingSchema, "it is no journal of ours: " + reasons.front());
}

void Find(std::vector<PlantFileFinding>& findings, PlantFindingKind kind, const std::string& table, std::int64_t id,
          const std::string& description)
{
    findings.push_back({kind, table, id, description});
}

// SQLite's check of the whole file.
void FindDamage(sqlite3* db, std::vector<PlantFileFinding>& findings)
{
    constexpr const char* step = "checking the file";
    ForEach(db, step, "PRAGMA integrity_check;",
            [&](sqlite3_stmt* row)
            {
                std::istringstream lines(Text(row, 0));
                for (std::string line; std::getline(lines, line);)
                {
                    if (line.find("unable to get the page") != std::string::npos) // for lack of memory, or the disk's
                        Fail(step, line);
                    if (line != "ok" && line.compare(0, 3, "***") != 0) // which is a heading
                        Find(findings, PlantFindingKind::Damage, "", 0, line + '.');
                }
            });
}

// Checks one thing after the other, in one transaction.
struct Checker
{
    sqlite3* DB;
    std::vector<PlantFileFinding>& Findings;

    void Find(PlantFindingKind kind, const std::string& table, std::int64_t id, const std::string& description) const
    {
        ::Find(Findings, kind, table, id, description);
    }

    template <typename Read> void ForEach(const std::string& table, const std::string& sql, const Read& read) const
    {
        ::ForEach(DB, "checking " + table, sql, read);
    }

    // Links to mothers and events have kinds of their own.
    void ForeignKeys() const
    {
        ::ForEach(DB, "checking the foreign keys", "PRAGMA foreign_key_check;",
                  [&](sqlite3_stmt* row)
                  {
                      const std::string table = Text(row, 0);
                      const std::string parent = Text(row, 2);
                      if (table != parent && parent != "PlantEvents")
                          Find(PlantFindingKind::ForeignKey, table, sqlite3_column_int64(row, 1),
                               "It refers to a row of " + parent + " that does not exist.");
                  });
    }

    template <typename Enum>
    void Names(const std::string& table, const std::string& column, Enum (*fromName)(const std::string&),
               const char* (*nameOf)(Enum)) const
    {
        ForEach(table, "SELECT ID," + column + " FROM " + table + ';',
                [&](sqlite3_stmt* row)
                {
                    const std::string name = Text(row, 1);
                    const std::string read = nameOf(fromName(name));
                    if (read != name)
                        Find(PlantFindingKind::UnknownName, table, sqlite3_column_int64(row, 0),
                             "Its " + column + ' ' + Quoted(name) + " has no meaning and reads as " + Quoted(read) +
                                 '.');
                });
    }

    void Severities() const
    {
        ForEach("PlantHealthObservations",
                "SELECT ID,Severity FROM PlantHealthObservations WHERE COALESCE(Severity,0) NOT BETWEEN 1 AND 5;",
                [&](sqlite3_stmt* row)
                {
                    Find(PlantFindingKind::Severity, "PlantHealthObservations", sqlite3_column_int64(row, 0),
                         "Its severity " + Quoted(Text(row, 1)) + " is not from 1 to 5.");
                });
    }

    void Mothers() const
    {
        std::vector<std::int64_t> clones;
        std::unordered_map<std::int64_t, std::int64_t> mothers;
        ForEach("Plants", "SELECT ID,MotherPlantID FROM Plants WHERE MotherPlantID IS NOT NULL ORDER BY ID;",
                [&](sqlite3_stmt* row)
                {
                    clones.push_back(sqlite3_column_int64(row, 0));
                    mothers[clones.back()] = sqlite3_column_int64(row, 1);
                });
        ForEach("Plants",
                "SELECT ID,MotherPlantID FROM Plants WHERE MotherPlantID NOT IN (SELECT ID FROM Plants) ORDER BY ID;",
                [&](sqlite3_stmt* row)
                {
                    Find(PlantFindingKind::MissingMother, "Plants", sqlite3_column_int64(row, 0),
                         "Its mother, row " + Text(row, 1) + ", does not exist.");
                });

        std::unordered_map<std::int64_t, std::int64_t> walks; // from which clone the walk came that came by first
        for (const std::int64_t clone : clones)
        {
            std::int64_t current = clone;
            while (mothers.count(current) != 0 && walks.emplace(current, clone).second)
                current = mothers[current];
            if (mothers.count(current) == 0 || walks[current] != clone)
                continue;
            const std::int64_t first = current; // this walk came by it twice
            do
            {
                Find(PlantFindingKind::LineageCycle, "Plants", current, "It descends from itself.");
                current = mothers[current];
            } while (current != first);
        }
    }

    void Strains() const
    {
        ForEach("Plants",
                "SELECT ID,Strain FROM Plants WHERE Strain<>'' AND "
                "Strain NOT IN (SELECT Name FROM Strains WHERE Name IS NOT NULL) ORDER BY ID;",
                [&](sqlite3_stmt* row)
                {
                    Find(PlantFindingKind::MissingStrain, "Plants", sqlite3_column_int64(row, 0),
                         "Its strain " + Quoted(Text(row, 1)) + " does not exist.");
                });
    }

    // The row begins with the owner's ID, its link, and the event's ID, plant, date, type and details.
    void Event(sqlite3_stmt* row, const std::string& table, const PlantEvent& due) const
    {
        const std::int64_t id = sqlite3_column_int64(row, 0);
        const std::string link = Text(row, 1);
        if (link.empty())
            return Find(PlantFindingKind::MissingEvent, table, id, "It has no event.");
        if (sqlite3_column_type(row, 2) == SQLITE_NULL)
            return Find(PlantFindingKind::MissingEvent, table, id, "Its event, row " + link + ", does not exist.");
        std::string differences;
        const auto compare = [&](const char* what, int column, const std::string& text)
        {
            if (Text(row, column) == text)
                return;
            if (!differences.empty())
                differences += " and ";
            differences += what;
        };
        compare("plant", 3, due.PlantUUID);
        compare("date", 4, due.EventDate);
        compare("type", 5, PlantEventTypeName(due.Type));
        compare("details", 6, due.Details);
        if (!differences.empty())
            Find(PlantFindingKind::EventDiffers, table, id,
                 "Its event, row " + link + ", differs in " + differences + '.');
    }

    void CareEvents() const
    {
        PlantDatabase none; // composing needs no file
        const PlantRepository composer(none);
        ForEach("PlantCareEntries",
                "SELECT o.ID,o.TimelineEventID,e.ID,e.PlantUUID,e.EventDate,e.EventType,e.Details,o.PlantUUID,"
                "o.CareDate,o.Action,o.Product,o.AmountMl,o.EC,o.PH,o.RunoffMl,o.Notes "
                "FROM PlantCareEntries o LEFT JOIN PlantEvents e ON e.ID=o.TimelineEventID;",
                [&](sqlite3_stmt* row)
                {
                    PlantCareEntry entry;
                    entry.Action = PlantCareActionFromName(Text(row, 9));
                    entry.Product = Text(row, 10);
                    entry.AmountMl = sqlite3_column_double(row, 11);
                    entry.EC = sqlite3_column_double(row, 12);
                    entry.PH = sqlite3_column_double(row, 13);
                    entry.RunoffMl = sqlite3_column_double(row, 14);
                    entry.Notes = Text(row, 15);
                    PlantEvent due;
                    due.PlantUUID = Text(row, 7);
                    due.EventDate = Text(row, 8);
                    due.Type = entry.Action == PlantCareAction::Feed ? PlantEventType::Feed : PlantEventType::Water;
                    due.Details = composer.CareTimelineDetails(entry);
                    Event(row, "PlantCareEntries", due);
                });
    }

    // A harvest's details are composed only when it is saved: each is saved to another journal, and read back.
    void HarvestEvents(bool withSeedYield) const
    {
        PlantDatabase journal;
        PlantRepository repository(journal);
        Plant plant;
        const auto require = [&](bool done)
        {
            if (!done)
                Fail("composing the details of a harvest", sqlite3_errmsg(journal.NativeHandle()));
        };
        require(journal.Open(":memory:"));
        require(repository.CreatePlant(plant));
        HarvestRecord record;
        ForEach("HarvestRecords",
                std::string("SELECT o.ID,o.TimelineEventID,e.ID,e.PlantUUID,e.EventDate,e.EventType,e.Details,"
                            "o.PlantUUID,o.HarvestDate,o.WetWeightG,o.DryWeightG,o.QualityRating,o.CureOutcome,"
                            "o.Notes,") +
                    (withSeedYield ? "o.SeedYield" : "0") +
                    " FROM HarvestRecords o LEFT JOIN PlantEvents e ON e.ID=o.TimelineEventID;",
                [&](sqlite3_stmt* row)
                {
                    record.WetWeightG = sqlite3_column_double(row, 9);
                    record.DryWeightG = sqlite3_column_double(row, 10);
                    record.QualityRating = sqlite3_column_double(row, 11);
                    record.CureOutcome = Text(row, 12);
                    record.Notes = Text(row, 13);
                    record.SeedYield = sqlite3_column_int(row, 14);
                    require(repository.SaveHarvestRecord(plant, record));
                    PlantEvent due;
                    due.PlantUUID = Text(row, 7);
                    due.EventDate = Text(row, 8);
                    due.Type = PlantEventType::Harvest;
                    ::ForEach(journal.NativeHandle(), "composing the details of a harvest",
                              "SELECT Details FROM PlantEvents;",
                              [&](sqlite3_stmt* event) { due.Details = Text(event, 0); });
                    Event(row, "HarvestRecords", due);
                });
    }

    // The photos, to be looked for when others may write again: a slow disk must not hold them up.
    std::vector<PlantPhoto> Photos() const
    {
        std::vector<PlantPhoto> photos;
        ForEach("PlantPhotos", "SELECT ID,FilePath FROM PlantPhotos;",
                [&](sqlite3_stmt* row)
                {
                    PlantPhoto& photo = photos.emplace_back();
                    photo.ID = sqlite3_column_int64(row, 0);
                    photo.FilePath = Text(row, 1);
                });
        return photos;
    }
};

std::vector<PlantPhoto> Check(sqlite3* db, std::vector<PlantFileFinding>& findings)
{
    const Comparison schema = Compare(db);
    RequireJournal(schema.Kind, schema.Reasons);
    const auto has = [&](std::initializer_list<const char*> tables)
    { return std::all_of(tables.begin(), tables.end(), [&](const char* table) { return schema.HasTable(table); }); };

    const Checker check{db, findings};
    FindDamage(db, findings);
    check.ForeignKeys();
    if (has({"Plants"}))
        check.Names("Plants", "Stage", PlantStageFromName, PlantStageName);
    if (schema.HasColumn("Plants", "Sex"))
        check.Names("Plants", "Sex", PlantSexFromName, PlantSexName);
    if (has({"PlantEvents"}))
        check.Names("PlantEvents", "EventType", PlantEventTypeFromName, PlantEventTypeName);
    if (has({"PlantCareEntries"}))
        check.Names("PlantCareEntries", "Action", PlantCareActionFromName, PlantCareActionName);
    if (has({"PlantJournalEntries"}))
        check.Names("PlantJournalEntries", "Type", PlantJournalTypeFromName, PlantJournalTypeName);
    if (has({"PlantHealthObservations"}))
        check.Severities();
    if (has({"Plants"}))
        check.Mothers();
    if (has({"Plants", "Strains"}))
        check.Strains();
    if (has({"PlantCareEntries", "PlantEvents"}))
        check.CareEvents();
    if (has({"HarvestRecords", "PlantEvents"}))
        check.HarvestEvents(schema.HasColumn("HarvestRecords", "SeedYield"));
    return has({"PlantPhotos"}) ? check.Photos() : std::vector<PlantPhoto>();
}

void LookForFile(const PlantPhoto& photo, const std::filesystem::path& directory,
                 std::vector<PlantFileFinding>& findings)
{
    std::error_code error;
    if (std::filesystem::is_regular_file(directory / photo.FilePath, error))
        return;
    std::string reason = "that is no file";
    if (error)
        reason = error.message();
    Find(findings, PlantFindingKind::MissingPhotoFile, "PlantPhotos", photo.ID,
         "Its file " + Quoted(photo.FilePath) + " cannot be found: " + reason + '.');
}

} // namespace

PlantFileResult CheckPlantDatabase(const std::string& path, std::vector<PlantFileFinding>& out)
{
    std::vector<PlantFileFinding> findings;
    const auto check = [&]
    {
        const std::filesystem::path file = FileAt(path);
        const std::vector<PlantPhoto> photos = Check(Connection(file, SQLITE_OPEN_READONLY).DB, findings);
        for (const PlantPhoto& photo : photos)
            LookForFile(photo, file.parent_path(), findings);
    };
    PlantFileResult result = Attempt(path, [&] { WithFiles(check); });
    out = std::move(findings);
    return result;
}

// ---------------------------------------------------------------------------------------------------------------------
// Backup

namespace
{

// A new file, which is removed again.
struct TemporaryFile
{
    std::string Name;
    int Descriptor;

    explicit TemporaryFile(std::string name) : Name(std::move(name)), Descriptor(mkstemp(Name.data()))
    {
        Require(Descriptor != -1, "making a file beside it");
    }
    ~TemporaryFile()
    {
        close(Descriptor);
        unlink(Name.c_str());
    }
    // Syncs and closes it, while nobody else knows it: closing it later would drop another thread's locks on it.
    void Finish(mode_t permissions)
    {
        constexpr const char* step = "syncing the copy";
        Require(fchmod(Descriptor, permissions) == 0, step);
        Require(fsync(Descriptor) == 0, step);
        Require(close(std::exchange(Descriptor, -1)) == 0, step);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
};

void RequirePlaceFor(const std::filesystem::path& source, const std::filesystem::path& destination,
                     PlantBackUpMode mode)
{
    constexpr const char* step = "looking at what is there";
    const std::int64_t bytes = SizeOf(destination);
    if (bytes != NoFile && std::filesystem::equivalent(source, destination))
        Fail(step, "it is the source");
    if (bytes != NoFile && mode == PlantBackUpMode::Keep)
        Fail(step, "it exists");
    for (const char* suffix : {"-journal", "-wal"})
        if (std::filesystem::exists(destination.native() + suffix))
            Fail(step, std::string("a ") + suffix + " lies beside it, which would be taken for the copy's");
}

void Copy(sqlite3* source, const std::filesystem::path& destination, const std::string& step,
          const PlantBackUpProgress& progress)
{
    constexpr int pages = 256;
    constexpr int enough = 3;
    const Connection copy(destination, SQLITE_OPEN_READWRITE);
    // There is nothing to take back: what is not done is removed. All of it is synced at the end.
    Execute(copy.DB, step, "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF;");
    const std::unique_ptr<sqlite3_backup, Closer> backup(sqlite3_backup_init(copy.DB, "main", source, "main"));
    if (backup == nullptr)
        Fail(copy.DB, step);
    int result = SQLITE_OK;
    int beginnings = 0;
    for (std::int64_t before = 0; result != SQLITE_DONE;)
    {
        result = sqlite3_backup_step(backup.get(), beginnings < enough ? pages : -1);
        if (result != SQLITE_OK && result != SQLITE_DONE)
            Fail(step, sqlite3_errstr(result));
        const std::int64_t total = sqlite3_backup_pagecount(backup.get());
        const std::int64_t done = total - sqlite3_backup_remaining(backup.get());
        if (done <= before) // another wrote, and SQLite began anew
            ++beginnings;
        before = done;
        if (progress && !progress(done, total))
            Fail(step, "interrupted");
    }
}

// A file that cannot be read to its end must not take the place of one that can. Odd rows are worth keeping: SQLite
// looks at no CHECK of a file that is opened for reading.
void RequireSoundCopy(const std::filesystem::path& file)
{
    const Connection copy(file, SQLITE_OPEN_READONLY);
    PlantFileInspection found;
    Look(copy.DB, Extent::Rows, found);
    RequireJournal(found.Kind, found.Reasons);
    std::vector<PlantFileFinding> damages;
    FindDamage(copy.DB, damages);
    if (!damages.empty())
        Fail("checking the copy", "the journal is damaged: " + damages.front().Description);
}

void GiveName(const std::string& name, const std::filesystem::path& destination, PlantBackUpMode mode)
{
    constexpr const char* step = "giving the copy its name";
    const std::string to = destination.native();
    const std::unique_ptr<DIR, Closer> directory(opendir(destination.parent_path().c_str()));
    Require(directory != nullptr, step);
    if (mode == PlantBackUpMode::Overwrite)
        Require(std::rename(name.c_str(), to.c_str()) == 0, step);
    else if (link(name.c_str(), to.c_str()) != 0)
    {
        // Where the file system knows no links, the name is taken by an empty file first, which fails if there is any.
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> empty(std::fopen(to.c_str(), "wbx"), std::fclose);
        Require(empty != nullptr, step);
        if (std::rename(name.c_str(), to.c_str()) != 0)
        {
            const std::string reason = std::generic_category().message(errno);
            unlink(to.c_str());
            Fail(step, reason);
        }
    }
    Require(fsync(dirfd(directory.get())) == 0, "syncing the directory");
}

} // namespace

PlantFileResult BackUpPlantDatabase(const std::string& source, const std::string& destination,
                                    const PlantBackUpProgress& progress, PlantBackUpMode mode)
{
    std::filesystem::path from;
    std::unique_ptr<const Connection> journal;
    const auto open = [&]
    {
        from = FileAt(source);
        journal = std::make_unique<const Connection>(from, SQLITE_OPEN_READWRITE);
        PlantFileInspection found;
        Look(journal->DB, Extent::Rows, found);
        RequireJournal(found.Kind, found.Reasons);
        Execute(journal->DB, ReadingSchema, "COMMIT;");
    };
    const auto backUp = [&]
    {
        std::filesystem::path to;
        const auto findPlace = [&]
        {
            to = std::filesystem::weakly_canonical(FileAt(destination));
            RequirePlaceFor(from, to, mode);
        };
        WithFiles(findPlace);
        TemporaryFile copy(to.native() + ".part-XXXXXX");
        Copy(journal->DB, copy.Name, "copying " + source, progress);
        const auto finish = [&]
        {
            RequireSoundCopy(copy.Name);
            copy.Finish(static_cast<mode_t>(std::filesystem::status(from).permissions()));
            RequirePlaceFor(from, to, mode); // which may have changed meanwhile
            GiveName(copy.Name, to, mode);
        };
        WithFiles(finish);
    };
    PlantFileResult result = Attempt(source, [&] { WithFiles(open); });
    if (result)
        result = Attempt(destination, backUp);
    return result;
}
