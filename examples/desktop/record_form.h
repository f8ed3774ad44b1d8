// A form for a record of the selected plant. Shows the problems of the values next to the fields.
#pragma once

#include "field_text.h"
#include "store_record.h"

#include <QWidget>

#include <functional>
#include <optional>

class QGridLayout;
class QLabel;
class QPushButton;

class RecordForm : public QWidget
{
    Q_OBJECT

  public:
    // `empty` returns the record of the empty form.
    explicit RecordForm(std::function<FormRecord()> empty);

    // Adds a field for a member of the record. `name` is the name of the member, as in PlantProblem. The form reads and
    // writes the user property of `editor`, which is its text.
    template <typename Record, typename Value>
    void Add(const char* name, const QString& label, Value Record::*member, QWidget* editor)
    {
        AddField({name, editor, nullptr,
                  [member](const FormRecord& record) { return FieldText(std::get<Record>(record).*member); },
                  [member](const QString& text, FormRecord& record)
                  { return ReadFieldText(text, std::get<Record>(record).*member); }},
                 label);
    }

    // The plant that is selected. An edited form keeps the plant that was selected when the user began to edit, until
    // the form is stored or cleared. Without a plant, the form is disabled.
    void SetPlant(const std::optional<Plant>& plant);
    void Clear();

    // Takes the result of the last Submitted(). Clears the form if the record was stored. Otherwise the values stay,
    // and the form shows the reason.
    void Finish(const StoreResult& result);

  signals:
    void Submitted(const FormRecord& record); // the form then waits for Finish()

  private slots:
    void Edit();

  private:
    struct Field
    {
        std::string Name;
        QWidget* Editor;
        QLabel* Words;
        std::function<QString(const FormRecord&)> Text;
        std::function<bool(const QString&, FormRecord&)> Read; // false if the text is not a value
    };

    void AddField(Field field, const QString& label);
    // Reads the fields into `record` and returns their problems.
    std::vector<PlantProblem> ReadFields(FormRecord& record) const;
    void ShowProblems(const std::vector<PlantProblem>& problems);
    void Submit();
    void Refresh();

    const std::function<FormRecord()> Empty;
    std::optional<Plant> Selected;
    std::optional<Plant> ThePlant;
    FormRecord Begin; // what the fields showed before the user edited them
    std::vector<Field> Fields;
    QGridLayout* Grid;
    QPushButton* Store;
    QPushButton* Discard;
    QLabel* Reason;
    bool Edited = false;
    bool Waiting = false;
};
