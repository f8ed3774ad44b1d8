// Reads rows in one transaction and reports failures, for the other files of this library.
#pragma once

#include <cstdint>
#include <string>

#include <sqlite3.h>

namespace plant_validation
{

// A reading that broke off. It never leaves the library.
struct Failure
{
    std::string Step;
    std::string Reason;
};

// A statement that reads rows. `step` names what it reads in an error; it must outlive the statement.
class Statement
{
  public:
    Statement(sqlite3* connection, const char* step, const char* sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // Bind the next parameter. A text must stay unchanged as long as the statement.
    Statement& Bind(const std::string& text);
    Statement& Bind(std::int64_t value);
    // Moves to the next row. Returns false after the last.
    bool Step();
    // The text up to its first zero byte, as the repository reads texts.
    std::string Text(int column) const;

  private:
    [[noreturn]] void FailWithError() const;

    sqlite3* Connection;
    const char* What;
    sqlite3_stmt* Handle = nullptr;
    int Bound = 0;
};

// All reads in its scope see the same state of the journal, since a statement that has not ended keeps the transaction
// open. Unlike BEGIN and ROLLBACK, that works inside a transaction of the caller, too.
class ReadTransaction
{
  public:
    explicit ReadTransaction(sqlite3* connection);

  private:
    Statement Opened;
};

} // namespace plant_validation
