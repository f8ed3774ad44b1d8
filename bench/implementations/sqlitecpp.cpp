// SQLiteCpp as its README and examples show it: a Statement for each call, a Transaction for what belongs together, and
// exceptions for what fails: https://github.com/SRombauts/SQLiteCpp

#include "implementation.h"
#include "statements.h"

#include <optional>
#include <utility>

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

namespace
{

// Returns what `work` returns, or false where the library throws.
template <typename Work> bool Attempt(const Work& work)
{
    try
    {
        return work();
    }
    catch (const SQLite::Exception&)
    {
        return false;
    }
}

class SQLiteCpp : public Implementation
{
  public:
    bool Open(const std::string& path) override
    {
        return Attempt(
            [&]
            {
                DB.emplace(path, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE | SQLite::OPEN_FULLMUTEX, 2500);
                return Migrate();
            });
    }

    void Close() override { DB.reset(); }

    bool Execute(const std::string& statements) override
    {
        return Attempt(
            [&]
            {
                DB->exec(statements);
                return true;
            });
    }

    bool ListPlants(std::vector<Plant>& out) override
    {
        out.clear();
        return Attempt(
            [&]
            {
                SQLite::Statement query(*DB, SQL::ListPlants);
                while (query.executeStep())
                {
                    Plant plant;
                    plant.ID = query.getColumn(0).getInt64();
                    plant.UUID = query.getColumn(1).getString();
                    plant.Name = query.getColumn(2).getString();
                    plant.Strain = query.getColumn(3).getString();
                    plant.MotherPlantUUID = query.getColumn(4).getString();
                    plant.Stage = StageNamed(query.getColumn(5));
                    plant.Sex = SexNamed(query.getColumn(6));
                    plant.Tent = query.getColumn(7).getString();
                    plant.PotSize = query.getColumn(8).getString();
                    plant.Medium = query.getColumn(9).getString();
                    plant.SeedDate = query.getColumn(10).getString();
                    plant.FlipHeightCm = query.getColumn(11).getDouble();
                    plant.FinalHeightCm = query.getColumn(12).getDouble();
                    plant.CloneDate = query.getColumn(13).getString();
                    plant.TransplantDate = query.getColumn(14).getString();
                    plant.FlipDate = query.getColumn(15).getString();
                    plant.HarvestDate = query.getColumn(16).getString();
                    plant.Notes = query.getColumn(17).getString();
                    out.push_back(std::move(plant));
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
                plant.ID = DB->getLastInsertRowid();
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
                SQLite::Statement query(*DB, SQL::StrainSummary);
                query.bind(1, strainID);
                if (!query.executeStep())
                    return false;
                out.StrainID = query.getColumn(0).getInt64();
                out.StrainName = query.getColumn(1).getString();
                out.TotalPlants = query.getColumn(2).getInt();
                out.Seed = query.getColumn(3).getInt();
                out.Clone = query.getColumn(4).getInt();
                out.Veg = query.getColumn(5).getInt();
                out.Flower = query.getColumn(6).getInt();
                out.Dry = query.getColumn(7).getInt();
                out.Cure = query.getColumn(8).getInt();
                out.Harvested = query.getColumn(9).getInt();
                out.Archived = query.getColumn(10).getInt();
                out.HarvestCount = query.getColumn(11).getInt();
                out.AverageDryWeightG = query.getColumn(12).getDouble();
                out.AverageQuality = query.getColumn(13).getDouble();
                return true;
            });
    }

    bool ListPlantEvents(const std::string& plantUUID, std::vector<PlantEvent>& out) override
    {
        out.clear();
        return Attempt(
            [&]
            {
                SQLite::Statement query(*DB, SQL::ListEvents);
                query.bind(1, plantUUID);
                while (query.executeStep())
                {
                    PlantEvent event;
                    event.ID = query.getColumn(0).getInt64();
                    event.PlantUUID = query.getColumn(1).getString();
                    event.EventDate = query.getColumn(2).getString();
                    event.Type = EventTypeNamed(query.getColumn(3));
                    event.Details = query.getColumn(4).getString();
                    out.push_back(std::move(event));
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
                                                   entry.ID = DB->getLastInsertRowid();
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
            SQLite::Statement query(*DB, SQL::EventOfCareEntry);
            query.bind(1, id);
            if (!query.executeStep())
                return false;
            eventID = query.getColumn(0).getInt64();
            return true;
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
        SQLite::Statement query(*DB, sql);
        while (query.executeStep())
            texts.push_back(query.getColumn(column).getString());
        return texts;
    }

  private:
    template <typename... Values> void Run(const char* sql, const Values&... values)
    {
        SQLite::Statement statement(*DB, sql);
        SQLite::bind(statement, values...);
        statement.exec();
    }

    template <typename Work> bool InTransaction(const Work& work)
    {
        return Attempt(
            [&]
            {
                SQLite::Transaction transaction(*DB, SQLite::TransactionBehavior::IMMEDIATE);
                work();
                transaction.commit();
                return true;
            });
    }

    void InsertEvent(std::int64_t& id, const std::string& plantUUID, const std::string& date, PlantEventType type,
                     const std::string& details)
    {
        Run(SQL::InsertEvent, plantUUID, date, Name(type), details);
        id = DB->getLastInsertRowid();
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
        record.ID = DB->getLastInsertRowid();
    }

    std::optional<SQLite::Database> DB;
};

} // namespace

std::unique_ptr<Implementation> MakeSQLiteCpp()
{
    return std::make_unique<SQLiteCpp>();
}
