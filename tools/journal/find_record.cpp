#include "journal/find_record.h"

#include "record/letters.h"
#include "record/nearest.h"
#include "record/text.h"
#include "refusal.h"
#include "terminal/printable.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

namespace
{

std::string Lines(const std::vector<Strain>& strains)
{
    std::string lines;
    for (const Strain& strain : strains)
        lines += "\n  " + Printable(strain.Name);
    return lines;
}

// "did you mean "Basil"?" where the name of a record is near, else `otherwise`.
template <typename Record>
std::string Suggestion(const std::string& named, const std::vector<Record>& records, const std::string& otherwise)
{
    std::vector<std::string> names;
    names.reserve(records.size());
    for (const Record& record : records)
        names.push_back(record.Name);
    std::vector<std::string> nearest = Nearest(named, names);
    for (std::string& name : nearest)
        name = InQuotes(Printable(name));
    return nearest.empty() ? otherwise : DidYouMean(nearest);
}

} // namespace

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
    return FindPlant(AllPlants(session), named);
}

Plant FindPlant(const std::vector<Plant>& plants, const std::string& named)
{
    constexpr std::size_t shortestPrefix = 4;
    const std::string nameWithoutCase = WithoutCase(named);
    const std::function<bool(const Plant&)> steps[] = {
        [&](const Plant& plant) { return plant.UUID == named; },
        [&](const Plant& plant) { return plant.Name == named; },
        [&](const Plant& plant) { return WithoutCase(plant.Name) == nameWithoutCase; },
        [&](const Plant& plant) { return named.size() >= shortestPrefix && plant.UUID.starts_with(named); },
    };
    std::vector<Plant> found;
    for (const auto& matches : steps)
        if (found.empty() && !named.empty())
            std::copy_if(plants.begin(), plants.end(), std::back_inserter(found), matches);
    if (found.size() == 1)
        return found.front();
    if (found.empty())
        throw Refusal(InQuotes(Printable(named)) + ": no plant has this name or UUID; " +
                      Suggestion(named, plants, "`plantjournal plant list` shows all plants"));
    std::string message = InQuotes(Printable(named)) + ": several plants match; name one of these by its UUID:";
    for (const Plant& plant : found)
        message += "\n  " + Printable(plant.UUID + "  " + DisplayName(plant) + "  " + plant.Strain);
    throw Refusal(message);
}

Strain FindStrain(Session& session, const std::string& name)
{
    const std::vector<Strain> strains = AllStrains(session);
    const std::string nameWithoutCase = WithoutCase(name);
    std::vector<Strain> found;
    for (const Strain& strain : strains)
        if (strain.Name == name)
            return strain;
        else if (WithoutCase(strain.Name) == nameWithoutCase)
            found.push_back(strain);
    if (found.size() == 1)
        return found.front();
    if (found.size() > 1)
        throw Refusal(InQuotes(Printable(name)) +
                      ": several strains differ only in letter case; write one of them as it is:" + Lines(found));
    if (strains.empty())
        throw Refusal(InQuotes(Printable(name)) +
                      ": the journal has no strains; `plantjournal strain add NAME` adds one");
    throw Refusal(InQuotes(Printable(name)) + ": no strain has this name; " +
                  Suggestion(name, strains, "`plantjournal strain list` shows all strains"));
}

std::string DisplayName(const Plant& plant)
{
    return plant.Name.empty() ? plant.UUID : plant.Name;
}
