#include "raw_file.h"

#include "access.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace plant_file
{

namespace
{

void RequireDone(int result, const std::string& step)
{
    if (result != SQLITE_OK)
        Fail(step, sqlite3_errstr(result));
}

} // namespace

RawFile::RawFile(sqlite3* connection) : Connection(connection)
{
    sqlite3_file_control(connection, "main", SQLITE_FCNTL_FILE_POINTER, static_cast<void*>(&File));
}

void RawFile::Write(const void* bytes, int count, std::int64_t offset, const std::string& step) const
{
    RequireDone(File->pMethods->xWrite(File, bytes, count, offset), step);
}

void RawFile::CopyTo(const std::filesystem::path& copy) const
{
    constexpr const char* step = "copying the former journal";
    constexpr sqlite3_int64 most = 65'536; // bytes at once
    const plant_file::Connection target(copy, SQLITE_OPEN_READWRITE);
    const RawFile written(target.Handle());
    sqlite3_int64 size = 0;
    RequireDone(File->pMethods->xFileSize(File, &size), step);
    std::vector<char> bytes(static_cast<std::size_t>(most));
    for (sqlite3_int64 offset = 0; offset < size; offset += most)
    {
        const int count = static_cast<int>(std::min(most, size - offset));
        RequireDone(File->pMethods->xRead(File, bytes.data(), count, offset), step);
        written.Write(bytes.data(), count, offset, step);
    }
}

void RawFile::RequireItsName() const
{
    int moved = 0; // stays 0 where the system does not let an open file be moved
    sqlite3_file_control(Connection, "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    if (moved != 0)
        Fail("", "another process has replaced the file meanwhile; try again");
}

RawLock::RawLock(const RawFile& file) : File(file.File)
{
    constexpr int longest = 2500; // milliseconds, as Connection
    constexpr int pause = 25;
    for (int waited = 0;; waited += pause)
    {
        int result = File->pMethods->xLock(File, SQLITE_LOCK_SHARED);
        if (result == SQLITE_OK)
            result = File->pMethods->xLock(File, SQLITE_LOCK_EXCLUSIVE);
        if (result == SQLITE_OK)
            return;
        File->pMethods->xUnlock(File, SQLITE_LOCK_NONE);
        if (result != SQLITE_BUSY || waited >= longest)
            Fail("locking", sqlite3_errstr(result));
        sqlite3_sleep(pause);
    }
}

RawLock::~RawLock()
{
    File->pMethods->xUnlock(File, SQLITE_LOCK_NONE);
}

} // namespace plant_file
