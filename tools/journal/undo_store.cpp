#include "journal/undo_store.h"

#include "journal/own_directory.h"
#include "journal/path.h"
#include "refusal.h"
#include "system.h"

#include <array>
#include <string_view>
#include <system_error>

using namespace plant_file;

namespace
{

[[noreturn]] void Fail(const std::filesystem::path& path, const std::string& step)
{
    const std::string reason = LastSystemError().message();
    throw Refusal(TextOfPath(path) + ": " + step + ": " + reason +
                  "; check the permissions and the free space of the disk");
}

// On Windows, canonical() keeps the case of the letters as typed.
std::filesystem::path PathOfExisting(const std::string& journal)
{
    try
    {
        return CanonicalPath(std::filesystem::canonical(PathOfText(journal)));
    }
    catch (const std::filesystem::filesystem_error& error)
    {
        throw Refusal(journal + ": " + error.code().message() + "; check the path");
    }
}

void WriteSynced(const std::filesystem::path& path, std::string_view bytes)
{
    const OpenedFile file(path, Opening::CreateOrTruncate, Access::Owner);
    if (!file.IsOpen())
        Fail(path, "creating");
    while (!bytes.empty())
    {
        const std::optional<std::size_t> written = file.Write(bytes);
        if (!written)
            Fail(path, "writing");
        bytes.remove_prefix(*written);
    }
    if (!file.Sync())
        Fail(path, "syncing");
}

// Returns nothing where the file does not exist.
std::optional<std::string> ReadFile(const std::filesystem::path& path)
{
    const OpenedFile file(path, Opening::Read, Access::Owner);
    if (const std::error_code error = LastSystemError();
        !file.IsOpen() && (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory))
        return std::nullopt;
    if (!file.IsOpen())
        Fail(path, "opening");
    std::string bytes;
    std::array<char, 65536> part = {};
    for (std::optional<std::size_t> count = 1; count != 0U;)
    {
        count = file.Read(part.data(), part.size());
        if (!count)
            Fail(path, "reading");
        bytes.append(part.data(), *count);
    }
    return bytes;
}

void Rename(const std::filesystem::path& from, const std::filesystem::path& destination)
{
    if (!RenameReplacing(from, destination))
        Fail(from, "renaming");
}

} // namespace

UndoStore::UndoStore(const std::string& journal)
    : CanonicalJournal(TextOfPath(PathOfExisting(journal))), Directory(UndoPath() / StableHash(CanonicalJournal))
{
}

std::string UndoStore::CopyPath() const
{
    return TextOfPath(Directory / "copy.db");
}

std::string UndoStore::TemporaryPrefix() const
{
    CreateOwnDirectory(Directory);
    return TextOfPath(Directory / "copy.db-");
}

std::optional<UndoRecord> UndoStore::Load() const
{
    const std::optional<std::string> bytes = ReadFile(RecordPath());
    if (!bytes)
        return std::nullopt;
    UndoRecord record = Decoded(*bytes, TextOfPath(RecordPath()));
    if (record.Journal != CanonicalJournal)
        throw Refusal(TextOfPath(RecordPath()) + ": the stored undo step belongs to the journal " + record.Journal +
                      "; nothing was changed; name that journal with --file");
    return record;
}

void UndoStore::Save(const UndoRecord& record, const std::string& copy) const
{
    CreateOwnDirectory(Directory);
    const std::filesystem::path part =
        Directory / "last-change.part"; // no other process writes to it: the journal is locked
    WriteSynced(part, Encoded(record));
    if (!copy.empty())
        Rename(PathOfText(copy), PathOfText(CopyPath()));
    Rename(part, RecordPath());
    SyncDirectory();
    if (copy.empty())
        RemoveFile(PathOfText(CopyPath()));
}

void UndoStore::Remove() const
{
    RemoveFile(RecordPath());
    RemoveFile(PathOfText(CopyPath()));
}

void UndoStore::SyncDirectory() const
{
    const OpenedDirectory directory(Directory);
    if (!directory.IsOpen() || !directory.Sync())
        Fail(Directory, "syncing the directory");
}
