// The timeline, the photos and the charts of the selected plant.
#pragma once

#include "plant_view.h"
#include "timeline_model.h"

#include <QWidget>

class PhotoStrip;
class QLabel;
class QTreeView;
class QVBoxLayout;

class PlantPane : public QWidget
{
  public:
    // The charts are drawn this wide, in pixels.
    static constexpr double ChartWidth = 480;

    // `below` is shown under the timeline.
    explicit PlantPane(QWidget* below);

    // Relative paths of photos start at `directory`.
    void SetPlant(const PlantView& plant, const QString& directory);
    void Clear();

  private:
    void SetCharts(const std::vector<PlantChart>& charts);

    QLabel* Name;
    QLabel* Details;
    TimelineModel Activities;
    QTreeView* Timeline;
    PhotoStrip* Photos;
    QVBoxLayout* Charts;
    std::vector<std::string> Drawn; // the SVG texts of the charts
};
