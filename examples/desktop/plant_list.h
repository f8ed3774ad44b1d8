// The plants of the journal, with a filter.
#pragma once

#include "plant_query.h"

#include <QWidget>

class QLineEdit;
class QListWidget;
class QListWidgetItem;

class PlantList : public QWidget
{
    Q_OBJECT

  public:
    PlantList();

    // Shows these plants. The selected plant stays selected; otherwise the first one is.
    void SetPlants(const std::vector<PlantStatus>& plants);

  signals:
    void Selected(const QString& uuid); // empty where no plant is selected

  private:
    void ApplyFilter();

    QLineEdit* Filter;
    QListWidget* Plants;
};
