// Reads a journal for a page: every reading that breaks off is an error.
#pragma once

#include "plant_report.h"

#include <optional>
#include <string>

struct sqlite3_stmt; // SQLite's statement

namespace plant_report
{

// The failure of a reading. WritePlantReport() converts it to a result, so that it never leaves the library.
struct ReadFailure
{
    std::string Error;
};

// All reads in its scope see the same state of the journal: a statement that has not ended keeps the transaction open.
// The caller may have a transaction open.
class ReadTransaction
{
  public:
    explicit ReadTransaction(sqlite3* connection);
    ~ReadTransaction();
    ReadTransaction(const ReadTransaction&) = delete;
    ReadTransaction& operator=(const ReadTransaction&) = delete;

  private:
    sqlite3_stmt* Opened = nullptr;
};

// Throws ReadFailure where a repository did not list all records, and std::bad_alloc where it had no memory. `listed`
// is what the operation returned: it is also true where the reading broke off.
void RequireRead(bool listed, sqlite3* connection, const char* step);

// The harvest record of a plant. Throws as RequireRead().
std::optional<HarvestRecord> ReadHarvestRecord(PlantDatabase& database, const std::string& plantUUID);

// Throws ReadFailure where the query failed.
void RequireAnswer(const PlantQueryResult& result);

} // namespace plant_report
