#include "commands/activity_list.h"
#include "commands/commands.h"
#include "journal/find_record.h"
#include "plant_validation.h"

#include <memory>

namespace
{

constexpr std::int64_t DaysBeforeToday = 13; // with today, two weeks

struct LogRequest
{
    ActivityOptions Options;
    std::optional<std::string> Text;
};

void ShowLog(Session& session, const LogRequest& request)
{
    const ActivityOptions& options = request.Options;
    const bool forPrograms = IsForPrograms(session, options.AsCSV);
    const std::vector<Plant> plants = AllPlants(session);
    const bool isRecent = !options.Plants.From && !options.Plants.To && !options.Newest;
    const std::string from =
        isRecent ? PlantDatePlusDays(PlantEventCurrentDate(), -DaysBeforeToday) : FirstDate(options.Plants);
    const std::vector<PlantActivity> activities =
        FindActivities(session, plants, options, from, request.Text.value_or(""));
    if (forPrograms)
        return PrintForPrograms(session, ActivityFields(), activities);
    if (plants.empty())
        std::cout << NoPlantsYet;
    else if (!activities.empty())
        PrintActivities(activities, plants);
    else if (isRecent)
        std::cout << "No records since " << from << "; --from sets an earlier date.\n";
    else
        std::cout << "No records match the options.\n";
    PrintArchivedLeftOut(session, plants, options.Plants);
}

} // namespace

void AddLogCommand(CLI::App& program, Session& session)
{
    auto request = std::make_shared<LogRequest>();
    CLI::App& log = AddCommand(program, "log", "List what was done, also across plants; by default of the last 14 days",
                               "log\nlog Basil Chili --from monday\nlog --tent South --kind feed,water --from 2025-03",
                               [&session, request] { ShowLog(session, *request); });
    AddPlantNames(log, request->Options.Plants);
    AddActivityOptions(log, request->Options);
    AddFlag(log, {"--text", "only records that contain this text", "TEXT"}, request->Text);
}
