#include "journal/next_command.h"

#include "journal/path.h"
#include "refusal.h"
#include "system.h"
#include "terminal/console.h"

#include <filesystem>
#include <optional>
#include <system_error>

namespace
{

bool IsUsedWithoutOption(const std::string& path)
{
    try
    {
        std::error_code ignored;
        const std::string usual = JournalPath(std::nullopt);
        return path == usual ||
               std::filesystem::equivalent(plant_file::PathOfText(path), plant_file::PathOfText(usual), ignored);
    }
    catch (const Refusal&) // the user has no data directory
    {
        return false;
    }
}

} // namespace

std::string NextCommand(const std::string& words, const std::string& path)
{
    return "`plantjournal " + words + (IsUsedWithoutOption(path) ? "" : " --file " + ShellWord(path)) + '`';
}
