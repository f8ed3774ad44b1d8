// A random season of a few plants, and random questions about it. Dates, texts and numbers are often unusual.
#pragma once

#include "plant_query.h"

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace support
{

class RandomSeason
{
  public:
    RandomSeason(std::mt19937_64& random, PlantDatabase& database) : Random(random), Database(database) {}

    // Stores some plants with their records, so many that each has a rhythm of care.
    void Fill();
    // Stores rows of other programs instead.
    void FillWithOddRows();

    PlantSet AnySet();
    PlantTotalFilter AnyTotalFilter();
    std::vector<PlantComparedSet> AnyComparedSets();
    // A day near those of the records.
    std::string AnyDay();
    // The UUID of a plant, or another text.
    std::string AnyPlant();

  private:
    void AddPlant();
    void AddHarvest(Plant plant);
    void AddRecords(const Plant& plant);

    std::string Date();
    std::string TextOfAPlant(std::string Plant::*text);
    double Number();
    std::string OneOf(const std::vector<std::string>& texts) { return texts.at(Below(texts.size())); }
    std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Random() % count); }
    template <typename Enum> Enum UpTo(Enum last)
    {
        return static_cast<Enum>(Below(static_cast<std::size_t>(last) + 1));
    }

    std::mt19937_64& Random;
    PlantDatabase& Database;
    std::vector<Plant> Plants;
};

} // namespace support
