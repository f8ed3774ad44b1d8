#include "commands/commands.h"

#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/record_flags.h"
#include "journal/session.h"
#include "record/operations.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <utility>

namespace
{

std::vector<Plant> AllPlants(Session& session)
{
    std::vector<Plant> plants;
    session.Require(session.Read().ListPlants(plants), "the plants cannot be listed");
    return plants;
}

void PrintPlant(const Session& session, const Plant& plant)
{
    if (session.AsJSON)
        session.Print(JSONOf(plant));
    else
        PrintTable(std::cout, {{"Field"}, {"Value"}}, LinesOf(plant));
}

// After a write: all of it for a script that asks, else its identifier where it is new.
void PrintStored(const Session& session, const Plant& plant, bool isNew)
{
    if (session.AsJSON)
        PrintPlant(session, plant);
    else if (isNew)
        std::cout << plant.UUID << '\n';
}

std::string CouldNot(const std::string& what, const Plant& plant)
{
    return "the plant could not be " + what +
           (plant.MotherPlantUUID.empty() ? ""
                                          : "; its mother may be neither itself nor one that descends from it, and the "
                                            "UUID must be new");
}

// ---- The lineage

using Children = std::multimap<std::string, Plant>; // by their mother's UUID

// Draws a plant below its mother; `shown` keeps a circle, which a damaged file may have, from being walked for ever.
// NOLINTNEXTLINE(misc-no-recursion): a tree
void Draw(const Plant& plant, const Children& children, const std::string& lead, const std::string& branch,
          const std::string& further, std::set<std::string>& shown)
{
    std::cout << lead << branch << Printable(NameOf(plant)) << (plant.Strain.empty() ? "" : " (")
              << Printable(plant.Strain) << (plant.Strain.empty() ? "" : ")") << ' ' << PlantStageName(plant.Stage)
              << '\n';
    if (!shown.insert(plant.UUID).second)
        return;
    const auto [begin, end] = children.equal_range(plant.UUID);
    for (auto child = begin; child != end; ++child)
    {
        const bool last = std::next(child) == end;
        Draw(child->second, children, lead + further, last ? "└── " : "├── ", last ? "    " : "│   ", shown);
    }
}

// NOLINTNEXTLINE(misc-no-recursion): likewise
JSON TreeOf(const Plant& plant, const Children& children, std::set<std::string>& shown)
{
    JSON tree = JSONOf(plant);
    JSON& clones = tree["Clones"] = JSON::array();
    if (shown.insert(plant.UUID).second)
        for (auto [child, end] = children.equal_range(plant.UUID); child != end; ++child)
            clones.push_back(TreeOf(child->second, children, shown));
    return tree;
}

void ShowTree(Session& session, const std::string& named)
{
    const std::vector<Plant> plants = AllPlants(session);
    std::set<std::string> known;
    Children children;
    for (const Plant& plant : plants)
    {
        known.insert(plant.UUID);
        children.emplace(plant.MotherPlantUUID, plant);
    }
    std::vector<Plant> roots;
    if (!named.empty())
        roots.push_back(session.Find(named));
    else
        std::copy_if(plants.begin(), plants.end(), std::back_inserter(roots),
                     [&](const Plant& plant) { return !known.contains(plant.MotherPlantUUID); });

    std::set<std::string> shown;
    JSON trees = JSON::array();
    const auto show = [&](const Plant& root)
    {
        if (session.AsJSON)
            trees.push_back(TreeOf(root, children, shown));
        else
            Draw(root, children, "", "", "", shown);
    };
    for (const Plant& root : roots)
        show(root);
    if (named.empty()) // what only a circle leads to
        for (const Plant& plant : plants)
            if (!shown.contains(plant.UUID))
                show(plant);
    if (session.AsJSON)
        session.Print(trees);
}

// ---- The timeline: everything of a plant in one list. Care and harvests stand for the events that mirror them.

struct Moment
{
    std::string Date;
    std::string Kind;
    std::string Text;
    JSON Record;
};

class Timeline
{
  public:
    Timeline(Session& session, std::string plantUUID) : Of(session), PlantUUID(std::move(plantUUID))
    {
        PlantRepository& repository = session.Read();
        std::set<std::int64_t> mirrors;
        for (const PlantCareEntry& care : Listed<PlantCareEntry>())
        {
            mirrors.insert(care.TimelineEventID);
            Add(care.CareDate, PlantCareActionName(care.Action), repository.CareTimelineDetails(care), care);
        }
        const std::vector<HarvestRecord> harvests = Listed<HarvestRecord>();
        for (const HarvestRecord& harvest : harvests)
            mirrors.insert(harvest.TimelineEventID);
        for (const PlantEvent& event : Listed<PlantEvent>())
        {
            const auto harvest =
                std::find_if(harvests.begin(), harvests.end(),
                             [&](const HarvestRecord& record) { return record.TimelineEventID == event.ID; });
            if (harvest != harvests.end())
                Add(harvest->HarvestDate, "Harvest", event.Details, *harvest);
            else if (!mirrors.contains(event.ID))
                Add(event.EventDate, PlantEventTypeName(event.Type), event.Details, event);
        }
        for (const HarvestRecord& harvest : harvests)
            if (harvest.TimelineEventID == 0)
                Add(harvest.HarvestDate, "Harvest", Joined({harvest.CureOutcome, harvest.Notes}, " | "), harvest);
        for (const PlantPhoto& photo : Listed<PlantPhoto>())
            Add(photo.PhotoDate, "Photo", Joined({photo.FilePath, photo.Caption}, " | "), photo);
        for (const PlantHealthObservation& seen : Listed<PlantHealthObservation>())
            Add(seen.ObservationDate, "Health",
                Joined({seen.Issue + " (" + std::to_string(seen.Severity) + " of 5)", seen.Treatment, seen.Notes},
                       " | "),
                seen);
        for (const PlantJournalEntry& entry : Listed<PlantJournalEntry>())
            Add(entry.EntryDate, PlantJournalTypeName(entry.Type), entry.Details, entry);
        std::stable_sort(Moments.begin(), Moments.end(),
                         [](const Moment& left, const Moment& right) { return left.Date > right.Date; });
    }

    std::vector<Moment> Moments; // the newest first

  private:
    template <typename Record> std::vector<Record> Listed()
    {
        std::vector<Record> records;
        Of.Require(OperationsOn<Record>().List(Of.Read(), PlantUUID, records), "the timeline cannot be listed");
        return records;
    }

    template <typename Record>
    void Add(const std::string& date, const std::string& kind, const std::string& text, const Record& record)
    {
        JSON object = {{"Table", Describe<Record>().Table}};
        object.update(JSONOf(record));
        Moments.push_back({date, kind, text, std::move(object)});
    }

    Session& Of;
    std::string PlantUUID;
};

void ShowTimeline(Session& session, const std::string& named)
{
    const Timeline timeline(session, session.Find(named).UUID);
    JSON array = JSON::array();
    std::vector<Row> rows;
    for (const Moment& moment : timeline.Moments)
    {
        array.push_back(moment.Record);
        rows.push_back({moment.Date, moment.Kind, moment.Text});
    }
    if (session.AsJSON)
        session.Print(array);
    else
        PrintTable(std::cout, {{"Date"}, {"Kind"}, {"Details"}}, rows);
}

// ---- Writing

void Add(Session& session, const Request<Plant>& request)
{
    Plant plant;
    request.Fields->Apply(session, Asked::ToAdd, plant); // before a journal is made, in which there would be no mother
    session.Require(session.Write().CreatePlant(plant), CouldNot("added", plant));
    PrintStored(session, plant, true);
}

void Edit(Session& session, const Request<Plant>& request)
{
    if (!request.Fields->Any())
        RefuseUsage("nothing to change was given");
    Plant plant = session.Find(request.Given.Plant);
    request.Fields->Apply(session, Asked::ToEdit, plant);
    session.Require(session.Write().UpdatePlant(plant), CouldNot("changed", plant));
    PrintStored(session, plant, false);
}

void Duplicate(Session& session, const Arguments& given)
{
    Plant plant = session.Find(given.Plant);
    session.Require(session.Write().DuplicatePlant(plant, plant), CouldNot("copied", plant));
    PrintStored(session, plant, true);
}

void Delete(Session& session, const Arguments& given)
{
    const Plant plant = session.Find(given.Plant);
    ConfirmDeletion("the plant " + NameOf(plant) + " with everything that was written of it", given);
    session.Require(session.Write().DeletePlant(plant.UUID), "the plant could not be deleted");
}

} // namespace

void AddPlantCommands(CLI::App& program, Session& session)
{
    CLI::App& group = AddGroup(program, "plant", "Plants and their lineage");

    AddCommand(group, "list", "Show all plants", "plant list\nplant list --json",
               [&session] { session.Print(AllPlants(session)); });

    auto toShow = std::make_shared<Arguments>();
    AddPlantArgument(AddCommand(group, "show", "Show all of a plant", "plant show Basil\nplant show 3f2a --json",
                                [&session, toShow] { PrintPlant(session, session.Find(toShow->Plant)); }),
                     *toShow);

    auto toAdd = std::make_shared<Request<Plant>>();
    toAdd->Fields.emplace(AddCommand(group, "add", "Add a plant, and print its UUID",
                                     "plant add Basil --strain Genovese --stage seed --seed-date today\n"
                                     "plant add \"Basil 2\" --mother Basil --stage clone --clone-date today",
                                     [&session, toAdd] { Add(session, *toAdd); }),
                          Asked::ToAdd);

    auto toEdit = std::make_shared<Request<Plant>>();
    CLI::App& edit = AddCommand(group, "edit", "Change a plant",
                                "plant edit Basil --pot-size \"11 l\" --flip-height-cm 42\n"
                                "plant edit Basil --stage flower --flip-date today",
                                [&session, toEdit] { Edit(session, *toEdit); });
    AddPlantArgument(edit, toEdit->Given);
    toEdit->Fields.emplace(edit, Asked::ToEdit);

    auto toDelete = std::make_shared<Arguments>();
    CLI::App& remove =
        AddCommand(group, "delete", "Delete a plant with everything that was written of it",
                   "plant delete Basil\nplant delete 3f2a --yes", [&session, toDelete] { Delete(session, *toDelete); });
    AddPlantArgument(remove, *toDelete);
    AddYes(remove, *toDelete);

    auto toCopy = std::make_shared<Arguments>();
    AddPlantArgument(AddCommand(group, "duplicate", "Add a copy of a plant, and print its UUID",
                                "plant duplicate Basil", [&session, toCopy] { Duplicate(session, *toCopy); }),
                     *toCopy);

    auto root = std::make_shared<Arguments>();
    AddPlantArgument(AddCommand(group, "tree", "Draw the lineage, of a plant or of all", "plant tree\nplant tree Basil",
                                [&session, root] { ShowTree(session, root->Plant); }),
                     *root, Need::Optional);

    auto of = std::make_shared<Arguments>();
    AddPlantArgument(AddCommand(program, "timeline", "Show everything of a plant in one dated list",
                                "timeline Basil\ntimeline Basil --json",
                                [&session, of] { ShowTimeline(session, of->Plant); }),
                     *of);
}
