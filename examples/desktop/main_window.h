// The window: plants on the left, the selected plant with its forms on the right.
#pragma once

#include "journal_adapter.h"

#include <QMainWindow>

class Forms;
class PlantList;
class PlantPane;
class QLabel;
class RecordForm;

class MainWindow : public QMainWindow
{
    Q_OBJECT

  public:
    MainWindow();

    void Open(const QString& path);

  signals:
    void PlantShown(); // the window shows the selected plant as it is now

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void AddMenu();
    void SelectPlant(const QString& uuid);
    void ShowPlant(const PlantView& plant);
    void ShowReadFailure(const std::string& reason);
    void Store(RecordForm* form, const FormRecord& record);
    void Finish(RecordForm* form, const StoreResult& result);
    void ChooseJournal();
    void Check();
    void ChooseBackup();

    PlantList* Plants;
    Forms* TheForms;
    PlantPane* Pane;
    QLabel* Banner;
    QString Path; // of the open journal; empty where none is open
    QString PlantUUID;
    int Storing = 0; // forms that wait for their result
    bool Closing = false;
    JournalAdapter Journal; // the last member: nothing is delivered to the others once they are destroyed
};
