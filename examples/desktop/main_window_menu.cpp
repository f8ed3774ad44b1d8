// The menu of the window: opens, checks and backs up a journal.

#include "main_window.h"

#include <QDateTime>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>

#include <map>

namespace
{

QString Lines(const std::vector<std::string>& texts)
{
    QString lines;
    for (const std::string& text : texts)
        lines += '\n' + QString::fromStdString(text);
    return lines;
}

} // namespace

void MainWindow::AddMenu()
{
    QMenu* menu = menuBar()->addMenu("&Journal");
    menu->addAction("&Open...", this, [this] { ChooseFile(QFileDialog::AcceptOpen, &MainWindow::Open); });
    menu->addAction("&Check", this, &MainWindow::Check);
    menu->addAction("&Back up...", this, [this] { ChooseFile(QFileDialog::AcceptSave, &MainWindow::BackUp); });
}

void MainWindow::Open(const QString& path)
{
    const QString file = QFileInfo(path).absoluteFilePath(); // an absolute path is never a URI
    const auto inspect = [file = file.toStdString()](const PlantDatabase& /*open*/)
    {
        PlantFileInspection inspection;
        const PlantFileResult result = InspectPlantSchema(file, inspection);
        return std::pair(result, inspection);
    };
    const auto open = [this, file](const std::pair<PlantFileResult, PlantFileInspection>& inspected)
    {
        if (inspected.first)
            OpenInspected(file, inspected.second);
        else
            ShowMessage(QString::fromStdString(inspected.first.Error));
    };
    TheWorker.Do(inspect, open);
}

void MainWindow::OpenInspected(const QString& path, const PlantFileInspection& inspection)
{
    static const std::map<PlantFileKind, QString> refusals = {
        {PlantFileKind::Foreign, "not a plantjournal file, or one of a newer version"},
        {PlantFileKind::NotADatabase, "not a database"},
        {PlantFileKind::Damaged, "damaged; restore a backup"},
        {PlantFileKind::Locked, "another program has locked it; try again later"}};
    static const std::map<PlantFileKind, QString> changes = {
        {PlantFileKind::Older, "the file has an earlier schema; opening migrates it:"},
        {PlantFileKind::Interrupted, "a write was interrupted; opening rolls it back and may migrate the file"}};
    const PlantFileKind kind = inspection.Kind;
    const QString backup = path + QDateTime::currentDateTime().toString("'.before-update-'yyyy-MM-dd-hhmmss");
    if (const auto refusal = refusals.find(kind); refusal != refusals.end())
        ShowMessage(path + ": " + refusal->second + Lines(inspection.Reasons));
    else if (kind == PlantFileKind::Missing)
        ShowMessage(path + " does not exist.", "Create it", [=, this] { OpenWithBackup(path, {}); });
    else if (const auto change = changes.find(kind); change != changes.end())
        ShowMessage(path + ": " + change->second + Lines(inspection.Steps) + "\n\nThe backup will be " + backup,
                    "Back up and open", [=, this] { OpenWithBackup(path, backup); });
    else
        OpenWithBackup(path, {});
}

void MainWindow::OpenWithBackup(const QString& path, const QString& backup)
{
    const auto finish = [this, path](const std::string& error)
    {
        if (!error.empty())
            return ShowMessage(path + " was not opened: " + QString::fromStdString(error));
        Path = path;
        setWindowTitle(QFileInfo(path).fileName() + " - plantjournal");
    };
    TheWorker.Open(path.toStdString(), backup.toStdString(), finish);
}

void MainWindow::Check()
{
    const auto check = [](const PlantDatabase& database)
    {
        std::vector<PlantFileFinding> findings;
        std::vector<std::string> lines = {CheckPlantDatabase(database.Path(), findings).Error};
        for (const PlantFileFinding& finding : findings)
            lines.push_back(finding.Table + ' ' + std::to_string(finding.RowID) + ": " + finding.Description);
        return Lines(lines).trimmed();
    };
    const auto finish = [this](const QString& found) { ShowMessage(found.isEmpty() ? "No problems found." : found); };
    TheWorker.Do(check, finish);
}

void MainWindow::BackUp(const QString& destination)
{
    const auto backUp = [destination = destination.toStdString()](const PlantDatabase& database)
    { return BackUpPlantDatabase(database.Path(), destination).Error; };
    const auto finish = [this](const std::string& error)
    { ShowMessage(error.empty() ? "The backup is complete." : QString::fromStdString(error)); };
    TheWorker.Do(backUp, finish);
}

// Dialogs and messages return at once: exec() would run an event loop of its own.
void MainWindow::ChooseFile(QFileDialog::AcceptMode mode, void (MainWindow::*then)(const QString&))
{
    auto* dialog = new QFileDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(mode);
    dialog->setOption(QFileDialog::DontConfirmOverwrite); // a backup never replaces a file
    connect(dialog, &QFileDialog::fileSelected, this, then);
    dialog->open();
}

// With a function, the message is a question: the button `yes` calls it, the other button is Cancel.
void MainWindow::ShowMessage(const QString& text, const QString& yes, const std::function<void()>& then)
{
    auto* box = new QMessageBox(QMessageBox::NoIcon, windowTitle(), text, QMessageBox::NoButton, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    if (then)
    {
        connect(box->addButton(yes, QMessageBox::AcceptRole), &QPushButton::clicked, this, then);
        box->addButton(QMessageBox::Cancel);
    }
    box->open();
}
