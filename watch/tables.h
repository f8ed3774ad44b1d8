// The tables of the journal file, one for each family.
#pragma once

#include "plant_watcher.h"

#include <array>

namespace plant_watch
{

struct Table
{
    PlantRecordFamily Family;
    const char* FamilyName;
    const char* Name;
    const char* PlantColumn; // holds the UUID of the row's plant; null where a row concerns no plant
};

// In the order of the enumerators.
inline constexpr std::array<Table, 8> Tables = {{
    {PlantRecordFamily::Plant, "Plant", "Plants", "UUID"},
    {PlantRecordFamily::Strain, "Strain", "Strains", nullptr},
    {PlantRecordFamily::Event, "Event", "PlantEvents", "PlantUUID"},
    {PlantRecordFamily::CareEntry, "CareEntry", "PlantCareEntries", "PlantUUID"},
    {PlantRecordFamily::HarvestRecord, "HarvestRecord", "HarvestRecords", "PlantUUID"},
    {PlantRecordFamily::Photo, "Photo", "PlantPhotos", "PlantUUID"},
    {PlantRecordFamily::HealthObservation, "HealthObservation", "PlantHealthObservations", "PlantUUID"},
    {PlantRecordFamily::JournalEntry, "JournalEntry", "PlantJournalEntries", "PlantUUID"},
}};

// Returns the journal's table with this name; null if `schema` is not the journal or has no such table.
const Table* FindTable(const char* schema, const char* name) noexcept;

} // namespace plant_watch
