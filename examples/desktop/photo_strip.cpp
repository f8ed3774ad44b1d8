#include "photo_strip.h"

#include <QDir>
#include <QImageReader>
#include <QPointer>
#include <QThreadPool>

namespace
{

constexpr QSize ThumbnailSize(96, 96);

// The image in the file, as small as a thumbnail; null where the file is not an image.
QImage ReadThumbnail(const QString& path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    if (const QSize size = reader.size(); size.isValid())
        reader.setScaledSize(size.scaled(ThumbnailSize, Qt::KeepAspectRatio)); // a JPEG file is then read faster
    return reader.read();
}

} // namespace

PhotoStrip::PhotoStrip()
{
    setObjectName("photos");
    setAccessibleName(tr("Photos"));
    setViewMode(QListView::IconMode);
    setFlow(QListView::LeftToRight);
    setWrapping(false);
    setMovement(QListView::Static);
    setIconSize(ThumbnailSize);
    setFixedHeight(ThumbnailSize.height() + 50);
    hide();
}

void PhotoStrip::SetPhotos(const std::vector<PlantPhoto>& photos, const QString& directory)
{
    QStringList paths;
    for (const PlantPhoto& photo : photos)
        paths << QDir(directory).absoluteFilePath(QString::fromStdString(photo.FilePath));
    if (paths == Paths) // the journal changed elsewhere
        return;
    Paths = paths;
    ++Reading;
    clear();
    for (const PlantPhoto& photo : photos)
    {
        auto* item = new QListWidgetItem(QString::fromStdString(photo.PhotoDate), this);
        item->setToolTip(QString::fromStdString(photo.Caption.empty() ? photo.FilePath : photo.Caption));
        ReadImage(row(item), Paths.at(row(item)));
    }
    setVisible(count() > 0);
}

void PhotoStrip::ReadImage(int row, const QString& path)
{
    QThreadPool::globalInstance()->start(
        [strip = QPointer<PhotoStrip>(this), reading = Reading, row, path]
        {
            const QImage image = ReadThumbnail(path);
            QMetaObject::invokeMethod(
                qApp,
                [strip, reading, row, image]
                {
                    if (strip && strip->Reading == reading && !image.isNull())
                        strip->item(row)->setIcon(QIcon(QPixmap::fromImage(image)));
                },
                Qt::QueuedConnection);
        });
}
