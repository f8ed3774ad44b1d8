#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/commands.h"
#include "commands/deletion.h"
#include "commands/field_flags.h"
#include "commands/name_notices.h"
#include "commands/outcome.h"
#include "commands/plant_step.h"
#include "commands/print.h"
#include "commands/summary.h"
#include "journal/find_record.h"

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

void AddPlant(Session& session, const Request<Plant>& request)
{
    Plant plant;
    request.Fields->Apply(session, FlagsFor::Add, plant); // first: an unknown mother must not create a journal
    PrintNotices(CheckValues(plant));
    PlantRepository& repository = session.Write();
    const NameNotices names(session);
    session.Require(repository.CreatePlant(plant), "the plant could not be added", MotherRule(plant));
    ReportStored(session, SummaryOfNew(plant), plant.UUID, RecordJSON(plant));
    names.Print(plant);
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
    auto toAdd = std::make_shared<Request<Plant>>();
    toAdd->Fields.emplace(AddCommand(group, "add", "Add a plant",
                                     "plant add Basil --strain Genovese --stage seed --seed-date today\n"
                                     "plant add \"Basil 2\" --mother Basil --stage clone --clone-date today",
                                     [&session, toAdd] { AddPlant(session, *toAdd); }),
                          FlagsFor::Add);

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
