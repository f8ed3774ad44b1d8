#include "plant_pane.h"

#include "chart_view.h"
#include "photo_strip.h"

#include <QHeaderView>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QTreeView>
#include <QVBoxLayout>

PlantPane::PlantPane(QWidget* below)
    : Name(new QLabel), Details(new QLabel), Timeline(new QTreeView), Photos(new PhotoStrip), Charts(new QVBoxLayout)
{
    Name->setObjectName("name");
    QFont large = font();
    large.setPointSizeF(1.6 * large.pointSizeF());
    Name->setFont(large);
    Name->setTextFormat(Qt::PlainText);
    Details->setTextFormat(Qt::PlainText);
    Details->setForegroundRole(QPalette::PlaceholderText);
    Timeline->setObjectName("timeline");
    Timeline->setAccessibleName(tr("Timeline"));
    Timeline->setModel(&Activities);
    Timeline->setRootIsDecorated(false);
    Timeline->setUniformRowHeights(true); // a long timeline would be measured row by row
    Timeline->setAlternatingRowColors(true);
    Timeline->setStyleSheet("QTreeView::item { padding: 3px }");
    Timeline->header()->setFixedHeight(fontMetrics().height() + 10);
    Timeline->setColumnWidth(0, 100);
    Timeline->setColumnWidth(1, 110);
    Timeline->header()->setStretchLastSection(true);

    auto* page = new QWidget;
    page->setLayout(Charts);
    Charts->setContentsMargins(16, 16, 16, 16);
    Charts->setSpacing(20);
    page->setStyleSheet("QWidget { background: white; color: #202020 }"); // the charts have the colours of light mode
    auto* scroll = new QScrollArea;
    scroll->setWidget(page);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setAccessibleName(tr("Charts"));

    auto* words = new QVBoxLayout;
    words->addWidget(Name);
    words->addWidget(Details);
    words->addWidget(Timeline, 1);
    words->addWidget(below);
    auto* pictures = new QVBoxLayout;
    pictures->addWidget(Photos);
    pictures->addWidget(scroll, 1);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 0, 0, 0);
    layout->setSpacing(12);
    layout->addLayout(words, 11);
    layout->addLayout(pictures, 10);
}

void PlantPane::SetPlant(const PlantView& plant, const QString& directory)
{
    Name->setText(QString::fromStdString(plant.Record.Name));
    QStringList details;
    for (const std::string& part : {plant.Record.Strain, std::string(PlantStageName(plant.Record.Stage)),
                                    plant.Record.Tent, plant.Record.PotSize, plant.Record.Medium})
        if (!part.empty())
            details << QString::fromStdString(part);
    Details->setText(details.join(QStringLiteral(" · ")));
    const int place = Timeline->verticalScrollBar()->value();
    Activities.SetActivities(plant.Timeline);
    Timeline->verticalScrollBar()->setValue(place);
    Photos->SetPhotos(plant.Photos, directory);
    SetCharts(plant.Charts);
}

void PlantPane::Clear()
{
    SetPlant({}, {});
    Details->clear();
}

void PlantPane::SetCharts(const std::vector<PlantChart>& charts)
{
    std::vector<std::string> drawn;
    for (const PlantChart& chart : charts)
        drawn.push_back(chart.SVG);
    if (drawn == Drawn)
        return;
    Drawn = drawn;
    while (const QLayoutItem* item = Charts->takeAt(0))
    {
        delete item->widget();
        delete item;
    }
    for (const PlantChart& chart : charts)
        Charts->addWidget(new ChartView(chart));
    Charts->addStretch();
}
