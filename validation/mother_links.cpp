#include "mother_links.h"

#include "reading.h"

#include <unordered_map>
#include <unordered_set>

namespace plant_validation
{

namespace
{

using MotherLinks = std::unordered_map<std::string, std::string>;

// The UUID of each plant's mother. The order matters where two UUIDs are equal up to their first zero byte: it is that
// of PlantRepository::ListPlants.
MotherLinks StoredLinks(sqlite3* journal)
{
    Statement rows(journal, "reading the plants",
                   "SELECT UUID,COALESCE((SELECT UUID FROM Plants m WHERE m.ID=p.MotherPlantID),'') FROM Plants p "
                   "ORDER BY Strain COLLATE NOCASE,Name COLLATE NOCASE;");
    MotherLinks links;
    while (rows.Step())
        links[rows.Text(0)] = rows.Text(1);
    return links;
}

} // namespace

void RefuseMother(Checker& check, sqlite3* journal, const Plant& plant)
{
    // A plant that is refused by itself is not compared with the journal.
    if (plant.MotherPlantUUID.empty() || plant.MotherPlantUUID == plant.UUID || (plant.UUID.empty() && plant.ID != 0))
        return;
    const MotherLinks links = StoredLinks(journal);
    std::unordered_set<std::string> visited;
    for (std::string current = plant.MotherPlantUUID; !current.empty();)
    {
        if (current == plant.UUID)
            return check.Refuse("MotherPlantUUID", "the mother descends from this plant", "UUID");
        if (!visited.insert(current).second)
            return check.Refuse("MotherPlantUUID", "the mother descends from a cycle of mother links");
        const auto link = links.find(current);
        if (link == links.end())
            return check.Refuse("MotherPlantUUID", "no plant has this UUID");
        current = link->second;
    }
}

} // namespace plant_validation
