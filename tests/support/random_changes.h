#pragma once

#include "plant_database.h"

#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace support
{

// A change with all its arguments. It does the same in every journal with the same content.
struct JournalChange
{
    std::string NewStrain; // stored before anything else
    std::function<bool(PlantRepository&)> Make;
};

// Chooses random changes of a journal. Each succeeds and changes something.
class RandomChanges
{
  public:
    explicit RandomChanges(std::mt19937_64& random) : Random(random) {}

    JournalChange Next(PlantRepository& repository);

  private:
    JournalChange NewPlant(const std::vector<Plant>& plants);
    JournalChange ChangedPlant(Plant plant);
    JournalChange ChangedStrain(PlantRepository& repository);
    JournalChange ChangedEvent(PlantRepository& repository, const Plant& plant);
    JournalChange ChangedHarvest(PlantRepository& repository, const Plant& plant);
    JournalChange ChangedCare(PlantRepository& repository, const Plant& plant);
    JournalChange ChangedPhoto(PlantRepository& repository, const Plant& plant);
    JournalChange ChangedObservation(PlantRepository& repository, const Plant& plant);
    JournalChange ChangedEntry(PlantRepository& repository, const Plant& plant);

    template <typename Record> Record OneOf(const std::vector<Record>& records)
    {
        return records.at(static_cast<std::size_t>(Random() % records.size()));
    }
    template <typename Record, typename Update, typename Remove, typename Alter>
    JournalChange ChangedRecord(PlantRepository& repository, const Plant& plant,
                                bool (PlantRepository::*list)(const std::string&, std::vector<Record>&),
                                bool (PlantRepository::*create)(Record&), Update update, const Remove& remove,
                                const Alter& alter);

    std::string NewName(const std::string& prefix);
    std::string Date();
    std::string Text();

    std::mt19937_64& Random;
    int Names = 0;
};

} // namespace support
