#pragma once

#include <string>
#include <vector>

#include <sqlite3.h>

namespace support
{

// A row of a result, every column as text, NULL as "NULL".
using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

// A connection without the library: writes files with earlier schemas, reads what the library wrote, holds locks. A
// failure throws std::runtime_error with the message of SQLite.
class PlainConnection
{
  public:
    explicit PlainConnection(const std::string& path);
    ~PlainConnection();
    PlainConnection(const PlainConnection&) = delete;
    PlainConnection& operator=(const PlainConnection&) = delete;

    void RunSQL(const std::string& sql) const;
    Rows QueryRows(const std::string& sql) const;
    // The first column of the first row.
    std::string Value(const std::string& sql) const;
    sqlite3* NativeHandle() const { return Handle; }

  private:
    sqlite3* Handle = nullptr;
};

// The result of a query on any connection.
Rows QueryRows(sqlite3* db, const std::string& sql);
// Runs statements without results on any connection.
void RunSQL(sqlite3* db, const std::string& sql);

// Every row of every table of a journal, and its schema: two files with the same content compare equal.
std::string Content(sqlite3* db);

// The findings of SQLite's own checks of the whole file and of its foreign keys, or "ok".
std::string Damage(sqlite3* db);

} // namespace support
