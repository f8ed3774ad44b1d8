#include "harvests.h"

namespace plant_query
{

HarvestReader::HarvestReader(sqlite3* connection)
    : Rows(connection, "reading the harvest records",
           "SELECT ID,COALESCE(TimelineEventID,0),HarvestDate,WetWeightG,DryWeightG,QualityRating,SeedYield,"
           "CureOutcome,Notes FROM HarvestRecords WHERE PlantUUID=?;")
{
}

std::optional<HarvestRecord> HarvestReader::Of(const std::string& plantUUID)
{
    Rows.Reset();
    Rows.Bind(1, plantUUID);
    if (!Rows.Step())
        return std::nullopt;
    HarvestRecord record;
    record.ID = Rows.Integer(0);
    record.TimelineEventID = Rows.Integer(1);
    record.PlantUUID = plantUUID;
    record.HarvestDate = Rows.Text(2);
    record.WetWeightG = Rows.Number(3);
    record.DryWeightG = Rows.Number(4);
    record.QualityRating = Rows.Number(5);
    record.SeedYield = static_cast<int>(Rows.Integer(6));
    record.CureOutcome = Rows.Text(7);
    record.Notes = Rows.Text(8);
    return record;
}

} // namespace plant_query
