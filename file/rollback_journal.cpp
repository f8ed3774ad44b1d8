#include "rollback_journal.h"

#include "access.h"
#include "page.h"
#include "system.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <limits>
#include <string>

namespace plant_file
{

namespace
{

constexpr std::array<unsigned char, 8> RollbackMagic = {0xD9, 0xD5, 0x05, 0xF9, 0x20, 0xA1, 0x63, 0xD7};
constexpr std::uint32_t AllRecords = std::numeric_limits<std::uint32_t>::max();

bool ReadAt(std::ifstream& journal, std::int64_t offset, Bytes& out)
{
    journal.clear();
    journal.seekg(offset);
    return bool(journal.read(reinterpret_cast<char*>(out.data()), static_cast<std::streamsize>(out.size())));
}

// The header of a segment.
struct RollbackHeader
{
    RollbackHeader(std::ifstream& journal, std::int64_t offset) : Content(28) { ReadAt(journal, offset, Content); }

    bool HasMagic() const { return std::equal(RollbackMagic.begin(), RollbackMagic.end(), Content.begin()); }
    // SQLite writes the magic and the number of records last, and sets the header to zero when the write is finished.
    bool IsInUse() const
    {
        return std::any_of(Content.begin(), Content.begin() + 12, [](unsigned char byte) { return byte != 0; });
    }
    std::uint32_t Records() const { return BigEndian32(Content, 8); } // AllRecords where the journal was not synced
    std::uint32_t Nonce() const { return BigEndian32(Content, 12); }
    std::uint32_t PageCount() const { return BigEndian32(Content, 16); }
    std::uint32_t SectorSize() const { return BigEndian32(Content, 20); }
    std::uint32_t PageSize() const { return BigEndian32(Content, 24); }

    Bytes Content; // bytes that do not exist are zeros
};

// Not all bytes are part of it: every 200th, from the end.
std::uint32_t Checksum(const Bytes& record, std::size_t pageSize, std::uint32_t nonce)
{
    std::uint32_t sum = nonce;
    for (std::size_t i = pageSize; i > 200;)
    {
        i -= 200;
        sum += record[4 + i];
    }
    return sum;
}

// Whether a whole record is there. Its size sets the size of the page.
bool ReadRecord(std::ifstream& journal, std::int64_t offset, std::uint32_t nonce, Bytes& record)
{
    const std::size_t pageSize = record.size() - 8;
    return ReadAt(journal, offset, record) && BigEndian32(record, 4 + pageSize) == Checksum(record, pageSize, nonce);
}

// Reads the records as SQLite does: to the first one that is damaged. A journal that a crash cut short has fewer
// records than were written, but those that a header counts were synced before.
void ReadRecords(std::ifstream& journal, const RollbackHeader& first, RollbackJournal& result)
{
    const auto sectorSize = static_cast<std::int64_t>(first.SectorSize());
    Bytes record(first.PageSize() + 8U);
    const auto recordSize = static_cast<std::int64_t>(record.size());
    RollbackHeader header = first;
    std::int64_t offset = 0;
    while (header.HasMagic())
    {
        offset += sectorSize;
        std::uint32_t records = 0;
        for (; records < header.Records() && ReadRecord(journal, offset, header.Nonce(), record); ++records)
        {
            result.Pages.emplace(BigEndian32(record, 0), offset + 4); // the first copy is the oldest
            offset += recordSize;
        }
        const bool isCut = records < header.Records();
        // A good record behind the last one belongs to the same segment: this one is damaged, or the number of them is.
        result.IsDamaged = (isCut && header.Records() != AllRecords) ||
                           ReadRecord(journal, isCut ? offset + recordSize : offset, header.Nonce(), record);
        if (isCut || result.IsDamaged)
            return;
        offset = (offset + sectorSize - 1) / sectorSize * sectorSize;
        header = RollbackHeader(journal, offset);
    }
    // What follows may be left from an earlier write; then the first byte is zero.
    result.IsDamaged = header.Content[0] != 0 && ReadRecord(journal, offset + sectorSize, header.Nonce(), record);
}

// A write to several files is committed when their super-journal is deleted. Its name is at the end of the journal.
bool IsCommitted(std::ifstream& journal, std::int64_t size)
{
    constexpr std::int64_t longest = 4096;
    Bytes end(16); // the length of the name, the sum of its bytes, and the magic
    if (!ReadAt(journal, size - 16, end) || !std::equal(RollbackMagic.begin(), RollbackMagic.end(), end.begin() + 8))
        return false;
    const auto length = static_cast<std::int64_t>(BigEndian32(end, 0));
    Bytes name(static_cast<std::size_t>(std::min(length, longest)));
    if (length == 0 || length > longest || !ReadAt(journal, size - 16 - length, name))
        return false;
    std::uint32_t sum = 0;
    for (const unsigned char byte : name)
        sum += static_cast<std::uint32_t>(static_cast<signed char>(byte));
    const std::filesystem::path superJournal = PathOfText(std::string(name.begin(), name.end()));
    std::error_code error; // SQLite takes a name that cannot be looked up for one without a file
    return sum == BigEndian32(end, 4) && !std::filesystem::exists(superJournal, error);
}

} // namespace

RollbackJournal ReadRollbackJournal(const std::filesystem::path& file)
{
    RollbackJournal result;
    const std::int64_t size = FileSize(file);
    if (size == NoFile)
        return result;
    std::ifstream journal(file, std::ios::binary);
    if (!journal)
        Fail("reading the rollback journal", "it cannot be opened");
    const RollbackHeader first(journal, 0);
    if (!first.IsInUse() || IsCommitted(journal, size))
        return result;
    result.IsDamaged = !first.HasMagic() || !IsPageSize(first.PageSize()) || first.SectorSize() == 0;
    if (result.IsDamaged)
        return result;
    ReadRecords(journal, first, result); // with another wrong size of a sector, no record is found
    if (result.Pages.empty()) // the file was not changed yet, the rollback journal is damaged, or the file was new
    {
        // The rollback of the first write in a new file leaves no page: its rows are better than none.
        result.IsDamaged = result.IsDamaged || first.PageCount() == 0;
        return result;
    }
    result.PageSize = first.PageSize();
    result.PageCount = first.PageCount();
    return result;
}

} // namespace plant_file
