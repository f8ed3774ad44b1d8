#include "transactions.h"

#include "row_hook.h"

namespace plant_watch
{

Transactions::Transactions(sqlite3* connection, int dataVersion)
    : Connection(connection), KnownOwnCommits(OwnCommits(dataVersion))
{
    if (sqlite3_get_autocommit(connection) == 0)
        Open.AddEverything(); // what its statements wrote so far is not known
    sqlite3_commit_hook(connection, CommitHook, this);
    sqlite3_rollback_hook(connection, RollbackHook, this);
}

Transactions::~Transactions()
{
    sqlite3_commit_hook(Connection, nullptr, nullptr);
    sqlite3_rollback_hook(Connection, nullptr, nullptr);
}

ChangeSet& Transactions::Current() noexcept
{
    Settle();
    return Open;
}

ChangeSet& Transactions::Committed(std::optional<int> dataVersion) noexcept
{
    Settle();
    if (!dataVersion || OwnCommits(*dataVersion) != KnownOwnCommits)
        Ended.Take(Uncertain);
    Uncertain.Clear();
    if (dataVersion)
        KnownOwnCommits = OwnCommits(*dataVersion);
    return Ended;
}

// SQLite calls it before the commit, which may still fail, and calls no hook after it. Whether the commit succeeded is
// therefore looked up when something happens next.
int Transactions::CommitHook(void* transactions) noexcept
{
    auto& self = *static_cast<Transactions*>(transactions);
    self.Settle();
    RowHook::AddUnreported(self.Connection, self.Open);
    self.VersionBeforeCommit = self.FileVersion();
    self.Committing = true;
    return 0; // lets the commit pass
}

void Transactions::RollbackHook(void* transactions) noexcept
{
    auto& self = *static_cast<Transactions*>(transactions);
    // After a commit hook, either the commit failed, or it succeeded and a later transaction was rolled back.
    if (self.Committing && self.FileVersion() != self.VersionBeforeCommit)
        self.Uncertain.Take(self.Open);
    self.Open.Clear();
}

void Transactions::Settle() noexcept
{
    if (Committing && FileVersion() != VersionBeforeCommit)
        Ended.Take(Open);
    Committing = false;
}

// SQLite's number for the state of the file. Every commit changes it, those of other connections, too, and a failed
// commit may.
unsigned Transactions::FileVersion() const noexcept
{
    unsigned version = 0;
    sqlite3_file_control(Connection, "main", SQLITE_FCNTL_DATA_VERSION, &version);
    return version;
}

// The number of this connection's commits, from any start: the data version counts all other changes of the number.
unsigned Transactions::OwnCommits(int dataVersion) const noexcept
{
    return FileVersion() - static_cast<unsigned>(dataVersion);
}

} // namespace plant_watch
