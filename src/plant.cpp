#include "plant.h"

#include "plant_database.h"

#include <cstddef>
#include <ctime>
#include <string_view>
#include <utility>

namespace
{

// The stored names in the order of the enumerators. They are views because most comparisons of views end at the length.
// Each view is a whole literal, so `data()` ends with a zero byte.
constexpr std::string_view StageNames[] = {"Seed", "Clone", "Veg", "Flower", "Dry", "Cure", "Harvested", "Archived"};
constexpr std::string_view SexNames[] = {"Unknown", "Female", "Male", "Hermaphrodite"};
constexpr std::string_view EventTypeNames[] = {"Clone", "Transplant", "Flip",        "Harvest",    "Feed", "Water",
                                               "Stage", "Topped",     "LST Trained", "Defoliated", "Note"};
constexpr std::string_view CareActionNames[] = {"Feed", "Water"};
constexpr std::string_view JournalTypeNames[] = {"Observation", "Training",    "Pruning",
                                                 "Topping",     "Defoliation", "Milestone"};

template <typename Enum, std::size_t Count>
const char* NameOf(const std::string_view (&names)[Count], Enum value, Enum fallback)
{
    const auto number = static_cast<std::size_t>(value); // a negative number becomes larger than Count
    return names[number < Count ? number : static_cast<std::size_t>(fallback)].data();
}

template <typename Enum, std::size_t Count>
Enum FromName(const std::string_view (&names)[Count], std::string_view name, Enum fallback)
{
    for (std::size_t number = 0; number < Count; ++number)
        if (name == names[number])
            return static_cast<Enum>(number);
    return fallback;
}

// Saves a copy, because a failed create may set `ID`. The next save would then update a row that does not exist and
// return true.
template <auto Create, auto Update, typename Record> bool SaveRecord(PlantRepository& repository, Record& record)
{
    Record copy = record;
    const bool saved = record.ID == 0 ? (repository.*Create)(copy) : (repository.*Update)(copy);
    if (saved)
        record = std::move(copy);
    return saved;
}

} // namespace

const char* PlantStageName(PlantStage stage)
{
    return NameOf(StageNames, stage, PlantStage::Veg);
}

PlantStage PlantStageFromName(const std::string& name)
{
    return FromName(StageNames, name, PlantStage::Veg);
}

const char* PlantSexName(PlantSex sex)
{
    return NameOf(SexNames, sex, PlantSex::Unknown);
}

PlantSex PlantSexFromName(const std::string& name)
{
    return FromName(SexNames, name, PlantSex::Unknown);
}

const char* PlantEventTypeName(PlantEventType type)
{
    return NameOf(EventTypeNames, type, PlantEventType::Note);
}

PlantEventType PlantEventTypeFromName(const std::string& name)
{
    return FromName(EventTypeNames, name, PlantEventType::Note);
}

const char* PlantCareActionName(PlantCareAction action)
{
    return NameOf(CareActionNames, action, PlantCareAction::Water);
}

PlantCareAction PlantCareActionFromName(const std::string& name)
{
    return FromName(CareActionNames, name, PlantCareAction::Water);
}

const char* PlantJournalTypeName(PlantJournalType type)
{
    return NameOf(JournalTypeNames, type, PlantJournalType::Observation);
}

PlantJournalType PlantJournalTypeFromName(const std::string& name)
{
    return FromName(JournalTypeNames, name, PlantJournalType::Observation);
}

std::string PlantEventCurrentDate()
{
    const std::time_t now = std::time(nullptr);
    std::tm today{};
#ifdef _WIN32
    _tzset(); // the time zone may have changed since the last call
    localtime_s(&today, &now);
#else
    tzset(); // the time zone may have changed since the last call
    localtime_r(&now, &today);
#endif
    char date[32];
    return {date, std::strftime(date, sizeof date, "%Y-%m-%d", &today)};
}

bool Plant::Load(PlantRepository& repository, const std::string& uuid)
{
    return repository.GetPlant(uuid, *this);
}

bool Plant::Save(PlantRepository& repository)
{
    return SaveRecord<&PlantRepository::CreatePlant, &PlantRepository::UpdatePlant>(repository, *this);
}

bool Plant::Delete(PlantRepository& repository) const
{
    return repository.DeletePlant(UUID);
}

Plant Plant::Duplicate(PlantRepository& repository) const
{
    Plant copy;
    repository.DuplicatePlant(*this, copy);
    return copy;
}

bool PlantEvent::Save(PlantRepository& repository)
{
    return SaveRecord<&PlantRepository::CreatePlantEvent, &PlantRepository::UpdatePlantEvent>(repository, *this);
}

bool PlantEvent::Delete(PlantRepository& repository) const
{
    return repository.DeletePlantEvent(ID);
}

bool PlantCareEntry::Save(PlantRepository& repository)
{
    return SaveRecord<&PlantRepository::CreatePlantCareEntry, &PlantRepository::UpdatePlantCareEntry>(repository,
                                                                                                      *this);
}

bool PlantCareEntry::Delete(PlantRepository& repository) const
{
    return repository.DeletePlantCareEntry(ID);
}

bool PlantPhoto::Save(PlantRepository& repository)
{
    return SaveRecord<&PlantRepository::CreatePlantPhoto, &PlantRepository::UpdatePlantPhoto>(repository, *this);
}

bool PlantPhoto::Delete(PlantRepository& repository) const
{
    return repository.DeletePlantPhoto(UUID);
}
