#include "reading.h"

#include <cstddef>
#include <new>

namespace plant_query
{

Statement::Statement(sqlite3* connection, const char* step, const std::string& sql) : Connection(connection), What(step)
{
    if (sqlite3_prepare_v2(connection, sql.c_str(), -1, &Handle, nullptr) != SQLITE_OK)
        FailWithError();
}

Statement::~Statement()
{
    sqlite3_finalize(Handle);
}

void Statement::Bind(int number, std::string_view text)
{
    if (sqlite3_bind_text64(Handle, number, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8) != SQLITE_OK)
        FailWithError();
}

bool Statement::Step()
{
    const int result = sqlite3_step(Handle);
    if (result != SQLITE_ROW && result != SQLITE_DONE)
        FailWithError();
    return result == SQLITE_ROW;
}

void Statement::Reset()
{
    sqlite3_reset(Handle);
}

std::string Statement::Text(int column) const
{
    return Characters(column);
}

std::string_view Statement::WholeView(int column) const
{
    const char* text = Characters(column);
    return {text, static_cast<std::size_t>(sqlite3_column_bytes(Handle, column))};
}

const char* Statement::Characters(int column) const
{
    const unsigned char* text = sqlite3_column_text(Handle, column);
    if (text != nullptr)
        return reinterpret_cast<const char*>(text);
    if (sqlite3_errcode(Connection) == SQLITE_NOMEM) // otherwise the column is NULL
        throw std::bad_alloc();
    return "";
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

} // namespace plant_query
