#include "damaged_file.h"

#include <algorithm>

namespace plant_file
{

namespace
{

// Waits as long as SQLite's busy timeout does in the other functions.
void LockShared(sqlite3_file* file)
{
    constexpr int pause = 25; // milliseconds
    int result = file->pMethods->xLock(file, SQLITE_LOCK_SHARED);
    for (int waited = 0; result == SQLITE_BUSY && waited < 2500; waited += pause)
    {
        sqlite3_sleep(pause);
        result = file->pMethods->xLock(file, SQLITE_LOCK_SHARED);
    }
    if (result != SQLITE_OK)
        Fail("opening", sqlite3_errstr(result));
}

} // namespace

DamagedFile::DamagedFile(const std::filesystem::path& path, const PlantBackUpProgress& progress)
    : Opened(path, SQLITE_OPEN_READONLY), Progress(progress), SizeInBytes(FileSize(path))
{
    sqlite3_file_control(Opened.Handle(), nullptr, SQLITE_FCNTL_FILE_POINTER, static_cast<void*>(&File));
    LockShared(File);
    std::filesystem::path journal = path;
    journal += "-journal";
    Rollback = ReadRollbackJournal(journal);
    if (Rollback.Pages.empty()) // the file was not changed yet, or the rollback journal is damaged
        Rollback.PageSize = 0;
    if (Rollback.PageSize == 0)
        return;
    Journal.open(journal, std::ios::binary);
    SizeInBytes = Rollback.PageCount * static_cast<std::int64_t>(Rollback.PageSize);
}

DamagedFile::~DamagedFile()
{
    File->pMethods->xUnlock(File, SQLITE_LOCK_NONE);
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

void DamagedFile::ReadFromFile(std::int64_t offset, unsigned char* bytes, std::size_t size)
{
    // A short read sets the missing bytes to zero.
    const int result = File->pMethods->xRead(File, bytes, static_cast<int>(size), offset);
    if (result == SQLITE_OK || result == SQLITE_IOERR_SHORT_READ)
        return;
    std::fill_n(bytes, size, static_cast<unsigned char>(0));
    ++Failed;
}

void DamagedFile::Read(std::int64_t offset, Bytes& out)
{
    ReportProgress("reading the damaged file");
    if (Rollback.PageSize == 0)
        return ReadFromFile(offset, out.data(), out.size());
    const auto pageSize = static_cast<std::int64_t>(Rollback.PageSize);
    for (std::size_t done = 0; done < out.size();)
    {
        const std::int64_t at = offset + static_cast<std::int64_t>(done);
        const std::int64_t inPage = at % pageSize;
        const std::size_t size = std::min(out.size() - done, static_cast<std::size_t>(pageSize - inPage));
        const auto found = Rollback.Pages.find(static_cast<PageNumber>(at / pageSize + 1));
        if (found == Rollback.Pages.end())
            ReadFromFile(at, &out[done], size);
        else
        {
            Journal.clear();
            Journal.seekg(found->second + inPage);
            Journal.read(reinterpret_cast<char*>(&out[done]), static_cast<std::streamsize>(size));
        }
        done += size;
    }
}

} // namespace plant_file
