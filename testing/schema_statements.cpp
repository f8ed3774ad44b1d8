#include "testing/schema_statements.h"

#include <algorithm>
#include <stdexcept>

namespace support
{

const std::vector<std::string>& CreateTableStatements()
{
    static const std::vector<std::string> statements = {
        ("CREATE TABLE IF NOT EXISTS SchemaMeta (Key TEXT PRIMARY KEY, Value TEXT NOT NULL);"),
        ("CREATE TABLE IF NOT EXISTS Strains (ID INTEGER PRIMARY KEY, Name TEXT NOT NULL UNIQUE, Breeder TEXT NOT NULL "
         "DEFAULT '', FloweringWeeks INTEGER NOT NULL DEFAULT 0, Notes TEXT NOT NULL DEFAULT '');"),
        ("CREATE TABLE IF NOT EXISTS Plants (ID INTEGER PRIMARY KEY, UUID TEXT NOT NULL UNIQUE, Name TEXT NOT NULL, "
         "Strain TEXT NOT NULL DEFAULT '', MotherPlantID INTEGER NULL REFERENCES Plants(ID) ON DELETE SET NULL, Stage "
         "TEXT NOT NULL DEFAULT 'Veg', Sex TEXT NOT NULL DEFAULT 'Unknown', Tent TEXT NOT NULL DEFAULT '', PotSize "
         "TEXT NOT NULL DEFAULT '', Medium TEXT NOT NULL DEFAULT '', SeedDate TEXT NOT NULL DEFAULT '', FlipHeightCm "
         "REAL NOT NULL DEFAULT 0, FinalHeightCm REAL NOT NULL DEFAULT 0, CloneDate TEXT NOT NULL DEFAULT '', "
         "TransplantDate TEXT NOT NULL DEFAULT '', FlipDate TEXT NOT NULL DEFAULT '', HarvestDate TEXT NOT NULL "
         "DEFAULT '', Notes TEXT NOT NULL DEFAULT '', CHECK(Stage IN "
         "('Seed','Clone','Veg','Flower','Dry','Cure','Harvested','Archived')), CHECK(Sex IN "
         "('Unknown','Female','Male','Hermaphrodite')));"),
        ("CREATE TABLE IF NOT EXISTS PlantEvents (ID INTEGER PRIMARY KEY, PlantUUID TEXT NOT NULL REFERENCES "
         "Plants(UUID) ON DELETE CASCADE, EventDate TEXT NOT NULL DEFAULT '', EventType TEXT NOT NULL DEFAULT 'Note', "
         "Details TEXT NOT NULL DEFAULT '', CHECK(EventType IN "
         "('Clone','Transplant','Flip','Harvest','Feed','Water','Stage','Topped','LST Trained','Defoliated','Note')));"),
        ("CREATE TABLE IF NOT EXISTS PlantCareEntries (ID INTEGER PRIMARY KEY, TimelineEventID INTEGER NULL REFERENCES "
         "PlantEvents(ID) ON DELETE SET NULL, PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) ON DELETE CASCADE, "
         "CareDate TEXT NOT NULL DEFAULT '', Action TEXT NOT NULL DEFAULT 'Water', Product TEXT NOT NULL DEFAULT '', "
         "AmountMl REAL NOT NULL DEFAULT 0, EC REAL NOT NULL DEFAULT 0, PH REAL NOT NULL DEFAULT 0, RunoffMl REAL NOT "
         "NULL DEFAULT 0, Notes TEXT NOT NULL DEFAULT '', CHECK(Action IN ('Feed','Water')));"),
        ("CREATE TABLE IF NOT EXISTS HarvestRecords (ID INTEGER PRIMARY KEY, TimelineEventID INTEGER NULL REFERENCES "
         "PlantEvents(ID) ON DELETE SET NULL, PlantUUID TEXT NOT NULL UNIQUE REFERENCES Plants(UUID) ON DELETE "
         "CASCADE, HarvestDate TEXT NOT NULL DEFAULT '', WetWeightG REAL NOT NULL DEFAULT 0, DryWeightG REAL NOT NULL "
         "DEFAULT 0, QualityRating REAL NOT NULL DEFAULT 0, SeedYield INTEGER NOT NULL DEFAULT 0, CureOutcome TEXT NOT "
         "NULL DEFAULT '', Notes TEXT NOT NULL DEFAULT '');"),
        ("CREATE TABLE IF NOT EXISTS PlantPhotos (ID INTEGER PRIMARY KEY, UUID TEXT NOT NULL UNIQUE, PlantUUID TEXT "
         "NOT NULL REFERENCES Plants(UUID) ON DELETE CASCADE, PhotoDate TEXT NOT NULL DEFAULT '', FilePath TEXT NOT "
         "NULL, Caption TEXT NOT NULL DEFAULT '');"),
        ("CREATE TABLE IF NOT EXISTS PlantHealthObservations (ID INTEGER PRIMARY KEY, PlantUUID TEXT NOT NULL "
         "REFERENCES Plants(UUID) ON DELETE CASCADE, ObservationDate TEXT NOT NULL DEFAULT '', Issue TEXT NOT NULL, "
         "Severity INTEGER NOT NULL DEFAULT 1 CHECK(Severity BETWEEN 1 AND 5), Treatment TEXT NOT NULL DEFAULT '', "
         "Notes TEXT NOT NULL DEFAULT '');"),
        ("CREATE TABLE IF NOT EXISTS PlantJournalEntries (ID INTEGER PRIMARY KEY, PlantUUID TEXT NOT NULL REFERENCES "
         "Plants(UUID) ON DELETE CASCADE, EntryDate TEXT NOT NULL DEFAULT '', Type TEXT NOT NULL DEFAULT "
         "'Observation', Details TEXT NOT NULL DEFAULT '', CHECK(Type IN "
         "('Observation','Training','Pruning','Topping','Defoliation','Milestone')));"),
    };
    return statements;
}

const std::vector<std::string>& CreateIndexStatements()
{
    static const std::vector<std::string> statements = {
        ("CREATE INDEX IF NOT EXISTS PlantsByStrain ON Plants(Strain);"),
        ("CREATE INDEX IF NOT EXISTS PlantsByMother ON Plants(MotherPlantID);"),
        ("CREATE INDEX IF NOT EXISTS PlantEventsByPlantDate ON PlantEvents(PlantUUID,EventDate DESC,ID DESC);"),
        ("CREATE INDEX IF NOT EXISTS PlantCareByPlantDate ON PlantCareEntries(PlantUUID,CareDate DESC,ID DESC);"),
        ("CREATE INDEX IF NOT EXISTS PlantPhotosByPlantDate ON PlantPhotos(PlantUUID,PhotoDate DESC,ID DESC);"),
        ("CREATE INDEX IF NOT EXISTS PlantHealthByPlantDate ON PlantHealthObservations(PlantUUID,ObservationDate "
         "DESC,ID DESC);"),
        ("CREATE INDEX IF NOT EXISTS PlantJournalByPlantDate ON PlantJournalEntries(PlantUUID,EntryDate DESC,ID "
         "DESC);"),
    };
    return statements;
}

const std::vector<AddedColumn>& AddedColumns()
{
    static const std::vector<AddedColumn> columns = {
        {"Plants", "SeedDate", "ALTER TABLE Plants ADD COLUMN SeedDate TEXT NOT NULL DEFAULT '';"},
        {"Plants", "FlipHeightCm", "ALTER TABLE Plants ADD COLUMN FlipHeightCm REAL NOT NULL DEFAULT 0;"},
        {"Plants", "FinalHeightCm", "ALTER TABLE Plants ADD COLUMN FinalHeightCm REAL NOT NULL DEFAULT 0;"},
        {"Plants", "Sex", "ALTER TABLE Plants ADD COLUMN Sex TEXT NOT NULL DEFAULT 'Unknown';"},
        {"HarvestRecords", "SeedYield", "ALTER TABLE HarvestRecords ADD COLUMN SeedYield INTEGER NOT NULL DEFAULT 0;"},
    };
    return columns;
}

const std::vector<std::string>& RebuildStatements()
{
    static const std::vector<std::string> statements = {
        ("PRAGMA foreign_keys=OFF;"),
        ("BEGIN IMMEDIATE;"),
        ("CREATE TABLE PlantEvents_Migrated (ID INTEGER PRIMARY KEY, PlantUUID TEXT NOT NULL REFERENCES Plants(UUID) "
         "ON DELETE CASCADE, EventDate TEXT NOT NULL DEFAULT '', EventType TEXT NOT NULL DEFAULT 'Note', Details TEXT "
         "NOT NULL DEFAULT '', CHECK(EventType IN "
         "('Clone','Transplant','Flip','Harvest','Feed','Water','Stage','Topped','LST Trained','Defoliated','Note')));"),
        ("INSERT INTO PlantEvents_Migrated(ID,PlantUUID,EventDate,EventType,Details) SELECT "
         "ID,PlantUUID,EventDate,CASE WHEN EventType='Note' AND Details='Topped' THEN 'Topped' WHEN EventType='Note' "
         "AND Details='LST Trained' THEN 'LST Trained' WHEN EventType='Note' AND Details='Defoliated' THEN "
         "'Defoliated' WHEN EventType IN "
         "('Clone','Transplant','Flip','Harvest','Feed','Water','Stage','Topped','LST Trained','Defoliated','Note') "
         "THEN EventType ELSE 'Note' END,CASE WHEN Details IN ('Watered','Fed','Topped','LST "
         "Trained','Defoliated','Transplanted','Cloned','Flip to Flower','Harvested') THEN '' ELSE Details END FROM "
         "PlantEvents;"),
        ("DROP TABLE PlantEvents;"),
        ("ALTER TABLE PlantEvents_Migrated RENAME TO PlantEvents;"),
        ("COMMIT;"),
        ("PRAGMA foreign_keys=ON;"),
    };
    return statements;
}

std::vector<std::string> OpeningStatements(const std::vector<std::string>& missing, bool oldEvents)
{
    std::vector<std::string> statements = {"PRAGMA foreign_keys=ON;"};
    const auto append = [&](const std::vector<std::string>& more)
    { statements.insert(statements.end(), more.begin(), more.end()); };
    append(CreateTableStatements());
    for (const AddedColumn& column : AddedColumns())
    {
        statements.push_back("PRAGMA table_info(" + column.Table + ");");
        if (std::find(missing.begin(), missing.end(), column.Name) != missing.end())
            statements.push_back(column.Statement);
    }
    statements.emplace_back("SELECT sql FROM sqlite_master WHERE type='table' AND name='PlantEvents';");
    if (oldEvents)
        append(RebuildStatements());
    append(CreateIndexStatements());
    return statements;
}

std::string StoredStatement(std::string statement)
{
    statement.pop_back();
    return Replaced(std::move(statement), "IF NOT EXISTS ", "");
}

std::string Replaced(std::string text, const std::string& part, const std::string& replacement)
{
    const std::size_t position = text.find(part);
    if (position == std::string::npos)
        throw std::runtime_error(part + " is missing in: " + text);
    return text.replace(position, part.size(), replacement);
}

} // namespace support
