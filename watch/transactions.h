// The commit and rollback hooks of a connection: keeps the changes that were committed.
#pragma once

#include "change_set.h"

#include <optional>

#include <sqlite3.h>

namespace plant_watch
{

class Transactions
{
  public:
    // `dataVersion` is the connection's present `PRAGMA data_version`.
    Transactions(sqlite3* connection, int dataVersion);
    ~Transactions();
    Transactions(const Transactions&) = delete;
    Transactions& operator=(const Transactions&) = delete;

    // The changes of the transaction that a statement now writes in.
    ChangeSet& Current() noexcept;
    // The changes of all committed transactions. Without the present data version, it may contain changes of a failed
    // commit.
    ChangeSet& Committed(std::optional<int> dataVersion) noexcept;

  private:
    static int CommitHook(void* transactions) noexcept;
    static void RollbackHook(void* transactions) noexcept;
    void Settle() noexcept;
    unsigned FileVersion() const noexcept;
    unsigned OwnCommits(int dataVersion) const noexcept;

    sqlite3* Connection;
    ChangeSet Open;      // of the transaction that is open, or that `Committing` is about
    ChangeSet Uncertain; // of commits that succeeded, or failed in a way that looks the same to the hooks
    ChangeSet Ended;     // of committed transactions
    bool Committing = false;
    unsigned VersionBeforeCommit = 0;
    unsigned KnownOwnCommits; // when Committed() last got a data version
};

} // namespace plant_watch
