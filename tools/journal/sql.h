#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

// All that the command asks of SQLite itself, except for change sets. Only sql.cpp and change_set.cpp include SQLite's
// header.

// A connection of a PlantDatabase, for statements of the command's own. Does not close it.
class SQL
{
  public:
    // Messages of errors begin with `context` and end with `consequence`.
    SQL(sqlite3* connection, std::string context, std::string consequence = "; nothing was changed");

    // Runs statements that return nothing. Throws Refusal.
    void Run(const std::string& statements) const;
    // Runs a statement and returns the number in its first row, or 0 without a row. Throws Refusal.
    std::int64_t Number(const std::string& statement) const;
    // The row ID of the last row inserted.
    std::int64_t LastRowID() const;
    // A number that is larger after another connection has changed the file. Throws Refusal.
    std::int64_t DataVersion() const;
    // The first 100 bytes of the file. Every commit changes them: they hold a counter of the changes, the number of
    // pages and a counter of the changes of the schema. Call it in a transaction, or with the file locked. Throws
    // Refusal.
    std::string FileHeader() const;
    // Locks the file against all other programs until the connection is closed. Ctrl-C ends the wait for another
    // program. Throws Refusal.
    void LockUntilClosed() const;
    // Replaces everything in this connection's file with what `source` holds, in one transaction. Throws Refusal.
    void CopyPagesFrom(sqlite3* source) const;

  private:
    friend class Statement;
    friend class Transaction;
    [[noreturn]] void Fail() const;

    sqlite3* Connection;
    std::string Context;
    std::string Consequence;
};

// A transaction in which this connection may write, and no other. It is rolled back at the end of its scope unless it
// was committed. Throws Refusal.
class Transaction
{
  public:
    // `connection` must live as long as the transaction.
    explicit Transaction(const SQL& connection);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void Commit();

  private:
    const SQL& Connection;
    bool Committed = false;
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
    double Real(int column) const;
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
    bool Full = false; // the disk
    std::string Message;
    std::string Journal; // the path
};

// Remembers every error that SQLite reports, since a rollback hides the error of its operation. Call it before the
// first connection is opened.
void RememberSQLErrors();

// The error of the operation that failed last. Call it before anything else runs on the connection.
SQLError LastSQLError(sqlite3* connection);

// What to do after this error. `otherwise` is returned where the error does not decide it.
std::string AdviceAfter(const SQLError& error, const std::string& otherwise = {});

// Whether the last statement on the connection failed; a list of the repository then ends early.
bool ReadingFailed(sqlite3* connection);

// Returns the first column of the rows that a statement reads from the file. Takes no lock, does not wait and creates
// no file, so what it returns can be wrong while another program writes. Empty after an error.
std::vector<std::string> TextsInUnlockedFile(const std::string& path, const std::string& statement);
