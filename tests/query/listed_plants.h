// What the lists of a journal return, and the words of the header in plain code, for models of the answers. A model
// shares no code with the library.
#pragma once

#include "plant_query.h"

#include <optional>
#include <string>
#include <vector>

namespace support
{

struct ListedPlant
{
    Plant Record;
    std::vector<PlantEvent> Events;
    std::vector<PlantCareEntry> Care;
    std::vector<PlantHealthObservation> Observations;
    std::optional<HarvestRecord> Harvest;
};

// Every plant, sorted by strain, name and row ID.
std::vector<ListedPlant> ListPlants(PlantDatabase& database);

bool IsOf(const PlantSet& set, const Plant& plant);
// Whether the date is not later than `last`, which includes the dates that begin with it.
bool IsUpTo(const std::string& date, const std::string& last);
// Days since 1970-01-01, where the text is a day.
std::optional<int> DayOf(const std::string& date);
std::string DateOf(int day);
// Without upper case ASCII letters.
std::string Lower(std::string text);

} // namespace support
