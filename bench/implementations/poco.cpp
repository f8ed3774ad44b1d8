// Poco Data as its manual shows it: statements with use, into and now, and a TypeHandler for each record that fills
// lists: https://docs.pocoproject.org/current/00200-DataUserManual.html

#include "implementation.h"
#include "statements.h"

#include <optional>

#include <Poco/Data/RecordSet.h>
#include <Poco/Data/SQLite/Connector.h>
#include <Poco/Data/SQLite/Utility.h>
#include <Poco/Data/Session.h>
#include <Poco/Data/TypeHandler.h>
#include <Poco/Exception.h>
#include <Poco/UUIDGenerator.h>
#include <sqlite3.h>

namespace
{

// The implementation's names for the enumerations.
struct Names : Implementation
{
    using Implementation::EventTypeNamed;
    using Implementation::SexNamed;
    using Implementation::StageNamed;
};

} // namespace

// Only what reading needs: no statement binds a whole record, and SQLite has no columns to prepare.
// NOLINTBEGIN(readability-identifier-naming): the library's names
namespace Poco::Data
{

template <> class TypeHandler<Plant>
{
  public:
    static std::size_t size() { return 18; }

    static void extract(std::size_t pos, Plant& plant, const Plant&, AbstractExtractor::Ptr row)
    {
        std::string stage;
        std::string sex;
        row->extract(pos++, plant.ID);
        row->extract(pos++, plant.UUID);
        row->extract(pos++, plant.Name);
        row->extract(pos++, plant.Strain);
        row->extract(pos++, plant.MotherPlantUUID);
        row->extract(pos++, stage);
        row->extract(pos++, sex);
        row->extract(pos++, plant.Tent);
        row->extract(pos++, plant.PotSize);
        row->extract(pos++, plant.Medium);
        row->extract(pos++, plant.SeedDate);
        row->extract(pos++, plant.FlipHeightCm);
        row->extract(pos++, plant.FinalHeightCm);
        row->extract(pos++, plant.CloneDate);
        row->extract(pos++, plant.TransplantDate);
        row->extract(pos++, plant.FlipDate);
        row->extract(pos++, plant.HarvestDate);
        row->extract(pos, plant.Notes);
        plant.Stage = Names::StageNamed(stage);
        plant.Sex = Names::SexNamed(sex);
    }

    static void prepare(std::size_t, const Plant&, const AbstractPreparator::Ptr&) {}
};

template <> class TypeHandler<PlantEvent>
{
  public:
    static std::size_t size() { return 5; }

    static void extract(std::size_t pos, PlantEvent& event, const PlantEvent&, AbstractExtractor::Ptr row)
    {
        std::string type;
        row->extract(pos++, event.ID);
        row->extract(pos++, event.PlantUUID);
        row->extract(pos++, event.EventDate);
        row->extract(pos++, type);
        row->extract(pos, event.Details);
        event.Type = Names::EventTypeNamed(type);
    }

    static void prepare(std::size_t, const PlantEvent&, const AbstractPreparator::Ptr&) {}
};

} // namespace Poco::Data
// NOLINTEND(readability-identifier-naming)

namespace
{

using namespace Poco::Data::Keywords;

// Returns what `work` returns, or false where the library throws.
template <typename Work> bool Attempt(const Work& work)
{
    try
    {
        return work();
    }
    catch (const Poco::Exception&)
    {
        return false;
    }
}

class PocoData : public Implementation
{
  public:
    bool Open(const std::string& path) override
    {
        return Attempt(
            [&]
            {
                DB.emplace("SQLite", path);
                sqlite3_busy_timeout(NativeHandle(), 2500); // the session's own timeout accepts whole seconds only
                return Migrate();
            });
    }

    void Close() override { DB.reset(); }

    bool Execute(const std::string& statements) override
    {
        return Attempt(
            [&]
            {
                *DB << statements, now;
                return true;
            });
    }

    std::string CreateUUID() override { return Poco::UUIDGenerator::defaultGenerator().createRandom().toString(); }

    bool ListPlants(std::vector<Plant>& out) override
    {
        out.clear();
        return Attempt(
            [&]
            {
                *DB << SQL::ListPlants, into(out), now;
                return true;
            });
    }

    bool CreatePlant(Plant& plant) override
    {
        return Attempt(
            [&]
            {
                if (!plant.Strain.empty())
                    Run(SQL::RegisterStrain, plant.Strain);
                if (plant.UUID.empty())
                    plant.UUID = CreateUUID();
                if (!HasValidMotherLink(plant))
                    return false;
                Run(SQL::InsertPlant, plant.UUID, plant.Name, plant.Strain, plant.MotherPlantUUID, Name(plant.Stage),
                    Name(plant.Sex), plant.Tent, plant.PotSize, plant.Medium, plant.SeedDate, plant.FlipHeightCm,
                    plant.FinalHeightCm, plant.CloneDate, plant.TransplantDate, plant.FlipDate, plant.HarvestDate,
                    plant.Notes);
                plant.ID = sqlite3_last_insert_rowid(NativeHandle());
                return true;
            });
    }

    bool DeletePlant(const std::string& uuid) override
    {
        return Attempt(
            [&]
            {
                Run(SQL::DeletePlant, uuid);
                return true;
            });
    }

    bool GetStrainSummary(std::int64_t strainID, StrainSummary& out) override
    {
        out = {};
        return Attempt(
            [&]
            {
                Poco::Data::Statement query(*DB);
                query << SQL::StrainSummary, into(out.StrainID), into(out.StrainName), into(out.TotalPlants),
                    into(out.Seed), into(out.Clone), into(out.Veg), into(out.Flower), into(out.Dry), into(out.Cure),
                    into(out.Harvested), into(out.Archived), into(out.HarvestCount), into(out.AverageDryWeightG),
                    into(out.AverageQuality), use(strainID);
                return query.execute() == 1;
            });
    }

    bool ListPlantEvents(const std::string& plantUUID, std::vector<PlantEvent>& out) override
    {
        out.clear();
        return Attempt(
            [&]
            {
                *DB << SQL::ListEvents, into(out), useRef(plantUUID), now;
                return true;
            });
    }

    bool CreatePlantCareEntry(PlantCareEntry& entry) override
    {
        return !entry.PlantUUID.empty() && InTransaction(
                                               [&]
                                               {
                                                   InsertEvent(entry.TimelineEventID, entry.PlantUUID, entry.CareDate,
                                                               CareEventType(entry), CareDetails(entry));
                                                   Run(SQL::InsertCareEntry, entry.TimelineEventID, entry.PlantUUID,
                                                       entry.CareDate, Name(entry.Action), entry.Product,
                                                       entry.AmountMl, entry.EC, entry.PH, entry.RunoffMl, entry.Notes);
                                                   entry.ID = sqlite3_last_insert_rowid(NativeHandle());
                                               });
    }

    bool UpdatePlantCareEntry(PlantCareEntry& entry) override
    {
        return entry.ID != 0 && !entry.PlantUUID.empty() &&
               InTransaction(
                   [&]
                   {
                       SaveEvent(entry.TimelineEventID, entry.PlantUUID, entry.CareDate, CareEventType(entry),
                                 CareDetails(entry));
                       Run(SQL::UpdateCareEntry, entry.TimelineEventID, entry.CareDate, Name(entry.Action),
                           entry.Product, entry.AmountMl, entry.EC, entry.PH, entry.RunoffMl, entry.Notes, entry.ID,
                           entry.PlantUUID);
                   });
    }

    bool DeletePlantCareEntry(std::int64_t id) override
    {
        std::int64_t eventID = 0;
        const auto look = [&]
        {
            Poco::Data::Statement query(*DB);
            query << SQL::EventOfCareEntry, into(eventID), use(id);
            return query.execute() == 1;
        };
        return id != 0 && Attempt(look) &&
               InTransaction(
                   [&]
                   {
                       Run(SQL::DeleteCareEntry, id);
                       if (eventID != 0)
                           Run(SQL::DeleteEvent, eventID);
                   });
    }

    bool SaveHarvestRecord(Plant& plant, HarvestRecord& record) override
    {
        if (plant.UUID.empty())
            return false;
        record.PlantUUID = plant.UUID;
        if (record.HarvestDate.empty())
            record.HarvestDate = PlantEventCurrentDate();
        if (!InTransaction(
                [&]
                {
                    SaveEvent(record.TimelineEventID, record.PlantUUID, record.HarvestDate, PlantEventType::Harvest,
                              HarvestDetails(record));
                    SaveHarvestRow(record);
                    Run(SQL::HarvestPlant, record.HarvestDate, plant.UUID);
                }))
            return false;
        plant.Stage = PlantStage::Harvested;
        plant.HarvestDate = record.HarvestDate;
        return true;
    }

  protected:
    std::vector<std::string> Texts(const std::string& sql, int column) override
    {
        std::vector<std::string> texts;
        Poco::Data::Statement query(*DB);
        query << sql, now;
        const Poco::Data::RecordSet rows(query);
        for (std::size_t row = 0; row < rows.rowCount(); ++row)
            texts.push_back(rows.value(static_cast<std::size_t>(column), row).convert<std::string>());
        return texts;
    }

  private:
    // What the session has no functions for.
    sqlite3* NativeHandle() { return Poco::Data::SQLite::Utility::dbHandle(*DB); }

    template <typename... Values> void Run(const char* sql, const Values&... values)
    {
        Poco::Data::Statement statement(*DB);
        statement << sql;
        (statement, ..., useRef(values));
        statement.execute();
    }

    template <typename Work> bool InTransaction(const Work& work)
    {
        return Attempt(
            [&]
            {
                *DB << SQL::Begin, now; // Poco::Data::Transaction locks at its first write only
                try
                {
                    work();
                    DB->commit();
                }
                catch (...)
                {
                    DB->rollback();
                    throw;
                }
                return true;
            });
    }

    void InsertEvent(std::int64_t& id, const std::string& plantUUID, const std::string& date, PlantEventType type,
                     const std::string& details)
    {
        Run(SQL::InsertEvent, plantUUID, date, Name(type), details);
        id = sqlite3_last_insert_rowid(NativeHandle());
    }

    void SaveEvent(std::int64_t& id, const std::string& plantUUID, const std::string& date, PlantEventType type,
                   const std::string& details)
    {
        if (id == 0)
            InsertEvent(id, plantUUID, date, type, details);
        else
            Run(SQL::UpdateEvent, date, Name(type), details, id, plantUUID);
    }

    void SaveHarvestRow(HarvestRecord& record)
    {
        if (record.ID != 0)
            return Run(SQL::UpdateHarvest, record.TimelineEventID, record.HarvestDate, record.WetWeightG,
                       record.DryWeightG, record.QualityRating, record.SeedYield, record.CureOutcome, record.Notes,
                       record.ID, record.PlantUUID);
        Run(SQL::InsertHarvest, record.TimelineEventID, record.PlantUUID, record.HarvestDate, record.WetWeightG,
            record.DryWeightG, record.QualityRating, record.SeedYield, record.CureOutcome, record.Notes);
        record.ID = sqlite3_last_insert_rowid(NativeHandle());
    }

    std::optional<Poco::Data::Session> DB;
};

} // namespace

std::unique_ptr<Implementation> MakePoco()
{
    Poco::Data::SQLite::Connector::registerConnector();
    return std::make_unique<PocoData>();
}
