// Reads rows in one transaction and reports failures, for the other files of this library.
#pragma once

#include "plant_query.h"

#include <optional>
#include <string>
#include <string_view>

#include <sqlite3.h>

namespace plant_query
{

// The failure of a public function. Answer() converts it to a result, so that it never leaves the library.
struct Failure
{
    std::string Step;
    std::string Reason;
};

// A statement that reads rows. `step` names what it reads in an error; it must outlive the statement.
class Statement
{
  public:
    Statement(sqlite3* connection, const char* step, const std::string& sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // Binds the parameter with this number, from 1. `text` must stay unchanged until the next Reset().
    void Bind(int number, std::string_view text);
    // Moves to the next row. Returns false after the last.
    bool Step();
    // Prepares for another run with other parameters.
    void Reset();

    // The text up to its first zero byte, as the repository reads texts.
    std::string Text(int column) const;
    // The same without a copy. Valid until the next Step() or Reset().
    std::string_view View(int column) const { return Characters(column); }
    // With all its zero bytes. Valid until the next Step() or Reset().
    std::string_view WholeView(int column) const;
    bool IsNull(int column) const { return sqlite3_column_type(Handle, column) == SQLITE_NULL; }
    std::int64_t Integer(int column) const { return sqlite3_column_int64(Handle, column); }
    double Number(int column) const { return sqlite3_column_double(Handle, column); }

  private:
    const char* Characters(int column) const;
    [[noreturn]] void FailWithError() const;

    sqlite3* Connection;
    const char* What;
    sqlite3_stmt* Handle = nullptr;
};

// All reads in its scope see the same state of the journal, since a statement that has not ended keeps the transaction
// open. Unlike BEGIN and ROLLBACK, that needs no memory at the end, and the caller may have a transaction open.
class ReadTransaction
{
  public:
    explicit ReadTransaction(sqlite3* connection);

  private:
    Statement Opened;
};

// Computes an answer in a read transaction and moves it to `out`, which is left empty after an error or an exception.
// `compute` is a function Out(sqlite3* connection).
template <typename Out, typename Compute>
PlantQueryResult Answer(PlantDatabase& database, Out& out, const Compute& compute)
{
    PlantQueryResult result;
    try
    {
        if (!database.IsOpen())
            throw Failure{"reading the journal", "the database is closed"};
        std::optional<Out> answer;
        {
            const ReadTransaction transaction(database.NativeHandle());
            answer = compute(database.NativeHandle());
        }
        out = std::move(*answer);
    }
    catch (const Failure& failure)
    {
        out = {};
        result.Error = failure.Step + ": " + failure.Reason;
    }
    catch (...)
    {
        out = {};
        throw;
    }
    return result;
}

} // namespace plant_query
