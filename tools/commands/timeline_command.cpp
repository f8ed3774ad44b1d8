#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/commands.h"
#include "commands/print.h"
#include "journal/find_record.h"
#include "record/operations.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

namespace
{

// One line of the timeline.
struct TimelineItem
{
    std::string Date;
    std::string Kind;
    std::string Details;
    JSON Record;
};

// All records of a plant. A care entry or harvest record is shown instead of its timeline event.
class Timeline
{
  public:
    Timeline(Session& session, std::string plantUUID) : Journal(session), PlantUUID(std::move(plantUUID))
    {
        const std::vector<HarvestRecord> harvests = Records<HarvestRecord>();
        AddCareAndEvents(harvests);
        for (const HarvestRecord& harvest : harvests)
            if (harvest.TimelineEventID == 0)
                AddItem(harvest.HarvestDate, "Harvest", Joined({harvest.CureOutcome, harvest.Notes}, " | "), harvest);
        for (const PlantPhoto& photo : Records<PlantPhoto>())
            AddItem(photo.PhotoDate, "Photo", Joined({photo.FilePath, photo.Caption}, " | "), photo);
        for (const PlantHealthObservation& seen : Records<PlantHealthObservation>())
            AddItem(seen.ObservationDate, "Health",
                    Joined({seen.Issue + " (" + std::to_string(seen.Severity) + " of 5)", seen.Treatment, seen.Notes},
                           " | "),
                    seen);
        for (const PlantJournalEntry& entry : Records<PlantJournalEntry>())
            AddItem(entry.EntryDate, PlantJournalTypeName(entry.Type), entry.Details, entry);
        std::stable_sort(Items.begin(), Items.end(),
                         [](const TimelineItem& left, const TimelineItem& right) { return left.Date > right.Date; });
    }

    std::vector<TimelineItem> Items; // the newest first

  private:
    void AddCareAndEvents(const std::vector<HarvestRecord>& harvests)
    {
        std::set<std::int64_t> mirrors;
        for (const PlantCareEntry& care : Records<PlantCareEntry>())
        {
            mirrors.insert(care.TimelineEventID);
            AddItem(care.CareDate, PlantCareActionName(care.Action), Journal.Read().CareTimelineDetails(care), care);
        }
        for (const PlantEvent& event : Records<PlantEvent>())
        {
            const auto harvest =
                std::find_if(harvests.begin(), harvests.end(),
                             [&](const HarvestRecord& record) { return record.TimelineEventID == event.ID; });
            if (harvest != harvests.end())
                AddItem(harvest->HarvestDate, "Harvest", event.Details, *harvest);
            else if (!mirrors.contains(event.ID))
                AddItem(event.EventDate, PlantEventTypeName(event.Type), event.Details, event);
        }
    }

    template <typename Record> std::vector<Record> Records()
    {
        std::vector<Record> records;
        Journal.RequireList(ListRecords(Journal.Read(), PlantUUID, records), "the timeline cannot be listed");
        return records;
    }

    template <typename Record>
    void AddItem(const std::string& date, const std::string& kind, const std::string& details, const Record& record)
    {
        JSON object = JSON::Object();
        object.Add("Table", JSONOf(std::string(Describe<Record>().Table)));
        object.AddFieldsOf(RecordJSON(record));
        Items.push_back({date, kind, details, std::move(object)});
    }

    Session& Journal;
    std::string PlantUUID;
};

void ShowTimeline(Session& session, const std::string& named)
{
    Timeline timeline(session, FindPlant(session, named).UUID);
    JSON array = JSON::Array();
    std::vector<Row> rows;
    for (TimelineItem& item : timeline.Items)
    {
        array.Add(std::move(item.Record));
        rows.push_back({item.Date, item.Kind, item.Details});
    }
    if (session.AsJSON)
        PrintJSON(array);
    else
        PrintTable(std::cout, {{"Date"}, {"Kind"}, {"Details"}}, rows);
}

} // namespace

void AddTimelineCommand(CLI::App& program, Session& session)
{
    auto of = std::make_shared<Arguments>();
    AddPlantArgument(AddCommand(program, "timeline", "List all records of a plant by date",
                                "timeline Basil\ntimeline Basil --json",
                                [&session, of] { ShowTimeline(session, of->Plant); }),
                     *of);
}
