#include "old_event.h"

#include "plant.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace plant_file
{

namespace
{

constexpr std::array<std::string_view, 3> LaterTypes = {"Topped", "LST Trained", "Defoliated"};
constexpr std::array<std::string_view, 9> StockPhrases = {
    "Watered", "Fed", "Topped", "LST Trained", "Defoliated", "Transplanted", "Cloned", "Flip to Flower", "Harvested"};

} // namespace

bool IsDefinitionOfOldEvents(const std::string& definition)
{
    return std::none_of(LaterTypes.begin(), LaterTypes.end(),
                        [&](std::string_view type)
                        { return definition.find('\'' + std::string(type) + '\'') != std::string::npos; });
}

void ConvertOldEvent(std::string& type, std::string& details)
{
    const bool isLaterType = std::find(LaterTypes.begin(), LaterTypes.end(), details) != LaterTypes.end();
    if (type == "Note" && isLaterType)
        type = details;
    type = PlantEventTypeName(PlantEventTypeFromName(type)); // an unknown name becomes the default
    if (std::find(StockPhrases.begin(), StockPhrases.end(), details) != StockPhrases.end())
        details.clear();
}

} // namespace plant_file
