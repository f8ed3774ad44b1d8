#include "texts.h"

namespace plant_validation
{

namespace
{

template <typename Record> struct TextField
{
    const char* Name;
    std::string Record::*Text;
};

template <typename Record, std::size_t Count>
bool RefuseLong(Checker& check, const Record& record, const TextField<Record> (&fields)[Count], std::size_t most)
{
    bool anyIsLong = false;
    for (const TextField<Record>& field : fields)
        if ((record.*field.Text).size() > most)
        {
            check.Refuse(field.Name, "the text is longer than SQLite permits");
            anyIsLong = true;
        }
    return anyIsLong;
}

constexpr TextField<Strain> StrainTexts[] = {
    {"Name", &Strain::Name}, {"Breeder", &Strain::Breeder}, {"Notes", &Strain::Notes}};
constexpr TextField<Plant> PlantTexts[] = {
    {"UUID", &Plant::UUID},           {"Name", &Plant::Name},
    {"Strain", &Plant::Strain},       {"MotherPlantUUID", &Plant::MotherPlantUUID},
    {"Tent", &Plant::Tent},           {"PotSize", &Plant::PotSize},
    {"Medium", &Plant::Medium},       {"SeedDate", &Plant::SeedDate},
    {"CloneDate", &Plant::CloneDate}, {"TransplantDate", &Plant::TransplantDate},
    {"FlipDate", &Plant::FlipDate},   {"HarvestDate", &Plant::HarvestDate},
    {"Notes", &Plant::Notes}};
constexpr TextField<PlantEvent> EventTexts[] = {
    {"PlantUUID", &PlantEvent::PlantUUID}, {"EventDate", &PlantEvent::EventDate}, {"Details", &PlantEvent::Details}};
constexpr TextField<PlantCareEntry> CareTexts[] = {{"PlantUUID", &PlantCareEntry::PlantUUID},
                                                   {"CareDate", &PlantCareEntry::CareDate},
                                                   {"Product", &PlantCareEntry::Product},
                                                   {"Notes", &PlantCareEntry::Notes}};
constexpr TextField<HarvestRecord> HarvestTexts[] = {{"PlantUUID", &HarvestRecord::PlantUUID},
                                                     {"HarvestDate", &HarvestRecord::HarvestDate},
                                                     {"CureOutcome", &HarvestRecord::CureOutcome},
                                                     {"Notes", &HarvestRecord::Notes}};
constexpr TextField<PlantPhoto> PhotoTexts[] = {{"UUID", &PlantPhoto::UUID},
                                                {"PlantUUID", &PlantPhoto::PlantUUID},
                                                {"PhotoDate", &PlantPhoto::PhotoDate},
                                                {"FilePath", &PlantPhoto::FilePath},
                                                {"Caption", &PlantPhoto::Caption}};
constexpr TextField<PlantHealthObservation> HealthTexts[] = {
    {"PlantUUID", &PlantHealthObservation::PlantUUID},
    {"ObservationDate", &PlantHealthObservation::ObservationDate},
    {"Issue", &PlantHealthObservation::Issue},
    {"Treatment", &PlantHealthObservation::Treatment},
    {"Notes", &PlantHealthObservation::Notes}};
constexpr TextField<PlantJournalEntry> EntryTexts[] = {{"PlantUUID", &PlantJournalEntry::PlantUUID},
                                                       {"EntryDate", &PlantJournalEntry::EntryDate},
                                                       {"Details", &PlantJournalEntry::Details}};

} // namespace

bool RefuseLongTexts(Checker& check, const Strain& strain, std::size_t most)
{
    return RefuseLong(check, strain, StrainTexts, most);
}

bool RefuseLongTexts(Checker& check, const Plant& plant, std::size_t most)
{
    return RefuseLong(check, plant, PlantTexts, most);
}

bool RefuseLongTexts(Checker& check, const PlantEvent& event, std::size_t most)
{
    return RefuseLong(check, event, EventTexts, most);
}

bool RefuseLongTexts(Checker& check, const PlantCareEntry& entry, std::size_t most)
{
    return RefuseLong(check, entry, CareTexts, most);
}

bool RefuseLongTexts(Checker& check, const HarvestRecord& record, std::size_t most)
{
    return RefuseLong(check, record, HarvestTexts, most);
}

bool RefuseLongTexts(Checker& check, const PlantPhoto& photo, std::size_t most)
{
    return RefuseLong(check, photo, PhotoTexts, most);
}

bool RefuseLongTexts(Checker& check, const PlantHealthObservation& observation, std::size_t most)
{
    return RefuseLong(check, observation, HealthTexts, most);
}

bool RefuseLongTexts(Checker& check, const PlantJournalEntry& entry, std::size_t most)
{
    return RefuseLong(check, entry, EntryTexts, most);
}

} // namespace plant_validation
