#include "damaged_file.h"

#include <algorithm>

namespace plant_file
{

namespace
{

// Waits as long as SQLite's busy timeout does in the other functions.
sqlite3_file* LockShared(sqlite3* db)
{
    constexpr int pause = 25; // milliseconds
    sqlite3_file* file = nullptr;
    sqlite3_file_control(db, nullptr, SQLITE_FCNTL_FILE_POINTER, static_cast<void*>(&file));
    int result = file->pMethods->xLock(file, SQLITE_LOCK_SHARED);
    for (int waited = 0; result == SQLITE_BUSY && waited < 2500; waited += pause)
    {
        sqlite3_sleep(pause);
        result = file->pMethods->xLock(file, SQLITE_LOCK_SHARED);
    }
    if (result != SQLITE_OK)
        Fail("opening", sqlite3_errstr(result));
    return file;
}

// Whether another connection is preparing a write. It cannot change the file during a read.
bool IsBeingWritten(sqlite3_file* file)
{
    int isReserved = 0;
    const int result = file->pMethods->xCheckReservedLock(file, &isReserved);
    if (result != SQLITE_OK)
        Fail("opening", sqlite3_errstr(result));
    return isReserved != 0;
}

} // namespace

std::int64_t PageCountInHeader(const Bytes& header)
{
    // Programs that do not set the number leave two different change counters: the file's, and that of the number.
    return BigEndian32(header, 24) == BigEndian32(header, 92) ? BigEndian32(header, 28) : 0;
}

DamagedFile::DamagedFile(const std::filesystem::path& path, const PlantBackUpProgress& progress)
    : Opened(path, SQLITE_OPEN_READONLY), File(LockShared(Opened.Handle())), Progress(progress),
      SizeOfFile(FileSize(path)), SizeInBytes(SizeOfFile)
{
    std::filesystem::path journal = path;
    journal += "-journal";
    Rollback = ReadRollbackJournal(journal);
    if (IsBeingWritten(File)) // the rollback journal is that of the other connection
        Rollback = RollbackJournal();
    if (Rollback.PageSize == 0)
        return;
    Journal.open(journal, std::ios::binary);
    SizeInBytes = SizeBeforeTheWrite();
}

DamagedFile::~DamagedFile()
{
    File->pMethods->xUnlock(File, SQLITE_LOCK_NONE);
}

// No checksum protects the number of pages in the rollback journal. The header of the file has it, too. A number that
// is too large does less harm: the pages that the write added belong to no tree.
std::int64_t DamagedFile::SizeBeforeTheWrite()
{
    const auto pageSize = static_cast<std::int64_t>(Rollback.PageSize);
    Bytes header(FileHeaderSize);
    ReadRestored(0, header);
    const std::int64_t inHeader = PageCountInHeader(header);
    if (Rollback.PageCount == 0 || Rollback.PageCount < inHeader)
        Rollback.IsDamaged = true;
    const std::int64_t stored = std::max(Rollback.PageCount, inHeader);
    const std::int64_t inFile = (SizeOfFile + pageSize - 1) / pageSize;
    std::int64_t last = inFile;
    for (const auto& [number, at] : Rollback.Pages)
        if (number == 0 || number > stored) // no checksum protects it
            Rollback.IsDamaged = true;
        else
            last = std::max<std::int64_t>(last, number);
    // The write may have removed pages, but then the rollback journal has each of them.
    last = std::min(last, inFile + static_cast<std::int64_t>(Rollback.Pages.size()));
    return (stored == 0 ? last : std::min(last, stored)) * pageSize;
}

std::int64_t DamagedFile::TotalBlocks() const
{
    return std::max<std::int64_t>(1, (SizeInBytes + LeastPageSize - 1) / LeastPageSize);
}

void DamagedFile::AddDone(std::size_t pageSize)
{
    Done = std::min(TotalBlocks(), Done + static_cast<std::int64_t>(pageSize / LeastPageSize));
}

void DamagedFile::ReportProgress(const char* step) const
{
    if (Progress && !Progress(Done, TotalBlocks()))
        Fail(step, "interrupted");
}

std::size_t DamagedFile::ReadFromFile(std::int64_t offset, unsigned char* bytes, std::size_t size)
{
    // A short read sets the missing bytes to zero.
    const int result = File->pMethods->xRead(File, bytes, static_cast<int>(size), offset);
    if (result == SQLITE_OK)
        return size;
    if (result == SQLITE_IOERR_SHORT_READ)
        return static_cast<std::size_t>(
            std::clamp<std::int64_t>(SizeOfFile - offset, 0, static_cast<std::int64_t>(size)));
    std::fill_n(bytes, size, static_cast<unsigned char>(0));
    ++Failed;
    return 0;
}

std::size_t DamagedFile::Read(std::int64_t offset, Bytes& out)
{
    ReportProgress("reading the damaged file");
    return ReadRestored(offset, out);
}

std::size_t DamagedFile::ReadRestored(std::int64_t offset, Bytes& out)
{
    if (Rollback.PageSize == 0)
        return ReadFromFile(offset, out.data(), out.size());
    const auto pageSize = static_cast<std::int64_t>(Rollback.PageSize);
    std::size_t readable = 0;
    for (std::size_t done = 0; done < out.size();)
    {
        const std::int64_t at = offset + static_cast<std::int64_t>(done);
        const std::int64_t inPage = at % pageSize;
        const std::size_t size = std::min(out.size() - done, static_cast<std::size_t>(pageSize - inPage));
        const auto found = Rollback.Pages.find(static_cast<PageNumber>(at / pageSize + 1));
        std::size_t read = 0;
        if (found == Rollback.Pages.end())
            read = ReadFromFile(at, &out[done], size);
        else
        {
            Journal.clear();
            Journal.seekg(found->second + inPage);
            Journal.read(reinterpret_cast<char*>(&out[done]), static_cast<std::streamsize>(size));
            read = static_cast<std::size_t>(Journal.gcount());
            Rollback.IsDamaged = Rollback.IsDamaged || read < size; // the record was whole before
        }
        if (readable == done)
            readable += read;
        done += size;
    }
    return readable;
}

} // namespace plant_file
