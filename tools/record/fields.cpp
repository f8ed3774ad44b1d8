#include "record/fields.h"

#include <cctype>
#include <map>

namespace
{

template <typename... Records> std::map<std::string, std::string> PluralsOfTables()
{
    return {{Describe<Records>().Table, Describe<Records>().Plural}...};
}

} // namespace

template <> const Description<Strain>& Describe()
{
    using enum Use;
    using enum Display;
    static const Description<Strain> description = {
        "Strains",
        "strain",
        "strain",
        "strains",
        {
            {"ID", &Strain::ID, RowID, OnlyInJSON, "ID", "row ID"},
            {"Name", &Strain::Name, Title, Always, "Name", "unique name"},
            {"Breeder", &Strain::Breeder, Value, Always, "Breeder", "breeder"},
            {"FloweringWeeks", &Strain::FloweringWeeks, Value, Always, "Flowering time",
             "expected flowering time, weeks", "weeks"},
            {"Notes", &Strain::Notes, Remark, Always, "Notes", "free notes"},
        }};
    return description;
}

template <> const Description<Plant>& Describe()
{
    using enum Use;
    using enum Display;
    static const Description<Plant> description = {
        "Plants",
        "plant",
        "plant",
        "plants",
        {
            {"ID", &Plant::ID, RowID, OnlyInJSON, "ID", "row ID"},
            {"UUID", &Plant::UUID, UUID, Always, "UUID", "permanent identifier; generated if not given"},
            {"Name", &Plant::Name, Title, Always, "Name", "display name"},
            {"Strain", &Plant::Strain, Value, Always, "Strain", "strain; a new name is added to the strains"},
            {"MotherPlantUUID", &Plant::MotherPlantUUID, Mother, InFull, "Mother", "plant from which it was cloned", "",
             "MotherPlantID"},
            {"Stage", &Plant::Stage, Value, Always, "Stage", "growth stage"},
            {"Sex", &Plant::Sex, Value, Always, "Sex", "sex"},
            {"Tent", &Plant::Tent, Value, Always, "Tent", "tent or place"},
            {"PotSize", &Plant::PotSize, Value, InFull, "Pot size", "pot size"},
            {"Medium", &Plant::Medium, Value, InFull, "Medium", "growing medium"},
            {"SeedDate", &Plant::SeedDate, Date, InFull, "Sown", "date sown"},
            {"FlipHeightCm", &Plant::FlipHeightCm, Value, InFull, "Height at flip", "height when flipped to flower, cm",
             "cm"},
            {"FinalHeightCm", &Plant::FinalHeightCm, Value, InFull, "Final height", "final height, cm", "cm"},
            {"CloneDate", &Plant::CloneDate, Date, InFull, "Cloned", "date cloned"},
            {"TransplantDate", &Plant::TransplantDate, Date, InFull, "Transplanted", "date transplanted"},
            {"FlipDate", &Plant::FlipDate, Date, InFull, "Flipped", "date flipped to flower"},
            {"HarvestDate", &Plant::HarvestDate, Date, Always, "Harvested", "date harvested"},
            {"Notes", &Plant::Notes, Remark, InFull, "Notes", "free notes"},
        }};
    return description;
}

template <> const Description<PlantEvent>& Describe()
{
    using enum Use;
    using enum Display;
    static const Description<PlantEvent> description = {
        "PlantEvents",
        "event",
        "timeline event",
        "timeline events",
        {
            {"ID", &PlantEvent::ID, RowID, Always, "ID", "row ID"},
            {"PlantUUID", &PlantEvent::PlantUUID, Owner, OnlyInJSON, "Plant", "plant"},
            {"EventDate", &PlantEvent::EventDate, Day, Always, "Date", "date of the event"},
            {"Type", &PlantEvent::Type, Value, Always, "Type", "type of event", "", "EventType"},
            {"Details", &PlantEvent::Details, Words, Always, "Details", "text shown on the timeline"},
        }};
    return description;
}

template <> const Description<PlantCareEntry>& Describe()
{
    using enum Use;
    using enum Display;
    static const Description<PlantCareEntry> description = {
        "PlantCareEntries",
        "care",
        "care entry",
        "care entries",
        {
            {"ID", &PlantCareEntry::ID, RowID, Always, "ID", "row ID"},
            {"TimelineEventID", &PlantCareEntry::TimelineEventID, Link, OnlyInJSON, "Event",
             "row ID of its timeline event"},
            {"PlantUUID", &PlantCareEntry::PlantUUID, Owner, OnlyInJSON, "Plant", "plant"},
            {"CareDate", &PlantCareEntry::CareDate, Day, Always, "Date", "date of care"},
            {"Action", &PlantCareEntry::Action, Value, Always, "Action", "action"},
            {"Product", &PlantCareEntry::Product, Value, Always, "Product", "nutrient product"},
            {"AmountMl", &PlantCareEntry::AmountMl, Value, Always, "Amount", "amount given, ml", "ml"},
            {"EC", &PlantCareEntry::EC, Value, Always, "EC", "electrical conductivity of the solution"},
            {"PH", &PlantCareEntry::PH, Value, Always, "pH", "pH of the solution"},
            {"RunoffMl", &PlantCareEntry::RunoffMl, Value, Always, "Runoff", "runoff, ml", "ml"},
            {"Notes", &PlantCareEntry::Notes, Remark, Always, "Notes", "free notes"},
        }};
    return description;
}

template <> const Description<HarvestRecord>& Describe()
{
    using enum Use;
    using enum Display;
    static const Description<HarvestRecord> description = {
        "HarvestRecords",
        "harvest",
        "harvest record",
        "harvest records",
        {
            {"ID", &HarvestRecord::ID, RowID, OnlyInJSON, "ID", "row ID"},
            {"TimelineEventID", &HarvestRecord::TimelineEventID, Link, OnlyInJSON, "Event",
             "row ID of its timeline event"},
            {"PlantUUID", &HarvestRecord::PlantUUID, Owner, OnlyInJSON, "Plant", "plant"},
            {"HarvestDate", &HarvestRecord::HarvestDate, Day, Always, "Date", "date of harvest"},
            {"WetWeightG", &HarvestRecord::WetWeightG, Value, Always, "Wet weight",
             "wet weight in g, or with its unit: 210g, 0.21kg", "g"},
            {"DryWeightG", &HarvestRecord::DryWeightG, Value, Always, "Dry weight",
             "dry weight in g, or with its unit; 0 for not weighed", "g"},
            {"QualityRating", &HarvestRecord::QualityRating, Value, Always, "Quality",
             "quality, out of 10; 0 for not rated", "of 10"},
            {"SeedYield", &HarvestRecord::SeedYield, Value, Always, "Seeds", "number of seeds"},
            {"CureOutcome", &HarvestRecord::CureOutcome, Remark, Always, "Cure", "result of curing"},
            {"Notes", &HarvestRecord::Notes, Remark, Always, "Notes", "free notes"},
        }};
    return description;
}

template <> const Description<PlantPhoto>& Describe()
{
    using enum Use;
    using enum Display;
    static const Description<PlantPhoto> description = {
        "PlantPhotos",
        "photo",
        "photo",
        "photos",
        {
            {"ID", &PlantPhoto::ID, RowID, Always, "ID", "row ID"},
            {"UUID", &PlantPhoto::UUID, UUID, OnlyInJSON, "UUID", "permanent identifier; generated if not given"},
            {"PlantUUID", &PlantPhoto::PlantUUID, Owner, OnlyInJSON, "Plant", "plant"},
            {"PhotoDate", &PlantPhoto::PhotoDate, Day, Always, "Date", "date taken"},
            {"FilePath", &PlantPhoto::FilePath, Title, Always, "File", "path of the image file"},
            {"Caption", &PlantPhoto::Caption, Remark, Always, "Caption", "caption"},
        }};
    return description;
}

template <> const Description<PlantHealthObservation>& Describe()
{
    using enum Use;
    using enum Display;
    using Observation = PlantHealthObservation;
    static const Description<Observation> description = {
        "PlantHealthObservations",
        "health",
        "health observation",
        "health observations",
        {
            {"ID", &Observation::ID, RowID, Always, "ID", "row ID"},
            {"PlantUUID", &Observation::PlantUUID, Owner, OnlyInJSON, "Plant", "plant"},
            {"ObservationDate", &Observation::ObservationDate, Day, Always, "Date", "date observed"},
            {"Issue", &Observation::Issue, Title, Always, "Issue", "problem observed"},
            {"Severity", &Observation::Severity, Severity, Always, "Severity", "from 1 (slight) to 5 (severe)", "of 5"},
            {"Treatment", &Observation::Treatment, Remark, Always, "Treatment", "treatment applied"},
            {"Notes", &Observation::Notes, Remark, Always, "Notes", "free notes"},
        }};
    return description;
}

template <> const Description<PlantJournalEntry>& Describe()
{
    using enum Use;
    using enum Display;
    static const Description<PlantJournalEntry> description = {
        "PlantJournalEntries",
        "note",
        "journal entry",
        "journal entries",
        {
            {"ID", &PlantJournalEntry::ID, RowID, Always, "ID", "row ID"},
            {"PlantUUID", &PlantJournalEntry::PlantUUID, Owner, OnlyInJSON, "Plant", "plant"},
            {"EntryDate", &PlantJournalEntry::EntryDate, Day, Always, "Date", "date of the entry"},
            {"Type", &PlantJournalEntry::Type, Value, Always, "Type", "type of entry"},
            {"Details", &PlantJournalEntry::Details, Words, Always, "Details", "what happened"},
        }};
    return description;
}

template <> const Description<StrainSummary>& Describe()
{
    using enum Use;
    using enum Display;
    static const Description<StrainSummary> description = {
        "", // computed, not stored
        "strain",
        "strain summary",
        "strain summaries",
        {
            {"StrainID", &StrainSummary::StrainID, RowID, OnlyInJSON, "ID", "row ID"},
            {"StrainName", &StrainSummary::StrainName, Title, Always, "Strain", "name"},
            {"TotalPlants", &StrainSummary::TotalPlants, Count, Always, "Plants", "plants"},
            {"Seed", &StrainSummary::Seed, Value, Always, "Plants in Seed", "plants in stage Seed"},
            {"Clone", &StrainSummary::Clone, Value, Always, "Plants in Clone", "plants in stage Clone"},
            {"Veg", &StrainSummary::Veg, Value, Always, "Plants in Veg", "plants in stage Veg"},
            {"Flower", &StrainSummary::Flower, Value, Always, "Plants in Flower", "plants in stage Flower"},
            {"Dry", &StrainSummary::Dry, Value, Always, "Plants in Dry", "plants in stage Dry"},
            {"Cure", &StrainSummary::Cure, Value, Always, "Plants in Cure", "plants in stage Cure"},
            {"Harvested", &StrainSummary::Harvested, Value, Always, "Plants in Harvested", "plants in stage Harvested"},
            {"Archived", &StrainSummary::Archived, Value, Always, "Plants in Archived", "plants in stage Archived"},
            {"HarvestCount", &StrainSummary::HarvestCount, Count, Always, "Harvests", "plants with a harvest record"},
            {"AverageDryWeightG", &StrainSummary::AverageDryWeightG, Value, Always, "Mean dry weight",
             "mean dry weight, g", "g"},
            {"AverageQuality", &StrainSummary::AverageQuality, Value, Always, "Mean quality", "mean quality", "of 10"},
        }};
    return description;
}

std::string TableLabel(const std::string& table)
{
    static const std::map<std::string, std::string> plurals =
        PluralsOfTables<Strain, Plant, PlantEvent, PlantCareEntry, HarvestRecord, PlantPhoto, PlantHealthObservation,
                        PlantJournalEntry>();
    const auto known = plurals.find(table);
    std::string label = known != plurals.end() ? known->second : "";
    if (!label.empty())
        label.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(label.front())));
    return label;
}
