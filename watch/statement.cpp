#include "statement.h"

#include <new>

namespace plant_watch
{

void Fail(sqlite3* connection)
{
    const int code = sqlite3_errcode(connection) & 0xFF; // without the details of an extended code
    if (code == SQLITE_NOMEM)
        throw std::bad_alloc();
    throw Failure{sqlite3_errmsg(connection), code == SQLITE_BUSY};
}

Statement::Statement(sqlite3* connection, const std::string& sql) : Connection(connection)
{
    if (sqlite3_prepare_v2(connection, sql.c_str(), -1, &Handle, nullptr) != SQLITE_OK)
        Fail(connection);
}

Statement::~Statement()
{
    sqlite3_finalize(Handle);
}

std::optional<int> Statement::ValueUnlessLocked() const
{
    sqlite3_step(Handle);
    const int value = sqlite3_column_int(Handle, 0);
    const int code = sqlite3_reset(Handle); // the failure of the step
    if ((code & 0xFF) == SQLITE_BUSY)       // without the details of an extended code
        return std::nullopt;
    if (code != SQLITE_OK)
        Fail(Connection);
    return value;
}

int Statement::Value() const
{
    const std::optional<int> value = ValueUnlessLocked();
    if (!value)
        Fail(Connection);
    return *value;
}

void Statement::Run() const
{
    Value();
}

int Statement::Column(const char* name) const
{
    int column = sqlite3_column_count(Handle) - 1;
    while (column >= 0 && sqlite3_stricmp(sqlite3_column_name(Handle, column), name) != 0)
        --column;
    return column;
}

NoWaiting::NoWaiting(sqlite3* connection)
    : Connection(connection), Milliseconds(Statement(connection, "PRAGMA busy_timeout;").Value())
{
    if (Milliseconds != 0)
        sqlite3_busy_timeout(Connection, 0);
}

NoWaiting::~NoWaiting()
{
    if (Milliseconds != 0)
        sqlite3_busy_timeout(Connection, Milliseconds);
}

} // namespace plant_watch
