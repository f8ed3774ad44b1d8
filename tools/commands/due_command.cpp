#include "commands/commands.h"
#include "commands/plant_labels.h"
#include "commands/plant_statuses.h"
#include "journal/find_record.h"
#include "plant_validation.h"
#include "record/elapsed.h"
#include "terminal/printable.h"

#include <algorithm>
#include <memory>

namespace
{

struct DueRequest
{
    PlantSetOptions Plants;
    std::optional<std::string> Within;
    bool AsCSV = false;
};

// The number of days in a text such as 3, 3d or 2w. Throws BadValue.
std::int64_t DaysFrom(std::string text)
{
    constexpr std::int64_t daysOfWeek = 7;
    constexpr std::size_t mostDigits = 4;
    const std::string whole = text;
    const bool areWeeks = text.ends_with('w');
    if (areWeeks || text.ends_with('d'))
        text.pop_back();
    if (text.empty() || !IsDigits(text) || text.size() > mostDigits)
        throw BadValue(InQuotes(whole) + " is not a number of days; write it like 3d or 2w");
    std::int64_t number = 0;
    ParseValue(text, &number);
    return areWeeks ? number * daysOfWeek : number;
}

std::string DaysObjection(const std::string& text)
{
    try
    {
        DaysFrom(text);
        return {};
    }
    catch (const BadValue& bad)
    {
        return bad.what();
    }
}

void PrintDue(const std::vector<PlantStatus>& due, const UUIDTexts& labels)
{
    const std::string today = PlantEventCurrentDate();
    std::vector<Row> rows;
    for (const PlantStatus& plant : due)
    {
        const auto label = labels.find(plant.PlantUUID); // another program can have added a plant since
        rows.push_back({label == labels.end() ? plant.Name : label->second, DueText(plant.DueDate, today), plant.Tent,
                        AgoText(plant.LastWaterDate, today), AgoText(plant.LastFeedDate, today), RhythmText(plant)});
    }
    PrintTable(std::cout,
               {{"Plant", WhenNarrow::Keep},
                {"Due", WhenNarrow::Keep},
                {"Tent"},
                {"Last watered"},
                {"Last fed"},
                {"Usual care"}},
               rows);
}

// What is printed where no plant is due. `anyPlant` is whether plants were selected; `next` is the plant that is due
// next; null where none is known.
void PrintNothingDue(std::int64_t within, bool anyPlant, const PlantStatus* next, const UUIDTexts& labels)
{
    const std::string today = PlantEventCurrentDate();
    std::cout << (within == 0 ? "Nothing is due today."
                              : "Nothing is due until " + PlantDatePlusDays(today, within) + '.');
    if (!anyPlant)
        std::cout << " No growing plants match.\n";
    else if (next == nullptr)
        std::cout << " A due date is known once a plant was fed or watered on two days.\n";
    else
        std::cout << " Next is "
                  << Printable(labels.contains(next->PlantUUID) ? labels.at(next->PlantUUID) : next->Name) << ", "
                  << DueText(next->DueDate, today) << " (" << next->DueDate << ").\n";
}

void ShowDue(Session& session, const DueRequest& request)
{
    const bool forPrograms = IsForPrograms(session, request.AsCSV);
    const std::vector<Plant> plants = AllPlants(session);
    const std::vector<PlantStatus> statuses = FindStatuses(session, plants, request.Plants);
    const std::int64_t within = request.Within ? DaysFrom(*request.Within) : 0;
    std::vector<PlantStatus> due;
    const PlantStatus* next = nullptr;
    for (const PlantStatus& plant : statuses)
        if (const std::optional<std::int64_t> days = DaysUntilDue(plant); days && *days <= within)
            due.push_back(plant);
        else if (days && next == nullptr) // they are sorted by date
            next = &plant;
    if (forPrograms)
        PrintForPrograms(session, StatusFields(), due);
    else if (!due.empty())
        PrintDue(due, PlantLabels(plants));
    else if (plants.empty())
        std::cout << NoPlantsYet;
    else
        PrintNothingDue(within, !statuses.empty(), next, PlantLabels(plants));
}

} // namespace

void AddDueCommand(CLI::App& program, Session& session)
{
    auto request = std::make_shared<DueRequest>();
    CLI::App& due =
        AddCommand(program, "due", "List the plants that are due for care, by their usual rhythm",
                   "due\ndue --within 3d\ndue --tent South", [&session, request] { ShowDue(session, *request); });
    AddPlantNames(due, request->Plants);
    AddPlantOptions(due, request->Plants);
    AddFlag(due,
            {"--within", "also those that are due in the next days, such as 3d or 1w", "DAYS", Need::Optional,
             DaysObjection},
            request->Within);
    AddCSV(due, request->AsCSV);
}
