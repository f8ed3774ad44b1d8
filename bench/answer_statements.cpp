#include "answer_statements.h"

#include "seed.h"

#include <stdexcept>

namespace
{

// CROSS JOIN keeps the order of the tables: the indexes of the records begin with the plant, and none begins with a
// date. The owner of an event usually has its date, so it is searched there first.
constexpr auto ActivityOfAWeek = R"(
SELECT Date,Kind,Text,UUID,Name,Record,RowID FROM (
  SELECT EventDate AS Date,EventType AS Kind,Details AS Text,UUID,Name,'Event' AS Record,1 AS Number,e.ID AS RowID
  FROM Plants p CROSS JOIN PlantEvents e ON e.PlantUUID=p.UUID AND EventDate BETWEEN '2019-03-04' AND '2019-03-10~'
  WHERE NOT EXISTS(SELECT 1 FROM PlantCareEntries c
                   WHERE c.PlantUUID=e.PlantUUID AND CareDate=EventDate AND TimelineEventID=e.ID)
    AND NOT EXISTS(SELECT 1 FROM PlantCareEntries c WHERE c.PlantUUID=e.PlantUUID AND TimelineEventID=e.ID)
    AND NOT EXISTS(SELECT 1 FROM HarvestRecords h WHERE h.PlantUUID=e.PlantUUID AND TimelineEventID=e.ID)
  UNION ALL
  SELECT CareDate,Action,
    iif(Product<>'',Product||' | ','')||printf('%.0f ml',AmountMl)||iif(EC>0,printf(' | EC %.2f',EC),'')||
    iif(PH>0,printf(' | pH %.2f',PH),'')||iif(RunoffMl>0,printf(' | Runoff %.0f ml',RunoffMl),'')||
    iif(c.Notes<>'',' | '||c.Notes,''),UUID,Name,'CareEntry',2,c.ID
  FROM Plants p CROSS JOIN PlantCareEntries c ON c.PlantUUID=p.UUID AND CareDate BETWEEN '2019-03-04' AND '2019-03-10~'
  UNION ALL
  SELECT h.HarvestDate,'Harvest',
    printf('Wet %.1f g | Dry %.1f g',WetWeightG,DryWeightG)||iif(SeedYield>0,printf(' | Seeds %d',SeedYield),'')||
    iif(QualityRating>0,printf(' | Quality %.1f/10',QualityRating),'')||iif(CureOutcome<>'',' | '||CureOutcome,'')||
    iif(h.Notes<>'',' | '||h.Notes,''),UUID,Name,'HarvestRecord',3,h.ID
  FROM HarvestRecords h JOIN Plants p ON p.UUID=PlantUUID WHERE h.HarvestDate BETWEEN '2019-03-04' AND '2019-03-10~'
  UNION ALL
  SELECT EntryDate,Type,Details,UUID,Name,'JournalEntry',4,e.ID
  FROM Plants p CROSS JOIN PlantJournalEntries e
    ON PlantUUID=p.UUID AND EntryDate BETWEEN '2019-03-04' AND '2019-03-10~'
  UNION ALL
  SELECT ObservationDate,'Health',printf('%s (%d of 5)',Issue,Severity)||iif(Treatment<>'',' | '||Treatment,'')||
    iif(o.Notes<>'',' | '||o.Notes,''),UUID,Name,'HealthObservation',5,o.ID
  FROM Plants p CROSS JOIN PlantHealthObservations o
    ON PlantUUID=p.UUID AND ObservationDate BETWEEN '2019-03-04' AND '2019-03-10~'
  UNION ALL
  SELECT PhotoDate,'Photo',FilePath||iif(Caption<>'',' | '||Caption,''),p.UUID,Name,'Photo',6,f.ID
  FROM Plants p CROSS JOIN PlantPhotos f ON PlantUUID=p.UUID AND PhotoDate BETWEEN '2019-03-04' AND '2019-03-10~'
  UNION ALL
  SELECT SeedDate,'Sown','',UUID,Name,'Plant',0,ID FROM Plants WHERE SeedDate BETWEEN '2019-03-04' AND '2019-03-10~'
  UNION ALL
  SELECT CloneDate,'Clone','',UUID,Name,'Plant',0,ID FROM Plants WHERE CloneDate BETWEEN '2019-03-04' AND '2019-03-10~'
    AND NOT EXISTS(SELECT 1 FROM PlantEvents WHERE PlantUUID=UUID AND EventDate=CloneDate AND EventType='Clone')
  UNION ALL
  SELECT TransplantDate,'Transplant','',UUID,Name,'Plant',0,ID FROM Plants
  WHERE TransplantDate BETWEEN '2019-03-04' AND '2019-03-10~' AND NOT EXISTS(
    SELECT 1 FROM PlantEvents WHERE PlantUUID=UUID AND EventDate=TransplantDate AND EventType='Transplant')
  UNION ALL
  SELECT FlipDate,'Flip','',UUID,Name,'Plant',0,ID FROM Plants WHERE FlipDate BETWEEN '2019-03-04' AND '2019-03-10~'
    AND NOT EXISTS(SELECT 1 FROM PlantEvents WHERE PlantUUID=UUID AND EventDate=FlipDate AND EventType='Flip')
  UNION ALL
  SELECT HarvestDate,'Harvest','',UUID,Name,'Plant',0,ID FROM Plants p
  WHERE HarvestDate BETWEEN '2019-03-04' AND '2019-03-10~'
    AND NOT EXISTS(SELECT 1 FROM PlantEvents WHERE PlantUUID=UUID AND EventDate=p.HarvestDate AND EventType='Harvest')
    AND NOT EXISTS(SELECT 1 FROM HarvestRecords h WHERE PlantUUID=UUID AND h.HarvestDate=p.HarvestDate))
ORDER BY Date DESC,Number DESC,RowID DESC;
)";

constexpr auto StatusOfPlants = R"(
WITH Chosen AS MATERIALIZED (
  SELECT UUID,Name,Strain,Tent,Stage,ID,
    julianday(iif(HarvestDate<>'' AND HarvestDate<'2024-07-28',HarvestDate,'2024-07-28')) AS LastDay,
    iif(SeedDate<>'',SeedDate,CloneDate) AS Begin,
    coalesce(
      nullif(CASE Stage WHEN 'Seed' THEN SeedDate WHEN 'Clone' THEN CloneDate WHEN 'Flower' THEN FlipDate
             WHEN 'Dry' THEN HarvestDate WHEN 'Harvested' THEN HarvestDate ELSE '' END,''),
      (SELECT EventDate FROM PlantEvents
       WHERE PlantUUID=UUID AND EventDate<'2024-07-28~' AND (EventType='Stage' AND Details=Stage OR
         EventType='Flip' AND Stage='Flower' OR EventType='Clone' AND Stage='Clone' OR
         EventType='Harvest' AND Stage IN ('Dry','Harvested'))
       ORDER BY EventDate DESC LIMIT 1)) AS StageDate,
    coalesce(nullif(FlipDate,''),
      (SELECT EventDate FROM PlantEvents WHERE PlantUUID=UUID AND EventDate<'2024-07-28~' AND EventType='Flip'
       ORDER BY EventDate DESC LIMIT 1)) AS Flip,
    (SELECT CareDate FROM PlantCareEntries WHERE PlantUUID=UUID AND CareDate<'2024-07-28~' AND Action='Feed'
     ORDER BY CareDate DESC LIMIT 1) AS LastFeed,
    (SELECT CareDate FROM PlantCareEntries WHERE PlantUUID=UUID AND CareDate<'2024-07-28~' AND Action='Water'
     ORDER BY CareDate DESC LIMIT 1) AS LastWater,
    (SELECT group_concat(Issue||' '||Severity||' '||ObservationDate,', ')
     FROM (SELECT ID,Issue,Severity,ObservationDate,
             row_number() OVER (PARTITION BY lower(Issue) ORDER BY ObservationDate DESC,ID DESC) AS Number
           FROM PlantHealthObservations
           WHERE PlantUUID=UUID AND ObservationDate BETWEEN '2024-06-29' AND '2024-07-28~'
           ORDER BY ObservationDate DESC,ID DESC)
     WHERE Number=1) AS Health,
    (SELECT avg(Gap)
     FROM (SELECT Gap,row_number() OVER (ORDER BY Gap) AS Number,count(*) OVER () AS Count
           FROM (SELECT julianday(lag(CareDate) OVER (ORDER BY CareDate DESC))-julianday(CareDate) AS Gap
                 FROM (SELECT DISTINCT CareDate FROM PlantCareEntries WHERE PlantUUID=UUID AND CareDate<'2024-07-28~'
                       ORDER BY CareDate DESC LIMIT 6))
           WHERE Gap IS NOT NULL)
     WHERE Number BETWEEN (Count+1)/2 AND (Count+2)/2) AS Gap
  FROM Plants WHERE UUID IN ()";
constexpr auto StatusAfterPlants = R"())
SELECT UUID,Name,Strain,Tent,Stage,CAST(LastDay-julianday(Begin) AS INTEGER),StageDate,
  CAST(julianday('2024-07-28')-julianday(StageDate) AS INTEGER),CAST(LastDay-julianday(Flip) AS INTEGER),LastFeed,
  LastWater,Health,printf('%.1f',Gap),
  iif(Stage IN ('Seed','Clone','Veg','Flower'),date(max(LastFeed,LastWater),CAST(Gap+0.5 AS INTEGER)||' days'),'')
FROM Chosen ORDER BY Strain COLLATE NOCASE,Name COLLATE NOCASE,ID;
)";

constexpr auto TotalsByMonth = R"(
SELECT substr(CareDate,1,7),'','',sum(Action='Feed'),sum(Action='Water'),printf('%.3f',sum(AmountMl)),
  printf('%.3f',sum(RunoffMl)),count(nullif(EC,0)),printf('%.3f',avg(nullif(EC,0))),printf('%.3f',min(nullif(EC,0))),
  printf('%.3f',max(nullif(EC,0))),count(nullif(PH,0)),printf('%.3f',avg(nullif(PH,0))),
  printf('%.3f',min(nullif(PH,0))),printf('%.3f',max(nullif(PH,0)))
FROM PlantCareEntries GROUP BY 1 ORDER BY 1;
)";

} // namespace

std::vector<std::string> PlantsWithStatus()
{
    std::vector<std::string> uuids;
    for (int plant = 1; plant <= 20; ++plant)
        uuids.push_back(SeedUUID(plant));
    return uuids;
}

std::string StatementOf(const std::string& operation)
{
    if (operation == "activity of a week")
        return ActivityOfAWeek;
    if (operation == "totals by month")
        return TotalsByMonth;
    if (operation != "status of 20 plants")
        throw std::invalid_argument("no statement for " + operation);
    std::string plants;
    for (const std::string& uuid : PlantsWithStatus())
        plants += (plants.empty() ? "'" : ",'") + uuid + '\'';
    return StatusOfPlants + plants + StatusAfterPlants;
}
