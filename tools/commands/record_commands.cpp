#include "commands/commands.h"

#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/record_flags.h"
#include "journal/session.h"
#include "record/operations.h"

#include <memory>

// The records of a plant: six kinds, one set of commands.

namespace
{

template <typename Record> constexpr bool OnePerPlant = std::is_same_v<Record, HarvestRecord>;

template <typename Record>
std::vector<Record> Listed(Session& session, const Plant& plant, std::size_t newest = SIZE_MAX)
{
    std::vector<Record> records;
    session.Require(OperationsOn<Record>().List(session.Read(), plant.UUID, records),
                    std::string("no ") + Describe<Record>().Noun + " can be listed");
    records.resize(std::min(records.size(), newest));
    return records;
}

// All of every plant, each with its plant.
template <typename Record> void PrintAll(Session& session, std::size_t newest)
{
    std::vector<Plant> plants;
    session.Require(session.Read().ListPlants(plants), "the plants cannot be listed");
    std::vector<Record> all;
    std::vector<Row> rows;
    for (const Plant& plant : plants)
        for (Record& record : Listed<Record>(session, plant, newest))
        {
            rows.push_back(RowOf(record));
            rows.back().insert(rows.back().begin(), NameOf(plant));
            all.push_back(std::move(record));
        }
    if (session.AsJSON)
        return session.Print(JSONOf(all));
    std::vector<Column> columns = ColumnsOf<Record>();
    columns.insert(columns.begin(), {"Plant"});
    PrintTable(std::cout, columns, rows);
}

// The one that is meant.
template <typename Record> Record Chosen(Session& session, const Plant& plant, std::int64_t id)
{
    const char* const noun = Describe<Record>().Noun;
    for (Record& record : Listed<Record>(session, plant))
        if (OnePerPlant<Record> || record.ID == id)
            return std::move(record);
    throw Refusal(NameOf(plant) + " has no " + noun + (OnePerPlant<Record> ? std::string() : " " + std::to_string(id)) +
                  "; `plantjournal " + Describe<Record>().Command + " list` shows all");
}

template <typename Record> void PrintStored(const Session& session, const Record& record, bool withNumber)
{
    if (session.AsJSON)
        session.Print(JSONOf(record));
    else if (withNumber)
        std::cout << record.ID << '\n';
}

template <typename Record> void Add(Session& session, const Request<Record>& request, Record record = {})
{
    PlantRepository& repository = session.Read(); // a plant cannot be in a journal that is not there yet
    Plant plant = session.Find(request.Given.Plant);
    if (OnePerPlant<Record> && !Listed<Record>(session, plant).empty())
        throw Refusal(NameOf(plant) + " has a " + Describe<Record>().Noun + " already; `plantjournal " +
                      Describe<Record>().Command + " edit` changes it");
    record.PlantUUID = plant.UUID;
    request.Fields->Apply(session, Asked::ToAdd, record);
    session.Require(OperationsOn<Record>().Create(repository, plant, record),
                    std::string("the ") + Describe<Record>().Noun + " could not be stored");
    PrintStored(session, record, true);
}

template <typename Record> void Edit(Session& session, const Request<Record>& request)
{
    if (!request.Fields->Any())
        RefuseUsage("nothing to change was given");
    Plant plant = session.Find(request.Given.Plant);
    auto record = Chosen<Record>(session, plant, request.Given.ID);
    request.Fields->Apply(session, Asked::ToEdit, record);
    session.Require(OperationsOn<Record>().Update(session.Write(), plant, record),
                    std::string("the ") + Describe<Record>().Noun + " could not be changed");
    PrintStored(session, record, false);
}

template <typename Record> void Delete(Session& session, const Arguments& given)
{
    const Plant plant = session.Find(given.Plant);
    const auto record = Chosen<Record>(session, plant, given.ID);
    std::string words;
    for (const std::string& text : RowOf(record))
        words += text.empty() || text == "0" ? "" : " " + text;
    ConfirmDeletion(std::string("the ") + Describe<Record>().Noun + " of " + NameOf(plant) + ":" + words, given);
    session.Require(OperationsOn<Record>().Delete(session.Write(), record),
                    std::string("the ") + Describe<Record>().Noun + " could not be deleted");
}

template <typename Record> void AddArguments(CLI::App& command, Arguments& given, bool chosen)
{
    AddPlantArgument(command, given);
    if (chosen && !OnePerPlant<Record>)
        AddArgument(command, "ID", "its number, as `list` shows it", given.ID);
}

std::size_t NumberFrom(const std::optional<std::string>& text)
{
    std::int64_t number = INT64_MAX;
    if (text)
        Set(Cell(&number), *text);
    return number < 0 ? 0 : static_cast<std::size_t>(number);
}

// `words` is an example of what an `add` may be given, `change` of an `edit`.
template <typename Record>
void AddFamily(CLI::App& program, Session& session, const std::string& purpose, const std::string& words,
               const std::string& change)
{
    const std::string name = Describe<Record>().Command;
    const std::string noun = Describe<Record>().Noun;
    const std::string id = OnePerPlant<Record> ? "" : " 17";
    CLI::App& group = AddGroup(program, name, purpose);

    auto of = std::make_shared<Arguments>();
    CLI::App& list = AddCommand(group, "list", "Show those of a plant, or all",
                                name + " list Basil\n" + name + " list --newest 5 --json",
                                [&session, of]
                                {
                                    const std::size_t newest = NumberFrom(of->Newest);
                                    if (of->Plant.empty())
                                        PrintAll<Record>(session, newest);
                                    else
                                        session.Print(Listed<Record>(session, session.Find(of->Plant), newest));
                                });
    AddPlantArgument(list, *of, Need::Optional);
    AddFlag(list,
            {"--newest", "of each plant, no more than so many", "NUMBER", Need::Optional,
             [](const std::string& text) { return IsDigits(text) ? "" : Quoted(text) + " is no number of records"; }},
            of->Newest);

    auto toAdd = std::make_shared<Request<Record>>();
    CLI::App& add = AddCommand(group, "add", "Add a " + noun, name + " add Basil " + words,
                               [&session, toAdd] { Add(session, *toAdd); });
    AddArguments<Record>(add, toAdd->Given, false);
    toAdd->Fields.emplace(add, Asked::ToAdd);

    auto toEdit = std::make_shared<Request<Record>>();
    CLI::App& edit = AddCommand(group, "edit", "Change a " + noun, name + " edit Basil" + id + " " + change,
                                [&session, toEdit] { Edit(session, *toEdit); });
    AddArguments<Record>(edit, toEdit->Given, true);
    toEdit->Fields.emplace(edit, Asked::ToEdit);

    auto toDelete = std::make_shared<Arguments>();
    CLI::App& remove = AddCommand(group, "delete", "Delete a " + noun, name + " delete Basil" + id + " --yes",
                                  [&session, toDelete] { Delete<Record>(session, *toDelete); });
    AddArguments<Record>(remove, *toDelete, true);
    AddYes(remove, *toDelete);
}

void AddShortcut(CLI::App& program, Session& session, PlantCareAction action, const std::string& name,
                 const std::string& purpose, const std::string& example)
{
    auto request = std::make_shared<Request<PlantCareEntry>>();
    CLI::App& command = AddCommand(program, name, purpose, example,
                                   [&session, request, action]
                                   {
                                       PlantCareEntry entry;
                                       entry.Action = action;
                                       Add(session, *request, entry);
                                   });
    AddArguments<PlantCareEntry>(command, request->Given, false);
    request->Fields.emplace(command, Asked::ToAdd, "Action");
}

} // namespace

void AddRecordCommands(CLI::App& program, Session& session)
{
    AddShortcut(program, session, PlantCareAction::Feed, "feed", "Note a feeding",
                "feed Basil --product \"Bloom A\" --amount-ml 500 --ec 1.8 --ph 6.2");
    AddShortcut(program, session, PlantCareAction::Water, "water", "Note a watering",
                "water Basil --amount-ml 750 --care-date yesterday");
    AddFamily<PlantCareEntry>(program, session, "Feedings and waterings", "--action feed --amount-ml 500",
                              "--amount-ml 450");
    AddFamily<PlantEvent>(program, session, "The timeline's events", "\"into the big tent\" --type transplant",
                          "--event-date 2026-05-01");
    AddFamily<HarvestRecord>(program, session, "Harvests, one of each plant", "--wet-weight-g 410 --dry-weight-g 96.5",
                             "--quality-rating 8");
    AddFamily<PlantPhoto>(program, session, "Photos, kept as the paths of their files",
                          "photos/basil.jpg --caption \"first flower\"", "--caption \"second flower\"");
    AddFamily<PlantHealthObservation>(program, session, "Health problems", "\"Spider mites\" --severity 2",
                                      "--treatment \"predatory mites\"");
    AddFamily<PlantJournalEntry>(program, session, "Journal entries", "\"Four new pairs of leaves\" --type observation",
                                 "--type milestone");
}
