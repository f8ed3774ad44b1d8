#pragma once

#include "plant.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// One way of keeping a journal: the operations that are measured, as a front end would call them. Every contender runs
// the same statements in the same order and fills the same records, so that what differs is what stands between.
class Contender
{
  public:
    virtual ~Contender() = default;

    // Makes a new file where there is none, and brings an older one up to date.
    virtual bool Open(const std::string& path) = 0;
    virtual void Close() = 0;
    // Any statements without results; seeds a journal.
    virtual bool Execute(const std::string& statements) = 0;

    // An identifier in the way of the library at hand; empty where it has none.
    virtual std::string CreateIdentifier() { return {}; }

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
    Contender() = default;
    Contender(const Contender&) = default;
    Contender& operator=(const Contender&) = default;

    // A column of a query's rows; a file is brought up to date with it.
    virtual std::vector<std::string> Texts(const std::string& /*sql*/, int /*column*/) { return {}; }

    // What is no matter of the database, as a front end would write it: the same for all but plantjournal, which has
    // its own.

    // Brings the open file up to date, by `Execute` and `Texts`.
    bool Migrate();
    // Whether a plant may have its mother: whether the mothers above it end, and not in the plant itself.
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

struct ContenderKind
{
    std::string Name;
    std::string Version;
    std::unique_ptr<Contender> (*Make)();
};

// plantjournal first, then bare SQLite with its statements prepared for each call: the floor.
const std::vector<ContenderKind>& Contenders();
// The names of those that are not on this machine.
const std::vector<std::string>& AbsentContenders();

// The contender called `name`; throws std::invalid_argument where there is none.
const ContenderKind& ContenderNamed(std::string_view name);

// Declared by no header of the library's.
std::string CreatePlantUUID();

std::unique_ptr<Contender> MakePlantjournal();
std::unique_ptr<Contender> MakeSQLite();
std::unique_ptr<Contender> MakeSQLiteKept();
std::unique_ptr<Contender> MakeSQLiteCpp();
std::unique_ptr<Contender> MakeSOCI();
std::unique_ptr<Contender> MakePoco();
std::unique_ptr<Contender> MakeQt();
