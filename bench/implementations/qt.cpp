// Qt SQL as its manual shows it: a forward-only QSqlQuery for each call, with values bound by position:
// https://doc.qt.io/qt-6/sql-sqlstatements.html

#include "implementation.h"
#include "statements.h"

#include <utility>

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlQuery>
#include <QString>
#include <QUuid>
#include <QVariant>
#include <sqlite3.h>

namespace
{

QVariant Value(std::int64_t number)
{
    return {static_cast<qlonglong>(number)};
}

QVariant Value(int number)
{
    return {number};
}

QVariant Value(double number)
{
    return {number};
}

QVariant Value(const std::string& text)
{
    return {QString::fromStdString(text)};
}

std::string Text(const QSqlQuery& query, int column)
{
    return query.value(column).toString().toStdString();
}

template <typename... Values> bool Run(QSqlQuery& query, const char* sql, const Values&... values)
{
    query.setForwardOnly(true);
    if (!query.prepare(QString::fromUtf8(sql)))
        return false;
    (query.addBindValue(Value(values)), ...);
    return query.exec();
}

class QtSQL : public Implementation
{
  public:
    QtSQL() { DB.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=2500")); }

    ~QtSQL() override
    {
        const QString name = DB.connectionName();
        DB = {}; // a connection can be removed only when no object holds it
        QSqlDatabase::removeDatabase(name);
    }

    QtSQL(const QtSQL&) = delete;
    QtSQL& operator=(const QtSQL&) = delete;

    bool Open(const std::string& path) override
    {
        DB.setDatabaseName(QString::fromStdString(path));
        return DB.open() && Migrate();
    }

    void Close() override { DB.close(); }

    // A QSqlQuery runs one statement only.
    bool Execute(const std::string& statements) override
    {
        const QVariant handle = DB.driver()->handle();
        return sqlite3_exec(*static_cast<sqlite3* const*>(handle.constData()), statements.c_str(), nullptr, nullptr,
                            nullptr) == SQLITE_OK;
    }

    std::string CreateUUID() override { return QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString(); }

    bool ListPlants(std::vector<Plant>& out) override
    {
        out.clear();
        QSqlQuery query(DB);
        if (!Run(query, SQL::ListPlants))
            return false;
        while (query.next())
        {
            Plant plant;
            plant.ID = query.value(0).toLongLong();
            plant.UUID = Text(query, 1);
            plant.Name = Text(query, 2);
            plant.Strain = Text(query, 3);
            plant.MotherPlantUUID = Text(query, 4);
            plant.Stage = StageNamed(Text(query, 5));
            plant.Sex = SexNamed(Text(query, 6));
            plant.Tent = Text(query, 7);
            plant.PotSize = Text(query, 8);
            plant.Medium = Text(query, 9);
            plant.SeedDate = Text(query, 10);
            plant.FlipHeightCm = query.value(11).toDouble();
            plant.FinalHeightCm = query.value(12).toDouble();
            plant.CloneDate = Text(query, 13);
            plant.TransplantDate = Text(query, 14);
            plant.FlipDate = Text(query, 15);
            plant.HarvestDate = Text(query, 16);
            plant.Notes = Text(query, 17);
            out.push_back(std::move(plant));
        }
        return true;
    }

    bool CreatePlant(Plant& plant) override
    {
        if (!plant.Strain.empty() && !Write(SQL::RegisterStrain, plant.Strain))
            return false;
        if (plant.UUID.empty())
            plant.UUID = CreateUUID();
        return HasValidMotherLink(plant) &&
               Insert(plant.ID, SQL::InsertPlant, plant.UUID, plant.Name, plant.Strain, plant.MotherPlantUUID,
                      Name(plant.Stage), Name(plant.Sex), plant.Tent, plant.PotSize, plant.Medium, plant.SeedDate,
                      plant.FlipHeightCm, plant.FinalHeightCm, plant.CloneDate, plant.TransplantDate, plant.FlipDate,
                      plant.HarvestDate, plant.Notes);
    }

    bool DeletePlant(const std::string& uuid) override { return Write(SQL::DeletePlant, uuid); }

    bool GetStrainSummary(std::int64_t strainID, StrainSummary& out) override
    {
        out = {};
        QSqlQuery query(DB);
        if (!Run(query, SQL::StrainSummary, strainID) || !query.next())
            return false;
        out.StrainID = query.value(0).toLongLong();
        out.StrainName = Text(query, 1);
        out.TotalPlants = query.value(2).toInt();
        out.Seed = query.value(3).toInt();
        out.Clone = query.value(4).toInt();
        out.Veg = query.value(5).toInt();
        out.Flower = query.value(6).toInt();
        out.Dry = query.value(7).toInt();
        out.Cure = query.value(8).toInt();
        out.Harvested = query.value(9).toInt();
        out.Archived = query.value(10).toInt();
        out.HarvestCount = query.value(11).toInt();
        out.AverageDryWeightG = query.value(12).toDouble();
        out.AverageQuality = query.value(13).toDouble();
        return true;
    }

    bool ListPlantEvents(const std::string& plantUUID, std::vector<PlantEvent>& out) override
    {
        out.clear();
        QSqlQuery query(DB);
        if (!Run(query, SQL::ListEvents, plantUUID))
            return false;
        while (query.next())
        {
            PlantEvent event;
            event.ID = query.value(0).toLongLong();
            event.PlantUUID = Text(query, 1);
            event.EventDate = Text(query, 2);
            event.Type = EventTypeNamed(Text(query, 3));
            event.Details = Text(query, 4);
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
            !Insert(entry.ID, SQL::InsertCareEntry, entry.TimelineEventID, entry.PlantUUID, entry.CareDate,
                    Name(entry.Action), entry.Product, entry.AmountMl, entry.EC, entry.PH, entry.RunoffMl, entry.Notes))
            return RollBack();
        return Commit();
    }

    bool UpdatePlantCareEntry(PlantCareEntry& entry) override
    {
        if (entry.ID == 0 || entry.PlantUUID.empty() || !Begin())
            return false;
        if (!SaveEvent(entry.TimelineEventID, entry.PlantUUID, entry.CareDate, CareEventType(entry),
                       CareDetails(entry)) ||
            !Write(SQL::UpdateCareEntry, entry.TimelineEventID, entry.CareDate, Name(entry.Action), entry.Product,
                   entry.AmountMl, entry.EC, entry.PH, entry.RunoffMl, entry.Notes, entry.ID, entry.PlantUUID))
            return RollBack();
        return Commit();
    }

    bool DeletePlantCareEntry(std::int64_t id) override
    {
        std::int64_t eventID = 0;
        {
            QSqlQuery query(DB);
            if (id == 0 || !Run(query, SQL::EventOfCareEntry, id) || !query.next())
                return false;
            eventID = query.value(0).toLongLong();
        }
        if (!Begin())
            return false;
        if (!Write(SQL::DeleteCareEntry, id) || (eventID != 0 && !Write(SQL::DeleteEvent, eventID)))
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
            !SaveHarvestRow(record) || !Write(SQL::HarvestPlant, record.HarvestDate, plant.UUID))
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
        QSqlQuery query(DB);
        Run(query, sql.c_str());
        while (query.next())
            texts.push_back(Text(query, column));
        return texts;
    }

  private:
    template <typename... Values> bool Write(const char* sql, const Values&... values)
    {
        QSqlQuery query(DB);
        return Run(query, sql, values...);
    }

    template <typename... Values> bool Insert(std::int64_t& id, const char* sql, const Values&... values)
    {
        QSqlQuery query(DB);
        if (!Run(query, sql, values...))
            return false;
        id = query.lastInsertId().toLongLong();
        return true;
    }

    bool Begin() { return Write(SQL::Begin); } // QSqlDatabase::transaction locks at its first write only

    bool Commit() { return DB.commit() || RollBack(); }

    bool RollBack()
    {
        DB.rollback();
        return false;
    }

    bool InsertEvent(std::int64_t& id, const std::string& plantUUID, const std::string& date, PlantEventType type,
                     const std::string& details)
    {
        return Insert(id, SQL::InsertEvent, plantUUID, date, Name(type), details);
    }

    bool SaveEvent(std::int64_t& id, const std::string& plantUUID, const std::string& date, PlantEventType type,
                   const std::string& details)
    {
        return id == 0 ? InsertEvent(id, plantUUID, date, type, details)
                       : Write(SQL::UpdateEvent, date, Name(type), details, id, plantUUID);
    }

    bool SaveHarvestRow(HarvestRecord& record)
    {
        return record.ID == 0 ? Insert(record.ID, SQL::InsertHarvest, record.TimelineEventID, record.PlantUUID,
                                       record.HarvestDate, record.WetWeightG, record.DryWeightG, record.QualityRating,
                                       record.SeedYield, record.CureOutcome, record.Notes)
                              : Write(SQL::UpdateHarvest, record.TimelineEventID, record.HarvestDate, record.WetWeightG,
                                      record.DryWeightG, record.QualityRating, record.SeedYield, record.CureOutcome,
                                      record.Notes, record.ID, record.PlantUUID);
    }

    QSqlDatabase DB = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QUuid::createUuid().toString());
};

} // namespace

std::unique_ptr<Implementation> MakeQt()
{
    // Qt loads its drivers as plug-ins, and needs an application for it.
    static char name[] = "bench";
    static char* arguments[] = {name, nullptr};
    static int count = 1;
    static const QCoreApplication application(count, arguments);
    return std::make_unique<QtSQL>();
}
