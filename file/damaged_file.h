// The bytes of a file that SQLite may be unable to read.
#pragma once

#include "access.h"
#include "page.h"
#include "plant_file.h"
#include "rollback_journal.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>

#include <sqlite3.h>

namespace plant_file
{

// The number of pages in the file's header; 0 where the header does not have it.
std::int64_t PageCountInHeader(const Bytes& header);

// Reads a file as it is after SQLite would have rolled back an interrupted write, and changes neither the file nor its
// rollback journal. While it exists, no other process can write to the file. Each read reports the progress, and fails
// where the callback ends the work.
class DamagedFile
{
  public:
    // The callback may be empty, and must live longer than this.
    DamagedFile(const std::filesystem::path& path, const PlantBackUpProgress& progress);
    ~DamagedFile();
    DamagedFile(const DamagedFile&) = delete;
    DamagedFile& operator=(const DamagedFile&) = delete;

    std::int64_t Size() const { return SizeInBytes; }
    std::int64_t SizeBeforeRollback() const { return SizeOfFile; }
    // Whether an interrupted write is rolled back, at least in part.
    bool RollsBack() const { return Rollback.PageSize != 0; }
    // Whether an interrupted write is not, or not wholly, rolled back.
    bool RollbackIsDamaged() const { return Rollback.IsDamaged; }
    // The bytes at `offset`. Bytes that do not exist, or that the disk cannot read, are zeros. The result is the number
    // of bytes before the first of these.
    std::size_t Read(std::int64_t offset, Bytes& out);
    std::int64_t FailedReads() const { return Failed; }
    // Counts a page whose rows are copied.
    void AddDone(std::size_t pageSize);
    void AddRest() { Done = TotalBlocks(); }
    void ReportProgress(const char* step) const;

  private:
    // The page size may be lost, so the progress counts pages of the smallest size.
    std::int64_t TotalBlocks() const;
    std::int64_t SizeBeforeTheWrite();
    // Like Read(), without the progress.
    std::size_t ReadRestored(std::int64_t offset, Bytes& out);
    std::size_t ReadFromFile(std::int64_t offset, unsigned char* bytes, std::size_t size);

    Connection Opened; // SQLite opens the file, so that closing it drops no lock of the program
    sqlite3_file* File;
    const PlantBackUpProgress& Progress;
    std::int64_t Done = 0; // of TotalBlocks()
    RollbackJournal Rollback;
    std::ifstream Journal;
    std::int64_t SizeOfFile = 0;
    std::int64_t SizeInBytes = 0; // after the rollback
    std::int64_t Failed = 0;
};

} // namespace plant_file
