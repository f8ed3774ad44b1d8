// The families and plants that changed. Grows inside SQLite's hooks, so it records a lack of memory as "any plant".
#pragma once

#include "plant_watcher.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>

namespace plant_watch
{

class ChangeSet
{
  public:
    void Add(PlantRecordFamily family) noexcept;
    void AddPlant(std::string_view uuid) noexcept;
    void AddAnyPlant() noexcept;
    // Adds every family and any plant.
    void AddEverything() noexcept;
    // Moves the changes of `other` into this set.
    void Take(ChangeSet& other) noexcept;
    void Clear() noexcept;
    // Throws std::bad_alloc.
    PlantChanges Listed() const;

  private:
    std::uint32_t Families = 0; // a bit for each family
    bool AnyPlant = false;      // `Plants` is then empty
    std::set<std::string, std::less<>> Plants;
};

} // namespace plant_watch
