#include "commands/commands.h"
#include "commands/plant_labels.h"
#include "commands/plant_statuses.h"
#include "commands/selection.h"
#include "journal/find_record.h"
#include "record/elapsed.h"

#include <algorithm>
#include <memory>

namespace
{

struct StatusRequest
{
    PlantSetOptions Plants;
    bool AsCSV = false;
};

std::string Days(const std::optional<std::int64_t>& days)
{
    return days ? std::to_string(*days) + " d" : "";
}

std::string ThingsAre(std::ptrdiff_t number)
{
    return std::to_string(number) + (number == 1 ? " is " : " are ");
}

// "8 plants growing; 2 are due for care today, 1 is overdue."
std::string SummaryOf(const std::vector<PlantStatus>& plants)
{
    const auto count = [&](const auto& matches) { return std::count_if(plants.begin(), plants.end(), matches); };
    const auto dueToday = count([](const PlantStatus& plant) { return DaysUntilDue(plant) == 0; });
    const auto overdue = count([](const PlantStatus& plant) { return DaysUntilDue(plant).value_or(0) < 0; });
    const bool allGrow =
        std::all_of(plants.begin(), plants.end(), [](const PlantStatus& plant) { return IsGrowing(plant.Stage); });
    std::string text = std::to_string(plants.size()) + (plants.size() == 1 ? " plant" : " plants");
    text += allGrow ? " growing; " : "; ";
    if (dueToday > 0)
        text += ThingsAre(dueToday) + "due for care today" + (overdue > 0 ? ", " + ThingsAre(overdue) + "overdue" : "");
    else
        text += overdue > 0 ? ThingsAre(overdue) + "overdue for care" : "none is due for care today";
    return text + ".\n";
}

void PrintStatuses(const std::vector<PlantStatus>& statuses, const std::vector<Plant>& plants)
{
    const std::string today = PlantEventCurrentDate();
    const UUIDTexts labels = PlantLabels(plants);
    std::vector<Row> rows;
    for (const PlantStatus& plant : statuses)
    {
        std::vector<std::string> health;
        std::transform(plant.Health.begin(), plant.Health.end(), std::back_inserter(health), HealthText);
        const auto label = labels.find(plant.PlantUUID); // another program can have added a plant since
        rows.push_back({label == labels.end() ? plant.Name : label->second,
                        Joined({PlantStageName(plant.Stage), Days(plant.StageDays)}, " "),
                        plant.AgeDays ? AgeText(*plant.AgeDays) : "", AgoText(plant.LastFeedDate, today),
                        AgoText(plant.LastWaterDate, today), DueText(plant.DueDate, today), Joined(health, ", ")});
    }
    std::cout << SummaryOf(statuses);
    PrintTable(std::cout,
               {{"Plant", WhenNarrow::Keep},
                {"Stage"},
                {"Age"},
                {"Last fed"},
                {"Last watered"},
                {"Due", WhenNarrow::Keep},
                {"Health", WhenNarrow::Cut}},
               rows);
}

// "3 d ago, on 2025-03-19"; empty without a date.
std::string WhenInWords(const std::string& date, const std::string& today)
{
    const std::string ago = AgoText(date, today);
    return ago == date ? ago : ago + ", on " + date;
}

void PrintStatusInWords(const PlantStatus& plant, const std::vector<Plant>& plants)
{
    const std::string today = PlantEventCurrentDate();
    std::string health;
    for (const PlantHealthObservation& seen : plant.Health)
        health += HealthText(seen) + ", " + AgoText(seen.ObservationDate, today) +
                  (seen.Treatment.empty() ? "" : ": " + seen.Treatment) + '\n';
    const UUIDTexts labels = PlantLabels(plants);
    PrintDescription(
        std::cout,
        {{"Plant", labels.contains(plant.PlantUUID) ? labels.at(plant.PlantUUID) : plant.Name},
         {"Strain", plant.Strain},
         {"Tent", plant.Tent},
         {"Stage", Joined({PlantStageName(plant.Stage), plant.StageDays ? "for " + Days(plant.StageDays) : "",
                           plant.StageDate.empty() ? "" : "since " + plant.StageDate},
                          " ")},
         {"Age", plant.AgeDays ? AgeText(*plant.AgeDays) : ""},
         {"Since the flip", Days(plant.FlipDays)},
         {"Last fed", WhenInWords(plant.LastFeedDate, today)},
         {"Last watered", WhenInWords(plant.LastWaterDate, today)},
         {"Care", RhythmText(plant)},
         {"Due", plant.DueDate.empty() ? "" : DueText(plant.DueDate, today) + ", on " + plant.DueDate},
         {"Health", health}});
}

void ShowStatus(Session& session, const StatusRequest& request)
{
    const bool forPrograms = IsForPrograms(session, request.AsCSV);
    const std::vector<Plant> plants = AllPlants(session);
    const std::vector<PlantStatus> statuses = FindStatuses(session, plants, request.Plants);
    const PlantSetOptions& options = request.Plants;
    const bool hasOptions = options.NamesPlants() || options.Strain || options.Tent || options.Stage;
    if (forPrograms)
        PrintForPrograms(session, StatusFields(), statuses);
    else if (statuses.size() == 1 && options.Named.size() == 1)
        PrintStatusInWords(statuses.front(), plants);
    else if (!statuses.empty())
        PrintStatuses(statuses, plants);
    else if (plants.empty())
        std::cout << NoPlantsYet;
    else if (hasOptions)
        std::cout << "No plants match the options; `plantjournal status --all` shows all plants.\n";
    else
        std::cout << "No plants are growing; `plantjournal plant add NAME` adds one, `plantjournal status --all` shows "
                     "all plants.\n";
}

} // namespace

void AddStatusCommand(CLI::App& program, Session& session)
{
    auto request = std::make_shared<StatusRequest>();
    CLI::App& status = AddCommand(program, "status", "Show how the growing plants are and which are due for care",
                                  "status\nstatus Basil\nstatus --tent South --csv",
                                  [&session, request] { ShowStatus(session, *request); });
    AddPlantNames(status, request->Plants);
    AddPlantOptions(status, request->Plants);
    AddAllPlants(status, "plants in every stage, not only growing ones", request->Plants);
    AddCSV(status, request->AsCSV);
}
