// The forms, described as data.

#include "record_form.h"

std::vector<RecordForm*> NewForms()
{
    PlantCareEntry feeding;
    feeding.Action = PlantCareAction::Feed;
    const std::vector<FormField<PlantCareEntry>> care = {{"CareDate", "Date", &PlantCareEntry::CareDate},
                                                         {"AmountMl", "Amount, ml", &PlantCareEntry::AmountMl},
                                                         {"Product", "Product", &PlantCareEntry::Product},
                                                         {"EC", "EC, mS/cm", &PlantCareEntry::EC},
                                                         {"PH", "pH", &PlantCareEntry::PH},
                                                         {"RunoffMl", "Runoff, ml", &PlantCareEntry::RunoffMl},
                                                         {"Notes", "Notes", &PlantCareEntry::Notes}};
    const std::vector<FormField<PlantJournalEntry>> note = {{"EntryDate", "Date", &PlantJournalEntry::EntryDate},
                                                            {"Type", "Type", &PlantJournalEntry::Type},
                                                            {"Details", "Note", &PlantJournalEntry::Details, true}};
    const std::vector<FormField<PlantHealthObservation>> health = {
        {"ObservationDate", "Date", &PlantHealthObservation::ObservationDate},
        {"Issue", "Issue", &PlantHealthObservation::Issue},
        {"Severity", "Severity, 1 to 5", &PlantHealthObservation::Severity},
        {"Treatment", "Treatment", &PlantHealthObservation::Treatment},
        {"Notes", "Notes", &PlantHealthObservation::Notes}};
    const std::vector<FormField<HarvestRecord>> harvest = {
        {"HarvestDate", "Date", &HarvestRecord::HarvestDate},
        {"WetWeightG", "Wet weight, g", &HarvestRecord::WetWeightG},
        {"DryWeightG", "Dry weight, g", &HarvestRecord::DryWeightG},
        {"QualityRating", "Quality, 0 to 10", &HarvestRecord::QualityRating},
        {"SeedYield", "Seeds", &HarvestRecord::SeedYield},
        {"CureOutcome", "Cure outcome", &HarvestRecord::CureOutcome},
        {"Notes", "Notes", &HarvestRecord::Notes}};
    return {new RecordForm("Feed", feeding, care), new RecordForm("Water", PlantCareEntry(), care),
            new RecordForm("Note", PlantJournalEntry(), note),
            new RecordForm("Observe", PlantHealthObservation(), health),
            new RecordForm("Harvest", HarvestRecord(), harvest)};
}
