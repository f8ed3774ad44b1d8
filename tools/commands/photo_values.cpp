#include "commands/photo_values.h"

#include "journal/find_record.h"
#include "record/photo_file.h"
#include "record/text.h"
#include "terminal/printable.h"

Notices TakeValuesFromFile(PlantPhoto& photo, const Plant& plant, const std::string& journal, const FieldNames& given)
{
    const bool isNew = photo.ID == 0;
    if (!isNew && !given.contains("FilePath"))
        return {};
    const std::string path = photo.FilePath;
    photo.FilePath = StoredPhotoPath(path, journal);
    if (const std::string taken = DateTaken(path); isNew && !given.contains("PhotoDate") && !taken.empty())
        photo.PhotoDate = taken;
    const std::string problem = PhotoFileProblem(path);
    if (problem.empty())
        return {};
    return {{Printable("photo of " + DisplayName(plant)),
             Printable("--file-path " + InQuotes(path) + ": the file cannot be found: " + problem)}};
}
