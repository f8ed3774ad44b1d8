#include "testing/plain_connection.h"

#include <memory>
#include <stdexcept>

namespace support
{

namespace
{

void Check(sqlite3* db, int result, int expected, const std::string& what)
{
    if (result != expected)
        throw std::runtime_error(what + ": " + sqlite3_errmsg(db));
}

std::string QuotedIdentifier(const std::string& text)
{
    return '"' + text + '"';
}

} // namespace

void RunSQL(sqlite3* db, const std::string& sql)
{
    Check(db, sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK, sql);
}

Rows QueryRows(sqlite3* db, const std::string& sql)
{
    sqlite3_stmt* raw = nullptr;
    Check(db, sqlite3_prepare_v2(db, sql.c_str(), -1, &raw, nullptr), SQLITE_OK, sql);
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(raw, sqlite3_finalize);
    Rows rows;
    int result = SQLITE_ROW;
    while ((result = sqlite3_step(raw)) == SQLITE_ROW)
    {
        Row& row = rows.emplace_back();
        for (int column = 0; column < sqlite3_column_count(raw); ++column)
        {
            const bool null = sqlite3_column_type(raw, column) == SQLITE_NULL;
            const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(raw, column));
            row.push_back(null ? "NULL"
                               : std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(raw, column))));
        }
    }
    Check(db, result, SQLITE_DONE, sql);
    return rows;
}

std::string Content(sqlite3* db)
{
    std::string content;
    for (const Row& object : QueryRows(db, "SELECT type,name,sql FROM sqlite_master ORDER BY type,name;"))
    {
        content += object[0] + ' ' + object[1] + ": " + object[2] + '\n';
        if (object[0] != "table")
            continue;
        // quote() shows the types and all digits of doubles.
        std::string columns;
        for (const Row& column : QueryRows(db, "PRAGMA table_info(" + object[1] + ");"))
            columns += (columns.empty() ? "quote(" : ",quote(") + QuotedIdentifier(column[1]) + ')';
        for (const Row& row : QueryRows(db, "SELECT rowid," + columns + " FROM " + object[1] + " ORDER BY rowid;"))
        {
            for (const std::string& value : row)
                content += value + '|';
            content += '\n';
        }
    }
    return content;
}

std::string Damage(sqlite3* db)
{
    std::string damage;
    for (const Row& finding : QueryRows(db, "PRAGMA integrity_check;"))
        damage += finding[0];
    for (const Row& finding : QueryRows(db, "PRAGMA foreign_key_check;"))
        damage += "\nrow " + finding[1] + " of " + finding[0] + " has lost its " + finding[2];
    return damage;
}

PlainConnection::PlainConnection(const std::string& path)
{
    const int result = sqlite3_open(path.c_str(), &Handle);
    if (result != SQLITE_OK)
    {
        const std::string reason = sqlite3_errmsg(Handle);
        sqlite3_close(Handle);
        throw std::runtime_error(path + ": " + reason);
    }
}

PlainConnection::~PlainConnection()
{
    sqlite3_close(Handle);
}

void PlainConnection::RunSQL(const std::string& sql) const
{
    support::RunSQL(Handle, sql);
}

Rows PlainConnection::QueryRows(const std::string& sql) const
{
    return support::QueryRows(Handle, sql);
}

std::string PlainConnection::Value(const std::string& sql) const
{
    return QueryRows(sql).at(0).at(0);
}

} // namespace support
