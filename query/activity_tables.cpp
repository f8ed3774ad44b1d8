#include "activity_tables.h"

#include <array>
#include <charconv>
#include <initializer_list>
#include <utility>

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

// Joins the texts that are not empty.
std::string Joined(std::initializer_list<std::string> texts)
{
    std::string joined;
    for (const std::string& text : texts)
        if (!text.empty())
            joined += (joined.empty() ? "" : " | ") + text;
    return joined;
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
    const double quality = row.Number(5);
    const auto seeds = row.Integer(6);
    return Joined({"Wet " + WithTenths(row.Number(3)) + " g", "Dry " + WithTenths(row.Number(4)) + " g",
                   seeds > 0 ? "Seeds " + std::to_string(seeds) : "",
                   quality > 0 ? "Quality " + WithTenths(quality) + "/10" : "", row.Text(7), row.Text(8)});
}

std::string HealthText(const PlantRepository& /*repository*/, const Statement& row)
{
    return Joined({row.Text(3) + " (" + std::to_string(row.Integer(4)) + " of 5)", row.Text(5), row.Text(6)});
}

std::string PhotoText(const PlantRepository& /*repository*/, const Statement& row)
{
    return Joined({row.Text(3), row.Text(4)});
}

std::string FourthColumn(const PlantRepository& /*repository*/, const Statement& row)
{
    return row.Text(4);
}

} // namespace

const std::vector<ActivityTable>& ActivityTables()
{
    static const std::vector<ActivityTable> tables = {
        {PlantActivityRecord::Event, "reading the events",
         "SELECT ID,PlantUUID,EventDate,EventType,Details FROM PlantEvents", "EventDate",
         NamesUpTo(PlantEventType::Note, PlantEventTypeName),
         [](const Statement& row) -> std::string { return PlantEventTypeName(PlantEventTypeFromName(row.Text(3))); },
         FourthColumn},
        {PlantActivityRecord::CareEntry, "reading the care entries",
         "SELECT ID,PlantUUID,CareDate,Action,Product,AmountMl,EC,PH,RunoffMl,Notes FROM PlantCareEntries", "CareDate",
         NamesUpTo(PlantCareAction::Water, PlantCareActionName),
         [](const Statement& row) -> std::string { return PlantCareActionName(PlantCareActionFromName(row.Text(3))); },
         CareText},
        {PlantActivityRecord::HarvestRecord,
         "reading the harvest records",
         "SELECT ID,PlantUUID,HarvestDate,WetWeightG,DryWeightG,QualityRating,SeedYield,CureOutcome,Notes "
         "FROM HarvestRecords",
         "HarvestDate",
         {"Harvest"},
         [](const Statement&) -> std::string { return "Harvest"; },
         HarvestText},
        {PlantActivityRecord::JournalEntry, "reading the journal entries",
         "SELECT ID,PlantUUID,EntryDate,Type,Details FROM PlantJournalEntries", "EntryDate",
         NamesUpTo(PlantJournalType::Milestone, PlantJournalTypeName),
         [](const Statement& row) -> std::string
         { return PlantJournalTypeName(PlantJournalTypeFromName(row.Text(3))); },
         FourthColumn},
        {PlantActivityRecord::HealthObservation,
         "reading the health observations",
         "SELECT ID,PlantUUID,ObservationDate,Issue,Severity,Treatment,Notes FROM PlantHealthObservations",
         "ObservationDate",
         {"Health"},
         [](const Statement&) -> std::string { return "Health"; },
         HealthText},
        {PlantActivityRecord::Photo,
         "reading the photos",
         "SELECT ID,PlantUUID,PhotoDate,FilePath,Caption FROM PlantPhotos",
         "PhotoDate",
         {"Photo"},
         [](const Statement&) -> std::string { return "Photo"; },
         PhotoText}};
    return tables;
}

} // namespace plant_query
