#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/commands.h"
#include "commands/deletion.h"
#include "commands/field_flags.h"
#include "commands/harvest_rules.h"
#include "commands/note_shortcut.h"
#include "commands/outcome.h"
#include "commands/owned_event.h"
#include "commands/photo_values.h"
#include "commands/record_lists.h"
#include "commands/summary.h"
#include "refusal.h"

#include <algorithm>
#include <memory>
#include <type_traits>
#include <utility>

// The commands for the six kinds of records of a plant.

namespace
{

template <typename Record> std::string NounOf()
{
    return Describe<Record>().Noun;
}

// Prints what is unlikely in a record that is about to be stored. Throws for an impossible value.
template <typename Record>
void CheckBeforeWriting(const Session& session, const Plant& plant, Record& record, const FieldNames& given)
{
    Notices notices;
    if constexpr (std::is_same_v<Record, PlantPhoto>)
        notices = TakeValuesFromFile(record, plant, session.Path(), given);
    Append(notices, record.ID == 0 ? CheckValues(record, plant, session.Flags)
                                   : CheckValues(record, plant, session.Flags, given));
    PrintNotices(notices);
}

// Finds the record that `edit` or `delete` changes.
template <typename Record> Record FindRecord(Session& session, const Plant& plant, std::int64_t id)
{
    for (Record& record : RecordsOf<Record>(session, plant))
        if (OnePerPlant<Record> || record.ID == id)
            return std::move(record);
    throw Refusal(DisplayName(plant) + ": the plant has no " + NounOf<Record>() +
                  (OnePerPlant<Record> ? std::string() : " with the row ID " + std::to_string(id)) +
                  "; `plantjournal " + Describe<Record>().Command + " list` shows the existing ones");
}

template <typename Record> void AddRecord(Session& session, const Request<Record>& request, Record record = {})
{
    Plant plant = FindPlant(session, request.Given.Plant);
    if (OnePerPlant<Record> && !RecordsOf<Record>(session, plant).empty())
        throw Refusal(DisplayName(plant) + ": the plant already has a " + NounOf<Record>() + "; `plantjournal " +
                      Describe<Record>().Command + " edit` changes it");
    record.PlantUUID = plant.UUID;
    request.Fields->Apply(session, FlagsFor::Add, record);
    if constexpr (OnePerPlant<Record>)
        RequireWeights(request.Given, request.Fields->Names(), record);
    CheckBeforeWriting(session, plant, record, request.Fields->Names());
    session.Require(CreateRecord(session.Write(), plant, record), "the " + NounOf<Record>() + " could not be stored");
    ReportStored(session, SummaryOfNew(plant, record), std::to_string(record.ID), RecordJSON(record, plant));
}

template <typename Record> void EditRecord(Session& session, const Request<Record>& request)
{
    RequireAnyField(request);
    Plant plant = FindPlant(session, request.Given.Plant);
    auto record = FindRecord<Record>(session, plant, request.Given.ID);
    if constexpr (std::is_same_v<Record, PlantEvent>)
        RefuseOwnedEvent(session, request.Given.Plant, record, "edit");
    request.Fields->Apply(session, FlagsFor::Edit, record);
    CheckBeforeWriting(session, plant, record, request.Fields->Names());
    const PlantStage stage = plant.Stage;
    session.Require(UpdateRecord(session.Write(), plant, record), "the " + NounOf<Record>() + " could not be changed");
    std::string summary = SummaryOfChanged(plant, record, request.Fields->Names());
    if (plant.Stage != stage) // a harvest record moves its plant
        summary += std::string("; stage ") + PlantStageName(plant.Stage);
    ReportStored(session, summary, std::to_string(record.ID), RecordJSON(record, plant));
}

template <typename Record> void DeleteChosenRecord(Session& session, const Arguments& given)
{
    const Plant plant = FindPlant(session, given.Plant);
    const auto record = FindRecord<Record>(session, plant, given.ID);
    if constexpr (OnePerPlant<Record>)
        return DeleteHarvest(session, given, plant, record);
    if constexpr (std::is_same_v<Record, PlantEvent>)
        RefuseOwnedEvent(session, given.Plant, record, "delete");
    const std::string what = RecordInWords(plant, record);
    ConfirmDeletion(what, given);
    session.Require(DeleteRecord(session.Write(), record), "the " + NounOf<Record>() + " could not be deleted");
    ReportChange(session, "Deleted " + what);
}

template <typename Record> void AddArguments(CLI::App& command, Arguments& given, bool chosen)
{
    AddPlantArgument(command, given);
    if (chosen && !OnePerPlant<Record>)
        AddArgument(command, "ID", "row ID, as `list` shows it", given.ID);
}

// `words` and `change` are examples of the arguments of `add` and `edit`.
template <typename Record>
CLI::App& AddFamily(CLI::App& program, Session& session, const std::string& purpose, const std::string& words,
                    const std::string& change)
{
    const std::string name = Describe<Record>().Command;
    const std::string noun = NounOf<Record>();
    const std::string id = OnePerPlant<Record> ? "" : " 17";
    CLI::App& group = AddGroup(program, name, purpose);

    AddListCommand<Record>(group, session);

    auto toAdd = std::make_shared<Request<Record>>();
    CLI::App& add = AddCommand(group, "add", "Add a " + noun, name + " add Basil " + words,
                               [&session, toAdd] { AddRecord(session, *toAdd); });
    AddArguments<Record>(add, toAdd->Given, false);
    toAdd->Fields.emplace(add, FlagsFor::Add);
    if constexpr (OnePerPlant<Record>)
        AddUnweighed(add, toAdd->Given);

    auto toEdit = std::make_shared<Request<Record>>();
    CLI::App& edit = AddCommand(group, "edit", "Change a " + noun, name + " edit Basil" + id + " " + change,
                                [&session, toEdit] { EditRecord(session, *toEdit); });
    AddArguments<Record>(edit, toEdit->Given, true);
    toEdit->Fields.emplace(edit, FlagsFor::Edit);

    auto toDelete = std::make_shared<Arguments>();
    CLI::App& remove = AddCommand(group, "delete", "Delete a " + noun, name + " delete Basil" + id + " --yes",
                                  [&session, toDelete] { DeleteChosenRecord<Record>(session, *toDelete); });
    AddArguments<Record>(remove, *toDelete, true);
    if constexpr (OnePerPlant<Record>)
        AddStageAfterDeletion(remove, *toDelete);
    AddYes(remove, *toDelete);
    return group;
}

} // namespace

void AddRecordCommands(CLI::App& program, Session& session)
{
    AddFamily<PlantCareEntry>(program, session, "Care entries: feedings and waterings", "--action feed --amount-ml 500",
                              "--amount-ml 450");
    AddFamily<PlantEvent>(program, session, "Timeline events", "\"into the big tent\" --type transplant",
                          "--event-date 2026-05-01");
    AddFamily<HarvestRecord>(program, session, "Harvest records, at most one for each plant",
                             "--wet-weight-g 410 --dry-weight-g 96.5", "--quality-rating 8");
    AddFamily<PlantPhoto>(program, session, "Photos, stored as the paths of their files",
                          "photos/basil.jpg --caption \"first flower\"", "--caption \"second flower\"");
    AddFamily<PlantHealthObservation>(program, session, "Health observations", "\"Spider mites\" --severity 2",
                                      "--treatment \"predatory mites\"");
    AddNoteShortcut(AddFamily<PlantJournalEntry>(program, session, "Journal entries",
                                                 "\"Four new pairs of leaves\" --type observation", "--type milestone"),
                    session);
}
