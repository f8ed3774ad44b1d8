#include "activity_tables.h"

#include <array>
#include <charconv>

namespace plant_query
{

namespace
{

// The stored names of an enumeration's values, from 0 to `last`.
template <typename Enum> std::vector<std::string> NamesUpTo(Enum last, const char* (*name)(Enum))
{
    std::vector<std::string> names;
    for (std::int32_t value = 0; value <= static_cast<std::int32_t>(last); ++value)
        names.emplace_back(name(static_cast<Enum>(value)));
    return names;
}

void AppendPart(std::string& text, const std::string& part)
{
    if (!text.empty() && !part.empty())
        text += " | ";
    text += part;
}

// The number with one digit after the decimal point, in every locale alike.
std::string WithTenths(double number)
{
    std::array<char, 512> digits{}; // the largest number has 309 digits before the decimal point
    const std::to_chars_result end =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed, 1);
    return {digits.data(), end.ptr};
}

std::string CareText(const PlantRepository& repository, const Statement& row)
{
    PlantCareEntry entry;
    entry.Product = row.Text(4);
    entry.AmountMl = row.Number(5);
    entry.EC = row.Number(6);
    entry.PH = row.Number(7);
    entry.RunoffMl = row.Number(8);
    entry.Notes = row.Text(9);
    return repository.CareTimelineDetails(entry);
}

// As the repository writes it to the event of the record.
std::string HarvestText(const PlantRepository& /*repository*/, const Statement& row)
{
    std::string text = "Wet " + WithTenths(row.Number(3)) + " g | Dry " + WithTenths(row.Number(4)) + " g";
    if (row.Integer(6) > 0)
        AppendPart(text, "Seeds " + std::to_string(row.Integer(6)));
    if (row.Number(5) > 0)
        AppendPart(text, "Quality " + WithTenths(row.Number(5)) + "/10");
    AppendPart(text, row.Text(7));
    AppendPart(text, row.Text(8));
    return text;
}

std::string HealthText(const PlantRepository& /*repository*/, const Statement& row)
{
    std::string text = row.Text(3) + " (" + std::to_string(row.Integer(4)) + " of 5)";
    AppendPart(text, row.Text(5));
    AppendPart(text, row.Text(6));
    return text;
}

std::string PhotoText(const PlantRepository& /*repository*/, const Statement& row)
{
    std::string text = row.Text(3);
    AppendPart(text, row.Text(4));
    return text;
}

std::string FourthColumn(const PlantRepository& /*repository*/, const Statement& row)
{
    return row.Text(4);
}

std::string EventKind(const Statement& row)
{
    return PlantEventTypeName(PlantEventTypeFromName(row.Text(3)));
}

std::string CareKind(const Statement& row)
{
    return PlantCareActionName(PlantCareActionFromName(row.Text(3)));
}

std::string EntryKind(const Statement& row)
{
    return PlantJournalTypeName(PlantJournalTypeFromName(row.Text(3)));
}

constexpr std::array<ActivityTable, 6> Tables = {{
    {PlantActivityRecord::Event, "reading the events",
     "SELECT ID,PlantUUID,EventDate,EventType,Details FROM PlantEvents", "EventDate",
     [] { return NamesUpTo(PlantEventType::Note, PlantEventTypeName); }, EventKind, FourthColumn},
    {PlantActivityRecord::CareEntry, "reading the care entries",
     "SELECT ID,PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,RunoffMl,Notes FROM PlantCareEntries", "CareDate",
     [] { return NamesUpTo(PlantCareAction::Water, PlantCareActionName); }, CareKind, CareText},
    {PlantActivityRecord::HarvestRecord, "reading the harvest records",
     "SELECT ID,PlantUUID,HarvestDate,WetWeightG,DryWeightG,QualityRating,SeedYield,CureOutcome,Notes "
     "FROM HarvestRecords",
     "HarvestDate", [] { return std::vector<std::string>(1, "Harvest"); },
     [](const Statement&) -> std::string { return "Harvest"; }, HarvestText},
    {PlantActivityRecord::JournalEntry, "reading the journal entries",
     "SELECT ID,PlantUUID,EntryDate,Type,Details FROM PlantJournalEntries", "EntryDate",
     [] { return NamesUpTo(PlantJournalType::Milestone, PlantJournalTypeName); }, EntryKind, FourthColumn},
    {PlantActivityRecord::HealthObservation, "reading the health observations",
     "SELECT ID,PlantUUID,ObservationDate,Issue,Severity,Treatment,Notes FROM PlantHealthObservations",
     "ObservationDate", [] { return std::vector<std::string>(1, "Health"); },
     [](const Statement&) -> std::string { return "Health"; }, HealthText},
    {PlantActivityRecord::Photo, "reading the photos",
     "SELECT ID,PlantUUID,PhotoDate,FilePath,Caption FROM PlantPhotos", "PhotoDate",
     [] { return std::vector<std::string>(1, "Photo"); }, [](const Statement&) -> std::string { return "Photo"; },
     PhotoText},
}};

} // namespace

const std::array<ActivityTable, 6>& ActivityTables()
{
    return Tables;
}

} // namespace plant_query
