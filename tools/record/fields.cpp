#include "record/fields.h"

template <> const Description<Strain>& Describe()
{
    using enum Use;
    using enum Shown;
    static const Description<Strain> description = {
        "Strains",
        "strain",
        "strain",
        {
            {"ID", Member<&Strain::ID>, Number, InFull, "row number"},
            {"Name", Member<&Strain::Name>, Title, Always, "unique name"},
            {"Breeder", Member<&Strain::Breeder>, Value, Always, "breeder"},
            {"FloweringWeeks", Member<&Strain::FloweringWeeks>, Value, Always, "expected flowering time, weeks"},
            {"Notes", Member<&Strain::Notes>, Value, Always, "free notes"},
        }};
    return description;
}

template <> const Description<Plant>& Describe()
{
    using enum Use;
    using enum Shown;
    static const Description<Plant> description = {
        "Plants",
        "plant",
        "plant",
        {
            {"ID", Member<&Plant::ID>, Number, InFull, "row number"},
            {"UUID", Member<&Plant::UUID>, UUID, Always, "lasting identifier; made where none is given"},
            {"Name", Member<&Plant::Name>, Title, Always, "display name"},
            {"Strain", Member<&Plant::Strain>, Value, Always, "strain; a new one is added to the strains"},
            {"MotherPlantUUID", Member<&Plant::MotherPlantUUID>, Mother, InFull, "plant that it was cloned from",
             "MotherPlantID"},
            {"Stage", Member<&Plant::Stage>, Value, Always, "growth stage"},
            {"Sex", Member<&Plant::Sex>, Value, Always, "sex"},
            {"Tent", Member<&Plant::Tent>, Value, Always, "where it stands"},
            {"PotSize", Member<&Plant::PotSize>, Value, InFull, "pot size"},
            {"Medium", Member<&Plant::Medium>, Value, InFull, "growing medium"},
            {"SeedDate", Member<&Plant::SeedDate>, Date, InFull, "date sown"},
            {"FlipHeightCm", Member<&Plant::FlipHeightCm>, Value, InFull, "height when flipped to flower, cm"},
            {"FinalHeightCm", Member<&Plant::FinalHeightCm>, Value, InFull, "final height, cm"},
            {"CloneDate", Member<&Plant::CloneDate>, Date, InFull, "date cut as a clone"},
            {"TransplantDate", Member<&Plant::TransplantDate>, Date, InFull, "date transplanted"},
            {"FlipDate", Member<&Plant::FlipDate>, Date, InFull, "date flipped to flower"},
            {"HarvestDate", Member<&Plant::HarvestDate>, Date, Always, "date harvested"},
            {"Notes", Member<&Plant::Notes>, Value, InFull, "free notes"},
        }};
    return description;
}

template <> const Description<PlantEvent>& Describe()
{
    using enum Use;
    using enum Shown;
    static const Description<PlantEvent> description = {
        "PlantEvents",
        "event",
        "timeline event",
        {
            {"ID", Member<&PlantEvent::ID>, Number, Always, "row number"},
            {"PlantUUID", Member<&PlantEvent::PlantUUID>, Owner, InFull, "plant"},
            {"EventDate", Member<&PlantEvent::EventDate>, Day, Always, "date of the event"},
            {"Type", Member<&PlantEvent::Type>, Value, Always, "kind of event", "EventType"},
            {"Details", Member<&PlantEvent::Details>, Words, Always, "what is shown on the timeline"},
        }};
    return description;
}

template <> const Description<PlantCareEntry>& Describe()
{
    using enum Use;
    using enum Shown;
    static const Description<PlantCareEntry> description = {
        "PlantCareEntries",
        "care",
        "care entry",
        {
            {"ID", Member<&PlantCareEntry::ID>, Number, Always, "row number"},
            {"TimelineEventID", Member<&PlantCareEntry::TimelineEventID>, Link, InFull, "its event"},
            {"PlantUUID", Member<&PlantCareEntry::PlantUUID>, Owner, InFull, "plant"},
            {"CareDate", Member<&PlantCareEntry::CareDate>, Day, Always, "date of care"},
            {"Action", Member<&PlantCareEntry::Action>, Value, Always, "what was done"},
            {"Product", Member<&PlantCareEntry::Product>, Value, Always, "nutrient product"},
            {"AmountMl", Member<&PlantCareEntry::AmountMl>, Value, Always, "amount given, ml"},
            {"EC", Member<&PlantCareEntry::EC>, Value, Always, "electrical conductivity of the solution"},
            {"PH", Member<&PlantCareEntry::PH>, Value, Always, "pH of the solution"},
            {"RunoffMl", Member<&PlantCareEntry::RunoffMl>, Value, Always, "run-off, ml"},
            {"Notes", Member<&PlantCareEntry::Notes>, Value, Always, "free notes"},
        }};
    return description;
}

template <> const Description<HarvestRecord>& Describe()
{
    using enum Use;
    using enum Shown;
    static const Description<HarvestRecord> description = {
        "HarvestRecords",
        "harvest",
        "harvest record",
        {
            {"ID", Member<&HarvestRecord::ID>, Number, InFull, "row number"},
            {"TimelineEventID", Member<&HarvestRecord::TimelineEventID>, Link, InFull, "its event"},
            {"PlantUUID", Member<&HarvestRecord::PlantUUID>, Owner, InFull, "plant"},
            {"HarvestDate", Member<&HarvestRecord::HarvestDate>, Day, Always, "date of harvest"},
            {"WetWeightG", Member<&HarvestRecord::WetWeightG>, Value, Always, "wet weight, g"},
            {"DryWeightG", Member<&HarvestRecord::DryWeightG>, Value, Always, "dry weight, g; 0 for not weighed"},
            {"QualityRating", Member<&HarvestRecord::QualityRating>, Value, Always,
             "quality, out of 10; 0 for not rated"},
            {"SeedYield", Member<&HarvestRecord::SeedYield>, Value, Always, "number of seeds"},
            {"CureOutcome", Member<&HarvestRecord::CureOutcome>, Value, Always, "result of curing"},
            {"Notes", Member<&HarvestRecord::Notes>, Value, Always, "free notes"},
        }};
    return description;
}

template <> const Description<PlantPhoto>& Describe()
{
    using enum Use;
    using enum Shown;
    static const Description<PlantPhoto> description = {
        "PlantPhotos",
        "photo",
        "photo",
        {
            {"ID", Member<&PlantPhoto::ID>, Number, Always, "row number"},
            {"UUID", Member<&PlantPhoto::UUID>, UUID, InFull, "lasting identifier; made where none is given"},
            {"PlantUUID", Member<&PlantPhoto::PlantUUID>, Owner, InFull, "plant"},
            {"PhotoDate", Member<&PlantPhoto::PhotoDate>, Day, Always, "date taken"},
            {"FilePath", Member<&PlantPhoto::FilePath>, Title, Always, "path of the image file"},
            {"Caption", Member<&PlantPhoto::Caption>, Value, Always, "caption"},
        }};
    return description;
}

template <> const Description<PlantHealthObservation>& Describe()
{
    using enum Use;
    using enum Shown;
    using Observation = PlantHealthObservation;
    static const Description<Observation> description = {
        "PlantHealthObservations",
        "health",
        "health observation",
        {
            {"ID", Member<&Observation::ID>, Number, Always, "row number"},
            {"PlantUUID", Member<&Observation::PlantUUID>, Owner, InFull, "plant"},
            {"ObservationDate", Member<&Observation::ObservationDate>, Day, Always, "date observed"},
            {"Issue", Member<&Observation::Issue>, Title, Always, "problem seen"},
            {"Severity", Member<&Observation::Severity>, Severity, Always, "from 1 (slight) to 5 (severe)"},
            {"Treatment", Member<&Observation::Treatment>, Value, Always, "treatment applied"},
            {"Notes", Member<&Observation::Notes>, Value, Always, "free notes"},
        }};
    return description;
}

template <> const Description<PlantJournalEntry>& Describe()
{
    using enum Use;
    using enum Shown;
    static const Description<PlantJournalEntry> description = {
        "PlantJournalEntries",
        "note",
        "journal entry",
        {
            {"ID", Member<&PlantJournalEntry::ID>, Number, Always, "row number"},
            {"PlantUUID", Member<&PlantJournalEntry::PlantUUID>, Owner, InFull, "plant"},
            {"EntryDate", Member<&PlantJournalEntry::EntryDate>, Day, Always, "date of the entry"},
            {"Type", Member<&PlantJournalEntry::Type>, Value, Always, "kind of entry"},
            {"Details", Member<&PlantJournalEntry::Details>, Words, Always, "what happened"},
        }};
    return description;
}

template <> const Description<StrainSummary>& Describe()
{
    using enum Use;
    using enum Shown;
    static const Description<StrainSummary> description = {
        "", // reckoned, not stored
        "strain",
        "strain summary",
        {
            {"StrainID", Member<&StrainSummary::StrainID>, Number, InFull, "row number"},
            {"StrainName", Member<&StrainSummary::StrainName>, Title, Always, "name"},
            {"TotalPlants", Member<&StrainSummary::TotalPlants>, Value, Always, "plants"},
            {"Seed", Member<&StrainSummary::Seed>, Value, Always, "plants in stage Seed"},
            {"Clone", Member<&StrainSummary::Clone>, Value, Always, "plants in stage Clone"},
            {"Veg", Member<&StrainSummary::Veg>, Value, Always, "plants in stage Veg"},
            {"Flower", Member<&StrainSummary::Flower>, Value, Always, "plants in stage Flower"},
            {"Dry", Member<&StrainSummary::Dry>, Value, Always, "plants in stage Dry"},
            {"Cure", Member<&StrainSummary::Cure>, Value, Always, "plants in stage Cure"},
            {"Harvested", Member<&StrainSummary::Harvested>, Value, Always, "plants in stage Harvested"},
            {"Archived", Member<&StrainSummary::Archived>, Value, Always, "plants in stage Archived"},
            {"HarvestCount", Member<&StrainSummary::HarvestCount>, Value, Always, "plants with a harvest record"},
            {"AverageDryWeightG", Member<&StrainSummary::AverageDryWeightG>, Value, Always, "mean dry weight, g"},
            {"AverageQuality", Member<&StrainSummary::AverageQuality>, Value, Always, "mean quality"},
        }};
    return description;
}
