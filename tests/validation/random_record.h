#pragma once

#include "plant_database.h"
#include "testing/plain_connection.h"
#include "testing/records.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace support
{

// The table of a kind of record, and the columns that name the row.
template <typename Record> struct RecordTable;
template <> struct RecordTable<Strain>
{
    static constexpr auto Keys = "SELECT ID,hex(Name) FROM Strains;";
};
template <> struct RecordTable<Plant>
{
    static constexpr auto Keys = "SELECT ID,hex(UUID) FROM Plants;";
};
template <> struct RecordTable<PlantEvent>
{
    static constexpr auto Keys = "SELECT ID,hex(PlantUUID) FROM PlantEvents;";
};
template <> struct RecordTable<PlantCareEntry>
{
    static constexpr auto Keys = "SELECT ID,hex(PlantUUID),COALESCE(TimelineEventID,0) FROM PlantCareEntries;";
};
template <> struct RecordTable<HarvestRecord>
{
    static constexpr auto Keys = "SELECT ID,hex(PlantUUID),COALESCE(TimelineEventID,0) FROM HarvestRecords;";
};
template <> struct RecordTable<PlantPhoto>
{
    static constexpr auto Keys = "SELECT ID,hex(PlantUUID),0,hex(UUID) FROM PlantPhotos;";
};
template <> struct RecordTable<PlantHealthObservation>
{
    static constexpr auto Keys = "SELECT ID,hex(PlantUUID) FROM PlantHealthObservations;";
};
template <> struct RecordTable<PlantJournalEntry>
{
    static constexpr auto Keys = "SELECT ID,hex(PlantUUID) FROM PlantJournalEntries;";
};

// The bytes of a text that SQLite's hex() wrote.
inline std::string FromHex(const std::string& hex)
{
    std::string text;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        text += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return text;
}

// Makes records that a repository accepts or refuses for every reason, most of them about rows that the journal has.
class RandomRecords
{
  public:
    RandomRecords(sqlite3* journal, std::mt19937_64& random) : Journal(journal), Random(random) {}

    template <typename Record> Record Some()
    {
        Record record;
        std::apply([&](auto&... fields) { (Set(fields), ...); }, Fields(record));
        record.ID = Random() % 2 == 0 ? 0 : SmallID();
        if constexpr (requires { record.TimelineEventID; })
            record.TimelineEventID = Random() % 3 == 0 ? 0 : SmallID();
        if constexpr (requires { record.PlantUUID; })
            record.PlantUUID = PlantUUID();
        SetNames(record);
        TakeStoredKeys(record);
        return record;
    }

    std::string PlantUUID();

  private:
    void Set(std::string& text) { text = Random() % 8 == 0 ? "" : "text " + std::to_string(Random() % 4); }
    void Set(double& number)
    {
        constexpr double nan = std::numeric_limits<double>::quiet_NaN();
        number = Random() % 16 == 0 ? nan : static_cast<double>(Random() % 4) - 1;
    }
    void Set(int& number) { number = static_cast<int>(Random() % 8) - 1; }
    void Set(std::int64_t& number) { number = SmallID(); }
    template <typename Enum>
    requires std::is_enum_v<Enum>
    void Set(Enum& value) { value = static_cast<Enum>(static_cast<int>(Random() % 14) - 1); }
    std::int64_t SmallID() { return 1 + static_cast<std::int64_t>(Random() % 12); }

    void SetNames(Plant& plant)
    {
        plant.UUID = Random() % 6 == 0 ? "" : PlantUUID();
        plant.MotherPlantUUID = Random() % 3 == 0 ? "" : PlantUUID();
    }
    template <typename Record> void SetNames(Record&) {}

    // Half of the records have the keys of a stored row.
    template <typename Record> void TakeStoredKeys(Record& record)
    {
        const Rows rows = QueryRows(Journal, RecordTable<Record>::Keys);
        if (rows.empty() || Random() % 2 == 0)
            return;
        const Row& row = rows.at(static_cast<std::size_t>(Random() % rows.size()));
        const std::string name = FromHex(row.at(1));
        if (Random() % 4 != 0) // an update
            record.ID = std::stoll(row.at(0));
        if constexpr (std::is_same_v<Record, Strain>)
            record.Name = Random() % 2 == 0 ? name : record.Name;
        else if constexpr (std::is_same_v<Record, Plant>)
            record.UUID = name;
        else
            record.PlantUUID = name;
        if constexpr (requires { record.TimelineEventID; })
            record.TimelineEventID = Random() % 3 == 0 ? record.TimelineEventID : std::stoll(row.at(2));
        if constexpr (std::is_same_v<Record, PlantPhoto>)
            record.UUID = FromHex(row.at(3));
    }

    sqlite3* Journal;
    std::mt19937_64& Random;
};

// Calls the operation that stores the record, on a copy.
template <typename Record> bool Store(PlantRepository& repository, Record record)
{
    const bool isNew = record.ID == 0;
    if constexpr (std::is_same_v<Record, Strain>)
        return isNew ? repository.CreateStrain(record) : repository.UpdateStrain(record);
    else if constexpr (std::is_same_v<Record, Plant>)
        return isNew ? repository.CreatePlant(record) : repository.UpdatePlant(record);
    else if constexpr (std::is_same_v<Record, PlantEvent>)
        return isNew ? repository.CreatePlantEvent(record) : repository.UpdatePlantEvent(record);
    else if constexpr (std::is_same_v<Record, PlantCareEntry>)
        return isNew ? repository.CreatePlantCareEntry(record) : repository.UpdatePlantCareEntry(record);
    else if constexpr (std::is_same_v<Record, HarvestRecord>)
    {
        Plant plant;
        plant.UUID = record.PlantUUID;
        return repository.SaveHarvestRecord(plant, record);
    }
    else if constexpr (std::is_same_v<Record, PlantPhoto>)
        return isNew ? repository.CreatePlantPhoto(record) : repository.UpdatePlantPhoto(record);
    else if constexpr (std::is_same_v<Record, PlantHealthObservation>)
        return isNew ? repository.CreatePlantHealthObservation(record)
                     : repository.UpdatePlantHealthObservation(record);
    else
        return isNew ? repository.CreatePlantJournalEntry(record) : repository.UpdatePlantJournalEntry(record);
}

} // namespace support
