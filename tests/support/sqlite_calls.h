#pragma once

#include <functional>
#include <string>
#include <vector>

namespace support
{

// The test programs define the functions of SQLite that the library calls. The linker and the loader find these first;
// they pass each call on to SQLite. The calls can be recorded, and one of them can be made to fail.

enum class SQLiteCall
{
    Open,
    Exec,
    Prepare,
    Bind,
    Step,
    Finalize,
    BackUp // sqlite3_backup_init, which has no statement; a failure returns no backup
};

// One call of the library, with the text of its statement.
struct RecordedCall
{
    SQLiteCall Call;
    std::string SQL;
};

// While in scope, records the calls of the thread. Only one at a time.
class CallRecorder
{
  public:
    CallRecorder();
    ~CallRecorder();
    CallRecorder(const CallRecorder&) = delete;
    CallRecorder& operator=(const CallRecorder&) = delete;

    const std::vector<RecordedCall>& Calls() const { return Recorded; }
    // The texts of the prepared and executed statements, in their order.
    std::vector<std::string> Statements() const;
    int CallCount(SQLiteCall call) const;

  private:
    friend class CallGate;
    std::vector<RecordedCall> Recorded;
};

// While in scope, makes one call fail before it reaches SQLite: the `number`-th, counted from 1, among the calls `call`
// whose statement begins with `sql`. Only one at a time.
class CallFailure
{
  public:
    CallFailure(SQLiteCall call, int number, int result, std::string sql = {});
    ~CallFailure();
    CallFailure(const CallFailure&) = delete;
    CallFailure& operator=(const CallFailure&) = delete;

    bool Happened() const { return Remaining == 0; }

  private:
    friend class CallGate;
    SQLiteCall Call;
    int Remaining;
    int Result;
    std::string SQL;
};

// While in scope, runs `act` after the `number`-th call `call` has returned, counted from 1. Only one at a time.
class AfterCall
{
  public:
    AfterCall(SQLiteCall call, int number, std::function<void()> act);
    ~AfterCall();
    AfterCall(const AfterCall&) = delete;
    AfterCall& operator=(const AfterCall&) = delete;

    bool Happened() const { return Remaining == 0; }

  private:
    friend class CallGate;
    SQLiteCall Call;
    int Remaining;
    std::function<void()> Act;
};

} // namespace support
