#include "support/journal_files.h"

#include "testing/plain_connection.h"

#include <fstream>
#include <stdexcept>

namespace support
{

void OpenOrThrow(PlantDatabase& database, const std::string& path)
{
    if (!database.Open(path))
        throw std::runtime_error(database.LastError());
}

std::string OpeningResult(const std::string& path)
{
    PlantDatabase database;
    std::string error;
    return database.Open(path, &error) ? "open" : error;
}

std::string ContentOnceOpen(const std::string& path)
{
    PlantDatabase database;
    std::string error;
    EXPECT_TRUE(database.Open(path, &error)) << error;
    EXPECT_EQ(Damage(database.NativeHandle()), "ok");
    return Content(database.NativeHandle());
}

void CreateNamedPlant(const std::string& path, const std::string& name)
{
    PlantDatabase database;
    ASSERT_TRUE(database.Open(path));
    Plant plant;
    plant.UUID = name;
    plant.Name = name;
    ASSERT_TRUE(PlantRepository(database).CreatePlant(plant));
}

SampleRecords CreateSampleJournal(const std::string& path)
{
    PlantDatabase database;
    OpenOrThrow(database, path);
    PlantRepository repository(database);
    return StoreSampleRecords(repository);
}

void OverwritePage(const std::string& path, const std::string& name)
{
    int page = 0;
    int size = 0;
    {
        const PlainConnection connection(path);
        page = std::stoi(connection.Value("SELECT rootpage FROM sqlite_master WHERE name='" + name + "';"));
        size = std::stoi(connection.Value("PRAGMA page_size;"));
    }
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(page - 1) * size);
    ASSERT_TRUE(file << std::string(static_cast<std::size_t>(size), '\xFF') << std::flush);
}

bool IsRead(const Operation& operation)
{
    return operation.Name.starts_with("List") || operation.Name.starts_with("Get");
}

PlantCareEntry WaterEntry(const std::string& plantUUID, const std::string& notes)
{
    PlantCareEntry entry;
    entry.PlantUUID = plantUUID;
    entry.CareDate = "2020-05-20";
    entry.Notes = notes;
    return entry;
}

} // namespace support
