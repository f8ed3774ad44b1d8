#pragma once

#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_session;

// SQLite's session extension: https://www.sqlite.org/sessionintro.html
// It is an option of SQLite's build. Only change_set.cpp is compiled with it, and only where the library has it.

// Whether SQLite has the extension. Without it, no change is recorded.
bool CanRecordChanges();

// Records the rows that a connection inserts, updates and deletes.
class ChangeRecorder
{
  public:
    // Begins to record. `connection` must live longer than the recorder. Throws Refusal.
    explicit ChangeRecorder(sqlite3* connection);

    // Whether no row was touched so far.
    bool IsEmpty() const;
    // All changes so far as a change set, empty where the rows are as they were. Throws Refusal.
    std::string ChangeSet() const;

  private:
    struct Delete
    {
        void operator()(sqlite3_session* session) const;
    };
    std::unique_ptr<sqlite3_session, Delete> Session; // null without the extension
};

// Changes every row of the change set back. Throws Refusal where a row is not as the change set left it; the caller
// then rolls back. Call it in a transaction, with foreign keys off: their actions would change further rows.
void ApplyInverse(sqlite3* connection, const std::string& changeSet);
