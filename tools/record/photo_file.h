#pragma once

#include <string>

// The image files of photos. Only photo_file.cpp includes libexif.

// Returns the path to store for a photo whose file is `path`, relative to the working directory: relative to the
// journal's directory where the file is below it, otherwise absolute.
std::string StoredPhotoPath(const std::string& path, const std::string& journal);

// Returns why the file cannot be used as a photo; empty if it is a regular file.
std::string PhotoFileProblem(const std::string& path);

// Returns the day on which the photo was taken (`YYYY-MM-DD`) from the EXIF data of the image; empty where it has none.
std::string DateTaken(const std::string& path);

// Returns how the picture must be turned, as EXIF numbers it: 1 for not at all, up to 8. 1 where it has no such data.
int OrientationOf(const std::string& imageBytes);
