#include "change_set.h"

#include "tables.h"

namespace plant_watch
{
namespace
{

std::uint32_t Bit(PlantRecordFamily family)
{
    return 1U << static_cast<std::uint32_t>(family);
}

} // namespace

void ChangeSet::Add(PlantRecordFamily family) noexcept
{
    Families |= Bit(family);
}

void ChangeSet::AddPlant(std::string_view uuid) noexcept
{
    if (AnyPlant || Plants.find(uuid) != Plants.end())
        return;
    try
    {
        Plants.emplace(uuid);
    }
    catch (...) // lack of memory
    {
        AddAnyPlant();
    }
    if (Plants.size() > PlantWatcher::MostPlants)
        AddAnyPlant();
}

void ChangeSet::AddAnyPlant() noexcept
{
    AnyPlant = true;
    Plants.clear();
}

void ChangeSet::AddEverything() noexcept
{
    for (const Table& table : Tables)
        Add(table.Family);
    AddAnyPlant();
}

void ChangeSet::Take(ChangeSet& other) noexcept
{
    Families |= other.Families;
    Plants.merge(other.Plants);
    if (AnyPlant || other.AnyPlant || Plants.size() > PlantWatcher::MostPlants)
        AddAnyPlant();
    other.Clear();
}

void ChangeSet::Clear() noexcept
{
    Families = 0;
    AnyPlant = false;
    Plants.clear();
}

PlantChanges ChangeSet::Listed() const
{
    PlantChanges changes;
    for (const Table& table : Tables)
        if ((Families & Bit(table.Family)) != 0)
            changes.Families.push_back(table.Family);
    changes.Plants.assign(Plants.begin(), Plants.end());
    changes.AnyPlant = AnyPlant;
    return changes;
}

} // namespace plant_watch
