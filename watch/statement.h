// Runs statements on the watched connection without waiting for locks.
#pragma once

#include <optional>
#include <string>

#include <sqlite3.h>

namespace plant_watch
{

// Thrown where SQLite fails. Poll() converts it, so that it never leaves the library.
struct Failure
{
    std::string Reason;
    bool Locked = false; // another connection holds a lock
};

// Throws std::bad_alloc where SQLite has no memory, otherwise a Failure with SQLite's message.
[[noreturn]] void Fail(sqlite3* connection);

// A statement that reads.
class Statement
{
  public:
    Statement(sqlite3* connection, const std::string& sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // Runs the statement, and returns the first column of its one row.
    int Value() const;
    // The same, but returns nothing if another connection holds a lock.
    std::optional<int> ValueUnlessLocked() const;
    // Runs the statement, which returns no row.
    void Run() const;
    // The number of the column with this name in a row, from 0; -1 if none has it.
    int Column(const char* name) const;

  private:
    sqlite3* Connection;
    sqlite3_stmt* Handle = nullptr;
};

// In its scope, the connection does not wait for locks. A busy timeout is restored at the end. A busy handler of the
// program's own has no timeout and stays: SQLite could not restore it.
class NoWaiting
{
  public:
    explicit NoWaiting(sqlite3* connection);
    ~NoWaiting();
    NoWaiting(const NoWaiting&) = delete;
    NoWaiting& operator=(const NoWaiting&) = delete;

  private:
    sqlite3* Connection;
    int Milliseconds;
};

} // namespace plant_watch
