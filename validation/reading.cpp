#include "reading.h"

#include <new>

namespace plant_validation
{

Statement::Statement(sqlite3* connection, const char* step, const char* sql) : Connection(connection), What(step)
{
    if (sqlite3_prepare_v2(connection, sql, -1, &Handle, nullptr) != SQLITE_OK)
        FailWithError();
}

Statement::~Statement()
{
    sqlite3_finalize(Handle);
}

Statement& Statement::Bind(const std::string& text)
{
    if (sqlite3_bind_text64(Handle, ++Bound, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8) != SQLITE_OK)
        FailWithError();
    return *this;
}

Statement& Statement::Bind(std::int64_t value)
{
    if (sqlite3_bind_int64(Handle, ++Bound, value) != SQLITE_OK)
        FailWithError();
    return *this;
}

bool Statement::Step()
{
    const int result = sqlite3_step(Handle);
    if (result != SQLITE_ROW && result != SQLITE_DONE)
        FailWithError();
    return result == SQLITE_ROW;
}

std::string Statement::Text(int column) const
{
    const unsigned char* text = sqlite3_column_text(Handle, column);
    if (text != nullptr)
        return reinterpret_cast<const char*>(text);
    if (sqlite3_errcode(Connection) == SQLITE_NOMEM) // otherwise the column is NULL
        throw std::bad_alloc();
    return {};
}

void Statement::FailWithError() const
{
    if (sqlite3_errcode(Connection) == SQLITE_NOMEM)
        throw std::bad_alloc();
    throw Failure{What, sqlite3_errmsg(Connection)};
}

ReadTransaction::ReadTransaction(sqlite3* connection)
    : Opened(connection, "beginning to read", "SELECT 1 FROM sqlite_master;")
{
    Opened.Step();
}

} // namespace plant_validation
