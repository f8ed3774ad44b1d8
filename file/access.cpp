#include "access.h"

#include "system.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <system_error>

namespace plant_file
{

void Fail(const std::string& step, const std::string& reason)
{
    throw Failure{SQLITE_OK, step, reason};
}

void FailWithErrorOf(sqlite3* db, const std::string& step)
{
    const int code = sqlite3_errcode(db);
    if (code == SQLITE_READONLY) // only a rollback writes here
        throw Failure{code, step, "a write was interrupted; the next open rolls it back"};
    if (code == SQLITE_INTERRUPT) // by the progress handler of Connection
        throw Failure{code, step, "stopped: an undamaged file of this size takes far less work"};
    throw Failure{code, step, sqlite3_errmsg(db)};
}

void RequireSystemCall(bool done, const char* step)
{
    if (!done)
        Fail(step, LastSystemError().message());
}

PlantFileResult Attempt(const std::string& file, const std::function<void()>& work)
{
    PlantFileResult result;
    try
    {
        work();
    }
    catch (const Failure& failure)
    {
        result.Error = file + ": ";
        if (!failure.Step.empty())
            result.Error += failure.Step + ": ";
        result.Error += failure.Reason;
    }
    return result;
}

void WithPathErrors(const std::function<void()>& work)
{
    std::error_code error;
    try
    {
        return work();
    }
    catch (const std::filesystem::filesystem_error& failure)
    {
        error = failure.code();
    }
    Fail("", error.message());
}

std::filesystem::path AbsolutePath(const std::string& path)
{
    if (path.empty() || path.find('\0') != std::string::npos)
        Fail("", "the path is empty or contains a zero byte");
    std::filesystem::path absolute;
    const auto read = [&]
    {
        const std::filesystem::path given = PathOfText(path);
        RequirePossibleName(given, Fail);
        absolute = std::filesystem::absolute(given);
    };
    WithPathErrors(read);
    return absolute;
}

std::int64_t FileSize(const std::filesystem::path& file)
{
    std::int64_t size = NoFile;
    const auto look = [&]
    {
        const std::filesystem::file_status status = std::filesystem::status(file);
        if (!std::filesystem::exists(status))
            return;
        if (!std::filesystem::is_regular_file(status)) // opening a pipe would wait for its other end
            Fail("", "not a regular file");
        size = static_cast<std::int64_t>(std::filesystem::file_size(file));
    };
    WithPathErrors(look);
    return size;
}

Connection::Connection(const std::filesystem::path& file, int flags) : Connection()
{
    const std::int64_t bytes = FileSize(file);
    if (bytes == NoFile)
        Fail("", "no such file");
    constexpr const char* step = "opening";
    const std::string path = TextOfPath(file);
    const bool isOpen = sqlite3_open_v2(path.c_str(), &Database, flags, nullptr) == SQLITE_OK;
    if (!isOpen && path.size() > static_cast<std::size_t>(sqlite3_vfs_find(nullptr)->mxPathname))
        Fail(step, "the path is too long for SQLite"); // SQLite's own error does not say so
    if (!isOpen)
        FailWithErrorOf(Database, step);
    sqlite3_busy_timeout(Database, 2500);
    // About twenty times the work that an undamaged file takes. The pages of a damaged one may form a cycle.
    RemainingWork = 10'000 + bytes / 100;
    sqlite3_progress_handler(
        Database, 1000,
        [](void* connection) { return --static_cast<Connection*>(connection)->RemainingWork < 0 ? 1 : 0; }, this);
    // https://www.sqlite.org/security.html
    RunSQL(Database, "opening", "PRAGMA trusted_schema=OFF; PRAGMA cell_size_check=ON;");
}

Connection::~Connection()
{
    sqlite3_close_v2(Database);
}

ReadTransaction::ReadTransaction(sqlite3* db, const std::string& step) : Database(db)
{
    RunSQL(db, step, "BEGIN;");
}

ReadTransaction::~ReadTransaction()
{
    sqlite3_exec(Database, "ROLLBACK;", nullptr, nullptr, nullptr);
}

void RunSQL(sqlite3* db, const std::string& step, const char* sql)
{
    if (sqlite3_exec(db, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        FailWithErrorOf(db, step);
}

void ForEachRow(sqlite3* db, const std::string& step, const std::string& sql,
                const std::function<void(sqlite3_stmt*)>& read)
{
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK)
        FailWithErrorOf(db, step);
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(prepared, sqlite3_finalize);
    int result = SQLITE_OK;
    while ((result = sqlite3_step(statement.get())) == SQLITE_ROW)
        read(statement.get());
    if (result != SQLITE_DONE)
        FailWithErrorOf(db, step);
}

std::string ColumnText(sqlite3_stmt* row, int column)
{
    const unsigned char* text = sqlite3_column_text(row, column);
    if (text != nullptr)
        return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(sqlite3_column_bytes(row, column))};
    if (sqlite3_errcode(sqlite3_db_handle(row)) == SQLITE_NOMEM) // otherwise the column is NULL
        throw std::bad_alloc();
    return {};
}

std::string QuotedExcerpt(std::string text)
{
    constexpr std::size_t longest = 80;
    if (text.size() > longest)
    {
        std::size_t end = longest;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) // inside a UTF-8 character
            --end;
        text.resize(end);
        text += "...";
    }
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, '?');
    return '"' + text + '"';
}

} // namespace plant_file
