#include "transfer/known_plants.h"

#include "record/text.h"
#include "terminal/printable.h"

void KnownPlants::Add(const Plant& plant)
{
    if (ByUUID.emplace(plant.UUID, &plant).second)
        ByName[plant.Name].push_back(&plant);
}

const Plant* KnownPlants::WithUUID(const std::string& uuid) const
{
    const auto found = ByUUID.find(uuid);
    return found == ByUUID.end() ? nullptr : found->second;
}

const std::vector<const Plant*>& KnownPlants::WithName(const std::string& name) const
{
    static const std::vector<const Plant*> none;
    const auto found = ByName.find(name);
    return found == ByName.end() ? none : found->second;
}

namespace
{

const Plant* PlantWithName(const std::string& place, const std::string& name, const KnownPlants& plants,
                           Problems& errors)
{
    const std::vector<const Plant*>& found = plants.WithName(name);
    if (found.size() == 1)
        return found.front();
    errors.push_back(place + (found.empty() ? "no plant of the journal or of this import has exactly this name; "
                                              "correct it, or import the plant, too"
                                            : "several plants have this name; give the UUID of one in PlantUUID"));
    return nullptr;
}

} // namespace

template <typename Record>
void LinkOwners(ImportedTable<Record>& table, const KnownPlants& plants, ImportMessages& messages)
{
    auto name = table.PlantNames.begin();
    for (std::size_t i = 0; i < table.Rows.size(); ++i)
    {
        ImportedRow<Record>& row = table.Rows[i];
        std::string& uuid = row.Value.PlantUUID;
        const Plant* plant = plants.WithUUID(uuid);
        const bool isNamed = name != table.PlantNames.end() && name->Row == i;
        const auto place = [&]
        { return table.File->Place(name->Offset) + ": Plant: " + InQuotes(Printable(name->Name)) + ": "; };
        if (isNamed && uuid.empty())
        {
            plant = PlantWithName(place(), name->Name, plants, messages.Errors);
            if (plant != nullptr)
                uuid = plant->UUID;
        }
        else if (plant == nullptr)
            messages.Errors.push_back(table.Place(row, "PlantUUID") +
                                      (uuid.empty() ? "is empty; give the UUID of a plant, or its name in Plant"
                                                    : "no plant has the UUID " + InQuotes(Printable(uuid))));
        else if (isNamed && plant->Name != name->Name)
            messages.Warnings.Add(
                [&]
                {
                    return place() + "the plant with the UUID " + InQuotes(Printable(uuid)) + " is named " +
                           InQuotes(Printable(plant->Name)) + "; the row is imported for that plant";
                });
        if (isNamed)
            ++name;
    }
}

template void LinkOwners(ImportedTable<PlantEvent>&, const KnownPlants&, ImportMessages&);
template void LinkOwners(ImportedTable<PlantCareEntry>&, const KnownPlants&, ImportMessages&);
template void LinkOwners(ImportedTable<HarvestRecord>&, const KnownPlants&, ImportMessages&);
template void LinkOwners(ImportedTable<PlantPhoto>&, const KnownPlants&, ImportMessages&);
template void LinkOwners(ImportedTable<PlantHealthObservation>&, const KnownPlants&, ImportMessages&);
template void LinkOwners(ImportedTable<PlantJournalEntry>&, const KnownPlants&, ImportMessages&);
