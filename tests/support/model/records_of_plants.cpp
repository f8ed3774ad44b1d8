#include "support/model/journal_model.h"
#include "support/model/rows.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace support
{

using namespace model;

namespace
{

std::string FixedPoint(double value, int decimals)
{
    std::array<char, 400> digits{}; // the largest double has 309 digits before the point
    const int length = std::snprintf(digits.data(), digits.size(), "%.*f", decimals, value);
    return {digits.data(), static_cast<std::size_t>(length)};
}

std::string HarvestDetails(const HarvestRecord& record)
{
    std::string details =
        "Wet " + FixedPoint(record.WetWeightG, 1) + " g | Dry " + FixedPoint(record.DryWeightG, 1) + " g";
    if (record.SeedYield > 0)
        details += " | Seeds " + std::to_string(record.SeedYield);
    if (record.QualityRating > 0)
        details += " | Quality " + FixedPoint(record.QualityRating, 1) + "/10";
    for (const std::string& text : {record.CureOutcome, record.Notes})
        if (!text.empty())
            details += " | " + text;
    return details;
}

} // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Timeline events

bool JournalModel::ListPlantEvents(const std::string& plantUUID, std::vector<PlantEvent>& out) const
{
    return ListRowsOfPlant(Events, plantUUID, &PlantEvent::EventDate, out);
}

bool JournalModel::CreatePlantEvent(PlantEvent& event)
{
    if (IDOfPlant(event.PlantUUID) == 0)
        return false;
    AddRow(Events, event);
    return true;
}

bool JournalModel::UpdatePlantEvent(const PlantEvent& event)
{
    if (event.ID == 0 || event.PlantUUID.empty())
        return false;
    WriteEvent(event, false);
    return true;
}

bool JournalModel::DeletePlantEvent(std::int64_t id)
{
    RemoveEvent(id);
    return id != 0;
}

bool JournalModel::HasEvent(std::int64_t id) const
{
    return RowWithID(Events, id) != nullptr;
}

void JournalModel::WriteEvent(const PlantEvent& event, bool isNew)
{
    if (isNew)
        Events.push_back(AsStored(event));
    else if (PlantEvent* stored = RowToUpdate(Events, event))
        *stored = AsStored(event);
}

void JournalModel::RemoveEvent(std::int64_t id)
{
    RemoveRowWithID(Events, id);
    const auto unlink = [&](auto& owners)
    {
        for (auto& owner : owners)
            if (owner.TimelineEventID == id)
                owner.TimelineEventID = 0;
    };
    unlink(CareEntries);
    unlink(HarvestRecords);
}

// ---------------------------------------------------------------------------------------------------------------------
// Care entries

bool JournalModel::ListPlantCareEntries(const std::string& plantUUID, std::vector<PlantCareEntry>& out) const
{
    return ListRowsOfPlant(CareEntries, plantUUID, &PlantCareEntry::CareDate, out);
}

bool JournalModel::CreatePlantCareEntry(PlantCareEntry& entry)
{
    if (IDOfPlant(entry.PlantUUID) == 0)
        return false;
    entry.TimelineEventID = NextID(Events); // the event ID stays in the entry even if the table refuses it
    if (IsRefused(entry))
        return false;
    const auto type = entry.Action == PlantCareAction::Feed ? PlantEventType::Feed : PlantEventType::Water;
    WriteEvent({entry.TimelineEventID, entry.PlantUUID, entry.CareDate, type, CareTimelineDetails(entry)}, true);
    AddRow(CareEntries, entry);
    return true;
}

bool JournalModel::UpdatePlantCareEntry(PlantCareEntry& entry)
{
    if (entry.ID == 0 || entry.PlantUUID.empty())
        return false;
    const bool isNew = entry.TimelineEventID == 0;
    if (isNew)
    {
        if (IDOfPlant(entry.PlantUUID) == 0)
            return false;
        entry.TimelineEventID = NextID(Events); // the event ID stays in the entry even if the table refuses it
    }
    PlantCareEntry* stored = RowToUpdate(CareEntries, entry);
    if (stored != nullptr && (IsRefused(entry) || (!isNew && !HasEvent(entry.TimelineEventID))))
        return false;
    const auto type = entry.Action == PlantCareAction::Feed ? PlantEventType::Feed : PlantEventType::Water;
    WriteEvent({entry.TimelineEventID, entry.PlantUUID, entry.CareDate, type, CareTimelineDetails(entry)}, isNew);
    if (stored != nullptr)
        *stored = AsStored(entry);
    return true;
}

bool JournalModel::DeletePlantCareEntry(std::int64_t id)
{
    const PlantCareEntry* entry = RowWithID(CareEntries, id);
    if (entry == nullptr)
        return false;
    const std::int64_t eventID = entry->TimelineEventID;
    RemoveRowWithID(CareEntries, id);
    if (eventID != 0)
        RemoveEvent(eventID);
    return true;
}

std::string JournalModel::CareTimelineDetails(const PlantCareEntry& entry) const
{
    std::string details = entry.Product + (entry.Product.empty() ? "" : " | ") + FixedPoint(entry.AmountMl, 0) + " ml";
    if (entry.EC > 0)
        details += " | EC " + FixedPoint(entry.EC, 2);
    if (entry.PH > 0)
        details += " | pH " + FixedPoint(entry.PH, 2);
    if (entry.RunoffMl > 0)
        details += " | Runoff " + FixedPoint(entry.RunoffMl, 0) + " ml";
    if (!entry.Notes.empty())
        details += " | " + entry.Notes;
    return details;
}

// ---------------------------------------------------------------------------------------------------------------------
// Harvest records

bool JournalModel::GetHarvestRecord(const std::string& plantUUID, HarvestRecord& out) const
{
    const HarvestRecord* stored = RowOfPlant(HarvestRecords, plantUUID);
    out = stored != nullptr ? AsRead(*stored) : HarvestRecord{};
    return stored != nullptr;
}

bool JournalModel::SaveHarvestRecord(Plant& plant, HarvestRecord& record)
{
    if (plant.UUID.empty())
        return false;
    record.PlantUUID = plant.UUID;
    if (record.HarvestDate.empty())
        record.HarvestDate = Today;

    PlantRow* storedPlant = RowWithID(Plants, IDOfPlant(plant.UUID));
    const bool isNewEvent = record.TimelineEventID == 0;
    if (isNewEvent)
    {
        if (storedPlant == nullptr)
            return false;
        record.TimelineEventID = NextID(Events); // the event ID stays in the record even if the table refuses it
    }
    const bool refused = IsRefused(record) || (!isNewEvent && !HasEvent(record.TimelineEventID));
    HarvestRecord* stored = RowToUpdate(HarvestRecords, record);
    if (record.ID == 0)
    {
        if (refused || storedPlant == nullptr || RowOfPlant(HarvestRecords, plant.UUID) != nullptr)
            return false;
        AddRow(HarvestRecords, record);
    }
    else if (stored != nullptr)
    {
        if (refused)
            return false;
        *stored = AsStored(record);
    }
    WriteEvent(
        {record.TimelineEventID, plant.UUID, record.HarvestDate, PlantEventType::Harvest, HarvestDetails(record)},
        isNewEvent);
    if (storedPlant != nullptr)
    {
        storedPlant->Stage = PlantStage::Harvested;
        storedPlant->HarvestDate = record.HarvestDate;
    }
    plant.Stage = PlantStage::Harvested;
    plant.HarvestDate = record.HarvestDate;
    return true;
}

bool JournalModel::DeleteHarvestRecord(const std::string& plantUUID)
{
    const HarvestRecord* stored = RowOfPlant(HarvestRecords, plantUUID);
    if (stored == nullptr)
        return false;
    const std::int64_t eventID = stored->TimelineEventID;
    RemoveRowsOfPlant(HarvestRecords, plantUUID);
    if (eventID != 0)
        RemoveEvent(eventID);
    return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Photos

bool JournalModel::ListPlantPhotos(const std::string& plantUUID, std::vector<PlantPhoto>& out) const
{
    return ListRowsOfPlant(Photos, plantUUID, &PlantPhoto::PhotoDate, out);
}

bool JournalModel::CreatePlantPhoto(PlantPhoto& photo)
{
    if (photo.PlantUUID.empty() || photo.FilePath.empty())
        return false;
    if (photo.UUID.empty())
        photo.UUID = NextUUID;
    if (IDOfPlant(photo.PlantUUID) == 0 ||
        FirstRow(Photos, [&](const PlantPhoto& p) { return p.UUID == photo.UUID; }) != nullptr)
        return false;
    AddRow(Photos, photo);
    return true;
}

bool JournalModel::UpdatePlantPhoto(const PlantPhoto& photo)
{
    if (photo.ID == 0 || photo.UUID.empty() || photo.PlantUUID.empty() || photo.FilePath.empty())
        return false;
    PlantPhoto* stored =
        FirstRow(Photos, [&](const PlantPhoto& p) { return p.UUID == photo.UUID && p.PlantUUID == photo.PlantUUID; });
    if (stored != nullptr)
    {
        const std::int64_t id = stored->ID; // the row ID in `photo` may be another
        *stored = photo;
        stored->ID = id;
    }
    return true;
}

bool JournalModel::DeletePlantPhoto(const std::string& photoUUID)
{
    std::erase_if(Photos, [&](const PlantPhoto& photo) { return photo.UUID == photoUUID; });
    return !photoUUID.empty();
}

// ---------------------------------------------------------------------------------------------------------------------
// Health observations

bool JournalModel::ListPlantHealthObservations(const std::string& plantUUID,
                                               std::vector<PlantHealthObservation>& out) const
{
    return ListRowsOfPlant(HealthObservations, plantUUID, &PlantHealthObservation::ObservationDate, out);
}

bool JournalModel::CreatePlantHealthObservation(PlantHealthObservation& o)
{
    if (o.PlantUUID.empty() || o.Issue.empty())
        return false;
    o.Severity = std::min(std::max(o.Severity, 1), 5);
    if (IDOfPlant(o.PlantUUID) == 0)
        return false;
    AddRow(HealthObservations, o);
    return true;
}

bool JournalModel::UpdatePlantHealthObservation(const PlantHealthObservation& o)
{
    if (o.ID == 0 || o.PlantUUID.empty() || o.Issue.empty())
        return false;
    if (PlantHealthObservation* stored = RowToUpdate(HealthObservations, o))
    {
        *stored = o;
        stored->Severity = std::min(std::max(o.Severity, 1), 5);
    }
    return true;
}

bool JournalModel::DeletePlantHealthObservation(std::int64_t id)
{
    RemoveRowWithID(HealthObservations, id);
    return id != 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Journal entries

bool JournalModel::ListPlantJournalEntries(const std::string& plantUUID, std::vector<PlantJournalEntry>& out) const
{
    return ListRowsOfPlant(JournalEntries, plantUUID, &PlantJournalEntry::EntryDate, out);
}

bool JournalModel::CreatePlantJournalEntry(PlantJournalEntry& e)
{
    if (IDOfPlant(e.PlantUUID) == 0)
        return false;
    AddRow(JournalEntries, e);
    return true;
}

bool JournalModel::UpdatePlantJournalEntry(const PlantJournalEntry& e)
{
    if (e.ID == 0 || e.PlantUUID.empty())
        return false;
    if (PlantJournalEntry* stored = RowToUpdate(JournalEntries, e))
        *stored = AsStored(e);
    return true;
}

bool JournalModel::DeletePlantJournalEntry(std::int64_t id)
{
    RemoveRowWithID(JournalEntries, id);
    return id != 0;
}

} // namespace support
