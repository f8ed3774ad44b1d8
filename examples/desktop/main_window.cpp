#include "main_window.h"

#include "forms.h"
#include "message.h"
#include "open_journal.h"
#include "plant_list.h"
#include "plant_pane.h"

#include <QCloseEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>

MainWindow::MainWindow() : Plants(new PlantList), TheForms(new Forms), Pane(new PlantPane(TheForms)), Banner(new QLabel)
{
    setWindowTitle(tr("plantjournal"));
    resize(1200, 760);
    Banner->setObjectName("banner");
    Banner->setTextFormat(Qt::PlainText);
    Banner->setWordWrap(true);
    Banner->setMargin(8);
    Banner->setStyleSheet("background: #fff1cc; color: #4a3500");
    Banner->hide();

    auto* columns = new QSplitter;
    columns->addWidget(Plants);
    columns->addWidget(Pane);
    columns->setStretchFactor(1, 1);
    columns->setSizes({220, 980});
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(Banner);
    layout->addWidget(columns, 1);
    setCentralWidget(page);
    AddMenu();
    TheForms->SetPlant({}, {});

    connect(Plants, &PlantList::Selected, this, &MainWindow::SelectPlant);
    connect(TheForms, &Forms::Submitted, this, &MainWindow::Store);
    connect(&Journal, &JournalAdapter::PlantsRead, Plants, &PlantList::SetPlants);
    connect(&Journal, &JournalAdapter::PlantRead, this, &MainWindow::ShowPlant);
    connect(&Journal, &JournalAdapter::ReadFailed, this, &MainWindow::ShowReadFailure);
}

void MainWindow::AddMenu()
{
    QMenu* menu = menuBar()->addMenu(tr("&Journal"));
    menu->addAction(tr("&Open..."), QKeySequence::Open, this, &MainWindow::ChooseJournal);
    menu->addAction(tr("&Check"), this, &MainWindow::Check)->setObjectName("check");
    menu->addAction(tr("&Back up..."), this, &MainWindow::ChooseBackup)->setObjectName("backup");
    menu->addSeparator();
    menu->addAction(tr("&Quit"), QKeySequence::Quit, this, &QWidget::close);
}

void MainWindow::Open(const QString& path)
{
    OpenJournal(this, Journal, path,
                [this](const QString& opened)
                {
                    Path = opened;
                    setWindowTitle(QFileInfo(Path).fileName() + " - plantjournal");
                });
}

void MainWindow::SelectPlant(const QString& uuid)
{
    PlantUUID = uuid;
    Journal.Worker().Show(uuid.toStdString(), PlantPane::ChartWidth);
    if (!uuid.isEmpty())
        return;
    Pane->Clear();
    TheForms->SetPlant({}, {});
}

void MainWindow::ShowPlant(const PlantView& plant)
{
    if (QString::fromStdString(plant.Record.UUID) != PlantUUID)
        return; // the user has selected another plant since
    Pane->SetPlant(plant, QFileInfo(Path).path());
    TheForms->SetPlant(plant.Record, plant.Harvest);
    emit PlantShown();
}

void MainWindow::ShowReadFailure(const std::string& reason)
{
    Banner->setText(tr("The journal cannot be read now, so the window may show an earlier state: %1")
                        .arg(QString::fromStdString(reason)));
    Banner->setVisible(!reason.empty());
}

void MainWindow::Store(RecordForm* form, const FormRecord& record)
{
    ++Storing;
    statusBar()->showMessage(tr("Storing"));
    Journal.Worker().Store(record,
                           Journal.OnWindowThread([this, form](const StoreResult& result) { Finish(form, result); }));
}

void MainWindow::Finish(RecordForm* form, const StoreResult& result)
{
    --Storing;
    form->Finish(result);
    statusBar()->showMessage(result.Stored ? tr("Stored") : tr("Not stored"));
    Closing = Closing && result.Stored; // otherwise the user sees why
    if (Closing && Storing == 0)
        close();
}

// A record that is being stored may still be refused, so the window stays open until the result is known.
void MainWindow::closeEvent(QCloseEvent* event)
{
    Closing = Storing > 0;
    event->setAccepted(!Closing);
}

void MainWindow::ChooseJournal()
{
    auto* dialog = new QFileDialog(this, tr("Open a journal"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, this, &MainWindow::Open);
    dialog->open();
}

void MainWindow::Check()
{
    const auto finish = [this](const PlantFileResult& result, const std::vector<PlantFileFinding>& findings)
    {
        QStringList found;
        for (const PlantFileFinding& finding : findings)
            found << QString::fromStdString(finding.Table + ' ' + std::to_string(finding.RowID) + ": " +
                                            finding.Description);
        statusBar()->clearMessage();
        if (!result)
            ShowMessage(this, QString::fromStdString(result.Error), found.join('\n'));
        else if (found.isEmpty())
            ShowMessage(this, tr("No problems found."));
        else
            ShowMessage(this, tr("%n problem(s) found.", nullptr, static_cast<int>(found.size())), found.join('\n'));
    };
    statusBar()->showMessage(tr("Checking the journal"));
    Journal.Worker().Check(Journal.OnWindowThread(finish));
}

void MainWindow::ChooseBackup()
{
    const auto finish = [this](const PlantFileResult& result)
    {
        statusBar()->clearMessage();
        ShowMessage(this, result ? tr("The backup is complete.") : QString::fromStdString(result.Error));
    };
    auto* dialog = new QFileDialog(this, tr("Back up the journal"), QFileInfo(Path).path());
    dialog->setObjectName("destination");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setOption(QFileDialog::DontConfirmOverwrite); // a backup never replaces a file
    connect(dialog, &QFileDialog::fileSelected, this,
            [=, this](const QString& destination)
            {
                statusBar()->showMessage(tr("Backing up the journal"));
                Journal.Worker().BackUp(destination.toStdString(), Journal.OnWindowThread(finish));
            });
    dialog->open();
}
