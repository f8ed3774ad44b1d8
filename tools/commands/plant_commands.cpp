#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/commands.h"
#include "commands/deletion.h"
#include "commands/field_flags.h"
#include "commands/name_notices.h"
#include "commands/numbered_names.h"
#include "commands/outcome.h"
#include "commands/plant_step.h"
#include "commands/print.h"
#include "commands/summary.h"
#include "journal/find_record.h"
#include "journal/sql.h"

#include <memory>

namespace
{

// The repository does not report that it refuses a mother.
std::string MotherRule(const Plant& plant)
{
    return plant.MotherPlantUUID.empty()
               ? ""
               : "the mother must not be the plant itself or one of its descendants; name another plant";
}

struct AddRequest
{
    std::optional<FieldFlags<Plant>> Fields;
    std::optional<std::string> Count;
};

// The plants that are not stored yet: one, or with --count several with numbered names.
std::vector<Plant> NewPlants(Session& session, const AddRequest& request)
{
    Plant pattern;
    request.Fields->Apply(session, FlagsFor::Add, pattern);
    if (!request.Count)
        return {pattern};
    if (!pattern.UUID.empty())
        RefuseUsage("--uuid contradicts --count: each plant needs a UUID of its own; leave one of them out");
    const std::vector<Plant> existing = session.Exists() ? AllPlants(session) : std::vector<Plant>();
    std::vector<Plant> plants;
    for (const std::string& name : NumberedNames(existing, pattern.Name, request.Count))
    {
        plants.push_back(pattern);
        plants.back().Name = name;
    }
    return plants;
}

// Stores all plants or nothing.
void StoreAll(Session& session, std::vector<Plant>& plants)
{
    PlantRepository& repository = session.Write();
    const SQL journal(session.Connection(), session.Path() + ": the plants could not be added");
    Transaction transaction(journal);
    for (Plant& plant : plants)
        session.Require(repository.CreatePlant(plant), "the plant could not be added", MotherRule(plant));
    transaction.Commit();
}

void AddPlant(Session& session, const AddRequest& request)
{
    std::vector<Plant> plants = NewPlants(session, request); // first: an unknown mother must not create a journal
    Notices notices;
    for (const Plant& plant : plants)
        Append(notices, CheckValues(plant));
    PrintNotices(notices);
    session.Write();
    const NameNotices names(session);
    StoreAll(session, plants);
    Outcome outcome(session, request.Count ? Records::Many : Records::One);
    for (const Plant& plant : plants)
        outcome.Add(SummaryOfNew(plant), plant.UUID, RecordJSON(plant));
    outcome.Finish();
    names.Print(plants.front()); // the other names differ only in their numbers
}

// The fields that were set. A mother is named as the user knows it.
std::string SummaryOfEdit(Session& session, const Plant& before, Plant plant, const FieldNames& fields)
{
    if (!plant.MotherPlantUUID.empty())
        plant.MotherPlantUUID = DisplayName(FindPlant(session, plant.MotherPlantUUID));
    return SummaryOfChanged(before, plant, fields);
}

void EditPlant(Session& session, const Request<Plant>& request)
{
    RequireAnyField(request);
    const Plant before = FindPlant(session, request.Given.Plant);
    Plant plant = before;
    request.Fields->Apply(session, FlagsFor::Edit, plant);
    PrintNotices(CheckValues(plant, request.Fields->Names()));
    session.Write();
    const NameNotices names(session);
    StoreEditedPlant(session, before, plant, request.Fields->Names(), MotherRule(plant));
    ReportStored(session, SummaryOfEdit(session, before, plant, request.Fields->Names()), plant.UUID,
                 RecordJSON(plant));
    names.Print(plant);
}

void DuplicatePlant(Session& session, const Arguments& given)
{
    const Plant original = FindPlant(session, given.Plant);
    PlantRepository& repository = session.Write();
    const NameNotices names(session);
    Plant copy;
    session.Require(repository.DuplicatePlant(original, copy), "the plant could not be copied", MotherRule(original));
    ReportStored(session, SummaryOfNew(copy), copy.UUID, RecordJSON(copy));
    names.Print(copy);
}

void DeletePlant(Session& session, const Arguments& given)
{
    const Plant plant = FindPlant(session, given.Plant);
    ConfirmDeletion("the plant " + DisplayName(plant) + " and all its records", given);
    session.Require(session.Write().DeletePlant(plant.UUID), "the plant could not be deleted");
    ReportChange(session, "Deleted " + DisplayName(plant) + " and all its records");
}

void AddWritingCommands(CLI::App& group, Session& session)
{
    auto toAdd = std::make_shared<AddRequest>();
    CLI::App& add = AddCommand(group, "add", "Add a plant, or several with numbered names",
                               "plant add Basil --strain Genovese --stage seed --seed-date today\n"
                               "plant add Basil --count 6 --strain Genovese --stage seed --tent Window\n"
                               "plant add \"Basil 2\" --mother Basil --stage clone --clone-date today",
                               [&session, toAdd] { AddPlant(session, *toAdd); });
    toAdd->Fields.emplace(add, FlagsFor::Add);
    AddCount(add, "number of plants; a number is appended to each name", toAdd->Count);

    auto toEdit = std::make_shared<Request<Plant>>();
    CLI::App& edit = AddCommand(group, "edit", "Change a plant",
                                "plant edit Basil --pot-size \"11 l\" --flip-height-cm 42\n"
                                "plant edit Basil --stage flower --flip-date today",
                                [&session, toEdit] { EditPlant(session, *toEdit); });
    AddPlantArgument(edit, toEdit->Given);
    toEdit->Fields.emplace(edit, FlagsFor::Edit);

    auto toDelete = std::make_shared<Arguments>();
    CLI::App& remove =
        AddCommand(group, "delete", "Delete a plant and all its records", "plant delete Basil\nplant delete 3f2a --yes",
                   [&session, toDelete] { DeletePlant(session, *toDelete); });
    AddPlantArgument(remove, *toDelete);
    AddYes(remove, *toDelete);

    auto toCopy = std::make_shared<Arguments>();
    AddPlantArgument(AddCommand(group, "duplicate", "Add a copy of a plant", "plant duplicate Basil",
                                [&session, toCopy] { DuplicatePlant(session, *toCopy); }),
                     *toCopy);
}

} // namespace

void AddPlantCommands(CLI::App& program, Session& session)
{
    CLI::App& group = AddGroup(program, "plant", "Plants and their lineage");
    AddPlantListCommand(group, session);
    AddPlantShowCommand(group, session);
    AddWritingCommands(group, session);
    AddTreeCommand(group, session);
}
