#include "timeline_model.h"

#include <utility>

void TimelineModel::SetActivities(std::vector<PlantActivity> activities)
{
    beginResetModel();
    Activities = std::move(activities);
    endResetModel();
}

int TimelineModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(Activities.size());
}

int TimelineModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : 3;
}

QVariant TimelineModel::data(const QModelIndex& index, int role) const
{
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    const PlantActivity& activity = Activities.at(static_cast<std::size_t>(index.row()));
    const std::string* const columns[] = {&activity.Date, &activity.Kind, &activity.Text};
    const QString text = QString::fromStdString(*columns[index.column()]);
    return role == Qt::DisplayRole ? text.simplified() : text; // a row has one line
}

QVariant TimelineModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return {};
    return QStringList{tr("Date"), tr("What"), tr("Details")}.at(section);
}
