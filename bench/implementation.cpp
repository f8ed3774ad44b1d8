#include "implementation.h"

#include "statements.h"
#include "testing/schema_statements.h"

#include <algorithm>
#include <iomanip>
#include <ios>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <sqlite3.h>

using namespace support;

namespace
{

const char* const StageNames[] = {"Seed", "Clone", "Veg", "Flower", "Dry", "Cure", "Harvested", "Archived"};
const char* const SexNames[] = {"Unknown", "Female", "Male", "Hermaphrodite"};
const char* const EventTypeNames[] = {"Clone", "Transplant", "Flip",        "Harvest",    "Feed", "Water",
                                      "Stage", "Topped",     "LST Trained", "Defoliated", "Note"};

template <typename Enum, std::size_t Count>
Enum Named(const char* const (&names)[Count], const std::string& name, Enum otherwise)
{
    for (std::size_t number = 0; number < Count; ++number)
        if (name == names[number])
            return static_cast<Enum>(number);
    return otherwise;
}

} // namespace

std::string Implementation::Name(PlantStage stage)
{
    return StageNames[static_cast<std::size_t>(stage)];
}

std::string Implementation::Name(PlantSex sex)
{
    return SexNames[static_cast<std::size_t>(sex)];
}

std::string Implementation::Name(PlantEventType type)
{
    return EventTypeNames[static_cast<std::size_t>(type)];
}

std::string Implementation::Name(PlantCareAction action)
{
    return action == PlantCareAction::Feed ? "Feed" : "Water";
}

PlantStage Implementation::StageNamed(const std::string& name)
{
    return Named(StageNames, name, PlantStage::Veg);
}

PlantSex Implementation::SexNamed(const std::string& name)
{
    return Named(SexNames, name, PlantSex::Unknown);
}

PlantEventType Implementation::EventTypeNamed(const std::string& name)
{
    return Named(EventTypeNames, name, PlantEventType::Note);
}

bool Implementation::GetPlant(const std::string& uuid, Plant& out)
{
    std::vector<Plant> plants;
    if (!ListPlants(plants))
        return false;
    const auto found = std::find_if(plants.begin(), plants.end(), [&](const Plant& p) { return p.UUID == uuid; });
    if (found == plants.end())
        return false;
    out = *found;
    return true;
}

bool Implementation::Migrate()
{
    const auto executeAll = [this](const std::vector<std::string>& statements) {
        return std::all_of(statements.begin(), statements.end(),
                           [this](const std::string& sql) { return Execute(sql); });
    };

    if (!Execute(SQL::ForeignKeys) || !executeAll(CreateTableStatements()))
        return false;
    for (const AddedColumn& column : AddedColumns())
    {
        const std::vector<std::string> names = Texts("PRAGMA table_info(" + column.Table + ");", 1);
        if (std::find(names.begin(), names.end(), column.Name) == names.end() && !Execute(column.Statement))
            return false;
    }
    const std::vector<std::string> events = Texts(SQL::EventTable, 0);
    const bool old = !events.empty() && events.front().find("'LST Trained'") == std::string::npos;
    return (!old || executeAll(RebuildStatements())) && executeAll(CreateIndexStatements());
}

bool Implementation::HasValidMotherLink(const Plant& plant)
{
    if (plant.MotherPlantUUID.empty())
        return true;
    if (plant.UUID.empty() || plant.MotherPlantUUID == plant.UUID)
        return false;

    std::vector<Plant> plants;
    if (!ListPlants(plants))
        return false;
    std::unordered_map<std::string, std::string> mothers;
    for (const Plant& candidate : plants)
        mothers[candidate.UUID] = candidate.MotherPlantUUID;

    std::unordered_set<std::string> visited;
    std::string current = plant.MotherPlantUUID;
    while (!current.empty())
    {
        if (current == plant.UUID || !visited.insert(current).second)
            return false;
        const auto found = mothers.find(current);
        if (found == mothers.end())
            return false;
        current = found->second;
    }
    return true;
}

PlantEventType Implementation::CareEventType(const PlantCareEntry& entry)
{
    return entry.Action == PlantCareAction::Feed ? PlantEventType::Feed : PlantEventType::Water;
}

std::string Implementation::CareDetails(const PlantCareEntry& entry)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(0);
    if (!entry.Product.empty())
        text << entry.Product << " | ";
    text << entry.AmountMl << " ml" << std::setprecision(2);
    if (entry.EC > 0)
        text << " | EC " << entry.EC;
    if (entry.PH > 0)
        text << " | pH " << entry.PH;
    if (entry.RunoffMl > 0)
        text << " | Runoff " << std::setprecision(0) << entry.RunoffMl << " ml";
    if (!entry.Notes.empty())
        text << " | " << entry.Notes;
    return text.str();
}

std::string Implementation::HarvestDetails(const HarvestRecord& record)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(1) << "Wet " << record.WetWeightG << " g | Dry " << record.DryWeightG
         << " g";
    if (record.SeedYield > 0)
        text << " | Seeds " << record.SeedYield;
    if (record.QualityRating > 0)
        text << " | Quality " << record.QualityRating << "/10";
    if (!record.CureOutcome.empty())
        text << " | " << record.CureOutcome;
    if (!record.Notes.empty())
        text << " | " << record.Notes;
    return text.str();
}

const std::vector<ImplementationKind>& Implementations()
{
    static const std::vector<ImplementationKind> implementations = {
        {"plantjournal", BENCH_PLANTJOURNAL_VERSION, MakePlantjournal},
        {"SQLite", sqlite3_libversion(), MakeSQLite},
        {"SQLite, kept", sqlite3_libversion(), MakeSQLiteKept},
#ifdef BENCH_SQLITECPP_VERSION
        {"SQLiteCpp", BENCH_SQLITECPP_VERSION, MakeSQLiteCpp},
#endif
#ifdef BENCH_SOCI_VERSION
        {"SOCI", BENCH_SOCI_VERSION, MakeSOCI},
#endif
#ifdef BENCH_POCO_VERSION
        {"Poco Data", BENCH_POCO_VERSION, MakePoco},
#endif
#ifdef BENCH_QT_VERSION
        {"Qt SQL", BENCH_QT_VERSION, MakeQt},
#endif
    };
    return implementations;
}

const std::vector<std::string>& AbsentImplementations()
{
    static const std::vector<std::string> absent = {
#ifndef BENCH_SQLITECPP_VERSION
        "SQLiteCpp",
#endif
#ifndef BENCH_SOCI_VERSION
        "SOCI",
#endif
#ifndef BENCH_POCO_VERSION
        "Poco Data",
#endif
#ifndef BENCH_QT_VERSION
        "Qt SQL",
#endif
    };
    return absent;
}

const ImplementationKind& ImplementationNamed(std::string_view name)
{
    for (const ImplementationKind& kind : Implementations())
        if (kind.Name == name)
            return kind;
    throw std::invalid_argument("no implementation has the name " + std::string(name));
}
