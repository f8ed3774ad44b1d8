#pragma once

#include "plant.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// An implementation of the operations that are measured, as a front end calls them. Every implementation runs the same
// statements in the same order and fills the same records, so that only the code between them differs.
class Implementation
{
  public:
    virtual ~Implementation() = default;

    // Creates a new journal where the file is missing, and migrates an older one.
    virtual bool Open(const std::string& path) = 0;
    virtual void Close() = 0;
    // Runs statements without results, to fill a journal.
    virtual bool Execute(const std::string& statements) = 0;

    // A new UUID by the library at hand; empty where it cannot create one.
    virtual std::string CreateUUID() { return {}; }

    virtual bool ListPlants(std::vector<Plant>& out) = 0;
    virtual bool GetPlant(const std::string& uuid, Plant& out);
    virtual bool CreatePlant(Plant& plant) = 0;
    virtual bool DeletePlant(const std::string& uuid) = 0;
    virtual bool GetStrainSummary(std::int64_t strainID, StrainSummary& out) = 0;
    virtual bool ListPlantEvents(const std::string& plantUUID, std::vector<PlantEvent>& out) = 0;
    virtual bool CreatePlantCareEntry(PlantCareEntry& entry) = 0;
    virtual bool UpdatePlantCareEntry(PlantCareEntry& entry) = 0;
    virtual bool DeletePlantCareEntry(std::int64_t id) = 0;
    virtual bool SaveHarvestRecord(Plant& plant, HarvestRecord& record) = 0;

  protected:
    Implementation() = default;
    Implementation(const Implementation&) = default;
    Implementation& operator=(const Implementation&) = default;

    // One column of all rows of a query, which `Migrate` needs.
    virtual std::vector<std::string> Texts(const std::string& /*sql*/, int /*column*/) { return {}; }

    // Everything outside the database, as a front end would write it. Only plantjournal has its own.

    // Migrates the open journal, by `Execute` and `Texts`.
    bool Migrate();
    // Whether the plant's mother exists and the link to it closes no cycle.
    bool HasValidMotherLink(const Plant& plant);
    // The stored names of the enumerations, both ways.
    static std::string Name(PlantStage stage);
    static std::string Name(PlantSex sex);
    static std::string Name(PlantEventType type);
    static std::string Name(PlantCareAction action);
    static PlantStage StageNamed(const std::string& name);
    static PlantSex SexNamed(const std::string& name);
    static PlantEventType EventTypeNamed(const std::string& name);
    static PlantEventType CareEventType(const PlantCareEntry& entry);
    static std::string CareDetails(const PlantCareEntry& entry);
    static std::string HarvestDetails(const HarvestRecord& record);
};

struct ImplementationKind
{
    std::string Name;
    std::string Version;
    std::unique_ptr<Implementation> (*Make)();
};

// plantjournal first, then bare SQLite with its statements prepared for each call: the baseline.
const std::vector<ImplementationKind>& Implementations();
// The names of the libraries that are missing on this machine.
const std::vector<std::string>& AbsentImplementations();

// Returns the implementation with that name; throws std::invalid_argument where there is none.
const ImplementationKind& ImplementationNamed(std::string_view name);

// The library's; its headers do not declare it.
std::string CreatePlantUUID();

std::unique_ptr<Implementation> MakePlantjournal();
std::unique_ptr<Implementation> MakeSQLite();
std::unique_ptr<Implementation> MakeSQLiteKept();
std::unique_ptr<Implementation> MakeSQLiteCpp();
std::unique_ptr<Implementation> MakeSOCI();
std::unique_ptr<Implementation> MakePoco();
std::unique_ptr<Implementation> MakeQt();
