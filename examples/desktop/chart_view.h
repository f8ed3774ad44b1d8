// One chart with its heading, as wide as the space for it.
#pragma once

#include "plant_report.h"

#include <QSvgRenderer>
#include <QWidget>

class ChartView : public QWidget
{
  public:
    explicit ChartView(const PlantChart& chart);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    int HeadingHeight() const;

    QString Heading;
    QSvgRenderer Picture;
};
