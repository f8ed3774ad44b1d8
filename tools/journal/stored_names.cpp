#include "journal/stored_names.h"

#include "journal/path.h"
#include "journal/sql.h"
#include "refusal.h"
#include "system.h"

#include <filesystem>
#include <system_error>

namespace
{

// Whether a program is writing to the journal, or was killed while it wrote: the file alone is then not the journal.
bool IsBeingWritten(const std::string& path)
{
    std::error_code ignored;
    return std::filesystem::exists(plant_file::PathOfText(path + "-journal"), ignored) ||
           std::filesystem::exists(plant_file::PathOfText(path + "-wal"), ignored);
}

std::string StatementFor(const std::string& type)
{
    if (type == "PLANT")
        return "SELECT DISTINCT CASE Name WHEN '' THEN UUID ELSE Name END FROM Plants;";
    if (type == "STRAIN")
        return "SELECT Name FROM Strains;";
    if (type == "TENT")
        return "SELECT DISTINCT Tent FROM Plants;";
    if (type == "STRAIN-OR-PLANT")
        return "SELECT Name FROM Strains UNION SELECT CASE Name WHEN '' THEN UUID ELSE Name END FROM Plants;";
    return {};
}

} // namespace

std::vector<std::string> StoredNamesOf(const std::string& type, const std::optional<std::string>& file)
{
    const std::string statement = StatementFor(type);
    if (statement.empty())
        return {};
    try
    {
        const std::string path = JournalPath(file);
        std::error_code ignored;
        if (!std::filesystem::is_regular_file(plant_file::PathOfText(path), ignored) || IsBeingWritten(path))
            return {};
        return TextsInUnlockedFile(path, statement);
    }
    catch (const Refusal&) // the user has no data directory
    {
        return {};
    }
}
