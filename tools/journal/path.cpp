#include "journal/path.h"

#include "refusal.h"

#include <cstdlib>
#include <filesystem>

namespace
{

std::string Environment(const char* name)
{
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

} // namespace

std::string JournalPath(const std::optional<std::string>& file)
{
    if (file && !file->empty())
        return *file;
    if (std::string path = Environment("PLANTJOURNAL_FILE"); !path.empty())
        return path;
    // The XDG base directory rules say to ignore a relative path.
    std::filesystem::path data = Environment("XDG_DATA_HOME");
    if (data.is_relative())
    {
        const std::string home = Environment("HOME");
        if (home.empty())
            throw Refusal("HOME is not set; pass --file to name the journal");
        data = std::filesystem::path(home) / ".local" / "share";
    }
    return (data / "plantjournal" / "journal.db").string();
}
