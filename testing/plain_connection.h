#pragma once

#include <string>
#include <vector>

#include <sqlite3.h>

namespace support
{

// A row of a result, every column as text, NULL as "NULL".
using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

// A connection of the tests' own, without the library: writes files as earlier versions left them, looks at what the
// library wrote, holds locks. It throws std::runtime_error with SQLite's message when anything fails.
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

// The result of a query on any connection, the library's too.
Rows QueryRows(sqlite3* db, const std::string& sql);
// Runs statements without results on any connection.
void RunSQL(sqlite3* db, const std::string& sql);

// Every row of every table of a journal, and its schema: two files with the same content compare equal.
std::string Content(sqlite3* db);

// What SQLite's own checks of the whole file find, "ok" where that is nothing: its structure, and links that lead
// nowhere.
std::string Damage(sqlite3* db);

} // namespace support
