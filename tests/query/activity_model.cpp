#include "query/activity_model.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <tuple>

namespace support
{

namespace
{

template <typename Record>
std::vector<Record> Listed(PlantRepository& repository, const std::string& plant,
                           bool (PlantRepository::*list)(const std::string&, std::vector<Record>&))
{
    std::vector<Record> records;
    if (!(repository.*list)(plant, records))
        throw std::runtime_error("a list of the model failed");
    return records;
}

std::string Tenths(double number)
{
    std::string text(400, '\0');
    text.resize(static_cast<std::size_t>(std::snprintf(text.data(), text.size(), "%.1f", number)));
    return text;
}

std::string WithPart(const std::string& text, const std::string& part)
{
    return part.empty() ? text : text.empty() ? part : text + " | " + part;
}

std::string HarvestText(const HarvestRecord& record)
{
    std::string text = "Wet " + Tenths(record.WetWeightG) + " g | Dry " + Tenths(record.DryWeightG) + " g";
    if (record.SeedYield > 0)
        text += " | Seeds " + std::to_string(record.SeedYield);
    if (record.QualityRating > 0)
        text += " | Quality " + Tenths(record.QualityRating) + "/10";
    return WithPart(WithPart(text, record.CureOutcome), record.Notes);
}

// Collects everything dated of one plant.
class ModelTimeline
{
  public:
    ModelTimeline(PlantRepository& repository, const Plant& plant) : Repository(repository), Subject(plant)
    {
        AddOwners();
        AddEvents();
        for (const PlantPhoto& p : Listed(repository, plant.UUID, &PlantRepository::ListPlantPhotos))
            Add(p.PhotoDate, "Photo", WithPart(p.FilePath, p.Caption), PlantActivityRecord::Photo, p.ID);
        for (const auto& o : Listed(repository, plant.UUID, &PlantRepository::ListPlantHealthObservations))
            Add(o.ObservationDate, "Health",
                WithPart(WithPart(o.Issue + " (" + std::to_string(o.Severity) + " of 5)", o.Treatment), o.Notes),
                PlantActivityRecord::HealthObservation, o.ID);
        for (const auto& e : Listed(repository, plant.UUID, &PlantRepository::ListPlantJournalEntries))
            Add(e.EntryDate, PlantJournalTypeName(e.Type), e.Details, PlantActivityRecord::JournalEntry, e.ID);
        AddOwnDate(plant.HarvestDate, "Harvest");
        AddOwnDate(plant.FlipDate, "Flip");
        AddOwnDate(plant.TransplantDate, "Transplant");
        AddOwnDate(plant.CloneDate, "Clone");
        AddOwnDate(plant.SeedDate, "Sown");
    }

    std::vector<PlantActivity> Found;

  private:
    void AddOwners()
    {
        for (const auto& c : Listed(Repository, Subject.UUID, &PlantRepository::ListPlantCareEntries))
        {
            Owned.push_back(c.TimelineEventID);
            Add(c.CareDate, PlantCareActionName(c.Action), Repository.CareTimelineDetails(c),
                PlantActivityRecord::CareEntry, c.ID);
        }
        HarvestRecord record;
        if (!Repository.GetHarvestRecord(Subject.UUID, record))
            return;
        Owned.push_back(record.TimelineEventID);
        Add(record.HarvestDate, "Harvest", HarvestText(record), PlantActivityRecord::HarvestRecord, record.ID);
    }

    void AddEvents()
    {
        for (const auto& e : Listed(Repository, Subject.UUID, &PlantRepository::ListPlantEvents))
            if (std::find(Owned.begin(), Owned.end(), e.ID) == Owned.end())
                Add(e.EventDate, PlantEventTypeName(e.Type), e.Details, PlantActivityRecord::Event, e.ID);
    }

    void AddOwnDate(const std::string& date, const std::string& kind)
    {
        for (const PlantActivity& other : Found)
            if (other.Date == date && other.Kind == kind)
                return;
        if (!date.empty())
            Add(date, kind, "", PlantActivityRecord::Plant, Subject.ID);
    }

    void Add(const std::string& date, const std::string& kind, const std::string& text, PlantActivityRecord record,
             std::int64_t row)
    {
        Found.push_back({date, kind, text, Subject.UUID, Subject.Name, record, row});
    }

    PlantRepository& Repository;
    const Plant& Subject;
    std::vector<std::int64_t> Owned;
};

template <typename Value> bool IsAmong(const std::vector<Value>& wanted, const Value& value)
{
    return wanted.empty() || std::count(wanted.begin(), wanted.end(), value) > 0;
}

bool HasText(const PlantActivity& activity, const PlantActivityFilter& filter)
{
    const auto folded = [&](std::string text)
    {
        if (filter.Fold)
            return filter.Fold(text);
        for (char& c : text)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return text;
    };
    return folded(activity.Kind).find(folded(filter.Text)) != std::string::npos ||
           folded(activity.Text).find(folded(filter.Text)) != std::string::npos;
}

bool IsSelected(const PlantActivity& activity, const PlantActivityFilter& filter)
{
    return IsAmong(filter.Kinds, activity.Kind) && activity.Date >= filter.From &&
           (filter.To.empty() || activity.Date <= filter.To || activity.Date.rfind(filter.To, 0) == 0) &&
           (filter.Text.empty() || HasText(activity, filter));
}

} // namespace

std::vector<PlantActivity> ModelActivity(PlantRepository& repository, const PlantActivityFilter& filter)
{
    std::vector<Plant> plants;
    if (!repository.ListPlants(plants))
        throw std::runtime_error("the plants could not be listed");
    std::vector<PlantActivity> selected;
    for (const Plant& plant : plants)
        if (IsAmong(filter.Plants.UUIDs, plant.UUID) && IsAmong(filter.Plants.Strains, plant.Strain) &&
            IsAmong(filter.Plants.Tents, plant.Tent) && IsAmong(filter.Plants.Stages, plant.Stage))
            for (const PlantActivity& activity : ModelTimeline(repository, plant).Found)
                if (IsSelected(activity, filter))
                    selected.push_back(activity);
    // Dates of one plant that are equal stay in the order in which the timeline adds them.
    std::stable_sort(selected.begin(), selected.end(),
                     [](const PlantActivity& l, const PlantActivity& r)
                     { return std::tie(l.Date, l.Record, l.RowID) > std::tie(r.Date, r.Record, r.RowID); });
    if (filter.Order == PlantActivityOrder::OldestFirst)
        std::reverse(selected.begin(), selected.end());
    while (filter.AtMost > 0 && static_cast<std::int64_t>(selected.size()) > filter.AtMost)
        selected.pop_back();
    return selected;
}

std::vector<PlantCalendarDay> ModelCalendar(PlantRepository& repository, const PlantActivityFilter& filter)
{
    PlantActivityFilter all = filter;
    all.AtMost = 0;
    std::map<std::string, std::map<std::string, std::int64_t>> counts;
    for (const PlantActivity& activity : ModelActivity(repository, all))
        ++counts[activity.Date][activity.Kind];
    std::vector<PlantCalendarDay> days;
    for (const auto& [date, kinds] : counts)
        for (const auto& [kind, number] : kinds)
            days.push_back({date, kind, number});
    return days;
}

} // namespace support
