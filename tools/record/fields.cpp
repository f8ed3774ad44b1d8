#include "record/fields.h"

template <> const Description<Strain>& Describe()
{
    using enum Use;
    using enum Display;
    static const Description<Strain> description = {
        "Strains",
        "strain",
        "strain",
        {
            {"ID", &Strain::ID, RowID, InFull, "row ID"},
            {"Name", &Strain::Name, Title, Always, "unique name"},
            {"Breeder", &Strain::Breeder, Value, Always, "breeder"},
            {"FloweringWeeks", &Strain::FloweringWeeks, Value, Always, "expected flowering time, weeks"},
            {"Notes", &Strain::Notes, Value, Always, "free notes"},
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
        {
            {"ID", &Plant::ID, RowID, InFull, "row ID"},
            {"UUID", &Plant::UUID, UUID, Always, "permanent identifier; generated if not given"},
            {"Name", &Plant::Name, Title, Always, "display name"},
            {"Strain", &Plant::Strain, Value, Always, "strain; a new name is added to the strains"},
            {"MotherPlantUUID", &Plant::MotherPlantUUID, Mother, InFull, "plant from which it was cloned",
             "MotherPlantID"},
            {"Stage", &Plant::Stage, Value, Always, "growth stage"},
            {"Sex", &Plant::Sex, Value, Always, "sex"},
            {"Tent", &Plant::Tent, Value, Always, "tent or place"},
            {"PotSize", &Plant::PotSize, Value, InFull, "pot size"},
            {"Medium", &Plant::Medium, Value, InFull, "growing medium"},
            {"SeedDate", &Plant::SeedDate, Date, InFull, "date sown"},
            {"FlipHeightCm", &Plant::FlipHeightCm, Value, InFull, "height when flipped to flower, cm"},
            {"FinalHeightCm", &Plant::FinalHeightCm, Value, InFull, "final height, cm"},
            {"CloneDate", &Plant::CloneDate, Date, InFull, "date cloned"},
            {"TransplantDate", &Plant::TransplantDate, Date, InFull, "date transplanted"},
            {"FlipDate", &Plant::FlipDate, Date, InFull, "date flipped to flower"},
            {"HarvestDate", &Plant::HarvestDate, Date, Always, "date harvested"},
            {"Notes", &Plant::Notes, Value, InFull, "free notes"},
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
        {
            {"ID", &PlantEvent::ID, RowID, Always, "row ID"},
            {"PlantUUID", &PlantEvent::PlantUUID, Owner, InFull, "plant"},
            {"EventDate", &PlantEvent::EventDate, Day, Always, "date of the event"},
            {"Type", &PlantEvent::Type, Value, Always, "type of event", "EventType"},
            {"Details", &PlantEvent::Details, Words, Always, "text shown on the timeline"},
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
        {
            {"ID", &PlantCareEntry::ID, RowID, Always, "row ID"},
            {"TimelineEventID", &PlantCareEntry::TimelineEventID, Link, InFull, "row ID of its timeline event"},
            {"PlantUUID", &PlantCareEntry::PlantUUID, Owner, InFull, "plant"},
            {"CareDate", &PlantCareEntry::CareDate, Day, Always, "date of care"},
            {"Action", &PlantCareEntry::Action, Value, Always, "action"},
            {"Product", &PlantCareEntry::Product, Value, Always, "nutrient product"},
            {"AmountMl", &PlantCareEntry::AmountMl, Value, Always, "amount given, ml"},
            {"EC", &PlantCareEntry::EC, Value, Always, "electrical conductivity of the solution"},
            {"PH", &PlantCareEntry::PH, Value, Always, "pH of the solution"},
            {"RunoffMl", &PlantCareEntry::RunoffMl, Value, Always, "runoff, ml"},
            {"Notes", &PlantCareEntry::Notes, Value, Always, "free notes"},
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
        {
            {"ID", &HarvestRecord::ID, RowID, InFull, "row ID"},
            {"TimelineEventID", &HarvestRecord::TimelineEventID, Link, InFull, "row ID of its timeline event"},
            {"PlantUUID", &HarvestRecord::PlantUUID, Owner, InFull, "plant"},
            {"HarvestDate", &HarvestRecord::HarvestDate, Day, Always, "date of harvest"},
            {"WetWeightG", &HarvestRecord::WetWeightG, Value, Always, "wet weight, g"},
            {"DryWeightG", &HarvestRecord::DryWeightG, Value, Always, "dry weight, g; 0 for not weighed"},
            {"QualityRating", &HarvestRecord::QualityRating, Value, Always, "quality, out of 10; 0 for not rated"},
            {"SeedYield", &HarvestRecord::SeedYield, Value, Always, "number of seeds"},
            {"CureOutcome", &HarvestRecord::CureOutcome, Value, Always, "result of curing"},
            {"Notes", &HarvestRecord::Notes, Value, Always, "free notes"},
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
        {
            {"ID", &PlantPhoto::ID, RowID, Always, "row ID"},
            {"UUID", &PlantPhoto::UUID, UUID, InFull, "permanent identifier; generated if not given"},
            {"PlantUUID", &PlantPhoto::PlantUUID, Owner, InFull, "plant"},
            {"PhotoDate", &PlantPhoto::PhotoDate, Day, Always, "date taken"},
            {"FilePath", &PlantPhoto::FilePath, Title, Always, "path of the image file"},
            {"Caption", &PlantPhoto::Caption, Value, Always, "caption"},
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
        {
            {"ID", &Observation::ID, RowID, Always, "row ID"},
            {"PlantUUID", &Observation::PlantUUID, Owner, InFull, "plant"},
            {"ObservationDate", &Observation::ObservationDate, Day, Always, "date observed"},
            {"Issue", &Observation::Issue, Title, Always, "problem observed"},
            {"Severity", &Observation::Severity, Severity, Always, "from 1 (slight) to 5 (severe)"},
            {"Treatment", &Observation::Treatment, Value, Always, "treatment applied"},
            {"Notes", &Observation::Notes, Value, Always, "free notes"},
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
        {
            {"ID", &PlantJournalEntry::ID, RowID, Always, "row ID"},
            {"PlantUUID", &PlantJournalEntry::PlantUUID, Owner, InFull, "plant"},
            {"EntryDate", &PlantJournalEntry::EntryDate, Day, Always, "date of the entry"},
            {"Type", &PlantJournalEntry::Type, Value, Always, "type of entry"},
            {"Details", &PlantJournalEntry::Details, Words, Always, "what happened"},
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
        {
            {"StrainID", &StrainSummary::StrainID, RowID, InFull, "row ID"},
            {"StrainName", &StrainSummary::StrainName, Title, Always, "name"},
            {"TotalPlants", &StrainSummary::TotalPlants, Value, Always, "plants"},
            {"Seed", &StrainSummary::Seed, Value, Always, "plants in stage Seed"},
            {"Clone", &StrainSummary::Clone, Value, Always, "plants in stage Clone"},
            {"Veg", &StrainSummary::Veg, Value, Always, "plants in stage Veg"},
            {"Flower", &StrainSummary::Flower, Value, Always, "plants in stage Flower"},
            {"Dry", &StrainSummary::Dry, Value, Always, "plants in stage Dry"},
            {"Cure", &StrainSummary::Cure, Value, Always, "plants in stage Cure"},
            {"Harvested", &StrainSummary::Harvested, Value, Always, "plants in stage Harvested"},
            {"Archived", &StrainSummary::Archived, Value, Always, "plants in stage Archived"},
            {"HarvestCount", &StrainSummary::HarvestCount, Value, Always, "plants with a harvest record"},
            {"AverageDryWeightG", &StrainSummary::AverageDryWeightG, Value, Always, "mean dry weight, g"},
            {"AverageQuality", &StrainSummary::AverageQuality, Value, Always, "mean quality"},
        }};
    return description;
}
