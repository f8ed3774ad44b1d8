#include "journal/path.h"

#include "system.h"
#include "terminal/console.h"

std::string JournalPath(const std::optional<std::string>& file)
{
    using plant_file::PathOfText;
    using plant_file::TextOfPath;
    if (file && !file->empty())
        return TextOfPath(PathOfText(*file)); // without the prefix of long paths on Windows
    if (const std::string path = Environment("PLANTJOURNAL_FILE"); !path.empty())
        return TextOfPath(PathOfText(path));
    return TextOfPath(DataDirectory() / "plantjournal" / "journal.db");
}

std::filesystem::path UndoPath()
{
    return StateDirectory() / "plantjournal" / "undo";
}
