#pragma once

#include "testing/operation_statements.h"

// The statements of the operations that are measured, as the library runs them. Implementations keep them by their
// address.
namespace SQL
{

inline constexpr auto DeletePlant = "DELETE FROM Plants WHERE UUID=?;";
inline constexpr auto StrainSummary =
    "SELECT s.ID,s.Name,COUNT(p.ID),COALESCE(SUM(p.Stage='Seed'),0),COALESCE(SUM(p.Stage='Clone'),0),"
    "COALESCE(SUM(p.Stage='Veg'),0),COALESCE(SUM(p.Stage='Flower'),0),COALESCE(SUM(p.Stage='Dry'),0),"
    "COALESCE(SUM(p.Stage='Cure'),0),COALESCE(SUM(p.Stage='Harvested'),0),COALESCE(SUM(p.Stage='Archived'),0),"
    "COUNT(h.ID),COALESCE(AVG(NULLIF(h.DryWeightG,0)),0),COALESCE(AVG(NULLIF(h.QualityRating,0)),0) "
    "FROM Strains s LEFT JOIN Plants p ON p.Strain=s.Name LEFT JOIN HarvestRecords h ON h.PlantUUID=p.UUID "
    "WHERE s.ID=? GROUP BY s.ID,s.Name;";
inline constexpr auto ListEvents = "SELECT ID,PlantUUID,EventDate,EventType,Details FROM PlantEvents WHERE PlantUUID=? "
                                   "ORDER BY EventDate DESC,ID DESC;";
inline constexpr auto InsertCareEntry =
    "INSERT INTO PlantCareEntries(TimelineEventID,PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,RunoffMl,Notes) "
    "VALUES(?,?,?,?,?,?,?,?,?,?);";
inline constexpr auto UpdateCareEntry =
    "UPDATE PlantCareEntries SET TimelineEventID=?,CareDate=?,Action=?,Product=?,AmountMl=?,EC=?,PH=?,RunoffMl=?,"
    "Notes=? WHERE ID=? AND PlantUUID=?;";
inline constexpr auto EventOfCareEntry = "SELECT COALESCE(TimelineEventID,0) FROM PlantCareEntries WHERE ID=?;";
inline constexpr auto DeleteCareEntry = "DELETE FROM PlantCareEntries WHERE ID=?;";
inline constexpr auto InsertHarvest =
    "INSERT INTO HarvestRecords(TimelineEventID,PlantUUID,HarvestDate,WetWeightG,DryWeightG,QualityRating,SeedYield,"
    "CureOutcome,Notes) VALUES(?,?,?,?,?,?,?,?,?);";
inline constexpr auto UpdateHarvest =
    "UPDATE HarvestRecords SET TimelineEventID=?,HarvestDate=?,WetWeightG=?,DryWeightG=?,QualityRating=?,SeedYield=?,"
    "CureOutcome=?,Notes=? WHERE ID=? AND PlantUUID=?;";
inline constexpr auto HarvestPlant = "UPDATE Plants SET Stage='Harvested',HarvestDate=? WHERE UUID=?;";

inline constexpr auto ForeignKeys = "PRAGMA foreign_keys=ON;";
inline constexpr auto EventTable = "SELECT sql FROM sqlite_master WHERE type='table' AND name='PlantEvents';";

} // namespace SQL
