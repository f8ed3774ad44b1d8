#include "journal/path.h"

#include "system.h"
#include "terminal/console.h"

std::string JournalPath(const std::optional<std::string>& file)
{
    if (file && !file->empty())
        return *file;
    if (std::string path = Environment("PLANTJOURNAL_FILE"); !path.empty())
        return path;
    return plant_file::TextOfPath(DataDirectory() / "plantjournal" / "journal.db");
}

std::filesystem::path UndoPath()
{
    return StateDirectory() / "plantjournal" / "undo";
}
