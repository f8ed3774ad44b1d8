#include "forms.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>

namespace
{

QComboBox* Choice(const QStringList& values)
{
    auto* choice = new QComboBox;
    choice->addItems(values);
    return choice;
}

// Each is dated today.
PlantCareEntry EmptyCareEntry(PlantCareAction action)
{
    PlantCareEntry entry;
    entry.Action = action;
    entry.CareDate = PlantEventCurrentDate();
    return entry;
}

PlantJournalEntry EmptyJournalEntry()
{
    PlantJournalEntry entry;
    entry.EntryDate = PlantEventCurrentDate();
    return entry;
}

PlantHealthObservation EmptyHealthObservation()
{
    PlantHealthObservation observation;
    observation.ObservationDate = PlantEventCurrentDate();
    return observation;
}

HarvestRecord EmptyHarvestRecord()
{
    HarvestRecord record;
    record.HarvestDate = PlantEventCurrentDate();
    return record;
}

} // namespace

Forms::Forms()
{
    AddCareForm(tr("Feed"), PlantCareAction::Feed);
    AddCareForm(tr("Water"), PlantCareAction::Water);
    AddNoteForm();
    AddHealthForm();
    AddHarvestForm();
}

RecordForm* Forms::AddForm(const QString& title, std::function<FormRecord()> empty)
{
    auto* form = new RecordForm(std::move(empty));
    form->setObjectName(title);
    connect(form, &RecordForm::Submitted, this,
            [this, form](const FormRecord& record) { emit Submitted(form, record); });
    addTab(form, title);
    All.push_back(form);
    return form;
}

void Forms::AddCareForm(const QString& title, PlantCareAction action)
{
    RecordForm* form = AddForm(title, [action] { return EmptyCareEntry(action); });
    form->Add("CareDate", tr("Date"), &PlantCareEntry::CareDate, new QLineEdit);
    form->Add("AmountMl", tr("Amount, ml"), &PlantCareEntry::AmountMl, new QLineEdit);
    if (action == PlantCareAction::Feed)
        form->Add("Product", tr("Product"), &PlantCareEntry::Product, new QLineEdit);
    form->Add("EC", tr("EC, mS/cm"), &PlantCareEntry::EC, new QLineEdit);
    form->Add("PH", tr("pH"), &PlantCareEntry::PH, new QLineEdit);
    form->Add("RunoffMl", tr("Runoff, ml"), &PlantCareEntry::RunoffMl, new QLineEdit);
    form->Add("Notes", tr("Notes"), &PlantCareEntry::Notes, new QLineEdit);
}

void Forms::AddNoteForm()
{
    QStringList types;
    for (PlantJournalType type :
         {PlantJournalType::Observation, PlantJournalType::Training, PlantJournalType::Pruning,
          PlantJournalType::Topping, PlantJournalType::Defoliation, PlantJournalType::Milestone})
        types << FieldText(type);
    RecordForm* form = AddForm(tr("Note"), EmptyJournalEntry);
    form->Add("EntryDate", tr("Date"), &PlantJournalEntry::EntryDate, new QLineEdit);
    form->Add("Type", tr("Type"), &PlantJournalEntry::Type, Choice(types));
    form->Add("Details", tr("Note"), &PlantJournalEntry::Details, new QPlainTextEdit);
}

void Forms::AddHealthForm()
{
    RecordForm* form = AddForm(tr("Observe"), EmptyHealthObservation);
    form->Add("ObservationDate", tr("Date"), &PlantHealthObservation::ObservationDate, new QLineEdit);
    form->Add("Issue", tr("Issue"), &PlantHealthObservation::Issue, new QLineEdit);
    form->Add("Severity", tr("Severity, 1 to 5"), &PlantHealthObservation::Severity, Choice({"1", "2", "3", "4", "5"}));
    form->Add("Treatment", tr("Treatment"), &PlantHealthObservation::Treatment, new QLineEdit);
    form->Add("Notes", tr("Notes"), &PlantHealthObservation::Notes, new QPlainTextEdit);
}

void Forms::AddHarvestForm()
{
    // A harvest that was stored before can be corrected: the form begins with it.
    RecordForm* form = AddForm(tr("Harvest"), [this] { return Harvest.value_or(EmptyHarvestRecord()); });
    form->Add("HarvestDate", tr("Date"), &HarvestRecord::HarvestDate, new QLineEdit);
    form->Add("WetWeightG", tr("Wet weight, g"), &HarvestRecord::WetWeightG, new QLineEdit);
    form->Add("DryWeightG", tr("Dry weight, g"), &HarvestRecord::DryWeightG, new QLineEdit);
    form->Add("QualityRating", tr("Quality, 0 to 10"), &HarvestRecord::QualityRating, new QLineEdit);
    form->Add("SeedYield", tr("Seeds"), &HarvestRecord::SeedYield, new QLineEdit);
    form->Add("CureOutcome", tr("Cure outcome"), &HarvestRecord::CureOutcome, new QLineEdit);
    form->Add("Notes", tr("Notes"), &HarvestRecord::Notes, new QPlainTextEdit);
}

void Forms::SetPlant(const std::optional<Plant>& plant, const std::optional<HarvestRecord>& harvest)
{
    Harvest = harvest;
    for (RecordForm* form : All)
        form->SetPlant(plant);
}
