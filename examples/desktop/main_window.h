// The window: plants on the left, the selected plant with its forms on the right.
#pragma once

#include "plant_file.h"
#include "record_form.h"
#include "worker.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QThreadPool>
#include <QTreeWidget>

class MainWindow : public QMainWindow
{
  public:
    MainWindow();

    // Opens a journal. Asks before it creates or migrates the file, and stores a backup before a migration.
    void Open(const QString& path);

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void SetUpWidgets();
    void Show(const JournalView& view);
    void ShowPlants(const std::vector<PlantStatus>& plants);
    void ShowTimeline(const std::vector<PlantActivity>& activities);
    void ShowPhotos(const std::vector<PlantPhoto>& photos);
    void ShowCharts(const std::vector<PlantChart>& charts);
    void ApplyFilter();
    void SelectPlant();
    void Store(RecordForm* form, const FormRecord& record);

    // The menu.
    void AddMenu();
    void OpenInspected(const QString& path, const PlantFileInspection& inspection);
    void OpenWithBackup(const QString& path, const QString& backup);
    void Check();
    void BackUp(const QString& destination);
    void ChooseFile(QFileDialog::AcceptMode mode, void (MainWindow::*then)(const QString&));
    void ShowMessage(const QString& text, const QString& yes = {}, const std::function<void()>& then = {});

    QLineEdit* Filter = new QLineEdit;
    QListWidget* Plants = new QListWidget;
    QLabel* Name = new QLabel;
    QTreeWidget* Timeline = new QTreeWidget;
    QListWidget* Photos = new QListWidget;
    QFormLayout* Charts = new QFormLayout;
    QLabel* Banner = new QLabel;
    std::vector<RecordForm*> Forms = NewForms();
    QString Path;           // of the open journal
    QString PlantUUID;      // of the selected plant
    QStringList PhotoPaths; // of the photos that are shown
    int Storing = 0;        // forms that wait for their result
    bool Closing = false;
    QThreadPool ImageFiles; // reads them. It and the worker use the other members, so they end first.
    Worker TheWorker;
};
