#include "record/photo_file.h"

#include "plant_validation.h"
#include "system.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <system_error>

#include <libexif/exif-data.h>
#include <libexif/exif-loader.h>

using plant_file::PathOfText;
using plant_file::TextOfPath;

namespace
{

namespace fs = std::filesystem;

// Resolves the symbolic links of the directory, but not one that is the file itself: the photo is where its link is.
fs::path WithRealDirectory(const fs::path& path)
{
    std::error_code error;
    const fs::path directory = fs::weakly_canonical(path.parent_path(), error);
    return error ? path : directory / path.filename();
}

// An absolute path without `.` and `..`. Removing `x/..` is right only where x is not a symbolic link.
fs::path Absolute(const std::string& path)
{
    const fs::path whole = fs::absolute(PathOfText(path));
    const bool goesUp = std::find(whole.begin(), whole.end(), "..") != whole.end();
    return goesUp ? WithRealDirectory(whole) : whole.lexically_normal();
}

// Libexif's own function for files takes no UTF-8 on Windows.
std::unique_ptr<ExifData, decltype(&exif_data_unref)> ExifOfFile(const std::string& path)
{
    const std::unique_ptr<ExifLoader, decltype(&exif_loader_unref)> loader(exif_loader_new(), &exif_loader_unref);
    std::ifstream file(PathOfText(path), std::ios::binary);
    std::array<char, 1024> part = {};
    bool isWanted = loader != nullptr;
    while (isWanted && (file.read(part.data(), part.size()) || file.gcount() > 0))
        isWanted = exif_loader_write(loader.get(), reinterpret_cast<unsigned char*>(part.data()),
                                     static_cast<unsigned>(file.gcount())) != 0;
    return {loader != nullptr ? exif_loader_get_data(loader.get()) : nullptr, &exif_data_unref};
}

std::string TextOfTag(const ExifData& data, ExifIfd directory, ExifTag tag)
{
    const ExifEntry* const entry = exif_content_get_entry(data.ifd[directory], tag);
    if (entry == nullptr || entry->data == nullptr || entry->format != EXIF_FORMAT_ASCII)
        return {};
    return {reinterpret_cast<const char*>(entry->data), entry->size};
}

// Returns the day of `2026:05:01 12:30:00`; empty for a text that does not begin with a day.
std::string DayOf(const std::string& text)
{
    std::string day = text.substr(0, 10);
    if (day.size() != 10 || day[4] != ':' || day[7] != ':')
        return {};
    day[4] = day[7] = '-';
    PlantDate read;
    return ReadPlantDate(day, read) ? day : "";
}

} // namespace

std::string StoredPhotoPath(const std::string& path, const std::string& journal)
{
    const fs::path photo = Absolute(path);
    const fs::path file = Absolute(journal);
    for (const auto& [from, to] : {std::pair(photo, file), {WithRealDirectory(photo), WithRealDirectory(file)}})
    {
        const fs::path relative = from.lexically_relative(to.parent_path());
        if (!relative.empty() && *relative.begin() != "..")
            return TextOfPath(relative.generic_u8string()); // with slashes, so that other systems can read it
    }
    return TextOfPath(photo);
}

std::string PhotoFileProblem(const std::string& path)
{
    std::error_code error;
    if (fs::is_regular_file(PathOfText(path), error))
        return {};
    return error ? error.message() : "not a regular file";
}

std::string DateTaken(const std::string& path)
{
    if (!PhotoFileProblem(path).empty()) // a pipe or a device would block
        return {};
    const std::unique_ptr<ExifData, decltype(&exif_data_unref)> data = ExifOfFile(path);
    if (data == nullptr)
        return {};
    for (const auto& [directory, tag] : {std::pair(EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_ORIGINAL),
                                         {EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_DIGITIZED},
                                         {EXIF_IFD_0, EXIF_TAG_DATE_TIME}})
        if (std::string day = DayOf(TextOfTag(*data, directory, tag)); !day.empty())
            return day;
    return {};
}

int OrientationOf(const std::string& imageBytes)
{
    constexpr int last = 8;
    const std::unique_ptr<ExifData, decltype(&exif_data_unref)> data(
        exif_data_new_from_data(reinterpret_cast<const unsigned char*>(imageBytes.data()),
                                static_cast<unsigned>(imageBytes.size())),
        &exif_data_unref);
    if (data == nullptr)
        return 1;
    const ExifEntry* const entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (entry == nullptr || entry->data == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->components != 1)
        return 1;
    const int orientation = exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
    return orientation >= 1 && orientation <= last ? orientation : 1;
}
