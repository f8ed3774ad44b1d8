// Opens journal files and reports failures, for the other files of this library.
#pragma once

#include "plant_file.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include <sqlite3.h>

namespace plant_file
{

// The failure of a public function. Attempt() converts it to a result, so that it never leaves the library.
struct Failure
{
    int Code;           // SQLite's
    std::string Step;   // may be empty: the path is the reason
    std::string Reason; // SQLite's or the system's, or one of this library
};

[[noreturn]] void Fail(const std::string& step, const std::string& reason);
[[noreturn]] void FailWithErrorOf(sqlite3* db, const std::string& step);
// Fails with the reason in LastSystemError() unless the system call is done.
void RequireSystemCall(bool done, const char* step);

// Runs `work` and returns its failure as the result for `file`.
PlantFileResult Attempt(const std::string& file, const std::function<void()>& work);

// ---- Paths

// Runs calls of <filesystem>. An exception of theirs becomes a Failure.
void WithPathErrors(const std::function<void()>& work);

// An absolute path has no other meaning to SQLite.
std::filesystem::path AbsolutePath(const std::string& path);

constexpr std::int64_t NoFile = -1;

// The size of a regular file; NoFile where nothing exists at the path.
std::int64_t FileSize(const std::filesystem::path& file);

// ---- SQLite

// A connection to an existing file. Only SQLite opens the file: closing it would drop the locks that other connections
// of the program hold on it, https://www.sqlite.org/howtocorrupt.html section 2.2
class Connection
{
  public:
    Connection(const std::filesystem::path& file, int flags);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    sqlite3* Handle() const { return Database; }

  private:
    Connection() = default; // the other constructor delegates to it so that the destructor runs where that one fails

    sqlite3* Database = nullptr;
    std::int64_t RemainingWork = 0; // in thousands of SQLite's instructions
};

// All reads in its scope see the same state of the file.
class ReadTransaction
{
  public:
    ReadTransaction(sqlite3* db, const std::string& step);
    ~ReadTransaction();
    ReadTransaction(const ReadTransaction&) = delete;
    ReadTransaction& operator=(const ReadTransaction&) = delete;

  private:
    sqlite3* Database;
};

void RunSQL(sqlite3* db, const std::string& step, const char* sql);
void ForEachRow(sqlite3* db, const std::string& step, const std::string& sql,
                const std::function<void(sqlite3_stmt*)>& read);

// The whole text, including what follows a zero byte: events were composed of whole texts.
std::string ColumnText(sqlite3_stmt* row, int column);

// A stored text for a sentence: in quotes, on one line, and cut where it is long.
std::string QuotedExcerpt(std::string text);

} // namespace plant_file
