#include "read.h"

#include <new>
#include <utility>

#include <sqlite3.h>

namespace plant_report
{

namespace
{

[[noreturn]] void FailWithError(sqlite3* connection, const char* step)
{
    if (sqlite3_errcode(connection) == SQLITE_NOMEM)
        throw std::bad_alloc();
    throw ReadFailure{std::string(step) + ": " + sqlite3_errmsg(connection)};
}

} // namespace

ReadTransaction::ReadTransaction(sqlite3* connection)
{
    if (sqlite3_prepare_v2(connection, "SELECT 1 FROM sqlite_master;", -1, &Opened, nullptr) != SQLITE_OK)
        FailWithError(connection, "beginning to read");
    const int result = sqlite3_step(Opened);
    if (result == SQLITE_ROW)
        return;
    sqlite3_finalize(Opened); // the message stays
    FailWithError(connection, "beginning to read");
}

ReadTransaction::~ReadTransaction()
{
    sqlite3_finalize(Opened);
}

void RequireRead(bool listed, sqlite3* connection, const char* step)
{
    if (!listed || sqlite3_errcode(connection) != SQLITE_OK)
        FailWithError(connection, step);
}

std::optional<HarvestRecord> ReadHarvestRecord(PlantDatabase& database, const std::string& plantUUID)
{
    HarvestRecord record;
    const bool exists = PlantRepository(database).GetHarvestRecord(plantUUID, record);
    RequireRead(true, database.NativeHandle(), "reading the harvest records");
    return exists ? std::optional(std::move(record)) : std::nullopt;
}

void RequireAnswer(const PlantQueryResult& result)
{
    if (!result)
        throw ReadFailure{result.Error};
}

} // namespace plant_report
