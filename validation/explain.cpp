#include "reading.h"
#include "refusals.h"
#include "validate.h"

#include <algorithm>
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

// Whether the operations that store the record begin a transaction of their own.
template <typename Record> bool UsesTransaction(const Record& record)
{
    if constexpr (std::is_same_v<Record, Strain>)
        return record.ID != 0;
    else
        return std::is_same_v<Record, PlantCareEntry> || std::is_same_v<Record, HarvestRecord>;
}

std::string Sentence(const PlantProblem& problem)
{
    return "refused: " + problem.Field + ": " + problem.Description;
}

// The first refusal, or nothing.
std::string FirstRefusal(const Problems& problems)
{
    return problems.empty() || problems.front().Kind != PlantProblemKind::Refused ? "" : Sentence(problems.front());
}

// The refusals for which the operation does not use the file, so that the evidence is that of an earlier call.
template <typename Record> std::string RefusalWithoutFile(const Record& record)
{
    if constexpr (std::is_same_v<Record, Plant>)
        if (!record.Strain.empty())
            return {}; // the strain is stored first
    Checker check({});
    RefuseByItself(check, record);
    return FirstRefusal(check.Take());
}

// Whether the problem may only show that the operation inserted an event and rolled it back.
template <typename Record>
bool CanBeWrittenBack(const PlantProblem& problem, const Record& record, const Evidence& evidence)
{
    if constexpr (std::is_same_v<Record, PlantCareEntry> || std::is_same_v<Record, HarvestRecord>)
        return problem.Field == "TimelineEventID" && record.TimelineEventID == evidence.LastRowID;
    else
        return false;
}

// For evidence that neither shows nor excludes a refusal.
template <typename Record>
std::string RefusalOr(const std::string& otherwise, PlantDatabase& database, const Record& record,
                      const Evidence& evidence)
{
    try
    {
        const ReadTransaction transaction(database.NativeHandle());
        Problems problems = ProblemsInJournal(record, database.NativeHandle(), {});
        problems.erase(std::remove_if(problems.begin(), problems.end(),
                                      [&](const PlantProblem& problem)
                                      { return CanBeWrittenBack(problem, record, evidence); }),
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
template <typename Record> std::string CauseWithoutCode(PlantDatabase& database, const Record& record)
{
    if (!UsesTransaction(record)) // the journal or the evidence has changed since
        return "failed: the cause was not recorded";
    // The transaction can begin, but its first write fails.
    return sqlite3_db_readonly(database.NativeHandle(), "main") == 1 ? CauseOf(SQLITE_READONLY) : NotRecorded;
}

template <typename Record> std::string ExplainRecord(PlantDatabase& database, const Record& record)
{
    if (std::string refusal = RefusalWithoutFile(record); !refusal.empty())
        return refusal;
    if (!database.IsOpen())
        return "closed: the database is not open; open the journal first";
    const Evidence evidence(database.NativeHandle());
    if (std::string cause = CauseOf(evidence.Code); !cause.empty())
        return cause;
    switch (evidence.Code & 0xFF)
    {
    case SQLITE_OK: // a refusal before the write, or a rollback
        return RefusalOr(CauseWithoutCode(database, record), database, record, evidence);
    case SQLITE_CONSTRAINT:
    case SQLITE_TOOBIG:
        return RefusalOr("failed: " + evidence.Message, database, record, evidence);
    case SQLITE_ERROR:
        if (UsesTransaction(record) && evidence.InTransaction)
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
