// The photos of a plant as thumbnails.
#pragma once

#include "plant.h"

#include <QListWidget>

#include <vector>

class PhotoStrip : public QListWidget
{
  public:
    PhotoStrip();

    // Shows these photos. Relative paths start at `directory`, that of the journal. Image files are read on threads of
    // their own, because a large one takes long.
    void SetPhotos(const std::vector<PlantPhoto>& photos, const QString& directory);

  private:
    void ReadImage(int row, const QString& path);

    int Reading = 0; // counts SetPhotos(), so that an image that arrives late is dropped
    QStringList Paths;
};
