#include "message.h"

#include <QMessageBox>
#include <QPushButton>

namespace
{

// QMessageBox::exec() would run an event loop of its own; open() returns at once.
QMessageBox* OpenBox(QWidget* window, const QString& text)
{
    auto* box = new QMessageBox(window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setText(text);
    return box;
}

} // namespace

void ShowMessage(QWidget* window, const QString& text, const QString& details)
{
    QMessageBox* box = OpenBox(window, text);
    box->setInformativeText(details);
    box->open();
}

void Ask(QWidget* window, const QString& question, const QString& yes, const std::function<void()>& then)
{
    QMessageBox* box = OpenBox(window, question);
    QPushButton* button = box->addButton(yes, QMessageBox::AcceptRole);
    box->addButton(QMessageBox::Cancel);
    box->setDefaultButton(button);
    QObject::connect(button, &QPushButton::clicked, window, then);
    box->open();
}
