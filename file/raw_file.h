// Reads, writes and locks the bytes of an SQLite file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include <sqlite3.h>

namespace plant_file
{

// The bytes of the file of a connection, whatever they are. The calls pass through SQLite: to open the file by other
// means, and close it, would drop the locks that other connections of the program hold on it,
// https://www.sqlite.org/howtocorrupt.html section 2.2
class RawFile
{
  public:
    // The connection must live longer than this. In a transaction, it must not have changed a page.
    explicit RawFile(sqlite3* connection);

    void Write(const void* bytes, int count, std::int64_t offset, const std::string& step) const;
    // `copy` is the path of an empty file.
    void CopyTo(const std::filesystem::path& copy) const;
    // Fails where another file has taken the name of this one since the connection was opened.
    void RequireItsName() const;

  private:
    friend class RawLock;
    sqlite3* Connection;
    sqlite3_file* File = nullptr;
};

// While in scope, no other connection can read or write the file, even if it is damaged. Waits for 2.5 seconds.
class RawLock
{
  public:
    explicit RawLock(const RawFile& file);
    ~RawLock();
    RawLock(const RawLock&) = delete;
    RawLock& operator=(const RawLock&) = delete;

  private:
    sqlite3_file* File;
};

} // namespace plant_file
