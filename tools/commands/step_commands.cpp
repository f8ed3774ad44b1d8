#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/care_summary.h"
#include "commands/commands.h"
#include "commands/plant_step.h"
#include "commands/selection.h"
#include "journal/find_record.h"
#include "record/text.h"
#include "refusal.h"
#include "terminal/printable.h"

#include <iostream>
#include <memory>
#include <utility>

// `stage`, `archive`, `transplant`, `top`, `train` and `defoliate`: a step of one or several plants.

namespace
{

struct StepRequest
{
    Selection Plants;
    std::optional<std::string> Date;
    std::optional<std::string> Details;
    std::optional<std::string> Pot;
    std::optional<std::string> Medium;
    std::optional<std::string> NewTent;
};

using StepMaker = std::function<void(Session&, const StepRequest&)>;

void MovePlants(Session& session, const Selection& selection, PlantStage stage, const std::string& date)
{
    std::vector<PlantStep> steps;
    for (const Plant& plant : SelectPlants(AllPlants(session), selection))
        if (plant.Stage == stage)
            std::cerr << "notice: " << Printable(DisplayName(plant)) << ": the plant is already in the stage "
                      << PlantStageName(stage) << "; nothing was stored\n";
        else
            steps.push_back(MoveToStage(plant, stage, date));
    StoreAndReportSteps(session, steps, selection.RecordsStored());
}

// Removes the stage from the end of the words and returns it.
PlantStage TakeStage(std::vector<std::string>& words)
{
    if (words.empty())
        RefuseUsage("the stage is missing; write it after the plants");
    PlantStage stage{};
    try
    {
        ParseValue(words.back(), &stage);
    }
    catch (const BadValue& bad)
    {
        const std::string reason = bad.what();
        RefuseUsage(reason + (reason.ends_with('?') ? "" : "; write the stage after the plants"));
    }
    if (stage == PlantStage::Harvested)
        RefuseUsage("a harvest record sets the stage Harvested; `plantjournal harvest add PLANT` adds one");
    words.pop_back();
    return stage;
}

void ChangeStages(Session& session, const StepRequest& request)
{
    Selection selection = request.Plants;
    const PlantStage stage = TakeStage(selection.Named);
    MovePlants(session, selection, stage, DateOrToday(request.Date));
}

void ArchivePlants(Session& session, const StepRequest& request)
{
    MovePlants(session, request.Plants, PlantStage::Archived, DateOrToday(request.Date));
}

// The plants to transplant. A user can take --tent for the tent to which the plants are moved.
std::vector<Plant> PlantsToTransplant(Session& session, const Selection& selection)
{
    if (!selection.Named.empty() && selection.Tent)
        RefuseUsage("--tent selects the plants in a tent; --to-tent moves the plants that you name");
    const std::vector<Plant> plants = AllPlants(session);
    try
    {
        return SelectPlants(plants, selection);
    }
    catch (const Refusal& refusal)
    {
        if (!selection.Tent)
            throw;
        throw Refusal(refusal.what() + std::string("\n--tent selects the plants in a tent; --to-tent moves them to "
                                                   "another."));
    }
}

void TransplantPlants(Session& session, const StepRequest& request)
{
    const std::vector<Plant> plants = PlantsToTransplant(session, request.Plants);
    const std::string places = Joined({request.Pot.value_or(""), request.Medium.value_or(""),
                                       request.NewTent.value_or("").empty() ? "" : "tent " + *request.NewTent},
                                      ", ");
    const std::string into = places.empty() ? "" : "into " + places;
    std::vector<PlantStep> steps;
    for (const Plant& plant : plants)
    {
        PlantStep step = StepOf(plant, PlantEventType::Transplant, DateOrToday(request.Date));
        step.ChangesPlant = true;
        step.Of.TransplantDate = step.Event.EventDate;
        step.Of.PotSize = request.Pot.value_or(plant.PotSize);
        step.Of.Medium = request.Medium.value_or(plant.Medium);
        step.Of.Tent = request.NewTent.value_or(plant.Tent);
        step.Event.Details = Joined({into, request.Details.value_or("")}, "; ");
        step.Summary = Joined({"Transplanted " + DisplayName(plant), into}, " ") + OnDate(step.Event.EventDate);
        step.Summary = Joined({step.Summary, request.Details.value_or("")}, ": ");
        steps.push_back(std::move(step));
    }
    StoreAndReportSteps(session, steps, request.Plants.RecordsStored());
}

// `done` is how the line that reports the event begins: "Topped".
void RecordEvents(Session& session, const StepRequest& request, PlantEventType type, const std::string& done)
{
    std::vector<PlantStep> steps;
    for (const Plant& plant : SelectPlants(AllPlants(session), request.Plants))
    {
        PlantStep step = StepOf(plant, type, DateOrToday(request.Date));
        step.Event.Details = request.Details.value_or("");
        step.Summary =
            Joined({done + ' ' + DisplayName(plant) + OnDate(step.Event.EventDate), step.Event.Details}, ": ");
        steps.push_back(std::move(step));
    }
    StoreAndReportSteps(session, steps, request.Plants.RecordsStored());
}

// Describes a command and its plants.
struct StepWords
{
    std::string Name;
    std::string Purpose;
    std::string Examples;
    std::string PlantHelp = "plants";
};

// Adds the command, whose request lives as long as the command.
std::pair<CLI::App&, StepRequest&> AddStepCommand(CLI::App& program, Session& session, const StepWords& words,
                                                  const StepMaker& act)
{
    auto request = std::make_shared<StepRequest>();
    CLI::App& command = AddCommand(program, words.Name, words.Purpose, words.Examples,
                                   [&session, request, act] { act(session, *request); });
    AddArguments(command, "PLANT", words.PlantHelp, request->Plants.Named, Need::Optional);
    AddSelectors(command, request->Plants);
    AddDate(command, "date of the event", request->Date);
    return {command, *request};
}

void AddDetails(std::pair<CLI::App&, StepRequest&> added)
{
    AddFlag(added.first, {"--details", "text shown on the timeline", "TEXT"}, added.second.Details);
}

void AddEventCommand(CLI::App& program, Session& session, const StepWords& words, PlantEventType type,
                     const std::string& done)
{
    AddDetails(AddStepCommand(program, session, words,
                              [type, done](Session& journal, const StepRequest& request)
                              { RecordEvents(journal, request, type, done); }));
}

} // namespace

void AddStepCommands(CLI::App& program, Session& session)
{
    const auto stage = AddStepCommand(program, session,
                                      {"stage", "Move one or several plants to another stage",
                                       "stage Basil Chili veg\nstage --tent Big flower --date yesterday",
                                       "plants, then the new stage"},
                                      ChangeStages);
    const PlantStage anyStage{};
    OfferWords(stage.first, "PLANT", EnumerationNames(&anyStage));
    const auto transplant =
        AddStepCommand(program, session,
                       {"transplant", "Transplant one or several plants",
                        "transplant Basil --pot \"11 l\" --medium coco\ntransplant --stage seed --to-tent Big"},
                       TransplantPlants);
    AddFlag(transplant.first, {"--pot,--pot-size", "new pot size", "TEXT"}, transplant.second.Pot);
    AddFlag(transplant.first, {"--medium", "new growing medium", "TEXT"}, transplant.second.Medium);
    AddFlag(transplant.first, {"--to-tent", "new tent or place", "TENT"}, transplant.second.NewTent);
    AddDetails(transplant);
    AddEventCommand(program, session,
                    {"top", "Record that one or several plants were topped",
                     "top Basil --details \"above the fifth node\"\ntop Basil Chili --date yesterday"},
                    PlantEventType::Topped, "Topped");
    AddEventCommand(program, session,
                    {"train", "Record that one or several plants were trained with low stress",
                     "train Basil --details \"tied down\"\ntrain --tent Big"},
                    PlantEventType::LSTTrained, "Trained");
    AddEventCommand(program, session,
                    {"defoliate", "Record that one or several plants were defoliated",
                     "defoliate Basil Chili\ndefoliate --stage flower"},
                    PlantEventType::Defoliated, "Defoliated");
    AddStepCommand(program, session,
                   {"archive", "Move one or several plants to the stage Archived", "archive Basil Chili"},
                   ArchivePlants);
}
