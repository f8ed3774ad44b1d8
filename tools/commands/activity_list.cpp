#include "commands/activity_list.h"

#include "commands/arguments.h"
#include "commands/plant_labels.h"
#include "record/letters.h"
#include "record/nearest.h"

#include <algorithm>
#include <sstream>

namespace
{

// Every kind that an activity can have.
std::vector<std::string> AllKinds()
{
    std::vector<std::string> kinds = {"Sown", "Health", "Photo"}; // in no enumeration
    const PlantEventType anyEvent{};
    const PlantJournalType anyEntry{};
    for (const ConstValueRef& value : {ConstValueRef(&anyEvent), ConstValueRef(&anyEntry)})
        for (const std::string& name : EnumerationNames(value))
            kinds.push_back(name);
    return kinds;
}

// Reads kinds that are separated by commas, in any letter case. Throws BadValue.
std::vector<std::string> KindsFrom(const std::string& text)
{
    const std::vector<std::string> known = AllKinds();
    std::vector<std::string> kinds;
    std::istringstream words(text + ',');
    for (std::string word; std::getline(words, word, ',');)
    {
        const auto kind = std::find_if(known.begin(), known.end(),
                                       [&](const std::string& name) { return EqualIgnoringCase(name, word); });
        if (kind == known.end())
            throw BadValue(Joined(
                {InQuotes(word) + " is not one of " + Joined(known, ", "), DidYouMean(Nearest(word, known))}, "; "));
        kinds.push_back(*kind);
    }
    return kinds;
}

std::string KindsObjection(const std::string& text)
{
    try
    {
        return KindsFrom(text).empty() ? "the kind is empty" : "";
    }
    catch (const BadValue& bad)
    {
        return bad.what();
    }
}

const char* TableOf(PlantActivityRecord record)
{
    switch (record)
    {
    case PlantActivityRecord::Event:
        return Describe<PlantEvent>().Table;
    case PlantActivityRecord::CareEntry:
        return Describe<PlantCareEntry>().Table;
    case PlantActivityRecord::HarvestRecord:
        return Describe<HarvestRecord>().Table;
    case PlantActivityRecord::JournalEntry:
        return Describe<PlantJournalEntry>().Table;
    case PlantActivityRecord::HealthObservation:
        return Describe<PlantHealthObservation>().Table;
    case PlantActivityRecord::Photo:
        return Describe<PlantPhoto>().Table;
    case PlantActivityRecord::Plant:
        break;
    }
    return Describe<Plant>().Table;
}

} // namespace

void AddActivityOptions(CLI::App& command, ActivityOptions& options)
{
    AddPlantOptions(command, options.Plants);
    AddAllPlants(command, "archived plants, too", options.Plants);
    AddFlag(
        command,
        {"--kind", "only these kinds, separated by commas", Joined(AllKinds(), "|"), Need::Optional, KindsObjection},
        options.Kinds);
    AddPeriod(command, options.Plants);
    AddNewest(command, "list only this many of the newest records", options.Newest);
    AddSwitch(command, "--oldest-first", "list the oldest record first", options.OldestFirst);
    AddCSV(command, options.AsCSV);
}

std::vector<PlantActivity> FindActivities(Session& session, const std::vector<Plant>& plants,
                                          const ActivityOptions& options, const std::string& from,
                                          const std::string& text)
{
    PlantActivityFilter filter;
    filter.Plants = ListedPlantSet(session, plants, options.Plants);
    if (options.Kinds)
        filter.Kinds = KindsFrom(*options.Kinds);
    filter.To = LastDate(options.Plants);
    filter.From = from;
    filter.Text = text;
    filter.Fold = WithoutCase;
    filter.AtMost = options.Newest ? NumberFrom(options.Newest) : 0;
    std::vector<PlantActivity> activities;
    session.RequireAnswer(QueryPlantActivity(session.ReadDatabase(), filter, activities));
    if (options.OldestFirst) // of the newest ones
        std::reverse(activities.begin(), activities.end());
    return activities;
}

void PrintActivities(const std::vector<PlantActivity>& activities, const std::vector<Plant>& plants)
{
    const UUIDTexts labels = PlantLabels(plants);
    std::vector<Row> rows;
    for (const PlantActivity& activity : activities)
    {
        const auto label = labels.find(activity.PlantUUID); // another program can have added a plant since
        rows.push_back(
            {activity.Date, label == labels.end() ? activity.PlantName : label->second, activity.Kind, activity.Text});
    }
    PrintTable(std::cout,
               {{"Date", WhenNarrow::Keep},
                {"Plant", WhenNarrow::Keep},
                {"Kind", WhenNarrow::Keep},
                {"Details", WhenNarrow::Cut}},
               rows);
}

std::vector<AnswerField<PlantActivity>> ActivityFields()
{
    return {{"Date", [](const PlantActivity& activity) { return Exact(activity.Date); }},
            {"PlantUUID", [](const PlantActivity& activity) { return Exact(activity.PlantUUID); }},
            {"Plant", [](const PlantActivity& activity) { return Exact(activity.PlantName); }},
            {"Kind", [](const PlantActivity& activity) { return Exact(activity.Kind); }},
            {"Details", [](const PlantActivity& activity) { return Exact(activity.Text); }},
            {"Table", [](const PlantActivity& activity) { return Exact(std::string(TableOf(activity.Record))); }},
            {"ID", [](const PlantActivity& activity) { return Exact(activity.RowID); }}};
}
