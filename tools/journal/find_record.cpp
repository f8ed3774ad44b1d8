#include "journal/find_record.h"

#include "record/text.h"
#include "refusal.h"
#include "terminal/printable.h"

#include <algorithm>
#include <iterator>
#include <utility>

std::vector<Plant> AllPlants(Session& session)
{
    std::vector<Plant> plants;
    session.RequireList(session.Read().ListPlants(plants), "the plants cannot be listed");
    return plants;
}

std::vector<Strain> AllStrains(Session& session)
{
    std::vector<Strain> strains;
    session.RequireList(session.Read().ListStrains(strains), "the strains cannot be listed");
    return strains;
}

Plant FindPlant(Session& session, const std::string& named)
{
    const std::vector<Plant> plants = AllPlants(session);
    const auto keep = [&](const auto& matches)
    {
        std::vector<Plant> found;
        std::copy_if(plants.begin(), plants.end(), std::back_inserter(found), matches);
        return found;
    };
    std::vector<Plant> found = keep([&](const Plant& plant) { return plant.UUID == named; });
    if (found.empty() && !named.empty())
        found = keep([&](const Plant& plant) { return plant.Name == named || plant.UUID.starts_with(named); });
    if (found.size() == 1)
        return found.front();

    const bool known = !found.empty();
    std::string message = InQuotes(Printable(named)) + ": several plants match";
    if (!known)
    {
        message = InQuotes(Printable(named)) + ": no plant has this name or UUID";
        found = keep([&](const Plant& plant) { return !named.empty() && EqualIgnoringCase(plant.Name, named); });
    }
    if (found.empty())
        message += "; `plantjournal plant list` shows all plants";
    else
        message += known ? "; name one of these by its UUID:" : "; these names differ only in letter case:";
    for (const Plant& plant : found)
        message += "\n  " + Printable(plant.UUID + "  " + DisplayName(plant) + "  " + plant.Strain);
    throw Refusal(message);
}

Strain FindStrain(Session& session, const std::string& name)
{
    std::vector<Strain> strains = AllStrains(session);
    for (Strain& strain : strains)
        if (strain.Name == name)
            return std::move(strain);
    if (strains.empty())
        throw Refusal(InQuotes(Printable(name)) +
                      ": the journal has no strains; `plantjournal strain add NAME` adds one");
    std::string message = InQuotes(Printable(name)) + ": no strain has this name; the strains are:";
    for (const Strain& strain : strains)
        message += "\n  " + Printable(strain.Name);
    throw Refusal(message);
}

std::string DisplayName(const Plant& plant)
{
    return plant.Name.empty() ? plant.UUID : plant.Name;
}
