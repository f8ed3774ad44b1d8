#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/care_summary.h"
#include "commands/check_values.h"
#include "commands/commands.h"
#include "commands/name_notices.h"
#include "commands/numbered_names.h"
#include "commands/outcome.h"
#include "journal/find_record.h"
#include "journal/sql.h"
#include "record/letters.h"
#include "record/text.h"
#include "refusal.h"

#include <algorithm>
#include <memory>

// `clone`: new plants from a mother plant.

namespace
{

struct CloneRequest
{
    Arguments Given;
    std::optional<std::string> Name;
    std::optional<std::string> Count;
    std::optional<std::string> Date;
};

// The names of the new plants: NAME, or without it `Basil clone 1`; with --count, numbered after the existing ones.
std::vector<std::string> NewNames(const std::vector<Plant>& plants, const Plant& mother, const CloneRequest& request)
{
    const std::optional<std::string>& given = request.Name;
    if (given && !request.Count)
    {
        for (const Plant& plant : plants)
            if (WithoutCase(plant.Name) == WithoutCase(*given))
                throw Refusal(InQuotes(*given) + ": the plant " + plant.Name +
                              " already has this name; choose another name for the clone");
        return {*given};
    }
    return NumberedNames(plants, given.value_or(Joined({mother.Name, "clone"}, " ")), request.Count);
}

// A name of digits only is more likely the number of clones than a name.
std::string NameObjection(const std::string& text)
{
    if (text.empty())
        return "the name is empty";
    return IsDigits(text) ? InQuotes(text) + " is not the name of a clone; did you mean --count " + text + '?' : "";
}

// A clone that is not stored yet, and the events on both timelines.
struct NewClone
{
    Plant Of;
    PlantEvent Event;
    PlantEvent MothersEvent;
};

PlantEvent CloneEvent(const Plant& plant, const std::string& date, const std::string& details)
{
    PlantEvent event;
    event.PlantUUID = plant.UUID;
    event.EventDate = date;
    event.Type = PlantEventType::Clone;
    event.Details = details;
    return event;
}

NewClone CloneOf(const Plant& mother, const std::string& name, const std::string& date)
{
    NewClone clone;
    clone.Of.Name = name;
    clone.Of.Strain = mother.Strain;
    clone.Of.Medium = mother.Medium;
    clone.Of.Tent = mother.Tent;
    clone.Of.MotherPlantUUID = mother.UUID;
    clone.Of.Stage = PlantStage::Clone;
    clone.Of.CloneDate = date;
    clone.Event = CloneEvent(clone.Of, date, "clone of " + DisplayName(mother));
    clone.MothersEvent = CloneEvent(mother, date, "new clone: " + name);
    return clone;
}

// Stores the clone and its events.
bool Store(PlantRepository& repository, NewClone& clone)
{
    if (!repository.CreatePlant(clone.Of))
        return false;
    clone.Event.PlantUUID = clone.Of.UUID;
    return repository.CreatePlantEvent(clone.Event) && repository.CreatePlantEvent(clone.MothersEvent);
}

// Stores all clones or nothing.
void StoreAll(Session& session, std::vector<NewClone>& clones)
{
    PlantRepository& repository = session.Write();
    const SQL journal(session.Connection(), session.Path() + ": the clones could not be stored");
    Transaction transaction(journal);
    for (NewClone& clone : clones)
        session.Require(Store(repository, clone), clone.Of.Name + " could not be stored, and nothing was changed");
    transaction.Commit();
}

void ClonePlant(Session& session, const CloneRequest& request)
{
    const std::vector<Plant> plants = AllPlants(session);
    const Plant mother = FindPlant(plants, request.Given.Plant);
    const std::string date = DateOrToday(request.Date);
    std::vector<NewClone> clones;
    for (const std::string& name : NewNames(plants, mother, request))
        clones.push_back(CloneOf(mother, name, date));
    PrintNotices(
        CheckValues(clones.front().MothersEvent, mother, session.Flags)); // the other events have the same date
    session.Write();
    const NameNotices names(session);
    StoreAll(session, clones);
    if (request.Name)
        names.Print(clones.front().Of); // the other names differ only in their numbers
    Outcome outcome(session, request.Count ? Records::Many : Records::One);
    for (const NewClone& clone : clones)
        outcome.Add("Cloned " + DisplayName(mother) + " as " + clone.Of.Name + OnDate(date) + " (" + clone.Of.UUID +
                        ")",
                    clone.Of.UUID, RecordJSON(clone.Of));
    outcome.Finish();
}

} // namespace

void AddCloneCommand(CLI::App& program, Session& session)
{
    auto request = std::make_shared<CloneRequest>();
    CLI::App& command =
        AddCommand(program, "clone", "Add clones of a plant, with its strain, medium and tent",
                   "clone Basil\nclone Basil --count 6\nclone Basil \"Basil tray\" --count 6 --date yesterday",
                   [&session, request] { ClonePlant(session, *request); });
    AddPlantArgument(command, request->Given);
    AddFlag(command,
            {"NAME", "name of the clone; with --count, a number is appended", "", Need::Optional, NameObjection},
            request->Name);
    AddCount(command, "number of clones", request->Count);
    AddDate(command, "date cloned", request->Date);
}
