// What is watched on one connection.
#pragma once

#include "row_hook.h"
#include "statement.h"
#include "transactions.h"

#include <mutex>

#include <sqlite3.h>

namespace plant_watch
{

// Registers a connection, so that it has at most one watch.
class Registration
{
  public:
    // Throws a Failure if the connection is registered.
    explicit Registration(sqlite3* connection);
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

  private:
    struct List
    {
        std::mutex Mutex;
        Registration* First = nullptr;
    };
    static List& All();

    sqlite3* Connection;
    Registration* Next = nullptr;
};

class Watch
{
  public:
    // The connection must not wait for locks. Throws a Failure or std::bad_alloc.
    explicit Watch(sqlite3* connection);

    // Its address is not used again before this watch ends, even if the connection is closed: SQLite keeps a closed
    // connection as long as it has a statement.
    sqlite3* WatchedConnection() const { return Connection; }
    // Counts everything as changed, by other connections, too.
    void AddEverything() noexcept;
    // Returns the changes since the last call. The connection must not wait for locks. After an exception, which is a
    // Failure or std::bad_alloc, the changes stay.
    PlantChanges TakeChanges();

  private:
    sqlite3* Connection;
    Registration Registered;
    Statement DataVersion;
    int KnownVersion;
    bool OthersChanged = false;
    Transactions Hooks; // removed before the statement ends, while the connection still exists
    RowHook Rows;
};

} // namespace plant_watch
