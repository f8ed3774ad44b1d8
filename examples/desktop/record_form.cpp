#include "record_form.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QLocale>
#include <QMetaProperty>
#include <QPlainTextEdit>

#include <algorithm>

namespace
{

QLabel* Words(QLabel* label, const QString& name)
{
    label->setObjectName(name);
    label->setWordWrap(true);
    label->setStyleSheet("color: #b3261e");
    return label;
}

QWidget* NewTypeChoice()
{
    auto* types = new QComboBox;
    for (const PlantJournalType type : PlantJournalTypes)
        types->addItem(PlantJournalTypeName(type));
    return types;
}

// The user property of an editor is its text.
QMetaProperty TextProperty(const QWidget* editor)
{
    return editor->metaObject()->userProperty();
}

} // namespace

RecordForm::RecordForm(const char* title, const FormRecord& empty) : Empty(empty), Current(empty)
{
    setObjectName(title);
    Store->setObjectName("store");
    Discard->setObjectName("clear");
    connect(Store, &QPushButton::clicked, this, &RecordForm::Submit);
    connect(Discard, &QPushButton::clicked, this, &RecordForm::Clear);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(Store);
    buttons->addWidget(Discard);
    buttons->addWidget(Words(Reason, "reason"), 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(Rows);
    layout->addStretch();
    layout->addLayout(buttons);
}

void RecordForm::Add(const char* name, const char* label, Value value, bool hasLines)
{
    QWidget* editor = nullptr;
    if (std::holds_alternative<PlantJournalType*>(value))
        editor = NewTypeChoice();
    else if (hasLines)
        editor = new QPlainTextEdit;
    else
        editor = new QLineEdit;
    editor->setObjectName(name);
    const QMetaMethod edit = metaObject()->method(metaObject()->indexOfSlot("Edit()"));
    connect(editor, TextProperty(editor).notifySignal(), this, edit);
    auto* words = Words(new QLabel, name + QString("Words"));
    auto* row = new QHBoxLayout;
    row->addWidget(editor, 2);
    row->addWidget(words, 3);
    Rows->addRow(label, row);
    Fields.push_back({name, value, editor, words});
}

void RecordForm::SetPlant(const Plant& plant)
{
    Selected = plant;
    if (!Edited)
        Clear();
}

void RecordForm::Clear()
{
    PlantOfRecord = Selected;
    Current = Empty; // of the same type, so its members keep their addresses
    *std::get<std::string*>(Fields.front().Target) = PlantEventCurrentDate();
    for (const Field& field : Fields)
        TextProperty(field.Editor).write(field.Editor, TextOf(field.Target));
    Edited = false;
    Reason->clear();
    Refresh();
}

void RecordForm::Finish(const StoreResult& result)
{
    Waiting = false;
    if (result.Stored)
        return Clear();
    Refresh();
    ShowProblems(result.Problems);
    if (!result.Reason.empty())
        Reason->setText("Not stored: " + QString::fromStdString(result.Reason));
}

void RecordForm::Edit()
{
    Edited = true;
    Reason->clear();
    Refresh();
}

void RecordForm::Submit()
{
    Waiting = true;
    Refresh();
    emit Submitted(Current);
}

void RecordForm::Refresh()
{
    const std::vector<PlantProblem> problems = Edited ? ReadFields() : std::vector<PlantProblem>();
    ShowProblems(problems);
    const bool hasPlant = !PlantOfRecord.UUID.empty();
    for (const Field& field : Fields)
        field.Editor->setEnabled(hasPlant && !Waiting);
    Store->setText(hasPlant ? "Store for " + QString::fromStdString(PlantOfRecord.Name) : "Store");
    Store->setEnabled(hasPlant && Edited && !Waiting && !PreventStoring(problems));
    Discard->setEnabled(Edited && !Waiting);
}

std::vector<PlantProblem> RecordForm::ReadFields()
{
    std::vector<PlantProblem> problems;
    for (const Field& field : Fields)
    {
        const QString text = TextProperty(field.Editor).read(field.Editor).toString().trimmed();
        if (!Read(text, field.Target))
            problems.push_back({field.Name, PlantProblemKind::Impossible, "the text is not a number", {}});
    }
    const auto validate = [this](auto& record)
    {
        record.PlantUUID = PlantOfRecord.UUID;
        return Validate(record, PlantOfRecord);
    };
    return problems.empty() ? std::visit(validate, Current) : problems;
}

void RecordForm::ShowProblems(const std::vector<PlantProblem>& problems)
{
    for (const Field& field : Fields)
        field.Words->clear();
    for (const PlantProblem& problem : problems)
    {
        const auto field =
            std::find_if(Fields.begin(), Fields.end(), [&](const Field& each) { return each.Name == problem.Field; });
        QLabel* label = field == Fields.end() ? Reason : field->Words;
        const bool isNotice = problem.Kind == PlantProblemKind::Unlikely;
        label->setText((isNotice ? "Notice: " : "") + QString::fromStdString(problem.Description));
    }
}

QString RecordForm::TextOf(const Value& value)
{
    const auto number = [](double number) // 0 stands for a missing number
    { return number == 0 ? QString() : QString::number(number, 'g', QLocale::FloatingPointShortest); };
    const Overloaded text{[](const std::string* text) { return QString::fromStdString(*text); },
                          [](const PlantJournalType* type) { return QString(PlantJournalTypeName(*type)); },
                          [&](const auto* value) { return number(*value); }};
    return std::visit(text, value);
}

bool RecordForm::Read(const QString& text, const Value& value)
{
    bool isValue = true;
    const Overloaded read{[&](std::string* target) { *target = text.toStdString(); },
                          [&](PlantJournalType* type) { *type = PlantJournalTypeFromName(text.toStdString()); },
                          [&](double* number)
                          { *number = text.isEmpty() ? 0 : QString(text).replace(',', '.').toDouble(&isValue); },
                          [&](int* number) { *number = text.isEmpty() ? 0 : text.toInt(&isValue); }};
    std::visit(read, value);
    return isValue;
}
