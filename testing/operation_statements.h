#pragma once

// The exact statements that several groups of operations run.
namespace SQL
{

inline constexpr auto Begin = "BEGIN IMMEDIATE;";
inline constexpr auto Commit = "COMMIT;";
inline constexpr auto Rollback = "ROLLBACK;";

inline constexpr auto RegisterStrain = "INSERT INTO Strains(Name) VALUES(?) ON CONFLICT(Name) DO NOTHING;";
inline constexpr auto ListPlants =
    "SELECT ID,UUID,Name,Strain,COALESCE((SELECT UUID FROM Plants m WHERE m.ID=p.MotherPlantID),''),Stage,Sex,Tent,"
    "PotSize,Medium,SeedDate,FlipHeightCm,FinalHeightCm,CloneDate,TransplantDate,FlipDate,HarvestDate,Notes FROM "
    "Plants p ORDER BY Strain COLLATE NOCASE,Name COLLATE NOCASE;";
inline constexpr auto InsertPlant =
    "INSERT INTO Plants(UUID,Name,Strain,MotherPlantID,Stage,Sex,Tent,PotSize,Medium,SeedDate,FlipHeightCm,"
    "FinalHeightCm,CloneDate,TransplantDate,FlipDate,HarvestDate,Notes) VALUES(?,?,?,(SELECT ID FROM Plants WHERE "
    "UUID=?),?,?,?,?,?,?,?,?,?,?,?,?,?);";
inline constexpr auto UpdatePlant =
    "UPDATE Plants SET Name=?,Strain=?,MotherPlantID=(SELECT ID FROM Plants WHERE UUID=?),Stage=?,Sex=?,Tent=?,"
    "PotSize=?,Medium=?,SeedDate=?,FlipHeightCm=?,FinalHeightCm=?,CloneDate=?,TransplantDate=?,FlipDate=?,"
    "HarvestDate=?,Notes=? WHERE UUID=?;";

inline constexpr auto InsertEvent = "INSERT INTO PlantEvents(PlantUUID,EventDate,EventType,Details) VALUES(?,?,?,?);";
inline constexpr auto UpdateEvent =
    "UPDATE PlantEvents SET EventDate=?,EventType=?,Details=? WHERE ID=? AND PlantUUID=?;";
inline constexpr auto DeleteEvent = "DELETE FROM PlantEvents WHERE ID=?;";

} // namespace SQL
