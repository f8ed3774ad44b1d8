#include "plant_query.h"

#include <array>
#include <cstddef>

const char* PlantActivityRecordName(PlantActivityRecord record)
{
    constexpr std::array<const char*, 7> names = {
        "Plant", "Event", "CareEntry", "HarvestRecord", "JournalEntry", "HealthObservation", "Photo"};
    const auto number = static_cast<std::size_t>(record); // a negative value becomes a large one
    return names.at(number < names.size() ? number : 0);
}
