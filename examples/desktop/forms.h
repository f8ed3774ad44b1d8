// The forms of the window.
#pragma once

#include "record_form.h"

#include <QTabWidget>

#include <vector>

class Forms : public QTabWidget
{
    Q_OBJECT

  public:
    Forms();

    // The plant of the records, and its harvest record, if there is one; no plant disables the forms.
    void SetPlant(const std::optional<Plant>& plant, const std::optional<HarvestRecord>& harvest);

  signals:
    void Submitted(RecordForm* form, const FormRecord& record);

  private:
    RecordForm* AddForm(const QString& title, std::function<FormRecord()> empty);
    void AddCareForm(const QString& title, PlantCareAction action);
    void AddNoteForm();
    void AddHealthForm();
    void AddHarvestForm();

    std::vector<RecordForm*> All;
    std::optional<HarvestRecord> Harvest; // of the selected plant
};
