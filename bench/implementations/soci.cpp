// SOCI as its manual shows it: values and fields bound by use and into, lists by a prepared statement that fetches row
// after row into one record: https://soci.sourceforge.net/doc/release/4.0/

#include "implementation.h"
#include "statements.h"

#include <optional>
#include <utility>

#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>

namespace
{

// Returns what `work` returns, or false where the library throws.
template <typename Work> bool Attempt(const Work& work)
{
    try
    {
        return work();
    }
    catch (const soci::soci_error&)
    {
        return false;
    }
}

class SOCI : public Implementation
{
  public:
    bool Open(const std::string& path) override
    {
        return Attempt(
            [&]
            {
                DB.emplace(soci::sqlite3, "dbname=\"" + path + "\"");
                sqlite_api::sqlite3_busy_timeout(NativeHandle(),
                                                 2500); // the connection string accepts whole seconds only
                return Migrate();
            });
    }

    void Close() override { DB.reset(); }

    bool Execute(const std::string& statements) override
    {
        // A statement of the session ends at the first semicolon.
        return sqlite_api::sqlite3_exec(NativeHandle(), statements.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    }

    bool ListPlants(std::vector<Plant>& out) override
    {
        out.clear();
        return Attempt(
            [&]
            {
                Plant plant;
                std::string stage;
                std::string sex;
                soci::statement query =
                    (DB->prepare << SQL::ListPlants, soci::into(plant.ID), soci::into(plant.UUID),
                     soci::into(plant.Name), soci::into(plant.Strain), soci::into(plant.MotherPlantUUID),
                     soci::into(stage), soci::into(sex), soci::into(plant.Tent), soci::into(plant.PotSize),
                     soci::into(plant.Medium), soci::into(plant.SeedDate), soci::into(plant.FlipHeightCm),
                     soci::into(plant.FinalHeightCm), soci::into(plant.CloneDate), soci::into(plant.TransplantDate),
                     soci::into(plant.FlipDate), soci::into(plant.HarvestDate), soci::into(plant.Notes));
                query.execute();
                while (query.fetch())
                {
                    plant.Stage = StageNamed(stage);
                    plant.Sex = SexNamed(sex);
                    out.push_back(plant);
                }
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
                    plant.UUID = CreatePlantUUID();
                if (!HasValidMotherLink(plant))
                    return false;
                Run(SQL::InsertPlant, plant.UUID, plant.Name, plant.Strain, plant.MotherPlantUUID, Name(plant.Stage),
                    Name(plant.Sex), plant.Tent, plant.PotSize, plant.Medium, plant.SeedDate, plant.FlipHeightCm,
                    plant.FinalHeightCm, plant.CloneDate, plant.TransplantDate, plant.FlipDate, plant.HarvestDate,
                    plant.Notes);
                plant.ID = LastID();
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
                *DB << SQL::StrainSummary, soci::into(out.StrainID), soci::into(out.StrainName),
                    soci::into(out.TotalPlants), soci::into(out.Seed), soci::into(out.Clone), soci::into(out.Veg),
                    soci::into(out.Flower), soci::into(out.Dry), soci::into(out.Cure), soci::into(out.Harvested),
                    soci::into(out.Archived), soci::into(out.HarvestCount), soci::into(out.AverageDryWeightG),
                    soci::into(out.AverageQuality), soci::use(strainID);
                return DB->got_data();
            });
    }

    bool ListPlantEvents(const std::string& plantUUID, std::vector<PlantEvent>& out) override
    {
        out.clear();
        return Attempt(
            [&]
            {
                PlantEvent event;
                std::string type;
                soci::statement query =
                    (DB->prepare << SQL::ListEvents, soci::into(event.ID), soci::into(event.PlantUUID),
                     soci::into(event.EventDate), soci::into(type), soci::into(event.Details), soci::use(plantUUID));
                query.execute();
                while (query.fetch())
                {
                    event.Type = EventTypeNamed(type);
                    out.push_back(event);
                }
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
                                                   entry.ID = LastID();
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
            *DB << SQL::EventOfCareEntry, soci::into(eventID), soci::use(id);
            return DB->got_data();
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
        const soci::rowset<soci::row> rows = (DB->prepare << sql);
        for (const soci::row& row : rows)
            texts.push_back(row.get<std::string>(static_cast<std::size_t>(column)));
        return texts;
    }

  private:
    sqlite_api::sqlite3* NativeHandle()
    {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-static-cast-downcast): the library does not export the type's name
        return static_cast<soci::sqlite3_session_backend*>(DB->get_backend())->conn_;
    }

    std::int64_t LastID()
    {
        long long id = 0;
        DB->get_last_insert_id("", id); // SQLite keeps one last row ID for all tables
        return id;
    }

    template <typename... Values> void Run(const char* sql, const Values&... values)
    {
        ((*DB << sql), ..., soci::use(values));
    }

    template <typename Work> bool InTransaction(const Work& work)
    {
        return Attempt(
            [&]
            {
                *DB << SQL::Begin; // soci::transaction locks at its first write only
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
        id = LastID();
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
        record.ID = LastID();
    }

    std::optional<soci::session> DB;
};

} // namespace

std::unique_ptr<Implementation> MakeSOCI()
{
    return std::make_unique<SOCI>();
}
