#include "journal/path.h"

#include "refusal.h"

#include <cstdlib>

namespace
{

std::string Environment(const char* name)
{
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

// A directory of the user: `variable`, else `fallback` in the home directory, else none.
std::filesystem::path UserDirectory(const char* variable, const char* fallback)
{
    // The XDG base directory rules say to ignore a relative path.
    if (std::filesystem::path directory = Environment(variable); directory.is_absolute())
        return directory;
    const std::string home = Environment("HOME");
    return home.empty() ? std::filesystem::path() : std::filesystem::path(home) / ".local" / fallback;
}

} // namespace

std::string JournalPath(const std::optional<std::string>& file)
{
    if (file && !file->empty())
        return *file;
    if (std::string path = Environment("PLANTJOURNAL_FILE"); !path.empty())
        return path;
    const std::filesystem::path data = UserDirectory("XDG_DATA_HOME", "share");
    if (data.empty())
        throw Refusal("HOME is not set; pass --file to name the journal");
    return (data / "plantjournal" / "journal.db").string();
}

std::filesystem::path UndoPath()
{
    const std::filesystem::path state = UserDirectory("XDG_STATE_HOME", "state");
    if (state.empty())
        throw Refusal("HOME is not set; set it or XDG_STATE_HOME");
    return state / "plantjournal" / "undo";
}
