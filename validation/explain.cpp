#include "reading.h"
#include "refusals.h"
#include "validate.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <type_traits>

namespace plant_validation
{

namespace
{

constexpr const char* NotRecorded = "rolled back; the cause was not recorded";

// What the operation left in the connection. The next call of SQLite replaces it.
struct Evidence
{
    explicit Evidence(sqlite3* journal)
        : Code(sqlite3_extended_errcode(journal)), Message(sqlite3_errmsg(journal)),
          InTransaction(sqlite3_get_autocommit(journal) == 0), LastRowID(sqlite3_last_insert_rowid(journal))
    {
    }

    int Code;
    std::string Message;
    bool InTransaction;
    std::int64_t LastRowID;
};

// What depends on the kind of the record.
struct Operation
{
    std::string RefusalWithoutFile; // then the evidence is that of an earlier call
    bool UsesTransaction = false;
    std::int64_t EventID = 0; // that of the record, which the operation may have written back
    std::function<Problems(sqlite3* journal)> FindProblems;
};

// The first refusal, or nothing.
std::string FirstRefusal(const Problems& problems)
{
    if (problems.empty() || problems.front().Kind != PlantProblemKind::Refused)
        return {};
    return "refused: " + problems.front().Field + ": " + problems.front().Description;
}

// For evidence that neither shows nor excludes a refusal.
std::string RefusalOr(const std::string& otherwise, sqlite3* journal, const Operation& operation,
                      const Evidence& evidence)
{
    try
    {
        const ReadTransaction transaction(journal);
        Problems problems = operation.FindProblems(journal);
        // The operation may have inserted the event and rolled it back.
        if (operation.EventID == evidence.LastRowID)
            problems.erase(std::remove_if(problems.begin(), problems.end(),
                                          [](const PlantProblem& problem)
                                          { return problem.Field == "TimelineEventID"; }),
                           problems.end());
        const std::string refusal = FirstRefusal(problems);
        return refusal.empty() ? otherwise : refusal;
    }
    catch (const Failure& failure)
    {
        return otherwise + "; the journal cannot be read at present: " + failure.Step + ": " + failure.Reason;
    }
}

// The sentence for a code that names its cause; empty for other codes.
std::string CauseOf(int code)
{
    if (code == SQLITE_READONLY_DBMOVED)
        return "moved: the journal file was moved or deleted while it was open; close the journal and open it again";
    switch (code & 0xFF) // the primary code
    {
    case SQLITE_BUSY:
        return "locked: another process or connection was using the journal for too long; try again later";
    case SQLITE_READONLY:
        return "read-only: the journal file or its directory cannot be written; change its permissions, or copy the "
               "journal to another directory";
    case SQLITE_FULL:
        return "disk full: the journal's disk has no room left; free some space, then try again";
    case SQLITE_IOERR:
        return "disk error: the journal's disk or its connection failed; check it, then try again";
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return "damaged: the journal file is damaged; restore a backup";
    case SQLITE_NOMEM:
        return "out of memory: the operation needs more memory; free some, then try again";
    default:
        return {};
    }
}

// The cause where the operation left no code and did not refuse the record.
std::string CauseWithoutCode(sqlite3* journal, const Operation& operation)
{
    if (!operation.UsesTransaction) // the journal or the evidence has changed since
        return "failed: the cause was not recorded";
    // In a read-only file, the transaction can begin, but its first write fails.
    if (sqlite3_db_readonly(journal, "main") == 1)
        return CauseOf(SQLITE_READONLY);
    return NotRecorded;
}

std::string ExplainOperation(PlantDatabase& database, const Operation& operation)
{
    if (!operation.RefusalWithoutFile.empty())
        return operation.RefusalWithoutFile;
    if (!database.IsOpen())
        return "closed: the database is not open; open the journal first";
    sqlite3* const journal = database.NativeHandle();
    const Evidence evidence(journal);
    if (std::string cause = CauseOf(evidence.Code); !cause.empty())
        return cause;
    switch (evidence.Code & 0xFF)
    {
    case SQLITE_OK: // a refusal before the write, or a rollback
        return RefusalOr(CauseWithoutCode(journal, operation), journal, operation, evidence);
    case SQLITE_CONSTRAINT:
    case SQLITE_TOOBIG:
        return RefusalOr("failed: " + evidence.Message, journal, operation, evidence);
    case SQLITE_ERROR:
        if (operation.UsesTransaction && evidence.InTransaction)
            return "open transaction: the operation needs a transaction of its own; commit or roll back the one that "
                   "is open on this connection";
        if (std::string_view(evidence.Message).substr(0, 15) == "cannot rollback") // SQLite had rolled back by itself
            return NotRecorded;
        break;
    default:
        break;
    }
    return "failed: " + evidence.Message;
}

template <typename Record> std::string ExplainRecord(PlantDatabase& database, const Record& record)
{
    Operation operation;
    operation.FindProblems = [&](sqlite3* journal) { return ProblemsInJournal(record, journal, {}); };
    Checker check({});
    RefuseByItself(check, record);
    operation.RefusalWithoutFile = FirstRefusal(check.Take());
    if constexpr (std::is_same_v<Record, Plant>)
        if (!record.Strain.empty())
            operation.RefusalWithoutFile.clear(); // the strain is stored first
    if constexpr (std::is_same_v<Record, Strain>)
        operation.UsesTransaction = record.ID != 0;
    if constexpr (std::is_same_v<Record, PlantCareEntry> || std::is_same_v<Record, HarvestRecord>)
    {
        operation.UsesTransaction = true;
        operation.EventID = record.TimelineEventID;
    }
    return ExplainOperation(database, operation);
}

} // namespace

} // namespace plant_validation

using namespace plant_validation;

std::string Explain(PlantDatabase& database, const Strain& strain)
{
    return ExplainRecord(database, strain);
}

std::string Explain(PlantDatabase& database, const Plant& plant)
{
    return ExplainRecord(database, plant);
}

std::string Explain(PlantDatabase& database, const PlantEvent& event)
{
    return ExplainRecord(database, event);
}

std::string Explain(PlantDatabase& database, const PlantCareEntry& entry)
{
    return ExplainRecord(database, entry);
}

std::string Explain(PlantDatabase& database, const HarvestRecord& record)
{
    return ExplainRecord(database, record);
}

std::string Explain(PlantDatabase& database, const PlantPhoto& photo)
{
    return ExplainRecord(database, photo);
}

std::string Explain(PlantDatabase& database, const PlantHealthObservation& observation)
{
    return ExplainRecord(database, observation);
}

std::string Explain(PlantDatabase& database, const PlantJournalEntry& entry)
{
    return ExplainRecord(database, entry);
}
