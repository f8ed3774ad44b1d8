#include "chart_view.h"

#include <QPainter>

ChartView::ChartView(const PlantChart& chart)
    : Heading(QString::fromStdString(chart.Heading)), Picture(QByteArray::fromStdString(chart.SVG))
{
    setObjectName("chart");
    setAccessibleName(Heading);
    setAccessibleDescription(QString::fromStdString(chart.Sentence));
    setToolTip(accessibleDescription());
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int ChartView::HeadingHeight() const
{
    return fontMetrics().height() + 10;
}

int ChartView::heightForWidth(int width) const
{
    const QSizeF size = Picture.viewBoxF().size();
    return HeadingHeight() + (size.isEmpty() ? 0 : qRound(width * size.height() / size.width()));
}

QSize ChartView::sizeHint() const
{
    const int width = Picture.viewBox().width();
    return {width, heightForWidth(width)};
}

void ChartView::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont bold = font();
    bold.setBold(true);
    painter.setFont(bold);
    painter.drawText(rect(), Qt::AlignTop | Qt::AlignLeft, Heading);
    painter.setFont(font()); // the picture would inherit the bold one
    Picture.render(&painter, QRectF(rect()).adjusted(0, HeadingHeight(), 0, 0));
}
