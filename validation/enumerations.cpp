#include "plant_validation.h"

#include <cstddef>

namespace
{

template <typename Enum, std::size_t Count>
std::optional<Enum> WithName(const std::array<Enum, Count>& values, const char* (*nameOf)(Enum),
                             const std::string& name)
{
    for (const Enum value : values)
        if (name == nameOf(value))
            return value;
    return {};
}

} // namespace

std::optional<PlantStage> ParsePlantStage(const std::string& name)
{
    return WithName(PlantStages, PlantStageName, name);
}

std::optional<PlantSex> ParsePlantSex(const std::string& name)
{
    return WithName(PlantSexes, PlantSexName, name);
}

std::optional<PlantEventType> ParsePlantEventType(const std::string& name)
{
    return WithName(PlantEventTypes, PlantEventTypeName, name);
}

std::optional<PlantCareAction> ParsePlantCareAction(const std::string& name)
{
    return WithName(PlantCareActions, PlantCareActionName, name);
}

std::optional<PlantJournalType> ParsePlantJournalType(const std::string& name)
{
    return WithName(PlantJournalTypes, PlantJournalTypeName, name);
}
