#include "main_window.h"

#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSplitter>
#include <QStatusBar>
#include <QSvgRenderer>
#include <QSvgWidget>
#include <QTabWidget>
#include <QVBoxLayout>

namespace
{

constexpr QSize ThumbnailSize(96, 96);

// The image in the file, as small as a thumbnail; null where the file is not an image.
QImage ReadThumbnail(const QString& path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    reader.setScaledSize(reader.size().scaled(ThumbnailSize, Qt::KeepAspectRatio)); // reads a JPEG file faster
    return reader.read();
}

QWidget* NewColumn(const std::vector<QWidget*>& widgets)
{
    auto* column = new QWidget;
    auto* layout = new QVBoxLayout(column);
    for (QWidget* widget : widgets)
        layout->addWidget(widget);
    return column;
}

} // namespace

MainWindow::MainWindow()
    : TheWorker([this](Worker::Call call) { QMetaObject::invokeMethod(this, std::move(call), Qt::QueuedConnection); },
                [this](const JournalView& view) { Show(view); })
{
    setWindowTitle("plantjournal");
    resize(1200, 760);
    SetUpWidgets();
    auto* tabs = new QTabWidget;
    for (RecordForm* form : Forms)
    {
        form->SetPlant({});
        tabs->addTab(form, form->objectName());
        connect(form, &RecordForm::Submitted, this, [=, this](const FormRecord& record) { Store(form, record); });
    }
    auto* charts = new QWidget;
    charts->setLayout(Charts);
    charts->setStyleSheet("background: white; color: black"); // the charts have the colours of light mode
    auto* scroll = new QScrollArea;
    scroll->setWidget(charts);
    scroll->setWidgetResizable(true);
    auto* columns = new QSplitter;
    columns->addWidget(NewColumn({Filter, Plants}));
    columns->addWidget(NewColumn({Name, Timeline, tabs}));
    columns->addWidget(NewColumn({Photos, scroll}));
    columns->setSizes({210, 445, 545});
    setCentralWidget(columns);
    statusBar()->addPermanentWidget(Banner);
    AddMenu();
}

void MainWindow::SetUpWidgets()
{
    Filter->setObjectName("filter");
    Filter->setPlaceholderText("Filter");
    connect(Filter, &QLineEdit::textChanged, this, &MainWindow::ApplyFilter);
    Plants->setObjectName("plants");
    Plants->setSpacing(4);
    connect(Plants, &QListWidget::currentRowChanged, this, &MainWindow::SelectPlant);
    Name->setObjectName("name");
    Name->setTextFormat(Qt::PlainText);
    Timeline->setHeaderLabels({"Date", "What", "Details"});
    Timeline->setRootIsDecorated(false);
    Timeline->setAlternatingRowColors(true);
    Timeline->setUniformRowHeights(true); // a long timeline would be measured row by row
    Photos->setObjectName("photos");
    Photos->setViewMode(QListView::IconMode);
    Photos->setWrapping(false);
    Photos->setIconSize(ThumbnailSize);
    Photos->setFixedHeight(ThumbnailSize.height() + 50);
    Photos->hide();
    Charts->setRowWrapPolicy(QFormLayout::WrapAllRows); // each heading above its chart
    Banner->setObjectName("banner");
}

void MainWindow::Show(const JournalView& view)
{
    Banner->setText(QString::fromStdString(view.Error));
    if (!view.Error.empty())
        return; // the window shows an earlier state
    ShowPlants(view.Plants);
    if (QString::fromStdString(view.Selected.UUID) != PlantUUID)
        return; // the user has selected another plant since
    Name->setText(QString::fromStdString(view.Selected.Name));
    ShowTimeline(view.Timeline);
    ShowPhotos(view.Photos);
    ShowCharts(view.Charts);
    for (RecordForm* form : Forms)
        form->SetPlant(view.Selected);
}

void MainWindow::ShowPlants(const std::vector<PlantStatus>& plants)
{
    int selected = 0;
    {
        const QSignalBlocker blocker(Plants);
        Plants->clear();
        for (const PlantStatus& plant : plants)
        {
            QStringList details;
            for (const std::string& detail : {plant.Strain, std::string(PlantStageName(plant.Stage)), plant.Tent})
                if (!detail.empty())
                    details << QString::fromStdString(detail);
            auto* item = new QListWidgetItem(QString::fromStdString(plant.Name) + '\n' + details.join(", "), Plants);
            item->setData(Qt::UserRole, QString::fromStdString(plant.PlantUUID));
            if (item->data(Qt::UserRole) == PlantUUID)
                selected = Plants->row(item);
        }
        Plants->setCurrentRow(selected);
    }
    ApplyFilter();
    SelectPlant();
}

void MainWindow::ShowTimeline(const std::vector<PlantActivity>& activities)
{
    const int place = Timeline->verticalScrollBar()->value();
    Timeline->clear();
    for (const PlantActivity& activity : activities)
    {
        const QString text = QString::fromStdString(activity.Text);
        const QStringList cells = {QString::fromStdString(activity.Date), QString::fromStdString(activity.Kind),
                                   text.simplified()}; // a row has one line
        auto* row = new QTreeWidgetItem(Timeline, cells);
        row->setToolTip(2, text);
    }
    Timeline->verticalScrollBar()->setValue(place);
}

void MainWindow::ShowPhotos(const std::vector<PlantPhoto>& photos)
{
    QStringList paths; // a relative path starts at the directory of the journal
    for (const PlantPhoto& photo : photos)
        paths << QFileInfo(Path).dir().absoluteFilePath(QString::fromStdString(photo.FilePath));
    if (paths == std::exchange(PhotoPaths, paths))
        return;
    ImageFiles.clear(); // the files of another plant that wait
    Photos->clear();
    Photos->setVisible(!photos.empty());
    for (const PlantPhoto& photo : photos)
    {
        auto* item = new QListWidgetItem(QString::fromStdString(photo.PhotoDate), Photos);
        item->setToolTip(QString::fromStdString(photo.Caption));
        const int row = Photos->row(item);
        const auto show = [this, row, path = paths[row]](const QImage& image)
        {
            if (PhotoPaths.value(row) == path) // otherwise, another plant was selected since
                Photos->item(row)->setIcon(QPixmap::fromImage(image));
        };
        // Not on the window's thread, because a large image takes long.
        ImageFiles.start([this, show, path = paths[row]]
                         { QMetaObject::invokeMethod(this, [show, image = ReadThumbnail(path)] { show(image); }); });
    }
}

void MainWindow::ShowCharts(const std::vector<PlantChart>& charts)
{
    while (Charts->rowCount() > 0)
        Charts->removeRow(0);
    for (const PlantChart& chart : charts)
    {
        auto* picture = new QSvgWidget;
        picture->setObjectName("chart");
        picture->setAccessibleDescription(QString::fromStdString(chart.Sentence));
        picture->load(QByteArray::fromStdString(chart.SVG));
        picture->setFixedSize(picture->renderer()->defaultSize());
        Charts->addRow(QString::fromStdString(chart.Heading), picture);
    }
}

void MainWindow::ApplyFilter()
{
    for (int row = 0; row < Plants->count(); ++row)
        Plants->item(row)->setHidden(!Plants->item(row)->text().contains(Filter->text(), Qt::CaseInsensitive));
}

void MainWindow::SelectPlant()
{
    const QListWidgetItem* plant = Plants->currentItem();
    const QString uuid = plant == nullptr ? QString() : plant->data(Qt::UserRole).toString();
    if (uuid != std::exchange(PlantUUID, uuid))
        TheWorker.Select(uuid.toStdString());
}

void MainWindow::Store(RecordForm* form, const FormRecord& record)
{
    ++Storing;
    statusBar()->showMessage("Storing");
    const auto finish = [this, form](const StoreResult& result)
    {
        --Storing;
        form->Finish(result);
        statusBar()->showMessage(result.Stored ? "Stored" : "Not stored");
        Closing = Closing && result.Stored; // otherwise the user reads why
        if (Closing && Storing == 0)
            close();
    };
    TheWorker.Do([record](PlantDatabase& database) { return StoreRecord(database, record); }, finish);
}

// A record that is being stored may still be refused, so the window stays open until the result is known.
void MainWindow::closeEvent(QCloseEvent* event)
{
    Closing = Storing > 0;
    event->setAccepted(!Closing);
}
