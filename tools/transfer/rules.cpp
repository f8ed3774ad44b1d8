#include "transfer/rules.h"

#include "record/operations.h"
#include "record/text.h"
#include "terminal/printable.h"
#include "transfer/known_plants.h"
#include "transfer/value_warnings.h"

#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

std::string CreatePlantUUID(); // of the library, whose headers do not declare it

namespace
{

struct JournalContent
{
    std::unordered_map<std::string, Plant> Plants;   // by UUID
    std::unordered_map<std::string, Strain> Strains; // by name
    std::unordered_set<std::string> PhotoUUIDs;
    std::unordered_set<std::string> HarvestedPlants; // the UUIDs of plants with a harvest record
};

JournalContent ReadJournal(Session& session)
{
    JournalContent content;
    if (!session.Exists())
        return content;
    PlantRepository& repository = session.Read();
    std::vector<Plant> plants;
    std::vector<Strain> strains;
    session.RequireList(repository.ListPlants(plants), "the plants could not be listed");
    session.RequireList(repository.ListStrains(strains), "the strains could not be listed");
    for (const Strain& strain : strains)
        content.Strains.emplace(strain.Name, strain);
    for (const Plant& plant : plants)
    {
        std::vector<PlantPhoto> photos;
        std::vector<HarvestRecord> harvests;
        session.RequireList(ListRecords(repository, plant.UUID, photos), "the photos could not be listed");
        session.RequireList(ListRecords(repository, plant.UUID, harvests), "the harvest records could not be listed");
        for (const PlantPhoto& photo : photos)
            content.PhotoUUIDs.insert(photo.UUID);
        if (!harvests.empty())
            content.HarvestedPlants.insert(plant.UUID);
        content.Plants.emplace(plant.UUID, plant);
    }
    return content;
}

template <typename Record> void CreateMissingUUIDs(ImportedTable<Record>& table)
{
    for (ImportedRow<Record>& row : table.Rows)
        if (row.Value.UUID.empty())
            row.Value.UUID = CreatePlantUUID();
}

template <typename Record> void CheckIDs(const ImportedTable<Record>& table, Problems& errors)
{
    std::unordered_set<std::int64_t> seen;
    for (const ImportedRow<Record>& row : table.Rows)
        if (row.Value.ID != 0 && !seen.insert(row.Value.ID).second)
            errors.push_back(table.Place(row, "ID") + std::to_string(row.Value.ID) + " occurs twice");
}

void CheckStrains(ImportedTable<Strain>& table, const JournalContent& journal, Problems& errors)
{
    std::unordered_set<std::string> seen;
    std::vector<ImportedRow<Strain>> added;
    for (const ImportedRow<Strain>& row : table.Rows)
    {
        const Strain& strain = row.Value;
        const auto known = journal.Strains.find(strain.Name);
        if (strain.Name.empty())
            errors.push_back(table.Place(row, "Name") + "is empty");
        else if (!seen.insert(strain.Name).second)
            errors.push_back(table.Place(row, "Name") + InQuotes(Printable(strain.Name)) + " occurs twice");
        else if (known == journal.Strains.end())
            added.push_back(row);
        else if (known->second.Breeder != strain.Breeder || known->second.FloweringWeeks != strain.FloweringWeeks ||
                 known->second.Notes != strain.Notes)
            errors.push_back(table.Place(row, "Name") + "the journal already has " + InQuotes(Printable(strain.Name)) +
                             " with other values");
    }
    table.Rows = std::move(added);
}

using MotherUUIDs = std::unordered_map<std::string, std::string>; // by the UUID of the plant

MotherUUIDs CheckUUIDs(const ImportedTable<Plant>& table, const JournalContent& journal, Problems& errors)
{
    MotherUUIDs mothers;
    for (const auto& [uuid, plant] : journal.Plants)
        mothers.emplace(uuid, plant.MotherPlantUUID);
    for (const ImportedRow<Plant>& row : table.Rows)
        if (const Plant& plant = row.Value;
            !plant.UUID.empty() && !mothers.emplace(plant.UUID, plant.MotherPlantUUID).second)
            errors.push_back(table.Place(row, "UUID") + InQuotes(Printable(plant.UUID)) +
                             (journal.Plants.contains(plant.UUID) ? " is already in the journal" : " occurs twice"));
    return mothers;
}

bool IsInCycle(const Plant& plant, const MotherUUIDs& mothers)
{
    std::string mother = plant.MotherPlantUUID;
    for (std::size_t steps = 0; !mother.empty(); ++steps)
    {
        if (mother == plant.UUID || steps > mothers.size())
            return true;
        const auto next = mothers.find(mother);
        mother = next == mothers.end() ? "" : next->second;
    }
    return false;
}

void CheckMothers(const ImportedTable<Plant>& table, const MotherUUIDs& mothers, Problems& errors)
{
    for (const ImportedRow<Plant>& row : table.Rows)
    {
        const std::string& mother = row.Value.MotherPlantUUID;
        if (!mother.empty() && !mothers.contains(mother))
            errors.push_back(table.Place(row, "MotherPlantUUID") + "no plant has the UUID " +
                             InQuotes(Printable(mother)));
        if (IsInCycle(row.Value, mothers))
            errors.push_back(table.Place(row, "MotherPlantUUID") + "the plant descends from itself");
    }
}

template <typename Record>
void CheckEventLinks(const ImportedTable<Record>& table, const ImportedTable<PlantEvent>& events, Problems& errors)
{
    std::unordered_set<std::int64_t> known = {0};
    for (const ImportedRow<PlantEvent>& row : events.Rows)
        known.insert(row.Value.ID);
    for (const ImportedRow<Record>& row : table.Rows)
        if (!known.contains(row.Value.TimelineEventID))
            errors.push_back(table.Place(row, "TimelineEventID") + "no event of this import has the row ID " +
                             std::to_string(row.Value.TimelineEventID));
}

// Checks a field that is unique in the journal. `taken` holds its values there.
template <typename Record>
void CheckUnique(const ImportedTable<Record>& table, std::string Record::*member, const char* field,
                 std::unordered_set<std::string> taken, const std::string& message, Problems& errors)
{
    for (const ImportedRow<Record>& row : table.Rows)
        if (!(row.Value.*member).empty() && !taken.insert(row.Value.*member).second)
            errors.push_back(table.Place(row, field) + message);
}

} // namespace

void CheckRules(ImportedTables& tables, Session& session, ImportMessages& messages)
{
    const JournalContent journal = ReadJournal(session);
    Problems& errors = messages.Errors;
    CreateMissingUUIDs(TableOf<Plant>(tables));
    CreateMissingUUIDs(TableOf<PlantPhoto>(tables));
    CheckStrains(TableOf<Strain>(tables), journal, errors);
    CheckMothers(TableOf<Plant>(tables), CheckUUIDs(TableOf<Plant>(tables), journal, errors), errors);
    KnownPlants plants;
    for (const auto& [uuid, plant] : journal.Plants)
        plants.Add(plant);
    for (const ImportedRow<Plant>& row : TableOf<Plant>(tables).Rows)
        plants.Add(row.Value);
    ForEachTable(tables,
                 [&]<typename Record>(ImportedTable<Record>& table)
                 {
                     CheckIDs(table, errors);
                     if constexpr (BelongsToPlant<Record>)
                         LinkOwners(table, plants, messages);
                     if constexpr (OwnsEvent<Record>)
                         CheckEventLinks(table, TableOf<PlantEvent>(tables), errors);
                 });
    CheckUnique(TableOf<HarvestRecord>(tables), &HarvestRecord::PlantUUID, "PlantUUID", journal.HarvestedPlants,
                "the plant already has a harvest record", errors);
    CheckUnique(TableOf<PlantPhoto>(tables), &PlantPhoto::UUID, "UUID", journal.PhotoUUIDs,
                "that UUID is already in use", errors);
    if (errors.empty()) // a value that could not be read is not the one of the source
        WarnOfValues(tables, plants, messages.Warnings);
}
