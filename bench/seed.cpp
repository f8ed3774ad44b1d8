#include "seed.h"

#include <iomanip>
#include <ios>
#include <sstream>
#include <stdexcept>

namespace
{

// Numbers from `first` to `last`, as a table n(i).
std::string Numbers(int first, int last)
{
    return "WITH RECURSIVE n(i) AS (SELECT " + std::to_string(first) + " UNION ALL SELECT i+1 FROM n WHERE i<" +
           std::to_string(last) + ") ";
}

std::string InsertHarvests(int first, int last)
{
    const std::string event = std::to_string(FirstHarvestEvent) + "+i";
    return "INSERT INTO PlantEvents(ID,PlantUUID,EventDate,EventType,Details) " + Numbers(first, last) + "SELECT " +
           event +
           ",printf('%08x-0000-4000-8000-%012x',i,i),'2024-07-05','Harvest','Wet 450.0 g | Dry 112.5 g | Quality "
           "8.0/10' FROM n WHERE i%3=0;"
           "INSERT INTO HarvestRecords(ID,TimelineEventID,PlantUUID,HarvestDate,WetWeightG,DryWeightG,QualityRating) " +
           Numbers(first, last) + "SELECT i," + event +
           ",printf('%08x-0000-4000-8000-%012x',i,i),'2024-07-05',450,112.5,8 FROM n WHERE i%3=0;";
}

} // namespace

std::string SeedUUID(int id)
{
    std::ostringstream text;
    text << std::hex << std::setfill('0') << std::setw(8) << id << "-0000-4000-8000-" << std::setw(12) << id;
    return text.str();
}

std::string InsertPlants(int first, int last)
{
    return "INSERT INTO Plants(ID,UUID,Name,Strain,MotherPlantID,Stage,Sex,Tent,PotSize,Medium,SeedDate,FlipHeightCm,"
           "FinalHeightCm,CloneDate,FlipDate,HarvestDate,Notes) " +
           Numbers(first, last) +
           "SELECT i,printf('%08x-0000-4000-8000-%012x',i,i),printf('Plant %05d',i*7919%100003),'Strain '||(i%10),"
           "CASE i%2 WHEN 0 THEN i-1 END,CASE i%3 WHEN 0 THEN 'Harvested' ELSE 'Flower' END,'Female','Tent '||(i%4),"
           "'11 l','Coco','2024-03-01',40+i%30,90+i%50,CASE i%2 WHEN 0 THEN '2024-03-20' ELSE '' END,'2024-05-01',"
           "CASE i%3 WHEN 0 THEN '2024-07-05' ELSE '' END,'vigorous' FROM n;";
}

std::string InsertCareEntries(int first, int last, int perPlant)
{
    const std::string id = "(i-1)/" + std::to_string(perPlant) + "+1";
    const std::string plant = "printf('%08x-0000-4000-8000-%012x'," + id + "," + id + ")";
    const std::string date = "date('2015-01-01','+'||(i%500*7)||' days')";
    return "INSERT INTO PlantEvents(ID,PlantUUID,EventDate,EventType,Details) " + Numbers(first, last) + "SELECT i," +
           plant + "," + date +
           ",CASE i%2 WHEN 0 THEN 'Water' ELSE 'Feed' END,CASE i%2 WHEN 0 THEN '500 ml' ELSE "
           "'Bloom A | 500 ml | EC 1.80' END FROM n;"
           "INSERT INTO PlantCareEntries(ID,TimelineEventID,PlantUUID,CareDate,Action,Product,AmountMl,EC) " +
           Numbers(first, last) + "SELECT i,i," + plant + "," + date +
           ",CASE i%2 WHEN 0 THEN 'Water' ELSE 'Feed' END,CASE i%2 WHEN 0 THEN '' ELSE 'Bloom A' END,500,"
           "CASE i%2 WHEN 0 THEN 0 ELSE 1.8 END FROM n;";
}

std::string InsertEvents(const std::string& plantUUID, int count)
{
    return "INSERT INTO PlantEvents(PlantUUID,EventDate,EventType,Details) " + Numbers(1, count) + "SELECT '" +
           plantUUID +
           "',date('2015-01-01','+'||(i/30)||' days'),CASE i%2 WHEN 0 THEN 'Water' ELSE 'Feed' END,"
           "CASE i%2 WHEN 0 THEN '500 ml' ELSE 'Bloom A | 500 ml | EC 1.80' END FROM n;";
}

std::string InsertOtherRecords(int count, int plants)
{
    const std::string plant =
        "printf('%08x-0000-4000-8000-%012x',i%" + std::to_string(plants) + "+1,i%" + std::to_string(plants) + "+1)";
    const std::string date = "date('2015-01-01','+'||(i*37%3500)||' days')";
    const std::string values = Numbers(1, count) + "SELECT " + plant + "," + date;
    return "INSERT INTO PlantEvents(PlantUUID,EventDate,EventType,Details) " + values +
           ",CASE i%3 WHEN 0 THEN 'Note' WHEN 1 THEN 'Topped' ELSE 'Stage' END,"
           "CASE i%3 WHEN 2 THEN 'Veg' ELSE 'third node' END FROM n;"
           "INSERT INTO PlantJournalEntries(PlantUUID,EntryDate,Type,Details) " +
           values +
           ",'Observation','new leaves' FROM n;"
           "INSERT INTO PlantHealthObservations(PlantUUID,ObservationDate,Issue,Severity,Treatment) " +
           values +
           ",CASE i%2 WHEN 0 THEN 'Thrips' ELSE 'Mites' END,i%5+1,'neem oil' FROM n;"
           "INSERT INTO PlantPhotos(PlantUUID,PhotoDate,UUID,FilePath,Caption) " +
           values + ",'photo '||i,'photos/'||i||'.jpg','top of the plant' FROM n;";
}

void Fill(Implementation& implementation, const Seed& seed)
{
    std::string statements = "BEGIN;";
    if (seed.Plants > 0)
        statements += "INSERT INTO Strains(ID,Name) " + Numbers(0, 9) + "SELECT i+1,'Strain '||i FROM n;" +
                      InsertPlants(1, seed.Plants);
    if (seed.CareEntries > 0)
        statements += InsertCareEntries(1, seed.CareEntries, seed.CareEntriesPerPlant);
    if (seed.Plants > 0)
        statements += InsertHarvests(1, seed.Plants);
    if (seed.EventsOfFirstPlant > 0)
        statements += InsertEvents(SeedUUID(1), seed.EventsOfFirstPlant);
    if (seed.OtherRecords > 0)
        statements += InsertOtherRecords(seed.OtherRecords, seed.Plants);
    if (!implementation.Execute(statements + "COMMIT;"))
        throw std::runtime_error("a journal cannot be filled");
}
