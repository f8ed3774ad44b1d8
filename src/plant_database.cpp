#include "plant_database.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <filesystem>
#include <iterator>
#include <memory>
#include <new>
#include <random>
#include <string_view>
#include <system_error>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <sqlite3.h>

// ---------------------------------------------------------------------------------------------------------------------
// Statements

namespace
{

bool Prepare(sqlite3* db, const char* sql, sqlite3_stmt** statement)
{
    return db != nullptr && sqlite3_prepare_v2(db, sql, -1, statement, nullptr) == SQLITE_OK;
}

bool BindText(sqlite3_stmt* statement, int index, const std::string& value)
{
    return value.size() <= INT_MAX && // the conversion to int would truncate a longer text
           sqlite3_bind_text(statement, index, value.c_str(), static_cast<int>(value.size()), SQLITE_TRANSIENT) ==
               SQLITE_OK;
}

bool BindDouble(sqlite3_stmt* statement, int index, double value)
{
    return sqlite3_bind_double(statement, index, value) == SQLITE_OK;
}

std::string ColumnText(sqlite3_stmt* statement, int column)
{
    const unsigned char* text = sqlite3_column_text(statement, column);
    // A null pointer means NULL or a lack of memory. In the second case, an empty text would be wrong.
    if (text == nullptr && sqlite3_errcode(sqlite3_db_handle(statement)) == SQLITE_NOMEM)
        throw std::bad_alloc();
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

// A prepared statement, finalized at the end of its scope.
struct Statement
{
    sqlite3_stmt* Handle = nullptr;

    Statement() = default;
    ~Statement() { sqlite3_finalize(Handle); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
};

// The functions of plant.h that convert an enumeration to its stored name and back.
template <typename Enum> struct Conversion
{
    const char* (*Name)(Enum);
    Enum (*FromName)(const std::string&);
};

constexpr std::tuple Conversions{
    Conversion<PlantStage>{PlantStageName, PlantStageFromName},
    Conversion<PlantSex>{PlantSexName, PlantSexFromName},
    Conversion<PlantEventType>{PlantEventTypeName, PlantEventTypeFromName},
    Conversion<PlantCareAction>{PlantCareActionName, PlantCareActionFromName},
    Conversion<PlantJournalType>{PlantJournalTypeName, PlantJournalTypeFromName},
};

bool Bind(sqlite3_stmt* statement, int index, std::int64_t value)
{
    return sqlite3_bind_int64(statement, index, value) == SQLITE_OK;
}

bool Bind(sqlite3_stmt* statement, int index, int value)
{
    return sqlite3_bind_int(statement, index, value) == SQLITE_OK;
}

bool Bind(sqlite3_stmt* statement, int index, double value)
{
    return BindDouble(statement, index, value);
}

bool Bind(sqlite3_stmt* statement, int index, const std::string& value)
{
    return BindText(statement, index, value);
}

// Enumerations are stored by name.
template <typename Enum> bool Bind(sqlite3_stmt* statement, int index, Enum value)
{
    return BindText(statement, index, std::get<Conversion<Enum>>(Conversions).Name(value));
}

void Read(sqlite3_stmt* row, int column, std::int64_t& field)
{
    field = sqlite3_column_int64(row, column);
}

void Read(sqlite3_stmt* row, int column, int& field)
{
    field = sqlite3_column_int(row, column);
}

void Read(sqlite3_stmt* row, int column, double& field)
{
    field = sqlite3_column_double(row, column);
}

void Read(sqlite3_stmt* row, int column, std::string& field)
{
    field = ColumnText(row, column);
}

template <typename Enum> void Read(sqlite3_stmt* row, int column, Enum& field)
{
    field = std::get<Conversion<Enum>>(Conversions).FromName(ColumnText(row, column));
}

// Binds the values to the parameters from left to right and stops at the first failure.
template <typename... Values> bool BindAll([[maybe_unused]] sqlite3_stmt* statement, const Values&... values)
{
    [[maybe_unused]] int index = 0;
    return (Bind(statement, ++index, values) && ...);
}

// Fills the fields from the columns, from left to right.
template <typename... Fields> void ReadAll(sqlite3_stmt* row, Fields&... fields)
{
    int column = 0;
    (Read(row, column++, fields), ...);
}

// Runs a write. The number of changed rows does not affect the result.
template <typename... Values> bool Run(sqlite3* db, const char* sql, const Values&... values)
{
    Statement statement;
    return Prepare(db, sql, &statement.Handle) && BindAll(statement.Handle, values...) &&
           sqlite3_step(statement.Handle) == SQLITE_DONE;
}

// Inserts a row and stores its row ID in `id`.
template <typename... Values> bool Insert(sqlite3* db, std::int64_t& id, const char* sql, const Values&... values)
{
    if (!Run(db, sql, values...))
        return false;
    id = sqlite3_last_insert_rowid(db);
    return true;
}

// Reads one row into `out`. Without a row, or when an exception ends the reading, `out` is unchanged.
template <typename Record, typename ReadRow, typename... Keys>
bool Fetch(sqlite3* db, const char* sql, Record& out, const ReadRow& read, const Keys&... keys)
{
    Statement statement;
    if (!Prepare(db, sql, &statement.Handle) || !BindAll(statement.Handle, keys...) ||
        sqlite3_step(statement.Handle) != SQLITE_ROW)
        return false;
    Record record{};
    read(statement.Handle, record);
    out = std::move(record);
    return true;
}

// Reads a row of one value, for Fetch.
template <typename Value> void ReadValue(sqlite3_stmt* row, Value& value)
{
    Read(row, 0, value);
}

// Reads all rows into `out`. The keys are copies, since they may be members of a record in `out`.
template <typename Record, typename ReadRow, typename... Keys>
bool List(sqlite3* db, const char* sql, std::vector<Record>& out, const ReadRow& read, Keys... keys)
{
    out.clear();
    Statement statement;
    if (!Prepare(db, sql, &statement.Handle) || !BindAll(statement.Handle, keys...))
        return false;
    while (sqlite3_step(statement.Handle) == SQLITE_ROW)
    {
        Record& record = out.emplace_back();
        try
        {
            read(statement.Handle, record);
        }
        catch (...)
        {
            out.pop_back(); // drop the partial record
            throw;
        }
    }
    return true;
}

bool Execute(sqlite3* db, const char* sql)
{
    return db != nullptr && sqlite3_exec(db, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

// A transaction. Its destructor rolls it back unless it was committed.
class Transaction
{
  public:
    explicit Transaction(sqlite3* db) : DB(db) {}
    ~Transaction()
    {
        sqlite3_free(Reserve);
        if (Open && !Execute(DB, "ROLLBACK;") && sqlite3_get_autocommit(DB) == 0)
            Execute(DB, "ROLLBACK;"); // the first one may have failed for lack of memory
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    bool Begin()
    {
        Reserve = sqlite3_malloc(8192);
        Open = Reserve != nullptr && Execute(DB, "BEGIN IMMEDIATE;");
        return Open;
    }
    bool Commit()
    {
        Open = !Execute(DB, "COMMIT;");
        return !Open;
    }

  private:
    sqlite3* DB;
    // Memory for the rollback. Without it, a transaction could stay open and contain all later writes.
    void* Reserve = nullptr;
    bool Open = false;
};

// Appends a number with `decimals` digits after the decimal point, rounded as printf does, in every locale alike.
void AppendFixed(std::string& text, double value, int decimals)
{
    std::array<char, 512> digits{}; // the largest number has 309 digits before the decimal point
    const std::to_chars_result end =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed, decimals);
    text.append(digits.data(), end.ptr);
}

} // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Identifiers

// No header declares this function. A caller that needs identifiers copies this declaration.
PLANTJOURNAL_API std::string CreatePlantUUID();

// Returns a random version 4 UUID in lower case (RFC 9562, sections 4 and 5.4). It is not a secret. The generator is
// shared: only one thread at a time may call this function.
std::string CreatePlantUUID()
{
    static std::random_device device;
    static std::mt19937_64 generator(device());
    constexpr std::string_view hex = "0123456789abcdef";

    std::array<std::uint8_t, 16> bytes{};
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(generator() & 0xFF);
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);

    std::string uuid(36, '-');
    std::size_t at = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            ++at;
        uuid[at++] = hex[bytes[i] >> 4];
        uuid[at++] = hex[bytes[i] & 0x0F];
    }
    return uuid;
}

// ---------------------------------------------------------------------------------------------------------------------
// The journal file

namespace
{

// SQLite would ignore what follows a zero byte, and on Windows replace the bytes that are not UTF-8.
bool CanBePath(const std::string& file)
{
#ifdef _WIN32
    try
    {
        static_cast<void>(std::filesystem::u8path(file));
    }
    catch (const std::system_error&)
    {
        return false;
    }
#endif
    return file.find('\0') == std::string::npos;
}

} // namespace

PlantDatabase::~PlantDatabase()
{
    Close();
}

bool PlantDatabase::Open(const std::string& path, std::string* error)
{
    std::string file = path; // a copy, since `path` may be `Path()`, which Close empties
    Close();
    try
    {
        const bool canBePath = CanBePath(file);
        std::error_code ignored; // SQLite reports the failure
        if (canBePath)
            std::filesystem::create_directories(std::filesystem::u8path(file).parent_path(), ignored);
        if (!canBePath ||
            sqlite3_open_v2(file.c_str(), &Handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
                            nullptr) != SQLITE_OK)
        {
            ErrorText = Handle != nullptr ? sqlite3_errmsg(Handle) : "Could not open database";
        }
        else
        {
            DatabasePath = std::move(file);
            sqlite3_busy_timeout(Handle, 2500);
            if (Migrate())
                return true;
        }
        if (error != nullptr)
            *error = ErrorText;
    }
    catch (...)
    {
        Close();
        throw;
    }
    Close();
    return false;
}

void PlantDatabase::Close()
{
    if (Handle != nullptr)
        sqlite3_close_v2(Handle);
    Handle = nullptr;
    DatabasePath.clear();
}

bool PlantDatabase::Execute(const char* sql)
{
    char* message = nullptr;
    const bool done = sqlite3_exec(Handle, sql, nullptr, nullptr, &message) == SQLITE_OK;
    const std::unique_ptr<char, decltype(&sqlite3_free)> owner(message, sqlite3_free);
    if (!done)
        ErrorText = message != nullptr ? message : sqlite3_errmsg(Handle);
    return done;
}

// ---------------------------------------------------------------------------------------------------------------------
// The schema and its migration. These texts must not change: existing journal files contain them.

namespace
{

constexpr const char* Tables[] = {
    "CREATE TABLE IF NOT EXISTS SchemaMeta (Key TEXT PRIMARY KEY, Value TEXT NOT NULL);",

    "CREATE TABLE IF NOT EXISTS Strains (ID INTEGER PRIMARY KEY, Name TEXT NOT NULL UNIQUE, "
    "Breeder TEXT NOT NULL DEFAULT '', FloweringWeeks INTEGER NOT NULL DEFAULT 0, Notes TEXT NOT NULL DEFAULT '');",

    "CREATE TABLE IF NOT EXISTS Plants (ID INTEGER PRIMARY KEY, UUID TEXT NOT NULL UNIQUE, Name TEXT NOT NULL, "
    "Strain TEXT NOT NULL DEFAULT '', MotherPlantID INTEGER NULL REFERENCES Plants(ID) ON DELETE SET NULL, "
    "Stage TEXT NOT NULL DEFAULT 'Veg', Sex TEXT NOT NULL DEFAULT 'Unknown', Tent TEXT NOT NULL DEFAULT '', "
    "PotSize TEXT NOT NULL DEFAULT '', Medium TEXT NOT NULL DEFAULT '', SeedDate TEXT NOT NULL DEFAULT '', "
    "FlipHeightCm REAL NOT NULL DEFAULT 0, FinalHeightCm REAL NOT NULL DEFAULT 0, CloneDate TEXT NOT NULL DEFAULT '', "
    "TransplantDate TEXT NOT NULL DEFAULT '', FlipDate TEXT NOT NULL DEFAULT '', HarvestDate TEXT NOT NULL DEFAULT '', "
    "Notes TEXT NOT NULL DEFAULT '', "
    "CHECK(Stage IN ('Seed','Clone','Veg','Flower','Dry','Cure','Harvested','Archived')), "
    "CHECK(Sex IN ('Unknown','Female','Male','Hermaphrodite')));",

    "CREATE TABLE IF NOT EXISTS PlantEvents (ID INTEGER PRIMARY KEY, "
    "PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE CASCADE, EventDate TEXT NOT NULL DEFAULT '', "
    "EventType TEXT NOT NULL DEFAULT 'Note', Details TEXT NOT NULL DEFAULT '', "
    "CHECK(EventType IN ('Clone','Transplant','Flip','Harvest','Feed','Water','Stage','Topped','LST Trained',"
    "'Defoliated','Note')));",

    "CREATE TABLE IF NOT EXISTS PlantCareEntries (ID INTEGER PRIMARY KEY, "
    "TimelineEventID INTEGER NULL REFERENCES PlantEvents(ID) ON DELETE SET NULL, "
    "PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE CASCADE, CareDate TEXT NOT NULL DEFAULT '', "
    "Action TEXT NOT NULL DEFAULT 'Water', Product TEXT NOT NULL DEFAULT '', AmountMl REAL NOT NULL DEFAULT 0, "
    "EC REAL NOT NULL DEFAULT 0, PH REAL NOT NULL DEFAULT 0, RunoffMl REAL NOT NULL DEFAULT 0, "
    "Notes TEXT NOT NULL DEFAULT '', CHECK(Action IN ('Feed','Water')));",

    "CREATE TABLE IF NOT EXISTS HarvestRecords (ID INTEGER PRIMARY KEY, "
    "TimelineEventID INTEGER NULL REFERENCES PlantEvents(ID) ON DELETE SET NULL, "
    "PlantUUID TEXT NOT NULL UNIQUE REFERENCES Plants(UUID) ON DELETE CASCADE, HarvestDate TEXT NOT NULL DEFAULT '', "
    "WetWeightG REAL NOT NULL DEFAULT 0, DryWeightG REAL NOT NULL DEFAULT 0, QualityRating REAL NOT NULL DEFAULT 0, "
    "SeedYield INTEGER NOT NULL DEFAULT 0, CureOutcome TEXT NOT NULL DEFAULT '', Notes TEXT NOT NULL DEFAULT '');",

    "CREATE TABLE IF NOT EXISTS PlantPhotos (ID INTEGER PRIMARY KEY, UUID TEXT NOT NULL UNIQUE, "
    "PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE CASCADE, PhotoDate TEXT NOT NULL DEFAULT '', "
    "FilePath TEXT NOT NULL, Caption TEXT NOT NULL DEFAULT '');",

    "CREATE TABLE IF NOT EXISTS PlantHealthObservations (ID INTEGER PRIMARY KEY, "
    "PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE CASCADE, ObservationDate TEXT NOT NULL DEFAULT '', "
    "Issue TEXT NOT NULL, Severity INTEGER NOT NULL DEFAULT 1 CHECK(Severity BETWEEN 1 AND 5), "
    "Treatment TEXT NOT NULL DEFAULT '', Notes TEXT NOT NULL DEFAULT '');",

    "CREATE TABLE IF NOT EXISTS PlantJournalEntries (ID INTEGER PRIMARY KEY, "
    "PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE CASCADE, EntryDate TEXT NOT NULL DEFAULT '', "
    "Type TEXT NOT NULL DEFAULT 'Observation', Details TEXT NOT NULL DEFAULT '', "
    "CHECK(Type IN ('Observation','Training','Pruning','Topping','Defoliation','Milestone')));",
};

// The columns that the first version did not have.
constexpr struct
{
    const char* Table;
    const char* Column;
    const char* Statement;
} AddedColumns[] = {
    {"Plants", "SeedDate", "ALTER TABLE Plants ADD COLUMN SeedDate TEXT NOT NULL DEFAULT '';"},
    {"Plants", "FlipHeightCm", "ALTER TABLE Plants ADD COLUMN FlipHeightCm REAL NOT NULL DEFAULT 0;"},
    {"Plants", "FinalHeightCm", "ALTER TABLE Plants ADD COLUMN FinalHeightCm REAL NOT NULL DEFAULT 0;"},
    {"Plants", "Sex", "ALTER TABLE Plants ADD COLUMN Sex TEXT NOT NULL DEFAULT 'Unknown';"},
    {"HarvestRecords", "SeedYield", "ALTER TABLE HarvestRecords ADD COLUMN SeedYield INTEGER NOT NULL DEFAULT 0;"},
};

// Earlier versions had fewer event types: they stored three of today's types as notes with a fixed text, and gave many
// events a stock phrase as details. SQLite cannot alter a CHECK, so the table is rebuilt with the same row IDs.
// Dropping the old table with foreign keys on would clear every link to an event, and foreign keys can only be switched
// outside a transaction: https://www.sqlite.org/lang_altertable.html#otheralter
constexpr const char* EventTableRebuild[] = {
    "PRAGMA foreign_keys=OFF;",
    "BEGIN IMMEDIATE;",

    "CREATE TABLE PlantEvents_Migrated (ID INTEGER PRIMARY KEY, "
    "PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE CASCADE, EventDate TEXT NOT NULL DEFAULT '', "
    "EventType TEXT NOT NULL DEFAULT 'Note', Details TEXT NOT NULL DEFAULT '', "
    "CHECK(EventType IN ('Clone','Transplant','Flip','Harvest','Feed','Water','Stage','Topped','LST Trained',"
    "'Defoliated','Note')));",

    "INSERT INTO PlantEvents_Migrated(ID,PlantUUID,EventDate,EventType,Details) SELECT ID,PlantUUID,EventDate,"
    "CASE WHEN EventType='Note' AND Details='Topped' THEN 'Topped' "
    "WHEN EventType='Note' AND Details='LST Trained' THEN 'LST Trained' "
    "WHEN EventType='Note' AND Details='Defoliated' THEN 'Defoliated' "
    "WHEN EventType IN ('Clone','Transplant','Flip','Harvest','Feed','Water','Stage','Topped','LST Trained',"
    "'Defoliated','Note') THEN EventType ELSE 'Note' END,"
    "CASE WHEN Details IN ('Watered','Fed','Topped','LST Trained','Defoliated','Transplanted','Cloned',"
    "'Flip to Flower','Harvested') THEN '' ELSE Details END FROM PlantEvents;",

    "DROP TABLE PlantEvents;",
    "ALTER TABLE PlantEvents_Migrated RENAME TO PlantEvents;",
    "COMMIT;",
    "PRAGMA foreign_keys=ON;",
};

constexpr const char* Indexes[] = {
    "CREATE INDEX IF NOT EXISTS PlantsByStrain ON Plants(Strain);",
    "CREATE INDEX IF NOT EXISTS PlantsByMother ON Plants(MotherPlantID);",
    "CREATE INDEX IF NOT EXISTS PlantEventsByPlantDate ON PlantEvents(PlantUUID,EventDate DESC,ID DESC);",
    "CREATE INDEX IF NOT EXISTS PlantCareByPlantDate ON PlantCareEntries(PlantUUID,CareDate DESC,ID DESC);",
    "CREATE INDEX IF NOT EXISTS PlantPhotosByPlantDate ON PlantPhotos(PlantUUID,PhotoDate DESC,ID DESC);",
    ("CREATE INDEX IF NOT EXISTS PlantHealthByPlantDate ON "
     "PlantHealthObservations(PlantUUID,ObservationDate DESC,ID DESC);"),
    "CREATE INDEX IF NOT EXISTS PlantJournalByPlantDate ON PlantJournalEntries(PlantUUID,EntryDate DESC,ID DESC);",
};

bool HasColumn(sqlite3* db, const char* table, const char* column)
{
    const std::string sql = std::string("PRAGMA table_info(") + table + ");";
    Statement statement;
    if (!Prepare(db, sql.c_str(), &statement.Handle))
        return false;
    while (sqlite3_step(statement.Handle) == SQLITE_ROW)
        if (ColumnText(statement.Handle, 1) == column)
            return true;
    return false;
}

} // namespace

bool PlantDatabase::Migrate()
{
    const auto executeAll = [this](const auto& statements) {
        return std::all_of(std::begin(statements), std::end(statements),
                           [this](const char* sql) { return Execute(sql); });
    };

    if (!Execute("PRAGMA foreign_keys=ON;") || !executeAll(Tables))
        return false;
    for (const auto& added : AddedColumns)
        if (!HasColumn(Handle, added.Table, added.Column) && !Execute(added.Statement))
            return false;

    bool needsEventTypeMigration = false;
    {
        Statement definition;
        if (!Prepare(Handle, "SELECT sql FROM sqlite_master WHERE type='table' AND name='PlantEvents';",
                     &definition.Handle))
            return false;
        if (sqlite3_step(definition.Handle) == SQLITE_ROW)
            needsEventTypeMigration = ColumnText(definition.Handle, 0).find("'LST Trained'") == std::string::npos;
    }
    if (needsEventTypeMigration && !executeAll(EventTableRebuild))
    {
        Execute("ROLLBACK;");
        Execute("PRAGMA foreign_keys=ON;");
        return false;
    }
    return executeAll(Indexes);
}

// ---------------------------------------------------------------------------------------------------------------------
// Plants

bool PlantRepository::ListPlants(std::vector<Plant>& out)
{
    return List(
        DB.NativeHandle(),
        "SELECT ID,UUID,Name,Strain,COALESCE((SELECT UUID FROM Plants m WHERE m.ID=p.MotherPlantID),''),Stage,Sex,Tent,"
        "PotSize,Medium,SeedDate,FlipHeightCm,FinalHeightCm,CloneDate,TransplantDate,FlipDate,HarvestDate,Notes "
        "FROM Plants p ORDER BY Strain COLLATE NOCASE,Name COLLATE NOCASE;",
        out,
        [](sqlite3_stmt* row, Plant& p)
        {
            ReadAll(row, p.ID, p.UUID, p.Name, p.Strain, p.MotherPlantUUID, p.Stage, p.Sex, p.Tent, p.PotSize, p.Medium,
                    p.SeedDate, p.FlipHeightCm, p.FinalHeightCm, p.CloneDate, p.TransplantDate, p.FlipDate,
                    p.HarvestDate, p.Notes);
        });
}

bool PlantRepository::GetPlant(const std::string& uuid, Plant& out)
{
    std::vector<Plant> plants;
    if (!ListPlants(plants))
        return false;
    const auto found = std::find_if(plants.begin(), plants.end(), [&](const Plant& p) { return p.UUID == uuid; });
    if (found == plants.end())
        return false;
    out = std::move(*found);
    return true;
}

bool PlantRepository::EnsureStrain(const std::string& name)
{
    return name.empty() ||
           Run(DB.NativeHandle(), "INSERT INTO Strains(Name) VALUES(?) ON CONFLICT(Name) DO NOTHING;", name);
}

bool PlantRepository::CreatePlant(Plant& p)
{
    if (!EnsureStrain(p.Strain))
        return false;
    if (p.UUID.empty())
        p.UUID = CreatePlantUUID();
    return HasValidMotherLink(p) &&
           Insert(DB.NativeHandle(), p.ID,
                  "INSERT INTO Plants(UUID,Name,Strain,MotherPlantID,Stage,Sex,Tent,PotSize,Medium,SeedDate,"
                  "FlipHeightCm,FinalHeightCm,CloneDate,TransplantDate,FlipDate,HarvestDate,Notes) "
                  "VALUES(?,?,?,(SELECT ID FROM Plants WHERE UUID=?),?,?,?,?,?,?,?,?,?,?,?,?,?);",
                  p.UUID, p.Name, p.Strain, p.MotherPlantUUID, p.Stage, p.Sex, p.Tent, p.PotSize, p.Medium, p.SeedDate,
                  p.FlipHeightCm, p.FinalHeightCm, p.CloneDate, p.TransplantDate, p.FlipDate, p.HarvestDate, p.Notes);
}

bool PlantRepository::UpdatePlant(const Plant& p)
{
    return EnsureStrain(p.Strain) && HasValidMotherLink(p) &&
           Run(DB.NativeHandle(),
               "UPDATE Plants SET Name=?,Strain=?,MotherPlantID=(SELECT ID FROM Plants WHERE UUID=?),Stage=?,Sex=?,"
               "Tent=?,PotSize=?,Medium=?,SeedDate=?,FlipHeightCm=?,FinalHeightCm=?,CloneDate=?,TransplantDate=?,"
               "FlipDate=?,HarvestDate=?,Notes=? WHERE UUID=?;",
               p.Name, p.Strain, p.MotherPlantUUID, p.Stage, p.Sex, p.Tent, p.PotSize, p.Medium, p.SeedDate,
               p.FlipHeightCm, p.FinalHeightCm, p.CloneDate, p.TransplantDate, p.FlipDate, p.HarvestDate, p.Notes,
               p.UUID);
}

bool PlantRepository::DeletePlant(const std::string& uuid)
{
    return Run(DB.NativeHandle(), "DELETE FROM Plants WHERE UUID=?;", uuid);
}

// Follows the stored links upward from the new mother. The new link is valid if the walk ends at a plant without a
// mother and does not reach the plant itself, an unknown plant, or a plant twice.
bool PlantRepository::HasValidMotherLink(const Plant& plant)
{
    if (plant.MotherPlantUUID.empty())
        return true;
    if (plant.UUID.empty() || plant.MotherPlantUUID == plant.UUID)
        return false;

    std::vector<Plant> plants;
    if (!ListPlants(plants))
        return false;
    std::unordered_map<std::string_view, std::string_view> mothers;
    for (const Plant& candidate : plants)
        mothers[candidate.UUID] = candidate.MotherPlantUUID;

    std::unordered_set<std::string_view> visited;
    std::string_view current = plant.MotherPlantUUID;
    while (!current.empty())
    {
        if (current == plant.UUID || !visited.insert(current).second)
            return false;
        const auto found = mothers.find(current);
        if (found == mothers.end())
            return false;
        current = found->second;
    }
    return true;
}

bool PlantRepository::DuplicatePlant(const Plant& source, Plant& out)
{
    out = source;
    out.ID = 0;
    out.UUID = CreatePlantUUID();
    out.Name += " copy";
    out.MotherPlantUUID.clear();
    return CreatePlant(out);
}

// ---------------------------------------------------------------------------------------------------------------------
// Strains

namespace
{

void ReadStrain(sqlite3_stmt* row, Strain& strain)
{
    ReadAll(row, strain.ID, strain.Name, strain.Breeder, strain.FloweringWeeks, strain.Notes);
}

} // namespace

bool PlantRepository::ListStrains(std::vector<Strain>& out)
{
    return List(DB.NativeHandle(),
                "SELECT ID,Name,Breeder,FloweringWeeks,Notes FROM Strains ORDER BY Name COLLATE NOCASE;", out,
                ReadStrain);
}

bool PlantRepository::GetStrain(std::int64_t id, Strain& out)
{
    return Fetch(DB.NativeHandle(), "SELECT ID,Name,Breeder,FloweringWeeks,Notes FROM Strains WHERE ID=?;", out,
                 ReadStrain, id);
}

bool PlantRepository::CreateStrain(Strain& strain)
{
    return !strain.Name.empty() && Insert(DB.NativeHandle(), strain.ID,
                                          "INSERT INTO Strains(Name,Breeder,FloweringWeeks,Notes) VALUES(?,?,?,?);",
                                          strain.Name, strain.Breeder, strain.FloweringWeeks, strain.Notes);
}

bool PlantRepository::UpdateStrain(const Strain& strain)
{
    if (strain.ID == 0 || strain.Name.empty())
        return false;
    sqlite3* db = DB.NativeHandle();
    std::string oldName;
    if (!Fetch(db, "SELECT Name FROM Strains WHERE ID=?;", oldName, ReadValue<std::string>, strain.ID))
        return false;
    Transaction transaction(db);
    return transaction.Begin() &&
           Run(db, "UPDATE Strains SET Name=?,Breeder=?,FloweringWeeks=?,Notes=? WHERE ID=?;", strain.Name,
               strain.Breeder, strain.FloweringWeeks, strain.Notes, strain.ID) &&
           (oldName == strain.Name || Run(db, "UPDATE Plants SET Strain=? WHERE Strain=?;", strain.Name, oldName)) &&
           transaction.Commit();
}

bool PlantRepository::DeleteStrain(std::int64_t id)
{
    {
        Statement inUse;
        if (!Prepare(DB.NativeHandle(),
                     "SELECT 1 FROM Plants WHERE Strain=(SELECT Name FROM Strains WHERE ID=?) LIMIT 1;",
                     &inUse.Handle) ||
            (BindAll(inUse.Handle, id) && sqlite3_step(inUse.Handle) == SQLITE_ROW))
            return false;
    }
    return Run(DB.NativeHandle(), "DELETE FROM Strains WHERE ID=?;", id);
}

bool PlantRepository::GetStrainSummary(std::int64_t strainID, StrainSummary& out)
{
    out = {};
    return Fetch(
        DB.NativeHandle(),
        "SELECT s.ID,s.Name,COUNT(p.ID),COALESCE(SUM(p.Stage='Seed'),0),COALESCE(SUM(p.Stage='Clone'),0),"
        "COALESCE(SUM(p.Stage='Veg'),0),COALESCE(SUM(p.Stage='Flower'),0),COALESCE(SUM(p.Stage='Dry'),0),"
        "COALESCE(SUM(p.Stage='Cure'),0),COALESCE(SUM(p.Stage='Harvested'),0),COALESCE(SUM(p.Stage='Archived'),0),"
        "COUNT(h.ID),COALESCE(AVG(NULLIF(h.DryWeightG,0)),0),COALESCE(AVG(NULLIF(h.QualityRating,0)),0) "
        "FROM Strains s LEFT JOIN Plants p ON p.Strain=s.Name LEFT JOIN HarvestRecords h ON h.PlantUUID=p.UUID "
        "WHERE s.ID=? GROUP BY s.ID,s.Name;",
        out,
        [](sqlite3_stmt* row, StrainSummary& s)
        {
            ReadAll(row, s.StrainID, s.StrainName, s.TotalPlants, s.Seed, s.Clone, s.Veg, s.Flower, s.Dry, s.Cure,
                    s.Harvested, s.Archived, s.HarvestCount, s.AverageDryWeightG, s.AverageQuality);
        },
        strainID);
}

// ---------------------------------------------------------------------------------------------------------------------
// Timeline events. Care entries and harvest records write their events with the same three functions.

namespace
{

bool InsertEvent(sqlite3* db, std::int64_t& id, const std::string& plantUUID, const std::string& date,
                 PlantEventType type, const std::string& details)
{
    return Insert(db, id, "INSERT INTO PlantEvents(PlantUUID,EventDate,EventType,Details) VALUES(?,?,?,?);", plantUUID,
                  date, type, details);
}

bool UpdateEvent(sqlite3* db, std::int64_t id, const std::string& plantUUID, const std::string& date,
                 PlantEventType type, const std::string& details)
{
    return Run(db, "UPDATE PlantEvents SET EventDate=?,EventType=?,Details=? WHERE ID=? AND PlantUUID=?;", date, type,
               details, id, plantUUID);
}

bool DeleteEvent(sqlite3* db, std::int64_t id)
{
    return Run(db, "DELETE FROM PlantEvents WHERE ID=?;", id);
}

// Writes the event of a care entry or harvest record. An `id` of 0 means that there is none yet, and receives the row
// ID of a new one.
bool SaveOwnedEvent(sqlite3* db, std::int64_t& id, const std::string& plantUUID, const std::string& date,
                    PlantEventType type, const std::string& details)
{
    return id == 0 ? InsertEvent(db, id, plantUUID, date, type, details)
                   : UpdateEvent(db, id, plantUUID, date, type, details);
}

} // namespace

bool PlantRepository::ListPlantEvents(const std::string& plantUUID, std::vector<PlantEvent>& out)
{
    return List(
        DB.NativeHandle(),
        "SELECT ID,PlantUUID,EventDate,EventType,Details FROM PlantEvents WHERE PlantUUID=? "
        "ORDER BY EventDate DESC,ID DESC;",
        out,
        [](sqlite3_stmt* row, PlantEvent& event)
        { ReadAll(row, event.ID, event.PlantUUID, event.EventDate, event.Type, event.Details); },
        plantUUID);
}

bool PlantRepository::CreatePlantEvent(PlantEvent& event)
{
    return !event.PlantUUID.empty() &&
           InsertEvent(DB.NativeHandle(), event.ID, event.PlantUUID, event.EventDate, event.Type, event.Details);
}

bool PlantRepository::UpdatePlantEvent(const PlantEvent& event)
{
    return event.ID != 0 && !event.PlantUUID.empty() &&
           UpdateEvent(DB.NativeHandle(), event.ID, event.PlantUUID, event.EventDate, event.Type, event.Details);
}

bool PlantRepository::DeletePlantEvent(std::int64_t id)
{
    return id != 0 && DeleteEvent(DB.NativeHandle(), id);
}

// ---------------------------------------------------------------------------------------------------------------------
// Care entries

namespace
{

PlantEventType CareEventType(const PlantCareEntry& entry)
{
    return entry.Action == PlantCareAction::Feed ? PlantEventType::Feed : PlantEventType::Water;
}

} // namespace

bool PlantRepository::ListPlantCareEntries(const std::string& plantUUID, std::vector<PlantCareEntry>& out)
{
    return List(
        DB.NativeHandle(),
        "SELECT ID,COALESCE(TimelineEventID,0),PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,RunoffMl,Notes "
        "FROM PlantCareEntries WHERE PlantUUID=? ORDER BY CareDate DESC,ID DESC;",
        out,
        [](sqlite3_stmt* row, PlantCareEntry& entry)
        {
            ReadAll(row, entry.ID, entry.TimelineEventID, entry.PlantUUID, entry.CareDate, entry.Action, entry.Product,
                    entry.AmountMl, entry.EC, entry.PH, entry.RunoffMl, entry.Notes);
        },
        plantUUID);
}

bool PlantRepository::CreatePlantCareEntry(PlantCareEntry& entry)
{
    if (entry.PlantUUID.empty())
        return false;
    sqlite3* db = DB.NativeHandle();
    const std::string details = CareTimelineDetails(entry);
    Transaction transaction(db);
    return transaction.Begin() &&
           InsertEvent(db, entry.TimelineEventID, entry.PlantUUID, entry.CareDate, CareEventType(entry), details) &&
           Insert(db, entry.ID,
                  "INSERT INTO PlantCareEntries(TimelineEventID,PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,"
                  "RunoffMl,Notes) VALUES(?,?,?,?,?,?,?,?,?,?);",
                  entry.TimelineEventID, entry.PlantUUID, entry.CareDate, entry.Action, entry.Product, entry.AmountMl,
                  entry.EC, entry.PH, entry.RunoffMl, entry.Notes) &&
           transaction.Commit();
}

bool PlantRepository::UpdatePlantCareEntry(PlantCareEntry& entry)
{
    if (entry.ID == 0 || entry.PlantUUID.empty())
        return false;
    sqlite3* db = DB.NativeHandle();
    const std::string details = CareTimelineDetails(entry);
    Transaction transaction(db);
    return transaction.Begin() &&
           SaveOwnedEvent(db, entry.TimelineEventID, entry.PlantUUID, entry.CareDate, CareEventType(entry), details) &&
           Run(db,
               "UPDATE PlantCareEntries SET TimelineEventID=?,CareDate=?,Action=?,Product=?,AmountMl=?,EC=?,PH=?,"
               "RunoffMl=?,Notes=? WHERE ID=? AND PlantUUID=?;",
               entry.TimelineEventID, entry.CareDate, entry.Action, entry.Product, entry.AmountMl, entry.EC, entry.PH,
               entry.RunoffMl, entry.Notes, entry.ID, entry.PlantUUID) &&
           transaction.Commit();
}

bool PlantRepository::DeletePlantCareEntry(std::int64_t id)
{
    sqlite3* db = DB.NativeHandle();
    std::int64_t eventID = 0;
    if (id == 0 || !Fetch(db, "SELECT COALESCE(TimelineEventID,0) FROM PlantCareEntries WHERE ID=?;", eventID,
                          ReadValue<std::int64_t>, id))
        return false;
    Transaction transaction(db);
    return transaction.Begin() && Run(db, "DELETE FROM PlantCareEntries WHERE ID=?;", id) &&
           (eventID == 0 || DeleteEvent(db, eventID)) && transaction.Commit();
}

std::string PlantRepository::CareTimelineDetails(const PlantCareEntry& entry) const
{
    std::string text;
    if (!entry.Product.empty())
        text += entry.Product + " | ";
    AppendFixed(text, entry.AmountMl, 0);
    text += " ml";
    if (entry.EC > 0)
        AppendFixed(text += " | EC ", entry.EC, 2);
    if (entry.PH > 0)
        AppendFixed(text += " | pH ", entry.PH, 2);
    if (entry.RunoffMl > 0)
    {
        AppendFixed(text += " | Runoff ", entry.RunoffMl, 0);
        text += " ml";
    }
    if (!entry.Notes.empty())
        text += " | " + entry.Notes;
    return text;
}

// ---------------------------------------------------------------------------------------------------------------------
// Harvest records

namespace
{

bool SaveHarvestRow(sqlite3* db, HarvestRecord& record)
{
    if (record.ID != 0)
        return Run(db,
                   "UPDATE HarvestRecords SET TimelineEventID=?,HarvestDate=?,WetWeightG=?,DryWeightG=?,"
                   "QualityRating=?,SeedYield=?,CureOutcome=?,Notes=? WHERE ID=? AND PlantUUID=?;",
                   record.TimelineEventID, record.HarvestDate, record.WetWeightG, record.DryWeightG,
                   record.QualityRating, record.SeedYield, record.CureOutcome, record.Notes, record.ID,
                   record.PlantUUID);
    return Insert(db, record.ID,
                  "INSERT INTO HarvestRecords(TimelineEventID,PlantUUID,HarvestDate,WetWeightG,DryWeightG,"
                  "QualityRating,SeedYield,CureOutcome,Notes) VALUES(?,?,?,?,?,?,?,?,?);",
                  record.TimelineEventID, record.PlantUUID, record.HarvestDate, record.WetWeightG, record.DryWeightG,
                  record.QualityRating, record.SeedYield, record.CureOutcome, record.Notes);
}

} // namespace

bool PlantRepository::GetHarvestRecord(const std::string& plantUUID, HarvestRecord& out)
{
    const std::string key = plantUUID; // a copy, since `plantUUID` may be a member of `out`
    out = {};
    return Fetch(
        DB.NativeHandle(),
        "SELECT ID,COALESCE(TimelineEventID,0),PlantUUID,HarvestDate,WetWeightG,DryWeightG,QualityRating,SeedYield,"
        "CureOutcome,Notes FROM HarvestRecords WHERE PlantUUID=?;",
        out,
        [](sqlite3_stmt* row, HarvestRecord& record)
        {
            ReadAll(row, record.ID, record.TimelineEventID, record.PlantUUID, record.HarvestDate, record.WetWeightG,
                    record.DryWeightG, record.QualityRating, record.SeedYield, record.CureOutcome, record.Notes);
        },
        key);
}

bool PlantRepository::SaveHarvestRecord(Plant& plant, HarvestRecord& record)
{
    if (plant.UUID.empty())
        return false;
    record.PlantUUID = plant.UUID;
    if (record.HarvestDate.empty())
        record.HarvestDate = PlantEventCurrentDate();

    sqlite3* db = DB.NativeHandle();
    const std::string details = HarvestTimelineDetails(record);
    Transaction transaction(db);
    if (!transaction.Begin() ||
        !SaveOwnedEvent(db, record.TimelineEventID, record.PlantUUID, record.HarvestDate, PlantEventType::Harvest,
                        details) ||
        !SaveHarvestRow(db, record) ||
        !Run(db, "UPDATE Plants SET Stage='Harvested',HarvestDate=? WHERE UUID=?;", record.HarvestDate, plant.UUID) ||
        !transaction.Commit())
        return false;
    plant.Stage = PlantStage::Harvested;
    plant.HarvestDate = record.HarvestDate;
    return true;
}

bool PlantRepository::DeleteHarvestRecord(const std::string& plantUUID)
{
    HarvestRecord record;
    if (!GetHarvestRecord(plantUUID, record))
        return false;
    sqlite3* db = DB.NativeHandle();
    Transaction transaction(db);
    return transaction.Begin() && Run(db, "DELETE FROM HarvestRecords WHERE PlantUUID=?;", plantUUID) &&
           (record.TimelineEventID == 0 || DeleteEvent(db, record.TimelineEventID)) && transaction.Commit();
}

std::string PlantRepository::HarvestTimelineDetails(const HarvestRecord& record) const
{
    std::string text = "Wet ";
    AppendFixed(text, record.WetWeightG, 1);
    AppendFixed(text += " g | Dry ", record.DryWeightG, 1);
    text += " g";
    if (record.SeedYield > 0)
        text += " | Seeds " + std::to_string(record.SeedYield);
    if (record.QualityRating > 0.0)
    {
        AppendFixed(text += " | Quality ", record.QualityRating, 1);
        text += "/10";
    }
    if (!record.CureOutcome.empty())
        text += " | " + record.CureOutcome;
    if (!record.Notes.empty())
        text += " | " + record.Notes;
    return text;
}

// ---------------------------------------------------------------------------------------------------------------------
// Photos

bool PlantRepository::ListPlantPhotos(const std::string& plantUUID, std::vector<PlantPhoto>& out)
{
    return List(
        DB.NativeHandle(),
        "SELECT ID,UUID,PlantUUID,PhotoDate,FilePath,Caption FROM PlantPhotos WHERE PlantUUID=? "
        "ORDER BY PhotoDate DESC,ID DESC;",
        out,
        [](sqlite3_stmt* row, PlantPhoto& photo)
        { ReadAll(row, photo.ID, photo.UUID, photo.PlantUUID, photo.PhotoDate, photo.FilePath, photo.Caption); },
        plantUUID);
}

bool PlantRepository::CreatePlantPhoto(PlantPhoto& photo)
{
    if (photo.PlantUUID.empty() || photo.FilePath.empty())
        return false;
    if (photo.UUID.empty())
        photo.UUID = CreatePlantUUID();
    return Insert(DB.NativeHandle(), photo.ID,
                  "INSERT INTO PlantPhotos(UUID,PlantUUID,PhotoDate,FilePath,Caption) VALUES(?,?,?,?,?);", photo.UUID,
                  photo.PlantUUID, photo.PhotoDate, photo.FilePath, photo.Caption);
}

bool PlantRepository::UpdatePlantPhoto(const PlantPhoto& photo)
{
    return photo.ID != 0 && !photo.UUID.empty() && !photo.PlantUUID.empty() && !photo.FilePath.empty() &&
           Run(DB.NativeHandle(),
               "UPDATE PlantPhotos SET PhotoDate=?,FilePath=?,Caption=? WHERE UUID=? AND PlantUUID=?;", photo.PhotoDate,
               photo.FilePath, photo.Caption, photo.UUID, photo.PlantUUID);
}

bool PlantRepository::DeletePlantPhoto(const std::string& photoUUID)
{
    return !photoUUID.empty() && Run(DB.NativeHandle(), "DELETE FROM PlantPhotos WHERE UUID=?;", photoUUID);
}

// ---------------------------------------------------------------------------------------------------------------------
// Health observations

namespace
{

int ClampSeverity(int severity)
{
    return std::clamp(severity, 1, 5);
}

} // namespace

bool PlantRepository::ListPlantHealthObservations(const std::string& plantUUID,
                                                  std::vector<PlantHealthObservation>& out)
{
    return List(
        DB.NativeHandle(),
        "SELECT ID,PlantUUID,ObservationDate,Issue,Severity,Treatment,Notes FROM PlantHealthObservations "
        "WHERE PlantUUID=? ORDER BY ObservationDate DESC,ID DESC;",
        out,
        [](sqlite3_stmt* row, PlantHealthObservation& o)
        { ReadAll(row, o.ID, o.PlantUUID, o.ObservationDate, o.Issue, o.Severity, o.Treatment, o.Notes); },
        plantUUID);
}

bool PlantRepository::CreatePlantHealthObservation(PlantHealthObservation& o)
{
    if (o.PlantUUID.empty() || o.Issue.empty())
        return false;
    o.Severity = ClampSeverity(o.Severity);
    return Insert(DB.NativeHandle(), o.ID,
                  "INSERT INTO PlantHealthObservations(PlantUUID,ObservationDate,Issue,Severity,Treatment,Notes) "
                  "VALUES(?,?,?,?,?,?);",
                  o.PlantUUID, o.ObservationDate, o.Issue, o.Severity, o.Treatment, o.Notes);
}

bool PlantRepository::UpdatePlantHealthObservation(const PlantHealthObservation& o)
{
    return o.ID != 0 && !o.PlantUUID.empty() && !o.Issue.empty() &&
           Run(DB.NativeHandle(),
               "UPDATE PlantHealthObservations SET ObservationDate=?,Issue=?,Severity=?,Treatment=?,Notes=? "
               "WHERE ID=? AND PlantUUID=?;",
               o.ObservationDate, o.Issue, ClampSeverity(o.Severity), o.Treatment, o.Notes, o.ID, o.PlantUUID);
}

bool PlantRepository::DeletePlantHealthObservation(std::int64_t id)
{
    return id != 0 && Run(DB.NativeHandle(), "DELETE FROM PlantHealthObservations WHERE ID=?;", id);
}

// ---------------------------------------------------------------------------------------------------------------------
// Journal entries

bool PlantRepository::ListPlantJournalEntries(const std::string& plantUUID, std::vector<PlantJournalEntry>& out)
{
    return List(
        DB.NativeHandle(),
        "SELECT ID,PlantUUID,EntryDate,Type,Details FROM PlantJournalEntries WHERE PlantUUID=? "
        "ORDER BY EntryDate DESC,ID DESC;",
        out,
        [](sqlite3_stmt* row, PlantJournalEntry& e)
        { ReadAll(row, e.ID, e.PlantUUID, e.EntryDate, e.Type, e.Details); },
        plantUUID);
}

bool PlantRepository::CreatePlantJournalEntry(PlantJournalEntry& e)
{
    return !e.PlantUUID.empty() &&
           Insert(DB.NativeHandle(), e.ID,
                  "INSERT INTO PlantJournalEntries(PlantUUID,EntryDate,Type,Details) VALUES(?,?,?,?);", e.PlantUUID,
                  e.EntryDate, e.Type, e.Details);
}

bool PlantRepository::UpdatePlantJournalEntry(const PlantJournalEntry& e)
{
    return e.ID != 0 && !e.PlantUUID.empty() &&
           Run(DB.NativeHandle(),
               "UPDATE PlantJournalEntries SET EntryDate=?,Type=?,Details=? WHERE ID=? AND PlantUUID=?;", e.EntryDate,
               e.Type, e.Details, e.ID, e.PlantUUID);
}

bool PlantRepository::DeletePlantJournalEntry(std::int64_t id)
{
    return id != 0 && Run(DB.NativeHandle(), "DELETE FROM PlantJournalEntries WHERE ID=?;", id);
}
