#pragma once

#include <cstdint>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

// All that the command asks of SQLite itself. Only sql.cpp includes SQLite's header.

// A connection of a PlantDatabase, for statements of the command's own. Does not close it.
class SQL
{
  public:
    // Messages of errors begin with `context`.
    SQL(sqlite3* connection, std::string context);

    // Runs statements that return nothing. Throws Refusal.
    void Run(const std::string& statements) const;
    // Runs a statement and returns the number in its first row, or 0 without a row. Throws Refusal.
    std::int64_t Number(const std::string& statement) const;
    // The row ID of the last row inserted.
    std::int64_t LastRowID() const;
    // Replaces everything in this connection's file with what `source` holds, in one transaction. Throws Refusal.
    void CopyPagesFrom(sqlite3* source) const;

  private:
    friend class Statement;
    [[noreturn]] void Fail() const;

    sqlite3* Connection;
    std::string Context;
};

// A prepared statement. Every operation throws Refusal.
class Statement
{
  public:
    // `connection` must live as long as the statement.
    Statement(const SQL& connection, const std::string& text);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // Parameters count from 1. A parameter that is not bound is NULL.
    void Bind(int index, std::int64_t value);
    void Bind(int index, double value);
    void Bind(int index, const std::string& value);

    // Returns whether there is a row.
    bool Step();
    // Columns count from 0.
    std::int64_t Number(int column) const;
    std::string Text(int column) const;

    // Makes the statement ready to be run again, with no parameter bound.
    void Reset();

  private:
    void Check(int result) const;

    const SQL& Connection;
    sqlite3_stmt* Handle = nullptr;
};

// Why an operation on a connection failed.
struct SQLError
{
    bool Known = false; // whether SQLite reported an error at all
    bool NotUnique = false;
    bool Busy = false;
    bool ReadOnly = false;
    bool Damaged = false;
    std::string Message;
};

// Remembers every error that SQLite reports, since a rollback hides the error of its operation. Call it before the
// first connection is opened.
void RememberSQLErrors();

// The error of the operation that failed last. Call it before anything else runs on the connection.
SQLError LastSQLError(sqlite3* connection);

// Whether the last statement on the connection failed; a list of the repository then ends early.
bool ReadingFailed(sqlite3* connection);
