#include "support/model.h"

#include "testing/records.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <tuple>
#include <type_traits>

namespace support
{

namespace
{

// ---------------------------------------------------------------------------------------------------------------------
// What becomes of values in the file

// A number outside an enumeration is stored under the name of the default.
template <typename Enum> Enum Named(Enum value, Enum last, Enum otherwise)
{
    return value < Enum{} || value > last ? otherwise : value;
}

PlantStage Stored(PlantStage value)
{
    return Named(value, PlantStage::Archived, PlantStage::Veg);
}

PlantSex Stored(PlantSex value)
{
    return Named(value, PlantSex::Hermaphrodite, PlantSex::Unknown);
}

PlantEventType Stored(PlantEventType value)
{
    return Named(value, PlantEventType::Note, PlantEventType::Note);
}

PlantCareAction Stored(PlantCareAction value)
{
    return Named(value, PlantCareAction::Water, PlantCareAction::Water);
}

PlantJournalType Stored(PlantJournalType value)
{
    return Named(value, PlantJournalType::Milestone, PlantJournalType::Observation);
}

// A real number without a fraction is kept as an integer, and those know no negative zero:
// https://www.sqlite.org/datatype3.html#type_affinity
double Stored(double value)
{
    return value == 0 ? 0 : value;
}

std::int64_t Stored(std::int64_t value)
{
    return value;
}

int Stored(int value)
{
    return value;
}

std::string Stored(const std::string& value)
{
    return value;
}

// A record as it lies in the file.
template <Record Type> Type Stored(Type record)
{
    std::apply([](auto&... fields) { ((fields = Stored(fields)), ...); }, Fields(record));
    return record;
}

std::string ReadBack(const std::string& text)
{
    return text.substr(0, text.find('\0'));
}

// A record as it is read from the file.
template <Record Type> Type ReadBack(Type record)
{
    const auto read = []<typename Field>(Field& field)
    {
        if constexpr (std::is_same_v<Field, std::string>)
            field = ReadBack(field);
    };
    std::apply([&](auto&... fields) { (read(fields), ...); }, Fields(record));
    return record;
}

// Whether the columns refuse the record: a not-a-number is taken for a missing value.
template <Record Type> bool IsRefused(const Type& record)
{
    const auto isNaN = []<typename Field>(const Field& field)
    {
        if constexpr (std::is_same_v<Field, double>)
            return std::isnan(field);
        else
            return false;
    };
    return std::apply([&](const auto&... fields) { return (isNaN(fields) || ...); }, Fields(record));
}

// ---------------------------------------------------------------------------------------------------------------------
// Rows

template <typename Row> std::int64_t NextID(const std::vector<Row>& rows)
{
    std::int64_t id = 0;
    for (const Row& row : rows)
        id = std::max(id, row.ID);
    return id + 1;
}

// The row for which `isIt` holds, or null.
template <typename Rows, typename Condition> auto* Find(Rows& rows, const Condition& isIt)
{
    const auto found = std::find_if(rows.begin(), rows.end(), isIt);
    return found != rows.end() ? &*found : nullptr;
}

template <typename Rows> auto* FindID(Rows& rows, std::int64_t id)
{
    return Find(rows, [&](const auto& row) { return row.ID == id; });
}

template <typename Rows> auto* FindPlantUUID(Rows& rows, const std::string& plantUUID)
{
    return Find(rows, [&](const auto& row) { return row.PlantUUID == plantUUID; });
}

// The row that an update of `record` overwrites, or null.
template <typename Row> Row* FindStored(std::vector<Row>& rows, const Row& record)
{
    return Find(rows, [&](const Row& row) { return row.ID == record.ID && row.PlantUUID == record.PlantUUID; });
}

template <typename Row> void RemoveID(std::vector<Row>& rows, std::int64_t id)
{
    std::erase_if(rows, [&](const Row& row) { return row.ID == id; });
}

template <typename Row> void RemovePlantUUID(std::vector<Row>& rows, const std::string& plantUUID)
{
    std::erase_if(rows, [&](const Row& row) { return row.PlantUUID == plantUUID; });
}

template <typename Row> void Add(std::vector<Row>& rows, Row& record)
{
    record.ID = NextID(rows);
    rows.push_back(Stored(record));
}

// A plant's rows, newest date first, newest row first within a date.
template <typename Row>
bool ListOf(const std::vector<Row>& rows, const std::string& plantUUID, std::string Row::*date, std::vector<Row>& out)
{
    out.clear();
    for (const Row& row : rows)
        if (row.PlantUUID == plantUUID)
            out.push_back(row);
    std::sort(out.begin(), out.end(),
              [&](const Row& l, const Row& r) { return std::tie(l.*date, l.ID) > std::tie(r.*date, r.ID); });
    for (Row& row : out)
        row = ReadBack(row);
    return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// The order of names

int Folded(char letter)
{
    const auto byte = static_cast<unsigned char>(letter);
    return byte >= 'A' && byte <= 'Z' ? byte - 'A' + 'a' : byte;
}

// Below, at or above 0, as `left` sorts before, with or behind `right`. Letters are compared up to a zero byte; texts
// that are alike so far go by their length.
int CompareNames(const std::string& left, const std::string& right)
{
    if (left == right)
        return 0; // a megabyte is soon compared
    for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i)
    {
        if (Folded(left[i]) != Folded(right[i]))
            return Folded(left[i]) - Folded(right[i]);
        if (left[i] == '\0')
            break;
    }
    return left.size() < right.size() ? -1 : static_cast<int>(left.size() > right.size());
}

template <typename Row> std::vector<Row> ByID(std::vector<Row> rows)
{
    std::sort(rows.begin(), rows.end(), [](const Row& l, const Row& r) { return l.ID < r.ID; });
    return rows;
}

// Puts a row behind those that sort like it.
template <typename Row, typename Less> void InsertSorted(std::vector<Row>& rows, const Row& row, const Less& less)
{
    rows.insert(std::upper_bound(rows.begin(), rows.end(), row, less), row);
}

// Brings rows into the order of a list that was read.
template <typename Row, typename Listed> void OrderAs(const std::vector<Listed>& list, std::vector<Row>& rows)
{
    const auto place = [&](const Row& row)
    { return std::find_if(list.begin(), list.end(), [&](const Listed& listed) { return listed.ID == row.ID; }); };
    std::sort(rows.begin(), rows.end(), [&](const Row& l, const Row& r) { return place(l) < place(r); });
}

// ---------------------------------------------------------------------------------------------------------------------
// Composed texts

std::string Number(double value, int decimals)
{
    std::array<char, 400> digits{}; // the largest double has 309 before its point
    const int length = std::snprintf(digits.data(), digits.size(), "%.*f", decimals, value);
    return {digits.data(), static_cast<std::size_t>(length)};
}

std::string HarvestDetails(const HarvestRecord& record)
{
    std::string details = "Wet " + Number(record.WetWeightG, 1) + " g | Dry " + Number(record.DryWeightG, 1) + " g";
    if (record.SeedYield > 0)
        details += " | Seeds " + std::to_string(record.SeedYield);
    if (record.QualityRating > 0)
        details += " | Quality " + Number(record.QualityRating, 1) + "/10";
    for (const std::string& text : {record.CureOutcome, record.Notes})
        if (!text.empty())
            details += " | " + text;
    return details;
}

// The mean of those that are not 0.
double Average(const std::vector<double>& values)
{
    double sum = 0;
    int count = 0;
    for (const double value : values)
    {
        sum += value;
        count += static_cast<int>(value != 0);
    }
    return count == 0 || std::isnan(sum) ? 0 : sum / count;
}

} // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Plants

bool JournalModel::ListPlants(std::vector<Plant>& out) const
{
    const auto byStrainAndName = [](const StoredPlant& l, const StoredPlant& r)
    {
        const int strains = CompareNames(l.Strain, r.Strain);
        return strains != 0 ? strains < 0 : CompareNames(l.Name, r.Name) < 0;
    };
    std::vector<StoredPlant> sorted;
    for (const StoredPlant& plant : Plants)
        InsertSorted(sorted, plant, byStrainAndName);
    out.clear();
    for (const StoredPlant& plant : sorted)
    {
        const StoredPlant* mother = FindID(Plants, plant.MotherID);
        Plant& listed = out.emplace_back(plant);
        listed.MotherPlantUUID = mother != nullptr ? mother->UUID : "";
        listed = ReadBack(listed);
    }
    return true;
}

bool JournalModel::GetPlant(const std::string& uuid, Plant& out) const
{
    std::vector<Plant> plants;
    ListPlants(plants);
    const Plant* found = Find(plants, [&](const Plant& plant) { return plant.UUID == uuid; });
    if (found == nullptr)
        return false;
    out = *found;
    return true;
}

std::int64_t JournalModel::IDOfPlant(const std::string& uuid) const
{
    const StoredPlant* plant = Find(Plants, [&](const StoredPlant& p) { return p.UUID == uuid; });
    return plant != nullptr ? plant->ID : 0;
}

void JournalModel::RegisterStrain(const std::string& name)
{
    Strain strain;
    strain.Name = name;
    CreateStrain(strain);
}

// The walk up the mothers goes by the plants as they are listed: by identifiers up to their first zero byte, of which
// two plants may have the same. Then the one that is listed last counts.
bool JournalModel::MayHaveItsMother(const Plant& plant) const
{
    if (plant.MotherPlantUUID.empty())
        return true;
    if (plant.UUID.empty())
        return false;
    std::vector<Plant> plants;
    ListPlants(plants);
    std::string ancestor = plant.MotherPlantUUID;
    for (std::size_t generations = 0; generations <= plants.size(); ++generations)
    {
        if (ancestor.empty())
            return true;
        if (ancestor == plant.UUID)
            return false;
        const auto found =
            std::find_if(plants.rbegin(), plants.rend(), [&](const Plant& p) { return p.UUID == ancestor; });
        if (found == plants.rend())
            return false;
        ancestor = found->MotherPlantUUID;
    }
    return false; // more generations than plants: a circle
}

bool JournalModel::CreatePlant(Plant& p)
{
    RegisterStrain(p.Strain);
    if (p.UUID.empty())
        p.UUID = NextUUID;
    if (!MayHaveItsMother(p) || IDOfPlant(p.UUID) != 0 || IsRefused(p))
        return false;
    p.ID = NextID(Plants);
    Plants.push_back({Stored(p), IDOfPlant(p.MotherPlantUUID)});
    return true;
}

bool JournalModel::UpdatePlant(const Plant& p)
{
    RegisterStrain(p.Strain);
    if (!MayHaveItsMother(p))
        return false;
    StoredPlant* plant = FindID(Plants, IDOfPlant(p.UUID));
    if (plant == nullptr)
        return true;
    if (IsRefused(p))
        return false;
    const std::int64_t id = plant->ID;
    *plant = {Stored(p), IDOfPlant(p.MotherPlantUUID)};
    plant->ID = id;
    return true;
}

bool JournalModel::DeletePlant(const std::string& uuid)
{
    const std::int64_t id = IDOfPlant(uuid);
    if (id == 0)
        return true;
    RemoveID(Plants, id);
    for (StoredPlant& clone : Plants)
        if (clone.MotherID == id)
            clone.MotherID = 0;
    while (const PlantEvent* event = FindPlantUUID(Events, uuid))
        RemoveEvent(event->ID);
    RemovePlantUUID(CareEntries, uuid);
    RemovePlantUUID(HarvestRecords, uuid);
    RemovePlantUUID(Photos, uuid);
    RemovePlantUUID(HealthObservations, uuid);
    RemovePlantUUID(JournalEntries, uuid);
    return true;
}

bool JournalModel::DuplicatePlant(const Plant& source, Plant& out)
{
    Plant copy = source;
    copy.ID = 0;
    copy.UUID = NextUUID;
    copy.Name += " copy";
    copy.MotherPlantUUID = "";
    out = copy;
    return CreatePlant(out);
}

// ---------------------------------------------------------------------------------------------------------------------
// Strains

bool JournalModel::ListStrains(std::vector<Strain>& out) const
{
    const auto byName = [](const Strain& l, const Strain& r) { return CompareNames(l.Name, r.Name) < 0; };
    out.clear();
    for (const Strain& strain : Strains)
        InsertSorted(out, strain, byName);
    for (Strain& strain : out)
        strain = ReadBack(strain);
    return true;
}

bool JournalModel::GetStrain(std::int64_t id, Strain& out) const
{
    const Strain* strain = FindID(Strains, id);
    if (strain == nullptr)
        return false;
    out = ReadBack(*strain);
    return true;
}

bool JournalModel::CreateStrain(Strain& strain)
{
    if (strain.Name.empty() || Find(Strains, [&](const Strain& s) { return s.Name == strain.Name; }) != nullptr)
        return false;
    Add(Strains, strain);
    return true;
}

// The old name is looked up before, and comes up to its first zero byte only: of a strain with such a name the plants
// stay behind, and those of a strain named by the beginning come along in their place.
bool JournalModel::UpdateStrain(const Strain& strain)
{
    Strain* stored = FindID(Strains, strain.ID);
    if (stored == nullptr || strain.Name.empty() ||
        Find(Strains, [&](const Strain& s) { return s.Name == strain.Name && s.ID != strain.ID; }) != nullptr)
        return false;
    const std::string oldName = ReadBack(stored->Name);
    *stored = strain;
    for (StoredPlant& plant : Plants)
        if (plant.Strain == oldName)
            plant.Strain = strain.Name;
    return true;
}

bool JournalModel::DeleteStrain(std::int64_t id)
{
    const Strain* strain = FindID(Strains, id);
    if (strain == nullptr)
        return true;
    if (Find(Plants, [&](const StoredPlant& plant) { return plant.Strain == strain->Name; }) != nullptr)
        return false;
    RemoveID(Strains, id);
    return true;
}

bool JournalModel::GetStrainSummary(std::int64_t strainID, StrainSummary& out) const
{
    out = {};
    const Strain* strain = FindID(Strains, strainID);
    if (strain == nullptr)
        return false;
    out.StrainID = strainID;
    out.StrainName = ReadBack(strain->Name);
    const std::array<int*, 8> stages = {&out.Seed, &out.Clone, &out.Veg,       &out.Flower,
                                        &out.Dry,  &out.Cure,  &out.Harvested, &out.Archived};
    std::vector<double> weights;
    std::vector<double> ratings;
    for (const StoredPlant& plant : Plants)
    {
        if (plant.Strain != strain->Name)
            continue;
        ++out.TotalPlants;
        ++*stages.at(static_cast<std::size_t>(plant.Stage));
        if (const HarvestRecord* harvest = FindPlantUUID(HarvestRecords, plant.UUID))
        {
            ++out.HarvestCount;
            weights.push_back(harvest->DryWeightG);
            ratings.push_back(harvest->QualityRating);
        }
    }
    out.AverageDryWeightG = Average(weights);
    out.AverageQuality = Average(ratings);
    return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Timeline events

bool JournalModel::ListPlantEvents(const std::string& plantUUID, std::vector<PlantEvent>& out) const
{
    return ListOf(Events, plantUUID, &PlantEvent::EventDate, out);
}

bool JournalModel::CreatePlantEvent(PlantEvent& event)
{
    if (IDOfPlant(event.PlantUUID) == 0)
        return false;
    Add(Events, event);
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
    return FindID(Events, id) != nullptr;
}

void JournalModel::WriteEvent(const PlantEvent& event, bool isNew)
{
    if (isNew)
        Events.push_back(Stored(event));
    else if (PlantEvent* stored = FindStored(Events, event))
        *stored = Stored(event);
}

void JournalModel::RemoveEvent(std::int64_t id)
{
    RemoveID(Events, id);
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
    return ListOf(CareEntries, plantUUID, &PlantCareEntry::CareDate, out);
}

bool JournalModel::CreatePlantCareEntry(PlantCareEntry& entry)
{
    if (IDOfPlant(entry.PlantUUID) == 0)
        return false;
    entry.TimelineEventID = NextID(Events); // stays behind when the entry itself is refused
    if (IsRefused(entry))
        return false;
    const auto type = entry.Action == PlantCareAction::Feed ? PlantEventType::Feed : PlantEventType::Water;
    WriteEvent({entry.TimelineEventID, entry.PlantUUID, entry.CareDate, type, CareTimelineDetails(entry)}, true);
    Add(CareEntries, entry);
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
        entry.TimelineEventID = NextID(Events); // stays behind when the entry itself is refused
    }
    PlantCareEntry* stored = FindStored(CareEntries, entry);
    if (stored != nullptr && (IsRefused(entry) || (!isNew && !HasEvent(entry.TimelineEventID))))
        return false;
    const auto type = entry.Action == PlantCareAction::Feed ? PlantEventType::Feed : PlantEventType::Water;
    WriteEvent({entry.TimelineEventID, entry.PlantUUID, entry.CareDate, type, CareTimelineDetails(entry)}, isNew);
    if (stored != nullptr)
        *stored = Stored(entry);
    return true;
}

bool JournalModel::DeletePlantCareEntry(std::int64_t id)
{
    const PlantCareEntry* entry = FindID(CareEntries, id);
    if (entry == nullptr)
        return false;
    const std::int64_t eventID = entry->TimelineEventID;
    RemoveID(CareEntries, id);
    if (eventID != 0)
        RemoveEvent(eventID);
    return true;
}

std::string JournalModel::CareTimelineDetails(const PlantCareEntry& entry) const
{
    std::string details = entry.Product + (entry.Product.empty() ? "" : " | ") + Number(entry.AmountMl, 0) + " ml";
    if (entry.EC > 0)
        details += " | EC " + Number(entry.EC, 2);
    if (entry.PH > 0)
        details += " | pH " + Number(entry.PH, 2);
    if (entry.RunoffMl > 0)
        details += " | Runoff " + Number(entry.RunoffMl, 0) + " ml";
    if (!entry.Notes.empty())
        details += " | " + entry.Notes;
    return details;
}

// ---------------------------------------------------------------------------------------------------------------------
// Harvest records

bool JournalModel::GetHarvestRecord(const std::string& plantUUID, HarvestRecord& out) const
{
    const HarvestRecord* stored = FindPlantUUID(HarvestRecords, plantUUID);
    out = stored != nullptr ? ReadBack(*stored) : HarvestRecord{};
    return stored != nullptr;
}

bool JournalModel::SaveHarvestRecord(Plant& plant, HarvestRecord& record)
{
    if (plant.UUID.empty())
        return false;
    record.PlantUUID = plant.UUID;
    if (record.HarvestDate.empty())
        record.HarvestDate = Today;

    StoredPlant* storedPlant = FindID(Plants, IDOfPlant(plant.UUID));
    const bool isNewEvent = record.TimelineEventID == 0;
    if (isNewEvent)
    {
        if (storedPlant == nullptr)
            return false;
        record.TimelineEventID = NextID(Events); // stays behind when the record itself is refused
    }
    const bool refused = IsRefused(record) || (!isNewEvent && !HasEvent(record.TimelineEventID));
    HarvestRecord* stored = FindStored(HarvestRecords, record);
    if (record.ID == 0)
    {
        if (refused || storedPlant == nullptr || FindPlantUUID(HarvestRecords, plant.UUID) != nullptr)
            return false;
        Add(HarvestRecords, record);
    }
    else if (stored != nullptr)
    {
        if (refused)
            return false;
        *stored = Stored(record);
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
    const HarvestRecord* stored = FindPlantUUID(HarvestRecords, plantUUID);
    if (stored == nullptr)
        return false;
    const std::int64_t eventID = stored->TimelineEventID;
    RemovePlantUUID(HarvestRecords, plantUUID);
    if (eventID != 0)
        RemoveEvent(eventID);
    return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Photos

bool JournalModel::ListPlantPhotos(const std::string& plantUUID, std::vector<PlantPhoto>& out) const
{
    return ListOf(Photos, plantUUID, &PlantPhoto::PhotoDate, out);
}

bool JournalModel::CreatePlantPhoto(PlantPhoto& photo)
{
    if (photo.PlantUUID.empty() || photo.FilePath.empty())
        return false;
    if (photo.UUID.empty())
        photo.UUID = NextUUID;
    if (IDOfPlant(photo.PlantUUID) == 0 ||
        Find(Photos, [&](const PlantPhoto& p) { return p.UUID == photo.UUID; }) != nullptr)
        return false;
    Add(Photos, photo);
    return true;
}

bool JournalModel::UpdatePlantPhoto(const PlantPhoto& photo)
{
    if (photo.ID == 0 || photo.UUID.empty() || photo.PlantUUID.empty() || photo.FilePath.empty())
        return false;
    PlantPhoto* stored =
        Find(Photos, [&](const PlantPhoto& p) { return p.UUID == photo.UUID && p.PlantUUID == photo.PlantUUID; });
    if (stored != nullptr)
    {
        const std::int64_t id = stored->ID; // that of the record need not be it
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
    return ListOf(HealthObservations, plantUUID, &PlantHealthObservation::ObservationDate, out);
}

bool JournalModel::CreatePlantHealthObservation(PlantHealthObservation& o)
{
    if (o.PlantUUID.empty() || o.Issue.empty())
        return false;
    o.Severity = std::min(std::max(o.Severity, 1), 5);
    if (IDOfPlant(o.PlantUUID) == 0)
        return false;
    Add(HealthObservations, o);
    return true;
}

bool JournalModel::UpdatePlantHealthObservation(const PlantHealthObservation& o)
{
    if (o.ID == 0 || o.PlantUUID.empty() || o.Issue.empty())
        return false;
    if (PlantHealthObservation* stored = FindStored(HealthObservations, o))
    {
        *stored = o;
        stored->Severity = std::min(std::max(o.Severity, 1), 5);
    }
    return true;
}

bool JournalModel::DeletePlantHealthObservation(std::int64_t id)
{
    RemoveID(HealthObservations, id);
    return id != 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// Journal entries

bool JournalModel::ListPlantJournalEntries(const std::string& plantUUID, std::vector<PlantJournalEntry>& out) const
{
    return ListOf(JournalEntries, plantUUID, &PlantJournalEntry::EntryDate, out);
}

bool JournalModel::CreatePlantJournalEntry(PlantJournalEntry& e)
{
    if (IDOfPlant(e.PlantUUID) == 0)
        return false;
    Add(JournalEntries, e);
    return true;
}

bool JournalModel::UpdatePlantJournalEntry(const PlantJournalEntry& e)
{
    if (e.ID == 0 || e.PlantUUID.empty())
        return false;
    if (PlantJournalEntry* stored = FindStored(JournalEntries, e))
        *stored = Stored(e);
    return true;
}

bool JournalModel::DeletePlantJournalEntry(std::int64_t id)
{
    RemoveID(JournalEntries, id);
    return id != 0;
}

// ---------------------------------------------------------------------------------------------------------------------
// For those who run it beside a library

void JournalModel::OrderAlikeAs(const std::vector<Plant>& plants, const std::vector<Strain>& strains)
{
    OrderAs(plants, Plants);
    OrderAs(strains, Strains);
}

std::vector<std::string> JournalModel::PlantUUIDs() const
{
    std::vector<std::string> uuids;
    for (const StoredPlant& plant : ByID(Plants))
        uuids.push_back(plant.UUID);
    return uuids;
}

std::vector<std::string> JournalModel::StrainNames() const
{
    std::vector<std::string> names;
    for (const Strain& strain : ByID(Strains))
        names.push_back(strain.Name);
    return names;
}

} // namespace support
