// A form for a record of the selected plant. Shows the problems of the values next to the fields.
#pragma once

#include "journal.h"

#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QWidget>

// A field of a form.
template <typename Record> struct FormField
{
    const char* Name = ""; // of the member, as in PlantProblem
    const char* Label = "";
    std::variant<std::string Record::*, double Record::*, int Record::*, PlantJournalType Record::*> Member;
    bool HasLines = false; // whether its text may have several lines
};

class RecordForm : public QWidget
{
    Q_OBJECT

  public:
    // `empty` is the record of the empty form. The first field is the date, which is today in the empty form.
    template <typename Record>
    RecordForm(const char* title, const Record& empty, const std::vector<FormField<Record>>& fields)
        : RecordForm(title, FormRecord(empty))
    {
        const auto valueOf = [this](auto member) -> Value { return &(std::get<Record>(Current).*member); };
        for (const FormField<Record>& field : fields)
            Add(field.Name, field.Label, std::visit(valueOf, field.Member), field.HasLines);
    }

    // The plant that is selected. Without a `UUID`, the form is disabled. An edited form keeps its plant until it is
    // stored or cleared.
    void SetPlant(const Plant& plant);
    // Ends the waiting after Submitted(). Clears the form if the record was stored. Otherwise the values stay, and the
    // form shows the reason.
    void Finish(const StoreResult& result);

  signals:
    void Submitted(const FormRecord& record); // the form then waits for Finish()

  private:
    using Value = std::variant<std::string*, double*, int*, PlantJournalType*>; // a member of `Current`
    struct Field
    {
        std::string Name;
        Value Target;
        QWidget* Editor;
        QLabel* Words;
    };

    RecordForm(const char* title, const FormRecord& empty);
    void Add(const char* name, const char* label, Value value, bool hasLines);
    Q_SLOT void Edit();
    void Clear();
    void Submit();
    void Refresh();
    std::vector<PlantProblem> ReadFields();
    void ShowProblems(const std::vector<PlantProblem>& problems);
    static QString TextOf(const Value& value);
    static bool Read(const QString& text, const Value& value); // false if the text is not a value

    const FormRecord Empty;
    FormRecord Current;
    Plant Selected;
    Plant PlantOfRecord;
    std::vector<Field> Fields;
    QFormLayout* Rows = new QFormLayout;
    QPushButton* Store = new QPushButton;
    QPushButton* Discard = new QPushButton("Clear");
    QLabel* Reason = new QLabel;
    bool Edited = false;
    bool Waiting = false;
};

// The forms to feed, water, note, observe and harvest. The caller owns them.
std::vector<RecordForm*> NewForms();
