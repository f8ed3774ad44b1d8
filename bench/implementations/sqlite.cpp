// Bare calls to SQLite's C interface, as its own pages show them: https://www.sqlite.org/cintro.html. Once with every
// statement prepared for its call and finalised after it, once with every statement kept.

#include "implementation.h"
#include "statements.h"

#include <array>
#include <iomanip>
#include <ios>
#include <sstream>
#include <type_traits>
#include <unordered_map>
#include <utility>

#include <sqlite3.h>

namespace
{

struct Connection
{
    sqlite3* Handle = nullptr;
    std::unordered_map<const char*, sqlite3_stmt*> Kept;
};

// The common part of both kinds of statement: a handle, null where preparing failed.
class BoundStatement
{
  public:
    BoundStatement(const BoundStatement&) = delete;
    BoundStatement& operator=(const BoundStatement&) = delete;

    bool Bind(int index, std::int64_t value) { return sqlite3_bind_int64(Handle, index, value) == SQLITE_OK; }
    bool Bind(int index, int value) { return sqlite3_bind_int(Handle, index, value) == SQLITE_OK; }
    bool Bind(int index, double value) { return sqlite3_bind_double(Handle, index, value) == SQLITE_OK; }

    bool Bind(int index, const std::string& value)
    {
        return sqlite3_bind_text(Handle, index, value.c_str(), static_cast<int>(value.size()), SQLITE_TRANSIENT) ==
               SQLITE_OK;
    }

    // Binds the values to the ?s from left to right.
    template <typename... Values> bool BindAll(const Values&... values)
    {
        int index = 0;
        return Handle != nullptr && (Bind(++index, values) && ...);
    }

    bool Done() { return sqlite3_step(Handle) == SQLITE_DONE; }
    bool Row() { return sqlite3_step(Handle) == SQLITE_ROW; }

    std::int64_t Int64(int column) { return sqlite3_column_int64(Handle, column); }
    int Int(int column) { return sqlite3_column_int(Handle, column); }
    double Double(int column) { return sqlite3_column_double(Handle, column); }

    std::string Text(int column)
    {
        const unsigned char* text = sqlite3_column_text(Handle, column);
        return text != nullptr ? reinterpret_cast<const char*>(text) : std::string();
    }

  protected:
    explicit BoundStatement(sqlite3_stmt* handle) : Handle(handle) {}
    ~BoundStatement() = default;
    sqlite3_stmt* Native() const { return Handle; }

  private:
    sqlite3_stmt* Handle;
};

class PreparedStatement : public BoundStatement
{
  public:
    PreparedStatement(Connection& connection, const char* sql) : BoundStatement(Prepare(connection, sql)) {}
    ~PreparedStatement() { sqlite3_finalize(Native()); }
    PreparedStatement(const PreparedStatement&) = delete;
    PreparedStatement& operator=(const PreparedStatement&) = delete;

  private:
    static sqlite3_stmt* Prepare(Connection& connection, const char* sql)
    {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(connection.Handle, sql, -1, &statement, nullptr);
        return statement;
    }
};

class KeptStatement : public BoundStatement
{
  public:
    KeptStatement(Connection& connection, const char* sql) : BoundStatement(Keep(connection, sql)) {}
    ~KeptStatement() { sqlite3_reset(Native()); }
    KeptStatement(const KeptStatement&) = delete;
    KeptStatement& operator=(const KeptStatement&) = delete;

  private:
    static sqlite3_stmt* Keep(Connection& connection, const char* sql)
    {
        sqlite3_stmt*& kept = connection.Kept[sql];
        if (kept == nullptr)
            sqlite3_prepare_v3(connection.Handle, sql, -1, SQLITE_PREPARE_PERSISTENT, &kept, nullptr);
        return kept;
    }
};

template <typename Statement> class SQLite : public Implementation
{
  public:
    SQLite() = default;
    ~SQLite() override { SQLite::Close(); }
    SQLite(const SQLite&) = delete;
    SQLite& operator=(const SQLite&) = delete;

    bool Open(const std::string& path) override
    {
        Close();
        if (sqlite3_open_v2(path.c_str(), &DB.Handle,
                            SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, nullptr) != SQLITE_OK)
            return false;
        sqlite3_busy_timeout(DB.Handle, 2500);
        return Migrate();
    }

    void Close() override
    {
        for (const auto& [sql, statement] : DB.Kept)
            sqlite3_finalize(statement);
        DB.Kept.clear();
        sqlite3_close_v2(DB.Handle);
        DB.Handle = nullptr;
    }

    bool Execute(const std::string& statements) override
    {
        return sqlite3_exec(DB.Handle, statements.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    }

    std::string CreateUUID() override
    {
        std::array<unsigned char, 16> bytes{};
        sqlite3_randomness(static_cast<int>(bytes.size()), bytes.data());
        bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
        bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
        std::ostringstream text;
        text << std::hex << std::setfill('0');
        for (std::size_t i = 0; i < bytes.size(); ++i)
            text << (i == 4 || i == 6 || i == 8 || i == 10 ? "-" : "") << std::setw(2) << static_cast<int>(bytes[i]);
        return text.str();
    }

    bool ListPlants(std::vector<Plant>& out) override
    {
        out.clear();
        Statement statement(DB, SQL::ListPlants);
        if (!statement.BindAll())
            return false;
        while (statement.Row())
        {
            Plant plant;
            plant.ID = statement.Int64(0);
            plant.UUID = statement.Text(1);
            plant.Name = statement.Text(2);
            plant.Strain = statement.Text(3);
            plant.MotherPlantUUID = statement.Text(4);
            plant.Stage = StageNamed(statement.Text(5));
            plant.Sex = SexNamed(statement.Text(6));
            plant.Tent = statement.Text(7);
            plant.PotSize = statement.Text(8);
            plant.Medium = statement.Text(9);
            plant.SeedDate = statement.Text(10);
            plant.FlipHeightCm = statement.Double(11);
            plant.FinalHeightCm = statement.Double(12);
            plant.CloneDate = statement.Text(13);
            plant.TransplantDate = statement.Text(14);
            plant.FlipDate = statement.Text(15);
            plant.HarvestDate = statement.Text(16);
            plant.Notes = statement.Text(17);
            out.push_back(std::move(plant));
        }
        return true;
    }

    bool CreatePlant(Plant& plant) override
    {
        if (!plant.Strain.empty() && !Run(SQL::RegisterStrain, plant.Strain))
            return false;
        if (plant.UUID.empty())
            plant.UUID = CreatePlantUUID();
        if (!HasValidMotherLink(plant) ||
            !Run(SQL::InsertPlant, plant.UUID, plant.Name, plant.Strain, plant.MotherPlantUUID, Name(plant.Stage),
                 Name(plant.Sex), plant.Tent, plant.PotSize, plant.Medium, plant.SeedDate, plant.FlipHeightCm,
                 plant.FinalHeightCm, plant.CloneDate, plant.TransplantDate, plant.FlipDate, plant.HarvestDate,
                 plant.Notes))
            return false;
        plant.ID = sqlite3_last_insert_rowid(DB.Handle);
        return true;
    }

    bool DeletePlant(const std::string& uuid) override { return Run(SQL::DeletePlant, uuid); }

    bool GetStrainSummary(std::int64_t strainID, StrainSummary& out) override
    {
        out = {};
        Statement statement(DB, SQL::StrainSummary);
        if (!statement.BindAll(strainID) || !statement.Row())
            return false;
        out.StrainID = statement.Int64(0);
        out.StrainName = statement.Text(1);
        out.TotalPlants = statement.Int(2);
        out.Seed = statement.Int(3);
        out.Clone = statement.Int(4);
        out.Veg = statement.Int(5);
        out.Flower = statement.Int(6);
        out.Dry = statement.Int(7);
        out.Cure = statement.Int(8);
        out.Harvested = statement.Int(9);
        out.Archived = statement.Int(10);
        out.HarvestCount = statement.Int(11);
        out.AverageDryWeightG = statement.Double(12);
        out.AverageQuality = statement.Double(13);
        return true;
    }

    bool ListPlantEvents(const std::string& plantUUID, std::vector<PlantEvent>& out) override
    {
        out.clear();
        Statement statement(DB, SQL::ListEvents);
        if (!statement.BindAll(plantUUID))
            return false;
        while (statement.Row())
        {
            PlantEvent event;
            event.ID = statement.Int64(0);
            event.PlantUUID = statement.Text(1);
            event.EventDate = statement.Text(2);
            event.Type = EventTypeNamed(statement.Text(3));
            event.Details = statement.Text(4);
            out.push_back(std::move(event));
        }
        return true;
    }

    bool CreatePlantCareEntry(PlantCareEntry& entry) override
    {
        if (entry.PlantUUID.empty() || !Begin())
            return false;
        if (!InsertEvent(entry.TimelineEventID, entry.PlantUUID, entry.CareDate, CareEventType(entry),
                         CareDetails(entry)) ||
            !Run(SQL::InsertCareEntry, entry.TimelineEventID, entry.PlantUUID, entry.CareDate, Name(entry.Action),
                 entry.Product, entry.AmountMl, entry.EC, entry.PH, entry.RunoffMl, entry.Notes))
            return RollBack();
        entry.ID = sqlite3_last_insert_rowid(DB.Handle);
        return Commit();
    }

    bool UpdatePlantCareEntry(PlantCareEntry& entry) override
    {
        if (entry.ID == 0 || entry.PlantUUID.empty() || !Begin())
            return false;
        if (!SaveEvent(entry.TimelineEventID, entry.PlantUUID, entry.CareDate, CareEventType(entry),
                       CareDetails(entry)) ||
            !Run(SQL::UpdateCareEntry, entry.TimelineEventID, entry.CareDate, Name(entry.Action), entry.Product,
                 entry.AmountMl, entry.EC, entry.PH, entry.RunoffMl, entry.Notes, entry.ID, entry.PlantUUID))
            return RollBack();
        return Commit();
    }

    bool DeletePlantCareEntry(std::int64_t id) override
    {
        std::int64_t eventID = 0;
        {
            Statement lookup(DB, SQL::EventOfCareEntry);
            if (id == 0 || !lookup.BindAll(id) || !lookup.Row())
                return false;
            eventID = lookup.Int64(0);
        }
        if (!Begin())
            return false;
        if (!Run(SQL::DeleteCareEntry, id) || (eventID != 0 && !Run(SQL::DeleteEvent, eventID)))
            return RollBack();
        return Commit();
    }

    bool SaveHarvestRecord(Plant& plant, HarvestRecord& record) override
    {
        if (plant.UUID.empty())
            return false;
        record.PlantUUID = plant.UUID;
        if (record.HarvestDate.empty())
            record.HarvestDate = PlantEventCurrentDate();
        if (!Begin())
            return false;
        if (!SaveEvent(record.TimelineEventID, record.PlantUUID, record.HarvestDate, PlantEventType::Harvest,
                       HarvestDetails(record)) ||
            !SaveHarvestRow(record) || !Run(SQL::HarvestPlant, record.HarvestDate, plant.UUID))
            return RollBack();
        if (!Commit())
            return false;
        plant.Stage = PlantStage::Harvested;
        plant.HarvestDate = record.HarvestDate;
        return true;
    }

  protected:
    std::vector<std::string> Texts(const std::string& sql, int column) override
    {
        std::vector<std::string> texts;
        PreparedStatement statement(DB, sql.c_str());
        while (statement.Row())
            texts.push_back(statement.Text(column));
        return texts;
    }

  private:
    template <typename... Values> bool Run(const char* sql, const Values&... values)
    {
        Statement statement(DB, sql);
        return statement.BindAll(values...) && statement.Done();
    }

    bool Begin() { return Simple(SQL::Begin); }

    bool Commit() { return Simple(SQL::Commit) || RollBack(); }

    bool RollBack()
    {
        Simple(SQL::Rollback);
        return false;
    }

    // Runs a statement without values or results. sqlite3_exec is the shortest way to prepare one for its call.
    bool Simple(const char* sql)
    {
        if constexpr (std::is_same_v<Statement, PreparedStatement>)
            return sqlite3_exec(DB.Handle, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
        else
            return Run(sql);
    }

    bool InsertEvent(std::int64_t& id, const std::string& plantUUID, const std::string& date, PlantEventType type,
                     const std::string& details)
    {
        if (!Run(SQL::InsertEvent, plantUUID, date, Name(type), details))
            return false;
        id = sqlite3_last_insert_rowid(DB.Handle);
        return true;
    }

    bool SaveEvent(std::int64_t& id, const std::string& plantUUID, const std::string& date, PlantEventType type,
                   const std::string& details)
    {
        return id == 0 ? InsertEvent(id, plantUUID, date, type, details)
                       : Run(SQL::UpdateEvent, date, Name(type), details, id, plantUUID);
    }

    bool SaveHarvestRow(HarvestRecord& record)
    {
        if (record.ID != 0)
            return Run(SQL::UpdateHarvest, record.TimelineEventID, record.HarvestDate, record.WetWeightG,
                       record.DryWeightG, record.QualityRating, record.SeedYield, record.CureOutcome, record.Notes,
                       record.ID, record.PlantUUID);
        if (!Run(SQL::InsertHarvest, record.TimelineEventID, record.PlantUUID, record.HarvestDate, record.WetWeightG,
                 record.DryWeightG, record.QualityRating, record.SeedYield, record.CureOutcome, record.Notes))
            return false;
        record.ID = sqlite3_last_insert_rowid(DB.Handle);
        return true;
    }

    Connection DB;
};

} // namespace

std::unique_ptr<Implementation> MakeSQLite()
{
    return std::make_unique<SQLite<PreparedStatement>>();
}

std::unique_ptr<Implementation> MakeSQLiteKept()
{
    return std::make_unique<SQLite<KeptStatement>>();
}
