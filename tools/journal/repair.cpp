#include "journal/repair.h"

#include "journal/find_record.h"
#include "journal/sql.h"

namespace
{

// An event to be stored, and the record that owns it.
struct MissingEvent
{
    std::int64_t Owner = 0;
    std::string OwnerInWords;
    PlantEvent Event;
};

// The records of a table without an event. Their first columns are the row ID, the plant's UUID and name, and the date.
std::string QueryOwners(const std::string& table, const std::string& columns)
{
    return "SELECT o.ID,o.PlantUUID,p.Name," + columns + " FROM " + table +
           " o JOIN Plants p ON p.UUID=o.PlantUUID LEFT JOIN PlantEvents e ON e.ID=o.TimelineEventID "
           "WHERE e.ID IS NULL ORDER BY o.ID;";
}

MissingEvent EventOf(const Statement& owner, const std::string& noun)
{
    Plant plant;
    plant.UUID = owner.Text(1);
    plant.Name = owner.Text(2);
    MissingEvent missing;
    missing.Owner = owner.Number(0);
    missing.OwnerInWords = noun + " of " + DisplayName(plant);
    missing.Event.PlantUUID = plant.UUID;
    missing.Event.EventDate = owner.Text(3);
    return missing;
}

std::vector<MissingEvent> MissingCareEvents(const SQL& journal, const PlantRepository& repository)
{
    std::vector<MissingEvent> events;
    Statement owner(journal, QueryOwners("PlantCareEntries",
                                         "o.CareDate,o.Action,o.Product,o.AmountMl,o.EC,o.PH,o.RunoffMl,o.Notes"));
    while (owner.Step())
    {
        PlantCareEntry entry;
        entry.Action = PlantCareActionFromName(owner.Text(4));
        entry.Product = owner.Text(5);
        entry.AmountMl = owner.Real(6);
        entry.EC = owner.Real(7);
        entry.PH = owner.Real(8);
        entry.RunoffMl = owner.Real(9);
        entry.Notes = owner.Text(10);
        MissingEvent& missing = events.emplace_back(EventOf(owner, "care entry " + std::to_string(owner.Number(0))));
        missing.Event.Type = entry.Action == PlantCareAction::Feed ? PlantEventType::Feed : PlantEventType::Water;
        missing.Event.Details = repository.CareTimelineDetails(entry);
    }
    return events;
}

// Composes the details of harvests. The library does so only when it saves a record, so each is saved to a journal in
// memory.
class HarvestDetails
{
  public:
    explicit HarvestDetails(const Session& session) : Owner(session)
    {
        Owner.Require(Memory.Open(":memory:") && Repository.CreatePlant(Harvested), Failure);
    }

    std::string Compose(HarvestRecord record)
    {
        record.ID = Last.ID;
        record.TimelineEventID = Last.TimelineEventID;
        std::vector<PlantEvent> events;
        Owner.Require(Repository.SaveHarvestRecord(Harvested, record) &&
                          Repository.ListPlantEvents(Harvested.UUID, events) && events.size() == 1,
                      Failure);
        Last = record;
        return events.front().Details;
    }

  private:
    static constexpr const char* Failure = "the details of a harvest could not be composed";

    const Session& Owner;
    PlantDatabase Memory;
    PlantRepository Repository{Memory};
    Plant Harvested;
    HarvestRecord Last;
};

std::vector<MissingEvent> MissingHarvestEvents(const SQL& journal, const Session& session)
{
    std::vector<MissingEvent> events;
    HarvestDetails details(session);
    Statement owner(journal,
                    QueryOwners("HarvestRecords",
                                "o.HarvestDate,o.WetWeightG,o.DryWeightG,o.QualityRating,o.SeedYield,o.CureOutcome,"
                                "o.Notes"));
    while (owner.Step())
    {
        HarvestRecord record;
        record.WetWeightG = owner.Real(4);
        record.DryWeightG = owner.Real(5);
        record.QualityRating = owner.Real(6);
        record.SeedYield = static_cast<int>(owner.Number(7));
        record.CureOutcome = owner.Text(8);
        record.Notes = owner.Text(9);
        MissingEvent& missing = events.emplace_back(EventOf(owner, "the harvest record"));
        missing.Event.Type = PlantEventType::Harvest;
        missing.Event.Details = details.Compose(record);
    }
    return events;
}

void Store(const SQL& journal, const std::string& table, const std::vector<MissingEvent>& events,
           std::vector<std::string>& lines)
{
    Statement insertion(journal, "INSERT INTO PlantEvents(PlantUUID,EventDate,EventType,Details) VALUES(?,?,?,?);");
    Statement link(journal, "UPDATE " + table + " SET TimelineEventID=? WHERE ID=?;");
    for (const MissingEvent& missing : events)
    {
        insertion.Bind(1, missing.Event.PlantUUID);
        insertion.Bind(2, missing.Event.EventDate);
        insertion.Bind(3, std::string(PlantEventTypeName(missing.Event.Type)));
        insertion.Bind(4, missing.Event.Details);
        insertion.Step();
        insertion.Reset();
        link.Bind(1, journal.LastRowID());
        link.Bind(2, missing.Owner);
        link.Step();
        link.Reset();
        lines.push_back("Restored the event of " + missing.OwnerInWords);
    }
}

} // namespace

std::vector<std::string> RestoreMissingEvents(Session& session)
{
    const PlantRepository& repository = session.Write();
    const SQL journal(session.Connection(), session.Path() + ": restoring events");
    Transaction transaction(journal);
    // All are read before the first is stored: a new event can get the row ID to which another record refers in vain.
    const std::vector<MissingEvent> ofCare = MissingCareEvents(journal, repository);
    const std::vector<MissingEvent> ofHarvests = MissingHarvestEvents(journal, session);
    std::vector<std::string> lines;
    Store(journal, "PlantCareEntries", ofCare, lines);
    Store(journal, "HarvestRecords", ofHarvests, lines);
    transaction.Commit();
    return lines;
}
