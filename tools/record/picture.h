#pragma once

#include <stdexcept>
#include <string>

// Pictures for a page. Only picture.cpp includes the stb libraries.

// Why a picture cannot be read.
class BadPicture : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

// Returns the picture of a JPEG or PNG file as JPEG: turned as its EXIF data says, and scaled so that no edge is longer
// than `longestEdge` pixels. Throws BadPicture.
std::string SmallJPEG(const std::string& path, int longestEdge);

// Returns a JPEG as the URI of an image in a page.
std::string DataURI(const std::string& jpeg);
