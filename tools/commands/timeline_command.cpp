#include "command_line/parser.h"
#include "commands/arguments.h"
#include "commands/commands.h"
#include "commands/print.h"
#include "journal/find_record.h"
#include "journal/timeline.h"
#include "terminal/printable.h"

#include <algorithm>
#include <memory>

namespace
{

template <typename Record> JSON ItemJSON(const Record& record, const Plant& plant)
{
    JSON object = JSON::Object();
    object.Add("Table", JSONOf(std::string(Describe<Record>().Table)));
    object.AddFieldsOf(RecordJSON(record, plant));
    return object;
}

JSON ItemJSON(const OwnDate& date, const Plant& plant)
{
    JSON object = JSON::Object();
    object.Add("Table", JSONOf(std::string(Describe<Plant>().Table)));
    object.Add("PlantUUID", JSONOf(plant.UUID));
    object.Add("Plant", JSONOf(plant.Name));
    object.Add("Field", JSONOf(date.Field));
    object.Add("Date", JSONOf(date.Date));
    return object;
}

struct TimelineRequest
{
    Arguments Of;
    bool OldestFirst = false;
};

void ShowTimeline(Session& session, const TimelineRequest& request)
{
    const Plant plant = FindPlant(session, request.Of.Plant);
    std::vector<TimelineItem> items = TimelineOf(session, plant);
    if (request.OldestFirst)
        std::reverse(items.begin(), items.end());
    JSON array = JSON::Array();
    std::vector<Row> rows;
    for (const TimelineItem& item : items)
    {
        array.Add(std::visit([&](const auto& record) { return ItemJSON(record, plant); }, item.Record));
        rows.push_back({item.Date, item.Kind, item.Details});
    }
    if (session.AsJSON)
        PrintJSON(array);
    else if (rows.empty())
        std::cout << Printable(DisplayName(plant))
                  << ": no records yet; `plantjournal note add PLANT TEXT` adds one, and so do `feed` and `water`.\n";
    else
        PrintTable(std::cout, {{"Date", WhenNarrow::Keep}, {"Kind", WhenNarrow::Keep}, {"Details", WhenNarrow::Cut}},
                   rows);
}

} // namespace

void AddTimelineCommand(CLI::App& program, Session& session)
{
    auto request = std::make_shared<TimelineRequest>();
    CLI::App& timeline = AddCommand(program, "timeline", "List everything dated of a plant, the newest first",
                                    "timeline Basil\ntimeline Basil --oldest-first\ntimeline Basil --json",
                                    [&session, request] { ShowTimeline(session, *request); });
    AddPlantArgument(timeline, request->Of);
    AddSwitch(timeline, "--oldest-first", "list the oldest record first", request->OldestFirst);
}
