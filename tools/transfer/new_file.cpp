#include "transfer/new_file.h"

#include "refusal.h"
#include "system.h"
#include "terminal/interrupt.h"
#include "transfer/temporary_name.h"

#include <string_view>

using namespace plant_file;

namespace
{

[[noreturn]] void FailToWrite(const std::filesystem::path& path, const std::string& step)
{
    const std::string reason = LastSystemError().message();
    throw Refusal(TextOfPath(path) + ": " + step + ": " + reason +
                  "; nothing was written; check the destination, or name another");
}

} // namespace

void WriteFile(const std::filesystem::path& path, const std::string& bytes)
{
    const OpenedFile file(path, Opening::CreateNew, Access::Everyone);
    if (!file.IsOpen())
        FailToWrite(path, "creating");
    for (std::string_view rest = bytes; !rest.empty();)
    {
        const std::optional<std::size_t> count = file.Write(rest);
        if (!count)
            FailToWrite(path, "writing");
        rest.remove_prefix(*count);
        StopIfInterrupted();
    }
    if (!file.Sync())
        FailToWrite(path, "syncing");
}

void MakeDirectory(const std::filesystem::path& path)
{
    if (!AddDirectory(path, Access::Everyone))
        FailToWrite(path, "creating");
}

void WriteAtomically(const std::string& destination, Existing existing,
                     const std::function<void(const std::filesystem::path&)>& write)
{
    const std::filesystem::path target = PathOfText(destination);
    std::error_code ignored; // a destination that cannot be examined cannot be written either
    if (existing == Existing::Keep && std::filesystem::exists(std::filesystem::symlink_status(target, ignored)))
        throw Refusal(destination + ": already exists; nothing was written; name another destination");
    const TemporaryName partial(destination + ".partial-");
    const std::filesystem::path written = PathOfText(partial.Path());
    write(written);
    // With Existing::Replace, what another process created meanwhile is replaced.
    if (!(existing == Existing::Keep ? RenameWithoutReplacing(written, target) : RenameReplacing(written, target)))
        FailToWrite(target, "renaming");
}
