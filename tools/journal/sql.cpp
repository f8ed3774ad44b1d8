#include "journal/sql.h"

#include "journal/file_result.h"
#include "journal/next_command.h"
#include "refusal.h"
#include "system.h"
#include "terminal/console.h"
#include "terminal/interrupt.h"

#include <filesystem>
#include <memory>
#include <utility>

#include <sqlite3.h>

namespace
{

// The last error in SQLite's log: https://www.sqlite.org/errlog.html
int loggedError = SQLITE_OK; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the log outlives everything

void RememberError(void*, int code, const char*)
{
    if (const int kind = code & 0xFF;
        kind != SQLITE_ERROR && kind != SQLITE_NOTICE && kind != SQLITE_WARNING && kind != SQLITE_SCHEMA)
        loggedError = code;
}

// Waits for the lock of another program, as long as a PlantDatabase does, but not after Ctrl-C.
int WaitUnlessInterrupted(void*, int earlierWaits)
{
    constexpr int most = 50;
    constexpr int milliseconds = 50;
    if (earlierWaits >= most || Interrupted())
        return 0;
    sqlite3_sleep(milliseconds);
    return 1;
}

bool IsError(int code)
{
    return code != SQLITE_OK && code != SQLITE_ROW && code != SQLITE_DONE;
}

} // namespace

SQL::SQL(sqlite3* connection, std::string context, std::string consequence)
    : Connection(connection), Context(std::move(context)), Consequence(std::move(consequence))
{
}

void SQL::Fail() const
{
    const std::string message = sqlite3_errmsg(Connection);
    throw Refusal(Context + ": " + message + Consequence + "; " + AdviceAfter(LastSQLError(Connection)));
}

void SQL::Run(const std::string& statements) const
{
    if (sqlite3_exec(Connection, statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        Fail();
}

std::int64_t SQL::Number(const std::string& statement) const
{
    Statement prepared(*this, statement);
    return prepared.Step() ? prepared.Number(0) : 0;
}

std::int64_t SQL::LastRowID() const
{
    return sqlite3_last_insert_rowid(Connection);
}

std::int64_t SQL::DataVersion() const
{
    return Number("PRAGMA data_version;");
}

std::string SQL::FileHeader() const
{
    // SQLite's own file is read: to close a second descriptor would release SQLite's locks.
    sqlite3_file* file = nullptr;
    std::string header(100, '\0');
    if (sqlite3_file_control(Connection, "main", SQLITE_FCNTL_FILE_POINTER, static_cast<void*>(&file)) != SQLITE_OK ||
        file == nullptr || file->pMethods == nullptr ||
        file->pMethods->xRead(file, header.data(), static_cast<int>(header.size()), 0) != SQLITE_OK)
        throw Refusal(Context + ": the header of the file cannot be read" + Consequence +
                      "; `plantjournal check` examines the journal");
    return header;
}

void SQL::LockUntilClosed() const
{
    sqlite3_busy_handler(Connection, WaitUnlessInterrupted, nullptr);
    if (sqlite3_exec(Connection, "BEGIN EXCLUSIVE;", nullptr, nullptr, nullptr) != SQLITE_OK)
    {
        StopIfInterrupted();
        Fail();
    }
    // Before the lock is held, the mode would keep a read lock during the wait: the other program could not commit.
    Run("PRAGMA locking_mode=EXCLUSIVE;");
    Run("COMMIT;");
}

void SQL::CopyPagesFrom(sqlite3* source) const
{
    sqlite3_backup* const copy = sqlite3_backup_init(Connection, "main", source, "main");
    const bool copied = copy != nullptr && sqlite3_backup_step(copy, -1) == SQLITE_DONE;
    if (sqlite3_backup_finish(copy) != SQLITE_OK || !copied) // finishing also stores the error in the connection
        Fail();
}

Transaction::Transaction(const SQL& connection) : Connection(connection)
{
    Connection.Run("BEGIN IMMEDIATE;");
}

Transaction::~Transaction()
{
    if (!Committed)
        sqlite3_exec(Connection.Connection, "ROLLBACK;", nullptr, nullptr, nullptr);
}

void Transaction::Commit()
{
    Connection.Run("COMMIT;");
    Committed = true;
}

Statement::Statement(const SQL& connection, const std::string& text) : Connection(connection)
{
    Check(sqlite3_prepare_v2(connection.Connection, text.c_str(), -1, &Handle, nullptr));
}

Statement::~Statement()
{
    sqlite3_finalize(Handle);
}

void Statement::Check(int result) const
{
    if (result != SQLITE_OK)
        Connection.Fail();
}

void Statement::Bind(int index, std::int64_t value)
{
    Check(sqlite3_bind_int64(Handle, index, value));
}

void Statement::Bind(int index, double value)
{
    Check(sqlite3_bind_double(Handle, index, value));
}

void Statement::Bind(int index, const std::string& value)
{
    Check(sqlite3_bind_text64(Handle, index, value.data(), value.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

bool Statement::Step()
{
    const int result = sqlite3_step(Handle);
    if (result != SQLITE_DONE && result != SQLITE_ROW)
        Connection.Fail();
    return result == SQLITE_ROW;
}

std::int64_t Statement::Number(int column) const
{
    return sqlite3_column_int64(Handle, column);
}

double Statement::Real(int column) const
{
    return sqlite3_column_double(Handle, column);
}

std::string Statement::Text(int column) const
{
    const unsigned char* const text = sqlite3_column_text(Handle, column);
    return text == nullptr ? ""
                           : std::string(reinterpret_cast<const char*>(text),
                                         static_cast<std::size_t>(sqlite3_column_bytes(Handle, column)));
}

void Statement::Reset()
{
    Check(sqlite3_reset(Handle));
    Check(sqlite3_clear_bindings(Handle));
}

void RememberSQLErrors()
{
    sqlite3_config(SQLITE_CONFIG_LOG, RememberError, nullptr);
}

SQLError LastSQLError(sqlite3* connection)
{
    int code = sqlite3_extended_errcode(connection);
    std::string message = sqlite3_errmsg(connection);
    // After an operation of several statements, the connection's error is that of the rollback: none, or that SQLite
    // had rolled back by itself. Of the errors that make SQLite do so, only a full disk is not in its log.
    const bool rolledBack = message.starts_with("cannot rollback");
    if (!IsError(code) || rolledBack)
    {
        code = rolledBack && loggedError == SQLITE_OK ? SQLITE_FULL : loggedError;
        message = sqlite3_errstr(code & 0xFF);
    }
    SQLError error;
    error.Known = IsError(code);
    error.NotUnique = code == SQLITE_CONSTRAINT_UNIQUE;
    error.Busy = (code & 0xFF) == SQLITE_BUSY;
    error.ReadOnly = (code & 0xFF) == SQLITE_READONLY;
    error.Damaged = (code & 0xFF) == SQLITE_CORRUPT;
    error.Full = (code & 0xFF) == SQLITE_FULL;
    error.Message = message;
    if (const char* const path = sqlite3_db_filename(connection, "main"))
        error.Journal = path;
    return error;
}

std::string AdviceAfter(const SQLError& error, const std::string& otherwise)
{
    if (error.Busy)
        return "another program is writing to the journal, try again when it has finished";
    if (error.ReadOnly)
        return "make the file writable, or copy it";
    if (error.Damaged)
        return "the file is damaged, " + AdviceForDamage(error.Journal);
    if (error.Full)
        return "free space on the disk and try again";
    if (error.NotUnique)
        return "that name or UUID is already in use; choose another";
    return error.Known || otherwise.empty() ? NextCommand("check", error.Journal) + " examines the journal" : otherwise;
}

bool ReadingFailed(sqlite3* connection)
{
    return IsError(sqlite3_errcode(connection));
}

std::vector<std::string> TextsInUnlockedFile(const std::string& path, const std::string& statement)
{
    std::string uri = "file:";
    for (const char letter : plant_file::TextOfPath(std::filesystem::absolute(plant_file::PathOfText(path))))
        uri += letter == '?' ? "%3F" : letter == '#' ? "%23" : letter == '%' ? "%25" : std::string(1, letter);
    sqlite3* opened = nullptr;
    // https://www.sqlite.org/uri.html#uriimmutable: no locks, and no files next to it
    const int result =
        sqlite3_open_v2((uri + "?immutable=1").c_str(), &opened, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> file(opened, &sqlite3_close);
    std::vector<std::string> texts;
    if (result != SQLITE_OK)
        return texts;
    try
    {
        const SQL connection(opened, path);
        Statement rows(connection, statement);
        while (rows.Step())
            texts.push_back(rows.Text(0));
    }
    catch (const Refusal&)
    {
        texts.clear();
    }
    return texts;
}
