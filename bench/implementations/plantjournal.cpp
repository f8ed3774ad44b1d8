#include "implementation.h"
#include "plant_database.h"

#include <sqlite3.h>

namespace
{

class Plantjournal : public Implementation
{
  public:
    bool Open(const std::string& path) override { return Journal.Open(path); }
    void Close() override { Journal.Close(); }

    bool Execute(const std::string& statements) override
    {
        return sqlite3_exec(Journal.NativeHandle(), statements.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    }

    std::string CreateUUID() override { return CreatePlantUUID(); }
    bool ListPlants(std::vector<Plant>& out) override { return Repository.ListPlants(out); }
    bool GetPlant(const std::string& uuid, Plant& out) override { return Repository.GetPlant(uuid, out); }
    bool CreatePlant(Plant& plant) override { return Repository.CreatePlant(plant); }
    bool DeletePlant(const std::string& uuid) override { return Repository.DeletePlant(uuid); }

    bool GetStrainSummary(std::int64_t strainID, StrainSummary& out) override
    {
        return Repository.GetStrainSummary(strainID, out);
    }

    bool ListPlantEvents(const std::string& plantUUID, std::vector<PlantEvent>& out) override
    {
        return Repository.ListPlantEvents(plantUUID, out);
    }

    bool CreatePlantCareEntry(PlantCareEntry& entry) override { return Repository.CreatePlantCareEntry(entry); }
    bool UpdatePlantCareEntry(PlantCareEntry& entry) override { return Repository.UpdatePlantCareEntry(entry); }
    bool DeletePlantCareEntry(std::int64_t id) override { return Repository.DeletePlantCareEntry(id); }

    bool SaveHarvestRecord(Plant& plant, HarvestRecord& record) override
    {
        return Repository.SaveHarvestRecord(plant, record);
    }

  private:
    PlantDatabase Journal;
    PlantRepository Repository{Journal};
};

} // namespace

std::unique_ptr<Implementation> MakePlantjournal()
{
    return std::make_unique<Plantjournal>();
}
