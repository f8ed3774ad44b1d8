#include "rollback_journal.h"

#include "access.h"
#include "page.h"

#include <array>
#include <fstream>
#include <vector>

namespace plant_file
{

namespace
{

constexpr std::array<unsigned char, 8> RollbackMagic = {0xD9, 0xD5, 0x05, 0xF9, 0x20, 0xA1, 0x63, 0xD7};

struct RollbackHeader
{
    std::uint32_t Records; // in a journal that was not synced, the greatest number: all that are there
    std::uint32_t Nonce;
    std::uint32_t PageCount;
    std::uint32_t SectorSize;
    std::uint32_t PageSize;
};

bool ReadAt(std::ifstream& journal, std::int64_t offset, Bytes& out)
{
    journal.clear();
    journal.seekg(offset);
    return bool(journal.read(reinterpret_cast<char*>(out.data()), static_cast<std::streamsize>(out.size())));
}

bool ReadHeader(std::ifstream& journal, std::int64_t offset, RollbackHeader& out)
{
    Bytes bytes(28);
    if (!ReadAt(journal, offset, bytes) || !std::equal(RollbackMagic.begin(), RollbackMagic.end(), bytes.begin()))
        return false;
    out = {BigEndian32(bytes, 8), BigEndian32(bytes, 12), BigEndian32(bytes, 16), BigEndian32(bytes, 20),
           BigEndian32(bytes, 24)};
    return true;
}

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

} // namespace

RollbackJournal ReadRollbackJournal(const std::filesystem::path& file)
{
    RollbackJournal result;
    if (FileSize(file) == NoFile)
        return result;
    std::ifstream journal(file, std::ios::binary);
    if (!journal)
        Fail("reading the rollback journal", "it cannot be opened");
    RollbackHeader first{};
    if (!ReadHeader(journal, 0, first) || !IsPageSize(first.PageSize) || first.SectorSize == 0)
        return result; // with another wrong size of a sector, the checksum of the first record does not fit
    result.PageSize = first.PageSize;
    result.PageCount = first.PageCount;
    Bytes record(first.PageSize + 8U);
    RollbackHeader header{};
    for (std::int64_t offset = 0; ReadHeader(journal, offset, header);)
    {
        offset += first.SectorSize;
        for (std::uint32_t i = 0; i < header.Records; ++i)
        {
            if (!ReadAt(journal, offset, record) ||
                BigEndian32(record, 4 + first.PageSize) != Checksum(record, first.PageSize, header.Nonce))
                return result;
            result.Pages.emplace(BigEndian32(record, 0), offset + 4); // the first copy is the oldest
            offset += static_cast<std::int64_t>(record.size());
        }
        offset = (offset + first.SectorSize - 1) / first.SectorSize * first.SectorSize;
    }
    return result;
}

} // namespace plant_file
