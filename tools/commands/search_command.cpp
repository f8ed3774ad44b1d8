#include "commands/activity_list.h"
#include "commands/commands.h"
#include "journal/find_record.h"
#include "record/letters.h"
#include "terminal/printable.h"

#include <memory>

namespace
{

struct SearchRequest
{
    ActivityOptions Options;
    std::vector<std::string> Words;
};

// The plants whose name or notes contain the text, as activities without a date.
std::vector<PlantActivity> PlantsWith(const std::string& text, const std::vector<Plant>& plants, const PlantSet& set)
{
    const std::string folded = WithoutCase(text);
    std::vector<PlantActivity> found;
    for (const Plant& plant : plants)
        if (IsIn(set, plant) && (WithoutCase(plant.Name).find(folded) != std::string::npos ||
                                 WithoutCase(plant.Notes).find(folded) != std::string::npos))
            found.push_back({"", "Plant", Joined({plant.Strain, plant.Notes}, " | "), plant.UUID, plant.Name,
                             PlantActivityRecord::Plant, plant.ID});
    return found;
}

void Search(Session& session, const SearchRequest& request)
{
    const ActivityOptions& options = request.Options;
    const bool forPrograms = IsForPrograms(session, options.AsCSV);
    const std::string text = Joined(request.Words, " ");
    if (text.empty())
        RefuseUsage("the text is empty");
    const std::vector<Plant> plants = AllPlants(session);
    const std::vector<PlantActivity> activities =
        FindActivities(session, plants, options, FirstDate(options.Plants), text);
    std::vector<PlantActivity> found;
    if (!options.Kinds && !options.Plants.From && !options.Plants.To) // a plant has no kind and no date
        found = PlantsWith(text, plants, ListedPlantSet(session, plants, options.Plants));
    found.insert(found.end(), activities.begin(), activities.end());
    if (forPrograms)
        return PrintForPrograms(session, ActivityFields(), found);
    if (plants.empty())
        std::cout << NoPlantsYet;
    else if (found.empty())
        std::cout << "Nothing contains " << InQuotes(Printable(text)) << ".\n";
    else
        PrintActivities(found, plants);
    PrintArchivedLeftOut(session, plants, options.Plants);
}

} // namespace

void AddSearchCommand(CLI::App& program, Session& session)
{
    auto request = std::make_shared<SearchRequest>();
    CLI::App& search = AddCommand(program, "search", "Search the records and the names and notes of plants for a text",
                                  "search thrips\nsearch neem oil --plant Basil --from 2025",
                                  [&session, request] { Search(session, *request); });
    AddArguments(search, "TEXT", "a part of the text, in any letter case", request->Words);
    AddPlantFlag(search, request->Options.Plants);
    AddActivityOptions(search, request->Options);
}
