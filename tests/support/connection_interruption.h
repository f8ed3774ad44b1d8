#pragma once

#include <sqlite3.h>

namespace support
{

// While in scope, SQLite interrupts a statement of the connection after this number of its instructions. Only one at a
// time for a connection.
class ConnectionInterruption
{
  public:
    ConnectionInterruption(sqlite3* connection, int instructions) : Connection(connection), Left(instructions)
    {
        const auto next = [](void* left) { return --*static_cast<int*>(left) == 0 ? 1 : 0; };
        sqlite3_progress_handler(connection, 1, next, &Left);
    }
    ~ConnectionInterruption() { sqlite3_progress_handler(Connection, 0, nullptr, nullptr); }
    ConnectionInterruption(const ConnectionInterruption&) = delete;
    ConnectionInterruption& operator=(const ConnectionInterruption&) = delete;

    // Whether a statement was interrupted: there may be fewer instructions.
    bool Happened() const { return Left <= 0; }

  private:
    sqlite3* Connection;
    int Left;
};

} // namespace support
