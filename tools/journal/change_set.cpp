#include "journal/change_set.h"

#include "refusal.h"

#include <cstdint>
#include <limits>
#include <memory>

#include <sqlite3.h>

#ifdef SQLITE_ENABLE_SESSION

namespace
{

void Require(int result, const std::string& what)
{
    if (result != SQLITE_OK)
        throw Refusal(what + ": " + sqlite3_errstr(result));
}

struct FreeSQLiteMemory
{
    void operator()(void* memory) const { sqlite3_free(memory); }
};

// Bytes that SQLite has allocated.
struct Bytes
{
    std::unique_ptr<void, FreeSQLiteMemory> Data;
    int Size = 0;
};

Bytes InverseOf(const std::string& changeSet)
{
    if (changeSet.size() > std::numeric_limits<int>::max())
        throw Refusal("reading the change: it is too large");
    int size = 0;
    void* inverse = nullptr;
    Require(sqlite3changeset_invert(static_cast<int>(changeSet.size()), changeSet.data(), &size, &inverse),
            "reading the change");
    return {std::unique_ptr<void, FreeSQLiteMemory>(inverse), size};
}

std::int64_t CountRows(const Bytes& changes)
{
    sqlite3_changeset_iter* rows = nullptr;
    Require(sqlite3changeset_start(&rows, changes.Size, changes.Data.get()), "reading the change");
    std::int64_t count = 0;
    while (sqlite3changeset_next(rows) == SQLITE_ROW)
        ++count;
    Require(sqlite3changeset_finalize(rows), "reading the change");
    return count;
}

int AbortOnConflict(void*, int, sqlite3_changeset_iter*)
{
    return SQLITE_CHANGESET_ABORT;
}

} // namespace

bool CanRecordChanges()
{
    return true;
}

ChangeRecorder::ChangeRecorder(sqlite3* connection)
{
    sqlite3_session* session = nullptr;
    Require(sqlite3session_create(connection, "main", &session), "recording the change");
    Session.reset(session);
    Require(sqlite3session_attach(session, nullptr), "recording the change");
}

void ChangeRecorder::Delete::operator()(sqlite3_session* session) const
{
    sqlite3session_delete(session);
}

bool ChangeRecorder::IsEmpty() const
{
    return sqlite3session_isempty(Session.get()) != 0;
}

std::string ChangeRecorder::ChangeSet() const
{
    int size = 0;
    void* changes = nullptr;
    Require(sqlite3session_changeset(Session.get(), &size, &changes), "recording the change");
    const std::unique_ptr<void, FreeSQLiteMemory> owner(changes);
    return size == 0 ? std::string() : std::string(static_cast<const char*>(changes), static_cast<std::size_t>(size));
}

void ApplyInverse(sqlite3* connection, const std::string& changeSet)
{
    const Bytes inverse = InverseOf(changeSet);
    const int before = sqlite3_total_changes(connection);
    Require(sqlite3changeset_apply(connection, inverse.Size, inverse.Data.get(), nullptr, AbortOnConflict, nullptr),
            "changing the rows back");
    // SQLite skips the changes of a table that it does not find, without an error.
    if (sqlite3_total_changes(connection) - before != CountRows(inverse))
        throw Refusal("changing the rows back: the tables are not those of the change");
}

#else // without the extension

bool CanRecordChanges()
{
    return false;
}

ChangeRecorder::ChangeRecorder(sqlite3*) {}

void ChangeRecorder::Delete::operator()(sqlite3_session*) const {}

bool ChangeRecorder::IsEmpty() const
{
    return true;
}

std::string ChangeRecorder::ChangeSet() const
{
    return "";
}

void ApplyInverse(sqlite3*, const std::string&)
{
    throw Refusal("SQLite was built without its session extension");
}

#endif
