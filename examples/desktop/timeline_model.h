// The timeline of a plant, as rows of a view.
#pragma once

#include "plant_query.h"

#include <QAbstractTableModel>

class TimelineModel : public QAbstractTableModel
{
  public:
    using QAbstractTableModel::QAbstractTableModel;

    void SetActivities(std::vector<PlantActivity> activities);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    std::vector<PlantActivity> Activities;
};
