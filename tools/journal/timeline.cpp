#include "journal/timeline.h"

#include "record/operations.h"
#include "record/text.h"

#include <algorithm>
#include <set>
#include <utility>

namespace
{

class Timeline
{
  public:
    Timeline(Session& session, const Plant& plant) : Journal(session), Subject(plant)
    {
        const std::vector<HarvestRecord> harvests = Records<HarvestRecord>();
        AddCareAndEvents(harvests);
        for (const HarvestRecord& harvest : harvests)
            if (harvest.TimelineEventID == 0)
                Items.push_back(
                    {harvest.HarvestDate, "Harvest", Joined({harvest.CureOutcome, harvest.Notes}, " | "), harvest});
        for (const PlantPhoto& photo : Records<PlantPhoto>())
            Items.push_back({photo.PhotoDate, "Photo", Joined({photo.FilePath, photo.Caption}, " | "), photo});
        for (const PlantHealthObservation& seen : Records<PlantHealthObservation>())
            Items.push_back(
                {seen.ObservationDate, "Health",
                 Joined({seen.Issue + " (" + std::to_string(seen.Severity) + " of 5)", seen.Treatment, seen.Notes},
                        " | "),
                 seen});
        for (const PlantJournalEntry& entry : Records<PlantJournalEntry>())
            Items.push_back({entry.EntryDate, PlantJournalTypeName(entry.Type), entry.Details, entry});
        AddOwnDates();
        std::stable_sort(Items.begin(), Items.end(),
                         [](const TimelineItem& left, const TimelineItem& right) { return left.Date > right.Date; });
    }

    std::vector<TimelineItem> Items;

  private:
    void AddCareAndEvents(const std::vector<HarvestRecord>& harvests)
    {
        std::set<std::int64_t> ownedEvents;
        for (const PlantCareEntry& care : Records<PlantCareEntry>())
        {
            ownedEvents.insert(care.TimelineEventID);
            Items.push_back(
                {care.CareDate, PlantCareActionName(care.Action), Journal.Read().CareTimelineDetails(care), care});
        }
        for (const PlantEvent& event : Records<PlantEvent>())
        {
            const auto harvest =
                std::find_if(harvests.begin(), harvests.end(),
                             [&](const HarvestRecord& record) { return record.TimelineEventID == event.ID; });
            if (harvest != harvests.end())
                Items.push_back({harvest->HarvestDate, "Harvest", event.Details, *harvest});
            else if (!ownedEvents.contains(event.ID))
                Items.push_back({event.EventDate, PlantEventTypeName(event.Type), event.Details, event});
        }
    }

    void AddOwnDates()
    {
        AddOwnDate("HarvestDate", Subject.HarvestDate, PlantEventTypeName(PlantEventType::Harvest));
        AddOwnDate("FlipDate", Subject.FlipDate, PlantEventTypeName(PlantEventType::Flip));
        AddOwnDate("TransplantDate", Subject.TransplantDate, PlantEventTypeName(PlantEventType::Transplant));
        AddOwnDate("CloneDate", Subject.CloneDate, PlantEventTypeName(PlantEventType::Clone));
        AddOwnDate("SeedDate", Subject.SeedDate, "Sown");
    }

    void AddOwnDate(const std::string& field, const std::string& date, const std::string& kind)
    {
        const bool known =
            std::any_of(Items.begin(), Items.end(),
                        [&](const TimelineItem& item) { return item.Kind == kind && item.Date == date; });
        if (!date.empty() && !known)
            Items.push_back({date, kind, "", OwnDate{field, date}});
    }

    template <typename Record> std::vector<Record> Records()
    {
        std::vector<Record> records;
        Journal.RequireList(ListRecords(Journal.Read(), Subject.UUID, records), "the timeline cannot be listed");
        return records;
    }

    Session& Journal;
    const Plant& Subject;
};

} // namespace

std::vector<TimelineItem> TimelineOf(Session& session, const Plant& plant)
{
    return std::move(Timeline(session, plant).Items);
}
