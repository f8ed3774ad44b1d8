#include "record_form.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMetaProperty>
#include <QPlainTextEdit>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace
{

constexpr int LastRow = 20; // below the fields

void ShowWords(QLabel* label, const QString& words, bool isRefusal)
{
    label->setText(words);
    label->setStyleSheet(isRefusal ? "color: #b3261e" : "color: #7a5200");
}

} // namespace

RecordForm::RecordForm(std::function<FormRecord()> empty)
    : Empty(std::move(empty)), Grid(new QGridLayout(this)), Store(new QPushButton),
      Discard(new QPushButton(tr("Clear"))), Reason(new QLabel)
{
    Grid->setColumnStretch(1, 2);
    Grid->setColumnStretch(2, 3);
    Store->setObjectName("store");
    Discard->setObjectName("clear");
    Reason->setObjectName("reason");
    Reason->setTextFormat(Qt::PlainText);
    Reason->setWordWrap(true);
    connect(Store, &QPushButton::clicked, this, &RecordForm::Submit);
    connect(Discard, &QPushButton::clicked, this, &RecordForm::Clear);
    auto* row = new QHBoxLayout;
    row->addWidget(Store);
    row->addWidget(Discard);
    row->addWidget(Reason, 1);
    Grid->addLayout(row, LastRow, 0, 1, 3);
    Grid->setRowStretch(LastRow, 1);
}

void RecordForm::AddField(Field field, const QString& label)
{
    const int row = static_cast<int>(Fields.size());
    auto* caption = new QLabel(label);
    caption->setBuddy(field.Editor);
    field.Editor->setObjectName(QString::fromStdString(field.Name));
    field.Editor->setAccessibleName(label);
    field.Words = new QLabel;
    field.Words->setObjectName(QString::fromStdString(field.Name + "Words"));
    field.Words->setTextFormat(Qt::PlainText);
    field.Words->setWordWrap(true);
    if (auto* lines = qobject_cast<QPlainTextEdit*>(field.Editor))
    {
        lines->setTabChangesFocus(true);
        lines->setFixedHeight(3 * fontMetrics().height() + 8);
    }
    if (auto* line = qobject_cast<QLineEdit*>(field.Editor))
        connect(line, &QLineEdit::returnPressed, this, &RecordForm::Submit);
    Grid->addWidget(caption, row, 0);
    Grid->addWidget(field.Editor, row, 1);
    Grid->addWidget(field.Words, row, 2);
    const QMetaMethod edit = metaObject()->method(metaObject()->indexOfSlot("Edit()"));
    connect(field.Editor, field.Editor->metaObject()->userProperty().notifySignal(), this, edit);
    Fields.push_back(std::move(field));
    Clear();
}

void RecordForm::SetPlant(const std::optional<Plant>& plant)
{
    Selected = plant;
    if (!Edited)
        Clear();
}

void RecordForm::Clear()
{
    ThePlant = Selected;
    Begin = Empty();
    for (const Field& field : Fields)
        field.Editor->metaObject()->userProperty().write(field.Editor, field.Text(Begin));
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
        ShowWords(Reason, tr("Not stored: %1").arg(QString::fromStdString(result.Reason)), true);
}

void RecordForm::Edit()
{
    Edited = true;
    Reason->clear();
    Refresh();
}

std::vector<PlantProblem> RecordForm::ReadFields(FormRecord& record) const
{
    std::vector<PlantProblem> problems;
    for (const Field& field : Fields)
        if (!field.Read(field.Editor->metaObject()->userProperty().read(field.Editor).toString(), record))
            problems.push_back({field.Name, PlantProblemKind::Impossible, "the text is not a number", {}});
    const auto validate = [&](auto& wanted)
    {
        wanted.PlantUUID = ThePlant->UUID;
        return Validate(wanted, *ThePlant, PlantEventCurrentDate());
    };
    if (problems.empty())
        problems = std::visit(validate, record);
    return problems;
}

void RecordForm::ShowProblems(const std::vector<PlantProblem>& problems)
{
    for (const Field& field : Fields)
        field.Words->clear();
    for (const PlantProblem& problem : problems)
    {
        const auto field =
            std::find_if(Fields.begin(), Fields.end(), [&](const Field& each) { return each.Name == problem.Field; });
        const bool isRefusal = problem.Kind != PlantProblemKind::Unlikely;
        const QString words = QString::fromStdString(problem.Description);
        ShowWords(field == Fields.end() ? Reason : field->Words, isRefusal ? words : tr("Notice: %1").arg(words),
                  isRefusal);
    }
}

void RecordForm::Submit()
{
    if (!Store->isEnabled())
        return;
    FormRecord record = Begin;
    ReadFields(record);
    Waiting = true;
    Refresh();
    emit Submitted(record);
}

void RecordForm::Refresh()
{
    std::vector<PlantProblem> problems;
    if (FormRecord record = Begin; Edited && ThePlant)
        problems = ReadFields(record);
    ShowProblems(problems);
    const bool refused =
        std::any_of(problems.begin(), problems.end(),
                    [](const PlantProblem& problem) { return problem.Kind != PlantProblemKind::Unlikely; });
    for (const Field& field : Fields)
        field.Editor->setEnabled(ThePlant && !Waiting);
    Store->setText(ThePlant ? tr("Store for %1").arg(QString::fromStdString(ThePlant->Name)) : tr("Store"));
    Store->setEnabled(ThePlant && Edited && !Waiting && !refused);
    Discard->setEnabled(Edited && !Waiting);
}
